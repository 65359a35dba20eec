// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hid_link.h"

#include <optional>
#include <string>

#include "fault_counter.h"
#include "request_name.h"

namespace zelkora::sim {
namespace {

// Zeros at the end are left out: reports are much longer than what they carry.
std::string report_line(std::string line, uint8_t id, std::span<const uint8_t> payload) {
  while (!payload.empty() && payload.back() == 0) payload = payload.first(payload.size() - 1);
  line += ' ';
  line += std::to_string(id);
  line += ':';
  if (payload.empty()) return line;
  return line + ' ' + hex_bytes(payload);
}

const char* failure(Outcome outcome) { return outcome == Outcome::kStall ? "stall" : "no answer"; }

}  // namespace

// Counts the request.
bool HidLink::reaches_device() {
  std::optional<unsigned>& left = device_.usb_faults.unplugs_after;
  if (left && !strikes(*left)) {
    left.reset();
    unplugged_ = true;
    device_.unplug();
  }
  // What was on its way behind the last request is lost as well.
  return !unplugged_ && !device_.usb_faults.hangs;
}

Outcome HidLink::set_report(uint8_t id, std::span<const uint8_t> payload) {
  const std::string line = report_line("set_report", id, payload);
  Outcome outcome = Outcome::kNoAnswer;
  if (reaches_device()) {
    outcome = device_.set_feature(id, payload) ? Outcome::kDone : Outcome::kStall;
  }
  tell(outcome == Outcome::kDone ? line : line + " -> " + failure(outcome));
  return outcome;
}

Response HidLink::get_report(uint8_t id) {
  Response response{Outcome::kNoAnswer};
  if (reaches_device()) {
    std::optional<std::vector<uint8_t>> payload = device_.get_feature(id);
    response.outcome = payload ? Outcome::kDone : Outcome::kStall;
    if (payload) response.data = std::move(*payload);
  }
  const bool done = response.outcome == Outcome::kDone;
  const std::string line = report_line("get_report", id, response.data);
  tell(done ? line : line + " " + failure(response.outcome));
  return response;
}

}  // namespace zelkora::sim
