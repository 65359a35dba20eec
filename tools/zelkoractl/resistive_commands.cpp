// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "resistive_commands.h"

#include <zelkora.h>

#include <algorithm>
#include <cstdint>

#include "paths.h"
#include "readings.h"
#include "resistive_change.h"
#include "signals_held.h"

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

// The modes of ResSetAllParams() and ResSerSetAllParams().
constexpr signed char kSaveBoth = 1;
constexpr signed char kRevert = 2;

const std::string kCheckStore = std::string("check that ") + paths::kData +
                                " can be written and the panel is still plugged in, then try again";

bool set_record(const Panel& panel, ResDevInfo& record, signed char mode) {
  if (panel.type == ZELKORA_TYPE_RESISTIVE_SERIAL) {
    return ResSerSetAllParams(panel.index, &record, mode) != 0;
  }
  return ResSetAllParams(panel.index, &record, mode, 0) != 0;
}

// The first-move code has a field in records, but none in the stored form.
bool is_stored(const ResistiveSetting& setting) {
  return setting.value_in != nullptr && setting.address != ZELKORA_EEP_FIRST_MOVE;
}

// The values of all settings, as they are now.
std::vector<ResistiveAssignment> current_values(const Panel& panel) {
  const OpenPanel open(panel);
  std::vector<ResistiveAssignment> values;
  for (const ResistiveSetting& setting : resistive_settings()) {
    const int value = ReadEEPValue(setting.address);
    if (value < 0) {
      throw Failure(ExitCode::kFailed,
                    "the panel did not tell " + std::string(setting.name) + "; nothing was changed",
                    panel.node, "check that the panel is still plugged in, then try again");
    }
    values.push_back({&setting, value});
  }
  return values;
}

// Those of the values that the panel does not hold.
std::vector<ResistiveAssignment> different_from(const std::vector<ResistiveAssignment>& current,
                                                const std::vector<ResistiveAssignment>& wanted) {
  std::vector<ResistiveAssignment> different;
  for (const ResistiveAssignment& assignment : wanted) {
    const auto held = std::ranges::find(current, assignment.setting, &ResistiveAssignment::setting);
    if (held->value != assignment.value) different.push_back(assignment);
  }
  return different;
}

ResDevInfo kept_record(const Panel& panel) {
  ResDevInfo kept{};
  if (GetResAllDataBinTemp(panel.index, &kept) != 0) return kept;
  throw Failure(ExitCode::kFailed, call(panel) + " has nothing to go back to", panel.node,
                "zelkoractl keep makes the settings of now those to go back to");
}

}  // namespace

Answer keep_resistive(const Panel& panel) {
  const auto current = current_values(panel);
  ResDevInfo record{};
  Answer answer;
  answer.document = {{"panel", panel.index}, {"node", panel.node}};
  for (const auto& [setting, value] : current) {
    if (setting->value_in != nullptr) setting->put_in(record, value);
    if (!is_stored(*setting)) continue;
    answer.document["settings"][std::string(setting->name)] = value_document(*setting, value);
    answer.text += std::string(setting->name) + "=" + value_text(*setting, value) + "\n";
  }
  const SignalsHeld held;
  if (!set_record(panel, record, kSaveBoth) || MatchResCheckSum(panel.index) == 0) {
    throw Failure(ExitCode::kFailed, "the settings could not be kept", panel.node, kCheckStore);
  }
  // Bringing the flash in line with a record gives some settings values of the library's own.
  const auto lost = different_from(current_values(panel), current);
  if (!lost.empty()) answer.failure = change(panel, lost).failure;
  return answer;
}

Answer revert_resistive(const Panel& panel) {
  ResDevInfo kept = kept_record(panel);
  std::vector<ResistiveAssignment> wanted = current_values(panel);
  for (ResistiveAssignment& assignment : wanted) {
    if (!is_stored(*assignment.setting)) continue;
    assignment.value = static_cast<uint16_t>(assignment.setting->value_in(kept));
  }
  const SignalsHeld held;
  // Where both records agree there is nothing to take back in the store.
  if (MatchResCheckSum(panel.index) == 0 && !set_record(panel, kept, kRevert)) {
    throw Failure(ExitCode::kFailed, "the panel did not go back to its old settings", panel.node,
                  kCheckStore);
  }
  Answer answer = change(panel, different_from(current_values(panel), wanted));
  if (answer.document["settings"].empty()) {
    answer.hints.emplace_back("the settings were the same already");
  }
  return answer;
}

Answer set_resistive(const Panel& panel, const std::vector<Request>& requests) {
  return change(panel, assign(requests, resistive_settings(), panel));
}

Answer set_resistive_defaults(const Panel& panel) {
  ResDevInfo defaults{};
  GetResParamDefault(&defaults);
  std::vector<ResistiveAssignment> assignments;
  for (const ResistiveSetting& setting : resistive_settings()) {
    if (setting.value_in == nullptr) continue;
    const int value = setting.value_in(defaults);
    const auto stored = static_cast<uint16_t>(value);
    if (as_number(setting, stored) != value || !in_range(setting, stored)) {
      throw wrong_default(setting, value);
    }
    assignments.push_back({&setting, stored});
  }
  return change(panel, assignments);
}

}  // namespace zelkoractl
