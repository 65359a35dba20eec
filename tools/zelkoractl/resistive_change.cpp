// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "resistive_change.h"

#include <zelkora.h>

#include "failure.h"
#include "signals_held.h"

namespace zelkoractl {
namespace {

int read_or_throw(const ResistiveSetting& setting, short address, const std::string& node) {
  const int value = ReadEEPValue(address);
  if (value < 0) {
    throw Failure(
        ExitCode::kFailed,
        "the old value of " + std::string(setting.name) + " cannot be read; nothing was changed",
        node, "check that the panel is still plugged in, then try again");
  }
  return value;
}

Step prepare(const ResistiveAssignment& assignment, const std::string& node) {
  const ResistiveSetting& setting = *assignment.setting;
  Step step{assignment};
  step.before = read_or_throw(setting, setting.address, node);
  if (setting.written_along >= 0) {
    step.along_before = read_or_throw(setting, setting.written_along, node);
  }
  return step;
}

bool put_back_value(short address, int value) {
  return ReadEEPValue(address) == value ||
         (WriteEEPValue(address, static_cast<unsigned int>(value)) != 0 &&
          ReadEEPValue(address) == value);
}

// By the setter first, which also does whatever else belongs to the setting; the plain write is
// for old values that the setter refuses and for what it changes besides.
void put_back(Step& step) {
  const ResistiveSetting& setting = *step.assignment.setting;
  setting.write(static_cast<unsigned int>(step.before));
  bool restored = put_back_value(setting.address, step.before);
  if (setting.written_along >= 0) {
    restored = put_back_value(setting.written_along, step.along_before) && restored;
  }
  step.outcome = restored ? Outcome::kPutBack : Outcome::kNotPutBack;
}

}  // namespace

Change carry_out(const std::vector<ResistiveAssignment>& assignments, const std::string& node) {
  const SignalsHeld held;
  Change change;
  for (const ResistiveAssignment& assignment : assignments) {
    change.steps.push_back(prepare(assignment, node));
  }
  for (size_t i = 0; i < change.steps.size() && change.complete(); ++i) {
    Step& step = change.steps[i];
    const int wanted = step.assignment.value;
    step.outcome = Outcome::kChanged;
    change.stored = step.assignment.setting->write(static_cast<unsigned int>(wanted));
    if (change.stored != wanted) change.failed = i;
  }
  if (change.complete()) {
    change.permanent = PermanentParameter() != 0;
    return change;
  }
  for (auto step = change.steps.rbegin(); step != change.steps.rend(); ++step) {
    if (step->outcome == Outcome::kChanged) put_back(*step);
  }
  return change;
}

}  // namespace zelkoractl
