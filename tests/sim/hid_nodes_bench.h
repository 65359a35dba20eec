// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A HID device on the virtual kernel, with all three of its nodes open.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/hiddev.h>
#include <sys/ioctl.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "virtual_kernel.h"

namespace zelkora::test {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

inline constexpr char kHiddev[] = "/dev/usb/hiddev0";
inline constexpr char kHidraw[] = "/dev/hidraw0";
inline constexpr char kEvent[] = "/dev/input/event0";
inline constexpr char kPhys[] = "usb-0000:00:14.0-2/input1";

// A device that keeps what it is sent and gives back what the test put there.
class EchoDevice final : public sim::HidDevice {
 public:
  const sim::UsbIdentity& identity() const override { return identity_; }
  std::span<const sim::FeatureReport> feature_reports() const override { return reports; }
  bool set_feature(uint8_t id, std::span<const uint8_t> payload) override {
    last_id = id;
    received.assign(payload.begin(), payload.end());
    return !stalls;
  }
  std::optional<Bytes> get_feature(uint8_t id) override {
    last_id = id;
    return stalls ? std::nullopt : std::optional(answer);
  }

  std::vector<sim::FeatureReport> reports = {{1, 4, 0, 255}, {7, 2, -128, 127}};
  bool stalls = false;
  Bytes answer = {0, 0, 0, 0};
  Bytes received;
  int last_id = -1;

 private:
  sim::UsbIdentity identity_{0x3A4C, 0x8753, "Zelkora", "Echo"};
};

class VirtualHidTest : public testing::Test {
 protected:
  VirtualHidTest() {
    attachment_ = kernel_.attach(device_, {kPhys, kHiddev, kHidraw, kEvent});
    hiddev_ = kernel_.open(kHiddev, O_RDWR | O_NONBLOCK);
    hidraw_ = kernel_.open(kHidraw, O_RDWR | O_NONBLOCK);
    event_ = kernel_.open(kEvent, O_RDONLY);
    kernel_.set_trace([this](std::string line) { trace_.push_back(std::move(line)); });
  }

  int set_usage(unsigned index, int value, unsigned id = 1) {
    hiddev_usage_ref usage{HID_REPORT_TYPE_FEATURE, id, 0, index, 0xFF000001 + index, value};
    return kernel_.ioctl(hiddev_, HIDIOCSUSAGE, &usage);
  }
  int usage(unsigned index, unsigned id = 1) {
    hiddev_usage_ref usage{HID_REPORT_TYPE_FEATURE, id, 0, index, 0, 12345};
    EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGUSAGE, &usage), 0);
    return usage.value;
  }
  int report_request(unsigned long request, unsigned id = 1) {
    hiddev_report_info info{HID_REPORT_TYPE_FEATURE, id, 0};
    return kernel_.ioctl(hiddev_, request, &info);
  }

  EchoDevice device_;
  sim::VirtualKernel kernel_;
  int attachment_ = 0;
  int hiddev_ = 0;
  int hidraw_ = 0;
  int event_ = 0;
  Lines trace_;
};

}  // namespace zelkora::test
