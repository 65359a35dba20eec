// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "seams.h"

#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <memory>

#include "faults.h"

namespace zelkora::test {
namespace {

// Other threads are none of the test: a fuzzer has one that watches its memory.
thread_local Seams* g_active = nullptr;

constexpr std::string_view kOrdinaryNodes[] = {
    "/dev/null",  "/dev/zero",  "/dev/full",  "/dev/random", "/dev/urandom",
    "/dev/tty",   "/dev/ptmx",  "/dev/stdin", "/dev/stdout", "/dev/stderr",
    "/dev/pts/*", "/dev/shm/*", "/dev/fd/*",
};

bool matches(std::string_view pattern, std::string_view path) {
  if (!pattern.ends_with('*')) return pattern == path;
  pattern.remove_suffix(1);
  return path.starts_with(pattern);
}

bool is_device(std::string_view path) {
  return path.starts_with("/dev/") &&
         std::ranges::none_of(kOrdinaryNodes,
                              [&](std::string_view node) { return matches(node, path); });
}

template <typename Result>
Result to_errno(Result result) {
  if (result >= 0) return result;
  errno = static_cast<int>(-result);
  return -1;
}

// A real descriptor stands in for a virtual node, so that descriptor numbers behave as usual.
int stand_in(int flags) {
  static const auto real_open = next<decltype(&::open)>("open");
  return real_open("/dev/null", flags & (O_ACCMODE | O_CLOEXEC | O_NONBLOCK));
}

// A file that can be read up to a place.
struct BrokenSource {
  FILE* file;
  size_t left;
};

ssize_t read_broken(void* cookie, char* room, size_t size) {
  auto* source = static_cast<BrokenSource*>(cookie);
  const size_t count = std::fread(room, 1, std::min(size, source->left), source->file);
  source->left -= count;
  if (count > 0) return static_cast<ssize_t>(count);
  errno = EIO;
  return -1;
}

int close_broken(void* cookie) {
  const std::unique_ptr<BrokenSource> source(static_cast<BrokenSource*>(cookie));
  return std::fclose(source->file);
}

}  // namespace

void* next_function(const char* name) { return dlsym(RTLD_NEXT, name); }

Seams* Seams::active() { return g_active; }

Seams::Seams() {
  kernel.set_trace([this](std::string line) { trace.push_back(std::move(line)); });
  g_active = this;
}

Seams::~Seams() { g_active = nullptr; }

std::optional<int> Seams::open(const std::string& path, int flags) {
  const Faults::Pause pause;
  if (!is_device(path)) return std::nullopt;
  if (!kernel.owns(path) && !any_node && !absent_nodes.contains(path)) {
    ADD_FAILURE() << "device access that no test set up: open " << path;
  }
  const int handle = kernel.open(path, flags);
  if (handle < 0) return to_errno(handle);
  const int descriptor = stand_in(flags);
  open_nodes_[descriptor] = {handle, path};
  return descriptor;
}

void Seams::close(int descriptor) {
  const Faults::Pause pause;
  const auto node = open_nodes_.extract(descriptor);
  kernel.close(node.mapped().handle);
}

int Seams::ioctl(int descriptor, unsigned long request, void* argument) {
  const Faults::Pause pause;
  return to_errno(kernel.ioctl(open_nodes_.at(descriptor).handle, request, argument));
}

ssize_t Seams::read(int descriptor, std::span<uint8_t> room) {
  const Faults::Pause pause;
  return to_errno(kernel.read(open_nodes_.at(descriptor).handle, room));
}

ssize_t Seams::write(int descriptor, std::span<const uint8_t> bytes) {
  const Faults::Pause pause;
  return to_errno(kernel.write(open_nodes_.at(descriptor).handle, bytes));
}

int Seams::terminal_call(int descriptor, const std::string& line) {
  trace.push_back(line + " " + open_nodes_.at(descriptor).path);
  return 0;
}

void Seams::print(const std::string& text) {
  messages.push_back(prefix_ + text);
  prefix_.clear();
  std::string line = messages.back();
  if (line.ends_with('\n')) line.pop_back();
  trace.push_back("log " + line);
}

CommandAnswer Seams::answer(const std::string& command) {
  const auto found = std::ranges::find(commands, command, &CommandAnswer::command);
  if (found != commands.end()) return *found;
  if (!any_command) ADD_FAILURE() << "shell command that no test set up: " << command;
  return {.command = command};
}

int Seams::run(const std::string& command) {
  const Faults::Pause pause;
  trace.push_back("system " + command);
  const CommandAnswer given = answer(command);
  if (given.effect) given.effect();
  return given.status;
}

FILE* Seams::open_pipe(const std::string& command) {
  const Faults::Pause pause;
  trace.push_back("popen " + command);
  const CommandAnswer given = answer(command);
  if (given.effect) given.effect();
  FILE* pipe = std::tmpfile();
  std::fwrite(given.output.data(), 1, given.output.size(), pipe);
  std::rewind(pipe);
  pipes_[pipe] = {given.output, given.status};
  return pipe;
}

FILE* Seams::empty_pipe() {
  const Faults::Pause pause;
  FILE* pipe = std::tmpfile();
  pipes_[pipe] = {"", 0};
  trace.emplace_back("popen of nothing");
  return pipe;
}

std::optional<int> Seams::close_pipe(FILE* pipe) {
  const Faults::Pause pause;
  const auto found = pipes_.extract(pipe);
  if (found.empty()) return std::nullopt;
  trace.push_back("pclose");
  std::fclose(pipe);
  return found.mapped().status;
}

void Seams::fail_file_call(std::string call, std::string path, int error, int skipped) {
  file_faults_.push_back({std::move(call), std::move(path), error, skipped});
}

void Seams::break_reading(std::string path, size_t bytes) {
  broken_reads_[std::move(path)] = bytes;
}

FILE* Seams::broken_stream(FILE* file, const std::string& path) {
  const auto found = broken_reads_.find(path);
  if (file == nullptr || found == broken_reads_.end()) return file;
  auto* source = new BrokenSource{file, found->second};
  return ::fopencookie(source, "rb", {read_broken, nullptr, nullptr, close_broken});
}

void Seams::reach_write_call() {
  if (write_calls_left_ > 0 && --write_calls_left_ == 0) ::raise(SIGKILL);
}

std::optional<int> Seams::file_fault(std::string_view call, std::string_view path) {
  for (FileFault& fault : file_faults_) {
    if (fault.call != call || !matches(fault.path, path)) continue;
    if (fault.skipped-- > 0) return std::nullopt;
    const int error = fault.error;
    file_faults_.erase(file_faults_.begin() + (&fault - file_faults_.data()));
    return error;
  }
  return std::nullopt;
}

std::optional<int> Seams::file_fault(std::string_view call, int descriptor) {
  if (file_faults_.empty()) return std::nullopt;
  char path[4096];
  const std::string link = "/proc/self/fd/" + std::to_string(descriptor);
  const ssize_t length = ::readlink(link.c_str(), path, sizeof path);
  if (length < 0) return std::nullopt;
  return file_fault(call, std::string_view(path, static_cast<size_t>(length)));
}

}  // namespace zelkora::test
