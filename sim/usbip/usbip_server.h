// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Plugs virtual controllers into this machine's kernel: its virtual host controller (module
// vhci-hcd) takes one end of a socket pair for a USB device, and this end answers for it.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "serial_line.h"
#include "usb_interface.h"
#include "usbip_session.h"

namespace zelkora::sim {

// The nodes that the kernel made for an interface of a controller; empty: none.
struct UsbNodes {
  std::string hiddev;
  std::string hidraw;
  std::string event;

  bool none() const { return hiddev.empty() && hidraw.empty() && event.empty(); }
  bool complete(const UsbInterface& interface) const {
    return hiddev.empty() != interface.makes_hiddev() && !hidraw.empty() && !event.empty();
  }
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

  // Plugs a device with these interfaces in and waits for the nodes of each. The device must
  // outlive the server or be unplugged first. Devices are numbered from 0 in the order of these
  // calls. The trace receives a line for each feature report, see VirtualKernel::set_trace(), and
  // "plugged" and "unplugged"; it may be empty.
  std::vector<UsbNodes> plug(std::vector<UsbInterface> interfaces, Trace trace = {});

  // Pulls the plug and waits until the kernel has dropped the nodes.
  void unplug(size_t number);

  // Plugs an unplugged device in again, into another port, and waits for its nodes.
  std::vector<UsbNodes> plug_again(size_t number);

  // Pulls the plug in the midst of the request that the kernel is making, which gets no answer.
  void drop(size_t number);

  // Pulls the plug and puts it back into the same port: what a device does that resets itself. A
  // device may ask for this in the midst of a request; it is done while the kernel is answered.
  void replug(size_t number);

  // Serves a serial line at the same time. It must outlive the server.
  void also_serve(SerialLine& line) { lines_.push_back(&line); }

  // Answers the kernel until this descriptor can be read.
  void serve_until_readable(int descriptor);

 private:
  class Plug;

  std::vector<UsbNodes> wait_for_nodes(Plug& plug);
  bool serve(int descriptor, int milliseconds);
  template <typename Condition>
  bool serve_until(Condition condition);

  std::vector<std::unique_ptr<Plug>> plugs_;
  std::vector<SerialLine*> lines_;
};

}  // namespace zelkora::sim
