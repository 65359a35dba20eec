// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A virtual controller behind its control endpoint: requests in, data out.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "hid_link.h"
#include "usb_interface.h"

namespace zelkora::sim {

// A 16-bit number the way USB sends it.
class LittleEndian16 {
 public:
  LittleEndian16() = default;
  LittleEndian16(uint16_t value)
      : low_(static_cast<uint8_t>(value)), high_(static_cast<uint8_t>(value >> 8)) {}
  operator uint16_t() const { return static_cast<uint16_t>(low_ | high_ << 8); }
  uint8_t low() const { return low_; }
  uint8_t high() const { return high_; }

 private:
  uint8_t low_ = 0;
  uint8_t high_ = 0;
};

struct SetupPacket {
  uint8_t request_type = 0;
  uint8_t request = 0;
  LittleEndian16 value;
  LittleEndian16 index;
  LittleEndian16 length;
};
static_assert(sizeof(SetupPacket) == 8);

class UsbDevice {
 public:
  // The interfaces in the order of their numbers; the first one names the device. The trace is that
  // of the feature reports; it may be empty.
  explicit UsbDevice(std::vector<UsbInterface> interfaces, const Trace& trace = {});

  // Serves one control request. `data` is what an outgoing request carries; the response's is what
  // an incoming one returns, never more than the setup packet's length.
  Response control(const SetupPacket& setup, std::span<const uint8_t> data);

 private:
  // The number of the interface that a request is for.
  std::optional<size_t> addressed(const SetupPacket& setup) const;
  // Nothing: a stall.
  std::optional<std::vector<uint8_t>> serve(const SetupPacket& setup);
  std::optional<std::vector<uint8_t>> descriptor(const SetupPacket& setup) const;
  std::optional<std::vector<uint8_t>> string(uint8_t index) const;
  std::optional<std::vector<uint8_t>> interface_descriptor(const SetupPacket& setup) const;
  Response get_report(const SetupPacket& setup);
  Response set_report(const SetupPacket& setup, std::span<const uint8_t> data);

  std::vector<UsbInterface> interfaces_;
  std::vector<HidLink> links_;  // of each interface
  uint8_t configuration_ = 0;
};

}  // namespace zelkora::sim
