// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "support/bench.h"

namespace {

using zelkora::test::data_file;
using zelkora::test::Lines;
using zelkora::test::write_file;
using XorgConfTest = zelkora::test::Bench;

// 16 bytes, with room behind them that must stay as it was.
struct UniqueId {
  UniqueId() { std::memset(bytes, '?', sizeof bytes); }
  std::string all() const { return {bytes, sizeof bytes}; }

  char bytes[20];
};

const std::string kUntouched(20, '?');

// What the field holds for these first bytes.
std::string field(const std::string& bytes) {
  return bytes + std::string(16 - bytes.size(), '\0') + "????";
}

TEST_F(XorgConfTest, TheOptionValueIsTheFourthPieceOfAQuotedLine) {
  struct Row {
    const char* name;
    const char* line;
    int value;
  };
  constexpr Row kRows[] = {
      {"an option line", "Option \"Screen\" \"2\"\n", 2},
      {"indented", "\tOption\t\"Screen\"\t\"31\"\n", 31},
      {"a negative value", "Option \"Screen\" \"-2\"", -2},
      {"digits, then text", "Option \"Screen\" \"2nd\"", 2},
      {"no digits", "Option \"Screen\" \"on\"", 0},
      {"an empty value ends at its quote", "Option \"Screen\" \"\"5", 0},
      {"an empty name", "Option \"\" \"7\"", 7},
      {"no closing quote", "Option \"Screen\" \"8", 8},
      {"further pieces", "Option \"Screen\" \"9\" \"10\"", 9},
      {"three pieces", "Option \"Screen\" 2", 0},
      {"one piece", "Screen 2", 0},
      {"nothing", "", 0},
      {"nothing but quotes", "\"\"\"", 0},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(GetOptionValue(row.line), row.value);
  }
}

TEST_F(XorgConfTest, TheOptionTextIsSixteenBytesFromTheFourthPieceOn) {
  struct Row {
    const char* name;
    const char* line;
    std::string out;
  };
  const Row rows[] = {
      {"16 characters", "Option \"UniqueID\" \"0123456789ABCDEF\"\n", field("0123456789ABCDEF")},
      {"more are cut", "Option \"UniqueID\" \"0123456789ABCDEFG\"\n", field("0123456789ABCDEF")},
      {"the quote of 15 becomes a NUL", "Option \"UniqueID\" \"0123456789ABCDE\"\n",
       field("0123456789ABCDE")},
      {"what follows comes along", "Option \"UniqueID\" \"01\" # a\n",
       field(std::string("01\0 # a\n", 8))},
      {"up to the 16th byte", "Option \"UniqueID\" \"01\" 0123456789ABCDEF\n",
       field(std::string("01\0 0123456789AB", 16))},
      {"a later quote stays", "Option \"UniqueID\" \"01\" \"2\"",
       field(std::string("01\0 \"2\"", 7))},
      {"no closing quote", "Option \"UniqueID\" \"01", field("01")},
      {"an empty text", "Option \"UniqueID\" \"\"", field("")},
      {"fewer pieces leave it alone", "Option \"UniqueID\" 01\n", kUntouched},
      {"no piece at all", "", kUntouched},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    UniqueId out;
    EXPECT_EQ(GetOptionValueStr(row.line, out.bytes), 0);
    EXPECT_EQ(out.all(), row.out);
  }
}

TEST_F(XorgConfTest, TheOptionTextReadsNothingBehindItsLine) {
  const std::string text = "Option \"UniqueID\" \"01\"";
  // A block of exactly that size, so that a byte too far is one outside.
  std::vector<char> line(text.size() + 1);
  std::ranges::copy(text, line.begin());
  UniqueId out;
  EXPECT_EQ(GetOptionValueStr(line.data(), out.bytes), 0);
  EXPECT_EQ(out.all(), field("01"));
}

TEST_F(XorgConfTest, TheFdiOptionValueIsTheOneDigitBehindTheMarker) {
  struct Row {
    const char* name;
    const char* text;
    int value;
  };
  constexpr Row kRows[] = {
      {"one digit", "<merge key=\"x\" type=\"string\">7</merge>", 7},
      {"the first of two", "type=\"string\">12</merge>", 1},
      {"the first marker", "type=\"string\">3 type=\"string\">4", 3},
      {"no digit", "type=\"string\">on", 0},
      {"a sign", "type=\"string\">-5", 0},
      {"a blank", "type=\"string\"> 5", 0},
      {"nothing behind it", "type=\"string\">", 0},
      {"no marker", "type=\"int\">5", 0},
      {"half a marker", "type=\"string\"5", 0},
      {"nothing", "", 0},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(GetFdiOptionValue(row.text), row.value);
  }
}

constexpr char kXorgConf[] =
    "Section \"ServerLayout\"\n"
    "  InputDevice \"HID TOUCH1\" \"SendCoreEvents\"\n"
    "  InputDevice \"HID TOUCH2\" \"SendCoreEvents\"\n"
    "EndSection\n"
    "Section \"InputDevice\"\n"
    "  Identifier \"HID TOUCH1\"\n"
    "  Option \"Device\" \"/dev/input/event1\"\n"
    "  Option \"UniqueID\" \"AAAABBBBCCCC1111\"\n"
    "EndSection\n"
    "Section \"InputDevice\"\n"
    "  Identifier \"HID TOUCH2\"\n"
    "  Option \"UniqueID\" \"AAAABBBBCCCC2222\"\n"
    "EndSection\n";

TEST_F(XorgConfTest, TheNumberOfSectionsIsAlwaysOne) {
  EXPECT_EQ(GetDevceNumbersConf(), 1) << "without a file";
  for (const std::string text : {"", kXorgConf, "\"ServerLayout\"\n", "HID TOUCH\n"}) {
    SCOPED_TRACE(text);
    write_file(data_file("X11/xorg.conf"), text);
    EXPECT_EQ(GetDevceNumbersConf(), 1);
  }
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(XorgConfTest, TheNumberOfSectionsIsOneForAFileThatMayNotBeRead) {
  write_file(data_file("X11/xorg.conf"), kXorgConf);
  fail_file_call("fopen", data_file("X11/xorg.conf"), EACCES);
  EXPECT_EQ(GetDevceNumbersConf(), 1);
  // The file was asked for: the refusal is used up.
  std::FILE* file = std::fopen(data_file("X11/xorg.conf").c_str(), "r");
  ASSERT_NE(file, nullptr);
  std::fclose(file);
}

TEST_F(XorgConfTest, TheUniqueIdIsThatOfTheNumberedSection) {
  write_file(data_file("X11/xorg.conf"),
             std::string(kXorgConf).substr(std::string(kXorgConf).find("Section \"InputDevice\"")));
  UniqueId first;
  EXPECT_EQ(GetDevceUniqueIDConf(1, first.bytes), 1);
  EXPECT_EQ(first.all(), field("AAAABBBBCCCC1111"));
  UniqueId second;
  EXPECT_EQ(GetDevceUniqueIDConf(2, second.bytes), 1);
  EXPECT_EQ(second.all(), field("AAAABBBBCCCC2222"));
  UniqueId third;
  EXPECT_EQ(GetDevceUniqueIDConf(3, third.bytes), 0);
  EXPECT_EQ(third.all(), kUntouched);
}

TEST_F(XorgConfTest, ALayoutThatNamesTheSectionsLeadsToTheFirstUniqueId) {
  write_file(data_file("X11/xorg.conf"), kXorgConf);
  UniqueId out;
  EXPECT_EQ(GetDevceUniqueIDConf(2, out.bytes), 1);
  EXPECT_EQ(out.all(), field("AAAABBBBCCCC1111"));
}

TEST_F(XorgConfTest, TheUniqueIdIsFoundBySubstrings) {
  struct Row {
    const char* name;
    const char* text;
    int number;
    int found;
    std::string out;
  };
  const Row rows[] = {
      {"number 1 also finds section 10", "HID TOUCH10\nUniqueID\"\"\"ten\"\n", 1, 1,
       field(std::string("ten\0\n", 5))},
      {"number 10 does not find section 1", "HID TOUCH1\nUniqueID\"\"\"one\"\n", 10, 0, kUntouched},
      {"the next line that holds the word, whatever its section",
       "HID TOUCH1\nEndSection\nHID TOUCH2\nUniqueID\"\"\"two\"\n", 1, 1,
       field(std::string("two\0\n", 5))},
      {"not one in front of the section", "UniqueID\"\"\"one\"\nHID TOUCH1\n", 1, 0, kUntouched},
      {"not the section's own line", "HID TOUCH1 UniqueID\"\"\"one\"\n", 1, 0, kUntouched},
      {"comments count", "#HID TOUCH1\n#UniqueID\"\"\"one\"\n", 1, 1,
       field(std::string("one\0\n", 5))},
      {"a line without a value is still the one", "HID TOUCH1\nUniqueID\nUniqueID\"\"\"one\"\n", 1,
       1, kUntouched},
      {"a negative number", "HID TOUCH-2147483648\nUniqueID\"\"\"low\"\n", -2147483647 - 1, 1,
       field(std::string("low\0\n", 5))},
      {"an empty file", "", 1, 0, kUntouched},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    write_file(data_file("X11/xorg.conf"), row.text);
    UniqueId out;
    EXPECT_EQ(GetDevceUniqueIDConf(row.number, out.bytes), row.found);
    EXPECT_EQ(out.all(), row.out);
  }
}

TEST_F(XorgConfTest, WithoutAFileThereIsNoUniqueId) {
  DbgFlag = 1;
  UniqueId out;
  EXPECT_EQ(GetDevceUniqueIDConf(1, out.bytes), 0);
  EXPECT_EQ(out.all(), kUntouched);
  EXPECT_EQ(trace(), Lines{});
}

TEST_F(XorgConfTest, TheFilesSizeHasNoBound) {
  std::string text;
  for (int i = 0; i < 10000; ++i) text += "# line\n";
  text += std::string(5000, 'x') + "\nHID TOUCH1\n" + std::string(5000, 'x') + "\n";
  write_file(data_file("X11/xorg.conf"), text + "UniqueID\"\"\"last\"");
  UniqueId out;
  EXPECT_EQ(GetDevceUniqueIDConf(1, out.bytes), 1);
  EXPECT_EQ(out.all(), field("last"));
  EXPECT_EQ(GetDevceNumbersConf(), 1);
}

}  // namespace
