// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hooks.h"

#include <sys/random.h>
#include <zelkora.h>

#include <algorithm>
#include <cstdlib>

namespace zelkoractl {
namespace {

constexpr size_t kRandomBytes = 16;
constexpr size_t kEncodedBlock = 32;

constinit Config current{};

}  // namespace

void use_config(const Config& config) { current = config; }

}  // namespace zelkoractl

extern "C" {

unsigned char Read_Config(unsigned char* config) {
  std::ranges::copy(zelkoractl::current.switches, config);
  return 1;
}

int GetEnableDebug(void) { return zelkoractl::current.debug ? 1 : 0; }

// 16 random bytes for a new serial number; the number has no use.
void GenerateRand(unsigned char* buffer, int number);

// The encoding of parameter blocks. This host keeps them as they are: both are plain copies, of
// `length` bytes and of the 32-byte block.
void EncodeData(const unsigned char* source, unsigned char* destination, int unused, int length);
void DecodeData(const unsigned char* source, unsigned char* destination);

// Carries a request to the X input driver. A command line has no driver to talk to.
void mydoled_all_display(void* display, unsigned int request, unsigned char config);

void GenerateRand(unsigned char* buffer, int /*number*/) {
  // Serial numbers tell panels apart, so there is nothing sensible to go on with. Requests of up
  // to 256 bytes are filled whole.
  if (getrandom(buffer, zelkoractl::kRandomBytes, 0) < 0) std::abort();
}

void EncodeData(const unsigned char* source, unsigned char* destination, int /*unused*/,
                int length) {
  std::copy_n(source, std::max(length, 0), destination);
}

void DecodeData(const unsigned char* source, unsigned char* destination) {
  std::copy_n(source, zelkoractl::kEncodedBlock, destination);
}

void mydoled_all_display(void* /*display*/, unsigned int /*request*/, unsigned char /*config*/) {}

}  // extern "C"
