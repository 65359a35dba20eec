// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Switching a PCT panel between digitizer, mouse and hybrid.
#include <unistd.h>

#include <optional>

#include "core/log.h"
#include "product_ids.h"
#include "zelkora.h"

using zelkora::kTrace;
using namespace zelkora::pct;

namespace {

enum PosMode { kDigitizer = 1, kMouse = 2, kHybrid = 3, kOtherHybrid = 4 };

constexpr int kModeCommand = 31;  // added to a mode
constexpr unsigned kWaitUs = 200'000;
constexpr int kIdAttempts = 5;  // repeats of the product id write
constexpr int kModeAttempts = 11;

// One run of SetCurrPOSMode().
class ModeChange {
 public:
  ModeChange(const TouchDeviceEntry& entry, int mode) : entry_(entry), mode_(mode) {}

  int run() {
    for (;;) {
      if (IsLegacy != ZELKORA_FAMILY_8752 && !change_product()) return end(reset_);
      const int current = read_mode();
      DebugMsg(kTrace, "***SetCurrPOSMode CurrPOSMode:%d***\n", current);
      if (current == mode_ && reset_ == 0) {
        usleep(kWaitUs);
        return end(0);
      }
      if (const std::optional<int> written = change_mode()) return end(*written);
      // The controller does not take the mode: settle on the one that it reports. The attempts stay
      // spent, so a product id that cannot be written then is tried just once.
    }
  }

 private:
  unsigned product_of_mode() const {
    switch (mode_) {
      case kDigitizer:
        return digitizer_product(entry_.VID, entry_.OldPID != 0 ? entry_.OldPID : entry_.PID);
      case kMouse:
        return kMouseProduct;
      case kHybrid:
      case kOtherHybrid:
        return kHybridProduct;
      default:
        return product_;  // 0 when the first mode asked for is no mode at all
    }
  }

  // Gives the controller the product id of the mode. False: it does not take it.
  bool change_product() {
    product_ = product_of_mode();
    DebugMsg(kTrace, "***SetCurrPOSMode 8753 CurrVID:0x%04X NewPID:0x%04X PID:0x%04X mode:%d***\n",
             entry_.VID, product_, entry_.PID, mode_);
    if (entry_.PID == product_) return true;
    while (WriteUSBID(entry_.VID, product_) == 0) {
      if (++attempts_ > kIdAttempts) return false;
      usleep(kWaitUs);
    }
    reset_ = 1;
    return true;
  }

  int read_mode() const {
    const int mode = GetPOSMode();
    // Of an 8753 hybrid both hybrid modes are as good as the one asked for; an 8752 one has no product
    // id of its own.
    const bool hybrid = product_ == kHybridProduct && (mode == kHybrid || mode == kOtherHybrid);
    return hybrid ? mode_ : mode;
  }

  // Writes the mode until the controller reports it. Nothing: it never does, and mode_ becomes what
  // it reports.
  std::optional<int> change_mode() {
    int current = 0;
    for (attempts_ = 0; attempts_ < kModeAttempts; ++attempts_) {
      const int written = WritePOSMode(static_cast<unsigned char>(mode_ + kModeCommand));
      current = read_mode();
      DebugMsg(kTrace, "***SetCurrPOSMode NewMode:%d CurrPOSMode:%d***\n", mode_, current);
      if (current == mode_) {
        DebugMsg(kTrace, "***SetCurrPOSMode WritePOSMode mode:%d NewPosMode:%d***\n", mode_,
                 current);
        usleep(kWaitUs);
        return written;
      }
    }
    mode_ = current;
    return std::nullopt;
  }

  static int end(int reset) {
    DebugMsg(kTrace, "***SetCurrPOSMode End reset:%d***\n", reset);
    return reset;
  }

  const TouchDeviceEntry& entry_;
  int mode_;
  unsigned product_ = 0;
  int attempts_ = 0;  // of both loops
  int reset_ = 0;
};

// On the open device.
int change_and_reset(int index, int mode) {
  const int reset = SetCurrPOSMode(index, mode);
  if (reset != 0) ResetPCTController();
  return reset;
}

int change_and_close(int index, int mode) {
  change_and_reset(index, mode);
  return CloseDevice();
}

int digitizer_mode() { return isHybrid != 0 ? kHybrid : kDigitizer; }

}  // namespace

int SetCurrPOSMode(int index, int mode) {
  DebugMsg(kTrace, "***SetCurrPOSMode Start***\n");
  return ModeChange(TouchDevice[index], mode).run();
}

int ChkPosMode(int index, int mode) {
  if (OpenPCTDevice(index) == 0) {
    CloseDevice();
    return 0;
  }
  const TouchDeviceEntry& entry = TouchDevice[index];
  HidRaw = entry.HidRaw;
  DebugMsg(kTrace, "ChkPosMode HidRaw:%d , set to mode:%d , PosModeDev:%d\n", HidRaw, mode,
           entry.POSMode);
  const int reset = change_and_reset(index, mode == kDigitizer ? digitizer_mode() : kMouse);
  CloseDevice();
  return reset;
}

int SetDevtoHybrid(int index) {
  if (OpenPCTDevice(index) == 0) return 0;
  return change_and_close(index, kHybrid);
}

int SetDevtoDigitizer(int index) {
  if (OpenPCTDevice(index) == 0) return 0;
  return change_and_close(index, digitizer_mode());
}

int SetDevtoMouse(int index) {
  if (OpenPCTDevice(index) == 0) return 0;
  return change_and_close(index, kMouse);
}
