// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The host process of the tests: what its hooks answer to the library.
#pragma once

#include <array>

#include "zelkora.h"

namespace zelkora::test {

struct Host {
  std::array<unsigned char, ZELKORA_CONFIG_BYTES> config = {1};  // resistive panels, old ids
  unsigned char config_read = 1;                                 // result of Read_Config()
  int debug = 0;
  int config_reads = 0;              // calls of Read_Config(),
  int debug_flag_at_read = 0;        // and DbgFlag at the last of them
  void* notified_display = nullptr;  // the display of the last notification,
  bool display_was_open = false;     // and whether it was open then
  // What GenerateRand() fills in,
  std::array<unsigned char, 16> random = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  int random_argument = 0;   // and its second argument
  int encode_argument = -1;  // the third argument of EncodeData()
};

// Every test of a Bench starts with a fresh one.
extern Host g_host;

// Sets every exported variable back to what it is at load.
void reset_library_state();

}  // namespace zelkora::test
