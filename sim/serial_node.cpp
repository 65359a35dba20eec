// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "serial_node.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include "request_name.h"

namespace zelkora::sim {

int SerialNode::ioctl(unsigned long, void*) { return -ENOTTY; }

ssize_t SerialNode::read(std::span<uint8_t> room) {
  if (room.empty()) return 0;
  const std::vector<uint8_t> bytes = device_.transmit(room.size());
  if (bytes.empty()) return -EAGAIN;
  std::ranges::copy(bytes, room.begin());
  return static_cast<ssize_t>(bytes.size());
}

ssize_t SerialNode::write(std::span<const uint8_t> bytes) {
  device_.receive(bytes);
  return static_cast<ssize_t>(bytes.size());
}

// A port that is gone hangs up: end of file for readers, errors for everything else.
DeviceNode::AfterUnplug SerialNode::after_unplug() const {
  return {.ioctl = -EIO, .read = 0, .write = -EIO};
}

std::string SerialNode::describe(unsigned long request, const void*) const {
  return unknown_request(request);
}

}  // namespace zelkora::sim
