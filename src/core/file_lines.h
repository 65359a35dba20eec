// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A text file line by line, in pieces of at most 255 characters: a longer line comes as several
// pieces, and only its last one ends in the line feed. Bytes of any value survive.
#pragma once

#include <cstddef>
#include <cstdio>
#include <string_view>

namespace zelkora {

inline constexpr size_t kLineBuffer = 256;

class LineReader {
 public:
  explicit LineReader(FILE* file) : file_(file) {}

  // Reads the next piece; false at the end of the file or on a read error.
  bool next() {
    length_ = 0;
    for (int c; length_ < kLineBuffer - 1 && (c = std::getc(file_)) != EOF;) {
      text_[length_++] = static_cast<char>(c);
      if (c == '\n') break;
    }
    text_[length_] = '\0';
    return length_ > 0;
  }

  // The piece with its line feed.
  std::string_view line() const { return {text_, length_}; }
  bool contains(std::string_view part) const { return line().find(part) != line().npos; }

  // What stands behind the first "=", up to a NUL or the end of the piece; null without a "=".
  const char* value() const {
    const size_t equals = line().find('=');
    return equals == line().npos ? nullptr : text_ + equals + 1;
  }

 private:
  FILE* file_;
  char text_[kLineBuffer]{};
  size_t length_ = 0;
};

}  // namespace zelkora
