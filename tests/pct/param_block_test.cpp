// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Records to and from the plain block, and their repair.
#include <cstring>

#include "pct_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::debug_messages;
using zelkora::test::Lines;
using zelkora::test::rising;

using ParamBlockTest = zelkora::test::Bench;
using Field = unsigned char PCTDevInfo::*;

// Every byte of it is 0xEE.
PCTDevInfo used_record() {
  PCTDevInfo rec;
  std::memset(&rec, 0xEE, sizeof rec);
  return rec;
}

// A plain block whose every parameter is in range.
Bytes good_block() {
  Bytes plain(32, 0);
  plain[22] = 0x07;
  plain[23] = 0xD0;
  plain[24] = 10;
  return plain;
}

Bytes bytes_of(const PCTDevInfo& rec) {
  Bytes bytes(sizeof rec);
  std::memcpy(bytes.data(), &rec, sizeof rec);
  return bytes;
}

TEST_F(ParamBlockTest, DecodingTakesEachFieldFromItsPlace) {
  Bytes plain(32, 0);
  plain[5] = 1;
  for (size_t i = 0; i < 8; ++i) plain[12 + i] = static_cast<uint8_t>(0xA1 + i);
  plain[20] = 3;
  plain[21] = 2;
  plain[22] = 0x04;
  plain[23] = 0xD2;
  plain[24] = 25;
  plain[25] = 9;
  plain[27] = 0x0E;
  plain[28] = 0xA5;
  plain[29] = 1;
  plain[30] = 1;
  plain[31] = 3;
  PCTDevInfo rec{};
  PCTParsingParamas(&rec, plain.data());

  PCTDevInfo expected{};
  expected.HideCursor = 1;
  for (size_t i = 0; i < 8; ++i) expected.SN[i] = static_cast<uint8_t>(0xA1 + i);
  expected.BeepOn = 3;
  expected.PlayMethod = 2;
  expected.Frequency = 1234;
  expected.Duration = 25;
  expected.ScreenNumber = 9;
  expected.ClickMode = 2;
  expected.RightUp = 1;
  expected.DisableRight = 1;
  expected.RightTime = 5;
  expected.RightRange = 10;
  expected.Digitizer = 1;
  expected.DisableReport = 1;
  expected.FlashByte31 = 3;
  expected.POSEnable = expected.HidEnable = expected.SyncFlag = 1;
  EXPECT_EQ(bytes_of(rec), bytes_of(expected));
}

TEST_F(ParamBlockTest, DecodingTellsTheRawBytes) {
  DbgFlag = 1;
  PCTDevInfo rec{};
  PCTParsingParamas(&rec, rising(32).data());
  EXPECT_EQ(messages(),
            debug_messages({"PARAMES 0x15 0x16 0x17 0x18 0x19 0x1a\n", "PosConfig 0x1b 0x1c 0x1d\n",
                            "Digitizer:0x1e DisableReport:0x1f\n"}));
}

TEST_F(ParamBlockTest, DecodingLeavesFieldsThatTheBlockDoesNotHold) {
  PCTDevInfo rec = used_record();
  PCTParsingParamas(&rec, Bytes(32, 0).data());
  const Bytes bytes = bytes_of(rec);
  EXPECT_EQ(rec.POSMode, 0xEE);
  for (size_t i = 29; i < sizeof rec; ++i) EXPECT_EQ(bytes[i], 0xEE) << i;
}

TEST_F(ParamBlockTest, FlagsThatAreNeverReadBackAreSet) {
  for (const unsigned pos : {0x00U, 0x21U, 0xFFU}) {
    for (const unsigned click : {0x00U, 0x10U}) {
      SCOPED_TRACE(testing::Message() << pos << ' ' << click);
      Bytes plain = good_block();
      plain[26] = static_cast<uint8_t>(pos);
      plain[27] = static_cast<uint8_t>(click);
      PCTDevInfo rec = used_record();
      PCTParsingParamas(&rec, plain.data());
      EXPECT_EQ(rec.POSEnable, 1);
      EXPECT_EQ(rec.HidEnable, 1);
      EXPECT_EQ(rec.SyncFlag, 1);
    }
  }
}

TEST_F(ParamBlockTest, EveryValueOfTheClickBytesIsTakenApart) {
  for (unsigned value = 0; value < 256; ++value) {
    SCOPED_TRACE(value);
    Bytes plain = good_block();
    plain[27] = plain[28] = static_cast<uint8_t>(value);
    PCTDevInfo rec = used_record();
    PCTParsingParamas(&rec, plain.data());
    EXPECT_EQ(rec.ClickMode, value % 4);
    EXPECT_EQ(rec.RightUp, value / 4 % 2);
    EXPECT_EQ(rec.DisableRight, value / 8 % 2);
    EXPECT_EQ(rec.RightTime, value % 16);
    EXPECT_EQ(rec.RightRange, value / 16);
  }
}

constexpr struct {
  const char* name;
  Field field;
  size_t byte;
  uint8_t value;
  int result;
} kRepairs[] = {
    {"Digitizer", &PCTDevInfo::Digitizer, 29, 0, 0},
    {"Digitizer", &PCTDevInfo::Digitizer, 29, 1, 1},
    {"Digitizer", &PCTDevInfo::Digitizer, 29, 2, 1},
    {"Digitizer", &PCTDevInfo::Digitizer, 29, 255, 1},
    {"BeepOn", &PCTDevInfo::BeepOn, 20, 0, 0},
    {"BeepOn", &PCTDevInfo::BeepOn, 20, 3, 3},
    {"BeepOn", &PCTDevInfo::BeepOn, 20, 4, 0},
    {"BeepOn", &PCTDevInfo::BeepOn, 20, 255, 0},
    {"PlayMethod", &PCTDevInfo::PlayMethod, 21, 0, 0},
    {"PlayMethod", &PCTDevInfo::PlayMethod, 21, 2, 2},
    {"PlayMethod", &PCTDevInfo::PlayMethod, 21, 3, 1},
    {"PlayMethod", &PCTDevInfo::PlayMethod, 21, 255, 1},
    {"Duration", &PCTDevInfo::Duration, 24, 0, 0},
    {"Duration", &PCTDevInfo::Duration, 24, 4, 0},
    {"Duration", &PCTDevInfo::Duration, 24, 5, 5},
    {"Duration", &PCTDevInfo::Duration, 24, 50, 50},
    {"Duration", &PCTDevInfo::Duration, 24, 51, 0},
    {"Duration", &PCTDevInfo::Duration, 24, 255, 0},
    {"ScreenNumber", &PCTDevInfo::ScreenNumber, 25, 0, 0},
    {"ScreenNumber", &PCTDevInfo::ScreenNumber, 25, 9, 9},
    {"ScreenNumber", &PCTDevInfo::ScreenNumber, 25, 10, 0},
    {"ScreenNumber", &PCTDevInfo::ScreenNumber, 25, 255, 0},
    {"FlashByte31", &PCTDevInfo::FlashByte31, 31, 3, 3},
    {"FlashByte31", &PCTDevInfo::FlashByte31, 31, 4, 0},
    {"FlashByte31", &PCTDevInfo::FlashByte31, 31, 255, 0},
    {"HideCursor", &PCTDevInfo::HideCursor, 5, 0, 0},
    {"HideCursor", &PCTDevInfo::HideCursor, 5, 1, 1},
    {"HideCursor", &PCTDevInfo::HideCursor, 5, 2, 0},
    {"HideCursor", &PCTDevInfo::HideCursor, 5, 255, 0},
    {"DisableReport", &PCTDevInfo::DisableReport, 30, 1, 1},
    {"DisableReport", &PCTDevInfo::DisableReport, 30, 2, 2},
    {"DisableReport", &PCTDevInfo::DisableReport, 30, 255, 255},
};

TEST_F(ParamBlockTest, AValueOutOfRangeFallsBackAndCostsNoOtherField) {
  for (const auto& row : kRepairs) {
    SCOPED_TRACE(testing::Message() << row.name << ' ' << int{row.value});
    PCTDevInfo expected{};
    PCTParsingParamas(&expected, good_block().data());
    expected.*row.field = static_cast<unsigned char>(row.result);

    Bytes plain = good_block();
    plain[row.byte] = row.value;
    PCTDevInfo rec{};
    PCTParsingParamas(&rec, plain.data());
    EXPECT_EQ(bytes_of(rec), bytes_of(expected));
  }
}

TEST_F(ParamBlockTest, AFrequencyOutOfRangeBecomes1000) {
  constexpr struct {
    unsigned stored, result;
  } kRows[] = {{0, 1000},    {499, 1000},  {500, 500},   {501, 501},
               {2999, 2999}, {3000, 3000}, {3001, 1000}, {65535, 1000}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.stored);
    Bytes plain = good_block();
    plain[22] = static_cast<uint8_t>(row.stored / 256);
    plain[23] = static_cast<uint8_t>(row.stored % 256);
    PCTDevInfo rec = used_record();
    PCTParsingParamas(&rec, plain.data());
    EXPECT_EQ(rec.Frequency, row.result);
  }
}

TEST_F(ParamBlockTest, ABadDisableReportStaysAndCostsDisableRight) {
  constexpr struct {
    uint8_t report;
    int right;
  } kRows[] = {{0, 1}, {1, 1}, {2, 0}, {255, 0}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(int{row.report});
    Bytes plain = good_block();
    plain[27] = 0x0F;
    plain[30] = row.report;
    PCTDevInfo rec = used_record();
    PCTParsingParamas(&rec, plain.data());
    EXPECT_EQ(rec.DisableReport, row.report);
    EXPECT_EQ(rec.DisableRight, row.right);
    EXPECT_EQ(rec.RightUp, 1);
    EXPECT_EQ(rec.ClickMode, 3);
  }
}

TEST_F(ParamBlockTest, EncodingPutsEachFieldInItsPlaceAndTouchesNoOtherByte) {
  DbgFlag = 1;
  PCTDevInfo rec = used_record();
  for (size_t i = 0; i < 8; ++i) rec.SN[i] = static_cast<uint8_t>(0xA1 + i);
  rec.HideCursor = 1;
  rec.BeepOn = 3;
  rec.PlayMethod = 2;
  rec.Frequency = 0x0BB8;
  rec.Duration = 25;
  rec.ScreenNumber = 9;
  rec.POSEnable = 1;
  rec.HidEnable = 1;
  rec.ClickMode = 3;
  rec.SyncFlag = 0;
  rec.DisableRight = 1;
  rec.RightUp = 0;
  rec.RightRange = 0xA;
  rec.RightTime = 0x5;
  rec.Digitizer = 1;
  rec.DisableReport = 4;
  rec.FlashByte31 = 2;
  Bytes plain(33, 0x77);
  PCTParamaEncode(&rec, plain.data());
  EXPECT_EQ(plain, (Bytes{0x77, 0x77, 0x77, 0x77, 0x77, 1,    0x77, 0x77, 0x77, 0x77, 0x77,
                          0x77, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0xA6, 0xA7, 0xA8, 3,    2,
                          0x0B, 0xB8, 25,   9,    0x21, 0x0B, 0xA5, 1,    4,    2,    0x77}));
  EXPECT_EQ(messages(), debug_messages({"DevInfo->DisableReport:4 HideCursor:1\n"}));
}

TEST_F(ParamBlockTest, FlagsGoToTheirOwnBits) {
  constexpr struct {
    const char* name;
    Field field;
    unsigned char value;
    uint8_t pos, click, right;
  } kRows[] = {
      {"none", &PCTDevInfo::POSMode, 1, 0, 0, 0},
      {"POSEnable", &PCTDevInfo::POSEnable, 1, 0x01, 0, 0},
      {"HidEnable", &PCTDevInfo::HidEnable, 1, 0x20, 0, 0},
      {"ClickMode 1", &PCTDevInfo::ClickMode, 1, 0, 0x01, 0},
      {"ClickMode 2", &PCTDevInfo::ClickMode, 2, 0, 0x02, 0},
      {"RightUp", &PCTDevInfo::RightUp, 1, 0, 0x04, 0},
      {"DisableRight", &PCTDevInfo::DisableRight, 1, 0, 0x08, 0},
      {"SyncFlag", &PCTDevInfo::SyncFlag, 1, 0, 0x10, 0},
      {"RightTime", &PCTDevInfo::RightTime, 15, 0, 0, 0x0F},
      {"RightRange", &PCTDevInfo::RightRange, 15, 0, 0, 0xF0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    PCTDevInfo rec{};
    rec.*row.field = row.value;
    Bytes plain(32, 0xEE);
    PCTParamaEncode(&rec, plain.data());
    EXPECT_EQ(plain[26], row.pos);
    EXPECT_EQ(plain[27], row.click);
    EXPECT_EQ(plain[28], row.right);
  }
}

TEST_F(ParamBlockTest, AFrequencyBeyondSixteenBitsIsCut) {
  PCTDevInfo rec{};
  rec.Frequency = 0x12345678;
  Bytes plain(32, 0xEE);
  PCTParamaEncode(&rec, plain.data());
  EXPECT_EQ(plain[22], 0x56);
  EXPECT_EQ(plain[23], 0x78);
}

TEST_F(ParamBlockTest, EncodingAndDecodingKeepsEveryFieldButTheThreeFlags) {
  PCTDevInfo rec{};
  std::memcpy(rec.SN, rising(8).data(), 8);
  rec.Digitizer = rec.HideCursor = rec.DisableReport = rec.DisableRight = rec.RightUp = 1;
  rec.BeepOn = 2;
  rec.PlayMethod = 2;
  rec.Frequency = 2999;
  rec.Duration = 50;
  rec.ScreenNumber = 8;
  rec.ClickMode = 1;
  rec.RightTime = 15;
  rec.RightRange = 1;
  rec.FlashByte31 = 3;
  Bytes plain(32);
  PCTParamaEncode(&rec, plain.data());
  Bytes block(34);
  EncodeParames(plain.data(), block.data(), 32);
  Bytes decoded(32);
  ASSERT_NE(DecodeParames(decoded.data(), block.data(), 32), 0);
  PCTDevInfo back{};
  PCTParsingParamas(&back, decoded.data());
  rec.POSEnable = rec.HidEnable = rec.SyncFlag = 1;
  EXPECT_EQ(bytes_of(back), bytes_of(rec));
}

}  // namespace
