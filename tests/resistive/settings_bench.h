// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the tests of the settings share: the settings as a host sees them, frames as text, and a
// serial panel that is named in the serial panel list.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/bench.h"
#include "zelkora.h"

namespace zelkora::test {

// When a getter copies its value into the serial panel list.
enum class Mirrored { kNever, kAfterRepair, kAlways };

struct SettingRow {
  const char* name;
  int (*get)();
  int (*set)(unsigned);
  int (*set_current)(int, unsigned);  // null: there is none
  uint8_t address;
  uint16_t good;      // a value that no getter repairs
  const char* error;  // printed when a write fails
  Mirrored getter_mirrors;
  const char* getter_key;  // stems in the serial panel list
  const char* setter_key;
};

// clang-format off
inline constexpr SettingRow kSettings[] = {
    {"AutoRightClick", GetAutoRightClick, SetAutoRightClick, SetCurrenAutoRightClick, 84, 1,
     "SetAutoRightClick error\n", Mirrored::kAlways,
     "SerialDeviceDisableRight", "SerialDeviceDisableRight"},
    {"RightCount", GetRightCount, SetRightCount, SetCurrenRightCount, 85, 9,
     "SetRightCount error\n", Mirrored::kAlways,
     "SerialDeviceRightTime", "SerialDeviceRightTime"},
    {"Rotation", GetRotation, SetRotation, SetCurrenRotation, 67, 3,
     "SetRotation error\n", Mirrored::kNever, nullptr, nullptr},
    {"HidMode", GetHidMode, SetHidMode, SetCurrenHidMode, 69, 3,
     "SetHidMode error\n", Mirrored::kNever, nullptr, nullptr},
    {"ReportMode", GetReportMode, SetReportMode, SetCurrenReportMode, 51, 6,
     "SetReportMode error\n", Mirrored::kNever, nullptr, nullptr},
    {"FirstMove", GetFirstMove, SetFirstMove, SetCurrenFirstMove, 66, 4,
     "SetFirstMove error\n", Mirrored::kNever, nullptr, nullptr},
    {"EdgeRight", GetEdgeRight, SetEdgeRight, nullptr, 70, 21,
     "SetEdgeRight error\n", Mirrored::kNever, nullptr, nullptr},
    {"EdgeLeft", GetEdgeLeft, SetEdgeLeft, nullptr, 71, 22,
     "SetEdgeLeft error\n", Mirrored::kNever, nullptr, nullptr},
    {"EdgeDown", GetEdgeDown, SetEdgeDown, nullptr, 72, 23,
     "SetEdgeDown error\n", Mirrored::kNever, nullptr, nullptr},
    {"EdgeUp", GetEdgeUp, SetEdgeUp, nullptr, 73, 24,
     "SetEdgeUp error\n", Mirrored::kNever, nullptr, nullptr},
    // A repaired beep goes under the play method's key.
    {"BeepOn", GetBeepOn, SetBeepOn, SetCurrenBeepOn, 86, 1,
     "Set Beep On error\n", Mirrored::kAfterRepair,
     "SerialDevicePlayMethod", "SerialDeviceBeepOn"},
    {"PlayMethod", GetPlayMethod, SetPlayMethod, SetCurrenPlayMethod, 87, 2,
     "Set Play Method error\n", Mirrored::kAfterRepair,
     "SerialDevicePlayMethod", "SerialDevicePlayMethod"},
    {"Frequency", GetFrequency, SetFrequency, SetCurrenFrequency, 88, 2500,
     "Set Frequency error\n", Mirrored::kAfterRepair,
     "SerialDeviceFrequency", "SerialDeviceFrequency"},
    {"Duration", GetDuration, SetDuration, SetCurrenDuration, 89, 20,
     "Set Duration error\n", Mirrored::kAfterRepair,
     "SerialDeviceDuration", "SerialDeviceDuration"},
    {"ScreenNo", GetScreenNo, SetScreenNo, SetCurrenScreenNo, 55, 2,
     "SetScreenNo error\n", Mirrored::kAfterRepair,
     "SerialScreenNum", "SerialScreenNum"},
};
// clang-format on

inline void PrintTo(const SettingRow& row, std::ostream* out) { *out << row.name; }

inline std::string row_name(const testing::TestParamInfo<SettingRow>& info) {
  return info.param.name;
}

// --- frames, as text: "\1GP54\r" ---

inline std::string read_frame(unsigned address) {
  char text[8];
  std::snprintf(text, sizeof text, "\1GP%02X\r", address);
  return text;
}

inline std::string write_frame(unsigned address, unsigned value) {
  char text[24];
  std::snprintf(text, sizeof text, "\1SP%02X%04X\r", address, value);
  return text;
}

inline Lines frames_of(const sim::ResistiveController& controller) {
  Lines frames;
  for (const std::vector<uint8_t>& frame : controller.frames()) {
    frames.emplace_back(frame.begin(), frame.end());
  }
  return frames;
}

// What a setter sends when all goes well.
inline Lines setter_frames(const SettingRow& row, unsigned value) {
  Lines frames{write_frame(row.address, value), read_frame(row.address)};
  // The automatic HID setting goes off first.
  if (row.address == 69) frames.insert(frames.begin(), write_frame(68, 0));
  return frames;
}

inline Lines times(size_t count, const std::string& text) { return Lines(count, text); }

// A reply over USB that holds nothing, whatever was asked.
inline const std::vector<uint8_t> kNoReply(sim::ResistiveUsb::kUsageCount);

// A controller on a serial port that hears no frame with a given beginning: "\1GP" fails every
// read and no write, "\1SP45" fails the writes to one address.
class DeafPort final : public sim::SerialDevice {
 public:
  void receive(std::span<const uint8_t> bytes) override {
    const std::string frame(bytes.begin(), bytes.end());
    frames.push_back(frame);
    if (!frame.starts_with(deaf_to)) reply_ = controller.answer(bytes);
  }
  std::vector<uint8_t> transmit(size_t) override { return std::exchange(reply_, {}); }

  sim::ResistiveController controller;
  std::string deaf_to;
  Lines frames;

 private:
  std::vector<uint8_t> reply_;
};

class DeafPortBench : public Bench {
 protected:
  void open_port_deaf_to(const std::string& beginning) {
    port.deaf_to = beginning;
    attachment_ = kernel.attach(port, "/dev/ttyS0");
    fd = ::open("/dev/ttyS0", O_RDWR);
    device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
    clear_trace();
  }
  void TearDown() override {
    ::close(fd);
    kernel.unplug(attachment_);
    Bench::TearDown();
  }

  DeafPort port;

 private:
  int attachment_ = 0;
};

// --- the serial panel list ---

inline const std::string kSerialList = data_file("sertp.conf");

inline constexpr const char* kMirrorKeys[] = {"SerialDeviceDisableRight", "SerialDeviceRightTime",
                                              "SerialDeviceBeepOn",       "SerialDevicePlayMethod",
                                              "SerialDeviceFrequency",    "SerialDeviceDuration",
                                              "SerialScreenNum"};

// A list of these panels with every mirrored key, all 77 but for the one that is given.
inline std::string serial_list(const std::vector<std::string>& names,
                               const std::optional<std::pair<std::string, int>>& changed = {}) {
  std::string text;
  for (size_t i = 0; i < names.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    text.append("SerialDevice").append(number).append("=").append(names[i]).append("\n");
    text.append("FW").append(number).append("=V1.2\n");
    for (const std::string stem : kMirrorKeys) {
      const std::string key = stem + number;
      const int value = changed && changed->first == key ? changed->second : 77;
      text.append(key).append("=").append(std::to_string(value)).append("\n");
    }
  }
  return text;
}

inline void name_active_device(const std::string& name) {
  ActiveDevice = 1;
  std::snprintf(TouchDevice[0].Name, sizeof TouchDevice[0].Name, "%s", name.c_str());
}

}  // namespace zelkora::test
