// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The PCT side of the library's stand-in: sets that are stored wrongly or not at all, a controller
// that ignores what it is sent, a panel that stays away after a reset.
#pragma once

#include <zelkora.h>

#include <optional>
#include <vector>

struct FakePct {
  PCTDevInfo current{};
  std::optional<PCTDevInfo> saved;
  PCTDevInfo controller{};  // the set that it was sent last
  bool opens = true;
  bool saves = true;                  // stores saved sets
  bool says_saved = false;            // even if not
  int sets_left = -1;                 // then it stores no current set any more; -1: never
  bool says_stored = false;           // even then
  unsigned char worn_click_mode = 0;  // other than 0: what the controller does for this click mode
  bool unplugged_by_set = false;
  int open = 0;               // the panel is open now
  bool command_mode = false;  // left open by SetPCTDefaultFlash()

  int pos_mode = 1;
  bool takes_modes = true;
  int looks_away = 0;  // enumerations that do not find it after a reset
  int resets = 0;
  std::vector<unsigned> waits;
};

// Each test begins with a new one.
extern FakePct pct;
