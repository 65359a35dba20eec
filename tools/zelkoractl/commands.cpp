// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "commands.h"

#include <zelkora.h>

#include "change.h"
#include "nodes.h"
#include "panels.h"
#include "settings.h"

namespace zelkoractl {
namespace {

std::string or_dash(const std::string& text) { return text.empty() ? "-" : printable(text); }

Json panel_document(const Panel& panel) {
  return {{"index", panel.index},
          {"type", type_name(panel)},
          {"node", panel.node},
          {"usb_id", or_null(panel.usb_id)},
          {"firmware", or_null(panel.firmware)},
          {"event_node", or_null(find_event_node(panel))},
          {"phys", or_null(panel.phys)}};
}

// A controller that keeps silent is still a panel; a resistive one always has a firmware text.
std::string firmware_text(const Panel& panel) {
  if (panel.firmware.empty() && panel.type != ZELKORA_TYPE_PCT) return "no answer";
  return or_dash(panel.firmware);
}

std::string panel_text(const Panel& panel) {
  return align({{"panel", std::to_string(panel.index)},
                {"type", std::string(type_name(panel))},
                {"node", printable(panel.node)},
                {"usb id", or_dash(panel.usb_id)},
                {"firmware", firmware_text(panel)},
                {"event node", or_dash(find_event_node(panel))},
                {"phys", or_dash(panel.phys)}});
}

// A setting as it was read; -1 when the panel did not tell.
struct Reading {
  const Setting* setting;
  int stored;

  bool known() const { return stored >= 0; }
  bool good() const { return known() && in_range(*setting, stored); }
  std::string text() const { return known() ? value_text(*setting, stored) : "no answer"; }
};

Json value_document(const Setting& setting, int stored) {
  if (stored < 0) return nullptr;
  if (is_switch(setting) && in_range(setting, stored)) return value_text(setting, stored);
  return as_number(setting, stored);
}

Json reading_document(const Reading& reading) {
  return {{"value", value_document(*reading.setting, reading.stored)},
          {"stored", reading.known() ? Json(reading.stored) : Json(nullptr)},
          {"in_range", reading.good()}};
}

Json readings_document(const std::vector<Reading>& readings) {
  Json document = Json::object();
  for (const Reading& reading : readings) {
    document[std::string(reading.setting->name)] = reading_document(reading);
  }
  return document;
}

std::vector<Reading> read_settings(const Panel& panel, std::span<const Setting> settings) {
  const OpenPanel open(panel);
  std::vector<Reading> readings;
  for (const Setting& setting : settings) {
    readings.push_back({&setting, ReadEEPValue(setting.address)});
  }
  return readings;
}

// What did not go well in a reading: hints for values out of range, a failure for missing ones.
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

// What became of a change that was not carried out.
Failure change_failure(const Change& change, const Panel& panel) {
  const Assignment& failed = change.steps[*change.failed].assignment;
  const Setting& setting = *failed.setting;
  std::string message = std::string(setting.name) + ": the panel ";
  message += change.stored < 0 ? "did not take the value"
                               : "stored " + value_text(setting, change.stored) + " instead of " +
                                     value_text(setting, failed.value);
  std::vector<std::string> lost;
  for (const Step& step : change.steps) {
    if (step.outcome != Outcome::kNotPutBack) continue;
    lost.emplace_back(step.assignment.setting->name);
  }
  if (lost.empty()) {
    return {ExitCode::kFailed, message + "; every setting has its old value again", panel.node,
            "try again, or leave this setting as it is"};
  }
  return {ExitCode::kFailed, message + "; not put back: " + join(lost), panel.node,
          "unplug the panel and plug it in again: nothing was made permanent, so its old settings "
          "come back"};
}

Json step_document(const Step& step) {
  const Setting& setting = *step.assignment.setting;
  return {{"before", value_document(setting, step.before)},
          {"asked", value_document(setting, step.assignment.value)},
          {"outcome", outcome_text(step.outcome)}};
}

}  // namespace

Answer list_panels() {
  const std::vector<Panel> panels = find_panels();
  const Nodes nodes = look_at_nodes();
  if (panels.empty() && !nodes.locked.empty()) throw no_permission(nodes);
  Answer answer;
  answer.document["panels"] = Json::array();
  std::vector<std::vector<std::string>> rows = {{"PANEL", "TYPE", "NODE", "USB-ID", "FIRMWARE"}};
  for (const Panel& panel : panels) {
    answer.document["panels"].push_back(panel_document(panel));
    rows.push_back({std::to_string(panel.index), std::string(type_name(panel)),
                    printable(panel.node), or_dash(panel.usb_id), firmware_text(panel)});
  }
  if (panels.empty()) {
    answer.hints = why_nothing_was_found(nodes);
    return answer;
  }
  answer.text = align(rows);
  if (panels.size() == ZELKORA_MAX_DEVICES) {
    answer.hints.push_back("the library holds " + std::to_string(panels.size()) +
                           " panels; any further ones are not listed");
  }
  if (!nodes.locked.empty()) {
    answer.hints.push_back(join(nodes.locked) +
                           ": no permission to open; a panel there would be missing");
  }
  return answer;
}

Answer show_panel(const std::string& name) {
  const Panel panel = find_panel(name);
  Answer answer;
  answer.document["panel"] = panel_document(panel);
  answer.text = panel_text(panel);
  if (panel.type == ZELKORA_TYPE_PCT) return answer;
  const std::vector<Reading> readings = read_settings(panel, all_settings());
  answer.document["settings"] = readings_document(readings);
  answer.text += "\n";
  answer.text += readings_table(readings);
  judge_readings(panel, readings, answer);
  return answer;
}

Answer get_settings(const std::string& name, const std::string& setting_name) {
  std::span<const Setting> settings = all_settings();
  if (!setting_name.empty()) {
    const Setting* setting = find_setting(setting_name);
    if (setting == nullptr) {
      throw Failure(ExitCode::kUsage, "there is no setting \"" + setting_name + "\"", "",
                    "the settings are " + setting_names());
    }
    settings = {setting, 1};
  }
  const Panel panel = find_panel(name);
  const std::vector<Reading> readings = read_settings(panel, settings);
  Answer answer;
  answer.document = {{"panel", panel.index}, {"node", panel.node}};
  answer.document["settings"] = readings_document(readings);
  for (const Reading& reading : readings) {
    if (!reading.known()) continue;
    const std::string prefix = setting_name.empty() ? std::string(reading.setting->name) + "=" : "";
    answer.text += prefix + reading.text() + "\n";
  }
  judge_readings(panel, readings, answer);
  return answer;
}

Answer set_settings(const std::string& name, const std::vector<std::string>& words) {
  const std::vector<Assignment> assignments = parse_assignments(words);
  const Panel panel = find_panel(name);
  const OpenPanel open(panel);
  const Change change = carry_out(assignments, panel.node);
  Answer answer;
  answer.document = {{"panel", panel.index}, {"node", panel.node}};
  answer.document["settings"] = Json::object();
  for (const Step& step : change.steps) {
    const Setting& setting = *step.assignment.setting;
    Json& document = answer.document["settings"][std::string(setting.name)];
    document = step_document(step);
    if (change.failed && &step == &change.steps[*change.failed]) {
      document["stored"] = value_document(setting, change.stored);
    }
    if (change.complete()) {
      answer.text +=
          std::string(setting.name) + "=" + value_text(setting, step.assignment.value) + "\n";
    }
  }
  answer.document["permanent"] = change.permanent;
  if (!change.complete()) {
    answer.failure = change_failure(change, panel);
  } else if (!change.permanent) {
    answer.failure.emplace(ExitCode::kFailed,
                           "the settings are changed, but may be lost when the panel loses power: "
                           "it did not confirm keeping them",
                           panel.node, "give the same command again");
  }
  return answer;
}

}  // namespace zelkoractl
