// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A stand-in for the library, with one panel that fails as no model does: one value alone worn
// out.
#pragma once

#include <zelkora.h>

#include <map>
#include <optional>
#include <set>

struct FakePanel {
  std::map<int, int> values;
  std::set<int> worn;        // addresses that keep what they hold and acknowledge all the same
  std::set<int> unreadable;  // addresses that are not told
  bool keeps = true;         // acknowledges PermanentParameter()
  int writes_left = -1;      // then it falls silent; -1: never
  int commits = 0;
  int type = ZELKORA_TYPE_RESISTIVE_USB;
  bool opens = true;
  int opened = 0;
  int closed = 0;
  int interrupt_at_write = -1;  // raises SIGINT during this write, counted from 0
  int writes = 0;
  bool confirms_reset = true;
  bool store_works = true;
  std::optional<ResDevInfo> kept;  // the working copy; the saved record is always the same
};

// Each test begins with a new one.
extern FakePanel panel;
