// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Which record a device's parameters are stored in, and what is told on the way.
#include <algorithm>
#include <filesystem>

#include "store_bench.h"

namespace {

using zelkora::test::captured_stdout;
using zelkora::test::data_file;
using zelkora::test::joined_lines;
using zelkora::test::Lines;
using zelkora::test::payload_dump;
using zelkora::test::Records;

constexpr int kAtTheEnd = -1;

class RecordListWriteTest : public zelkora::test::StoreBench {
 protected:
  static inline const std::string P = kPhys, S = kSerialNumber, U = kUsbId;
  static inline const std::string P2 = kOtherPhys, S2 = kOtherSerialNumber, U2 = kOtherUsbId;

  // Everything that is told of a write to an existing file, but for how the record was found.
  static Lines heading(const std::string& path) {
    Lines lines = {"==================DevNum:0=================",
                   "Write_Binary_File FileName:" + path, "Write_Binary_File phys:" + P};
    if (path.find("pct") != path.npos) {
      lines.push_back("Write_Binary_File SN:" + S + " USB_ID:" + U);
    }
    lines.push_back("====================end=====================");
    return lines;
  }
  static Lines outcome(int slot, size_t read, const Records& written) {
    const std::string count = std::to_string(read);
    Lines lines = {"*** Write_Binary_File MatchCnt:" + std::to_string(slot) + " MemCnt:" + count +
                   "***"};
    if (slot == kAtTheEnd) lines.push_back("write to end line MemCnt:" + count);
    return joined_lines({lines, rewritten(written)});
  }
  static Lines rewritten(const Records& written) {
    Lines lines = {"*** Write_Binary_File MemCnt:" + std::to_string(written.size()) + " ***"};
    for (size_t i = 0; i < written.size(); ++i) {
      lines.push_back("Write_Binary_File fwrite x[" + std::to_string(i) +
                      "].phys:" + written[i].phys);
    }
    return lines;
  }
};

class RecordListWriteRulesTest : public RecordListWriteTest {
 protected:
  struct Row {
    const char* name;
    int mode;
    Records stored;
    int slot;
    Lines found;  // what is told of the search
  };

  void expect_rule(const Row& row) {
    SCOPED_TRACE(row.name);
    const std::string path = data_file(".restpbin");
    write_records(path, row.stored);
    clear_trace();
    EXPECT_EQ(store(path, row.mode), 1U);

    Records written = row.stored;
    if (row.slot == kAtTheEnd) {
      written.push_back(panel());
    } else {
      written[static_cast<size_t>(row.slot)] = panel();
    }
    expect_records(path, written);
    EXPECT_EQ(told(), joined_lines({heading(path), row.found,
                                    outcome(row.slot, row.stored.size(), written)}));
  }
};

TEST_F(RecordListWriteRulesTest, OfMode1) {
  const auto match = [](int index, const std::string& phys, const std::string& serial_number) {
    return Lines{"*** Write_Binary_File MatchCnt:" + std::to_string(index) + " phys:" + phys +
                 " , SN:" + serial_number + " phys--match***"};
  };
  const Row rows[] = {
      {"an empty file", 1, {}, kAtTheEnd, {}},
      {"Phys", 1, {{P2, S2, U2, 1}, {P, S2, U2, 2}}, 1, match(1, P, S2)},
      {"the first of two of that Phys", 1, {{P, S2, U2, 1}, {P, S, U, 2}}, 0, match(0, P, S2)},
      {"Phys within a longer one",
       1,
       {{P2, S, U, 1}, {"hub/" + P + ":1", S2, U2, 2}},
       1,
       match(1, "hub/" + P + ":1", S2)},
      {"a shorter Phys is another", 1, {{P.substr(0, P.size() - 1), S2, U2, 1}}, kAtTheEnd, {}},
      {"an empty Phys is another", 1, {{"", S2, U2, 1}}, kAtTheEnd, {}},
      {"case counts", 1, {{"USB-0000:00:14.0-1/input0", S2, U2, 1}}, kAtTheEnd, {}},
      {"the serial number is no key", 1, {{P2, S, U2, 1}}, kAtTheEnd, {}},
      {"the USB id is only noticed",
       1,
       {{P2, S, U, 1}, {P2, S2, U, 2}},
       kAtTheEnd,
       {"*** Write_Binary_File USB_ID:" + U + " match ***"}},
  };
  for (const Row& row : rows) expect_rule(row);
}

TEST_F(RecordListWriteRulesTest, OfMode2) {
  const auto match = [](int index, const std::string& phys, const std::string& serial_number) {
    return Lines{"*** Write_Binary_File MatchCnt:" + std::to_string(index) + " phys:" + phys +
                 " , SN:" + serial_number + " SN--match ***"};
  };
  const Row rows[] = {
      {"an empty file", 2, {}, kAtTheEnd, {}},
      {"the serial number, at another port",
       2,
       {{P2, S2, U2, 1}, {P2, S, U2, 2}},
       1,
       match(1, P2, S)},
      {"the serial number before Phys", 2, {{P, S2, U, 1}, {P2, S, U2, 2}}, 1, match(1, P2, S)},
      {"the first of two of that number", 2, {{P2, S, U2, 1}, {P, S, U, 2}}, 0, match(0, P2, S)},
      {"a number within a longer field", 2, {{P2, S + "9", U2, 1}}, 0, match(0, P2, S + "9")},
      {"a shorter number is another", 2, {{P2, S.substr(1), U2, 1}}, kAtTheEnd, {}},
      {"case counts", 2, {{P2, "A1B2C3D4E5F60708", U2, 1}}, kAtTheEnd, {}},
      {"nothing alike", 2, {{P2, S2, U2, 1}}, kAtTheEnd, {}},
  };
  for (const Row& row : rows) expect_rule(row);
}

TEST_F(RecordListWriteRulesTest, OfTheFallbackPasses) {
  const std::string closest = "*** Write_Binary_File phys:" + P + " USB_ID:" + U + " match ***";
  const std::string close = "*** Write_Binary_File phys:" + P + " match ***";
  const std::string longer = "hub/" + P;
  const Row rows[] = {
      {"pass 0, Phys with USB id, before Phys alone",
       2,
       {{P2, S2, U, 1}, {P, S2, U2, 2}, {P, S2, U, 3}},
       2,
       {closest}},
      {"pass 0, the first of two", 2, {{P, S2, U, 1}, {P, S2, U, 2}}, 0, {closest}},
      {"pass 0, texts within longer ones",
       2,
       {{longer, S2, U + "X", 1}},
       0,
       {"*** Write_Binary_File phys:" + longer + " USB_ID:" + U + "X match ***"}},
      {"pass 1, Phys, before the USB id", 2, {{P2, S2, U, 1}, {P, S2, U2, 2}}, 1, {close}},
      {"pass 1, the first of two", 2, {{P, S2, U2, 1}, {P, S2, U2, 2}}, 0, {close}},
      {"pass 1, Phys within a longer one",
       2,
       {{longer, S2, U2, 1}},
       0,
       {"*** Write_Binary_File phys:" + longer + " match ***"}},
      {"pass 2, the USB id, leaves the other panel's record alone",
       2,
       {{P2, S2, U2, 1}, {P2, S2, U, 2}},
       kAtTheEnd,
       {"*** Write_Binary_File USB_ID:" + U + " match ***"}},
      {"pass 2, the first of two is told, once",
       2,
       {{P2, S2, U + "X", 1}, {P2, S2, U + "Y", 2}},
       kAtTheEnd,
       {"*** Write_Binary_File USB_ID:" + U + "X match ***"}},
      {"case counts in USB ids", 2, {{P2, S2, "2575_87ab", 1}}, kAtTheEnd, {}},
      {"a part of the USB id is nothing", 2, {{P2, S2, U.substr(0, 8), 1}}, kAtTheEnd, {}},
  };
  for (const Row& row : rows) expect_rule(row);
}

TEST_F(RecordListWriteRulesTest, OfOtherModes) {
  const auto passed = [](int index, const std::string& phys, const std::string& serial_number) {
    return "*** Write_Binary_File bin[" + std::to_string(index) + "] phys:" + phys +
           " , SN:" + serial_number + " not match***";
  };
  for (const int mode : {0, 3, -1}) {
    SCOPED_TRACE(mode);
    const Row rows[] = {
        {"an empty file", mode, {}, kAtTheEnd, {}},
        {"the serial number is no key", mode, {{P2, S, U2, 1}}, kAtTheEnd, {passed(0, P2, S)}},
        {"the passes are all there is, pass 0 first",
         mode,
         {{P, S, U2, 1}, {P, S2, U, 2}},
         1,
         {passed(0, P, S), passed(1, P, S2),
          "*** Write_Binary_File phys:" + P + " USB_ID:" + U + " match ***"}},
        {"pass 1",
         mode,
         {{P2, S, U, 1}, {P, S2, U2, 2}},
         1,
         {passed(0, P2, S), passed(1, P, S2), "*** Write_Binary_File phys:" + P + " match ***"}},
        {"pass 2",
         mode,
         {{P2, S2, U, 1}},
         kAtTheEnd,
         {passed(0, P2, S2), "*** Write_Binary_File USB_ID:" + U + " match ***"}},
    };
    for (const Row& row : rows) expect_rule(row);
  }
}

TEST_F(RecordListWriteTest, AMissingFileIsToldAndMade) {
  const std::string path = data_file(".restpbin");
  allow_chmod(path);
  EXPECT_EQ(store(path, 1), 1U);
  EXPECT_EQ(told(), joined_lines({heading(path),
                                  {"Write_Binary_File file not found phys:" + P},
                                  rewritten({panel()})}));
}

TEST_F(RecordListWriteTest, SerialNumberAndUsbIdAreToldOfPctFilesOnly) {
  const struct {
    const char* name;
    bool told;
  } kRows[] = {{".pctpbin", true},  {".pctpbintmp", true},   {".restpbin", false},
               {"pct.d/any", true}, {".restpbintmp", false}, {"PCT", false}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    const std::string path = data_file(row.name);
    write_records(path, {panel(1)});
    clear_trace();
    EXPECT_EQ(store(path, 2), 1U);
    const Lines lines = told();
    EXPECT_EQ(std::count(lines.begin(), lines.end(), "Write_Binary_File SN:" + S + " USB_ID:" + U),
              row.told ? 1 : 0);
    EXPECT_EQ(Lines(lines.begin(), lines.begin() + static_cast<long>(heading(path).size())),
              heading(path));
  }
}

TEST_F(RecordListWriteTest, ThePayloadIsDumped) {
  const std::string path = data_file(".restpbin");
  write_records(path, {panel(1)});
  const std::string text = captured_stdout([&] { store(path, 1); });
  EXPECT_NE(text.find("====================end=====================\n" +
                      payload_dump("Write_Binary_File mem", kNewFill)),
            text.npos)
      << text;
}

TEST_F(RecordListWriteTest, NothingIsToldWithoutDebugging) {
  const std::string path = data_file(".pctpbin");
  write_records(path, {panel(1)});
  DbgFlag = 0;
  EXPECT_EQ(captured_stdout([&] { EXPECT_EQ(store(path, 2), 1U); }), "");
  expect_records(path, {panel()});
}

TEST_F(RecordListWriteTest, ADeviceWithoutAPhysTouchesNoFile) {
  TouchDevice[0].Phys[0] = '\0';
  const std::string path = data_file(".pctpbin");
  const std::string text = captured_stdout([&] { EXPECT_EQ(store(path, 2), 0U); });
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(text,
            "zelkora DD:==================DevNum:0=================\n"
            "zelkora DD:Write_Binary_File FileName:/opt/.touch_panel/.pctpbin\n"
            "zelkora DD:Write_Binary_File phys:\n"
            "zelkora DD:Write_Binary_File SN:a1b2c3d4e5f60708 USB_ID:2575_87AB\n"
            "zelkora DD:====================end=====================\n");

  write_records(path, {{"", S, U, 1}});
  EXPECT_EQ(store(path, 2), 0U);
  expect_records(path, {{"", S, U, 1}});
  EXPECT_EQ(count_of("system"), 0U);
}

TEST_F(RecordListWriteTest, APhysOfOneCharacterIsOne) {
  TouchDevice[0].Phys[0] = 'p';
  TouchDevice[0].Phys[1] = '\0';
  const std::string path = data_file(".pctpbin");
  write_records(path, {panel(1)});
  EXPECT_EQ(store(path, 2), 1U);
}

TEST_F(RecordListWriteTest, EveryEntryOfTheTableHasItsOwnRecord) {
  const std::string path = data_file(".restpbin");
  const Records panels = {{"port-1/a", "0102030405060708", "3A4C_1688", kNewFill},
                          {"port-2/a", "0102030405060708", "3A4C_1688", kNewFill},
                          {"port-3/a", "0102030405060708", "3A4C_1688", kNewFill},
                          {"port-4/a", "0102030405060708", "3A4C_1688", kNewFill}};
  allow_chmod(path);
  for (int i = 0; i < 4; ++i) {
    set_entry(i, panels[static_cast<size_t>(i)]);
    EXPECT_EQ(store(path, 1, i), 1U);
    EXPECT_EQ(told()[0], "==================DevNum:" + std::to_string(i) + "=================");
    clear_trace();
  }
  expect_records(path, panels);
}

TEST_F(RecordListWriteTest, APanelThatMovedTakesItsRecordAlong) {
  const std::string path = data_file(".pctpbin");
  write_records(path, {{P2, S2, U, 1}, panel(2), {"usb-9", "ff00ff00ff00ff00", U, 3}});
  set_entry(0, {"usb-7/input0", S, U});
  EXPECT_EQ(store(path, 2), 1U);
  expect_records(
      path,
      {{P2, S2, U, 1}, {"usb-7/input0", S, U, kNewFill}, {"usb-9", "ff00ff00ff00ff00", U, 3}});
}

}  // namespace
