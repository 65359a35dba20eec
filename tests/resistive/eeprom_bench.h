// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A panel whose EEPROM pages can fail one by one, and what calls on image files print.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "support/bench.h"
#include "transport/fake_hid.h"
#include "zelkora.h"

namespace zelkora::test {

// A controller on USB with an EEPROM that wears out.
class WornController final : public sim::HidDevice {
 public:
  const sim::UsbIdentity& identity() const override { return usb_.identity(); }
  std::span<const sim::FeatureReport> feature_reports() const override {
    return usb_.feature_reports();
  }

  bool set_feature(uint8_t id, std::span<const uint8_t> payload) override {
    const std::string command(payload.begin() + 2, payload.begin() + 4);
    const int page = payload[4];
    silent_ = (command == "ER" && page == unreadable_page) ||
              (command == "EW" && page == unwritable_page);
    const bool taken = silent_ || usb_.set_feature(id, payload);
    if (command == "EW" && on_written) on_written(controller.eeprom());
    return taken;
  }

  // A silent one answers with a report that holds nothing.
  std::optional<Bytes> get_feature(uint8_t id) override {
    return silent_ ? Bytes(sim::ResistiveUsb::kUsageCount) : usb_.get_feature(id);
  }

  sim::ResistiveController controller;
  int unreadable_page = -1;
  int unwritable_page = -1;
  std::function<void(std::array<uint8_t, 128>&)> on_written;  // after each page

 private:
  sim::ResistiveUsb usb_{controller, {0x3A4C, 0x1688, "Zelkora", "Worn"}};
  bool silent_ = false;
};

// What the action writes to standard error.
inline std::string captured_stderr(const std::function<void()>& action) {
  const int saved = ::dup(STDERR_FILENO);
  const int capture = ::memfd_create("stderr", 0);
  ::dup2(capture, STDERR_FILENO);
  action();
  ::dup2(saved, STDERR_FILENO);
  ::close(saved);
  std::string text(static_cast<size_t>(::lseek(capture, 0, SEEK_END)), '\0');
  EXPECT_EQ(::pread(capture, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  ::close(capture);
  return text;
}

// An image file of these bytes: their sum behind them, low byte first.
inline std::string image_file(const Bytes& eeprom) {
  unsigned sum = 0x6666;
  for (const uint8_t byte : eeprom) sum += byte;
  std::string text(eeprom.begin(), eeprom.end());
  text.push_back(static_cast<char>(sum));
  text.push_back(static_cast<char>(sum >> 8));
  return text;
}

// 128 bytes, no two alike in a page.
inline Bytes sample_eeprom(unsigned start = 3) {
  Bytes bytes;
  for (unsigned i = 0; i < 128; ++i) bytes.push_back(static_cast<uint8_t>(start + 7 * i));
  return bytes;
}

class EepromBench : public Bench {
 protected:
  static constexpr char kNode[] = "/dev/usb/hiddev0";

  void SetUp() override {
    Bench::SetUp();
    host.debug = DbgFlag = 1;
    attach(panel, {.phys = "usb-1/input0", .hiddev = kNode, .hidraw = "", .event = ""});
    set_entry(0);
    put_eeprom(sample_eeprom());
  }

  static void set_entry(int index) {
    std::snprintf(TouchDevice[index].Name, sizeof TouchDevice[index].Name, "%s", kNode);
    TouchDevice[index].Type = ZELKORA_TYPE_RESISTIVE_USB;
  }

  void put_eeprom(const Bytes& bytes) {
    std::copy(bytes.begin(), bytes.end(), panel.controller.eeprom().begin());
  }
  Bytes eeprom() const {
    return {panel.controller.eeprom().begin(), panel.controller.eeprom().end()};
  }

  // Calls it with what it prints to standard error at hand.
  int call(int (*function)(int, const char*), int devnum, const std::string& file) {
    int result = -1;
    error_output = captured_stderr([&] { result = function(devnum, file.c_str()); });
    return result;
  }

  // The page commands that reached the panel, "ER0" or "EW3", between opening and closing.
  Lines pages() const {
    Lines steps;
    for (const std::string& line : trace_of({"open", "close", "set_report"})) {
      steps.push_back(line.substr(0, line.find(' ')));
      if (steps.back() != "set_report") continue;
      const bool read = line.find(": 05 01 45 52 ") != line.npos;
      const bool write = line.find(": 25 01 45 57 ") != line.npos;
      steps.back() = read || write ? std::string(read ? "ER" : "EW") + line[27] : line;
    }
    return steps;
  }

  bool untouched() const { return trace_of({"open", "close", "ioctl", "set_report"}).empty(); }

  // The messages that begin with one of these, without their prefix.
  Lines told(const std::vector<std::string>& beginnings) const {
    Lines lines;
    for (const std::string& message : messages()) {
      const std::string text = message.substr(std::string("zelkora DD:").size());
      for (const std::string& beginning : beginnings) {
        if (text.starts_with(beginning)) lines.push_back(text);
      }
    }
    return lines;
  }

  WornController panel;
  std::string error_output;
  const std::string path = "panel.img";  // in the test's own working directory
};

inline Lines page_lines(const char* format, const Bytes& first, const Bytes& second, int page) {
  Lines lines;
  for (int i = 0; i < 32; ++i) {
    const size_t at = static_cast<size_t>(32 * page + i);
    char line[96];
    std::snprintf(line, sizeof line, format, static_cast<int>(at), first[at], i, second[at]);
    lines.emplace_back(line);
  }
  return lines;
}

}  // namespace zelkora::test
