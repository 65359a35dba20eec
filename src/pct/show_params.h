// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#pragma once

#include "zelkora.h"

namespace zelkora::pct {

// Prints a record in two lines of the trace, behind a heading that brings its own blank: the serial
// number, then the parameters.
void log_parameters(const char* heading, const PCTDevInfo& rec);

}  // namespace zelkora::pct
