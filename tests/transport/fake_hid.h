// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A HID device of the tests' own making, and a bench with it attached: reports of any id and
// length, any answer, and a record of what reached it.
#pragma once

#include <fcntl.h>
#include <linux/hiddev.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdint>
#include <map>
#include <numeric>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/bench.h"

namespace zelkora::test {

using Bytes = std::vector<uint8_t>;

class FakeHid final : public sim::HidDevice {
 public:
  const sim::UsbIdentity& identity() const override { return identity_; }
  std::span<const sim::FeatureReport> feature_reports() const override { return reports; }

  bool set_feature(uint8_t id, std::span<const uint8_t> payload) override {
    received.emplace_back(id, Bytes(payload.begin(), payload.end()));
    return !stalls;
  }

  std::optional<Bytes> get_feature(uint8_t id) override {
    if (stalls || !answers.contains(id)) return std::nullopt;
    return answers[id];
  }

  std::vector<sim::FeatureReport> reports = {{1, 63}, {6, 63}, {7, 63}, {8, 63}};
  std::map<uint8_t, Bytes> answers;  // payloads by report id; the device stalls for others
  std::vector<std::pair<uint8_t, Bytes>> received;
  bool stalls = false;

 private:
  sim::UsbIdentity identity_{0x2575, 0x8755, "Zelkora", "Fake"};
};

class TransportBench : public Bench {
 protected:
  static constexpr char kHiddev[] = "/dev/usb/hiddev7";
  static constexpr char kHidraw[] = "/dev/hidraw7";

  void SetUp() override {
    Bench::SetUp();
    attachment_ =
        attach(device, {.phys = "usb-1/input0", .hiddev = kHiddev, .hidraw = kHidraw, .event = ""});
  }

  void TearDown() override {
    if (descriptor_ >= 0) ::close(descriptor_);
    Bench::TearDown();
  }

  // Opens a node on fd, with nothing prepared yet.
  void open_node(const char* path) {
    fd = descriptor_ = ::open(path, O_RDONLY);
    // The kernel fetches all reports at the first look at a usage: let it do that now.
    if (std::string_view(path) == kHiddev) ::ioctl(fd, HIDIOCINITREPORT, 0);
    clear_trace();
  }

  // The same with a report of that many usages prepared.
  void open_hiddev(unsigned usages, uint8_t id = 1) {
    device.reports = {{id, usages}};
    open_node(kHiddev);
    ASSERT_EQ(init_Pct_Hiddev(id), 1U);
    clear_trace();
  }

  void unplug_device() {
    kernel.unplug(attachment_);
    for (const char* path : {kHiddev, kHidraw}) {
      EXPECT_EQ(sim::remove_node_placeholder(path), "");
    }
  }

  FakeHid device;

 private:
  int attachment_ = 0;
  int descriptor_ = -1;
};

// 1, 2, 3, ... count
inline Bytes rising(size_t count) {
  Bytes bytes(count);
  std::iota(bytes.begin(), bytes.end(), uint8_t{1});
  return bytes;
}

inline Bytes padded(Bytes bytes, size_t size) {
  bytes.resize(size);
  return bytes;
}

inline std::string usage_line(const char* request, unsigned id, size_t index) {
  return std::string("ioctl ") + request + " type=3 id=" + std::to_string(id) +
         " field=0 usage=" + std::to_string(index);
}

// The requests that set the usages of a report to these values.
inline Lines usages_set(unsigned id, const std::vector<int>& values) {
  Lines lines;
  for (size_t i = 0; i < values.size(); ++i) {
    char code[16];
    std::snprintf(code, sizeof code, "%08X", 0xFF000001U + static_cast<unsigned>(i));
    lines.push_back(usage_line("HIDIOCSUSAGE", id, i) + " code=" + code +
                    " value=" + std::to_string(values[i]));
  }
  return lines;
}

// The requests that read a report of that many usages.
inline Lines usages_read(unsigned id, size_t count) {
  Lines lines;
  for (size_t i = 0; i < count; ++i) {
    lines.push_back(usage_line("HIDIOCGUCODE", id, i));
    lines.push_back(usage_line("HIDIOCGUSAGE", id, i));
  }
  return lines;
}

inline Lines joined(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

}  // namespace zelkora::test
