// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What log.cpp offers beside the exported DebugMsg and PrintData.
#pragma once

#include "zelkora.h"

namespace zelkora {

// Levels of DebugMsg.
inline constexpr int kError = 0;  // errors a user must see
inline constexpr int kTrace = 3;  // shown only while the host's debug switch is on

// perror() while the host's debug switch is exactly 1.
void debug_perror(const char* text);

}  // namespace zelkora
