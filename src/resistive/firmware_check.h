// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Which controller firmware this library drives.
#pragma once

namespace zelkora::resistive {

// The third generation speaks another protocol.
bool is_unsupported_firmware(const char* text);

void log_unsupported_device();

}  // namespace zelkora::resistive
