// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <string>

#include "support/bench.h"

namespace {

using zelkora::test::captured_stdout;
using zelkora::test::data_file;
using zelkora::test::Lines;
using LogTest = zelkora::test::Bench;

TEST_F(LogTest, EachLevelHasItsPrefix) {
  struct Row {
    int level;
    const char* printed;
  };
  constexpr Row kRows[] = {
      {0, "EE:text\n"}, {1, "II:text\n"}, {2, "CC:text\n"}, {3, "zelkora DD:text\n"},
      {4, "text\n"},    {-1, "text\n"},   {256, "text\n"},
  };
  DbgFlag = 1;
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.level);
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(DebugMsg(row.level, "text\n"), 5); }), row.printed);
  }
}

TEST_F(LogTest, OnlyLevelThreeIsHeldBackWithoutTheDebugSwitch) {
  struct Row {
    int level;
    const char* printed;
  };
  constexpr Row kRows[] = {
      {0, "EE:text"}, {1, "II:text"}, {2, "CC:text"}, {3, ""}, {4, "text"}, {-1, "text"},
  };
  DbgFlag = 0;
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.level);
    const int result = row.printed[0] == '\0' ? 0 : 4;
    EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(DebugMsg(row.level, "text"), result); }),
              row.printed);
  }
}

TEST_F(LogTest, AnyDebugSwitchButZeroShowsTheTrace) {
  for (const int debug : {1, 2, -1}) {
    DbgFlag = debug;
    EXPECT_EQ(DebugMsg(3, "text\n"), 5);
  }
  EXPECT_EQ(messages(), Lines(3, "zelkora DD:text\n"));
}

TEST_F(LogTest, TheResultCountsTheMessageWithoutItsPrefix) {
  EXPECT_EQ(DebugMsg(0, "%s %d %c\n", "a", 12, 'b'), 7);
  EXPECT_EQ(messages(), Lines{"EE:a 12 b\n"});
}

TEST_F(LogTest, AnArgumentIsNeverAFormat) {
  const std::string hostile = "%s%n%x" + std::string(300, 'y');
  EXPECT_EQ(DebugMsg(0, "%s", hostile.c_str()), 306);
  EXPECT_EQ(messages(), Lines{"EE:" + hostile});
}

TEST_F(LogTest, PrintDataShowsWholeRowsOnly) {
  constexpr unsigned char kData[] = {0x00, 0x01, 0x0F, 0x10, 0x7F, 0x80, 0xAB, 0xFF,
                                     8,    9,    10,   11,   12,   13,   14,   15};
  const std::string first = "0x00 0x01 0x0f 0x10 0x7f 0x80 0xab 0xff\n";
  const std::string second = "0x08 0x09 0x0a 0x0b 0x0c 0x0d 0x0e 0x0f\n";
  struct Row {
    int length;
    std::string rows;
  };
  const Row rows[] = {{0, ""},     {7, ""},
                      {8, first},  {12, first},
                      {15, first}, {16, first + second},
                      {-8, ""},    {-2147483647 - 1, ""}};
  DbgFlag = 1;
  for (const Row& row : rows) {
    SCOPED_TRACE(row.length);
    EXPECT_EQ(captured_stdout([&] { PrintData("reply", kData, row.length); }),
              "reply---start\n" + row.rows + "reply---End\n");
  }
}

TEST_F(LogTest, PrintDataIsSilentWithoutTheDebugSwitch) {
  constexpr unsigned char kData[8] = {};
  EXPECT_EQ(captured_stdout([&] { PrintData("reply", kData, 8); }), "");
  DbgFlag = 2;
  EXPECT_NE(captured_stdout([&] { PrintData("reply", kData, 8); }), "");
}

TEST_F(LogTest, ALabelIsNeverAFormat) {
  DbgFlag = 1;
  EXPECT_EQ(captured_stdout([] { PrintData("%s%n", nullptr, 0); }), "%s%n---start\n%s%n---End\n");
}

TEST_F(LogTest, SystemErrorsAreShownOnlyWhileTheDebugSwitchIsOne) {
  char text[36];
  const std::string missing = data_file("missing.conf");
  for (const int debug : {0, 2, -1, 1}) {
    EXPECT_EQ(count_of("perror"), 0U) << "before the debug switch is " << debug;
    DbgFlag = debug;
    get_conf_option_str(missing.c_str(), "key", text);
  }
  EXPECT_EQ(trace_of({"perror"}), Lines{"perror open file error"});
}

}  // namespace
