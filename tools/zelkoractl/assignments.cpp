// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "assignments.h"

#include <algorithm>

#include "output.h"
#include "paths.h"
#include "pct_settings.h"
#include "resistive_settings.h"

namespace zelkoractl {
namespace {

[[noreturn]] void refuse(const std::string& message, const std::string& remedy) {
  throw Failure(ExitCode::kUsage, message, "", remedy);
}

// The settings of that name that the kinds of panels have.
std::vector<const Setting*> settings_named(std::string_view name) {
  std::vector<const Setting*> found;
  if (const Setting* setting = find_setting(resistive_settings(), name)) found.push_back(setting);
  if (const Setting* setting = find_setting(pct_settings(), name)) found.push_back(setting);
  return found;
}

std::string setting_names() {
  std::vector<std::string> names;
  for (const Setting& setting : resistive_settings()) names.emplace_back(setting.name);
  for (const Setting& setting : pct_settings()) {
    if (find_setting(resistive_settings(), setting.name) == nullptr) {
      names.emplace_back(setting.name);
    }
  }
  return join(names);
}

Request parse_request(const std::string& word) {
  const size_t equals = word.find('=');
  if (equals == std::string::npos) {
    refuse("\"" + word + "\" is not of the form SETTING=VALUE", "write for example beep=off");
  }
  return {word.substr(0, equals), word.substr(equals + 1)};
}

void check_value(const Request& request) {
  const std::vector<const Setting*> settings = settings_named(request.name);
  std::string ranges;
  for (const Setting* setting : settings) {
    if (parse_value(*setting, request.text)) return;
    const std::string range = range_text(*setting);
    if (range != ranges) ranges += (ranges.empty() ? "" : " or, by the kind of panel, ") + range;
  }
  refuse(request.name + " cannot be \"" + request.text + "\"", request.name + " takes " + ranges);
}

}  // namespace

std::vector<Request> parse_requests(const std::vector<std::string>& words) {
  std::vector<Request> requests;
  for (const std::string& word : words) {
    const Request request = parse_request(word);
    check_setting_name(request.name);
    check_value(request);
    if (std::ranges::find(requests, request.name, &Request::name) != requests.end()) {
      refuse(request.name + " is given twice", "give it once");
    }
    requests.push_back(request);
  }
  return requests;
}

void check_setting_name(const std::string& name) {
  if (!settings_named(name).empty()) return;
  refuse("there is no setting \"" + name + "\"", "the settings are " + setting_names());
}

Failure wrong_kind(const Panel& panel, std::string_view setting) {
  return {ExitCode::kUsage, call(panel) + " has no setting " + std::string(setting), panel.node,
          "zelkoractl get " + std::to_string(panel.index) + " shows the settings it has"};
}

Failure wrong_value(const Setting& setting, std::string_view text) {
  const std::string name(setting.name);
  return {ExitCode::kUsage, name + " cannot be \"" + std::string(text) + "\" on this panel", "",
          name + " takes " + range_text(setting)};
}

Failure wrong_default(const Setting& setting, int value) {
  return {ExitCode::kUsage,
          std::string("the default of ") + std::string(setting.name) + " in " + paths::kDefaults +
              " is " + std::to_string(value) + ", which is out of range (" + range_text(setting) +
              "); nothing was changed",
          "", "correct that file"};
}

}  // namespace zelkoractl
