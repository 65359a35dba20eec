// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// How the library opens files by stdio.
#pragma once

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>

namespace zelkora {

// fopen(), but for FIFOs and devices: in a directory that anybody may write to, a FIFO would hold
// the host up for ever, and a device would be set in motion.
inline FILE* open_file(const char* path, const char* mode) {
  struct stat status;
  if (stat(path, &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode)) {
    errno = EINVAL;
    return nullptr;
  }
  return std::fopen(path, mode);
}

}  // namespace zelkora
