// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Records as words: which field is which word, what is cut, and the two checksums.
#include <algorithm>
#include <array>
#include <cstddef>

#include "record_bench.h"

namespace {

using namespace zelkora::test;
using RecordCodecTest = Bench;

constexpr unsigned kGuard = 0xDEADBEEF;

// One word more than there are, to see that it stays.
using StoredWords = std::array<unsigned, ZELKORA_RES_STORED_WORDS + 1>;
using FlashWords = std::array<unsigned, ZELKORA_RES_FLASH_WORDS + 1>;

StoredWords encoded(ResDevInfo record) {
  StoredWords words;
  words.fill(kGuard);
  ResParamaEncode(&record, words.data());
  EXPECT_EQ(words.back(), kGuard);
  return words;
}

FlashWords flash_of(ResDevInfo record) {
  FlashWords words;
  words.fill(kGuard);
  ResParamaEncodeFlash(&record, words.data());
  EXPECT_EQ(words.back(), kGuard);
  return words;
}

struct FieldRow {
  const char* name;
  size_t offset;  // in the record
  size_t width;
  size_t word;

  void put(ResDevInfo& record, unsigned value) const {
    std::memcpy(reinterpret_cast<char*>(&record) + offset, &value, width);
  }
  unsigned get(const ResDevInfo& record) const {
    unsigned value = 0;
    std::memcpy(&value, reinterpret_cast<const char*>(&record) + offset, width);
    return value;
  }
};

constexpr FieldRow kFields[] = {
    {"ReportMode", 30, 1, 0},  {"BeepOn", 2, 1, 1},        {"PlayMethod", 3, 1, 2},
    {"Frequency", 4, 4, 3},    {"Duration", 8, 1, 4},      {"RightTime", 12, 1, 5},
    {"ScreenNumber", 9, 1, 6}, {"DisableRight", 11, 1, 7}, {"SpareByte", 48, 1, 8},
    {"HidMode", 31, 1, 9},     {"EdgeRight", 32, 4, 10},   {"EdgeLeft", 36, 4, 11},
    {"EdgeDown", 40, 4, 12},   {"EdgeUp", 44, 4, 13},      {"DisableReport", 26, 1, 14},
    {"HideCursor", 28, 1, 15},
};

TEST_F(RecordCodecTest, EachFieldIsEncodedIntoItsWordAndNoOther) {
  for (const FieldRow& row : kFields) {
    SCOPED_TRACE(row.name);
    const unsigned value = row.width == 1 ? 0xFE : 0x000089AB;
    ResDevInfo record{};
    row.put(record, value);
    StoredWords expected{};
    expected[row.word] = value;
    expected[16] = 0x6666 + (value & 0xFF) + (value >> 8);
    expected[17] = kGuard;
    EXPECT_EQ(encoded(record), expected);
  }
}

TEST_F(RecordCodecTest, EachWordIsDecodedIntoItsFieldAndNoOther) {
  for (const FieldRow& row : kFields) {
    SCOPED_TRACE(row.name);
    StoredWords words{};
    words[row.word] = 0x89AB;
    ResDevInfo record{};
    ResParamaDecode(&record, words.data());
    ResDevInfo expected{};
    row.put(expected, 0x89AB);  // cut to the field's width
    EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0);
    EXPECT_EQ(row.get(record), row.width == 1 ? 0xABU : 0x89ABU);
  }
}

TEST_F(RecordCodecTest, EncodingPutsTheChecksumIntoTheRecordAndTheLastWord) {
  ResDevInfo record{};
  record.Frequency = 2000;
  StoredWords words{};
  ResParamaEncode(&record, words.data());
  EXPECT_EQ(words[16], 0x673DU);
  EXPECT_EQ(record.Chksum, 0x673DU);
  EXPECT_EQ(words[3], 2000U);
}

TEST_F(RecordCodecTest, AnEarlierChecksumOfTheRecordPlaysNoPart) {
  ResDevInfo record{};
  record.Chksum = 0x1234;
  EXPECT_EQ(encoded(record)[16], 0x6666U);
  EXPECT_EQ(flash_of(record)[10], 0x6693U);
}

TEST_F(RecordCodecTest, ANegativeEdgeComesBackAsItsLowWord) {
  ResDevInfo record{};
  record.EdgeLeft = -5;
  StoredWords words = encoded(record);
  EXPECT_EQ(words[11], 0xFFFFFFFBU);
  EXPECT_EQ(words[16], 0x6666U + 0xFF + 0xFB);
  words[11] &= 0xFFFF;  // as it is stored
  ResParamaDecode(&record, words.data());
  EXPECT_EQ(record.EdgeLeft, 65531);
}

TEST_F(RecordCodecTest, FirstMoveHasNoWord) {
  ResDevInfo record{};
  record.FirstMove = 0xFF;
  const StoredWords words = encoded(record);
  EXPECT_TRUE(std::all_of(words.begin(), words.begin() + 16, [](unsigned w) { return w == 0; }));
  const FlashWords flash = flash_of(record);
  EXPECT_EQ(flash[10], 0x6693U);
}

TEST_F(RecordCodecTest, DecodingLeavesFirstMoveAndTheUnusedBytesAlone) {
  ResDevInfo record;
  std::memset(&record, 0xA5, sizeof record);
  const StoredWords words{};
  ResParamaDecode(&record, words.data());
  ResDevInfo expected;
  std::memset(&expected, 0xA5, sizeof expected);
  for (const FieldRow& row : kFields) row.put(expected, 0);
  expected.Chksum = 0;
  EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0);
  EXPECT_EQ(record.FirstMove, 0xA5);
}

TEST_F(RecordCodecTest, EncodingChangesNothingOfTheRecordButItsChecksum) {
  ResDevInfo record;
  std::memset(&record, 0xA5, sizeof record);
  ResDevInfo expected = record;
  StoredWords words;
  ResParamaEncode(&record, words.data());
  expected.Chksum = words[16];
  EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0);
  FlashWords flash;
  ResParamaEncodeFlash(&record, flash.data());
  expected.Chksum = flash[10];
  EXPECT_EQ(std::memcmp(&record, &expected, sizeof record), 0);
}

TEST_F(RecordCodecTest, DecodingTakesAWrongChecksumAsItIs) {
  StoredWords words{};
  words[16] = 0x4321;
  ResDevInfo record{};
  ResParamaDecode(&record, words.data());
  EXPECT_EQ(record.Chksum, 0x4321U);
}

TEST_F(RecordCodecTest, TheStoredChecksumAddsTheLowTwoBytesOfSixteenWords) {
  std::array<unsigned, 17> words{};
  EXPECT_EQ(GetCheckSumBin(words.data()), 0x6666U);
  for (size_t i = 0; i < 17; ++i) {
    SCOPED_TRACE(i);
    words = {};
    words[i] = 0x7F030201;  // bits from 16 up do not count
    EXPECT_EQ(GetCheckSumBin(words.data()), i < 16 ? 0x6666U + 0x01 + 0x02 : 0x6666U);
  }
  words.fill(0xFFFFFFFF);
  EXPECT_EQ(GetCheckSumBin(words.data()), 0x6666U + 32 * 0xFF);
}

TEST_F(RecordCodecTest, TheFlashChecksumAddsTheLowTwoBytesOfTenWords) {
  std::array<int, 11> words{};
  EXPECT_EQ(GetCheckSumFlash(words.data()), 0x6666U);
  for (size_t i = 0; i < 11; ++i) {
    SCOPED_TRACE(i);
    words = {};
    words[i] = -2;
    EXPECT_EQ(GetCheckSumFlash(words.data()), i < 10 ? 0x6666U + 0xFF + 0xFE : 0x6666U);
  }
}

TEST_F(RecordCodecTest, TheFlashFormHoldsFixedWordsWhateverTheRecordSays) {
  ResDevInfo record = record_of(0x20);
  const FlashWords expected = {0,
                               300,
                               0,
                               0,
                               0,
                               0x2B,
                               0x120,
                               0x220,
                               0x320,
                               0x420,
                               0x6666 + 0x2C + 1 + 0x2B + 4 * 0x20 + 1 + 2 + 3 + 4,
                               kGuard};
  EXPECT_EQ(flash_of(record), expected);
  FlashWords words;
  ResParamaEncodeFlash(&record, words.data());
  EXPECT_EQ(record.Chksum, words[10]);
}

TEST_F(RecordCodecTest, TheFlashFormIsLoggedFromTheHidModeOn) {
  DbgFlag = 1;
  ResDevInfo record{};
  record.HidMode = 3;
  record.EdgeRight = 1;
  record.EdgeLeft = -5;
  record.EdgeDown = 70000;
  record.EdgeUp = 9;
  const FlashWords words = flash_of(record);
  // 70000 is 0x00011170.
  EXPECT_EQ(words[10], 0x6666U + 0x2C + 1 + 3 + 1 + 0xFB + 0xFF + 0x70 + 0x11 + 9);
  EXPECT_EQ(messages(), (Lines{"zelkora DD:***ResParamaEncodeFlash [3] [1] [-5] [70000] [9] [" +
                               std::to_string(words[10]) + "]***\n"}));
}

TEST_F(RecordCodecTest, TheStoredFormIsNotLogged) {
  DbgFlag = 1;
  encoded(record_of(1));
  EXPECT_TRUE(messages().empty());
}

}  // namespace
