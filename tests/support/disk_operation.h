// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One change that the library made on disk, as the calls of the C library show it.
#pragma once

#include <cstddef>
#include <string>

namespace zelkora::test {

struct DiskOperation {
  enum class Kind { kCreate, kWrite, kResize, kMode, kRename, kRemove, kSync };

  Kind kind;
  std::string path;         // by its real name; of a directory, too, for kSync
  std::string target = {};  // kRename: the new name
  std::string bytes = {};   // kWrite
  size_t number = 0;        // kWrite: where to; kResize: the size; kCreate, kMode: the mode
};

}  // namespace zelkora::test
