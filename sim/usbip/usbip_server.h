// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Plugs virtual controllers into this machine's kernel: its virtual host controller (module
// vhci-hcd) takes one end of a socket pair for a USB device, and this end answers for it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "hid_device.h"
#include "usbip_session.h"

namespace zelkora::sim {

// The nodes that the kernel made for a controller.
struct UsbNodes {
  std::string hiddev;
  std::string hidraw;
  std::string event;

  bool complete() const { return !hiddev.empty() && !hidraw.empty() && !event.empty(); }
};

// Everything runs on the caller's thread: the kernel is answered only while a call lasts.
// Failures are thrown as std::runtime_error with a text for the user.
class UsbipServer {
 public:
  UsbipServer();
  // The kernel sees all controllers unplugged.
  ~UsbipServer();
  UsbipServer(const UsbipServer&) = delete;
  UsbipServer& operator=(const UsbipServer&) = delete;

  // Plugs the device in and waits for its nodes. The device must outlive the server or be
  // unplugged first. Controllers are numbered from 0 in the order of these calls.
  UsbNodes plug(HidDevice& device);

  // Pulls the plug and waits until the kernel has dropped the nodes.
  void unplug(size_t number);

  // Pulls the plug and puts it back into the same port: what a device does that resets itself. A
  // device may ask for this in the midst of a request; it is done while the kernel is answered.
  void replug(size_t number);

  // Answers the kernel until this descriptor can be read.
  void serve_until_readable(int descriptor);

 private:
  class Plug;

  bool serve(int descriptor, int milliseconds);
  template <typename Condition>
  bool serve_until(Condition condition);

  std::vector<std::unique_ptr<Plug>> plugs_;
};

}  // namespace zelkora::sim
