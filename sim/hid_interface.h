// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One attached HID interface as the kernel keeps it: the reports of the device and the values last
// seen in their fields. All nodes of the interface share it, so the values outlive a descriptor.
#pragma once

#include <cstdint>
#include <map>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <vector>

#include "device_node.h"
#include "hid_link.h"
#include "hid_reports.h"
#include "usb_interface.h"

namespace zelkora::sim {

// An open node that gets a copy of reports.
class ReportListener {
 public:
  virtual void hear(uint8_t id, std::span<const uint8_t> payload) = 0;

 protected:
  ~ReportListener() = default;
};

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

  std::vector<HidReport> reports() const { return hid_reports(usb_); }
  std::vector<uint8_t> description() const;
  // The values in a field, one for each usage.
  std::vector<int32_t>& values(const HidReport& report, size_t field);

  // Move the values to the device and back. Like the kernel, which does not hand transfer errors
  // on to hiddev, they leave the values as they are when a request fails.
  void send_values(const HidReport& report);
  void fetch_values(const HidReport& report);
  // Reads every report from the device, so that the fields start with what it holds.
  void initialise();
  bool initialised() const { return initialised_; }

  // One request each, payload without the report id.
  Outcome set_report(uint8_t id, std::span<const uint8_t> payload) {
    return link_.set_report(id, payload);
  }
  Response get_report(uint8_t id) { return link_.get_report(id); }

  // Whoever listens hears of the reports that fetch_values() brings.
  void add(ReportListener& listener) { listeners_.insert(&listener); }
  void remove(ReportListener& listener) { listeners_.erase(&listener); }

 private:
  UsbInterface usb_;
  HidLink link_;
  std::string phys_;
  unsigned device_number_;
  std::map<std::tuple<uint32_t, uint8_t, size_t>, std::vector<int32_t>> values_;
  bool initialised_ = false;
  std::set<ReportListener*> listeners_;
};

// Copies a text the way the kernel hands out names: as much of it and its NUL as there is room
// for. Returns the number of bytes copied.
int copy_name(const std::string& name, std::span<char> room);

}  // namespace zelkora::sim
