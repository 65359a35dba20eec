// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Questions and orders to the models of a running session, one line of words each:
//   value PANEL ADDRESS        the 16-bit value, decimal
//   permanent PANEL ADDRESS    the value that a reset brings back
//   set PANEL ADDRESS VALUE    changes a value behind the host's back
//   silent PANEL on|off        whether the controller ignores commands
//   unplug PANEL
//   frames PANEL               every command frame so far, a line of hexadecimal bytes each
#pragma once

#include <string>
#include <string_view>

#include "panels.h"

namespace zelkora::sim {

enum ExitStatus { kExitDone = 0, kExitFailed = 1, kExitUsage = 2, kExitNotFound = 3 };

struct Answer {
  int status = kExitDone;
  std::string text;  // the answer, or what is wrong
};

// In the runner.
Answer answer_query(Panels& panels, std::string_view line);

// In a process inside a session: has the runner answer. Outside one the status is kExitUsage.
Answer ask_runner(const std::string& line);

}  // namespace zelkora::sim
