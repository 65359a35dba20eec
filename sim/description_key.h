// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The keys of a description as tables: `name=value`, or a name alone.
#pragma once

#include <algorithm>
#include <iterator>
#include <optional>
#include <string>
#include <string_view>

namespace zelkora::sim {

template <typename Target>
struct Key {
  std::string_view name;
  std::string_view value;  // how the value looks; empty: the key takes none
  std::string_view range;
  std::string_view help;
  bool (*apply)(Target& target, std::string_view value);
};

inline std::string quoted(std::string_view text) {
  return std::string("'").append(text).append("'");
}

// The value of a switch; the key alone puts it on.
inline constexpr std::string_view kSwitch = "on|off";

// Applies `name=value` to the target. Nothing: the table has no such key. Otherwise what is wrong
// with it, or an empty text.
template <typename Target, size_t kSize>
std::optional<std::string> apply_key(const Key<Target> (&keys)[kSize], std::string_view piece,
                                     Target& target) {
  const size_t equals = piece.find('=');
  const bool has_value = equals != std::string_view::npos;
  const auto* key = std::ranges::find(keys, piece.substr(0, equals), &Key<Target>::name);
  if (key == std::end(keys)) return std::nullopt;
  const bool is_switch = key->value == kSwitch;
  if (has_value == key->value.empty() && !is_switch) {
    return quoted(key->name) + (has_value ? " takes no value" : " needs a value");
  }
  const std::string_view alone = is_switch ? "on" : "";
  const std::string_view value = has_value ? piece.substr(equals + 1) : alone;
  if (key->apply(target, value)) return std::string();
  return quoted(value) + " is no value for " + quoted(key->name) + ": expected " +
         (is_switch ? "on or off" : std::string(key->value) + ", " + std::string(key->range));
}

inline void append_help_line(std::string& text, std::string usage, std::string_view help) {
  usage.resize(std::max<size_t>(usage.size() + 1, 28), ' ');
  text.append("  ").append(usage).append(help).append("\n");
}

template <typename Target, size_t kSize>
void append_help(std::string& text, const Key<Target> (&keys)[kSize]) {
  for (const Key<Target>& key : keys) {
    std::string usage(key.name);
    const bool is_switch = key.value == kSwitch;
    if (is_switch) usage.append("[=").append(key.value).append("]");
    if (!key.value.empty() && !is_switch) usage.append("=").append(key.value);
    append_help_line(text, std::move(usage), key.help);
  }
}

}  // namespace zelkora::sim
