// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Owners of what one function opens. The exported descriptor `fd` is not one of them: it outlives
// every call and keeps its number on purpose.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace zelkora {

template <typename T, auto kRelease>
class ScopedPointer {
 public:
  explicit ScopedPointer(T* owned = nullptr) : owned_(owned) {}
  ScopedPointer(const ScopedPointer&) = delete;
  ScopedPointer& operator=(const ScopedPointer&) = delete;
  ~ScopedPointer() {
    if (owned_ != nullptr) kRelease(owned_);
  }

  T* get() const { return owned_; }
  explicit operator bool() const { return owned_ != nullptr; }
  T* release() { return std::exchange(owned_, nullptr); }

 private:
  T* owned_;
};

// Named functions, where a type in a header is to be the same everywhere.
inline void close_file(FILE* file) { std::fclose(file); }
inline void close_pipe(FILE* pipe) { ::pclose(pipe); }
inline void close_directory(DIR* directory) { ::closedir(directory); }

using ScopedFile = ScopedPointer<FILE, close_file>;
using ScopedPipe = ScopedPointer<FILE, close_pipe>;  // of popen()
using ScopedDir = ScopedPointer<DIR, close_directory>;

class ScopedFd {
 public:
  explicit ScopedFd(int descriptor) : descriptor_(descriptor) {}
  ScopedFd(const ScopedFd&) = delete;
  ScopedFd& operator=(const ScopedFd&) = delete;
  ~ScopedFd() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }

  int get() const { return descriptor_; }
  explicit operator bool() const { return descriptor_ >= 0; }

 private:
  int descriptor_;
};

}  // namespace zelkora
