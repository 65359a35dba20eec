// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Names of serial ports. They come from a world-writable list, so none goes into a path, a command
// or a generated file before it was looked at.
#pragma once

#include <cstddef>
#include <string_view>

#include "core/text.h"
#include "zelkora.h"

namespace zelkora::serial {

inline constexpr size_t kNameSize = sizeof TouchDeviceEntry::Name;

// A name of its own storage, always terminated.
struct PortName {
  explicit PortName(std::string_view name) : whole(name.size() < sizeof text) {
    set_text(text, name);
  }
  // A field of the device table, or of the serial panel list.
  template <size_t kSize>
  explicit PortName(const char (&name)[kSize]) : PortName(field_text(name)) {}

  bool is_tty() const { return contains(text, "tty"); }
  // Letters, digits and "._/-", no way up, and not cut.
  bool is_safe() const;

  bool whole;
  char text[kNameSize];
};

// A controller's text as far as it may stand in a line of the list: printable.
std::string_view listable(std::string_view text);

// Calls visit(number, name, entry) for each serial panel of the device table, numbered from 1.
template <typename Visit>
void for_each_serial_panel(Visit visit) {
  int number = 0;
  for (const TouchDeviceEntry& entry : TouchDevice) {
    const PortName name(entry.Name);
    if (name.is_tty()) visit(++number, name, entry);
  }
}

}  // namespace zelkora::serial
