// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The exit statuses of zelkoractl. A number keeps its meaning for ever: scripts branch on it.
#pragma once

namespace zelkoractl {

enum class ExitCode : int {
  kDone = 0,
  kFailed = 1,        // a panel did not do what it was asked, or the answer could not be written
  kUsage = 2,         // arguments or configuration; no panel was changed
  kNotFound = 3,      // no such panel
  kNoPermission = 5,  // a device node exists but may not be opened
};

}  // namespace zelkoractl
