// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "config.h"

#include <ini.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string_view>

#include "failure.h"
#include "output.h"
#include "paths.h"

namespace zelkoractl {
namespace {

constexpr const char* kSection = "switches";
constexpr size_t kLargestFile = 1U << 20;
constexpr int kDebugKey = -1;

struct Key {
  std::string_view name;
  int position;  // in Config::switches, or kDebugKey
  int highest;   // 1: on or off
};

constexpr Key kKeys[] = {
    {"resistive", ZELKORA_CONFIG_RESISTIVE, 1},
    {"new-product-ids", ZELKORA_CONFIG_NEW_PRODUCT_IDS, 1},
    {"alternative-pct-vendors", ZELKORA_CONFIG_ALTERNATIVE_PCT, 1},
    {"ignore-legacy-pct", ZELKORA_CONFIG_IGNORE_LEGACY_PCT, 1},
    {"notify-argument", ZELKORA_CONFIG_NOTIFY_ARGUMENT, 255},
    {"hidraw", ZELKORA_CONFIG_HIDRAW, 1},
    {"hide-cursor", ZELKORA_CONFIG_HIDE_CURSOR, 1},
    {"disable-resistive-hide-cursor", ZELKORA_CONFIG_NO_RES_HIDE_CURSOR, 1},
    {"debug", kDebugKey, 1},
};

[[noreturn]] void fail(const std::string& message, const std::string& remedy) {
  throw Failure(ExitCode::kUsage, message, "", remedy);
}

// One parse: the text still to be read, the line last read, and the first thing wrong with it.
// inih calls back through C, so a problem is kept here and thrown afterwards.
struct Parse {
  std::string_view rest;
  Config config = default_config();
  int line = 0;
  int problem_line = 0;  // 0: nothing wrong
  std::string problem;
  std::string remedy;

  void refuse(std::string what, std::string what_to_do = "correct this line of the file") {
    if (problem_line != 0) return;
    problem_line = line;
    problem = std::move(what);
    remedy = std::move(what_to_do);
  }
};

// Hands inih one whole line, as fgets() would. What inih would misread without a word - a line
// longer than its buffer, a NUL - ends the parse here.
char* next_line(char* room, int size, void* stream) {
  Parse& parse = *static_cast<Parse*>(stream);
  if (parse.rest.empty() || parse.problem_line != 0) return nullptr;
  ++parse.line;
  const size_t end = parse.rest.find('\n');
  const size_t length = end == std::string_view::npos ? parse.rest.size() : end + 1;
  const std::string_view line = parse.rest.substr(0, length);
  if (line.size() >= static_cast<size_t>(size)) {
    parse.refuse("the line is longer than " + std::to_string(size - 2) + " characters");
    return nullptr;
  }
  if (line.find('\0') != std::string_view::npos) {
    parse.refuse("the line holds a NUL byte");
    return nullptr;
  }
  std::copy(line.begin(), line.end(), room);
  room[line.size()] = '\0';
  parse.rest.remove_prefix(length);
  return room;
}

std::string key_names() {
  std::vector<std::string> names;
  for (const Key& key : kKeys) {
    names.emplace_back(key.name);
  }
  return join(names);
}

std::optional<int> parse_value(std::string_view text, int highest) {
  if (highest == 1) {
    if (text == "on") return 1;
    if (text == "off") return 0;
    return std::nullopt;
  }
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (value < 0 || value > highest) return std::nullopt;
  return value;
}

int take_pair(void* user, const char* section, const char* name, const char* value) {
  Parse& parse = *static_cast<Parse*>(user);
  const auto* key = std::ranges::find(kKeys, std::string_view(name), &Key::name);
  if (std::strcmp(section, kSection) != 0 || key == std::end(kKeys)) {
    const std::string place =
        *section == '\0' ? "before any section" : std::string("in section [") + section + "]";
    parse.refuse("unknown key \"" + std::string(name) + "\" " + place,
                 std::string("the keys of section [") + kSection + "] are " + key_names());
    return 0;
  }
  const std::optional<int> number = parse_value(value, key->highest);
  if (!number) {
    const std::string wanted =
        key->highest == 1 ? "on or off" : "a number from 0 to " + std::to_string(key->highest);
    parse.refuse(std::string(name) + " takes " + wanted + ", not \"" + value + "\"");
    return 0;
  }
  if (key->position == kDebugKey) {
    parse.config.debug = *number != 0;
  } else {
    parse.config.switches[static_cast<size_t>(key->position)] = static_cast<unsigned char>(*number);
  }
  return 1;
}

[[noreturn]] void fail_to_read(const std::string& path) {
  fail("cannot read the configuration file " + path + ": " + std::strerror(errno),
       "name a readable file with --config");
}

// Nothing when the file is missing and may be.
std::optional<std::string> read_file(const std::string& path, bool may_be_missing) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path.c_str(), "re"), std::fclose);
  if (!file) {
    if (may_be_missing && errno == ENOENT) return std::nullopt;
    fail_to_read(path);
  }
  std::string text;
  char piece[4096];
  while (const size_t count = std::fread(piece, 1, sizeof piece, file.get())) {
    text.append(piece, count);
    if (text.size() > kLargestFile) {
      fail("the configuration file " + path + " is larger than 1 MiB", "check what --config names");
    }
  }
  if (std::ferror(file.get()) != 0) fail_to_read(path);
  return text;
}

Config& in_use() {
  static Config config = default_config();
  return config;
}

}  // namespace

Config default_config() {
  Config config{};
  config.switches[ZELKORA_CONFIG_RESISTIVE] = 1;
  config.switches[ZELKORA_CONFIG_HIDRAW] = 1;
  return config;
}

Config read_config(const std::optional<std::string>& named_path) {
  const std::string path = named_path.value_or(paths::kConfig);
  const std::optional<std::string> text = read_file(path, !named_path.has_value());
  if (!text) return default_config();
  Parse parse;
  parse.rest = *text;
  // The parser passes over lines it does not understand and tells the first of them.
  const int wrong_line = ini_parse_stream(next_line, &parse, take_pair, &parse);
  if (wrong_line != 0 && (parse.problem_line == 0 || wrong_line < parse.problem_line)) {
    parse.line = wrong_line;
    parse.problem_line = 0;
    parse.refuse("neither \"key = value\" nor \"[section]\"");
  }
  if (parse.problem_line != 0) {
    fail(path + ":" + std::to_string(parse.problem_line) + ": " + parse.problem, parse.remedy);
  }
  parse.config.file = path;
  return parse.config;
}

std::string config_help() {
  std::vector<std::vector<std::string>> rows;
  for (const Key& key : kKeys) {
    const std::string values = key.highest == 1 ? "on, off" : "0.." + std::to_string(key.highest);
    rows.push_back({"  " + std::string(key.name), values});
  }
  return std::string("Keys of the configuration file, in its section [") + kSection + "]:\n" +
         align(rows);
}

void use_config(const Config& config) { in_use() = config; }

const Config& current_config() { return in_use(); }

}  // namespace zelkoractl
