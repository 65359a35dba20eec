// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The settings of a resistive panel: where the controller keeps them, and what they may be.
//
// They are read with ReadEEPValue() and never with the library's getters: a getter repairs a value
// it finds out of range, and the repair of the play method overwrites the frequency.
#pragma once

#include <zelkora.h>

#include <span>

#include "settings.h"

namespace zelkoractl {

struct ResistiveSetting : Setting {
  int (*write)(unsigned int);  // returns the value read back, -1 when there is none
  short address;
  short written_along;  // another address that `write` changes, or -1
  // Its value in a record, and into one; null when records have no such field.
  int (*value_in)(const ResDevInfo& record);
  void (*put_in)(ResDevInfo& record, int stored);
};

std::span<const ResistiveSetting> resistive_settings();

}  // namespace zelkoractl
