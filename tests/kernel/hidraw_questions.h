// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Everything that a host may ask a hidraw node, right and wrong.
#pragma once

namespace zelkora::probe {

void ask_hidraw(int fd);
void ask_unplugged_hidraw(int fd);
void exchange_over_hidraw(int fd);

}  // namespace zelkora::probe
