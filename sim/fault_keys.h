// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The faults of the controllers by name, for descriptions and for a session that goes on.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "pct_controller.h"
#include "resistive_controller.h"

namespace zelkora::sim {

// Sets one fault, such as `silent`, `hangs=off` or `bad-checksums=2`. Nothing: there is no fault of
// this name. Otherwise what is wrong with it, or an empty text.
std::optional<std::string> apply_fault(std::string_view text, UsbFaults& faults);
std::optional<std::string> apply_fault(std::string_view text, ResistiveFaults& faults);
std::optional<std::string> apply_fault(std::string_view text, PctFaults& faults);
// Those of a serial line, which a resistive panel on a port has as well.
std::optional<std::string> apply_serial_fault(std::string_view text, ResistiveFaults& faults);

void append_usb_fault_help(std::string& text);
void append_resistive_fault_help(std::string& text);
void append_serial_fault_help(std::string& text);
void append_pct_fault_help(std::string& text);

}  // namespace zelkora::sim
