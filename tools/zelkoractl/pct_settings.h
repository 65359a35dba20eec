// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The settings of a projected-capacitive panel: their places in its parameter set, and what they
// may be. The controller carries out the clicks and the menu itself; the rest is for the X input
// driver.
#pragma once

#include <zelkora.h>

#include <span>

#include "settings.h"

namespace zelkoractl {

struct PctSetting : Setting {
  unsigned char PCTDevInfo::*field;  // null: Frequency, the only one wider than a byte
};

std::span<const PctSetting> pct_settings();

int value_in(const PCTDevInfo& set, const PctSetting& setting);
void change_value(PCTDevInfo& set, const PctSetting& setting, int value);

bool same_settings(const PCTDevInfo& one, const PCTDevInfo& other);

}  // namespace zelkoractl
