// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The settings of a resistive panel: their names, where the controller keeps them, and what they
// may be.
//
// They are read with ReadEEPValue() and never with the library's getters: a getter repairs a value
// it finds out of range, and the repair of the play method overwrites the frequency.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace zelkoractl {

enum class ValueKind {
  kNumber,  // 0..65535
  kSigned,  // 16 bits, two's complement
  kOnOff,   // on is stored as 1
  kOffOn,   // on is stored as 0
};

struct Setting {
  std::string_view name;
  int (*write)(unsigned int);  // returns the value read back, -1 when there is none
  short address;
  short written_along;  // another address that `write` changes, or -1
  ValueKind kind;
  int lowest;
  int highest;
  std::string_view meaning;
};

std::span<const Setting> all_settings();

// Null when there is no setting of that name.
const Setting* find_setting(std::string_view name);

// "beep, play-method, ..."
std::string setting_names();

// "on, off" or "500..3000".
std::string range_text(const Setting& setting);

// True when it reads as on or off.
bool is_switch(const Setting& setting);

// A stored 16-bit value as the number it stands for.
int as_number(const Setting& setting, int stored);

bool in_range(const Setting& setting, int stored);

// A stored 16-bit value as people read it: "on", "off" or a number. A switch that holds neither 0
// nor 1 reads as the number.
std::string value_text(const Setting& setting, int stored);

// The 16-bit value to store, or nothing when the text is no value in range.
std::optional<int> parse_value(const Setting& setting, std::string_view text);

}  // namespace zelkoractl
