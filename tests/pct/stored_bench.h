// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench with one panel in the table, at an index that is not the first, and store files to fill
// and to compare byte for byte.
#pragma once

#include "stored_sets.h"

namespace zelkora::test {

class StoredBench : public PctWays {
 protected:
  static constexpr int kPanel = 2;
  static constexpr char kPhys[] = "usb-0000:00:14.0-1/input0";
  static constexpr char kOtherPhys[] = "usb-0000:00:14.0-7/input0";

  void SetUp() override {
    PctWays::SetUp();
    allow_any_command();
    // The kernel fetches all reports at the first look at a usage: let it do that now.
    open_way();
    set_entry(GetParam(), kPanel);
    DeviceNumber = kPanel + 1;
    std::snprintf(entry.Phys, sizeof entry.Phys, "%s", kPhys);
    std::ranges::copy(kOwnNumber, entry.SN);
    entry.VID = 0x2575;
    entry.PID = 0x8753;
    follow_modes();
  }

  // --- the store ---
  static Keys own_keys() { return {kPhys, digits(kOwnNumber), "2575_8753"}; }
  // The panel's number at another port, and the panel's port with another number.
  static Keys moved_keys() { return {kOtherPhys, digits(kOwnNumber), "2575_8753"}; }
  static Keys replaced_keys() { return {kPhys, digits(kOtherNumber), "2575_8753"}; }
  // A panel of the same make elsewhere, and one that has nothing in common.
  static Keys like_keys() { return {kOtherPhys, digits(kOtherNumber), "2575_8753"}; }
  static Keys strange_keys() { return {"usb-9", digits(kOtherNumber), "1111_2222"}; }

  static std::string own_record(const ParameterSet& set) {
    return store_record(own_keys(), payload(set, kOwnNumber));
  }
  static std::string strange_record() {
    return store_record(strange_keys(), payload(quiet_set(), kOtherNumber));
  }

  // A directory in the place of a file: nothing is read there and nothing written.
  static void forbid(const char* path) { std::filesystem::create_directory(path); }

  // --- the trace ---
  Lines told(const std::array<uint8_t, 3>& config) const {
    return sent(is_8752() ? Bytes{0x08, 0x91, 0x05, 0x00, 0xC0, config[0], config[1], config[2]}
                          : Bytes{0x08, 0x84, 0xC0, 0x00, config[0], config[1], config[2]});
  }
  Lines told(const ParameterSet& set) const { return told(set.told); }

  // Whether a POS configuration reached the controller.
  bool was_told() const {
    return std::ranges::any_of(device.received, [this](const auto& report) {
      const Bytes& payload = report.second;
      return is_8752() ? payload[0] == 0x91 && payload[3] == 0xC0
                       : payload[0] == 0x84 && payload[1] == 0xC0;
    });
  }

  // What opening and closing put around an operation.
  Lines opening() const {
    return joined({{"open " + std::string(node()) + " O_RDONLY"}, switching(0x90)});
  }
  Lines closing() const { return joined({switching(0x01), {"close " + std::string(node())}}); }
  Lines opened(const Lines& middle) const { return joined({opening(), middle, closing()}); }

  // Everything that left the library, but for messages.
  Lines done() const {
    return trace_of({"open", "close", "ioctl", "set_report", "get_report", "usleep", "system",
                     "XOpenDisplay", "mydoled_all_display", "XCloseDisplay"});
  }

  // --- the messages ---
  // Those that begin like one of these, behind their prefix.
  Lines messages_of(std::initializer_list<std::string_view> beginnings) const {
    Lines lines;
    std::ranges::copy_if(messages(), std::back_inserter(lines), [&](const std::string& line) {
      const std::string_view text = std::string_view(line).substr(line.find(':') + 1);
      return std::ranges::any_of(
          beginnings, [&](std::string_view beginning) { return text.starts_with(beginning); });
    });
    return lines;
  }

  TouchDeviceEntry& entry = TouchDevice[kPanel];

 private:
  // Into command mode (0x90) or out of it (0x01): only the 8752 family has one.
  Lines switching(uint8_t mode) const {
    if (!is_8752()) return {};
    return joined({sent({0x08, 0x91, 0x02, 0x00, 0x82, mode}),
                   {"usleep 5000"},
                   sent({0x06, 0x73, 0x0C}),
                   {"usleep 10000"},
                   received(7, {0xAA, 0xBB, 0xCC, mode, 0xDD})});
  }
};

}  // namespace zelkora::test
