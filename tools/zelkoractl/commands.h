// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands. Each throws a Failure when there is nothing to answer; one that has an answer in
// spite of a failure returns both.
#pragma once

#include <string>
#include <vector>

#include "output.h"

namespace zelkoractl {

Answer list_panels();
Answer show_panel(const std::string& panel);
Answer show_serial_number(const std::string& panel);
Answer list_screens();

// All settings when `setting` is empty.
Answer get_settings(const std::string& panel, const std::string& setting);
Answer set_settings(const std::string& panel, const std::vector<std::string>& assignments);
Answer apply_defaults(const std::string& panel);

// Make the current settings those to go back to, and go back.
Answer keep_settings(const std::string& panel);
Answer revert_settings(const std::string& panel);

// "digitizer", "mouse" or "hybrid", of projected-capacitive panels. They may come back from a reset
// with another product id.
Answer set_mode(const std::string& panel, const std::string& mode);
Answer reset_panel(const std::string& panel);

}  // namespace zelkoractl
