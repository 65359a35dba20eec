// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Loading the current set of a panel: its own, that of a panel like it, or the defaults.
#include "stored_bench.h"

namespace {

using namespace zelkora::test;

class StoredLoadTest : public StoredBench {
 protected:
  struct Row {
    const char* name;
    std::string before;  // the store file
    std::string after;
    ParameterSet set;  // what the panel gets
    int result;
    bool rewritten;
    const char* steps;  // the numbers that the trace tells
  };

  static std::vector<Row> rows_of_good_records();
  static std::vector<Row> rows_of_bad_records();

  void check(const Row& row) {
    SCOPED_TRACE(row.name);
    std::filesystem::remove(kRecords);
    const bool is_new = row.before == kNoFile;
    if (!is_new) write_file(kRecords, row.before);
    clear_trace();
    PCTDevInfo rec{};
    rec.DevNum = kPanel;
    EXPECT_EQ(GetMyHidDeviceParames(&rec), row.result);
    EXPECT_EQ(settings_of(rec), settings_of(host_record(row.set, kOwnNumber)));
    EXPECT_EQ(rec.DevNum, unsigned{kPanel});
    EXPECT_EQ(store_file(kRecords), row.after);
    EXPECT_EQ(store_file(kTemporaryRecords), kNoFile);
    EXPECT_EQ(done(), joined({is_new ? made_world_writable(kRecords) : Lines(),
                              row.rewritten ? notification() : Lines(), told(row.set)}));
    EXPECT_EQ(steps(), row.steps);
    EXPECT_EQ(messages_of({"GetMyHidDeviceParames SetMyHidDeviceParames\n"}).size(),
              row.rewritten ? 1U : 0U);
  }

  // "000 001": the steps that the messages tell.
  std::string steps() const {
    std::string numbers;
    for (const std::string& line : messages_of({"GetMyHidDeviceParames 0"})) {
      numbers += (numbers.empty() ? "" : " ") + line.substr(line.size() - 4, 3);
    }
    return numbers;
  }

  int load(PCTDevInfo& rec) {
    rec.DevNum = kPanel;
    return GetMyHidDeviceParames(&rec);
  }

  Lines load_messages() const {
    return messages_of({"GetMyHidDeviceParames", "***GetMyHid", "GetPCTParamBin"});
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, StoredLoadTest, testing::ValuesIn(kWays), way_name);

std::vector<StoredLoadTest::Row> StoredLoadTest::rows_of_good_records() {
  const std::string own = own_record(loud_set());
  const std::string elsewhere = store_record(moved_keys(), payload(loud_set(), kOwnNumber));
  const std::string replaced = store_record(replaced_keys(), payload(loud_set(), kOtherNumber));
  const std::string like = store_record(like_keys(), payload(loud_set(), kOtherNumber));
  const Keys port_alone{kPhys, digits(kOtherNumber), "1111_2222"};
  return {
      {"its own record", own, own, loud_set(), 3, false, "000"},
      {"its own among others", strange_record() + own + like, strange_record() + own + like,
       loud_set(), 3, false, "000"},
      {"its number at another port", strange_record() + elsewhere, strange_record() + own,
       loud_set(), 1, true, "000"},
      {"another number at its port", replaced + strange_record(), own + strange_record(),
       loud_set(), 1, true, "000 001"},
      {"another number and another USB id at its port",
       store_record(port_alone, payload(loud_set(), kOtherNumber)), own, loud_set(), 1, true,
       "000 001"},
      {"its port, and its number in the block alone",
       store_record(replaced_keys(), payload(loud_set(), kOwnNumber)),
       store_record(replaced_keys(), payload(loud_set(), kOwnNumber)), loud_set(), 1, false, "000"},
      {"another number in the block alone",
       store_record(own_keys(), payload(loud_set(), kOtherNumber)), own, loud_set(), 1, true,
       "000 001"},
      {"another number in the block, at another port",
       store_record(moved_keys(), payload(loud_set(), kOtherNumber)), own, loud_set(), 1, true,
       "000 001"},
      {"a panel of the same USB id elsewhere", like, like + own, loud_set(), 1, true, "000 001"},
  };
}

std::vector<StoredLoadTest::Row> StoredLoadTest::rows_of_bad_records() {
  const std::string defaults = own_record(default_set());
  const std::string bad = spoiled_payload(loud_set(), kOwnNumber);
  const std::string replaced = store_record(replaced_keys(), payload(loud_set(), kOtherNumber));
  const std::string like = store_record(like_keys(), payload(loud_set(), kOtherNumber));
  const Keys number_alone{kOtherPhys, digits(kOwnNumber), "1111_2222"};
  return {
      {"no file", kNoFile, defaults, default_set(), 1, true, "003"},
      {"an empty file", "", defaults, default_set(), 1, true, "003"},
      {"strangers only", strange_record(), strange_record() + defaults, default_set(), 1, true,
       "003"},
      {"its own record spoiled", store_record(own_keys(), bad), defaults, default_set(), 1, true,
       "003"},
      {"its own record erased", store_record(own_keys(), erased_payload()), defaults, default_set(),
       1, true, "003"},
      {"its own record all zero", store_record(own_keys(), std::string(64, '\0')), defaults,
       default_set(), 1, true, "003"},
      {"its port's record spoiled", store_record(replaced_keys(), bad), defaults, default_set(), 1,
       true, "003"},
      {"a spoiled one of the same USB id", store_record(like_keys(), bad),
       store_record(like_keys(), bad) + defaults, default_set(), 1, true, "003"},
      {"its number spoiled, its port good", store_record(number_alone, bad) + replaced,
       own_record(loud_set()) + replaced, loud_set(), 1, true, "002"},
      // The copy made for the lookup stays behind the record that is written.
      {"its number spoiled, a panel of the same USB id good",
       store_record(number_alone, bad) + like,
       own_record(loud_set()) + like + store_record(own_keys(), payload(loud_set(), kOtherNumber)),
       loud_set(), 1, true, "002"},
  };
}

TEST_P(StoredLoadTest, GoodRecordsAreFoundByNumberPortOrUsbId) {
  for (const Row& row : rows_of_good_records()) check(row);
}

TEST_P(StoredLoadTest, BadRecordsLeadToOneLikeThemAndToTheDefaults) {
  for (const Row& row : rows_of_bad_records()) check(row);
}

TEST_P(StoredLoadTest, TheDefaultsAreThoseOfTheDefaultsFile) {
  write_file(data_file("TouchUtil.ini"),
             "[Default]\nBeepOn=3\nPlayMethod=2\nFrequency=3000\nDuration=50\nScreenNumber=10\n"
             "ClickMode=2\nDisableRight=1\nRightTime=7\nRightRange=12\nDigitizer=1\n"
             "DisableReport=1\nHideCursor=1\n");
  // What the file cannot say.
  ParameterSet set = loud_set();
  set.record.RightUp = set.record.FlashByte31 = 0;
  set.tail[7] = 0x1A;
  set.tail[11] = 0x00;
  set.told[1] = 0x1A;
  check({"defaults file", kNoFile, own_record(set), set, 1, true, "003"});
}

TEST_P(StoredLoadTest, TheFirstByteOfAnotherNumberEndsTheComparison) {
  for (size_t at = 0; at < kOwnNumber.size(); ++at) {
    SCOPED_TRACE(at);
    SerialNumber number = kOwnNumber;
    number[at] ^= 0x80;
    write_file(kRecords, store_record(own_keys(), payload(loud_set(), number)));
    clear_trace();
    PCTDevInfo rec{};
    EXPECT_EQ(load(rec), 1);
    EXPECT_EQ(messages_of({"GetMyHidDeviceParames SN["}).size(), at + 1);
    EXPECT_EQ(steps(), "000 001");
    EXPECT_EQ(read_file(kRecords), own_record(loud_set()));
  }
}

TEST_P(StoredLoadTest, FieldsOfNoParameterStay) {
  write_file(kRecords, own_record(quiet_set()));
  PCTDevInfo rec;
  std::memset(&rec, 0xEE, sizeof rec);
  PCTDevInfo expected = rec;
  const PCTDevInfo loaded = host_record(quiet_set(), kOwnNumber);
  std::memcpy(&expected.Digitizer, &loaded.Digitizer,
              offsetof(PCTDevInfo, Reserved) - offsetof(PCTDevInfo, Digitizer));
  expected.DevNum = kPanel;
  EXPECT_EQ(load(rec), 3);
  EXPECT_EQ(std::memcmp(&rec, &expected, sizeof rec), 0);
}

TEST_P(StoredLoadTest, TheStoredSetIsRepaired) {
  ParameterSet stored = loud_set();
  stored.tail[2] = 0x0B;
  stored.tail[3] = 0xB9;  // 3001 Hz
  write_file(kRecords, own_record(stored));
  PCTDevInfo rec{};
  EXPECT_EQ(load(rec), 3);
  EXPECT_EQ(rec.Frequency, 1000U);
  EXPECT_EQ(read_file(kRecords), own_record(stored)) << "but not in the file";
}

TEST_P(StoredLoadTest, WhatCannotBeWrittenFailsAndTellsTheControllerNothing) {
  forbid(kRecords);
  PCTDevInfo rec{};
  EXPECT_EQ(load(rec), 0);
  EXPECT_EQ(settings_of(rec), settings_of(host_record(default_set(), kOwnNumber)));
  EXPECT_EQ(done(), notification());
}

TEST_P(StoredLoadTest, ARecordThatCannotBeRewrittenStaysAndFails) {
  const std::string replaced = store_record(replaced_keys(), payload(loud_set(), kOtherNumber));
  write_file(kRecords, replaced);
  fail_file_call("open", kRecords, EACCES);
  PCTDevInfo rec{};
  EXPECT_EQ(load(rec), 0);
  EXPECT_EQ(settings_of(rec), settings_of(host_record(loud_set(), kOwnNumber)));
  EXPECT_EQ(read_file(kRecords), replaced);
  EXPECT_EQ(done(), notification());
}

TEST_P(StoredLoadTest, APanelWithoutAPathHasNoRecord) {
  entry.Phys[0] = '\0';
  write_file(kRecords, own_record(loud_set()));
  PCTDevInfo rec{};
  EXPECT_EQ(load(rec), 0);
  EXPECT_EQ(settings_of(rec), settings_of(host_record(default_set(), kOwnNumber)));
  EXPECT_EQ(read_file(kRecords), own_record(loud_set()));
  EXPECT_EQ(done(), notification());
}

TEST_P(StoredLoadTest, AControllerThatDoesNotListenChangesNoResult) {
  write_file(kRecords, own_record(loud_set()));
  fail_sends(1);
  PCTDevInfo rec{};
  EXPECT_EQ(load(rec), 3);
  EXPECT_TRUE(device.received.empty());
}

TEST_P(StoredLoadTest, TheMessagesOfAPanelsOwnRecord) {
  write_file(kRecords, own_record(loud_set()));
  PCTDevInfo rec{};
  load(rec);
  EXPECT_EQ(load_messages(),
            debug_messages({
                "GetPCTParamBin Read_Binary_File ret:3 mode:2\n",
                "GetMyHidDeviceParames GetPCTParamBin SN_MODE ret:3\n",
                "GetMyHidDeviceParames 000\n",
                "GetMyHidDeviceParames SN[0]0x10<->0x10\n",
                "GetMyHidDeviceParames SN[1]0x21<->0x21\n",
                "GetMyHidDeviceParames SN[2]0x32<->0x32\n",
                "GetMyHidDeviceParames SN[3]0x43<->0x43\n",
                "GetMyHidDeviceParames SN[4]0x54<->0x54\n",
                "GetMyHidDeviceParames SN[5]0x65<->0x65\n",
                "GetMyHidDeviceParames SN[6]0x76<->0x76\n",
                "GetMyHidDeviceParames SN[7]0x87<->0x87\n",
                "***GetMyHidDeviceParames SN:1021324354657687\n***",
                "***GetMyHidDeviceParames beep:3 Play:2 freq:3000 dura:50 scrno:9 click:2 right:1 "
                "time:7 range:12 up:1 DisableReport:1 Digitizer:1 HideCursor:1\n***",
            }));
}

TEST_P(StoredLoadTest, TheMessagesOfAnotherPanelsRecord) {
  write_file(kRecords, store_record(replaced_keys(), payload(quiet_set(), kOtherNumber)));
  PCTDevInfo rec{};
  load(rec);
  EXPECT_EQ(load_messages(),
            debug_messages({
                "GetPCTParamBin Read_Binary_File ret:1 mode:2\n",
                "GetMyHidDeviceParames GetPCTParamBin SN_MODE ret:1\n",
                "GetMyHidDeviceParames 000\n",
                "GetMyHidDeviceParames SN[0]0x10<->0xF0\n",
                "GetMyHidDeviceParames 001\n",
                "***GetMyHidDeviceParames SN:1021324354657687\n***",
                "***GetMyHidDeviceParames beep:0 Play:0 freq:500 dura:5 scrno:0 click:1 right:0 "
                "time:3 range:5 up:0 DisableReport:0 Digitizer:0 HideCursor:0\n***",
                "GetMyHidDeviceParames SetMyHidDeviceParames\n",
            }));
}

TEST_P(StoredLoadTest, TheMessagesOfASpoiledRecord) {
  write_file(kRecords, store_record(own_keys(), spoiled_payload(loud_set(), kOwnNumber)));
  PCTDevInfo rec{};
  load(rec);
  EXPECT_EQ(load_messages(),
            debug_messages({
                "GetPCTParamBin Read_Binary_File ret:3 mode:2\n",
                "GetPCTParamBin DecodeParames checksum fail\n",
                "GetMyHidDeviceParames GetPCTParamBin SN_MODE ret:0\n",
                "GetPCTParamBin Read_Binary_File ret:1 mode:3\n",
                "GetPCTParamBin DecodeParames checksum fail\n",
                "GetMyHidDeviceParames 003\n",
                "***GetMyHidDeviceParames SN:1021324354657687\n***",
                "***GetMyHidDeviceParames beep:1 Play:1 freq:2000 dura:10 scrno:0 click:0 right:0 "
                "time:4 range:10 up:0 DisableReport:0 Digitizer:0 HideCursor:0\n***",
                "GetMyHidDeviceParames SetMyHidDeviceParames\n",
            }));
}

TEST_P(StoredLoadTest, TheMessagesOfASpoiledRecordBesideAGoodOneOfThePort) {
  write_file(kRecords, store_record(moved_keys(), spoiled_payload(loud_set(), kOwnNumber)) +
                           store_record(replaced_keys(), payload(quiet_set(), kOtherNumber)));
  PCTDevInfo rec{};
  load(rec);
  EXPECT_EQ(load_messages(),
            debug_messages({
                "GetPCTParamBin Read_Binary_File ret:2 mode:2\n",
                "GetPCTParamBin DecodeParames checksum fail\n",
                "GetMyHidDeviceParames GetPCTParamBin SN_MODE ret:0\n",
                "GetPCTParamBin Read_Binary_File ret:1 mode:3\n",
                "GetMyHidDeviceParames 002\n",
                "***GetMyHidDeviceParames SN:1021324354657687\n***",
                "***GetMyHidDeviceParames beep:0 Play:0 freq:500 dura:5 scrno:0 click:1 right:0 "
                "time:3 range:5 up:0 DisableReport:0 Digitizer:0 HideCursor:0\n***",
                "GetMyHidDeviceParames SetMyHidDeviceParames\n",
            }));
}

}  // namespace
