// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Changing several settings of a resistive panel: all of them or none.
//
// Nothing is written before every old value has been read. Each value is verified by reading it
// back; at the first one that was not taken, all values written so far are put back. Only a change
// that succeeded as a whole is made permanent, so even what cannot be put back returns when the
// panel loses power: no stored setting is ever lost.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "assignments.h"
#include "outcome.h"
#include "resistive_settings.h"

namespace zelkoractl {

using ResistiveAssignment = Assignment<ResistiveSetting>;

struct Step {
  ResistiveAssignment assignment;
  int before = 0;
  int along_before = 0;  // what ResistiveSetting::written_along held
  Outcome outcome = Outcome::kUntouched;
};

struct Change {
  std::vector<Step> steps;
  std::optional<size_t> failed;  // the step that did not take its value
  int stored = -1;               // what that setting held instead; -1: the panel did not say
  bool permanent = false;        // survives a loss of power

  bool complete() const { return !failed; }
};

// Carries out a change on the panel that is open. Throws, with nothing written, when an old value
// cannot be read. `node` is for the Failure.
Change carry_out(const std::vector<ResistiveAssignment>& assignments, const std::string& node);

}  // namespace zelkoractl
