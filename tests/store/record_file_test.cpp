// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The form of a store file, its limits, and files that were not written by this library.
#include <sys/stat.h>

#include <cstring>

#include "store_bench.h"

namespace {

using zelkora::test::bytes_of;
using zelkora::test::data_file;
using zelkora::test::joined;
using zelkora::test::kRecordSize;
using zelkora::test::Lines;
using zelkora::test::other_panels;
using zelkora::test::read_file;
using zelkora::test::Records;
using zelkora::test::Stored;
using zelkora::test::write_file;

class RecordFileTest : public zelkora::test::StoreBench {
 protected:
  static ino_t inode(const std::string& path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0);
    return status.st_ino;
  }

  const std::string path = data_file(".pctpbin");
};

TEST_F(RecordFileTest, ANewFileIsOneRecordOf347Bytes) {
  allow_chmod(path);
  std::vector<unsigned char> payload;
  for (unsigned char i = 0; i < 64; ++i) payload.push_back(static_cast<unsigned char>(200 + i));
  EXPECT_EQ(Write_Binary_File(path.c_str(), 0, payload.data(), 2), 1U);

  const std::string bytes = read_file(path);
  ASSERT_EQ(bytes.size(), 347U);
  std::string expected = "usb-0000:00:14.0-1/input0";
  expected.resize(256);
  expected += "a1b2c3d4e5f60708";
  expected.resize(273);
  expected += "2575_87AB";
  expected.resize(283);
  expected.append(payload.begin(), payload.end());
  EXPECT_EQ(bytes, expected);
}

TEST_F(RecordFileTest, ANewFileIsOpenToAllBeforeTheShellIsAsked) {
  mode_t seen = 0;
  answer_command({.command = chmod_of(path), .effect = [&] {
                    struct stat status {};
                    EXPECT_EQ(::lstat(path.c_str(), &status), 0);
                    seen = status.st_mode & 07777;
                  }});
  EXPECT_EQ(store(path, 1), 1U);
  EXPECT_EQ(seen, 0777U);
}

TEST_F(RecordFileTest, ANewFileIsOpenedToAllOnceAfterItsContent) {
  for (const char* name : {".pctpbin", ".pctpbintmp", ".restpbin", ".restpbintmp"}) {
    SCOPED_TRACE(name);
    const std::string file = data_file(name);
    std::string seen;
    answer_command({.command = chmod_of(file), .effect = [&] { seen = read_file(file); }});
    clear_trace();
    EXPECT_EQ(store(file, 1), 1U);
    EXPECT_EQ(trace_of({"system"}), Lines{"system chmod 777 \"" + file + "\""});
    EXPECT_EQ(trace().back(), "system " + chmod_of(file));
    EXPECT_TRUE(seen == panel().bytes());

    EXPECT_EQ(store(file, 1), 1U);
    EXPECT_EQ(count_of("system"), 1U);
    expect_records(file, {panel()});
  }
}

TEST_F(RecordFileTest, AnEmptyFileIsNotNew) {
  write_file(path, "");
  EXPECT_EQ(store(path, 2), 1U);
  expect_records(path, {panel()});
  EXPECT_EQ(count_of("system"), 0U);
}

TEST_F(RecordFileTest, AFileThatCannotBeOpenedToAllIsWrittenNevertheless) {
  answer_command({.command = chmod_of(path), .status = 256});
  EXPECT_EQ(store(path, 2), 1U);
  expect_records(path, {panel()});
}

TEST_F(RecordFileTest, KeyTextsAreMadeOfTheEntryAtEachCall) {
  allow_chmod(path);
  const struct {
    unsigned char serial_number[8];
    unsigned vendor, product;
    const char* serial_text;
    const char* usb_text;
  } kRows[] = {
      {{0, 0, 0, 0, 0, 0, 0, 0}, 0, 0, "0000000000000000", "0000_0000"},
      {{1, 2, 3, 4, 5, 6, 7, 8}, 0x3A4C, 0x1688, "0102030405060708", "3A4C_1688"},
      {{0xAB, 0xCD, 0xEF, 0xFF, 0x0A, 0xB0, 0xC, 0x9F},
       0xABCD,
       0xEF,
       "abcdefff0ab00c9f",
       "ABCD_00EF"},
      {{0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF},
       0xFFFF,
       0xFFFF,
       "ffffffffffffffff",
       "FFFF_FFFF"},
      {{0, 0, 0, 0, 0, 0, 0, 1}, 0xFFFFFFFF, 0x12345678, "0000000000000001", "FFFF_5678"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.serial_text);
    TouchDeviceEntry& entry = TouchDevice[0];
    std::memcpy(entry.SN, row.serial_number, sizeof entry.SN);
    entry.VID = row.vendor;
    entry.PID = row.product;
    EXPECT_EQ(store(path, 1), 1U);
    expect_records(path, {{kPhys, row.serial_text, row.usb_text, kNewFill}});
    EXPECT_EQ(fetch(path, 2), (Fetched{3, kNewFill}));
  }
}

TEST_F(RecordFileTest, APhysAsLongAsItsFieldIsCutAndStillFound) {
  allow_chmod(path);
  std::memset(TouchDevice[0].Phys, 'p', sizeof TouchDevice[0].Phys);
  for (const unsigned char last : {'\0', 'p'}) {
    TouchDevice[0].Phys[255] = static_cast<char>(last);
    EXPECT_EQ(store(path, 1), 1U);
    expect_records(path, {{std::string(255, 'p'), kSerialNumber, kUsbId, kNewFill}});
    EXPECT_EQ(fetch(path, 1), (Fetched{1, kNewFill}));
  }
}

TEST_F(RecordFileTest, RecordsKeepTheirPlacesAndOddBytes) {
  // Bytes behind the terminators carry no meaning, but those of other panels stay.
  std::string odd = Stored{kOtherPhys, kOtherSerialNumber, kOtherUsbId, 1}.bytes();
  odd.replace(100, 20, std::string(20, '\xA7'));
  write_file(path, odd + panel(2).bytes() + odd);
  EXPECT_EQ(store(path, 2), 1U);
  EXPECT_TRUE(read_file(path) == odd + panel().bytes() + odd);
}

TEST_F(RecordFileTest, ATrailingPieceOfARecordIsPassedOverAndDropped) {
  for (const size_t count : {size_t{0}, size_t{1}, size_t{3}, size_t{255}, size_t{257}}) {
    for (const size_t piece : {size_t{1}, size_t{256}, size_t{346}}) {
      SCOPED_TRACE(testing::Message() << count << " records and " << piece << " bytes");
      const std::string tail = panel(9).bytes().substr(0, piece);
      Records records = other_panels(count);
      write_file(path, bytes_of(records) + tail);
      EXPECT_EQ(fetch(path, 1), (Fetched{0, kUntouched}));
      EXPECT_EQ(read_file(path).size(), count * kRecordSize + piece);

      if (count < 256) {
        records.push_back(panel());
      } else {
        // The limit forbids another one: take the place of the first.
        records[0] = panel();
        write_file(
            path, bytes_of(joined({panel(1)}, Records(records.begin() + 1, records.end()))) + tail);
      }
      EXPECT_EQ(store(path, 1), 1U);
      expect_records(path, records);
    }
  }
}

TEST_F(RecordFileTest, AFileTakes256Panels) {
  write_records(path, other_panels(255));
  EXPECT_EQ(store(path, 2), 1U);
  expect_records(path, joined(other_panels(255), {panel()}));
  EXPECT_EQ(fetch(path, 2), (Fetched{3, kNewFill}));
}

TEST_F(RecordFileTest, A257thPanelIsRefusedAndTheFileUntouched) {
  for (const size_t count : {size_t{256}, size_t{257}, size_t{300}}) {
    SCOPED_TRACE(count);
    const Records full = other_panels(count);
    write_records(path, full);
    const ino_t before = inode(path);
    clear_trace();
    EXPECT_EQ(store(path, 2), 0U);
    expect_records(path, full);
    EXPECT_EQ(inode(path), before);
    const Lines lines = told();
    ASSERT_GE(lines.size(), 2U);
    EXPECT_EQ(lines[lines.size() - 2], "*** Write_Binary_File MatchCnt:-1 MemCnt:256***");
    EXPECT_EQ(lines.back(), "write to end line MemCnt:256");
  }
}

TEST_F(RecordFileTest, AFullFileTakesItsOwnPanels) {
  for (const size_t slot : {size_t{0}, size_t{128}, size_t{255}}) {
    SCOPED_TRACE(slot);
    Records full = other_panels(256);
    full[slot] = panel(1);
    write_records(path, full);
    EXPECT_EQ(fetch(path, 2), (Fetched{3, 1}));
    EXPECT_EQ(store(path, 2), 1U);
    full[slot] = panel();
    expect_records(path, full);
  }
}

TEST_F(RecordFileTest, WhatLiesBehindRecord256IsKeptAndNotLookedAt) {
  for (const size_t count : {size_t{257}, size_t{300}, size_t{1000}}) {
    SCOPED_TRACE(count);
    Records records = other_panels(count);
    records[256] = panel(1);
    write_records(path, records);
    EXPECT_EQ(fetch(path, 2), (Fetched{0, kUntouched}));
    EXPECT_EQ(store(path, 2), 0U);
    expect_records(path, records);

    records[255] = panel(2);
    write_records(path, records);
    EXPECT_EQ(fetch(path, 2), (Fetched{3, 2}));
    clear_trace();
    EXPECT_EQ(store(path, 2), 1U);
    records[255] = panel();
    expect_records(path, records);
    const Lines lines = told();
    EXPECT_EQ(lines.back(), "Write_Binary_File fwrite x[255].phys:" + kPhys);
    EXPECT_EQ(lines[lines.size() - 257], "*** Write_Binary_File MemCnt:256 ***");
  }
}

TEST_F(RecordFileTest, AFieldWithoutATerminatorEndsWhereTheNextBegins) {
  // The key goes across the border of two fields: what is not in one of them is not there.
  const std::string phys_over = std::string(249, '#') + kPhys.substr(0, 7);
  const std::string number_over = std::string(9, '#') + kSerialNumber.substr(0, 8);
  std::string id_over = Stored{kOtherPhys, kOtherSerialNumber, "######2575", 0}.bytes();
  id_over.replace(283, 5, "_87AB");
  const struct {
    const char* name;
    int mode;
    std::string bytes;
  } rows[] = {
      {"Phys", 1, Stored{phys_over, kPhys.substr(7, 17), kOtherUsbId, 1}.bytes()},
      {"serial number", 2, Stored{kOtherPhys, number_over, kSerialNumber.substr(8), 1}.bytes()},
      {"USB id", 2, id_over},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    write_file(path, row.bytes);
    EXPECT_EQ(fetch(path, row.mode), (Fetched{0, kUntouched}));
    EXPECT_EQ(store(path, row.mode), 1U);
    EXPECT_TRUE(read_file(path) == row.bytes + panel().bytes());
  }
}

TEST_F(RecordFileTest, AFieldWithoutATerminatorIsReadToItsEnd) {
  const struct {
    const char* name;
    int mode;
    Stored record;
    unsigned result;
  } rows[] = {
      {"Phys", 1, {std::string(256 - kPhys.size(), '#') + kPhys, "", "", 7}, 1},
      {"serial number", 2, {"", "#" + kSerialNumber, "", 7}, 2},
      {"all",
       2,
       {std::string(256 - kPhys.size(), '#') + kPhys, "#" + kSerialNumber, "#" + kUsbId, 7},
       3},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    write_records(path, {row.record});
    EXPECT_EQ(fetch(path, row.mode), (Fetched{row.result, 7}));
    EXPECT_EQ(store(path, row.mode), 1U);
    expect_records(path, {panel()});
  }
}

TEST_F(RecordFileTest, TextBehindATerminatorIsNoKey) {
  std::string bytes = Stored{kOtherPhys, kOtherSerialNumber, kOtherUsbId, 1}.bytes();
  bytes.replace(100, kPhys.size(), kPhys);
  write_file(path, bytes);
  EXPECT_EQ(fetch(path, 1), (Fetched{0, kUntouched}));
}

TEST_F(RecordFileTest, AFileWithoutAnyNulIsReadWithinItsRecords) {
  const auto phys = [](char byte) { return "]:" + std::string(256, byte) + " , SN["; };
  for (const char byte : {'x', '\xFF', '%'}) {
    SCOPED_TRACE(byte);
    const std::string hostile(256 * kRecordSize, byte);
    write_file(path, hostile);
    clear_trace();
    for (const int mode : {1, 2, 3}) EXPECT_EQ(fetch(path, mode), (Fetched{0, kUntouched}));
    EXPECT_EQ(told()[5 + 255],
              "Read_Binary_File phys[255" + phys(byte) + "255]:" + std::string(17, byte));
    for (const int mode : {1, 2, 3}) EXPECT_EQ(store(path, mode), 0U);
    EXPECT_TRUE(read_file(path) == hostile);

    // Room for one more.
    write_file(path, hostile.substr(1));
    EXPECT_EQ(store(path, 3), 1U);
    EXPECT_TRUE(read_file(path) == hostile.substr(kRecordSize) + panel().bytes());
  }
}

TEST_F(RecordFileTest, FormatCharactersAreText) {
  allow_chmod(path);
  const std::string phys = "usb-%n%s%d/input0";
  set_entry(0, {phys, kSerialNumber, kUsbId});
  EXPECT_EQ(store(path, 1), 1U);
  EXPECT_EQ(told().back(), "Write_Binary_File fwrite x[0].phys:" + phys);
  clear_trace();
  EXPECT_EQ(fetch(path, 1), (Fetched{1, kNewFill}));
  EXPECT_EQ(told()[2], "Read_Binary_File phys:" + phys);
}

}  // namespace
