// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "change.h"

#include <zelkora.h>

#include <algorithm>
#include <csignal>

#include "failure.h"

namespace zelkoractl {
namespace {

// Keeps Ctrl-C and the like waiting, so that a change is never left half done.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) {
      sigaddset(&held, signal);
    }
    sigprocmask(SIG_BLOCK, &held, &before_);
  }
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &before_, nullptr); }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;

 private:
  sigset_t before_;
};

[[noreturn]] void refuse(const std::string& message, const std::string& remedy) {
  throw Failure(ExitCode::kUsage, message, "", remedy);
}

Assignment parse_assignment(const std::string& word) {
  const size_t equals = word.find('=');
  if (equals == std::string::npos) {
    refuse("\"" + word + "\" is not of the form SETTING=VALUE", "write for example beep=off");
  }
  const std::string name = word.substr(0, equals);
  const std::string text = word.substr(equals + 1);
  const Setting* setting = find_setting(name);
  if (setting == nullptr) {
    refuse("there is no setting \"" + name + "\"", "the settings are " + setting_names());
  }
  const std::optional<int> value = parse_value(*setting, text);
  if (!value) {
    refuse(name + " cannot be \"" + text + "\"", name + " takes " + range_text(*setting));
  }
  return {setting, *value};
}

int read_or_throw(const Setting& setting, short address, const std::string& node) {
  const int value = ReadEEPValue(address);
  if (value < 0) {
    throw Failure(
        ExitCode::kFailed,
        "the old value of " + std::string(setting.name) + " cannot be read; nothing was changed",
        node, "check that the panel is still plugged in, then try again");
  }
  return value;
}

Step prepare(const Assignment& assignment, const std::string& node) {
  const Setting& setting = *assignment.setting;
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
  const Setting& setting = *step.assignment.setting;
  setting.write(static_cast<unsigned int>(step.before));
  bool restored = put_back_value(setting.address, step.before);
  if (setting.written_along >= 0) {
    restored = put_back_value(setting.written_along, step.along_before) && restored;
  }
  step.outcome = restored ? Outcome::kPutBack : Outcome::kNotPutBack;
}

}  // namespace

std::vector<Assignment> parse_assignments(const std::vector<std::string>& words) {
  std::vector<Assignment> assignments;
  for (const std::string& word : words) {
    const Assignment assignment = parse_assignment(word);
    if (std::ranges::find(assignments, assignment.setting, &Assignment::setting) !=
        assignments.end()) {
      refuse(std::string(assignment.setting->name) + " is given twice", "give it once");
    }
    assignments.push_back(assignment);
  }
  return assignments;
}

Change carry_out(const std::vector<Assignment>& assignments, const std::string& node) {
  const SignalsHeld held;
  Change change;
  for (const Assignment& assignment : assignments) {
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

std::string_view outcome_text(Outcome outcome) {
  switch (outcome) {
    case Outcome::kUntouched:
      return "untouched";
    case Outcome::kChanged:
      return "changed";
    case Outcome::kPutBack:
      return "put back";
    case Outcome::kNotPutBack:
      return "not put back";
  }
  return "";
}

}  // namespace zelkoractl
