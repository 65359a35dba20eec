// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A controller that answers the next commands with given bytes, right or wrong, over USB or a
// serial port, and a bench with it open.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "request_name.h"
#include "support/bench.h"

namespace zelkora::test {

using Bytes = std::vector<uint8_t>;

enum class Carrier { kUsb, kSerial };

inline constexpr Carrier kCarriers[] = {Carrier::kUsb, Carrier::kSerial};

inline std::string name_of(Carrier carrier) { return carrier == Carrier::kUsb ? "Usb" : "Serial"; }

class ScriptedController final : public sim::HidDevice, public sim::SerialDevice {
 public:
  static constexpr unsigned kUsageCount = 63;

  // One for each command, the last one for all that follow. An empty one is silence: over USB a
  // report of length 0, on a serial port nothing to read.
  std::deque<Bytes> replies;
  // The length byte of the reports, where it is to differ from the reply's own length.
  std::optional<uint8_t> stated_length;
  std::vector<Bytes> frames;  // that arrived

  const sim::UsbIdentity& identity() const override { return identity_; }
  std::span<const sim::FeatureReport> feature_reports() const override { return {&report_, 1}; }

  bool set_feature(uint8_t, std::span<const uint8_t> payload) override {
    receive(payload.subspan(1, std::min<size_t>(payload[0], payload.size() - 1)));
    return true;
  }

  std::optional<Bytes> get_feature(uint8_t) override {
    const Bytes reply = transmit(kUsageCount - 1);
    Bytes payload{stated_length.value_or(static_cast<uint8_t>(reply.size()))};
    payload.insert(payload.end(), reply.begin(), reply.end());
    return payload;
  }

  void receive(std::span<const uint8_t> bytes) override {
    frames.emplace_back(bytes.begin(), bytes.end());
  }

  std::vector<uint8_t> transmit(size_t limit) override {
    if (replies.empty()) return {};
    Bytes reply = replies.front();
    if (replies.size() > 1) replies.pop_front();
    reply.resize(std::min(limit, reply.size()));
    return reply;
  }

 private:
  sim::UsbIdentity identity_{0x3A4C, 0x1688, "Zelkora", "Scripted"};
  sim::FeatureReport report_{1, kUsageCount};
};

class ScriptedBench : public Bench {
 protected:
  static constexpr char kHiddev[] = "/dev/usb/hiddev8";
  static constexpr char kPort[] = "/dev/ttyS8";

  void SetUp() override {
    Bench::SetUp();
    attach(controller, {.phys = "usb-1/input0", .hiddev = kHiddev, .hidraw = "", .event = ""});
    port_ = kernel.attach(static_cast<sim::SerialDevice&>(controller), kPort);
  }

  void TearDown() override {
    close_controller();
    Bench::TearDown();
  }

  // Opens the controller as the current device; traces start empty.
  void open_controller(Carrier carrier) {
    close_controller();
    if (carrier == Carrier::kUsb) {
      ASSERT_EQ(OpenResUsbDevice(0, kHiddev), 1);
      device_type = ZELKORA_TYPE_RESISTIVE_USB;
    } else {
      fd = ::open(kPort, O_RDWR | O_NOCTTY | O_NONBLOCK);
      device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
    }
    descriptor_ = fd;
    restart({});
  }

  // Forgets what happened and answers anew.
  void restart(std::deque<Bytes> replies) {
    controller.replies = std::move(replies);
    controller.frames.clear();
    clear_trace();
  }

  void unplug_port() { kernel.unplug(port_); }

  ScriptedController controller;

 private:
  void close_controller() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
  }

  int port_ = 0;
  int descriptor_ = -1;
};

// The frame of letters and digits with its markers: framed("GP54") is 01 47 50 35 34 0D.
inline Bytes framed(std::string_view text) {
  Bytes bytes{0x01};
  bytes.insert(bytes.end(), text.begin(), text.end());
  bytes.push_back(0x0D);
  return bytes;
}

inline std::string with_bytes(const std::string& words, const Bytes& bytes) {
  return bytes.empty() ? words + ":" : words + ": " + sim::hex_bytes(bytes);
}

inline Lines repeated(const Lines& lines, size_t times) {
  Lines all;
  for (size_t i = 0; i < times; ++i) all.insert(all.end(), lines.begin(), lines.end());
  return all;
}

}  // namespace zelkora::test
