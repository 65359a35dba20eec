// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The functions that the library expects its host to define.
#include <sys/random.h>
#include <zelkora.h>

#include <algorithm>
#include <cstdlib>

#include "config.h"

namespace {

constexpr size_t kRandomBytes = 16;

}  // namespace

extern "C" {

unsigned char Read_Config(unsigned char* config) {
  std::ranges::copy(zelkoractl::current_config().switches, config);
  return 1;
}

int GetEnableDebug(void) { return zelkoractl::current_config().debug ? 1 : 0; }

void GenerateRand(unsigned char* buffer, int /*one*/) {
  // Serial numbers tell panels apart, so there is nothing sensible to go on with. Requests of up
  // to 256 bytes are filled whole.
  if (getrandom(buffer, kRandomBytes, 0) < 0) std::abort();
}

// The encoding of parameter blocks: this host keeps them as they are, in plain copies.
void EncodeData(const unsigned char* source, unsigned char* destination, int /*zero*/, int length) {
  std::copy_n(source, std::max(length, 0), destination);
}

void DecodeData(const unsigned char* source, unsigned char* destination) {
  std::copy_n(source, int{ZELKORA_PCT_BLOCK}, destination);
}

// A command line has no X input driver to talk to.
void mydoled_all_display(void* /*display*/, unsigned int /*request*/, int /*config*/) {}

}  // extern "C"
