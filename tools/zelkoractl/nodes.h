// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The device nodes themselves. The library says nothing about nodes it could not open, nor why it
// accepted none, so this looks for the reason.
#pragma once

#include <string>
#include <vector>

#include "failure.h"

namespace zelkoractl {

struct Nodes {
  std::vector<std::string> all;     // the hiddev and, when switched on, hidraw nodes there are
  std::vector<std::string> locked;  // those of them that this user may not open
};

// Looks where the enumeration looks. Every node is opened for a moment, which may wake a device.
Nodes look_at_nodes();

// True when the node exists and may not be opened.
bool is_locked(const std::string& node);

Failure no_permission(const std::string& message, const std::vector<std::string>& nodes);

// Nodes of panels may be among the locked ones.
Failure no_permission(const Nodes& nodes);

// Why the enumeration found nothing, as far as nodes, configuration and name lists tell. Call after
// it, so that the lists have been read.
std::vector<std::string> why_nothing_was_found(const Nodes& nodes);

}  // namespace zelkoractl
