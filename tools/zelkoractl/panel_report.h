// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Who a panel is, in the forms in which that is told.
#pragma once

#include <string>
#include <vector>

#include "output.h"
#include "panels.h"

namespace zelkoractl {

Json panel_document(const Panel& panel);

// A line for each thing known.
std::string panel_text(const Panel& panel);

// For a table of panels.
std::vector<std::string> panel_headings();
std::vector<std::string> panel_row(const Panel& panel);

}  // namespace zelkoractl
