// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "log.h"

#include <cstdarg>
#include <cstdio>

namespace {

const char* prefix(int level) {
  switch (level) {
    case 0:
      return "EE:";
    case 1:
      return "II:";
    case 2:
      return "CC:";
    case 3:
      return "zelkora DD:";
    default:
      return "";
  }
}

}  // namespace

int DebugMsg(int level, const char* format, ...) {
  if (DbgFlag == 0 && level == zelkora::kTrace) return 0;
  std::fputs(prefix(level), stdout);
  va_list arguments;
  va_start(arguments, format);
  const int printed = std::vprintf(format, arguments);
  va_end(arguments);
  return printed;
}

void PrintData(const char* label, const unsigned char* data, int length) {
  if (DbgFlag == 0) return;
  std::printf("%s---start\n", label);
  // Whole rows only: a last row of fewer than eight bytes has never been part of the dump.
  for (int i = 0; i < length / 8; ++i) {
    const unsigned char* row = data + 8 * i;
    std::printf("0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x\n", row[0], row[1], row[2],
                row[3], row[4], row[5], row[6], row[7]);
  }
  std::printf("%s---End\n", label);
}

void zelkora::debug_perror(const char* text) {
  if (DbgFlag == 1) std::perror(text);
}
