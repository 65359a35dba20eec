// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the commands do on a resistive panel.
#pragma once

#include <vector>

#include "assignments.h"
#include "output.h"
#include "panels.h"

namespace zelkoractl {

Answer set_resistive(const Panel& panel, const std::vector<Request>& requests);
Answer set_resistive_defaults(const Panel& panel);

// Of the settings that a stored record has. What was kept last stays: one can go back to it again.
Answer keep_resistive(const Panel& panel);
Answer revert_resistive(const Panel& panel);

}  // namespace zelkoractl
