// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The functions that the library expects its host to define.
#pragma once

#include "config.h"

namespace zelkoractl {

// What Read_Config() and GetEnableDebug() hand to the library from now on.
void use_config(const Config& config);

}  // namespace zelkoractl
