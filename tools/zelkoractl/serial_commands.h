// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands around serial panels: the list of them, and the daemons that attach them.
#pragma once

#include <string>

#include "output.h"

namespace zelkoractl {

// What the last refresh found.
Answer list_serial();

// Searches all serial ports anew and lists the panels of every kind.
Answer refresh_serial();

// Start and stop the attach daemon of a panel.
Answer enable_serial(const std::string& panel);
Answer disable_serial(const std::string& panel);

}  // namespace zelkoractl
