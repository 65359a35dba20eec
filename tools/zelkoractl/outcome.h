// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What became of a setting that was to be changed.
#pragma once

#include <string_view>

namespace zelkoractl {

enum class Outcome {
  kUntouched,
  kChanged,
  kPutBack,     // written, then the old value restored
  kNotPutBack,  // written, and the old value could not be restored
};

constexpr std::string_view outcome_text(Outcome outcome) {
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
