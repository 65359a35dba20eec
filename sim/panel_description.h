// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One virtual panel, as text on a command line and as numbers.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "resistive_controller.h"

namespace zelkora::sim {

struct PanelDescription {
  UsbIdentity identity{0x3A4C, 0x1688, "Zelkora", "Virtual Resistive"};
  std::string firmware = "V1.2";
  std::vector<std::pair<uint8_t, uint16_t>> words;  // address and stored value
  ResistiveFaults faults;
  mode_t hiddev_mode = 0600;
  mode_t mode = 0600;  // of the other nodes
};

// Reads text such as `resistive,firmware=V1.2,id=3A4C:1688,word86=1`. A value with a comma stands
// in double quotes. Returns what is wrong with it, or an empty text.
std::string parse_panel(std::string_view text, PanelDescription& panel);

// Makes a controller what was described.
void set_up(ResistiveController& controller, const PanelDescription& panel);

// The kinds and keys, for --help.
std::string panel_help();

}  // namespace zelkora::sim
