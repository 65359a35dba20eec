// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The unit tests run in a private root: a /dev, a data directory, an /etc and a working directory
// of their own, so that no test sees or changes the machine's.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "private_root.h"

namespace {

constexpr char kWorkingDirectory[] = "/opt/zelkora-tests";

bool enter() {
  const std::string error = zelkora::sim::enter_private_root({.private_etc = true});
  if (!error.empty()) {
    std::fprintf(stderr, "zelkora_tests: cannot make a private root: %s\n", error.c_str());
    return false;
  }
  if (mkdir(kWorkingDirectory, 0755) != 0 || chdir(kWorkingDirectory) != 0) {
    std::perror(kWorkingDirectory);
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  // Before the working directory changes: paths on the command line are relative to the old one.
  testing::InitGoogleTest(&argc, argv);
  if (!enter()) return 1;
  return RUN_ALL_TESTS();
}
