// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Texts in fixed-size fields.
#pragma once

#include <cstddef>
#include <cstring>
#include <string_view>

namespace zelkora {

inline bool contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

// Copies a text into a field, cut to fit; the rest of the field is cleared.
inline void set_text(char* field, size_t size, std::string_view text) {
  const size_t length = text.size() < size ? text.size() : size - 1;
  std::memset(field, 0, size);
  std::memcpy(field, text.data(), length);
}

template <size_t kSize>
void set_text(char (&field)[kSize], std::string_view text) {
  set_text(field, kSize, text);
}

// The text of a field that may lack its terminator.
inline std::string_view field_text(const char* field, size_t size) {
  return {field, strnlen(field, size)};
}

template <size_t kSize>
std::string_view field_text(const char (&field)[kSize]) {
  return field_text(field, kSize);
}

// Copies a field's text out; `out` is as large as the field.
template <size_t kSize>
void copy_text(char* out, const char (&field)[kSize]) {
  const std::string_view text = field_text(field, kSize - 1);
  std::memcpy(out, text.data(), text.size());
  out[text.size()] = '\0';
}

// A panel's serial number as people and files see it: 16 lower-case hex digits.
struct SerialNumberText {
  explicit SerialNumberText(const unsigned char (&bytes)[8]) {
    for (size_t i = 0; i < sizeof bytes; ++i) {
      text[2 * i] = "0123456789abcdef"[bytes[i] >> 4];
      text[2 * i + 1] = "0123456789abcdef"[bytes[i] & 0xF];
    }
  }
  char text[17] = "";
};

}  // namespace zelkora
