// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the library may hand to the shell, to systemd, to udev and to the boot script: fixed texts
// around numbers, names of record files and names of ports.
#pragma once

#include <string>
#include <string_view>

namespace zelkora::fuzz {

bool is_allowed_command(std::string_view command);

// Each returns an empty text, or the line that must not be there.
// `before` is the script as the library found it.
std::string bad_boot_line(const std::string& before, const std::string& after);
std::string bad_rule_line(const std::string& rule);
std::string bad_unit_line(const std::string& unit);
std::string bad_list_line(const std::string& list);

}  // namespace zelkora::fuzz
