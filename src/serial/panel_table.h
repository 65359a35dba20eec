// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

#include "zelkora.h"

namespace zelkora::serial {

// Makes a table entry that of a serial panel.
void fill_entry(TouchDeviceEntry& entry, std::string_view name, std::string_view firmware);

}  // namespace zelkora::serial
