// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One controller's end of a USB/IP connection, as pure logic: bytes from the kernel in, bytes for
// the kernel out.
#pragma once

#include <cstdint>
#include <set>
#include <span>
#include <utility>
#include <vector>

#include "usb_device.h"
#include "usbip_protocol.h"

namespace zelkora::sim {

class UsbipSession {
 public:
  // The trace is that of the feature reports; it may be empty.
  explicit UsbipSession(const std::vector<UsbInterface>& interfaces, const Trace& trace = {})
      : device_(interfaces, trace) {}

  // Takes bytes in pieces of any size and returns the answers to the messages they complete.
  std::vector<uint8_t> receive(std::span<const uint8_t> bytes);

 private:
  bool answer_next(std::vector<uint8_t>& out);
  void submit(const usbip::Submit& request, std::span<const uint8_t> data,
              std::vector<uint8_t>& out);
  void unlink(const usbip::Unlink& request, std::vector<uint8_t>& out);

  UsbDevice device_;
  std::vector<uint8_t> incoming_;
  // Transfers that are never answered: interrupt ones, which wait for a touch, and requests that
  // the device lets hang. The kernel takes them back when its time is up.
  std::set<uint32_t> waiting_;
};

}  // namespace zelkora::sim
