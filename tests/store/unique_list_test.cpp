// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The list of known serial numbers: its records have no parameters, and its rules are its own.
#include <cerrno>
#include <filesystem>
#include <utility>

#include "store_bench.h"

namespace {

using zelkora::test::captured_stdout;
using zelkora::test::data_file;
using zelkora::test::joined_lines;
using zelkora::test::Lines;
using zelkora::test::other_panels;
using zelkora::test::Records;
using zelkora::test::Stored;

constexpr int kAtTheEnd = -1;

class UniqueListTest : public zelkora::test::StoreBench {
 protected:
  static inline const std::string P = kPhys, S = kSerialNumber, U = kUsbId;
  static inline const std::string P2 = kOtherPhys, S2 = kOtherSerialNumber, U2 = kOtherUsbId;
  static inline const std::string kDashes = std::string(41, '-');

  static Lines read(const Records& stored) {
    Lines lines;
    for (const Stored& record : stored) {
      lines.push_back("*** Write_UniqList_Binary_File phys:" + record.phys +
                      " , SN:" + record.serial_number + " ***");
    }
    return lines;
  }
  static Lines rewritten(const Records& written) {
    Lines lines = {"*** Write_UniqList_Binary_File MemCnt:" + std::to_string(written.size()) +
                   " ***"};
    for (size_t i = 0; i < written.size(); ++i) {
      lines.push_back("Write_UniqList_Binary_File fwrite x[" + std::to_string(i) +
                      "].phys:" + written[i].phys);
    }
    return lines;
  }

  const std::string path = data_file(".pctuniq");
};

TEST_F(UniqueListTest, APanelIsEnteredByTheseRules) {
  const struct {
    const char* name;
    Records stored;
    int slot;
  } rows[] = {
      {"an empty file", {}, kAtTheEnd},
      {"the serial number, at another port", {{P2, S2, U, 1}, {P2, S, U2, 2}}, 1},
      {"Phys, with another number", {{P2, S2, U, 1}, {P, S2, U2, 2}}, 1},
      {"the first in the file, by Phys", {{P, S2, U2, 1}, {P2, S, U, 2}}, 0},
      {"the first in the file, by number", {{P2, S, U2, 1}, {P, S2, U, 2}}, 0},
      {"the first of three", {panel(1), panel(2), panel(3)}, 0},
      {"texts within longer ones", {{"hub/" + P + ":1", S2, U2, 1}}, 0},
      {"a number within a longer field", {{P2, S + "9", U2, 1}}, 0},
      {"the USB id is no key", {{P2, S2, U, 1}}, kAtTheEnd},
      {"shorter texts are others", {{P.substr(1), S.substr(1), U, 1}}, kAtTheEnd},
      {"case counts", {{"USB-0000:00:14.0-1/input0", "A1B2C3D4E5F60708", U, 1}}, kAtTheEnd},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    write_records(path, row.stored);
    clear_trace();
    EXPECT_EQ(Write_UniqList_Binary_File(0), 1U);

    Records written = row.stored;
    Lines search = {"*** Write_UniqList_Binary_File MatchCnt:" + std::to_string(row.slot) +
                    " MemCnt:" + std::to_string(row.stored.size()) + "***"};
    if (row.slot == kAtTheEnd) {
      written.push_back(panel(0));
      search.push_back("write to end line MemCnt:" + std::to_string(row.stored.size()));
    } else {
      written[static_cast<size_t>(row.slot)] = panel(0);
    }
    expect_records(path, written);
    EXPECT_EQ(told(), joined_lines({read(row.stored), search, rewritten(written)}));
    EXPECT_EQ(count_of("system"), 0U);
  }
}

TEST_F(UniqueListTest, AMissingListIsMadeAndOpenedToAllOnce) {
  allow_chmod(path);
  EXPECT_EQ(Write_UniqList_Binary_File(0), 1U);
  expect_records(path, {panel(0)});
  EXPECT_EQ(told(), joined_lines({{"Write_UniqList_Binary_File file not found phys:" + P},
                                  rewritten({panel(0)})}));
  EXPECT_EQ(trace_of({"system"}), Lines{"system chmod 777 \"/opt/.touch_panel/.pctuniq\""});
  EXPECT_EQ(trace().back(), "system " + chmod_of(path));

  EXPECT_EQ(Write_UniqList_Binary_File(0), 1U);
  expect_records(path, {panel(0)});
  EXPECT_EQ(count_of("system"), 1U);
}

TEST_F(UniqueListTest, EachPanelHasOneRecord) {
  allow_chmod(path);
  set_entry(2, {P2, S2, U});
  EXPECT_EQ(Write_UniqList_Binary_File(0), 1U);
  EXPECT_EQ(Write_UniqList_Binary_File(2), 1U);
  expect_records(path, {panel(0), {P2, S2, U, 0}});
  // The panels change places: the first record has the number of the one, but the second has the
  // place of the other.
  set_entry(0, {P2, S, U});
  EXPECT_EQ(Write_UniqList_Binary_File(0), 1U);
  expect_records(path, {{P2, S, U, 0}, {P2, S2, U, 0}});
}

TEST_F(UniqueListTest, ADeviceWithoutAPhysTouchesNothing) {
  TouchDevice[0].Phys[0] = '\0';
  EXPECT_EQ(Write_UniqList_Binary_File(0), 0U);
  EXPECT_EQ(told(), Lines{});
  EXPECT_EQ(Read_UniqList_Binary_File(0), 0U);
  EXPECT_EQ(told(), Lines{kDashes});
  EXPECT_FALSE(std::filesystem::exists(path));

  write_records(path, {{"", S, U, 1}});
  EXPECT_EQ(Write_UniqList_Binary_File(0), 0U);
  EXPECT_EQ(Read_UniqList_Binary_File(0), 0U);
  expect_records(path, {{"", S, U, 1}});
}

TEST_F(UniqueListTest, AFullListTakesNoOtherPanel) {
  const Records full = other_panels(256);
  write_records(path, full);
  EXPECT_EQ(Write_UniqList_Binary_File(0), 0U);
  expect_records(path, full);
  EXPECT_EQ(told(), joined_lines({read(full),
                                  {"*** Write_UniqList_Binary_File MatchCnt:-1 MemCnt:256***",
                                   "write to end line MemCnt:256"}}));
}

TEST_F(UniqueListTest, WhatLiesBehindRecord256IsKeptAndNotLookedAt) {
  Records records = other_panels(300);
  records[255] = panel(9);
  write_records(path, records);
  EXPECT_EQ(Write_UniqList_Binary_File(0), 1U);
  records[255] = panel(0);
  expect_records(path, records);
  EXPECT_EQ(Read_UniqList_Binary_File(0), 1U);

  std::swap(records[255], records[256]);
  write_records(path, records);
  EXPECT_EQ(Read_UniqList_Binary_File(0), 0U);
}

TEST_F(UniqueListTest, AListThatCannotBeReadOrWrittenStaysAsItIs) {
  const Records stored = {{P2, S2, U2, 1}};
  const struct {
    const char* call;
    std::string path;
    int error;
  } rows[] = {{"fopen", path, EACCES},
              {"fopen", path, EMFILE},
              {"open", path, EACCES},
              {"write", path + ".*", ENOSPC}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.call);
    write_records(path, stored);
    clear_trace();
    fail_file_call(row.call, row.path, row.error);
    EXPECT_EQ(Write_UniqList_Binary_File(0), 0U);
    expect_records(path, stored);
    for (const std::string& line : told()) EXPECT_EQ(line.find("fwrite"), line.npos);
  }
}

TEST_F(UniqueListTest, APanelIsFoundByItsPhysAlone) {
  const struct {
    const char* name;
    Records stored;
    int record;
  } rows[] = {
      {"an empty file", {}, -1},
      {"Phys", {{P2, S, U, 1}, {P, S2, U2, 2}, {P2, S, U, 3}}, 1},
      {"the first of two", {{P, S2, U2, 1}, {P, S, U, 2}}, 0},
      {"Phys within a longer one", {{"hub/" + P, S2, U2, 1}}, 0},
      {"the serial number is no key", {{P2, S, U, 1}}, -1},
      {"a shorter Phys is another", {{P.substr(1), S, U, 1}}, -1},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    write_records(path, row.stored);
    clear_trace();
    EXPECT_EQ(Read_UniqList_Binary_File(0), row.record < 0 ? 0U : 1U);

    Lines expected = {kDashes};
    const size_t looked_at =
        row.record < 0 ? row.stored.size() : static_cast<size_t>(row.record) + 1;
    for (size_t i = 0; i < looked_at; ++i) {
      const std::string number = std::to_string(i);
      expected.push_back("Read_UniqList_Binary_File phys[" + number + "]:" + row.stored[i].phys +
                         " , SN[" + number + "]:" + row.stored[i].serial_number);
    }
    if (row.record < 0) {
      expected.emplace_back("Read_UniqList_Binary_File not match");
    } else {
      expected.push_back("Read_UniqList_Binary_File FileName:" + path +
                         " MatchCnt:" + std::to_string(row.record) +
                         " SN:" + row.stored[static_cast<size_t>(row.record)].serial_number);
    }
    EXPECT_EQ(told(), expected);
    expect_records(path, row.stored);
  }
}

TEST_F(UniqueListTest, AMissingListHoldsNoPanel) {
  EXPECT_EQ(Read_UniqList_Binary_File(0), 0U);
  EXPECT_EQ(told(), (Lines{kDashes, "Read_UniqList_Binary_File open FileName:" + path + " error"}));
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(UniqueListTest, NothingIsToldWithoutDebugging) {
  write_records(path, {panel(1)});
  DbgFlag = 0;
  EXPECT_EQ(captured_stdout([&] {
              EXPECT_EQ(Write_UniqList_Binary_File(0), 1U);
              EXPECT_EQ(Read_UniqList_Binary_File(0), 1U);
            }),
            "");
}

}  // namespace
