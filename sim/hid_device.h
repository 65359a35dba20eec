// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The USB side of a virtual controller: who it says it is and the HID feature reports it answers.
// The virtual kernel and the USB/IP carrier both stand on this one face.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

namespace zelkora::sim {

struct UsbIdentity {
  uint16_t vendor = 0;
  uint16_t product = 0;
  std::string manufacturer;
  std::string product_name;
  std::string forged_name = {};  // what a kernel unlike Linux says for the texts, however long

  // The name that the kernel gives the device on hiddev, hidraw and evdev.
  std::string kernel_name() const;
};

// The longest text that fits a string descriptor, and the longest name that the kernel keeps.
inline constexpr size_t kLongestUsbText = 126;
inline constexpr size_t kLongestKernelName = 127;

inline std::string UsbIdentity::kernel_name() const {
  if (!forged_name.empty()) return forged_name;
  std::string name = manufacturer.substr(0, kLongestUsbText);
  if (!manufacturer.empty() && !product_name.empty()) name += ' ';
  name += product_name.substr(0, kLongestUsbText);
  if (!name.empty()) return name.substr(0, kLongestKernelName);
  char ids[] = "HID vvvv:pppp";
  std::snprintf(ids, sizeof ids, "HID %04x:%04x", vendor, product);
  return ids;
}

// One feature report of one field of 8-bit usages.
struct FeatureReport {
  uint8_t id = 0;
  unsigned usage_count = 0;  // bytes it carries, the report id not counted
  int logical_minimum = 0;
  int logical_maximum = 255;
};

// What goes wrong on the way to a controller of any kind: see hid_link.h.
struct UsbFaults {
  bool hangs = false;                     // requests are neither answered nor stalled
  std::optional<unsigned> unplugs_after;  // so many requests go well; the next one finds it gone
};

class HidDevice {
 public:
  virtual ~HidDevice() = default;

  virtual const UsbIdentity& identity() const = 0;
  virtual std::span<const FeatureReport> feature_reports() const = 0;

  // Takes a report's payload, without the report id. False: the device stalls the request.
  virtual bool set_feature(uint8_t id, std::span<const uint8_t> payload) = 0;

  // The payload of a report, without the report id; at most usage_count bytes.
  // Nothing: the device stalls the request.
  virtual std::optional<std::vector<uint8_t>> get_feature(uint8_t id) = 0;

  // The carrier pulls the plug when the device asks for it in the midst of a request.
  void set_on_unplug(std::function<void()> on_unplug) { on_unplug_ = std::move(on_unplug); }
  void unplug() const {
    if (on_unplug_) on_unplug_();
  }

  UsbFaults usb_faults;

 private:
  std::function<void()> on_unplug_;
};

}  // namespace zelkora::sim
