// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "pct_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::captured_stdout;
using zelkora::test::debug_messages;
using zelkora::test::dump;
using zelkora::test::encoded_block;
using zelkora::test::head;
using zelkora::test::Lines;
using zelkora::test::rising;

using BlockCodecTest = zelkora::test::Bench;

constexpr int kLength = ZELKORA_PCT_BLOCK;

TEST_F(BlockCodecTest, EncodingPutsTheChecksumOfTheEncodedBytesBehindThemLowByteFirst) {
  const Bytes plain(32, 0);
  Bytes encoded(35, 0xEE);
  EncodeParames(plain.data(), encoded.data(), kLength);
  // 0x6666 and 32 times 0x5A.
  Bytes expected(32, 0x5A);
  expected.insert(expected.end(), {0xA6, 0x71, 0xEE});
  EXPECT_EQ(encoded, expected);
}

TEST_F(BlockCodecTest, ChecksumsOfDifferentBlocks) {
  const struct {
    const char* name;
    Bytes plain;
    uint8_t low, high;
  } kRows[] = {
      {"all bytes encoded as 0", Bytes(32, 0x5A), 0x66, 0x66},
      {"the greatest sum", Bytes(32, 0xA5), 0x46, 0x86},
      {"one byte encoded as 1", zelkora::test::joined_bytes({0x5B}, Bytes(31, 0x5A)), 0x67, 0x66},
      {"a carry into the high byte", zelkora::test::joined_bytes(Bytes(31, 0x5A), {0xC0}), 0x00,
       0x67},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    Bytes encoded(34);
    EncodeParames(row.plain.data(), encoded.data(), kLength);
    EXPECT_EQ(encoded[32], row.low);
    EXPECT_EQ(encoded[33], row.high);
    EXPECT_EQ(encoded, encoded_block(row.plain));
    Bytes back(33, 0xEE);
    EXPECT_EQ(DecodeParames(back.data(), encoded.data(), kLength), row.high << 8 | row.low);
    EXPECT_EQ(head(back, 32), row.plain);
    EXPECT_EQ(back[32], 0xEE);
  }
}

TEST_F(BlockCodecTest, EncodingShowsThePlainAndTheEncodedBytes) {
  DbgFlag = 1;
  const Bytes plain(32, 0);
  Bytes encoded(34);
  const std::string text =
      captured_stdout([&] { EncodeParames(plain.data(), encoded.data(), kLength); });
  EXPECT_EQ(text, "zelkora DD:***EncodeParames***\n" + dump("EncodeParames original", plain) +
                      "zelkora DD:###EncodeParames checksum=0x71a6 FLASH[32]0xa6 FLASH[33]0x71\n" +
                      dump("EncodeParames EncodeData", Bytes(32, 0x5A)));
  EXPECT_EQ(messages(),
            debug_messages({"***EncodeParames***\n",
                            "###EncodeParames checksum=0x71a6 FLASH[32]0xa6 FLASH[33]0x71\n"}));
}

TEST_F(BlockCodecTest, DecodingShowsTheBlockTheChecksumsAndThePlainBytes) {
  DbgFlag = 1;
  const Bytes plain = rising(32);
  const Bytes encoded = encoded_block(plain);
  Bytes back(32);
  const std::string text =
      captured_stdout([&] { DecodeParames(back.data(), encoded.data(), kLength); });
  char sums[80];
  const unsigned sum = encoded[32] | unsigned{encoded[33]} << 8;
  std::snprintf(sums, sizeof sums, "DecodeParames checksum cSumf=0x%04x cSum=0x%04x\n", sum, sum);
  EXPECT_EQ(text, dump("DecodeParames original", head(encoded, 32)) + "zelkora DD:" + sums +
                      dump("DecodeParames DecodeData", plain));
}

TEST_F(BlockCodecTest, NothingIsShownWithoutDebugging) {
  const Bytes plain = rising(32);
  Bytes encoded(34);
  Bytes back(32);
  EXPECT_EQ(captured_stdout([&] {
              EncodeParames(plain.data(), encoded.data(), kLength);
              DecodeParames(back.data(), encoded.data(), kLength);
              encoded[32] ^= 1;
              DecodeParames(back.data(), encoded.data(), kLength);
            }),
            "");
  EXPECT_EQ(back, plain);
}

TEST_F(BlockCodecTest, ABlockWithAWrongChecksumIsRefusedAndNothingWritten) {
  const struct {
    const char* name;
    size_t byte;
    uint8_t change;
  } kRows[] = {{"first byte", 0, 0x01},          {"last byte", 31, 0x80},
               {"checksum, low bit", 32, 0x01},  {"checksum, high bit", 33, 0x80},
               {"checksum, low byte", 32, 0xFF}, {"checksum, high byte", 33, 0xFF}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    Bytes encoded = encoded_block(rising(32));
    encoded[row.byte] ^= row.change;
    Bytes back(32, 0xEE);
    EXPECT_EQ(DecodeParames(back.data(), encoded.data(), kLength), 0);
    EXPECT_EQ(back, Bytes(32, 0xEE));
  }
}

TEST_F(BlockCodecTest, AChecksumWithItsHighByteFirstIsRefused) {
  Bytes encoded = encoded_block(rising(32));
  std::swap(encoded[32], encoded[33]);
  Bytes back(32, 0xEE);
  EXPECT_EQ(DecodeParames(back.data(), encoded.data(), kLength), 0);
  EXPECT_EQ(back, Bytes(32, 0xEE));
}

TEST_F(BlockCodecTest, AnErasedBlockIsRefused) {
  DbgFlag = 1;
  const Bytes erased(34, 0);
  Bytes back(32, 0xEE);
  const std::string text =
      captured_stdout([&] { EXPECT_EQ(DecodeParames(back.data(), erased.data(), kLength), 0); });
  EXPECT_EQ(text, dump("DecodeParames original", Bytes(32, 0)) +
                      "zelkora DD:DecodeParames checksum cSumf=0x6666 cSum=0x0000\n"
                      "zelkora DD:DecodeParames checksum fail\n");
  EXPECT_EQ(back, Bytes(32, 0xEE));
}

}  // namespace
