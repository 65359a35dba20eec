// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The RS-232 side of a virtual controller: bytes in, bytes out.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "line_settings.h"

namespace zelkora::sim {

class SerialDevice {
 public:
  virtual ~SerialDevice() = default;

  // Bytes that the host wrote to the port.
  virtual void receive(std::span<const uint8_t> bytes) = 0;

  // Bytes for the host, at most `limit` of them; empty when nothing waits.
  virtual std::vector<uint8_t> transmit(size_t limit) = 0;

  // Whether any wait. A device that cannot tell says yes, and a read finds out.
  virtual bool has_bytes() const { return true; }

  // Forgets the bytes that wait for the host.
  virtual void discard() {}

  // False: nothing sits behind the port's node. It opens, and all else fails.
  virtual bool has_hardware() const { return true; }

  // False: the port fails to open this time.
  virtual bool opens() { return true; }

  // How the host has set up the port.
  virtual void configure(const LineSettings&) {}
};

}  // namespace zelkora::sim
