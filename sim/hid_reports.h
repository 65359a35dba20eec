// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the kernel makes of a controller's report descriptor: collections, reports and their fields.
// See report_descriptor() for the text that says the same.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "usb_interface.h"

namespace zelkora::sim {

struct HidCollection {
  uint32_t type;
  uint32_t usage;
  uint32_t level;
};

// Usages that follow one another.
struct HidField {
  uint32_t first_usage;
  uint32_t usage_count;
  uint32_t flags;
  uint32_t physical;  // the collections that it is in
  uint32_t application;
  int collection;
  int logical_minimum;
  int logical_maximum;
};

struct HidReport {
  uint32_t type;  // HID_REPORT_TYPE_...
  uint8_t id;
  std::vector<HidField> fields;
};

std::span<const HidCollection> hid_collections();

// The feature reports of the device, and the input report of the mouse that it is as well.
std::vector<HidReport> hid_reports(const UsbInterface& usb);

}  // namespace zelkora::sim
