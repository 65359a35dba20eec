// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The settings of a panel as they were read, and how they are shown.
#pragma once

#include <string>
#include <vector>

#include "output.h"
#include "panels.h"
#include "settings.h"

namespace zelkoractl {

// A setting as it was read; -1 when the panel did not tell.
struct Reading {
  const Setting* setting;
  int stored;

  bool known() const { return stored >= 0; }
  bool good() const { return known() && in_range(*setting, stored); }
  std::string text() const { return known() ? value_text(*setting, stored) : "no answer"; }
};

// Of a panel of any kind: all settings when `only` is empty. Throws when the panel cannot be
// opened or has no such setting.
std::vector<Reading> read_settings(const Panel& panel, std::string_view only);

// A stored value: its word, or a number; null for -1.
Json value_document(const Setting& setting, int stored);

Json readings_document(const std::vector<Reading>& readings);
std::string readings_table(const std::vector<Reading>& readings);

// What did not go well: hints for values out of range, a failure for missing ones.
void judge_readings(const Panel& panel, const std::vector<Reading>& readings, Answer& answer);

}  // namespace zelkoractl
