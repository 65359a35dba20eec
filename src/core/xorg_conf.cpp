// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Touch sections of an X server configuration, and option lines of its kin.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "file_lines.h"
#include "open_file.h"
#include "paths.h"
#include "scoped.h"
#include "text.h"
#include "zelkora.h"

using zelkora::LineReader;
using zelkora::open_file;
using zelkora::ScopedFile;

namespace {

constexpr size_t kUniqueIdSize = 16;

// The piece of a line behind its third double quote, null when there are fewer.
const char* fourth_piece(const char* line) {
  for (int quotes = 0; quotes < 3; ++quotes) {
    line = std::strchr(line, '"');
    if (line == nullptr) return nullptr;
    ++line;
  }
  return line;
}

}  // namespace

int GetOptionValue(const char* line) {
  const char* piece = fourth_piece(line);
  return piece == nullptr ? 0 : std::atoi(piece);
}

int GetOptionValueStr(const char* line, char* out) {
  const char* piece = fourth_piece(line);
  if (piece == nullptr) return 0;
  // Sixteen bytes, whatever the piece's length: what follows it on the line comes along, behind
  // the NUL that stands for its closing quote.
  char bytes[kUniqueIdSize]{};
  std::memcpy(bytes, piece, strnlen(piece, sizeof bytes));
  if (void* quote = std::memchr(bytes, '"', sizeof bytes)) *static_cast<char*>(quote) = '\0';
  std::memcpy(out, bytes, sizeof bytes);
  return 0;
}

int GetFdiOptionValue(const char* text) {
  constexpr char kMarker[] = "type=\"string\">";
  const char* marker = std::strstr(text, kMarker);
  if (marker == nullptr) return 0;
  const char digit[2] = {marker[sizeof kMarker - 1], '\0'};
  return std::atoi(digit);
}

int GetDevceNumbersConf(void) {
  const ScopedFile file(open_file(zelkora::paths::kXorgConf, "r"));
  if (!file) return 1;
  bool in_layout = false;
  int count = 0;
  for (LineReader reader(file.get()); reader.next();) {
    if (!in_layout) {
      in_layout = reader.contains("\"ServerLayout\"");
    } else if (reader.contains("EndSection")) {
      break;
    } else if (reader.contains("HID TOUCH")) {
      ++count;
    }
  }
  // The count has never been handed out: callers rely on 1.
  static_cast<void>(count);
  return 1;
}

int GetDevceUniqueIDConf(int touch_number, char* out) {
  char section[32];
  std::snprintf(section, sizeof section, "HID TOUCH%d", touch_number);
  const ScopedFile file(open_file(zelkora::paths::kXorgConf, "r"));
  if (!file) return 0;
  bool in_section = false;
  for (LineReader reader(file.get()); reader.next();) {
    // Found by substring, so panel 1 also finds the section of panel 10.
    if (!in_section) {
      in_section = reader.contains(section);
    } else if (reader.contains("UniqueID")) {
      GetOptionValueStr(reader.line().data(), out);
      return 1;
    }
  }
  return 0;
}
