// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "file_rewrite.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "paths.h"

namespace zelkora {
namespace {

// Signals in a row that a write starts again after: a file system that is interrupted for ever must
// not hold up the host.
constexpr int kInterruptions = 100;

bool write_all(int descriptor, std::string_view content) {
  for (int interruptions = 0; !content.empty();) {
    const ssize_t written = ::write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR && ++interruptions <= kInterruptions) continue;
    if (written <= 0) return false;
    content.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

// The directory part of a path, "." when it has none.
void directory_of(const char* path, char (&directory)[PATH_MAX]) {
  const char* slash = std::strrchr(path, '/');
  const size_t length = slash == nullptr ? 0 : static_cast<size_t>(slash - path);
  std::memcpy(directory, path, length);
  std::memcpy(directory + length, "/.", 3);
  if (slash == nullptr) std::memcpy(directory, ".", 2);
}

void sync_directory(const char* path) {
  char directory[PATH_MAX];
  directory_of(path, directory);
  const ScopedFd descriptor(::open(directory, O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor) fsync(descriptor.get());
}

// Overwrites first and cuts last: a full disk does not cost the old content its tail too early.
bool write_in_place(const char* path, int descriptor, std::string_view content) {
  if (!write_all(descriptor, content) ||
      ftruncate(descriptor, static_cast<off_t>(content.size())) != 0 || fsync(descriptor) != 0) {
    return false;
  }
  // The file may be a new one: where a link leads, there was none yet.
  char target[PATH_MAX];
  if (realpath(path, target) != nullptr) sync_directory(target);
  return true;
}

enum class Outcome { kDone, kFailed, kForbidden };

// What creating a file beside the old one came to. A directory that may not be written, or a name
// that does not fit, forbids it; a full disk must not lead to writing over the old content.
Outcome outcome_of_error(int error) {
  const bool forbidden =
      error == EACCES || error == EPERM || error == EROFS || error == ENAMETOOLONG;
  return forbidden ? Outcome::kForbidden : Outcome::kFailed;
}

// A file beside another, to take its place.
struct Temporary {
  explicit Temporary(const char* path) {
    const int length = std::snprintf(name, sizeof name, "%s.XXXXXX", path);
    fits = length >= 0 && static_cast<size_t>(length) < sizeof name;
  }
  bool fits;
  char name[PATH_MAX];
};

Outcome fill_and_rename(int descriptor, const char* temporary, const char* path,
                        std::string_view content) {
  if (!write_all(descriptor, content) || fsync(descriptor) != 0 || rename(temporary, path) != 0) {
    unlink(temporary);
    return Outcome::kFailed;
  }
  sync_directory(path);
  return Outcome::kDone;
}

Outcome write_beside(const char* path, const struct stat& old, std::string_view content) {
  Temporary temporary(path);
  if (!temporary.fits) return Outcome::kForbidden;
  const ScopedFd descriptor(mkostemp(temporary.name, O_CLOEXEC));
  if (!descriptor) return outcome_of_error(errno);
  if (fchown(descriptor.get(), old.st_uid, old.st_gid) != 0 ||
      fchmod(descriptor.get(), old.st_mode & 07777) != 0) {
    const Outcome outcome = outcome_of_error(errno);
    unlink(temporary.name);
    return outcome;
  }
  return fill_and_rename(descriptor.get(), temporary.name, path, content);
}

// A new file appears with its content: callers take one that is there for complete.
Outcome write_new(const char* path, std::string_view content, std::optional<mode_t> mode) {
  Temporary temporary(path);
  if (!temporary.fits) return Outcome::kForbidden;
  // mkostemp() finds the free name. The file itself is made by open(), which gives it the mode that
  // the process gives its files: only open() can ask for that mask without changing it.
  if (!ScopedFd(mkostemp(temporary.name, O_CLOEXEC))) return outcome_of_error(errno);
  unlink(temporary.name);
  const ScopedFd descriptor(::open(temporary.name, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  if (!descriptor) return outcome_of_error(errno);
  // The content counts more than who else may change it.
  if (mode) static_cast<void>(!fchmod(descriptor.get(), *mode));
  return fill_and_rename(descriptor.get(), temporary.name, path, content);
}

bool lies_in(const char* path, const char* directory) {
  const size_t length = std::strlen(directory);
  return std::strncmp(path, directory, length) == 0 && path[length] == '/';
}

}  // namespace

bool leads_out(const char* path) {
  struct stat status;
  if (!lies_in(path, paths::kDataDirectory) || lstat(path, &status) != 0) return false;
  if (!S_ISLNK(status.st_mode)) return false;
  char target[PATH_MAX], directory[PATH_MAX];
  // Of a link to nothing yet, the C library tells where that would be.
  const bool known = realpath(path, target) != nullptr || errno == ENOENT;
  return !known || realpath(paths::kDataDirectory, directory) == nullptr ||
         !lies_in(target, directory);
}

bool replace_file(const char* path, std::string_view content, std::optional<mode_t> new_mode) {
  if (leads_out(path)) return false;
  struct stat status;
  const bool existed = lstat(path, &status) == 0;
  if (!existed && errno == ENOENT) {
    const Outcome outcome = write_new(path, content, new_mode);
    if (outcome != Outcome::kForbidden) return outcome == Outcome::kDone;
  }
  // Opened for writing first: a file that its user may not write stays as it is, even where its
  // directory would let it be replaced.
  const ScopedFd target(::open(path, O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  if (!target || lstat(path, &status) != 0) return false;
  Outcome outcome = Outcome::kForbidden;
  if (S_ISREG(status.st_mode)) outcome = write_beside(path, status, content);
  if (outcome == Outcome::kForbidden) {
    outcome = write_in_place(path, target.get(), content) ? Outcome::kDone : Outcome::kFailed;
  }
  if (outcome == Outcome::kDone) return true;
  if (!existed) unlink(path);
  return false;
}

}  // namespace zelkora
