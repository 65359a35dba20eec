// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "usb_interface.h"

#include <string_view>

namespace zelkora::sim {
namespace {

// What the kernel calls the application that makes the event node.
std::string_view input_name(Applications applications) {
  return applications == Applications::kPen ? "Stylus" : "Mouse";
}

}  // namespace

unsigned UsbInterface::application_count() const {
  return applications == Applications::kMouse ? 1 : 2;
}

// The application is part of the name only where there are several, and never twice.
std::string UsbInterface::event_name() const {
  std::string name = hid.identity().kernel_name();
  const std::string_view input = input_name(applications);
  if (application_count() > 1 && !name.ends_with(input)) name.append(" ").append(input);
  return name;
}

}  // namespace zelkora::sim
