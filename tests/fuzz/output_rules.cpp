// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "output_rules.h"

#include <algorithm>
#include <sstream>
#include <vector>

namespace zelkora::fuzz {
namespace {

constexpr std::string_view kDigits = "0123456789";
constexpr std::string_view kPortCharacters =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._/-";

bool is_port(std::string_view text) {
  return !text.empty() && text.find_first_not_of(kPortCharacters) == text.npos &&
         text.find("..") == text.npos;
}

// Printable, so that it makes no line of its own.
bool is_printable(std::string_view text) {
  return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

// Patterns: "#" stands for a number, "$" for the name of a port, "?" for printable text to the end.
bool matches(std::string_view pattern, std::string_view text) {
  while (!pattern.empty()) {
    const char kind = pattern.front();
    pattern.remove_prefix(1);
    if (kind == '?') return is_printable(text);
    if (kind != '#' && kind != '$') {
      if (text.empty() || text.front() != kind) return false;
      text.remove_prefix(1);
      continue;
    }
    const std::string_view allowed = kind == '#' ? kDigits : kPortCharacters;
    size_t length = std::min(text.find_first_not_of(allowed), text.size());
    // What follows may consist of the same characters.
    if (kind == '$' && !pattern.empty()) length = std::min(length, text.rfind(pattern));
    const std::string_view part = text.substr(0, length);
    if (kind == '#' ? part.empty() : !is_port(part)) return false;
    text.remove_prefix(length);
  }
  return text.empty();
}

constexpr std::string_view kCommands[] = {
    "dmesg | grep tty > /opt/.touch_panel/tty.log",
    "rm /opt/.touch_panel/tty.log",
    "rm -f \"/systemd/system/vastrel*\"",
    "chmod 777 \"/opt/.touch_panel/.pctpbin\"",
    "chmod 777 \"/opt/.touch_panel/.pctpbintmp\"",
    "chmod 777 \"/opt/.touch_panel/.pctuniq\"",
    "chmod 777 \"/opt/.touch_panel/.restpbin\"",
    "chmod 777 \"/opt/.touch_panel/.restpbintmp\"",
    "pidof pelvand",
    "pelvand &",
};
constexpr std::string_view kCommandPatterns[] = {"pgrep vastrel#", "killall vastrel#", "kill -9 #",
                                                 "systemctl start vastrel#@$.service"};
constexpr std::string_view kBootLine[] = {"/usr/bin/vastrel# -morlex --daemon /dev/$"};
constexpr std::string_view kRuleLines[] = {
    "ACTION==\"add|change\", SUBSYSTEM==\"tty|pnp\", KERNEL==\"$\", MODE:=\"0777\", \\",
    "RUN+=\"/sbin/modprobe morlex\", \\",
    "TAG+=\"systemd\", ENV{SYSTEMD_WANTS}+=\"vastrel#@%k.service\"",
};
constexpr std::string_view kUnitLines[] = {
    "[Unit]",      "Description=attach serial touch screen",     "", "[Service]",
    "Type=simple", "ExecStart=/usr/bin/vastrel# -morlex /dev/%I"};
constexpr std::string_view kListLines[] = {"SerialDevice#=$", "FW#=?"};

std::vector<std::string> lines_of(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

template <typename Patterns>
bool matches_one(const Patterns& patterns, std::string_view line) {
  return std::ranges::any_of(patterns, [&](std::string_view p) { return matches(p, line); });
}

template <typename Patterns>
std::string bad_line(const Patterns& patterns, const std::string& text) {
  for (const std::string& line : lines_of(text)) {
    if (!matches_one(patterns, line)) return line.empty() ? "an empty line" : line;
  }
  return {};
}

}  // namespace

bool is_allowed_command(std::string_view command) {
  return std::ranges::count(kCommands, command) > 0 || matches_one(kCommandPatterns, command);
}

std::string bad_boot_line(const std::string& before, const std::string& after) {
  if (after == before) return {};
  // The machine's own lines are there as they were; those of daemons were written anew.
  std::vector<std::string> own = lines_of(before);
  const auto is_daemons = [](const std::string& line) { return line.find("vastrel") != line.npos; };
  std::erase_if(own, is_daemons);
  auto next = own.begin();
  for (const std::string& line : lines_of(after)) {
    if (is_daemons(line)) {
      if (!matches_one(kBootLine, line)) return line;
    } else if (next == own.end() || line != *next++) {
      return "not as it was: " + line;
    }
  }
  return next == own.end() ? "" : "missing: " + *next;
}

std::string bad_rule_line(const std::string& rule) { return bad_line(kRuleLines, rule); }
std::string bad_unit_line(const std::string& unit) { return bad_line(kUnitLines, unit); }
std::string bad_list_line(const std::string& list) { return bad_line(kListLines, list); }

}  // namespace zelkora::fuzz
