// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "pct_commands.h"

#include <zelkora.h>

#include "pct_set.h"
#include "pct_settings.h"
#include "readings.h"

namespace zelkoractl {
namespace {

std::string line(const PctSetting& setting, const PCTDevInfo& set) {
  return std::string(setting.name) + "=" + value_text(setting, value_in(set, setting)) + "\n";
}

Answer answer_of(const Panel& panel) {
  Answer answer;
  answer.document = {{"panel", panel.index}, {"node", panel.node}};
  answer.document["settings"] = Json::object();
  return answer;
}

struct SetChange {
  PCTDevInfo before;
  PCTDevInfo wanted;
  Outcome outcome;
};

void add_step(const PctSetting& setting, const SetChange& change, Answer& answer) {
  answer.document["settings"][std::string(setting.name)] = {
      {"before", value_document(setting, value_in(change.before, setting))},
      {"asked", value_document(setting, value_in(change.wanted, setting))},
      {"outcome", outcome_text(change.outcome)}};
  if (change.outcome == Outcome::kChanged) answer.text += line(setting, change.wanted);
}

void finish(const Panel& panel, const SetChange& change, Answer& answer) {
  // The store keeps what the panel loses with its power.
  answer.document["permanent"] = change.outcome == Outcome::kChanged;
  if (change.outcome == Outcome::kPutBack) {
    answer.failure.emplace(ExitCode::kFailed,
                           "the panel did not take the settings; every setting has its old value",
                           panel.node, "try again");
  } else if (change.outcome == Outcome::kNotPutBack) {
    answer.failure.emplace(
        ExitCode::kFailed, "the panel took neither the settings nor its old ones again", panel.node,
        "check that it is still plugged in; zelkoractl revert brings its old settings back");
  }
}

}  // namespace

Answer set_pct(const Panel& panel, const std::vector<Request>& requests) {
  const auto assignments = assign(requests, pct_settings(), panel);
  SetChange change{fetch_set(panel), {}, {}};
  change.wanted = change.before;
  for (const auto& [setting, value] : assignments) {
    change_value(change.wanted, *setting, value);
  }
  change.outcome = change_set(panel, change.before, change.wanted);
  Answer answer = answer_of(panel);
  for (const auto& [setting, value] : assignments) {
    add_step(*setting, change, answer);
  }
  finish(panel, change, answer);
  return answer;
}

Answer set_pct_defaults(const Panel& panel) {
  SetChange change{fetch_set(panel), {}, {}};
  change.wanted = default_set(change.before);
  for (const PctSetting& setting : pct_settings()) {
    const int value = value_in(change.wanted, setting);
    if (!in_range(setting, value)) throw wrong_default(setting, value);
  }
  change.outcome = change_set_to_defaults(panel, change.before);
  Answer answer = answer_of(panel);
  for (const PctSetting& setting : pct_settings()) {
    add_step(setting, change, answer);
  }
  finish(panel, change, answer);
  return answer;
}

Answer keep_pct(const Panel& panel) {
  const PCTDevInfo current = fetch_set(panel);
  keep_set(panel, current);
  Answer answer = answer_of(panel);
  for (const PctSetting& setting : pct_settings()) {
    answer.document["settings"][std::string(setting.name)] =
        value_document(setting, value_in(current, setting));
    answer.text += line(setting, current);
  }
  return answer;
}

Answer revert_pct(const Panel& panel) {
  const PCTDevInfo current = fetch_set(panel);
  const std::optional<PCTDevInfo> saved = saved_set(current);
  if (!saved) {
    throw Failure(ExitCode::kFailed,
                  call(panel) +
                      " has nothing to go back to: no setting was changed or kept since "
                      "it went back last",
                  panel.node, "");
  }
  revert_set(panel, *saved);
  const SetChange change{current, *saved, Outcome::kChanged};
  Answer answer = answer_of(panel);
  for (const PctSetting& setting : pct_settings()) {
    if (value_in(current, setting) == value_in(*saved, setting)) continue;
    add_step(setting, change, answer);
  }
  if (answer.text.empty()) answer.hints.emplace_back("the settings were the same already");
  finish(panel, change, answer);
  return answer;
}

}  // namespace zelkoractl
