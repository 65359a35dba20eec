// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A record into the controller's EEPROM, and the question whether it is there.
#include "record_bench.h"

namespace {

using namespace zelkora::test;

class ApplyTest : public RecordBench {
 protected:
  ResDevInfo record = record_of(0x20);
};

struct OnlyRow {
  const char* name;
  unsigned only_address;
  Lines steps;
};

// The record's HID mode is 2B and its edges 120, 220, 320 and 420.
constexpr char kChecksumWrite[] = "SP5B6748";

const OnlyRow kOnlyRows[] = {
    {"All",
     0,
     {"SP330000", "SP35012C", "SP380000", "SP430000", "SP440000", "SP45002B", "SP460120",
      "SP470220", "SP480320", "SP490420", kChecksumWrite}},
    {"ReportMode", 51, {"SP330000", kChecksumWrite}},
    {"Address53", 53, {"SP35012C", kChecksumWrite}},
    {"Address56", 56, {"SP380000", kChecksumWrite}},
    {"Rotation", 67, {"SP430000", kChecksumWrite}},
    {"AutomaticHid", 68, {"SP440000", kChecksumWrite}},
    {"HidMode", 69, {"SP45002B", kChecksumWrite}},
    {"EdgeRight", 70, {"SP460120", kChecksumWrite}},
    {"EdgeLeft", 71, {"SP470220", kChecksumWrite}},
    {"EdgeDown", 72, {"SP480320", kChecksumWrite}},
    {"EdgeUp", 73, {"SP490420", kChecksumWrite}},
    {"Checksum", 91, {kChecksumWrite}},
    {"UnknownAddress", 52, {kChecksumWrite}},
    {"HugeAddress", 0xFFFFFFFF, {kChecksumWrite}},
    // Not 70, although its low bits are.
    {"AddressBeyond16Bits", 0x10046, {kChecksumWrite}},
};

TEST_F(ApplyTest, AnAddressLimitsTheWritesToItAndTheChecksum) {
  open_resistive();
  for (const OnlyRow& row : kOnlyRows) {
    SCOPED_TRACE(row.name);
    clear_trace();
    EXPECT_EQ(SetResAllDataFlash(0, &record, row.only_address), 1);
    EXPECT_EQ(steps(), row.steps);
  }
}

TEST_F(ApplyTest, TheSameFramesGoOverASerialPort) {
  open_serial();
  for (const OnlyRow& row : kOnlyRows) {
    SCOPED_TRACE(row.name);
    clear_trace();
    EXPECT_EQ(SetResAllDataFlash(0, &record, row.only_address), 1);
    EXPECT_EQ(steps(), row.steps);
  }
}

TEST_F(ApplyTest, EachWriteIsAnExchangeOfItsOwn) {
  Panel& panel = open_resistive();
  SetResAllDataFlash(0, &record, 70);
  EXPECT_EQ(trace_of({"set_report", "usleep", "get_report"}),
            (Lines{"set_report 1: 0A 01 53 50 34 36 30 31 32 30 0D", "usleep 50000", "usleep 50000",
                   "get_report 1: 03 01 30 0D", "set_report 1: 0A 01 53 50 35 42 36 37 34 38 0D",
                   "usleep 50000", "usleep 50000", "get_report 1: 03 01 30 0D"}));
  EXPECT_EQ(panel.controller.value(70), 0x120);
  EXPECT_EQ(panel.controller.value(91), 0x6748);
  EXPECT_EQ(panel.controller.commits(), 0U);
}

TEST_F(ApplyTest, TheRecordCarriesTheFlashChecksumAfterwards) {
  open_resistive();
  SetResAllDataFlash(0, &record, 52);
  EXPECT_EQ(record.Chksum, 0x6748U);
}

TEST_F(ApplyTest, NegativeAndLargeEdgesGoOutAsTheirLowWord) {
  open_resistive();
  record = {};
  record.EdgeLeft = -5;
  record.EdgeUp = 0x12345;
  SetResAllDataFlash(0, &record, 0);
  EXPECT_EQ(steps(), (Lines{"SP330000", "SP35012C", "SP380000", "SP430000", "SP440000", "SP450000",
                            "SP460000", "SP47FFFB", "SP480000", "SP492345", "SP5B68F5"}));
}

TEST_F(ApplyTest, FailedWritesAreIgnored) {
  Panel& panel = open_resistive();
  silence(panel);
  EXPECT_EQ(SetResAllDataFlash(0, &record, 0), 1);
  Lines expected;
  for (const std::string& step : kOnlyRows[0].steps) expected.insert(expected.end(), 4, step);
  EXPECT_EQ(steps(), expected);
}

TEST_F(ApplyTest, TheFlashWriteIsLoggedFromStartToEnd) {
  open_resistive();
  SetResAllDataFlash(3, &record, 91);
  EXPECT_EQ(messages(),
            (Lines{"zelkora DD:***SetResAllDataFlash--start DevNum:3***\n",
                   "zelkora DD:***ResParamaEncodeFlash [43] [288] [544] [800] [1056] [26440]***\n",
                   "zelkora DD:WriteEEPValue---start Address:0x5b Value:26440\n",
                   "zelkora DD:device_type=1 [0]0x1 [1]0x30 [2]0xd\n",
                   "zelkora DD:***SetResAllDataFlash--end DevNum:3***\n"}));
}

struct MatchRow {
  const char* name;
  std::optional<uint16_t> stored;  // none: the controller does not answer
  int result;
  const char* shown;
};

TEST_F(ApplyTest, TheChecksumAtAddress91IsHeldAgainstTheRecords) {
  const MatchRow rows[] = {
      {"Equal", 0x6748, 1, "26440"},
      {"Different", 0x6747, 0, "26439"},
      {"HighByteDifferent", 0x6648, 0, "26184"},
      {"AllOnes", 0xFFFF, 0, "65535"},
      {"Zero", 0, 0, "0"},
      {"NoAnswer", std::nullopt, 0, "-1"},
  };
  Panel& panel = open_resistive();
  for (const MatchRow& row : rows) {
    SCOPED_TRACE(row.name);
    panel.controller.set_value(91, row.stored.value_or(0));
    if (!row.stored) silence(panel);
    record.Chksum = 0;
    clear_trace();
    EXPECT_EQ(MatchResDevChksum(&record), row.result);
    EXPECT_EQ(record.Chksum, 0x6748U);
    EXPECT_EQ(steps(), Lines(row.stored ? 1 : 4, "GP5B"));
    ASSERT_GE(messages().size(), 2U);
    EXPECT_EQ(messages().end()[-2],
              "zelkora DD:***ResParamaEncodeFlash [43] [288] [544] [800] [1056] [26440]***\n");
    EXPECT_EQ(messages().back(), std::string("zelkora DD:***MatchResDevChksum DevChksum:") +
                                     row.shown + " chksum:26440***\n");
  }
}

TEST_F(ApplyTest, AStoredChecksumInTheRecordDoesNotCount) {
  Panel& panel = open_resistive();
  record.Chksum = 0x1234;
  panel.controller.set_value(91, 0x1234);
  EXPECT_EQ(MatchResDevChksum(&record), 0);
}

TEST_F(ApplyTest, WhatWasWrittenMatches) {
  open_resistive();
  EXPECT_EQ(MatchResDevChksum(&record), 0);
  SetResAllDataFlash(0, &record, 0);
  EXPECT_EQ(MatchResDevChksum(&record), 1);
}

}  // namespace
