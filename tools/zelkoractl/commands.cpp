// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands that look at panels and change their settings.
#include "commands.h"

#include <zelkora.h>

#include "assignments.h"
#include "nodes.h"
#include "panel_report.h"
#include "panels.h"
#include "pct_commands.h"
#include "readings.h"
#include "resistive_commands.h"

namespace zelkoractl {
Answer list_panels() {
  const std::vector<Panel> panels = find_panels();
  const Nodes nodes = look_at_nodes();
  if (panels.empty() && !nodes.locked.empty()) throw no_permission(nodes);
  Answer answer;
  answer.document["panels"] = Json::array();
  std::vector<std::vector<std::string>> rows = {panel_headings()};
  for (const Panel& panel : panels) {
    answer.document["panels"].push_back(panel_document(panel));
    rows.push_back(panel_row(panel));
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
  const std::vector<Reading> readings = read_settings(panel, "");
  Answer answer;
  answer.document["panel"] = panel_document(panel);
  answer.document["settings"] = readings_document(readings);
  answer.text = panel_text(panel) + "\n" + readings_table(readings);
  judge_readings(panel, readings, answer);
  return answer;
}

Answer show_serial_number(const std::string& name) {
  const Panel panel = find_panel(name);
  if (panel.serial_number.empty()) {
    throw Failure(ExitCode::kFailed, call(panel) + " is resistive: it has no serial number",
                  panel.node, "name a projected-capacitive panel");
  }
  Answer answer;
  answer.document = {
      {"panel", panel.index}, {"node", panel.node}, {"serial_number", panel.serial_number}};
  answer.text = panel.serial_number + "\n";
  return answer;
}

Answer get_settings(const std::string& name, const std::string& setting) {
  if (!setting.empty()) check_setting_name(setting);
  const Panel panel = find_panel(name);
  const std::vector<Reading> readings = read_settings(panel, setting);
  Answer answer;
  answer.document = {{"panel", panel.index}, {"node", panel.node}};
  answer.document["settings"] = readings_document(readings);
  for (const Reading& reading : readings) {
    if (!reading.known()) continue;
    const std::string prefix = setting.empty() ? std::string(reading.setting->name) + "=" : "";
    answer.text += prefix + reading.text() + "\n";
  }
  judge_readings(panel, readings, answer);
  return answer;
}

Answer set_settings(const std::string& name, const std::vector<std::string>& words) {
  const std::vector<Request> requests = parse_requests(words);
  const Panel panel = find_panel(name);
  return panel.is_pct() ? set_pct(panel, requests) : set_resistive(panel, requests);
}

Answer apply_defaults(const std::string& name) {
  const Panel panel = find_panel(name);
  return panel.is_pct() ? set_pct_defaults(panel) : set_resistive_defaults(panel);
}

Answer keep_settings(const std::string& name) {
  const Panel panel = find_panel(name);
  return panel.is_pct() ? keep_pct(panel) : keep_resistive(panel);
}

Answer revert_settings(const std::string& name) {
  const Panel panel = find_panel(name);
  return panel.is_pct() ? revert_pct(panel) : revert_resistive(panel);
}

}  // namespace zelkoractl
