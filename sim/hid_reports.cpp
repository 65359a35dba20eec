// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hid_reports.h"

#include <linux/hiddev.h>

#include "usb_descriptors.h"

namespace zelkora::sim {
namespace {

constexpr uint32_t kPhysical = 0;
constexpr uint32_t kApplication = 1;

constexpr uint32_t kVendorUsage = 0xFF000001;
constexpr uint32_t kMouse = 0x00010002;
constexpr uint32_t kPointer = 0x00010001;

constexpr HidCollection kCollections[] = {
    {kApplication, kVendorUsage, 0}, {kApplication, kMouse, 0}, {kPhysical, kPointer, 1}};

// Bits that only fill a byte up are no field.
constexpr HidField kButtons = {.first_usage = 0x00090001,
                               .usage_count = 3,
                               .flags = HID_FIELD_VARIABLE,
                               .physical = kPointer,
                               .application = kMouse,
                               .collection = 2,
                               .logical_minimum = 0,
                               .logical_maximum = 1};
constexpr HidField kAxes = {.first_usage = 0x00010030,
                            .usage_count = 2,
                            .flags = HID_FIELD_VARIABLE | HID_FIELD_RELATIVE,
                            .physical = kPointer,
                            .application = kMouse,
                            .collection = 2,
                            .logical_minimum = -127,
                            .logical_maximum = 127};

HidField feature_field(const FeatureReport& report) {
  return {.first_usage = kVendorUsage,
          .usage_count = report.usage_count,
          .flags = HID_FIELD_VARIABLE,
          .physical = 0,
          .application = kVendorUsage,
          .collection = 0,
          .logical_minimum = report.logical_minimum,
          .logical_maximum = report.logical_maximum};
}

}  // namespace

std::span<const HidCollection> hid_collections() { return kCollections; }

std::vector<HidReport> hid_reports(const UsbInterface& usb) {
  std::vector<HidReport> reports;
  for (const FeatureReport& report : usb.hid.feature_reports()) {
    reports.push_back({HID_REPORT_TYPE_FEATURE, report.id, {feature_field(report)}});
  }
  reports.push_back(
      {HID_REPORT_TYPE_INPUT, input_report_id(usb.hid.feature_reports()), {kButtons, kAxes}});
  return reports;
}

}  // namespace zelkora::sim
