// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One HID interface of a virtual controller, as the controller shows it on USB.
#pragma once

#include <string>

#include "hid_device.h"

namespace zelkora::sim {

// The application collections of the report descriptor. They decide which nodes the kernel makes,
// and how it names the event node.
enum class Applications {
  kVendorAndMouse,  // the feature reports are in a vendor's collection, which makes a hiddev node
  kMouse,           // the feature reports are the mouse's: no hiddev node
  kPen,             // the two ends of a pen: no hiddev node
};

struct UsbInterface {
  UsbInterface(HidDevice& device, Applications shown = Applications::kVendorAndMouse)
      : hid(device), applications(shown) {}

  bool makes_hiddev() const { return applications == Applications::kVendorAndMouse; }
  // Top-level collections that are applications, as hiddev counts them.
  unsigned application_count() const;
  // The name of the event node.
  std::string event_name() const;

  HidDevice& hid;
  Applications applications;
};

// What a pen's interface is: no feature reports, and the identity of the controller it is part of.
class PenInterface final : public HidDevice {
 public:
  explicit PenInterface(const HidDevice& controller) : controller_(controller) {}

  const UsbIdentity& identity() const override { return controller_.identity(); }
  std::span<const FeatureReport> feature_reports() const override { return {}; }
  bool set_feature(uint8_t, std::span<const uint8_t>) override { return false; }
  std::optional<std::vector<uint8_t>> get_feature(uint8_t) override { return std::nullopt; }

 private:
  const HidDevice& controller_;
};

}  // namespace zelkora::sim
