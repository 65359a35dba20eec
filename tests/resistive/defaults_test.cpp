// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>
#include <cstring>

#include "settings_bench.h"

namespace {

using namespace zelkora::test;
using DefaultsTest = Bench;

const std::string kDefaultsFile = data_file("TouchUtil.ini");

ResDevInfo defaults() {
  ResDevInfo record{};
  GetResParamDefault(&record);
  return record;
}

ResDevInfo defaults_from(const std::string& file) {
  write_file(kDefaultsFile, file);
  return defaults();
}

struct DefaultRow {
  const char* key;
  size_t offset;  // of its field in the record
  size_t width;
  int absent;
  // What becomes of these texts behind the key.
  int of_37;
  int of_minus_1;
  int of_70000;

  int field(const ResDevInfo& record) const {
    int value = 0;
    std::memcpy(&value, reinterpret_cast<const char*>(&record) + offset, width);
    return value;
  }
};

// clang-format off
constexpr DefaultRow kDefaults[] = {
    // key            offset width absent 37  -1   70000
    {"BeepOn",        2,     1,    1,     37, 255, 112},
    {"PlayMethod",    3,     1,    1,     37, 255, 112},
    {"Frequency",     4,     4,    2000,  37, -1,  70000},
    {"Duration",      8,     1,    10,    37, 255, 112},
    {"ScreenNumber",  9,     1,    0,     36, 254, 111},
    {"DisableRight",  11,    1,    0,     37, 255, 112},
    {"RightTime",     12,    1,    4,     37, 255, 112},
    {"FirstMove",     29,    1,    1,     37, 255, 112},
    {"EdgeRight",     32,    4,    0,     37, -1,  70000},
    {"EdgeLeft",      36,    4,    0,     37, -1,  70000},
    {"EdgeDown",      40,    4,    0,     37, -1,  70000},
    {"EdgeUp",        44,    4,    0,     37, -1,  70000},
    {"ReportMode",    30,    1,    1,     37, 255, 112},
    {"Digitizer",     31,    1,    2,     3,  3,   3},
    {"DisableReport", 26,    1,    0,     37, 255, 112},
    {"HideCursor",    28,    1,    0,     37, 255, 112},
};
// clang-format on

void expect_all_absent(const ResDevInfo& record, const char* but_for = "") {
  for (const DefaultRow& row : kDefaults) {
    if (std::string_view(row.key) != but_for) {
      EXPECT_EQ(row.field(record), row.absent) << row.key;
    }
  }
}

TEST_F(DefaultsTest, AMissingFileGivesTheBuiltInValues) { expect_all_absent(defaults()); }

TEST_F(DefaultsTest, EachKeySetsItsFieldCutToTheFieldsWidth) {
  for (const DefaultRow& row : kDefaults) {
    SCOPED_TRACE(row.key);
    const std::string line = std::string("[Res_Default]\n") + row.key + "=";
    const ResDevInfo record = defaults_from(line + "37\n");
    EXPECT_EQ(row.field(record), row.of_37);
    expect_all_absent(record, row.key);
    EXPECT_EQ(row.field(defaults_from(line + "-1\n")), row.of_minus_1);
    EXPECT_EQ(row.field(defaults_from(line + "70000\n")), row.of_70000);
    EXPECT_EQ(row.field(defaults_from(line + "  37 times\n")), row.of_37);
  }
}

TEST_F(DefaultsTest, ReadsAWholeFile) {
  const ResDevInfo record = defaults_from(
      "[Default]\nBeepOn=9\n[Res_Default]\nHideCursor=1\nDisableReport=2\nDigitizer=0\n"
      "ReportMode=4\nEdgeUp=5\nEdgeDown=6\nEdgeLeft=7\nEdgeRight=-8\nFirstMove=9\nRightTime=10\n"
      "DisableRight=11\nScreenNumber=2\nDuration=13\nFrequency=14\nPlayMethod=15\nBeepOn=16\n");
  const std::array<int, std::size(kDefaults)> expected = {16, 15, 14, 13, 1, 11, 10, 9,
                                                          -8, 7,  6,  5,  4, 2,  2,  1};
  for (size_t i = 0; i < expected.size(); ++i) {
    EXPECT_EQ(kDefaults[i].field(record), expected[i]) << kDefaults[i].key;
  }
}

TEST_F(DefaultsTest, KeysOfOtherSectionsDoNotCount) {
  expect_all_absent(defaults_from("BeepOn=7\n[Default]\nFrequency=7\nDigitizer=1\n"));
  expect_all_absent(defaults_from("[Res_Default]\n[Default]\nFrequency=7\nDigitizer=1\n"));
  expect_all_absent(defaults_from("[Res_Default]\n#Frequency=7\n"));
}

TEST_F(DefaultsTest, TheFileCountsScreensFromOne) {
  struct {
    const char* text;
    int screen;
  } constexpr kRows[] = {{"1", 0}, {"2", 1}, {"4", 3}, {"0", 255}, {"257", 0}};
  for (const auto& row : kRows) {
    const std::string file = std::string("[Res_Default]\nScreenNumber=") + row.text + "\n";
    EXPECT_EQ(defaults_from(file).ScreenNumber, row.screen) << row.text;
  }
}

TEST_F(DefaultsTest, TheSmallestScreenNumberIsCutLikeAnyOther) {
  EXPECT_EQ(defaults_from("[Res_Default]\nScreenNumber=-2147483648\n").ScreenNumber, 255);
}

TEST_F(DefaultsTest, AnyDigitizerButZeroChoosesHidModeThree) {
  EXPECT_EQ(defaults_from("[Res_Default]\nDigitizer=0\n").HidMode, 2);
  // Told apart before it is cut to a byte.
  EXPECT_EQ(defaults_from("[Res_Default]\nDigitizer=256\n").HidMode, 3);
}

TEST_F(DefaultsTest, PrintsTheFirstMoveThatItSet) {
  DbgFlag = 1;
  defaults();
  EXPECT_EQ(messages(), Lines{"zelkora DD:DevInfo->FirstMove:1\n"});
  clear_trace();
  defaults_from("[Res_Default]\nFirstMove=260\n");
  EXPECT_EQ(messages(), Lines{"zelkora DD:DevInfo->FirstMove:4\n"});
}

TEST_F(DefaultsTest, TouchesNoFieldWithoutAKey) {
  std::array<bool, sizeof(ResDevInfo)> has_key{};
  for (const DefaultRow& row : kDefaults) {
    std::fill_n(has_key.begin() + row.offset, row.width, true);
  }
  for (const int filler : {0x00, 0xA5}) {
    ResDevInfo record;
    std::memset(&record, filler, sizeof record);
    GetResParamDefault(&record);
    std::array<unsigned char, sizeof record> bytes;
    std::memcpy(bytes.data(), &record, sizeof record);
    for (size_t i = 0; i < bytes.size(); ++i) {
      EXPECT_TRUE(has_key[i] || bytes[i] == filler) << "byte " << i;
    }
  }
}

// --- files that nobody wrote with care ---

TEST_F(DefaultsTest, TakesAKeyWithoutANumberForZeroAndWithoutAValueForAbsent) {
  EXPECT_EQ(defaults_from("[Res_Default]\nFrequency=fast\nDuration=\n").Frequency, 0U);
  EXPECT_EQ(defaults_from("[Res_Default]\nFrequency=fast\nDuration=\n").Duration, 0);
  EXPECT_EQ(defaults_from("[Res_Default]\nFrequency\n").Frequency, 2000U);
}

TEST_F(DefaultsTest, ReadsALastLineWithoutALineFeed) {
  EXPECT_EQ(defaults_from("[Res_Default]\nFrequency=1500").Frequency, 1500U);
}

TEST_F(DefaultsTest, ReadsBehindLongLinesManyLinesAndZeroBytes) {
  std::string file =
      "[Res_Default]\n" + std::string(1000, 'x') + "\n" + std::string(3, '\0') + "\n";
  for (int i = 0; i < 10'000; ++i) file += "Filler=1\n";
  EXPECT_EQ(defaults_from(file + "Frequency=1500\n").Frequency, 1500U);
}

TEST_F(DefaultsTest, FindsNothingInAFileOfOneEndlessLine) {
  expect_all_absent(defaults_from(std::string(100'000, '=')));
}

}  // namespace
