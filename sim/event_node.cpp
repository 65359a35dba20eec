// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "event_node.h"

#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <cerrno>

#include "request_name.h"

namespace zelkora::sim {
namespace {

constexpr uint16_t kHidVersion = 0x0111;  // of the HID descriptor, not of the device

// Only whole events are read or written.
bool fits(size_t length) { return length == 0 || length >= sizeof(input_event); }

}  // namespace

int EventNode::ioctl(unsigned long request, void* argument) {
  if (gone()) return -ENODEV;
  if (_IOC_SIZE(request) > 0 && argument == nullptr) return -EFAULT;
  const UsbIdentity& identity = hid_->identity();
  const std::span<char> room(static_cast<char*>(argument), _IOC_SIZE(request));
  switch (request) {
    case EVIOCGVERSION:
      *static_cast<int*>(argument) = EV_VERSION;
      return 0;
    case EVIOCGID:
      *static_cast<input_id*>(argument) = {BUS_USB, identity.vendor, identity.product, kHidVersion};
      return 0;
    default:
      break;
  }
  switch (without_size(request)) {
    case EVIOCGNAME(0):
      return copy_name(hid_->usb().event_name(), room);
    case EVIOCGPHYS(0):
      return hid_->phys().empty() ? -ENOENT : copy_name(hid_->phys(), room);
    case EVIOCGUNIQ(0):
      return copy_name("", room);
    default:
      return -EINVAL;
  }
}

ssize_t EventNode::read(std::span<uint8_t> room) {
  if (!fits(room.size())) return -EINVAL;
  return gone() ? -ENODEV : -EAGAIN;
}

ssize_t EventNode::write(std::span<const uint8_t> bytes) {
  if (!fits(bytes.size())) return -EINVAL;
  if (gone()) return -ENODEV;
  // Events for the device, such as its lamps: whole ones are taken, and without effect.
  return static_cast<ssize_t>(bytes.size() - bytes.size() % sizeof(input_event));
}

int EventNode::poll() { return gone() ? POLLERR | POLLHUP : POLLOUT | POLLWRNORM; }

std::string EventNode::describe(unsigned long request, const void*) const {
  return event_request(request);
}

}  // namespace zelkora::sim
