// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "faults.h"

#include <unistd.h>

#include <cerrno>

#include "seams.h"

namespace zelkora::test {
namespace {

// Several times what the longest run needs, a persistent fault and all retries included.
constexpr size_t kEndless = 200'000;

bool g_armed = false;
FaultPlan g_plan;
std::vector<FallibleCall> g_calls;
size_t g_injected = 0;

ssize_t read_stream(void* cookie, char* room, size_t size) {
  const Fate fate = Faults::reach("stream read");
  if (fate == Fate::kError) return -1;
  // Fewer bytes, not none: that would be the end of the file.
  if (fate == Fate::kShort) size = (size + 1) / 2;
  static const auto real = next<decltype(&::read)>("read");
  return real(::fileno(static_cast<FILE*>(cookie)), room, size);
}

// A cookie's write tells failure by 0.
ssize_t write_stream(void* cookie, const char* bytes, size_t size) {
  const Fate fate = Faults::reach("stream write");
  if (fate == Fate::kError) return 0;
  if (fate == Fate::kShort) size = (size + 1) / 2;
  static const auto real = next<decltype(&::write)>("write");
  const ssize_t written = real(::fileno(static_cast<FILE*>(cookie)), bytes, size);
  return written < 0 ? 0 : written;
}

int seek_stream(void* cookie, off64_t* offset, int whence) {
  const off64_t at = ::lseek64(::fileno(static_cast<FILE*>(cookie)), *offset, whence);
  if (at < 0) return -1;
  *offset = at;
  return 0;
}

int close_stream(void* cookie) {
  static const auto real = next<decltype(&::fclose)>("fclose");
  return real(static_cast<FILE*>(cookie));
}

}  // namespace

void Faults::arm(const FaultPlan& plan) {
  g_plan = plan;
  g_calls.clear();
  g_injected = 0;
  g_armed = true;
}

void Faults::disarm() { g_armed = false; }

bool Faults::armed() { return g_armed; }

const std::vector<FallibleCall>& Faults::calls() { return g_calls; }

size_t Faults::injected() { return g_injected; }

Fate Faults::reach(const char* name, unsigned long detail) {
  if (!g_armed) return Fate::kSuccess;
  const Pause pause;
  g_calls.push_back({name, detail});
  if (g_calls.size() > kEndless && on_endless != nullptr) on_endless(g_calls.back());
  const size_t number = g_calls.size();
  const bool struck = g_plan.persistent ? number >= g_plan.first : number == g_plan.first;
  if (g_plan.first == 0 || !struck) return Fate::kSuccess;
  ++g_injected;
  if (g_plan.error == FaultPlan::kShort) return Fate::kShort;
  errno = g_plan.error;
  return Fate::kError;
}

FILE* Faults::watched(FILE* file, const char* mode) {
  if (!g_armed || file == nullptr) return file;
  return ::fopencookie(file, mode, {read_stream, write_stream, seek_stream, close_stream});
}

Faults::Pause::Pause() : was_armed_(g_armed) { g_armed = false; }
Faults::Pause::~Pause() { g_armed = was_armed_; }

}  // namespace zelkora::test
