// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What a command line asks to change. What no panel takes is refused before any panel is looked
// at; what the panel named does not take, before it is changed.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "failure.h"
#include "panels.h"
#include "settings.h"

namespace zelkoractl {

struct Request {
  std::string name;
  std::string text;
};

// Reads "name=value" words. Throws a usage Failure at the first that is wrong for every panel.
std::vector<Request> parse_requests(const std::vector<std::string>& words);

// Throws a usage Failure when no panel has such a setting.
void check_setting_name(const std::string& name);

// The setting is one that panels of the other kind have.
Failure wrong_kind(const Panel& panel, std::string_view setting);

// The value is one that panels of the other kind take.
Failure wrong_value(const Setting& setting, std::string_view text);

// The defaults file gives a setting a value that it does not take.
Failure wrong_default(const Setting& setting, int value);

template <typename AnySetting>
struct Assignment {
  const AnySetting* setting;
  int value;  // as it is stored
};

// The requests as a panel with these settings takes them. Throws when it does not.
template <typename AnySetting>
std::vector<Assignment<AnySetting>> assign(const std::vector<Request>& requests,
                                           std::span<const AnySetting> settings,
                                           const Panel& panel) {
  std::vector<Assignment<AnySetting>> assignments;
  for (const Request& request : requests) {
    const AnySetting* setting = find_setting(settings, request.name);
    if (setting == nullptr) throw wrong_kind(panel, request.name);
    const std::optional<int> value = parse_value(*setting, request.text);
    if (!value) throw wrong_value(*setting, request.text);
    assignments.push_back({setting, *value});
  }
  return assignments;
}

}  // namespace zelkoractl
