// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Files whose mere existence switches a behaviour of the whole system, and one setting beside them.
#include <sys/stat.h>

#include <cstdio>

#include "core/open_file.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "zelkora.h"

namespace {

int exists(const char* path) {
  struct stat status;
  return stat(path, &status) == 0 ? 1 : 0;
}

// These two flags count only when this process may read them.
int readable(const char* path) {
  return zelkora::ScopedFile(zelkora::open_file(path, "r")) ? 1 : 0;
}

}  // namespace

int ChkMouseMode(void) { return exists(zelkora::paths::kMouseModeFlag); }

int ChkHybridMode(void) { return exists(zelkora::paths::kHybridModeFlag); }

int ChkDisableRS232(void) { return readable(zelkora::paths::kNoSerialFlag); }

int ChkUdevPath(void) { return readable(zelkora::paths::kUdevInEtcFlag); }

int GetPostModeConf(void) {
  return ReadIniKeyValue(zelkora::paths::kUtilities, "SETUP", "POSMODE", 0);
}
