// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// /dev/ttySN, opened non-blocking: bytes out, and in what waits. Terminal settings are left to the
// carrier, since the C library asks for them by calls of their own.
#pragma once

#include "device_node.h"
#include "serial_device.h"

namespace zelkora::sim {

class SerialNode final : public DeviceNode {
 public:
  explicit SerialNode(SerialDevice& device) : device_(device) {}

  int ioctl(unsigned long request, void* argument) override;
  ssize_t read(std::span<uint8_t> room) override;
  ssize_t write(std::span<const uint8_t> bytes) override;
  AfterUnplug after_unplug() const override;
  std::string describe(unsigned long request, const void* argument) const override;

 private:
  SerialDevice& device_;
};

}  // namespace zelkora::sim
