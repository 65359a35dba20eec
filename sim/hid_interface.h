// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One attached HID interface as the kernel keeps it: the reports of the device and the values last
// seen in their fields. All nodes of the interface share it, so the values outlive a descriptor.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <vector>

#include "device_node.h"
#include "hid_link.h"
#include "usb_interface.h"

namespace zelkora::sim {

class HidInterface {
 public:
  // Device numbers on the bus count from 1; phys ends in the number of the interface.
  HidInterface(const UsbInterface& usb, std::string phys, unsigned device_number, Trace trace)
      : usb_(usb),
        link_(usb.hid, std::move(trace)),
        phys_(std::move(phys)),
        device_number_(device_number) {}

  const UsbInterface& usb() const { return usb_; }
  const UsbIdentity& identity() const { return link_.device().identity(); }
  const std::string& phys() const { return phys_; }
  unsigned device_number() const { return device_number_; }
  unsigned interface_number() const;

  std::span<const FeatureReport> reports() const { return link_.device().feature_reports(); }
  const FeatureReport* find_report(unsigned id) const;
  // The values in the report's one field, one for each usage.
  std::vector<int32_t>& values(const FeatureReport& report);

  // Move the values to the device and back. Like the kernel, which does not hand transfer errors
  // on to hiddev, they leave the values as they are when a request fails.
  void send_values(const FeatureReport& report);
  void fetch_values(const FeatureReport& report);

  // One request each, payload without the report id.
  Outcome set_report(uint8_t id, std::span<const uint8_t> payload) {
    return link_.set_report(id, payload);
  }
  Response get_report(uint8_t id) { return link_.get_report(id); }

 private:
  UsbInterface usb_;
  HidLink link_;
  std::string phys_;
  unsigned device_number_;
  std::map<uint8_t, std::vector<int32_t>> values_;
};

// Copies a text the way the kernel hands out names: as much of it and its NUL as there is room
// for. Returns the number of bytes copied.
int copy_name(const std::string& name, std::span<char> room);

}  // namespace zelkora::sim
