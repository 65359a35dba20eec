// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The way from a process inside a session to its runner.
#pragma once

#include <span>
#include <string>

#include "panel_queries.h"

namespace zelkora::sim {

// Has a stand-in for a command carry it out, the name first. The text is what it prints, as an
// error when the status is not 0.
Answer run_stand_in(std::span<char* const> words);

// Has the runner answer a query. Outside a session the status is kExitUsage.
Answer ask_runner(const std::string& line);

}  // namespace zelkora::sim
