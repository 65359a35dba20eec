// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "settings.h"

#include <charconv>
#include <cstdint>

#include "output.h"

namespace zelkoractl {

std::string range_text(const Setting& setting) {
  const Values& values = setting.values;
  std::vector<std::string> parts;
  for (const Word& word : values.words) {
    parts.emplace_back(word.text);
  }
  if (values.lowest <= values.highest) {
    parts.push_back(std::to_string(values.lowest) + ".." + std::to_string(values.highest));
  }
  return join(parts);
}

bool in_range(const Setting& setting, int stored) {
  const int number = as_number(setting, stored);
  return !word_for(setting, stored).empty() ||
         (number >= setting.values.lowest && number <= setting.values.highest);
}

std::string_view word_for(const Setting& setting, int stored) {
  const auto word = std::ranges::find(setting.values.words, stored, &Word::value);
  return word == setting.values.words.end() ? std::string_view() : word->text;
}

int as_number(const Setting& setting, int stored) {
  return setting.values.is_signed ? static_cast<int16_t>(stored) : stored;
}

std::string value_text(const Setting& setting, int stored) {
  const std::string_view word = word_for(setting, stored);
  return word.empty() ? std::to_string(as_number(setting, stored)) : std::string(word);
}

std::optional<int> parse_value(const Setting& setting, std::string_view text) {
  const Values& values = setting.values;
  const auto word = std::ranges::find(values.words, text, &Word::text);
  if (word != values.words.end()) return word->value;
  int value = 0;
  const char* const text_end = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), text_end, value);
  if (error != std::errc() || end != text_end) return std::nullopt;
  if (value < values.lowest || value > values.highest) return std::nullopt;
  return static_cast<uint16_t>(value);
}

}  // namespace zelkoractl
