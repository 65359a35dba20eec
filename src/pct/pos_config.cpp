// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The POS configuration: the touch behaviour that a PCT controller carries out itself, and the mode
// in which it shows itself on USB.
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/log.h"
#include "layout.h"
#include "zelkora.h"

using zelkora::kTrace;
using namespace zelkora::pct;

namespace {

constexpr unsigned kConfigSize = 16;  // asked for; the first four bytes have a meaning
constexpr int kAttempts = 7;
constexpr unsigned kReplyWaitUs = 50'000;
constexpr unsigned kModeWaitUs = 10'000;

uint8_t bits(unsigned value) { return static_cast<uint8_t>(value); }

// The configuration as it is read.
struct PosConfig {
  explicit PosConfig(const uint8_t* bytes)
      : hid((bytes[0] >> 5) & 1),
        enable(bytes[0] & 1),
        right((bytes[2] >> 3) & 1),
        click(bytes[2] & 3),
        time(bytes[3] & 0xF),
        range(bytes[3] >> 4),
        up((bytes[2] >> 2) & 1),
        mode(bits(bytes[1] + 1U)) {}

  bool agrees_with(const PCTDevInfo& rec) const {
    return hid == rec.HidEnable && enable == rec.POSEnable && right == rec.DisableRight &&
           click == rec.ClickMode && time == rec.RightTime && range == rec.RightRange &&
           up == rec.RightUp;
  }

  uint8_t hid, enable, right, click, time, range, up, mode;
};
static_assert(sizeof(PosConfig) == 8, "handed out as eight bytes");

}  // namespace

int ReadPOSConfig(unsigned char* out, int length) {
  DebugMsg(kTrace, "***ReadPOSConfig***\n");
  std::memset(out, 0, kConfigSize);
  const size_t data_at = current_layout().data_reply;
  const auto wanted =
      static_cast<size_t>(std::clamp(length, 0, static_cast<int>(kReportSize - data_at)));
  for (int attempt = 1;; ++attempt) {
    const uint8_t query[kReportSize] = {kQueryReport, 0xA2, static_cast<uint8_t>(length)};
    if (SendDataNew(query, sizeof query) == 0) {
      DebugMsg(kTrace, "ReadPOSConfig SendDataPct failed\n ");
      return 0;
    }
    usleep(kReplyWaitUs);
    uint8_t reply[kReportSize]{};
    if (ReceiveDataNew(kReplyReport, reply, sizeof reply) == 0) {
      DebugMsg(kTrace, "ReadPOSConfig ReceiveDataPct failed\n ");
      return 0;
    }
    const uint8_t* data = reply + data_at;
    if (std::any_of(data, data + wanted, [](uint8_t byte) { return byte != 0; })) {
      std::memcpy(out, data, wanted);
      return 1;
    }
    if (attempt == kAttempts) return 0;
    DebugMsg(kTrace, "ReadPOSConfig --fail\n");
  }
}

int WritePOSConfig(unsigned char c0, unsigned char c1, unsigned char c2) {
  DebugMsg(kTrace, "***WritePOSConfig IsLegacy:%d***\n", IsLegacy);
  const CommandFrame frame(current_layout().pos_config, {c0, c1, c2});
  return SendDataNew(frame.bytes, sizeof frame.bytes) != 0 ? 1 : 0;
}

int WritePOSMode(unsigned char mode_command) {
  const bool is_8752 = IsLegacy == ZELKORA_FAMILY_8752;
  DebugMsg(kTrace, "***WritePOSMode Mode:0x%02x***", mode_command);
  const CommandFrame frame(current_layout().pos_mode, {mode_command});
  if (!is_8752) PrintData("WritePOSMode", frame.bytes, 8);
  if (SendDataNew(frame.bytes, sizeof frame.bytes) == 0) return 0;
  if (is_8752) usleep(kModeWaitUs);
  return 1;
}

int GetPOSMode(void) {
  DebugMsg(kTrace, "###GetPOSMode HidRaw:%d###\n", HidRaw);
  uint8_t config[kConfigSize];
  const int mode = ReadPOSConfig(config, kConfigSize) != 0 ? PosConfig(config).mode : 0;
  DebugMsg(kTrace, "###GetPOSMode Mode:%d###\n", mode);
  return mode;
}

int SetPOSConfig(PCTDevInfo* rec, int flag) {
  rec->POSEnable = 1;
  rec->HidEnable = 1;
  rec->SyncFlag = 1;
  const uint8_t c0 = bits(rec->POSEnable | unsigned{rec->HidEnable} << 5);
  // Bit 3 switches the controller's own right click off, whatever DisableRight says: right clicks
  // are the X input driver's work.
  uint8_t c1 =
      bits(rec->ClickMode | unsigned{rec->SyncFlag} << 4 | 1U << 3 | unsigned{rec->RightUp} << 2);
  if (flag != 0) c1 |= 0x20;
  const uint8_t c2 = bits(unsigned{rec->RightRange} << 4 | rec->RightTime);
  DebugMsg(kTrace,
           "SetPOSConfig write enable:%d hid:%d sync:%d click:%d right:%d time:%d range:%d up:%d\n",
           rec->POSEnable, rec->HidEnable, rec->SyncFlag, rec->ClickMode, rec->DisableRight,
           rec->RightTime, rec->RightRange, rec->RightUp);
  return WritePOSConfig(c0, c1, c2);
}

int ChkPOSConfig(PCTDevInfo* rec, unsigned char* out) {
  uint8_t bytes[kConfigSize];
  if (ReadPOSConfig(bytes, kConfigSize) == 0) return 0;
  DebugMsg(kTrace, "ChkPOSConfig FlashData 0x%02x 0x%02x 0x%02x\n", bytes[0], bytes[1], bytes[2]);
  const PosConfig config(bytes);
  std::memcpy(out, &config, sizeof config);
  DebugMsg(kTrace, "disable right:%d->%d\n", rec->DisableRight, config.right);
  DebugMsg(kTrace, "click mode:%d->%d\n", rec->ClickMode, config.click);
  DebugMsg(kTrace, "right up:%d->%d\n", rec->RightUp, config.up);
  DebugMsg(kTrace,
           "ChkPOSConfig CurrConfig hid:0x%02x enable:0x%02x right:0x%02x click:0x%02x time:0x%02x "
           "range:0x%02x up:0x%02x POSMode:0x%02x\n",
           config.hid, config.enable, config.right, config.click, config.time, config.range,
           config.up, config.mode);
  rec->POSMode = config.mode;
  return config.agrees_with(*rec) ? 1 : 0;
}
