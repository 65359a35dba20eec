// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The way from a process inside a session to its runner.
#pragma once

#include <string>

#include "panel_queries.h"

namespace zelkora::sim {

// Has the runner answer a query. Outside a session the status is kExitUsage.
Answer ask_runner(const std::string& line);

}  // namespace zelkora::sim
