// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One virtual panel, as text on a command line and as numbers.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "pct_controller.h"
#include "resistive_controller.h"

namespace zelkora::sim {

struct ResistiveDescription {
  std::string firmware = "V1.2";
  std::vector<std::pair<uint8_t, uint16_t>> words;  // address and stored value
  bool signed_fields = false;                       // of its report, on USB
  ResistiveFaults faults;
};

// A resistive panel on a serial port.
struct SerialDescription : ResistiveDescription {
  std::string port;             // "ttyS0"; empty: the first one that is free
  bool new_generation = false;  // how it answers when it is asked whether it is there
};

struct PctDescription {
  uint32_t firmware = PctController::kFirmware8753;  // tells the family, too
  unsigned pos_mode = 1;
  // Nothing: the flash is blank, as delivered.
  std::optional<std::array<uint8_t, 8>> serial_number = {};
  PctFaults faults = {};
};

struct PanelDescription {
  // Who it is on USB; a serial panel is not there, and has none of the nodes below.
  UsbIdentity identity{0x3A4C, 0x1688, "Zelkora", "Virtual Resistive"};
  std::variant<ResistiveDescription, PctDescription, SerialDescription> controller = {};
  UsbFaults usb_faults = {};
  bool on_hiddev = true;
  bool on_hidraw = true;
  bool has_pen = false;  // on a second interface, with a hidraw and an event node of its own
  mode_t hiddev_mode = 0600;
  mode_t mode = 0600;  // of the other nodes
};

inline bool is_serial(const PanelDescription& panel) {
  return std::holds_alternative<SerialDescription>(panel.controller);
}

// Reads text such as `resistive,firmware=V1.2,id=3A4C:1688,word86=1` or `serial,port=ttyS0`. A value
// with a comma stands in double quotes. Returns what is wrong with it, or an empty text.
std::string parse_panel(std::string_view text, PanelDescription& panel);

// The kinds and keys, for --help.
std::string panel_help();

}  // namespace zelkora::sim
