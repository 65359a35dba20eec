// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The companion programs: the tools that the library runs and waits for, the touch service that it
// starts and kills, and the boot script that restores the defaults.
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/file_lines.h"
#include "core/file_rewrite.h"
#include "core/log.h"
#include "core/open_file.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

constexpr size_t kCommandSize = 50;
constexpr size_t kPidLine = 1024 + 1;
constexpr useconds_t kServiceSettleUs = 100'000;

// A status of system() as the operations below report it: a command that failed, and no other. A
// shell that could not be run counts as success, and so does a command that a signal ended.
int failed(int status) { return status != -1 && WEXITSTATUS(status) != 0 ? 1 : 0; }

// Runs a tool and waits for it. `length` is what the command needed: one that did not fit is not
// run, for its end may have changed its meaning.
int run_tool(const char (&command)[kCommandSize], int length) {
  if (length < 0 || static_cast<size_t>(length) >= kCommandSize) return 1;
  return failed(std::system(command));
}

// The script paired with the first marker file there is, null when there is none.
const char* marked_boot_script() {
  for (const auto& place : zelkora::paths::kBootScripts) {
    struct stat status;
    if (stat(place.marker, &status) == 0) return place.script;
  }
  return nullptr;
}

}  // namespace

int ExecuteCalibration(const char* dev_path, int calib_point) {
  DebugMsg(kTrace, "ExecuteCalibration DevPath:%s CalibPoint:%d", dev_path, calib_point);
  char command[kCommandSize];
  const int length =
      std::snprintf(command, sizeof command, "/usr/local/bin/Zarvik %s %d", dev_path, calib_point);
  return run_tool(command, length);
}

int ExecuteScrimble(int first, int second, const char* text) {
  char command[kCommandSize];
  const int length = std::snprintf(command, sizeof command, "/usr/local/bin/Scrimble %d %d %s",
                                   first, second, text);
  return run_tool(command, length);
}

int ExecuteMap(void) { return failed(std::system("/usr/local/bin/Tessaline")); }

int GetTouchServicePid(int* pids) {
  const zelkora::ScopedPipe pipe(::popen("pidof pelvand", "r"));
  if (!pipe) return 0;
  char line[kPidLine];
  if (std::fgets(line, sizeof line, pipe.get()) == nullptr) return 0;
  int count = 0;
  char* rest = nullptr;
  for (char* piece = strtok_r(line, " ", &rest); piece != nullptr && count < ZELKORA_MAX_PIDS;
       piece = strtok_r(nullptr, " ", &rest)) {
    pids[count] = std::atoi(piece);
    DebugMsg(kTrace, "%d\n", pids[count]);
    ++count;
  }
  return count;
}

int DisableTouchService(void) {
  DebugMsg(kTrace, "*****DisableTouchService---start*****\n");
  int pids[ZELKORA_MAX_PIDS]{};
  const int count = GetTouchServicePid(pids);
  DebugMsg(kTrace, "Pids : %d\n", count);
  int status = -1;
  for (int i = 0; i < count; ++i) {
    if (pids[i] == 0) continue;
    char command[kCommandSize];
    std::snprintf(command, sizeof command, "kill -9 %d", pids[i]);
    DebugMsg(kTrace, "%s\n", command);
    status = std::system(command);
    DebugMsg(kTrace, "*****DisableTouchService system---ret=%d*****\n", status);
  }
  if (status == -1) return 0;
  DebugMsg(kTrace, "*****DisableTouchService---WEXITSTATUS s=%d*****\n", WEXITSTATUS(status));
  ::usleep(kServiceSettleUs);
  return failed(status);
}

int EnableTouchService(void) {
  const int status = std::system("pelvand &");
  if (status == -1) return 0;
  if (failed(status) != 0) return 1;
  ::usleep(kServiceSettleUs);
  return 0;
}

int SaveCheckDeviceNumber(int /*number*/) {
  const char* script = marked_boot_script();
  if (script == nullptr) return 0;
  const zelkora::ScopedFile file(zelkora::open_file(script, "r"));
  if (!file) return 0;
  zelkora::NewContent content;
  if (content.stream() == nullptr) return 0;
  // A check of the number beside the line that restores the defaults has never reached the file:
  // the script comes back as it was.
  for (zelkora::LineReader reader(file.get()); reader.next();) content.write(reader.line());
  if (std::ferror(file.get()) == 0) content.commit(script);
  return 0;
}
