// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Changing several settings of a panel: all of them or none.
//
// Nothing is written before every old value has been read. Each value is verified by reading it
// back; at the first one that was not taken, all values written so far are put back. Only a change
// that succeeded as a whole is made permanent, so even what cannot be put back returns when the
// panel loses power: no stored setting is ever lost.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "settings.h"

namespace zelkoractl {

struct Assignment {
  const Setting* setting;
  int value;  // 16 bits, as it is stored
};

// Reads "name=value" words. Throws a usage Failure at the first that is wrong.
std::vector<Assignment> parse_assignments(const std::vector<std::string>& words);

enum class Outcome {
  kUntouched,
  kChanged,
  kPutBack,     // written, then the old value restored
  kNotPutBack,  // written, and the old value could not be restored
};

struct Step {
  Assignment assignment;
  int before = 0;
  int along_before = 0;  // what Setting::written_along held
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
Change carry_out(const std::vector<Assignment>& assignments, const std::string& node);

std::string_view outcome_text(Outcome outcome);

}  // namespace zelkoractl
