// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The calls of the library that write files: one row each. A new one joins with its row.
#pragma once

#include <sys/types.h>

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace zelkora::test {

struct Writer {
  std::string name;                // letters and digits
  std::vector<std::string> files;  // that it writes
  std::function<void()> prepare;   // puts the old files there, and what else the call needs
  std::function<void()> write;
  // What the library itself makes of the first file; none: other programs read it.
  std::function<std::string()> read = {};
  mode_t new_mode = 0644;  // of a file that was not there
  bool in_place = false;   // no other file can take the place of this one
};

std::vector<Writer> writers();

inline std::ostream& operator<<(std::ostream& out, const Writer& writer) {
  return out << writer.name;
}

}  // namespace zelkora::test
