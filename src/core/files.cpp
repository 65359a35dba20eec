// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include <cstdio>

#include "log.h"
#include "zelkora.h"

int DelFile(const char* path) {
  struct stat status;
  if (stat(path, &status) != 0) return 0;
  const int result = std::remove(path);
  DebugMsg(zelkora::kTrace, "***DelFile remove status=%d***\n", result);
  return 1;
}
