// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A virtual controller at its own end of a real serial line. The host is at the other one.
#pragma once

#include <string>

#include "serial_device.h"

namespace zelkora::sim {

// Failures are thrown as std::runtime_error with a text for the user.
class SerialLine {
 public:
  // Sets the terminal at `path` up like the controller: raw, 9600 baud, 8N1. The device must
  // outlive the line.
  SerialLine(SerialDevice& device, std::string path);
  ~SerialLine() { unplug(); }
  SerialLine(const SerialLine&) = delete;
  SerialLine& operator=(const SerialLine&) = delete;

  // Can be read when the host has sent something; -1 when the controller is unplugged.
  int descriptor() const { return descriptor_; }

  // Takes what has come and answers it.
  void serve();

  // Nobody answers any more, until it is plugged in again.
  void unplug();
  void plug();

 private:
  void set_up() const;

  SerialDevice& device_;
  std::string path_;
  int descriptor_ = -1;
};

}  // namespace zelkora::sim
