// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Which serial panel is on which port.
#pragma once

#include <span>
#include <string>

#include "panel_description.h"

namespace zelkora::sim {

// Gives each serial panel without a port the first of ttyS0, ttyS1, ... that is free. Returns what
// is wrong, or an empty text.
std::string assign_ports(std::span<PanelDescription> panels);

}  // namespace zelkora::sim
