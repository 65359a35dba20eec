// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What stands behind an open node of the virtual kernel. Results are those of the system calls,
// with -errno for a failure.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <span>
#include <string>

namespace zelkora::sim {

using Trace = std::function<void(std::string)>;

class DeviceNode {
 public:
  virtual ~DeviceNode() = default;

  virtual int open() { return 0; }
  // A descriptor that was opened is closed.
  virtual void close() {}
  virtual int ioctl(unsigned long request, void* argument) = 0;
  virtual ssize_t read(std::span<uint8_t> room) = 0;
  virtual ssize_t write(std::span<const uint8_t> bytes) = 0;
  // POLLIN and so on: what is possible now.
  virtual int poll() = 0;
  // The request in words, for the trace.
  virtual std::string describe(unsigned long request, const void* argument) const = 0;

  // The device is gone; descriptors of the node may outlive it.
  void unplug() { gone_ = true; }
  bool gone() const { return gone_; }

 private:
  bool gone_ = false;
};

}  // namespace zelkora::sim
