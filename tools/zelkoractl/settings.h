// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What a setting of any kind of panel is: its name, the values it takes, and how they read. The
// settings that panels have are in resistive_settings.h and pct_settings.h; one of the same name
// means the same in both.
#pragma once

#include <algorithm>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zelkoractl {

// A value that has a name. Where one has two, the first is the one shown.
struct Word {
  std::string_view text;
  int value;
};

inline constexpr Word kOnOff[] = {{"on", 1}, {"off", 0}};
inline constexpr Word kOffOn[] = {{"on", 0}, {"off", 1}};

struct Values {
  std::span<const Word> words;
  // Of those that are written as numbers; none when the lowest is above the highest.
  int lowest = 1;
  int highest = 0;
  bool is_signed = false;  // stored as 16 bits in two's complement
};

struct Setting {
  std::string_view name;
  Values values;
  std::string_view meaning;
};

// Null when there is no setting of that name.
template <typename AnySetting>
const AnySetting* find_setting(std::span<const AnySetting> settings, std::string_view name) {
  const auto found = std::ranges::find(settings, name, &AnySetting::name);
  return found == settings.end() ? nullptr : &*found;
}

// "on, off", "500..3000" or "none, 5..50".
std::string range_text(const Setting& setting);

bool in_range(const Setting& setting, int stored);

// The word for a stored value, empty when it has none.
std::string_view word_for(const Setting& setting, int stored);

// A stored value as the number it stands for.
int as_number(const Setting& setting, int stored);

// A stored value as people read it: its word, or a number.
std::string value_text(const Setting& setting, int stored);

// The value to store, or nothing when the text is no value in range.
std::optional<int> parse_value(const Setting& setting, std::string_view text);

// "  name  range  meaning", a line for each.
template <typename AnySetting>
std::vector<std::vector<std::string>> help_rows(std::span<const AnySetting> settings) {
  std::vector<std::vector<std::string>> rows;
  for (const AnySetting& setting : settings) {
    rows.push_back(
        {"  " + std::string(setting.name), range_text(setting), std::string(setting.meaning)});
  }
  return rows;
}

}  // namespace zelkoractl
