// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Everything that a host may ask a hiddev node, right and wrong.
#pragma once

namespace zelkora::probe {

void ask_hiddev(int fd, const char* node);
void ask_unplugged_hiddev(int fd);
void exchange_over_hiddev(int fd);

}  // namespace zelkora::probe
