// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace zelkora::test {

// The write that goes past this size is the process's last act.
inline bool limit_file_size(rlim_t bytes) {
  const rlimit size = {bytes, bytes};
  const rlimit no_core = {0, 0};
  return ::setrlimit(RLIMIT_FSIZE, &size) == 0 && ::setrlimit(RLIMIT_CORE, &no_core) == 0;
}

}  // namespace zelkora::test
