// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// More calls of the C library that the test executable answers: those of which tests only want the
// failures that faults.h injects.
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "faults.h"
#include "seams.h"

using zelkora::test::Fate;
using zelkora::test::Faults;
using zelkora::test::next;

namespace {

bool fails(const char* call) { return Faults::reach(call) == Fate::kError; }

}  // namespace

extern "C" {

int stat(const char* path, struct stat* status) noexcept {
  if (fails("stat")) return -1;
  static const auto real = next<int (*)(const char*, struct stat*)>("stat");
  return real(path, status);
}

int lstat(const char* path, struct stat* status) noexcept {
  if (fails("lstat")) return -1;
  static const auto real = next<int (*)(const char*, struct stat*)>("lstat");
  return real(path, status);
}

int remove(const char* path) noexcept {
  if (fails("remove")) return -1;
  static const auto real = next<int (*)(const char*)>("remove");
  return real(path);
}

char* realpath(const char* path, char* resolved) noexcept {
  if (fails("realpath")) return nullptr;
  static const auto real = next<char* (*)(const char*, char*)>("realpath");
  return real(path, resolved);
}

dirent* readdir(DIR* directory) {
  if (fails("readdir")) return nullptr;
  static const auto real = next<dirent* (*)(DIR*)>("readdir");
  return real(directory);
}

FILE* open_memstream(char** bytes, size_t* size) noexcept {
  if (fails("open_memstream")) return nullptr;
  static const auto real = next<FILE* (*)(char**, size_t*)>("open_memstream");
  return real(bytes, size);
}

int fflush(FILE* stream) {
  if (fails("fflush")) return EOF;
  static const auto real = next<int (*)(FILE*)>("fflush");
  return real(stream);
}

// The stream is gone, whatever closing it came to.
int fclose(FILE* stream) {
  const bool failed = fails("fclose");
  static const auto real = next<int (*)(FILE*)>("fclose");
  const int error = errno;
  const int result = real(stream);
  if (!failed) return result;
  errno = error;
  return EOF;
}

}  // extern "C"
