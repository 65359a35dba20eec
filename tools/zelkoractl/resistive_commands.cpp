// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "resistive_commands.h"

#include <zelkora.h>

#include <cstdint>

#include "readings.h"
#include "resistive_change.h"

namespace zelkoractl {
namespace {

// What became of a change that was not carried out.
Failure change_failure(const Change& change, const Panel& panel) {
  const ResistiveAssignment& failed = change.steps[*change.failed].assignment;
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

Answer change_answer(const Panel& panel, const Change& change) {
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

Answer change(const Panel& panel, const std::vector<ResistiveAssignment>& assignments) {
  const OpenPanel open(panel);
  return change_answer(panel, carry_out(assignments, panel.node));
}

}  // namespace

Answer set_resistive(const Panel& panel, const std::vector<Request>& requests) {
  return change(panel, assign(requests, resistive_settings(), panel));
}

Answer set_resistive_defaults(const Panel& panel) {
  ResDevInfo defaults{};
  GetResParamDefault(&defaults);
  std::vector<ResistiveAssignment> assignments;
  for (const ResistiveSetting& setting : resistive_settings()) {
    if (setting.default_in == nullptr) continue;
    const int value = setting.default_in(defaults);
    const auto stored = static_cast<uint16_t>(value);
    if (as_number(setting, stored) != value || !in_range(setting, stored)) {
      throw wrong_default(setting, value);
    }
    assignments.push_back({&setting, stored});
  }
  return change(panel, assignments);
}

}  // namespace zelkoractl
