// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The product-name lists.
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "support/bench.h"

namespace {

using zelkora::test::data_file;
using zelkora::test::Lines;
using zelkora::test::read_file;
using zelkora::test::write_file;

class NameListTest : public zelkora::test::Bench {
 protected:
  const std::string pct_list_ = data_file("manuflist.conf");
  const std::string resistive_list_ = data_file("rmanuflist.conf");
};

struct ListCase {
  const char* name;
  std::string text;
  Lines entries;
};

std::string letters(size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += static_cast<char>('a' + i % 26);
  return text;
}

std::vector<ListCase> list_cases() {
  const std::string long_line = letters(130);
  return {
      {"two names", "First Panel\nSecond Panel\n", {"First Panel", "Second Panel"}},
      {"no line feed at the end", "First\nSecond", {"First", "Second"}},
      {"an empty file", "", {}},
      {"an empty line is an empty entry", "First\n\nThird\n", {"First", "", "Third"}},
      {"a lone line feed", "\n", {""}},
      {"62 characters", letters(62) + "\nnext\n", {letters(62), "next"}},
      {"63 characters", letters(63) + "\nnext\n", {letters(63), "next"}},
      {"63 characters at the end", letters(63), {letters(63)}},
      {"64 characters", letters(64) + "\nnext\n", {letters(63), letters(64).substr(63), "next"}},
      {"126 characters",
       long_line.substr(0, 126) + "\nnext\n",
       {long_line.substr(0, 63), long_line.substr(63, 63), "next"}},
      {"127 characters without line feed",
       long_line.substr(0, 127),
       {long_line.substr(0, 63), long_line.substr(63, 63), long_line.substr(126, 1)}},
      {"a carriage return stays", "First\r\nSecond\n", {"First\r", "Second"}},
      {"blanks and signs stay", "  # First = 1 \n", {"  # First = 1 "}},
      {"a NUL ends its entry", std::string("Fir\0st\nSecond\n", 14), {"Fir", "Second"}},
      {"format characters", "%s%n%s%n\n", {"%s%n%s%n"}},
      {"bytes above 127", "\xC3\xA4\xFF\n", {"\xC3\xA4\xFF"}},
  };
}

void expect_entries(const char (&list)[ZELKORA_MAX_NAMES][ZELKORA_NAME_LENGTH],
                    const Lines& entries) {
  for (size_t i = 0; i < ZELKORA_MAX_NAMES; ++i) {
    EXPECT_STREQ(list[i], i < entries.size() ? entries[i].c_str() : "") << "entry " << i;
  }
}

TEST_F(NameListTest, EachLineIsAnEntryOfThePctList) {
  for (const ListCase& row : list_cases()) {
    SCOPED_TRACE(row.name);
    write_file(pct_list_, row.text);
    std::memset(MatchProduct, 'x', sizeof MatchProduct);
    EXPECT_EQ(get_Manufacturer_list(), static_cast<int>(row.entries.size()));
    expect_entries(MatchProduct, row.entries);
  }
}

TEST_F(NameListTest, EachLineIsAnEntryOfTheResistiveList) {
  for (const ListCase& row : list_cases()) {
    SCOPED_TRACE(row.name);
    write_file(resistive_list_, row.text);
    std::memset(rMatchProduct, 'x', sizeof rMatchProduct);
    EXPECT_EQ(get_Res_Manufacturer_list(), static_cast<int>(row.entries.size()));
    expect_entries(rMatchProduct, row.entries);
  }
}

TEST_F(NameListTest, AListOfFortyLinesLoadsThirtySixNames) {
  std::string text;
  for (int i = 1; i <= 40; ++i) text += "Panel " + std::to_string(i) + "\n";
  write_file(pct_list_, text);
  write_file(resistive_list_, text);
  EXPECT_EQ(get_Manufacturer_list(), 36);
  EXPECT_EQ(get_Res_Manufacturer_list(), 36);
  EXPECT_STREQ(MatchProduct[35], "Panel 36");
  EXPECT_STREQ(rMatchProduct[35], "Panel 36");
}

TEST_F(NameListTest, TheRestOfALongLineCountsAgainstTheThirtySix) {
  write_file(pct_list_, letters(63 * 100) + "\nlast\n");
  EXPECT_EQ(get_Manufacturer_list(), 36);
  EXPECT_EQ(std::string(MatchProduct[35]), letters(63 * 100).substr(63 * 35, 63));
}

TEST_F(NameListTest, TenThousandLinesAreNoMoreThanThirtySix) {
  std::string text;
  for (int i = 0; i < 10000; ++i) text += "Panel\n";
  write_file(resistive_list_, text);
  EXPECT_EQ(get_Res_Manufacturer_list(), 36);
}

TEST_F(NameListTest, ThirtySixEmptyLinesAreThirtySixEmptyEntries) {
  write_file(pct_list_, std::string(40, '\n'));
  EXPECT_EQ(get_Manufacturer_list(), 36);
  expect_entries(MatchProduct, {});
}

TEST_F(NameListTest, AMissingPctListIsEmptyAndSaysSo) {
  DbgFlag = 1;
  std::memset(MatchProduct, 'x', sizeof MatchProduct);
  EXPECT_EQ(get_Manufacturer_list(), 0);
  expect_entries(MatchProduct, {});
  EXPECT_EQ(messages(), Lines{"zelkora DD:can't open pct manuflist\n"});
}

TEST_F(NameListTest, AMissingResistiveListIsEmptyAndSaysSo) {
  DbgFlag = 1;
  std::memset(rMatchProduct, 'x', sizeof rMatchProduct);
  EXPECT_EQ(get_Res_Manufacturer_list(), 0);
  expect_entries(rMatchProduct, {});
  EXPECT_EQ(messages(), Lines{"zelkora DD:can't open Res manuflist\n"});
}

TEST_F(NameListTest, AnEmptyListIsNotAMissingOne) {
  DbgFlag = 1;
  write_file(pct_list_, "");
  write_file(resistive_list_, "");
  EXPECT_EQ(get_Manufacturer_list(), 0);
  EXPECT_EQ(get_Res_Manufacturer_list(), 0);
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(NameListTest, AnUnreadableListIsAMissingOne) {
  DbgFlag = 1;
  write_file(pct_list_, "Panel\n");
  fail_file_call("fopen", pct_list_, EACCES);
  EXPECT_EQ(get_Manufacturer_list(), 0);
  EXPECT_EQ(messages(), Lines{"zelkora DD:can't open pct manuflist\n"});
}

TEST_F(NameListTest, OnlyTheResistiveListNamesItsEntries) {
  DbgFlag = 1;
  write_file(pct_list_, "Panel\n");
  write_file(resistive_list_, "First %s%n\n\nThird");
  get_Manufacturer_list();
  get_Res_Manufacturer_list();
  EXPECT_EQ(messages(), (Lines{"zelkora DD:Res List:First %s%n",
                               "zelkora DD:Res List:", "zelkora DD:Res List:Third"}));
}

TEST_F(NameListTest, LoadingLeavesTheCountsToTheEnumeration) {
  write_file(pct_list_, "Panel\n");
  write_file(resistive_list_, "Panel\n");
  get_Manufacturer_list();
  get_Res_Manufacturer_list();
  EXPECT_EQ(ManufCnt, 0);
  EXPECT_EQ(rManufCnt, 0);
}

TEST_F(NameListTest, SetWritesTheFirstNamesOneALine) {
  std::strcpy(MatchProduct[0], "First Panel");
  std::strcpy(MatchProduct[2], "Third %s%n");
  std::strcpy(MatchProduct[3], "Fourth");
  set_Manufacturer_list(3);
  EXPECT_EQ(read_file(pct_list_), "First Panel\n\nThird %s%n\n");
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(NameListTest, SetReplacesALongerList) {
  write_file(pct_list_, "One\nTwo\nThree\n");
  std::strcpy(MatchProduct[0], "New");
  set_Manufacturer_list(1);
  EXPECT_EQ(read_file(pct_list_), "New\n");
}

TEST_F(NameListTest, SetLeavesTheResistiveListAlone) {
  write_file(resistive_list_, "Panel\n");
  std::strcpy(MatchProduct[0], "New");
  set_Manufacturer_list(1);
  EXPECT_EQ(read_file(resistive_list_), "Panel\n");
}

TEST_F(NameListTest, SetOfNoNamesEmptiesTheList) {
  for (const int count : {0, -1, -2147483647}) {
    SCOPED_TRACE(count);
    write_file(pct_list_, "One\n");
    set_Manufacturer_list(count);
    EXPECT_EQ(read_file(pct_list_), "");
  }
}

TEST_F(NameListTest, SetEndsWithTheTable) {
  for (auto& name : MatchProduct) std::strcpy(name, "Panel");
  set_Manufacturer_list(1000000);
  const std::string text = read_file(pct_list_);
  EXPECT_EQ(std::ranges::count(text, '\n'), 36);
  EXPECT_EQ(text.size(), 36 * std::strlen("Panel\n"));
}

TEST_F(NameListTest, SetEndsANameWithItsField) {
  std::memset(MatchProduct, 'x', sizeof MatchProduct);
  set_Manufacturer_list(1);
  EXPECT_EQ(read_file(pct_list_), std::string(64, 'x') + "\n");
}

TEST_F(NameListTest, WhatSetWroteIsReadAgain) {
  write_file(pct_list_, letters(63) + "\n\nThird\n");
  ASSERT_EQ(get_Manufacturer_list(), 3);
  set_Manufacturer_list(3);
  EXPECT_EQ(read_file(pct_list_), letters(63) + "\n\nThird\n");
}

TEST_F(NameListTest, SetKeepsTheModeOfTheList) {
  write_file(pct_list_, "One\n");
  ASSERT_EQ(chmod(pct_list_.c_str(), 0640), 0);
  set_Manufacturer_list(0);
  struct stat status {};
  ASSERT_EQ(stat(pct_list_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
}

TEST_F(NameListTest, AListThatCannotBeWrittenIsReportedUnderAnotherName) {
  write_file(pct_list_, "One\n");
  fail_file_call("open", pct_list_, EACCES);
  set_Manufacturer_list(0);
  EXPECT_EQ(messages(), Lines{"EE:can't open idlist.conf!!\n"});
  EXPECT_EQ(read_file(pct_list_), "One\n");
}

}  // namespace
