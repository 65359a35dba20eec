// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Faults of the C library, by the number of the call. While armed, every call of the library that
// can fail is counted, and those that the plan names fail. Streams of fopen() are then made of
// calls of their own, so that ferror() is set where reading or writing fails.
#pragma once

#include <cstddef>
#include <cstdio>
#include <vector>

namespace zelkora::test {

// One fallible call: its name, and what tells it from others of that name.
struct FallibleCall {
  const char* name;
  unsigned long detail;
  friend bool operator==(const FallibleCall&, const FallibleCall&) = default;
};

struct FaultPlan {
  // Instead of an error: half of the bytes are read or written, a pipe is empty, a command
  // exits with 1. Other calls succeed.
  static constexpr int kShort = -1;

  size_t first = 0;  // the call that fails, from 1 on; 0: none
  bool persistent = false;
  int error = 0;
};

enum class Fate { kSuccess, kError, kShort };

class Faults {
 public:
  static void arm(const FaultPlan& plan);
  static void disarm();
  static bool armed();
  static const std::vector<FallibleCall>& calls();
  // Calls that the plan made fail or fall short.
  static size_t injected();
  // At the start of a fallible call. The error is in errno.
  static Fate reach(const char* name, unsigned long detail = 0);
  // The stream of an open file, with fallible reads and writes.
  static FILE* watched(FILE* file, const char* mode);
  // What ends a run that makes more calls than any run has a use for.
  static inline void (*on_endless)(const FallibleCall& call) = nullptr;

  // What the bench itself does in the midst of a call is none of the library's.
  class Pause {
   public:
    Pause();
    ~Pause();
    Pause(const Pause&) = delete;
    Pause& operator=(const Pause&) = delete;

   private:
    bool was_armed_;
  };
};

}  // namespace zelkora::test
