// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "text.h"

#include <cstdlib>

#include "zelkora.h"

namespace {

// The value of a hex digit, or -1.
int digit_value(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

unsigned hex_to_number(const char* text, int count) {
  unsigned number = 0;
  for (int i = 0; i < count; ++i) {
    const int value = digit_value(text[i]);
    if (value < 0) break;
    number = (number << 4) | static_cast<unsigned>(value);
  }
  return number;
}

}  // namespace

unsigned int HextoInt(const char* text, int count) { return hex_to_number(text, count); }

unsigned int HexStrToInt(const char* text, int count) { return hex_to_number(text, count); }

unsigned int CheckSum(const unsigned char* data, int length) {
  unsigned sum = 0x6666;
  for (int i = 0; i < length; ++i) sum = (sum + data[i]) & 0xFFFF;
  return sum;
}

int SubStr(ConfigLine line) {
  char text[sizeof line.Text + 1];
  zelkora::set_text(text, zelkora::field_text(line.Text));
  char* rest = nullptr;
  for (char* piece = strtok_r(text, "\" ", &rest); piece != nullptr;
       piece = strtok_r(nullptr, "\" ", &rest)) {
    if (std::strpbrk(piece, "1234") != nullptr) return std::atoi(piece);
  }
  return 0;
}
