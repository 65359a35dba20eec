// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The attach daemons, one for each serial panel, which hand its port to the kernel.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "core/log.h"
#include "core/scoped.h"
#include "port_names.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

constexpr unsigned kReleaseSeconds = 1;  // until a killed daemon has let go of its port
constexpr size_t kPidLine = 50;

}  // namespace

int GetPid(int number) {
  char command[32];
  std::snprintf(command, sizeof command, "pgrep vastrel%d", number);
  const zelkora::ScopedPipe pipe(::popen(command, "r"));
  char line[kPidLine + 1] = "";
  if (pipe) static_cast<void>(!std::fgets(line, sizeof line, pipe.get()));
  const int pid = static_cast<int>(std::strtoul(line, nullptr, 10));
  DebugMsg(kTrace, "pid=%d\n", pid);
  return pid;
}

int DisableRS232(int index) {
  const int number = index + 1;
  DebugMsg(kTrace, "*****DisableRS232---start DevNum=%d*****\n", number);
  if (GetPid(number) == 0) return 0;
  char command[32];
  std::snprintf(command, sizeof command, "killall vastrel%d", number);
  const int status = std::system(command);
  DebugMsg(kTrace, "*****DisableRS232 system---ret=%d*****\n", status);
  if (status == -1) return 0;
  DebugMsg(kTrace, "*****DisableRS232---WEXITSTATUS s=%d*****\n", WEXITSTATUS(status));
  ::sleep(kReleaseSeconds);
  return WEXITSTATUS(status) != 0 ? 1 : 0;
}

int EnableRS232(int index, const char* name) {
  const zelkora::serial::PortName port{std::string_view(name)};
  if (!port.is_tty() || !port.is_safe()) return 1;
  char command[96];
  std::snprintf(command, sizeof command, "systemctl start vastrel%d@%s.service", index + 1,
                port.text);
  const int status = std::system(command);
  if (status == -1) return 0;
  if (WEXITSTATUS(status) != 0) return 1;
  ::sleep(0);
  return 0;
}
