// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hid_interface.h"

#include <linux/hiddev.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "usb_descriptors.h"

namespace zelkora::sim {
namespace {

// A value as the field's eight bits can carry it. A signed field saturates; an unsigned one keeps
// the low byte, so it does not matter whether a byte from 0x80 came as positive or negative.
uint8_t to_byte(int32_t value, bool is_signed) {
  return static_cast<uint8_t>(is_signed ? std::clamp(value, -128, 127) : value);
}

int32_t from_byte(uint8_t byte, bool is_signed) {
  return is_signed ? static_cast<int8_t>(byte) : byte;
}

}  // namespace

unsigned HidInterface::interface_number() const {
  constexpr char kInput[] = "/input";
  const size_t at = phys_.rfind(kInput);
  if (at == std::string::npos) return 0;
  return static_cast<unsigned>(std::strtoul(phys_.c_str() + at + std::strlen(kInput), nullptr, 10));
}

std::vector<uint8_t> HidInterface::description() const { return report_descriptor(usb_); }

std::vector<int32_t>& HidInterface::values(const HidReport& report, size_t field) {
  std::vector<int32_t>& values = values_[{report.type, report.id, field}];
  values.resize(report.fields[field].usage_count);
  return values;
}

void HidInterface::send_values(const HidReport& report) {
  std::vector<uint8_t> payload;
  for (const int32_t value : values(report, 0)) {
    payload.push_back(to_byte(value, report.fields[0].logical_minimum < 0));
  }
  set_report(report.id, payload);
}

void HidInterface::fetch_values(const HidReport& report) {
  // Nobody touches the panel, which stalls when it is asked where.
  if (report.type != HID_REPORT_TYPE_FEATURE) return;
  auto [outcome, payload] = get_report(report.id);
  if (outcome != Outcome::kDone) return;
  std::vector<int32_t>& stored = values(report, 0);
  // A report that came short counts as filled up with zeros.
  payload.resize(stored.size());
  for (size_t i = 0; i < stored.size(); ++i) {
    stored[i] = from_byte(payload[i], report.fields[0].logical_minimum < 0);
  }
  for (ReportListener* listener : listeners_) listener->hear(report.id, payload);
}

void HidInterface::initialise() {
  for (const HidReport& report : reports()) fetch_values(report);
  initialised_ = true;
}

int copy_name(const std::string& name, std::span<char> room) {
  const size_t count = std::min(name.size() + 1, room.size());
  std::memcpy(room.data(), name.c_str(), count);
  return static_cast<int>(count);
}

}  // namespace zelkora::sim
