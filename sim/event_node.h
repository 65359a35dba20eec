// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// /dev/input/eventN, opened: who the device is. It never sends an event.
#pragma once

#include <memory>

#include "hid_interface.h"

namespace zelkora::sim {

class EventNode final : public DeviceNode {
 public:
  explicit EventNode(std::shared_ptr<HidInterface> interface) : hid_(std::move(interface)) {}

  int ioctl(unsigned long request, void* argument) override;
  ssize_t read(std::span<uint8_t> room) override;
  ssize_t write(std::span<const uint8_t> bytes) override;
  int poll() override;
  std::string describe(unsigned long request, const void* argument) const override;

 private:
  std::shared_ptr<HidInterface> hid_;
};

}  // namespace zelkora::sim
