// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Key=value files. Keys and section headers are found by substring; the first match wins.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "file_lines.h"
#include "file_rewrite.h"
#include "log.h"
#include "open_file.h"
#include "scoped.h"
#include "text.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::LineReader;
using zelkora::open_file;
using zelkora::ScopedFile;

namespace {

constexpr size_t kValueSize = 36;

// "[section]", the text that marks a section's first line.
struct Header {
  explicit Header(const char* section) { std::snprintf(text, sizeof text, "[%s]", section); }
  char text[zelkora::kLineBuffer];
};

bool is_comment(const LineReader& reader) { return reader.contains("#"); }

// A line's value without the line's last character, which is its line feed: a last line of the
// file that lacks one loses a character of its value, as ever.
std::string_view value_text(const char* line) {
  const char* equals = std::strchr(line, '=');
  if (equals == nullptr) return "";
  const size_t length = std::strlen(equals + 1);
  return {equals + 1, length == 0 ? 0 : length - 1};
}

// Rewrites the first line that holds the key, comments included. The other lines come back byte
// for byte, however many and however long they are.
int set_option(const char* path, const char* key, const char* value) {
  const ScopedFile file(open_file(path, "r"));
  if (!file) {
    DebugMsg(zelkora::kError, "can't open config file!!\n");
    return 0;
  }
  zelkora::NewContent content;
  if (content.stream() == nullptr) return 0;
  bool found = false;
  for (LineReader reader(file.get()); reader.next();) {
    if (!found && reader.contains(key)) {
      found = true;
      std::fprintf(content.stream(), "%s=%s\n", key, value);
    } else {
      content.write(reader.line());
    }
  }
  if (std::ferror(file.get()) != 0) return 0;
  return content.commit(path) && found ? 1 : 0;
}

}  // namespace

int ReadIniKeyValue(const char* path, const char* section, const char* key, int default_value) {
  const Header header(section);
  const ScopedFile file(open_file(path, "r"));
  if (!file) return default_value;
  bool in_section = false;
  for (LineReader reader(file.get()); reader.next();) {
    if (is_comment(reader)) continue;
    if (!in_section) {
      in_section = reader.contains(header.text);
    } else if (reader.contains("[")) {
      break;
    } else if (reader.contains(key)) {
      const char* value = reader.value();
      return value == nullptr ? default_value : std::atoi(value);
    }
  }
  return default_value;
}

int IniSectionExist(const char* path, const char* section) {
  const Header header(section);
  ScopedFile file(open_file(path, "r"));
  if (!file) return 0;
  for (LineReader reader(file.get()); reader.next();) {
    if (!is_comment(reader) && reader.contains(header.text)) {
      // The file stays open on this path; it is part of the interface's behaviour.
      static_cast<void>(file.release());
      return 1;
    }
  }
  return 0;
}

int get_conf_option(const char* path, const char* key, int default_value) {
  const ScopedFile file(open_file(path, "r"));
  if (!file) return default_value;
  for (LineReader reader(file.get()); reader.next();) {
    if (is_comment(reader) || !reader.contains(key)) continue;
    const char* text = reader.value();
    if (text == nullptr) return default_value;
    const int value = std::atoi(text);
    DebugMsg(kTrace, "Option:%s Value:%d\n", key, value);
    return value;
  }
  return default_value;
}

int set_conf_option(const char* path, const char* key, int value) {
  char text[16];
  std::snprintf(text, sizeof text, "%d", value);
  return set_option(path, key, text);
}

int set_conf_option_str(const char* path, const char* key, const char* text) {
  return set_option(path, key, text);
}

// A rewrite, too: of an appended line, a crash may leave a piece.
int add_conf_option(const char* path, const char* key, int value) {
  const ScopedFile file(open_file(path, "r"));
  if (!file && errno != ENOENT) return 0;
  zelkora::NewContent content;
  if (content.stream() == nullptr) return 0;
  if (file) {
    for (LineReader reader(file.get()); reader.next();) content.write(reader.line());
    if (std::ferror(file.get()) != 0) return 0;
  }
  std::fprintf(content.stream(), "%s=%d\n", key, value);
  return content.commit(path) ? 1 : 0;
}

int get_conf_option_str(const char* path, const char* key, char* out) {
  DebugMsg(kTrace, "get_conf_option_str--start %s Option:%s\n", path, key);
  std::memset(out, 0, kValueSize);
  int found = 0;
  const ScopedFile file(open_file(path, "r"));
  if (!file) {
    zelkora::debug_perror("open file error");
  } else {
    for (LineReader reader(file.get()); found == 0 && reader.next();) {
      if (!reader.contains(key)) continue;
      if (reader.value() == nullptr) break;
      zelkora::set_text(out, kValueSize, value_text(reader.line().data()));
      found = 1;
    }
  }
  DebugMsg(kTrace, "get_conf_option_str--end ret=%d %s\n", found, out);
  return found;
}

void GetConfStr(const char* line, char* out) {
  const std::string_view value = value_text(line);
  std::memcpy(out, value.data(), value.size());
}
