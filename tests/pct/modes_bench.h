// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench whose controller has a POS mode, a device mode and a USB id to write.
#pragma once

#include "data_reply.h"

namespace zelkora::test {

// A USB id write that the controller takes for good only after a reset.
struct WrittenId {
  unsigned vendor;
  unsigned product;
  friend bool operator==(const WrittenId&, const WrittenId&) = default;
};

class ModesBench : public PctWays {
 protected:
  static constexpr int kPanel = 2;  // its entry

  void SetUp() override {
    PctWays::SetUp();
    device.on_command = [this](const Bytes& payload) { obey(payload); };
    set_entry(GetParam(), kPanel);
    entry.VID = 0x2575;
    entry.PID = entry.OldPID = 0x8753;
  }

  static constexpr int kSilent = -1;  // no reply to queries of the mode

  // What the controller reports from now on; modes written do not change it.
  void report(int mode) {
    mode_ = mode;
    takes_ = false;
  }
  // The modes that it reports next, before the one it is in.
  void report_next(std::deque<int> modes) { next_modes_ = std::move(modes); }
  // Modes written are taken, after so many that are not.
  void take_modes(int misses = 0) {
    takes_ = true;
    misses_ = misses;
  }

  static Bytes config(int mode) {
    return padded({0x21, static_cast<uint8_t>(mode - 1), 0x18, 0xA4}, 16);
  }
  Bytes reply(int mode) const { return data_reply(GetParam(), config(mode)); }

  // --- the trace ---
  Lines reading(int mode) const {
    return joined({sent({0x06, 0xA2, 0x10}), {"usleep 50000"}, received(7, reply(mode))});
  }
  Lines writing(int mode) const {
    const auto command = static_cast<uint8_t>(mode + 31);
    return is_8752() ? joined({sent({0x08, 0x91, 0x05, 0x00, 0xC9, command}), {"usleep 10000"}})
                     : sent({0x08, 0x84, 0xC9, 0x00, command});
  }
  static Lines writing_id(unsigned product) {
    return sent({0xF3, 0x08, 0x00, 0x02, 0x00, 0x00, 0x75, 0x25, static_cast<uint8_t>(product),
                 static_cast<uint8_t>(product >> 8)});
  }
  Lines resetting() const {
    return sent(is_8752() ? Bytes{0x08, 0x85, 0x01, 0x00, 0x02} : Bytes{0x08, 0x84, 0x09});
  }
  // Into command mode (0x90) or out of it (0x01): only the 8752 family has one.
  Lines switching(uint8_t mode) const {
    if (!is_8752()) return {};
    return joined({sent({0x08, 0x91, 0x02, 0x00, 0x82, mode}),
                   {"usleep 5000"},
                   sent({0x06, 0x73, 0x0C}),
                   {"usleep 10000"},
                   received(7, {0xAA, 0xBB, 0xCC, mode, 0xDD})});
  }

  // --- the messages ---
  Lines read_messages(int mode) const {
    return debug_messages({"###GetPOSMode HidRaw:" + std::to_string(HidRaw) + "###\n",
                           "***ReadPOSConfig***\n",
                           "###GetPOSMode Mode:" + std::to_string(mode) + "###\n"});
  }
  static Lines end_message(int result) {
    return debug_messages({"***SetCurrPOSMode End reset:" + std::to_string(result) + "***\n"});
  }

  // The choice of a product id, which the 8753 layout alone has.
  Lines choice_message(unsigned product, int mode) const {
    if (is_8752()) return {};
    char text[128];
    std::snprintf(text, sizeof text,
                  "***SetCurrPOSMode 8753 CurrVID:0x%04X NewPID:0x%04X PID:0x%04X mode:%d***\n",
                  entry.VID, product, entry.PID, mode);
    return debug_messages({text});
  }
  static Lines number_message(const char* text, int mode) {
    return debug_messages({text + std::to_string(mode) + "***\n"});
  }
  static Lines current_message(int mode) {
    return number_message("***SetCurrPOSMode CurrPOSMode:", mode);
  }
  Lines id_message(unsigned product) const {
    char text[64];
    std::snprintf(text, sizeof text, "WriteUSBID VID:0x%04X PID:0x%04X\n", entry.VID, product);
    return debug_messages({text});
  }
  // Writing a mode and reading another.
  Lines miss_messages(int written, int read) const {
    char command[64];
    std::snprintf(command, sizeof command, "***WritePOSMode Mode:0x%02x***", written + 31);
    return joined({debug_messages({command}), read_messages(read),
                   debug_messages({"***SetCurrPOSMode NewMode:" + std::to_string(written) +
                                   " CurrPOSMode:" + std::to_string(read) + "***\n"})});
  }
  Lines hit_messages(int mode) const {
    const std::string number = std::to_string(mode);
    return joined({miss_messages(mode, mode),
                   debug_messages({"***SetCurrPOSMode WritePOSMode mode:" + number +
                                   " NewPosMode:" + number + "***\n"})});
  }
  static Lines start_message() { return debug_messages({"***SetCurrPOSMode Start***\n"}); }

  TouchDeviceEntry& entry = TouchDevice[kPanel];
  std::vector<WrittenId> written_ids;
  std::vector<int> written_modes;

 private:
  void obey(const Bytes& p) {
    if (p[0] == 0x91 && p[1] == 0x02) device_mode_ = p[4];
    if (p[0] == 0x73) answers_mode(device_mode_);
    if (p[0] == 0xA2) answer_mode_query();
    if (p[0] == 0x91 && p[1] == 0x05 && p[3] == 0xC9) take(p[4] - 31);
    if (p[0] == 0x84 && p[1] == 0xC9) take(p[3] - 31);
    if (p[0] == 0x08 && p[2] == 0x02) {
      written_ids.push_back({p[5] | p[6] * 256U, p[7] | p[8] * 256U});
    }
  }

  void answer_mode_query() {
    int mode = mode_;
    if (!next_modes_.empty()) {
      mode = next_modes_.front();
      next_modes_.pop_front();
    }
    device.answers[7] = reply(mode);
    if (mode == kSilent) device.answers.erase(7);
  }

  void take(int mode) {
    written_modes.push_back(mode);
    if (takes_ && misses_-- <= 0) mode_ = mode;
  }

  int mode_ = 1;
  bool takes_ = true;
  int misses_ = 0;
  uint8_t device_mode_ = 0x01;
  std::deque<int> next_modes_;
};

}  // namespace zelkora::test
