// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What hosts do with a panel in entry 0 of the device table. An input says what, and in which
// order.
#pragma once

#include "fuzz_input.h"

namespace zelkora::fuzz {

// Fills entry 0, and opens it.
void open_entry(unsigned char type, const char* node, unsigned vendor, unsigned product);

void talk_to_resistive(FuzzInput& input);
void talk_to_pct(FuzzInput& input);
// Saving, fetching and reverting whole sets, through the store files.
void work_with_resistive_sets(FuzzInput& input);
void work_with_pct_sets(FuzzInput& input);

}  // namespace zelkora::fuzz
