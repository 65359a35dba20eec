// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Default parameters from the defaults file, and the firmware text of an entry.
#include <cstring>

#include "pct_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::data_file;
using zelkora::test::write_file;

using Field = unsigned char PCTDevInfo::*;

class ParamDefaultsTest : public zelkora::test::Bench {
 protected:
  static void write_defaults(const std::string& text) {
    write_file(data_file("TouchUtil.ini"), text);
  }

  // What becomes of a record whose every byte was 0xEE.
  static PCTDevInfo defaults() {
    PCTDevInfo rec;
    std::memset(&rec, 0xEE, sizeof rec);
    GetPCTParamDefault(&rec);
    return rec;
  }

  // What the defaults are without a file.
  static PCTDevInfo built_in() {
    PCTDevInfo rec;
    std::memset(&rec, 0xEE, sizeof rec);
    rec.BeepOn = 1;
    rec.PlayMethod = 1;
    rec.Frequency = 2000;
    rec.Duration = 10;
    rec.ScreenNumber = 0;
    rec.ClickMode = 0;
    rec.DisableRight = 0;
    rec.RightTime = 4;
    rec.RightRange = 10;
    rec.Digitizer = 0;
    rec.DisableReport = 0;
    rec.HideCursor = 0;
    rec.POSEnable = rec.HidEnable = rec.SyncFlag = 1;
    rec.RightUp = 0;
    return rec;
  }

  static Bytes bytes_of(const PCTDevInfo& rec) {
    Bytes bytes(sizeof rec);
    std::memcpy(bytes.data(), &rec, sizeof rec);
    return bytes;
  }
};

constexpr struct {
  const char* key;
  Field field;
} kKeys[] = {
    {"BeepOn", &PCTDevInfo::BeepOn},
    {"PlayMethod", &PCTDevInfo::PlayMethod},
    {"Duration", &PCTDevInfo::Duration},
    {"ClickMode", &PCTDevInfo::ClickMode},
    {"DisableRight", &PCTDevInfo::DisableRight},
    {"RightTime", &PCTDevInfo::RightTime},
    {"RightRange", &PCTDevInfo::RightRange},
    {"Digitizer", &PCTDevInfo::Digitizer},
    {"DisableReport", &PCTDevInfo::DisableReport},
    {"HideCursor", &PCTDevInfo::HideCursor},
};

TEST_F(ParamDefaultsTest, WithoutAFileTheDefaultsAreBuiltIn) {
  EXPECT_EQ(bytes_of(defaults()), bytes_of(built_in()));
}

TEST_F(ParamDefaultsTest, OnlyTheSectionDefaultCounts) {
  write_defaults("[Res_Default]\nBeepOn=3\nFrequency=900\n[Other]\nDuration=33\n");
  EXPECT_EQ(bytes_of(defaults()), bytes_of(built_in()));
}

TEST_F(ParamDefaultsTest, EachKeySetsItsFieldAlone) {
  for (const auto& row : kKeys) {
    SCOPED_TRACE(row.key);
    write_defaults(std::string("[Default]\n") + row.key + "=7\n");
    PCTDevInfo expected = built_in();
    expected.*row.field = 7;
    EXPECT_EQ(bytes_of(defaults()), bytes_of(expected));
  }
}

TEST_F(ParamDefaultsTest, TheFrequencyIsWide) {
  write_defaults("[Default]\nFrequency=70000\n");
  PCTDevInfo expected = built_in();
  expected.Frequency = 70000;
  EXPECT_EQ(bytes_of(defaults()), bytes_of(expected));
}

TEST_F(ParamDefaultsTest, TheFileCountsScreensFromOne) {
  constexpr struct {
    const char* line;
    int screen;
  } kRows[] = {{"ScreenNumber=1", 0},
               {"ScreenNumber=2", 1},
               {"ScreenNumber=10", 9},
               {"ScreenNumber=0", 255},
               {"ScreenNumber=-2147483648", 255}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.line);
    write_defaults(std::string("[Default]\n") + row.line);
    PCTDevInfo expected = built_in();
    expected.ScreenNumber = static_cast<unsigned char>(row.screen);
    EXPECT_EQ(bytes_of(defaults()), bytes_of(expected));
  }
}

TEST_F(ParamDefaultsTest, ValuesAreNotRepairedButCutToAByte) {
  write_defaults("[Default]\nBeepOn=300\nDuration=-1\n");
  const PCTDevInfo rec = defaults();
  EXPECT_EQ(rec.BeepOn, 44);
  EXPECT_EQ(rec.Duration, 255);
}

TEST_F(ParamDefaultsTest, TheDigitizerModeIsNotForMouseMode) {
  write_defaults("[Default]\nDigitizer=1\nHideCursor=1\n");
  EXPECT_EQ(defaults().Digitizer, 1);
  write_file(data_file("mousedef"), "");
  EXPECT_EQ(defaults().Digitizer, 0);
  EXPECT_EQ(defaults().HideCursor, 1);
}

TEST_F(ParamDefaultsTest, TheFirmwareTextIsThatOfTheEntry) {
  std::strcpy(TouchDevice[0].FWVersion, "V0");
  std::strcpy(TouchDevice[3].FWVersion, "S3.0.81(r564) %s%n");
  char out[64];
  std::memset(out, 'x', sizeof out);
  EXPECT_EQ(GetFWVersionStr(3, out), 1);
  EXPECT_STREQ(out, "S3.0.81(r564) %s%n");
  EXPECT_EQ(out[19], 'x');
  EXPECT_EQ(GetFWVersionStr(1, out), 1);
  EXPECT_STREQ(out, "");
}

TEST_F(ParamDefaultsTest, AFirmwareTextWithoutAnEndStaysWithinItsField) {
  std::memset(TouchDevice[0].FWVersion, 'v', sizeof TouchDevice[0].FWVersion);
  char out[65];
  std::memset(out, 'x', sizeof out);
  EXPECT_EQ(GetFWVersionStr(0, out), 1);
  EXPECT_EQ(std::string(out), std::string(63, 'v'));
  EXPECT_EQ(out[64], 'x');
}

}  // namespace
