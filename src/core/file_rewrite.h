// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Whole-file rewrites that a crash or a full disk cannot turn into a half-written file.
#pragma once

#include <sys/types.h>

#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>

#include "scoped.h"

namespace zelkora {

// Whether the path is a link in the data directory that leads out of it. Anybody may have put it
// there, so nothing is written through it.
bool leads_out(const char* path);

// Gives the file this content. The content goes to a temporary file beside it, with the owner and
// mode of the old one, which then takes its place; a crash leaves the old or the new content, or no
// file where there was none.
// Where the directory forbids that, or the file is a symbolic link, it is written in place.
// False: the file cannot be written and holds what it held (in place: a prefix may be new).
// A file that was not there appears with `new_mode`, or else with the mode of the process's files.
bool replace_file(const char* path, std::string_view content, std::optional<mode_t> new_mode = {});

// A file's new content, written with stdio and kept in memory until it is complete.
class NewContent {
 public:
  NewContent() : stream_(open_memstream(&data_, &size_)) {}
  NewContent(const NewContent&) = delete;
  NewContent& operator=(const NewContent&) = delete;
  ~NewContent() {
    if (stream_ != nullptr) std::fclose(stream_);
    std::free(data_);
  }

  // Where to write; null when there is no memory.
  FILE* stream() const { return stream_; }
  void write(std::string_view text) { std::fwrite(text.data(), 1, text.size(), stream_); }

  // Replaces the file, unless memory ran out on the way.
  bool commit(const char* path, std::optional<mode_t> new_mode = {}) {
    const bool complete = std::fflush(stream_) == 0 && std::ferror(stream_) == 0;
    return complete && replace_file(path, {data_, size_}, new_mode);
  }

 private:
  char* data_ = nullptr;
  size_t size_ = 0;
  FILE* stream_;
};

}  // namespace zelkora
