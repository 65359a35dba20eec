// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// /dev/usb/hiddevN: feature reports written and read usage by usage.
#pragma once

#include <memory>

#include "hid_interface.h"

struct hiddev_usage_ref;

namespace zelkora::sim {

class HiddevNode final : public DeviceNode {
 public:
  explicit HiddevNode(std::shared_ptr<HidInterface> interface) : hid_(std::move(interface)) {}

  int ioctl(unsigned long request, void* argument) override;
  ssize_t read(std::span<uint8_t> room) override;
  ssize_t write(std::span<const uint8_t> bytes) override;
  AfterUnplug after_unplug() const override;
  std::string describe(unsigned long request, const void* argument) const override;

 private:
  int by_size(unsigned long request, void* argument);
  int report_request(unsigned long request, void* argument);
  int field_info(void* argument);
  int usage_request(unsigned long request, hiddev_usage_ref& usage);
  void device_info(void* argument) const;
  // Reads every report from the device, so that the fields start with what it holds.
  void initialise_reports();
  const FeatureReport* look_up(uint32_t type, uint32_t& id) const;
  bool find_usage(hiddev_usage_ref& usage) const;

  std::shared_ptr<HidInterface> hid_;
  bool initialised_ = false;
  int flags_ = 0;
};

}  // namespace zelkora::sim
