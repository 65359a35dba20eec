// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Actions that only a process of their own can take: to be killed, to give up privileges.
#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>

namespace zelkora::test {

// What the action, run in a child process, returns: 0..127. A negative number is that of the
// signal which ended the child.
inline int status_in_child(const std::function<int()>& action) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(action());
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

// Gives up all privileges for good, so that file modes count for root too.
inline bool without_capabilities() {
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  const __user_cap_data_struct none[2] = {};
  return ::syscall(SYS_capset, &header, none) == 0;
}

}  // namespace zelkora::test
