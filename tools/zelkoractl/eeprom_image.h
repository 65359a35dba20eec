// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The EEPROM of a resistive panel as a whole: in a file, and page by page in the panel.
#pragma once

#include <zelkora.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "panels.h"

namespace zelkoractl {

inline constexpr int kEepromPages = 4;
inline constexpr size_t kEepromPageSize = 32;

using EepromImage = std::array<unsigned char, kEepromPages * kEepromPageSize>;

// Reads a file of the form that AXI_LoadDevToFile() writes. Throws a usage Failure when it is none:
// its length or its checksum is wrong.
EepromImage read_image_file(const std::string& path);

// Writes such a file; one that was there is replaced as a whole or stays. Throws when that fails.
void write_image_file(const std::string& path, const EepromImage& image);

// The whole EEPROM. Throws when a page is not told. `doing` is what a terminal shows meanwhile.
EepromImage fetch_image(const Panel& panel, const std::string& doing);

// Writes all pages and compares each with what the panel then holds. Returns the first page that
// was not taken, or nothing. The panel is opened for it; throws when that fails.
std::optional<int> write_image(const Panel& panel, const EepromImage& image,
                               const std::string& doing);

// The first address at which they differ.
std::optional<size_t> first_difference(const EepromImage& one, const EepromImage& other);

}  // namespace zelkoractl
