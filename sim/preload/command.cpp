// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "command.h"

#include <paths.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "host_commands.h"
#include "protocol.h"

namespace zelkora::sim {
namespace {

namespace fs = std::filesystem;

constexpr char kLibraryName[] = "libzelkora-sim-preload.so";

// Puts a value before those that a variable holds.
void prepend(const char* variable, std::string value) {
  const char* others = std::getenv(variable);
  if (others != nullptr && *others != '\0') value.append(":").append(others);
  setenv(variable, value.c_str(), 1);
}

void prepare_environment(bool no_waits) {
  prepend("LD_PRELOAD", ZELKORA_SIM_LIBRARY_PATH);
  setenv("PATH", _PATH_DEFPATH, 0);
  prepend("PATH", ZELKORA_SIM_COMMANDS_PATH);
  // Sanitized programs would refuse to start behind a preloaded library.
  prepend("ASAN_OPTIONS", "verify_asan_link_order=0");
  if (no_waits) {
    setenv(ZELKORA_SIM_NO_WAITS_VARIABLE, "1", 1);
  } else {
    unsetenv(ZELKORA_SIM_NO_WAITS_VARIABLE);
  }
}

[[noreturn]] void execute(const std::vector<std::string>& words, bool no_waits) {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  prepare_environment(no_waits);

  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execvp(arguments[0], arguments.data());
  const int error = errno;
  std::fprintf(stderr, "zelkora-sim: cannot run %s: %s\n", arguments[0], std::strerror(error));
  _exit(error == ENOENT ? 127 : 126);
}

}  // namespace

std::string find_executable() {
  std::error_code code;
  return fs::read_symlink("/proc/self/exe", code);
}

std::string find_preload_library() {
  std::error_code code;
  const fs::path directory = fs::path(find_executable()).parent_path();
  for (const fs::path& place : {directory, directory / ZELKORA_SIM_LIBRARY_DIR}) {
    const fs::path library = place / kLibraryName;
    if (fs::exists(library, code)) return fs::canonical(library, code);
  }
  return {};
}

std::string install_preload_library(const std::string& library) {
  std::error_code code;
  fs::create_directories(ZELKORA_SIM_DIRECTORY, code);
  if (!code) fs::create_symlink(library, ZELKORA_SIM_LIBRARY_PATH, code);
  return code ? "cannot create " ZELKORA_SIM_LIBRARY_PATH ": " + code.message() : std::string();
}

std::string install_stand_ins(const std::string& executable) {
  const fs::path directory = ZELKORA_SIM_COMMANDS_PATH;
  std::error_code code;
  fs::create_directories(directory, code);
  for (const std::string_view name : HostCommands::names()) {
    if (!code) fs::create_symlink(executable, directory / name, code);
  }
  return code ? "cannot fill " ZELKORA_SIM_COMMANDS_PATH ": " + code.message() : std::string();
}

pid_t start_command(const std::vector<std::string>& words, bool no_waits) {
  const pid_t child = fork();
  if (child == 0) execute(words, no_waits);
  return child;
}

int exit_status(int wait_status) {
  return WIFSIGNALED(wait_status) ? 128 + WTERMSIG(wait_status) : WEXITSTATUS(wait_status);
}

}  // namespace zelkora::sim
