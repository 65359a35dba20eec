// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// /dev/ttySN and /dev/ttyUSBN, opened non-blocking: bytes out, and in what waits. The settings of
// the line are kept and told, and the device hears of them.
#pragma once

#include <cstddef>
#include <cstdint>

#include "device_node.h"
#include "serial_device.h"

namespace zelkora::sim {

// The terminal settings as the kernel's requests carry them, which are not those of <termios.h>.
struct KernelTermios {
  static constexpr size_t kControlCharacters = 19;

  uint32_t input, output, control, local;
  uint8_t discipline;
  uint8_t characters[kControlCharacters];
};
static_assert(sizeof(KernelTermios) == 36);

class SerialNode final : public DeviceNode {
 public:
  explicit SerialNode(SerialDevice& device) : device_(device) {}

  int open() override;
  void close() override;
  int ioctl(unsigned long request, void* argument) override;
  ssize_t read(std::span<uint8_t> room) override;
  ssize_t write(std::span<const uint8_t> bytes) override;
  int poll() override;
  std::string describe(unsigned long request, const void* argument) const override;

 private:
  bool works() const { return !gone() && device_.has_hardware(); }
  void set_up(const void* settings);
  int flush(int queue);

  SerialDevice& device_;
  unsigned descriptors_ = 0;
  KernelTermios settings_ = initial_settings();

  static KernelTermios initial_settings();
};

}  // namespace zelkora::sim
