// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Reading what a person typed: numbers and lists of words.
#pragma once

#include <charconv>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zelkora::sim {

// A whole number in this base and nothing else, 0..maximum.
inline std::optional<unsigned> parse_digits(std::string_view text, int base, unsigned maximum) {
  unsigned number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  const bool whole = error == std::errc() && end == text.data() + text.size();
  if (!whole || number > maximum) return std::nullopt;
  return number;
}

// Decimal, or hexadecimal behind "0x".
inline std::optional<unsigned> parse_number(std::string_view text, unsigned maximum) {
  if (text.starts_with("0x") || text.starts_with("0X")) {
    return parse_digits(text.substr(2), 16, maximum);
  }
  return parse_digits(text, 10, maximum);
}

// Bytes of two hexadecimal digits each, as many as there is room for and no more.
inline bool parse_bytes(std::string_view text, std::span<uint8_t> bytes) {
  if (text.size() != 2 * bytes.size()) return false;
  for (uint8_t& byte : bytes) {
    const auto number = parse_digits(text.substr(0, 2), 16, 0xFF);
    if (!number) return false;
    byte = static_cast<uint8_t>(*number);
    text.remove_prefix(2);
  }
  return true;
}

inline std::vector<std::string_view> split(std::string_view text, char separator) {
  std::vector<std::string_view> pieces;
  for (;;) {
    const size_t end = text.find(separator);
    pieces.push_back(text.substr(0, end));
    if (end == std::string_view::npos) return pieces;
    text.remove_prefix(end + 1);
  }
}

}  // namespace zelkora::sim
