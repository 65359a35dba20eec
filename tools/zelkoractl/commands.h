// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands. Each throws a Failure when there is nothing to answer; one that has an answer in
// spite of a failure returns both.
#pragma once

#include <string>
#include <vector>

#include "output.h"

namespace zelkoractl {

Answer list_panels();
Answer show_panel(const std::string& panel);
// All settings when `setting` is empty.
Answer get_settings(const std::string& panel, const std::string& setting);
Answer set_settings(const std::string& panel, const std::vector<std::string>& assignments);

}  // namespace zelkoractl
