// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The 34-byte parameter block: 32 bytes that only the host can encode, and their checksum.
#include "core/log.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

constexpr int kChecksumLow = ZELKORA_PCT_BLOCK;
constexpr int kChecksumHigh = ZELKORA_PCT_BLOCK + 1;
static_assert(kChecksumHigh + 1 == ZELKORA_PCT_ENCODED_BLOCK);

}  // namespace

void EncodeParames(const unsigned char* plain, unsigned char* encoded, int length) {
  DebugMsg(kTrace, "***EncodeParames***\n");
  PrintData("EncodeParames original", plain, length);
  EncodeData(plain, encoded, 0, length);
  const unsigned sum = CheckSum(encoded, ZELKORA_PCT_BLOCK);
  encoded[kChecksumLow] = static_cast<unsigned char>(sum);
  encoded[kChecksumHigh] = static_cast<unsigned char>(sum >> 8);
  DebugMsg(kTrace, "###EncodeParames checksum=0x%04x FLASH[32]0x%02x FLASH[33]0x%02x\n", sum,
           encoded[kChecksumLow], encoded[kChecksumHigh]);
  PrintData("EncodeParames EncodeData", encoded, length);
}

int DecodeParames(unsigned char* plain, const unsigned char* encoded, int length) {
  PrintData("DecodeParames original", encoded, length);
  const unsigned computed = CheckSum(encoded, ZELKORA_PCT_BLOCK);
  const unsigned stored = encoded[kChecksumLow] | unsigned{encoded[kChecksumHigh]} << 8;
  DebugMsg(kTrace, "DecodeParames checksum cSumf=0x%04x cSum=0x%04x\n", computed, stored);
  // A stored 0 is what an erased block holds, so it is refused even where it would be right.
  if (computed == 0 || stored == 0 || computed != stored) {
    DebugMsg(kTrace, "DecodeParames checksum fail\n");
    return 0;
  }
  DecodeData(encoded, plain);
  PrintData("DecodeParames DecodeData", plain, length);
  return static_cast<int>(computed);
}
