// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Blocks and sets to and from the two store files.
#include "stored_bench.h"

namespace {

using namespace zelkora::test;

// Nothing here speaks to the controller, but for what a test says.
class StoredParamsTest : public StoredBench {
 protected:
  struct Row {
    const char* name;
    Keys keys;
    std::string payload;
    int read;   // what reading by serial number comes to,
    int alike;  // and reading by likeness alone
  };
  static std::vector<Row> rows() {
    return {
        {"its own", own_keys(), payload(loud_set(), kOwnNumber), 3, 1},
        {"its number elsewhere", moved_keys(), payload(loud_set(), kOwnNumber), 2, 1},
        {"its port", replaced_keys(), payload(loud_set(), kOwnNumber), 1, 1},
        {"its USB id", like_keys(), payload(loud_set(), kOwnNumber), 1, 1},
        {"a stranger", strange_keys(), payload(loud_set(), kOwnNumber), 0, 0},
        {"spoiled", own_keys(), spoiled_payload(loud_set(), kOwnNumber), 0, 0},
        {"erased", own_keys(), erased_payload(), 0, 0},
        {"all zero", own_keys(), std::string(64, '\0'), 0, 0},
    };
  }

  // A block whose bytes are all the same, unlike every block of a test.
  static Bytes untouched() { return Bytes(ZELKORA_PCT_BLOCK, 0xEE); }
  static Bytes loud_block() { return plain_block(loud_set(), kOwnNumber); }

  static PCTDevInfo temporary_record() {
    PCTDevInfo rec = host_record(quiet_set(), kOwnNumber);
    rec.DevNum = kPanel;
    return rec;
  }
  static std::string stored(const std::string& payload) {
    return store_record(own_keys(), payload);
  }

  // Writes over a file that is there and cannot be opened for it.
  void refuse_writing(const char* path) { fail_file_call("open", path, EACCES); }
};
INSTANTIATE_TEST_SUITE_P(Pct, StoredParamsTest, testing::Values(kWays[3]), way_name);

TEST_P(StoredParamsTest, ABlockIsStoredEncodedWithZerosBehindIt) {
  EXPECT_EQ(SetPCTParamBin(kPanel, loud_block().data()), 1);
  EXPECT_EQ(read_file(kRecords), own_record(loud_set()));
  EXPECT_EQ(store_file(kTemporaryRecords), kNoFile);
  EXPECT_EQ(done(), made_world_writable(kRecords));
  EXPECT_EQ(host.encode_argument, 0);
}

TEST_P(StoredParamsTest, ATemporaryBlockIsStoredInItsOwnFile) {
  EXPECT_EQ(SetPCTParamTempBin(kPanel, loud_block().data()), 1);
  EXPECT_EQ(read_file(kTemporaryRecords), own_record(loud_set()));
  EXPECT_EQ(store_file(kRecords), kNoFile);
  EXPECT_EQ(done(), made_world_writable(kTemporaryRecords));
}

TEST_P(StoredParamsTest, ABlockGoesOverTheRecordOfItsSerialNumber) {
  const std::string replaced = store_record(replaced_keys(), payload(quiet_set(), kOtherNumber));
  const std::string moved = store_record(moved_keys(), payload(quiet_set(), kOwnNumber));
  for (const char* path : {kRecords, kTemporaryRecords}) {
    write_file(path, replaced + moved);
    const bool temporary = path == kTemporaryRecords;
    EXPECT_EQ((temporary ? SetPCTParamTempBin : SetPCTParamBin)(kPanel, loud_block().data()), 1);
    EXPECT_EQ(read_file(path), replaced + own_record(loud_set()));
  }
}

TEST_P(StoredParamsTest, ABlockThatCannotBeStoredFails) {
  forbid(kRecords);
  forbid(kTemporaryRecords);
  EXPECT_EQ(SetPCTParamBin(kPanel, loud_block().data()), 0);
  EXPECT_EQ(SetPCTParamTempBin(kPanel, loud_block().data()), 0);
  EXPECT_EQ(DelPCTParamTempBin(kPanel), 0);
}

TEST_P(StoredParamsTest, ABlockIsReadFromTheRecordThatFitsBest) {
  for (const Row& row : rows()) {
    for (const int mode : {2, 3}) {
      SCOPED_TRACE(row.name + std::to_string(mode));
      write_file(kRecords, store_record(row.keys, row.payload));
      clear_trace();
      const int result = mode == 2 ? row.read : row.alike;
      Bytes plain = untouched();
      EXPECT_EQ(GetPCTParamBin(kPanel, plain.data(), mode), result);
      EXPECT_EQ(plain, result != 0 ? loud_block() : untouched());
      EXPECT_EQ(messages_of({"GetPCTParamBin Read_Binary_File"}).size(), 1U);
      EXPECT_EQ(done(), Lines());
    }
  }
}

TEST_P(StoredParamsTest, ATemporaryBlockIsReadBySerialNumber) {
  // The other file must not count.
  write_file(kRecords, own_record(quiet_set()));
  for (const Row& row : rows()) {
    SCOPED_TRACE(row.name);
    write_file(kTemporaryRecords, store_record(row.keys, row.payload));
    Bytes plain = untouched();
    EXPECT_EQ(GetPCTParamTempBin(kPanel, plain.data()), row.read);
    EXPECT_EQ(plain, row.read != 0 ? loud_block() : untouched());
  }
}

TEST_P(StoredParamsTest, WithoutAFileThereIsNoBlock) {
  Bytes plain = untouched();
  EXPECT_EQ(GetPCTParamBin(kPanel, plain.data(), 2), 0);
  EXPECT_EQ(GetPCTParamBin(kPanel, plain.data(), 3), 0);
  EXPECT_EQ(GetPCTParamTempBin(kPanel, plain.data()), 0);
  EXPECT_EQ(plain, untouched());
  EXPECT_EQ(messages_of({"GetPCTParamBin"}),
            debug_messages({"GetPCTParamBin Read_Binary_File ret:0 mode:2\n",
                            "GetPCTParamBin Read_Binary_File ret:0 mode:3\n",
                            "GetPCTParamBin Read_Binary_File ret:0\n"}));
}

TEST_P(StoredParamsTest, AChecksumThatIsWrongIsTold) {
  write_file(kRecords, stored(spoiled_payload(loud_set(), kOwnNumber)));
  write_file(kTemporaryRecords, stored(spoiled_payload(loud_set(), kOwnNumber)));
  Bytes plain = untouched();
  GetPCTParamBin(kPanel, plain.data(), 2);
  GetPCTParamTempBin(kPanel, plain.data());
  EXPECT_EQ(messages_of({"GetPCTParamBin"}),
            debug_messages({"GetPCTParamBin Read_Binary_File ret:3 mode:2\n",
                            "GetPCTParamBin DecodeParames checksum fail\n",
                            "GetPCTParamBin Read_Binary_File ret:3\n",
                            "GetPCTParamBin DecodeParames checksum fail\n"}));
}

TEST_P(StoredParamsTest, ATemporaryBlockIsErasedWithOnes) {
  write_file(kTemporaryRecords, strange_record() + own_record(loud_set()));
  EXPECT_EQ(DelPCTParamTempBin(kPanel), 1);
  EXPECT_EQ(read_file(kTemporaryRecords), strange_record() + stored(erased_payload()));
  EXPECT_EQ(store_file(kRecords), kNoFile);
  EXPECT_EQ(done(), Lines());
}

// --- the sets of records ---

TEST_P(StoredParamsTest, TheCurrentSetIsStoredAndTheDriverTold) {
  PCTDevInfo rec = host_record(loud_set(), kOwnNumber);
  rec.DevNum = kPanel;
  EXPECT_EQ(SetMyHidDeviceParames(&rec), 1);
  EXPECT_EQ(read_file(kRecords), own_record(loud_set()));
  EXPECT_EQ(store_file(kTemporaryRecords), kNoFile);
  EXPECT_EQ(done(), joined({made_world_writable(kRecords), notification()}));
}

TEST_P(StoredParamsTest, TheSetIsStoredAsItIs) {
  PCTDevInfo rec = host_record(loud_set(), kOtherNumber);
  rec.DevNum = kPanel;
  rec.POSEnable = rec.HidEnable = rec.SyncFlag = 0;
  rec.Frequency = 3001;
  ParameterSet expected = loud_set();
  expected.tail[3] = 0xB9;
  expected.tail[6] = 0x00;
  expected.tail[7] = 0x0E;
  const std::string record = store_record(own_keys(), payload(expected, kOtherNumber));
  EXPECT_EQ(SetMyHidDeviceParames(&rec), 1);
  EXPECT_EQ(read_file(kRecords), record);
  EXPECT_EQ(SetMyHidDeviceTempParames(&rec), 1);
  EXPECT_EQ(read_file(kTemporaryRecords), record);
}

TEST_P(StoredParamsTest, ACurrentSetThatCannotBeStoredIsToldAllTheSame) {
  forbid(kRecords);
  PCTDevInfo rec = temporary_record();
  EXPECT_EQ(SetMyHidDeviceParames(&rec), 0);
  EXPECT_EQ(done(), notification());
}

TEST_P(StoredParamsTest, WithoutADisplayTheCurrentSetIsStored) {
  x.reachable = false;
  PCTDevInfo rec = host_record(loud_set(), kOwnNumber);
  rec.DevNum = kPanel;
  EXPECT_EQ(SetMyHidDeviceParames(&rec), 1);
  EXPECT_EQ(read_file(kRecords), own_record(loud_set()));
  EXPECT_EQ(done(), joined({made_world_writable(kRecords), {"XOpenDisplay"}}));
  EXPECT_EQ(messages().back(), "EE:** Can't open XDisplay **\n");
}

TEST_P(StoredParamsTest, TheTemporarySetIsStoredInSilence) {
  PCTDevInfo rec = host_record(loud_set(), kOwnNumber);
  rec.DevNum = kPanel;
  EXPECT_EQ(SetMyHidDeviceTempParames(&rec), 1);
  EXPECT_EQ(read_file(kTemporaryRecords), own_record(loud_set()));
  EXPECT_EQ(store_file(kRecords), kNoFile);
  EXPECT_EQ(done(), made_world_writable(kTemporaryRecords));
}

TEST_P(StoredParamsTest, ATemporarySetThatCannotBeStoredFails) {
  forbid(kTemporaryRecords);
  PCTDevInfo rec = temporary_record();
  EXPECT_EQ(SetMyHidDeviceTempParames(&rec), 0);
  EXPECT_EQ(done(), Lines());
}

TEST_P(StoredParamsTest, TheTemporarySetIsFetchedFromWhateverRecordHasItsNumber) {
  for (const Row& row : rows()) {
    SCOPED_TRACE(row.name);
    write_file(kTemporaryRecords, store_record(row.keys, row.payload));
    clear_trace();
    PCTDevInfo rec = temporary_record();
    EXPECT_EQ(GetMyHidDeviceTempParames(&rec), row.read);
    EXPECT_EQ(settings_of(rec),
              settings_of(host_record(row.read != 0 ? loud_set() : quiet_set(), kOwnNumber)));
    EXPECT_EQ(rec.DevNum, unsigned{kPanel});
    EXPECT_EQ(done(), Lines());
    EXPECT_EQ(store_file(kRecords), kNoFile);
  }
}

TEST_P(StoredParamsTest, TheTemporarySetOfAnotherPanelIsHandedOutAsAFailure) {
  for (size_t at = 0; at < kOwnNumber.size(); ++at) {
    SCOPED_TRACE(at);
    SerialNumber number = kOwnNumber;
    number[at] ^= 1;
    write_file(kTemporaryRecords, stored(payload(loud_set(), number)));
    PCTDevInfo rec = temporary_record();
    EXPECT_EQ(GetMyHidDeviceTempParames(&rec), 0);
    EXPECT_EQ(settings_of(rec), settings_of(host_record(loud_set(), number)));
  }
}

TEST_P(StoredParamsTest, TheNumberAskedForIsThatOfTheRecord) {
  std::ranges::copy(kOtherNumber, entry.SN);
  write_file(kTemporaryRecords, store_record(replaced_keys(), payload(loud_set(), kOwnNumber)));
  PCTDevInfo rec = temporary_record();
  EXPECT_EQ(GetMyHidDeviceTempParames(&rec), 3);
}

TEST_P(StoredParamsTest, TheMessagesOfFetchingTheTemporarySet) {
  PCTDevInfo rec = temporary_record();
  GetMyHidDeviceTempParames(&rec);
  write_file(kTemporaryRecords, own_record(loud_set()));
  GetMyHidDeviceTempParames(&rec);
  EXPECT_EQ(messages_of({"GetMyHidDeviceTempParames"}),
            debug_messages({
                "GetMyHidDeviceTempParames DevNum:2\n",
                "GetMyHidDeviceTempParames GetPCTParamTempBin checksum:0x0 fail\n",
                "GetMyHidDeviceTempParames DevNum:2\n",
                "GetMyHidDeviceTempParames GetPCTParamTempBin checksum:0x3 pass\n",
            }));
}

TEST_P(StoredParamsTest, OnlyATemporarySetThatIsThereIsErased) {
  struct {
    const char* name;
    std::string before, after;
    int result;
  } const kRows[] = {
      {"no file", kNoFile, kNoFile, 0},
      {"a stranger", strange_record(), strange_record(), 0},
      {"its own", strange_record() + own_record(loud_set()),
       strange_record() + stored(erased_payload()), 1},
      {"erased before", stored(erased_payload()), stored(erased_payload()), 1},
      {"its number elsewhere", store_record(moved_keys(), payload(loud_set(), kOwnNumber)),
       stored(erased_payload()), 1},
      // Looking it up made a copy, and the copy is what goes.
      {"a panel of the same USB id", store_record(like_keys(), payload(loud_set(), kOtherNumber)),
       store_record(like_keys(), payload(loud_set(), kOtherNumber)) + stored(erased_payload()), 1},
  };
  PCTDevInfo rec = temporary_record();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    if (row.before != kNoFile) write_file(kTemporaryRecords, row.before);
    EXPECT_EQ(DelMyHidDeviceTempParames(&rec), row.result);
    EXPECT_EQ(store_file(kTemporaryRecords), row.after);
  }
  EXPECT_EQ(store_file(kRecords), kNoFile);
  EXPECT_EQ(done(), Lines());
}

TEST_P(StoredParamsTest, ATemporarySetThatCannotBeErasedFails) {
  write_file(kTemporaryRecords, own_record(loud_set()));
  refuse_writing(kTemporaryRecords);
  PCTDevInfo rec = temporary_record();
  EXPECT_EQ(DelMyHidDeviceTempParames(&rec), 0);
  EXPECT_EQ(read_file(kTemporaryRecords), own_record(loud_set()));
}

TEST_P(StoredParamsTest, ARecordWithoutEndsIsNoHarm) {
  const std::string full(347, 'x');
  write_file(kRecords, full + full.substr(0, 200));
  write_file(kTemporaryRecords, full);
  PCTDevInfo rec{};
  rec.DevNum = kPanel;
  EXPECT_EQ(GetMyHidDeviceTempParames(&rec), 0);
  EXPECT_EQ(GetMyHidDeviceParames(&rec), 1);
  EXPECT_EQ(read_file(kRecords), full + own_record(default_set()));
}

}  // namespace
