// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Which record a device's parameters are read from, what is told on the way, and which panel gets a
// record of its own by being read.
#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "store_bench.h"

namespace {

using zelkora::test::captured_stdout;
using zelkora::test::data_file;
using zelkora::test::joined;
using zelkora::test::joined_lines;
using zelkora::test::Lines;
using zelkora::test::other_panels;
using zelkora::test::payload_dump;
using zelkora::test::Records;

constexpr int kNone = -1;

class RecordListReadTest : public zelkora::test::StoreBench {
 protected:
  static inline const std::string P = kPhys, S = kSerialNumber, U = kUsbId;
  static inline const std::string P2 = kOtherPhys, S2 = kOtherSerialNumber, U2 = kOtherUsbId;
  static inline const std::string kDashes = std::string(41, '-');

  static Lines heading(const std::string& path) {
    Lines lines = {kDashes, "Read_Binary_File FileName:" + path, "Read_Binary_File phys:" + P};
    if (path.find("pct") != path.npos) lines.push_back("Read_Binary_File SN:" + S + " USB_ID:" + U);
    lines.push_back(kDashes);
    return lines;
  }
  static Lines listed(const Records& stored) {
    Lines lines;
    for (size_t i = 0; i < stored.size(); ++i) {
      const std::string number = std::to_string(i);
      lines.push_back("Read_Binary_File phys[" + number + "]:" + stored[i].phys + " , SN[" +
                      number + "]:" + stored[i].serial_number);
    }
    return lines;
  }
  static Lines found(const std::string& path, int index) {
    if (index == kNone) return {"Read_Binary_File not match"};
    return {"Read_Binary_File FileName:" + path + " MatchCnt:" + std::to_string(index)};
  }
};

class RecordListReadRulesTest : public RecordListReadTest {
 protected:
  struct Row {
    const char* name;
    int mode;
    Records stored;
    unsigned result;
    int record;
    bool copied = false;  // for the device, behind the last record
  };

  void expect_rule(const Row& row) {
    SCOPED_TRACE(row.name);
    const std::string path = data_file(".pctpbin");
    write_records(path, row.stored);
    const auto written = std::filesystem::last_write_time(path);
    clear_trace();
    const unsigned char fill =
        row.record == kNone ? kUntouched : row.stored[static_cast<size_t>(row.record)].fill;
    EXPECT_EQ(fetch(path, row.mode), (Fetched{row.result, fill}));
    EXPECT_EQ(trace_of({"system"}), Lines{});
    if (row.copied) {
      expect_records(path, zelkora::test::joined(row.stored, {panel(fill)}));
      return;
    }
    expect_records(path, row.stored);
    EXPECT_EQ(std::filesystem::last_write_time(path), written);
    EXPECT_EQ(told(), joined_lines({heading(path),
                                    listed(row.stored),
                                    found(path, row.record),
                                    {"Read_Binary_File----end"}}));
  }
};

TEST_F(RecordListReadRulesTest, OfMode1) {
  const Row rows[] = {
      {"an empty file", 1, {}, 0, kNone},
      {"Phys", 1, {{P2, S, U, 1}, {P, S2, U2, 2}, {P2, S, U, 3}}, 1, 1},
      {"the last of two of that Phys", 1, {{P, S, U, 1}, {P, S2, U2, 2}, {P2, S, U, 3}}, 1, 1},
      {"Phys within a longer one", 1, {{P2, S, U, 1}, {"hub/" + P + ":1", S2, U2, 2}}, 1, 1},
      {"a shorter Phys is another", 1, {{P.substr(0, P.size() - 1), S, U2, 1}}, 0, kNone},
      {"the serial number is no key", 1, {{P2, S, U2, 1}}, 0, kNone},
      {"case counts", 1, {{"USB-0000:00:14.0-1/input0", S, U2, 1}}, 0, kNone},
      {"pass 2, the USB id, copies", 1, {{P2, S, U2, 1}, {P2, S2, U, 2}}, 1, 1, true},
  };
  for (const Row& row : rows) expect_rule(row);
}

TEST_F(RecordListReadRulesTest, OfMode2) {
  const std::string longer = "hub/" + P;
  const Row rows[] = {
      {"an empty file", 2, {}, 0, kNone},
      {"the serial number at its port", 2, {{P2, S2, U, 1}, {P, S, U, 2}}, 3, 1},
      {"the serial number at another port", 2, {{P2, S2, U, 1}, {P2, S, U, 2}}, 2, 1},
      {"the serial number before Phys and USB id", 2, {{P2, S, U2, 1}, {P, S2, U, 2}}, 2, 0},
      {"the last of two, at another port", 2, {{P, S, U, 1}, {P2, S, U, 2}}, 2, 1},
      {"the last of two, at its port", 2, {{P2, S, U, 1}, {P, S, U2, 2}}, 3, 1},
      {"at a port within a longer one", 2, {{longer, S, U2, 1}}, 3, 0},
      {"a number within a longer field", 2, {{P2, S + "9", U2, 1}}, 2, 0},
      {"a shorter number is another", 2, {{P2, S.substr(1), U2, 1}}, 0, kNone},
      {"case counts", 2, {{P2, "A1B2C3D4E5F60708", U2, 1}}, 0, kNone},
      {"nothing alike", 2, {{P2, S2, U2, 1}}, 0, kNone},
  };
  for (const Row& row : rows) expect_rule(row);
}

TEST_F(RecordListReadRulesTest, OfTheFallbackPasses) {
  const Row rows[] = {
      {"pass 0, Phys with USB id, before Phys alone",
       2,
       {{P2, S2, U, 1}, {P, S2, U2, 2}, {P, S2, U, 3}, {P, S2, U2, 4}},
       1,
       2},
      {"pass 0, the first of two", 2, {{P, S2, U, 1}, {P, S2, U, 2}}, 1, 0},
      {"pass 1, Phys, before the USB id", 2, {{P2, S2, U, 1}, {P, S2, U2, 2}}, 1, 1},
      {"pass 1, the first of two", 2, {{P, S2, U2, 1}, {P, S2, U2, 2}}, 1, 0},
      {"pass 2, the USB id, copies", 2, {{P2, S2, U2, 1}, {P2, S2, U, 2}}, 1, 1, true},
      {"pass 2, the first of two", 2, {{P2, S2, U, 1}, {P2, S2, U, 2}}, 1, 0, true},
      {"pass 2, within a longer field", 2, {{P2, S2, U + "X", 1}}, 1, 0, true},
      {"case counts in USB ids", 2, {{P2, S2, "2575_87ab", 1}}, 0, kNone},
  };
  for (const Row& row : rows) expect_rule(row);
}

TEST_F(RecordListReadRulesTest, OfOtherModes) {
  for (const int mode : {0, 3, -1}) {
    SCOPED_TRACE(mode);
    const Row rows[] = {
        {"the serial number is no key", mode, {{P2, S, U2, 1}}, 0, kNone},
        {"pass 0", mode, {{P, S, U2, 1}, {P, S2, U, 2}}, 1, 1},
        {"pass 1, the first of two", mode, {{P, S, U2, 1}, {P, S, U2, 2}}, 1, 0},
        {"pass 2", mode, {{P2, S, U, 1}}, 1, 0, true},
    };
    for (const Row& row : rows) expect_rule(row);
  }
}

TEST_F(RecordListReadTest, TheCopyForAReplacementPanelIsToldInTheMiddle) {
  const std::string path = data_file(".pctpbin");
  const Records stored = {{P2, S2, U, 7}};
  write_records(path, stored);
  EXPECT_EQ(fetch(path, 2), (Fetched{1, 7}));
  EXPECT_EQ(
      told(),
      joined_lines(
          {heading(path),
           listed(stored),
           found(path, 0),
           {"==================DevNum:0=================", "Write_Binary_File FileName:" + path,
            "Write_Binary_File phys:" + P, "Write_Binary_File SN:" + S + " USB_ID:" + U,
            "====================end=====================",
            "*** Write_Binary_File USB_ID:" + U + " match ***",
            "*** Write_Binary_File MatchCnt:-1 MemCnt:1***", "write to end line MemCnt:1",
            "*** Write_Binary_File MemCnt:2 ***", "Write_Binary_File fwrite x[0].phys:" + P2,
            "Write_Binary_File fwrite x[1].phys:" + P, "Read_Binary_File----end"}}));
}

TEST_F(RecordListReadTest, TheCopyIsMadeInTheModeOfTheRead) {
  const std::string path = data_file(".restpbin");
  for (const int mode : {1, 2, 5}) {
    SCOPED_TRACE(mode);
    write_records(path, {{P2, S2, U, 7}});
    clear_trace();
    EXPECT_EQ(fetch(path, mode), (Fetched{1, 7}));
    const Lines lines = told();
    const std::string passed =
        "*** Write_Binary_File bin[0] phys:" + P2 + " , SN:" + S2 + " not match***";
    EXPECT_EQ(std::count(lines.begin(), lines.end(), passed), mode == 5 ? 1 : 0);
  }
}

TEST_F(RecordListReadTest, AReplacementPanelThenHasSettingsOfItsOwn) {
  const std::string path = data_file(".pctpbin");
  write_records(path, {{P2, S2, U, 7}});
  EXPECT_EQ(fetch(path, 2), (Fetched{1, 7}));
  EXPECT_EQ(fetch(path, 2), (Fetched{3, 7}));
  EXPECT_EQ(store(path, 2), 1U);
  EXPECT_EQ(fetch(path, 2), (Fetched{3, kNewFill}));
  expect_records(path, {{P2, S2, U, 7}, panel()});
  set_entry(1, {P2, S2, U});
  EXPECT_EQ(fetch(path, 2, 1), (Fetched{3, 7}));
}

TEST_F(RecordListReadTest, AReplacementPanelReadsWhereNoCopyCanBeKept) {
  const std::string path = data_file(".pctpbin");
  Records full = other_panels(255);
  full.push_back({P2, S2, U, 7});
  write_records(path, full);
  EXPECT_EQ(fetch(path, 2), (Fetched{1, 7}));
  expect_records(path, full);
  EXPECT_EQ(fetch(path, 2), (Fetched{1, 7}));

  write_records(path, {{P2, S2, U, 7}});
  fail_file_call("write", path + ".*", ENOSPC);
  EXPECT_EQ(fetch(path, 2), (Fetched{1, 7}));
  expect_records(path, {{P2, S2, U, 7}});
}

TEST_F(RecordListReadTest, TheReaderTakesTheLastRecordAndTheWriterTheFirst) {
  const std::string path = data_file(".restpbin");
  write_records(path, {{P, S, U, 1}, {P2, S, U, 2}, {P, S, U, 3}});
  EXPECT_EQ(store(path, 1), 1U);
  expect_records(path, {panel(), {P2, S, U, 2}, {P, S, U, 3}});
  EXPECT_EQ(fetch(path, 1), (Fetched{1, 3}));
}

TEST_F(RecordListReadTest, APanelThatMovedIsKnownByItsNumberAndThenAtItsPort) {
  const std::string path = data_file(".pctpbin");
  write_records(path, {{P2, S2, U, 1}, panel(2)});
  set_entry(0, {"usb-7/input0", S, U});
  EXPECT_EQ(fetch(path, 2), (Fetched{2, 2}));
  EXPECT_EQ(store(path, 2), 1U);
  EXPECT_EQ(fetch(path, 2), (Fetched{3, kNewFill}));
}

TEST_F(RecordListReadTest, AMissingFileIsTold) {
  for (const char* name : {".pctpbin", ".restpbin"}) {
    const std::string path = data_file(name);
    clear_trace();
    EXPECT_EQ(fetch(path, 2), (Fetched{0, kUntouched}));
    EXPECT_EQ(told(),
              joined_lines({heading(path), {"Read_Binary_File open FileName:" + path + " error"}}));
    EXPECT_FALSE(std::filesystem::exists(path));
  }
}

TEST_F(RecordListReadTest, ADeviceWithoutAPhysReadsNothing) {
  TouchDevice[0].Phys[0] = '\0';
  const std::string path = data_file(".pctpbin");
  write_records(path, {{"", S, U, 1}});
  EXPECT_EQ(fetch(path, 2), (Fetched{0, kUntouched}));
  EXPECT_EQ(told(), (Lines{kDashes, "Read_Binary_File FileName:" + path, "Read_Binary_File phys:",
                           "Read_Binary_File SN:" + S + " USB_ID:" + U, kDashes}));
  // The file of a device without a Phys is not even opened.
  std::filesystem::remove(path);
  clear_trace();
  EXPECT_EQ(fetch(path, 1), (Fetched{0, kUntouched}));
  EXPECT_EQ(told().size(), 5U);
}

TEST_F(RecordListReadTest, ThePayloadIsDumpedWhereOneIsFound) {
  const std::string path = data_file(".restpbin");
  write_records(path, {panel(0x5E)});
  const std::string text = captured_stdout([&] { fetch(path, 1); });
  EXPECT_NE(text.find("Read_Binary_File FileName:" + path + " MatchCnt:0\n" +
                      payload_dump("Read_Binary_File mem", 0x5E) +
                      "zelkora DD:Read_Binary_File----end\n"),
            text.npos)
      << text;

  write_records(path, {});
  EXPECT_EQ(captured_stdout([&] { fetch(path, 1); }).find("mem---start"), text.npos);
}

TEST_F(RecordListReadTest, NothingIsToldWithoutDebugging) {
  const std::string path = data_file(".pctpbin");
  write_records(path, {{P2, S2, U, 7}});
  DbgFlag = 0;
  EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(fetch(path, 2), (Fetched{1, 7})); }), "");
}

}  // namespace
