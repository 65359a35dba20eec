// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The command of a session: a child process whose programs load the preload library.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace zelkora::sim {

// The preload library beside this executable or in its install place; empty when there is none.
std::string find_preload_library();

// This executable.
std::string find_executable();

// Makes the library known in the private root, so that its real path may hold any character.
// Returns what failed, or an empty text.
std::string install_preload_library(const std::string& library);

// Puts the stand-ins for commands, which are this executable under other names, into a directory of
// the private root. Returns what failed, or an empty text.
std::string install_stand_ins(const std::string& executable);

// Starts the command; -1 with errno set when that fails. A command that cannot be executed says
// so and ends with 127 (not found) or 126, as in a shell.
pid_t start_command(const std::vector<std::string>& words, bool no_waits);

// What the runner ends with: the command's exit status, or 128 and its signal.
int exit_status(int wait_status);

}  // namespace zelkora::sim
