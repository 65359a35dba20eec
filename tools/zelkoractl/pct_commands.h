// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the commands do on a projected-capacitive panel.
#pragma once

#include <vector>

#include "assignments.h"
#include "output.h"
#include "panels.h"

namespace zelkoractl {

Answer set_pct(const Panel& panel, const std::vector<Request>& requests);
Answer set_pct_defaults(const Panel& panel);
Answer keep_pct(const Panel& panel);
Answer revert_pct(const Panel& panel);

}  // namespace zelkoractl
