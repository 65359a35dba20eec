// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The parameter block of a PCT controller: 32 or 34 bytes into a record, back, and on the screen.
#include <cstring>

#include "fuzz_bench.h"

using namespace zelkora;

namespace {

constexpr size_t kBlock = ZELKORA_PCT_BLOCK;
constexpr size_t kEncoded = ZELKORA_PCT_ENCODED_BLOCK;

// A record that was read is within its limits, so writing and reading it again changes nothing.
void check_round_trip(const unsigned char (&plain)[kBlock]) {
  PCTDevInfo first{};
  PCTParsingParamas(&first, plain);
  ShowParams(&first, ZELKORA_TYPE_PCT);
  unsigned char again[kBlock]{};
  PCTParamaEncode(&first, again);
  PCTDevInfo second{};
  PCTParsingParamas(&second, again);
  fuzz::require(std::memcmp(&first, &second, sizeof first) == 0, "a repaired record changed");
}

void check_coding(const unsigned char (&plain)[kBlock]) {
  unsigned char encoded[kEncoded]{};
  EncodeParames(plain, encoded, kBlock);
  unsigned char decoded[kBlock]{};
  const bool marked_empty = (encoded[kBlock] | encoded[kBlock + 1]) == 0;
  const bool done = DecodeParames(decoded, encoded, kBlock) != 0;
  fuzz::require(done != marked_empty, "an encoded block was refused");
  if (done) fuzz::require(std::memcmp(plain, decoded, kBlock) == 0, "a block came back changed");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  fuzz::FuzzBench bench;
  unsigned char encoded[kEncoded]{};
  std::ranges::copy(input.bytes(kEncoded), encoded);
  unsigned char plain[kBlock]{};
  if (DecodeParames(plain, encoded, kBlock) == 0) std::memcpy(plain, encoded, kBlock);
  check_round_trip(plain);
  check_coding(plain);
  ResDevInfo resistive{};
  unsigned words[ZELKORA_RES_STORED_WORDS]{};
  std::memcpy(words, plain, kBlock);
  ResParamaDecode(&resistive, words);
  ShowParams(&resistive, ZELKORA_TYPE_RESISTIVE_USB);
  return 0;
}
