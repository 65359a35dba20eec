// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "readings.h"

#include <zelkora.h>

#include "assignments.h"
#include "pct_set.h"
#include "pct_settings.h"
#include "resistive_settings.h"

namespace zelkoractl {
namespace {

template <typename AnySetting>
std::span<const AnySetting> choose(const Panel& panel, std::span<const AnySetting> settings,
                                   std::string_view only) {
  if (only.empty()) return settings;
  const AnySetting* setting = find_setting(settings, only);
  if (setting == nullptr) throw wrong_kind(panel, only);
  return {setting, 1};
}

Json reading_document(const Reading& reading) {
  return {{"value", value_document(*reading.setting, reading.stored)},
          {"stored", reading.known() ? Json(reading.stored) : Json(nullptr)},
          {"in_range", reading.good()}};
}

}  // namespace

std::vector<Reading> read_settings(const Panel& panel, std::string_view only) {
  std::vector<Reading> readings;
  if (panel.is_pct()) {
    const auto settings = choose(panel, pct_settings(), only);
    const PCTDevInfo set = fetch_set(panel);
    for (const PctSetting& setting : settings) {
      readings.push_back({&setting, value_in(set, setting)});
    }
    return readings;
  }
  const auto settings = choose(panel, resistive_settings(), only);
  const OpenPanel open(panel);
  for (const ResistiveSetting& setting : settings) {
    readings.push_back({&setting, ReadEEPValue(setting.address)});
  }
  return readings;
}

Json value_document(const Setting& setting, int stored) {
  if (stored < 0) return nullptr;
  const std::string_view word = word_for(setting, stored);
  return word.empty() ? Json(as_number(setting, stored)) : Json(word);
}

Json readings_document(const std::vector<Reading>& readings) {
  Json document = Json::object();
  for (const Reading& reading : readings) {
    document[std::string(reading.setting->name)] = reading_document(reading);
  }
  return document;
}

std::string readings_table(const std::vector<Reading>& readings) {
  std::vector<std::vector<std::string>> rows = {{"SETTING", "VALUE", "RANGE", "MEANING"}};
  for (const Reading& reading : readings) {
    const Setting& setting = *reading.setting;
    const std::string mark = reading.known() && !reading.good() ? " (out of range)" : "";
    rows.push_back({std::string(setting.name), reading.text() + mark, range_text(setting),
                    std::string(setting.meaning)});
  }
  return align(rows);
}

void judge_readings(const Panel& panel, const std::vector<Reading>& readings, Answer& answer) {
  std::vector<std::string> missing;
  for (const Reading& reading : readings) {
    const std::string name(reading.setting->name);
    if (!reading.known()) {
      missing.push_back(name);
    } else if (!reading.good()) {
      answer.hints.push_back(name + " holds " + reading.text() + ", which is out of range (" +
                             range_text(*reading.setting) + ")");
    }
  }
  if (missing.empty()) return;
  answer.failure.emplace(ExitCode::kFailed, "the panel did not tell " + join(missing), panel.node,
                         "check that the panel is still plugged in, then try again");
}

}  // namespace zelkoractl
