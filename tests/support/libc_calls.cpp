// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The C library calls that the test executable answers itself: see seams.h.
#include <dirent.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "faults.h"
#include "seams.h"

using zelkora::test::DiskOperation;
using zelkora::test::Fate;
using zelkora::test::Faults;
using zelkora::test::next;
using zelkora::test::Seams;

namespace {

// True: the test asked this call on that file to fail; errno is set.
template <typename File>
bool spoiled(const char* call, File file) {
  Seams* seams = Seams::active();
  if (seams == nullptr) return false;
  const std::optional<int> error = seams->file_fault(call, file);
  if (error) errno = *error;
  return error.has_value();
}

// Stands before every call that changes what is on disk.
void reach_write_call() {
  if (Seams* seams = Seams::active()) seams->reach_write_call();
}

bool recorded() { return Seams::active() != nullptr && Seams::active()->on_disk_operation; }

// The name without links of a file that need not be there.
std::string real_name(const char* path) { return std::filesystem::weakly_canonical(path); }

std::string real_name(int descriptor) {
  std::error_code code;
  return std::filesystem::read_symlink("/proc/self/fd/" + std::to_string(descriptor), code);
}

// The operation is named only where it is recorded: to find the names takes calls.
template <typename Operation>
void record(bool done, Operation operation) {
  if (!done || !recorded()) return;
  const int error = errno;
  Seams::active()->on_disk_operation(operation());
  errno = error;
}

void record_creation(int descriptor) {
  record(descriptor >= 0, [descriptor] {
    struct stat status {};
    fstat(descriptor, &status);
    return DiskOperation{.kind = DiskOperation::Kind::kCreate,
                         .path = real_name(descriptor),
                         .number = status.st_mode & 07777};
  });
}

// True: the plan of faults has this call fail; errno is set.
bool fails(const char* call, unsigned long detail = 0) {
  return Faults::reach(call, detail) == Fate::kError;
}

bool served(int descriptor) {
  return Seams::active() != nullptr && Seams::active()->serves(descriptor);
}

std::string formatted(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, again);
  va_end(again);
  std::string text(static_cast<size_t>(length), '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, arguments);
  return text;
}

}  // namespace

extern "C" {

int open(const char* path, int flags, ...) {
  mode_t mode = 0;
  if ((flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE) {
    va_list arguments;
    va_start(arguments, flags);
    mode = va_arg(arguments, mode_t);
    va_end(arguments);
  }
  if (fails("open")) return -1;
  if (Seams* seams = Seams::active()) {
    if (const std::optional<int> descriptor = seams->open(path, flags)) return *descriptor;
  }
  if ((flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0) reach_write_call();
  if (spoiled("open", path)) return -1;
  const bool creates = (flags & O_CREAT) != 0 && recorded() && access(path, F_OK) != 0;
  static const auto real = next<decltype(&::open)>("open");
  const int descriptor = real(path, flags, mode);
  if (creates) record_creation(descriptor);
  if ((flags & O_TRUNC) != 0 && !creates) {
    record(descriptor >= 0, [descriptor] {
      return DiskOperation{.kind = DiskOperation::Kind::kResize, .path = real_name(descriptor)};
    });
  }
  return descriptor;
}

// The descriptor is gone, whatever closing it came to.
int close(int descriptor) {
  const bool failed = fails("close");
  const int error = errno;
  if (served(descriptor)) Seams::active()->close(descriptor);
  static const auto real = next<decltype(&::close)>("close");
  const int result = real(descriptor);
  if (!failed) return result;
  errno = error;
  return -1;
}

int ioctl(int descriptor, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  if (fails("ioctl", request)) return -1;
  if (served(descriptor)) return Seams::active()->ioctl(descriptor, request, argument);
  static const auto real = next<decltype(&::ioctl)>("ioctl");
  return real(descriptor, request, argument);
}

ssize_t read(int descriptor, void* room, size_t size) {
  const Fate fate = Faults::reach("read");
  if (fate == Fate::kError) return -1;
  if (fate == Fate::kShort) size = (size + 1) / 2;
  if (served(descriptor)) {
    return Seams::active()->read(descriptor, {static_cast<uint8_t*>(room), size});
  }
  if (spoiled("read", descriptor)) return -1;
  static const auto real = next<decltype(&::read)>("read");
  return real(descriptor, room, size);
}

ssize_t write(int descriptor, const void* bytes, size_t size) {
  const Fate fate = Faults::reach("write");
  if (fate == Fate::kError) return -1;
  if (fate == Fate::kShort) size = (size + 1) / 2;
  if (served(descriptor)) {
    return Seams::active()->write(descriptor, {static_cast<const uint8_t*>(bytes), size});
  }
  reach_write_call();
  if (spoiled("write", descriptor)) return -1;
  static const auto real = next<decltype(&::write)>("write");
  const ssize_t written = real(descriptor, bytes, size);
  record(written > 0, [=] {
    const auto end = static_cast<size_t>(lseek(descriptor, 0, SEEK_CUR));
    const auto length = static_cast<size_t>(written);
    return DiskOperation{.kind = DiskOperation::Kind::kWrite,
                         .path = real_name(descriptor),
                         .bytes = {static_cast<const char*>(bytes), length},
                         .number = end - length};
  });
  return written;
}

int usleep(useconds_t microseconds) {
  if (Seams* seams = Seams::active()) {
    seams->trace.push_back("usleep " + std::to_string(microseconds));
    if (seams->during_usleep) seams->during_usleep();
    return 0;
  }
  static const auto real = next<decltype(&::usleep)>("usleep");
  return real(microseconds);
}

unsigned sleep(unsigned seconds) {
  if (Seams* seams = Seams::active()) {
    seams->trace.push_back("sleep " + std::to_string(seconds));
    return 0;
  }
  static const auto real = next<decltype(&::sleep)>("sleep");
  return real(seconds);
}

int uname(struct utsname* name) noexcept {
  if (fails("uname")) return -1;
  static const auto real = next<decltype(&::uname)>("uname");
  const int result = real(name);
  if (Seams* seams = Seams::active()) {
    seams->trace.emplace_back("uname");
    std::snprintf(name->release, sizeof name->release, "%s", seams->kernel_release.c_str());
  }
  return result;
}

int system(const char* command) {
  const Fate fate = Faults::reach("system");
  if (fate == Fate::kError) return -1;
  if (fate == Fate::kShort) return 1 << 8;
  if (Seams* seams = Seams::active()) return seams->run(command);
  static const auto real = next<decltype(&::system)>("system");
  return real(command);
}

FILE* popen(const char* command, const char* mode) {
  const Fate fate = Faults::reach("popen");
  if (fate == Fate::kError) return nullptr;
  if (fate == Fate::kShort) return Seams::active()->empty_pipe();
  if (spoiled("popen", command)) return nullptr;
  if (Seams* seams = Seams::active()) return seams->open_pipe(command);
  static const auto real = next<decltype(&::popen)>("popen");
  return real(command, mode);
}

int pclose(FILE* pipe) {
  if (Seams* seams = Seams::active()) {
    const bool failed = fails("pclose");
    if (const std::optional<int> status = seams->close_pipe(pipe)) return failed ? -1 : *status;
  }
  static const auto real = next<decltype(&::pclose)>("pclose");
  return real(pipe);
}

int tcgetattr(int descriptor, struct termios* settings) noexcept {
  if (fails("tcgetattr")) return -1;
  if (served(descriptor)) {
    *settings = Seams::active()->terminal(descriptor);
    return Seams::active()->terminal_call(descriptor, "tcgetattr");
  }
  static const auto real = next<decltype(&::tcgetattr)>("tcgetattr");
  return real(descriptor, settings);
}

int tcsetattr(int descriptor, int when, const struct termios* settings) noexcept {
  if (fails("tcsetattr")) return -1;
  if (served(descriptor)) {
    Seams::active()->terminal(descriptor) = *settings;
    constexpr std::array kWhen = {"TCSANOW", "TCSADRAIN", "TCSAFLUSH"};
    return Seams::active()->terminal_call(
        descriptor, std::string("tcsetattr ") + kWhen.at(static_cast<size_t>(when)));
  }
  static const auto real = next<decltype(&::tcsetattr)>("tcsetattr");
  return real(descriptor, when, settings);
}

int tcflush(int descriptor, int queue) noexcept {
  if (fails("tcflush")) return -1;
  if (served(descriptor)) {
    constexpr std::array kQueue = {"TCIFLUSH", "TCOFLUSH", "TCIOFLUSH"};
    return Seams::active()->terminal_call(
        descriptor, std::string("tcflush ") + kQueue.at(static_cast<size_t>(queue)));
  }
  static const auto real = next<decltype(&::tcflush)>("tcflush");
  return real(descriptor, queue);
}

// The library prints the prefix of a message with fputs() and the message with vprintf().
int fputs(const char* text, FILE* stream) {
  static const auto real = next<decltype(&::fputs)>("fputs");
  Seams* seams = Seams::active();
  if (seams == nullptr || stream != stdout) return real(text, stream);
  seams->print_prefix(text);
  return seams->show_output ? real(text, stream) : 0;
}

int vprintf(const char* format, va_list arguments) {
  static const auto real = next<decltype(&::vprintf)>("vprintf");
  Seams* seams = Seams::active();
  if (seams == nullptr) return real(format, arguments);
  va_list again;
  va_copy(again, arguments);
  const std::string text = formatted(format, again);
  va_end(again);
  seams->print(text);
  return seams->show_output ? real(format, arguments) : static_cast<int>(text.size());
}

void perror(const char* text) {
  if (Seams* seams = Seams::active()) {
    seams->trace.push_back(std::string("perror ") + text);
    return;
  }
  static const auto real = next<decltype(&::perror)>("perror");
  real(text);
}

FILE* fopen(const char* path, const char* mode) {
  if (fails("fopen")) return nullptr;
  if (spoiled("fopen", path)) return nullptr;
  if (recorded() && *mode != 'r') ADD_FAILURE() << "what stdio writes is not seen: " << path;
  static const auto real = next<decltype(&::fopen)>("fopen");
  FILE* file = real(path, mode);
  Seams* seams = Seams::active();
  return seams == nullptr ? file : Faults::watched(seams->broken_stream(file, path), mode);
}

DIR* opendir(const char* path) {
  if (fails("opendir")) return nullptr;
  if (spoiled("opendir", path)) return nullptr;
  static const auto real = next<decltype(&::opendir)>("opendir");
  return real(path);
}

int mkostemp(char* pattern, int flags) {
  if (fails("mkostemp")) return -1;
  reach_write_call();
  if (spoiled("mkostemp", pattern)) return -1;
  static const auto real = next<decltype(&::mkostemp)>("mkostemp");
  const int descriptor = real(pattern, flags);
  record_creation(descriptor);
  return descriptor;
}

int unlink(const char* path) noexcept {
  if (fails("unlink")) return -1;
  reach_write_call();
  if (spoiled("unlink", path)) return -1;
  static const auto real = next<decltype(&::unlink)>("unlink");
  const std::string name = recorded() ? real_name(path) : std::string();
  const int result = real(path);
  record(result == 0,
         [&] { return DiskOperation{.kind = DiskOperation::Kind::kRemove, .path = name}; });
  return result;
}

int rename(const char* from, const char* to) noexcept {
  if (fails("rename")) return -1;
  reach_write_call();
  if (spoiled("rename", to)) return -1;
  static const auto real = next<decltype(&::rename)>("rename");
  const std::string source = recorded() ? real_name(from) : std::string();
  const int result = real(from, to);
  record(result == 0, [&] {
    return DiskOperation{
        .kind = DiskOperation::Kind::kRename, .path = source, .target = real_name(to)};
  });
  return result;
}

int fsync(int descriptor) {
  if (fails("fsync")) return -1;
  reach_write_call();
  if (spoiled("fsync", descriptor)) return -1;
  static const auto real = next<decltype(&::fsync)>("fsync");
  const int result = real(descriptor);
  record(result == 0, [descriptor] {
    return DiskOperation{.kind = DiskOperation::Kind::kSync, .path = real_name(descriptor)};
  });
  return result;
}

int fchown(int descriptor, uid_t owner, gid_t group) noexcept {
  if (fails("fchown")) return -1;
  reach_write_call();
  if (spoiled("fchown", descriptor)) return -1;
  static const auto real = next<decltype(&::fchown)>("fchown");
  return real(descriptor, owner, group);
}

int fchmod(int descriptor, mode_t mode) noexcept {
  if (fails("fchmod")) return -1;
  reach_write_call();
  if (spoiled("fchmod", descriptor)) return -1;
  static const auto real = next<decltype(&::fchmod)>("fchmod");
  const int result = real(descriptor, mode);
  record(result == 0, [=] {
    return DiskOperation{
        .kind = DiskOperation::Kind::kMode, .path = real_name(descriptor), .number = mode};
  });
  return result;
}

int ftruncate(int descriptor, off_t size) noexcept {
  if (fails("ftruncate")) return -1;
  reach_write_call();
  if (spoiled("ftruncate", descriptor)) return -1;
  static const auto real = next<decltype(&::ftruncate)>("ftruncate");
  const int result = real(descriptor, size);
  record(result == 0, [=] {
    return DiskOperation{.kind = DiskOperation::Kind::kResize,
                         .path = real_name(descriptor),
                         .number = static_cast<size_t>(size)};
  });
  return result;
}

}  // extern "C"
