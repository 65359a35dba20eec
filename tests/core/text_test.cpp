// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cstring>
#include <string>
#include <vector>

#include "support/bench.h"

namespace {

using TextTest = zelkora::test::Bench;
using Bytes = std::vector<unsigned char>;

TEST_F(TextTest, HexadecimalTextIsReadUpToTheFirstOtherCharacter) {
  struct Row {
    const char* name;
    const char* text;
    int count;
    unsigned number;
  };
  constexpr Row kRows[] = {
      {"stops at a letter that is no digit", "1aZ", 3, 0x1A},
      {"takes count characters", "FF", 1, 0xF},
      {"takes four digits", "12aF", 4, 0x12AF},
      {"takes lower case", "abcdef", 6, 0xABCDEF},
      {"takes upper case", "ABCDEF", 6, 0xABCDEF},
      {"takes all decimal digits", "01234567", 8, 0x01234567},
      {"takes the last ones too", "89", 2, 0x89},
      {"stops at the terminator", "7", 9, 0x7},
      {"an empty text", "", 4, 0},
      {"no character", "12", 0, 0},
      {"a negative count", "12", -1, 0},
      {"the smallest count", "12", -2147483647 - 1, 0},
      {"an 0x is no digit", "0x12", 4, 0},
      {"a blank ends it", " 12", 3, 0},
      {"a sign ends it", "-1", 2, 0},
      {"before 0", "1/", 2, 1},
      {"behind 9", "1:", 2, 1},
      {"before A", "1@", 2, 1},
      {"behind F", "1G", 2, 1},
      {"before a", "1`", 2, 1},
      {"behind f", "1g", 2, 1},
      {"a byte above 127", "1\xC1", 2, 1},
      {"keeps the low 32 bits", "123456789", 9, 0x23456789},
      {"reaches the largest", "FFFFFFFF", 8, 0xFFFFFFFF},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(HextoInt(row.text, row.count), row.number);
    EXPECT_EQ(HexStrToInt(row.text, row.count), row.number);
  }
}

TEST_F(TextTest, HexadecimalTextNeedsNoTerminator) {
  const std::vector<char> text = {'1', '2'};
  EXPECT_EQ(HextoInt(text.data(), 2), 0x12U);
  EXPECT_EQ(HexStrToInt(text.data(), 2), 0x12U);
}

TEST_F(TextTest, TheChecksumIsA16BitSumThatStartsAt6666) {
  struct Row {
    const char* name;
    Bytes data;
    unsigned sum;
  };
  const Row rows[] = {
      {"nothing", {}, 0x6666},
      {"one byte, unsigned", {0xFF}, 0x6765},
      {"several bytes", {1, 2, 3, 0x80}, 0x66EC},
      {"0x100 bytes wrap once", Bytes(0x100, 0xFF), 0x6566},
      {"0x8000 bytes", Bytes(0x8000, 0xFF), 0xE666},
      {"0x10000 bytes", Bytes(0x10000, 0xFF), 0x6666},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(CheckSum(row.data.data(), static_cast<int>(row.data.size())), row.sum);
  }
}

TEST_F(TextTest, TheChecksumOfANegativeLengthIsThatOfNothing) {
  const unsigned char byte = 1;
  EXPECT_EQ(CheckSum(&byte, -1), 0x6666U);
}

// A line as SubStr() takes it: what does not fit is cut, a full one has no terminator.
ConfigLine line_of(const std::string& text) {
  ConfigLine line{};
  std::memcpy(line.Text, text.data(), std::min(text.size(), sizeof line.Text));
  return line;
}

TEST_F(TextTest, TheNumberOfAQuotedLineIsThatOfTheFirstPieceWithADigitFromOneToFour) {
  struct Row {
    const char* name;
    std::string line;
    int number;
  };
  const Row rows[] = {
      {"a quoted word, then a quoted number", "\"Screen\" \"2\"", 2},
      {"the first such piece wins", "\"1\" \"2\"", 1},
      {"a piece of other digits is passed over", "5 60 789 3", 3},
      {"a larger number that holds one of them", "\"10\"", 10},
      {"4 counts", "\"4\"", 4},
      {"5 does not", "\"5\"", 0},
      {"0 does not", "\"0\"", 0},
      {"a word that holds one is taken for the number 0", "\"Screen1\" \"2\"", 0},
      {"digits in front of letters", "\"3rd\"", 3},
      {"blanks split as quotes do", "Option 2", 2},
      {"other blank characters do not split", "a\t2", 0},
      {"nor behind the first piece", "a 5\t2", 5},
      {"leading quotes and blanks", " \"\" \" 2", 2},
      {"a negative number", "\"-3\"", -3},
      {"nothing", "", 0},
      {"delimiters alone", "\" \" \"", 0},
      {"no number", "\"Screen\" \"None\"", 0},
      {"text behind the terminator does not count", std::string("Option\0 2", 9), 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(SubStr(line_of(row.line)), row.number);
  }
}

TEST_F(TextTest, ALineThatFillsItsBufferIsReadToItsLastByteAndNotFurther) {
  EXPECT_EQ(SubStr(line_of(std::string(510, 'x') + " 3")), 3);
  EXPECT_EQ(SubStr(line_of(std::string(512, 'x'))), 0);
  EXPECT_EQ(SubStr(line_of(std::string(512, ' '))), 0);
}

}  // namespace
