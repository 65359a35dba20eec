// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Panels in a text file, one description to a line. Blank lines are skipped, and so is all from a
// '#' on that begins a line or follows a blank, unless it stands in double quotes:
//
//   # a kiosk with two screens
//   resistive,name="Left, lower",beep=0
//   pct8753,nodes=hidraw,sn=0102030405060708   # the new one
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "panel_description.h"

namespace zelkora::sim {

// Appends the panels of the file. Returns what is wrong with it, in the form "FILE:LINE: TEXT" or
// "FILE: TEXT", or an empty text.
std::string read_panels(std::istream& file, const std::string& name,
                        std::vector<PanelDescription>& panels);
std::string read_panel_file(const std::string& name, std::vector<PanelDescription>& panels);

}  // namespace zelkora::sim
