// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The way of feature reports between a carrier and a device. Each report is told to the trace, and
// here they get lost when the device hangs or is unplugged.
#pragma once

#include <cstdint>
#include <span>
#include <utility>
#include <vector>

#include "device_node.h"
#include "hid_device.h"

namespace zelkora::sim {

// What became of a request. That there is no answer, the host learns when its time is up: also of a
// device that left the bus meanwhile.
enum class Outcome { kDone, kStall, kNoAnswer };

struct Response {
  Outcome outcome = Outcome::kDone;
  std::vector<uint8_t> data = {};
};

class HidLink {
 public:
  // For the lines of the trace see VirtualKernel::set_trace().
  HidLink(HidDevice& device, Trace trace) : device_(device), trace_(std::move(trace)) {}

  HidDevice& device() const { return device_; }

  // Payloads are without the report id.
  Outcome set_report(uint8_t id, std::span<const uint8_t> payload);
  Response get_report(uint8_t id);

 private:
  bool reaches_device();
  void tell(std::string line) const {
    if (trace_) trace_(std::move(line));
  }

  HidDevice& device_;
  Trace trace_;
  bool unplugged_ = false;
};

}  // namespace zelkora::sim
