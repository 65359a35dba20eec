// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands on the EEPROM images of resistive panels.
#pragma once

#include <string>

#include "output.h"

namespace zelkoractl {

Answer back_up_eeprom(const std::string& panel, const std::string& file);

// Byte by byte; a failure names the first address that differs.
Answer verify_eeprom(const std::string& panel, const std::string& file);

// What differs, with the settings that are kept there.
Answer diff_eeprom(const std::string& panel, const std::string& file);

// All pages or none: what the panel held is saved beside the file first, and written back when a
// page is not taken.
Answer restore_eeprom(const std::string& panel, const std::string& file);

}  // namespace zelkoractl
