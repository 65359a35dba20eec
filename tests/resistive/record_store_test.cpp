// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Records in the two store files: their bytes, whose they are, and when the driver hears of it.
#include <cerrno>

#include "record_bench.h"

namespace {

using namespace zelkora::test;

class RecordStoreTest : public RecordBench {
 protected:
  void SetUp() override {
    RecordBench::SetUp();
    add_usb_panel();
  }

  static ResDevInfo frequency_2000() {
    ResDevInfo record{};
    record.Frequency = 2000;
    return record;
  }

  ResDevInfo mine = record_of(0x10);
  ResDevInfo none{};
};

Bytes words_as_bytes(const std::vector<unsigned>& words) {
  Bytes bytes;
  for (const unsigned word : words) append_word(bytes, word);
  return padded(bytes, 64);
}

// --- bytes in the files ---

TEST_F(RecordStoreTest, ARecordOfOneFrequencyToTheByte) {
  ResDevInfo record = frequency_2000();
  EXPECT_EQ(quietly([&] { return SetResAllDataBin(0, &record); }), 1);
  const std::string stored = read_file(kSavedFile);
  ASSERT_EQ(stored.size(), 347U);
  EXPECT_EQ(stored.substr(283), std::string("\0\0\0\0\0\0\x07\xD0", 8) + std::string(24, '\0') +
                                    std::string("\x67\x3D") + std::string(30, '\0'));
  EXPECT_EQ(stored.substr(0, 256), cut_field(kUsbPhys, 256));
  EXPECT_EQ(stored.substr(256, 17), cut_field("0102030405060708", 17));
  EXPECT_EQ(stored.substr(273, 10), cut_field("3A4C_1688", 10));
  EXPECT_EQ(record.Chksum, 0x673DU);
}

TEST_F(RecordStoreTest, EveryFieldToTheByte) {
  EXPECT_EQ(quietly([&] { return SetResAllDataBin(0, &mine); }), 1);
  // Report mode, beep, play method, frequency, duration, right-click time, screen, right click,
  // spare byte, HID mode, four edges, report off, cursor off, checksum.
  const Bytes expected = words_as_bytes({0x1A, 0x11, 0x12, 0x03F8, 0x13, 0x16, 0x14, 0x15, 0x1C,
                                         0x1B, 0x110, 0x210, 0x310, 0x410, 0x17, 0x18, 0x68A0});
  EXPECT_EQ(read_file(kSavedFile), stored_record(kUsbPhys, expected));
}

TEST_F(RecordStoreTest, ANegativeEdgeIsStoredAsItsLowWord) {
  ResDevInfo record{};
  record.EdgeLeft = -5;
  quietly([&] { return SetResAllDataBin(0, &record); });
  const std::string stored = read_file(kSavedFile);
  EXPECT_EQ(stored.substr(283 + 22, 2), "\xFF\xFB");
  EXPECT_EQ(stored.substr(283 + 32, 2), "\x68\x60");
  ResDevInfo read{};
  EXPECT_EQ(quietly([&] { return GetResAllDataBin(0, &read); }), 1);
  EXPECT_EQ(read.EdgeLeft, 65531);
  EXPECT_EQ(read.Chksum, 0x6860U);
}

TEST_F(RecordStoreTest, OnlyTheLowWordOfAFrequencyIsStored) {
  ResDevInfo record{};
  record.Frequency = 0x12345678;
  quietly([&] { return SetResAllDataBin(0, &record); });
  EXPECT_EQ(quietly([&] { return GetResAllDataBin(0, &record); }), 1);
  EXPECT_EQ(record.Frequency, 0x5678U);
}

TEST_F(RecordStoreTest, FirstMoveIsNotStored) {
  mine.FirstMove = 0xEE;
  quietly([&] { return SetResAllDataBin(0, &mine); });
  EXPECT_EQ(read_file(kSavedFile).find('\xEE'), std::string::npos);
  ResDevInfo read{};
  read.FirstMove = 0x77;
  quietly([&] { return GetResAllDataBin(0, &read); });
  EXPECT_EQ(read.FirstMove, 0x77);
}

TEST_F(RecordStoreTest, WhatStandsBehindTheWordsIsClearedByWritingAndIgnoredByReading) {
  Bytes payload = payload_of(mine);
  std::fill(payload.begin() + 34, payload.end(), 0xFF);
  write_file(kSavedFile, stored_record(kUsbPhys, payload));
  ResDevInfo read{};
  EXPECT_EQ(quietly([&] { return GetResAllDataBin(0, &read); }), 1);
  EXPECT_EQ(payload_of(read), payload_of(mine));
  quietly([&] { return SetResAllDataBin(0, &mine); });
  EXPECT_EQ(read_file(kSavedFile), stored_record(kUsbPhys, payload_of(mine)));
}

TEST_F(RecordStoreTest, AWrongChecksumInTheFileIsReadAsItIs) {
  Bytes payload = payload_of(mine);
  payload[32] = 0x12;
  payload[33] = 0x34;
  write_file(kSavedFile, stored_record(kUsbPhys, payload));
  ResDevInfo read{};
  EXPECT_EQ(quietly([&] { return GetResAllDataBin(0, &read); }), 1);
  EXPECT_EQ(read.Chksum, 0x1234U);
  EXPECT_EQ(read.Frequency, mine.Frequency);
}

TEST_F(RecordStoreTest, EveryFieldComesBack) {
  quietly([&] { return SetResAllDataBinTemp(0, &mine); });
  ResDevInfo read{};
  read.FirstMove = mine.FirstMove;
  EXPECT_EQ(quietly([&] { return GetResAllDataBinTemp(0, &read); }), 1);
  EXPECT_EQ(std::memcmp(&read, &mine, sizeof read), 0);
}

// --- whose record it is ---

TEST_F(RecordStoreTest, ARecordIsFoundByItsPhysAmongOthers) {
  const std::string first = stored_record("usb-0000:00:14.0-7/input0", payload_of(none));
  const std::string last = stored_record("usb-0000:00:14.0-9/input0", payload_of(none));
  const Bytes old = payload_of(record_of(0x60));
  write_file(kSavedFile, first + stored_record(kUsbPhys, old) + last);
  ResDevInfo read{};
  EXPECT_EQ(quietly([&] { return GetResAllDataBin(0, &read); }), 1);
  EXPECT_EQ(payload_of(read), old);
  EXPECT_EQ(quietly([&] { return SetResAllDataBin(0, &mine); }), 1);
  EXPECT_EQ(read_file(kSavedFile), first + stored_record(kUsbPhys, payload_of(mine)) + last);
}

TEST_F(RecordStoreTest, TheSerialNumberDoesNotFindARecord) {
  write_file(kSavedFile, stored_record("elsewhere", payload_of(mine), "0000_0000"));
  EXPECT_EQ(quietly([&] { return GetResAllDataBin(0, &none); }), 0);
  EXPECT_EQ(payload_of(none), payload_of({}));
}

TEST_F(RecordStoreTest, AnyFileCanBeNamed) {
  const std::string path = data_file("copy");
  EXPECT_EQ(quietly([&] { return WriteResAllDataBin(path.c_str(), 0, &mine); }), 1);
  EXPECT_EQ(read_file(path), stored_record(kUsbPhys, payload_of(mine)));
  ResDevInfo read{};
  EXPECT_EQ(quietly([&] { return ReadResAllDataBin(path.c_str(), 0, &read); }), 1);
  EXPECT_EQ(payload_of(read), payload_of(mine));
  EXPECT_EQ(quietly([&] { return CleanResAllDataBin(path.c_str(), 0); }), 1);
  EXPECT_EQ(read_file(path), stored_record(kUsbPhys, payload_of(mine)));
  EXPECT_EQ(count_of("mydoled_all_display"), 0U);
}

TEST_F(RecordStoreTest, TheRecordIsThatOfTheEntryAsked) {
  std::snprintf(TouchDevice[3].Phys, sizeof TouchDevice[3].Phys, "usb-9/input0");
  EXPECT_EQ(quietly([&] { return SetResAllDataBin(3, &mine); }), 1);
  EXPECT_EQ(read_file(kSavedFile),
            stored_record("usb-9/input0", payload_of(mine), "0000_0000", "0000000000000000"));
}

TEST_F(RecordStoreTest, AMissingRecordLeavesTheCallersAlone) {
  ResDevInfo read = mine;
  EXPECT_EQ(quietly([&] { return GetResAllDataBin(0, &read); }), 0);
  EXPECT_EQ(quietly([&] { return GetResAllDataBinTemp(0, &read); }), 0);
  EXPECT_EQ(std::memcmp(&read, &mine, sizeof read), 0);
  EXPECT_EQ(steps(), (Lines{"read saved", "read working"}));
}

TEST_F(RecordStoreTest, ADeviceWithoutPhysHasNoRecord) {
  std::memset(TouchDevice[0].Phys, 0, sizeof TouchDevice[0].Phys);
  write_file(kSavedFile, stored_record(kUsbPhys, payload_of(none)));
  ResDevInfo record = mine;
  EXPECT_EQ(GetResAllDataBin(0, &record), 0);
  EXPECT_EQ(messages(), (Lines{"zelkora DD:***ReadResAllDataBin ReadRegBinary phys:***\n"}));
  EXPECT_EQ(SetResAllDataBin(0, &record), 0);
  EXPECT_EQ(SetResAllDataBinTemp(0, &record), 0);
  EXPECT_EQ(GetResAllDataBinTemp(0, &record), 0);
  EXPECT_EQ(MatchResCheckSum(0), 0);
  EXPECT_EQ(steps(), Lines());
  EXPECT_EQ(std::memcmp(&record, &mine, sizeof record), 0);
  EXPECT_EQ(read_file(kSavedFile), stored_record(kUsbPhys, payload_of(none)));
  EXPECT_FALSE(std::filesystem::exists(kWorkingFile));
}

TEST_F(RecordStoreTest, ReadingLogsThePhysAsText) {
  std::snprintf(TouchDevice[0].Phys, sizeof TouchDevice[0].Phys, "usb-%%s%%n/input0");
  quietly([&] { return GetResAllDataBin(0, &none); });
  EXPECT_EQ(messages().front(),
            "zelkora DD:***ReadResAllDataBin ReadRegBinary phys:usb-%s%n/input0***\n");
}

// --- the two files ---

TEST_F(RecordStoreTest, WritingTheSavedRecordTellsTheDriver) {
  EXPECT_EQ(quietly([&] { return SetResAllDataBin(0, &mine); }), 1);
  EXPECT_EQ(steps(), (Lines{"write saved", "notify"}));
  EXPECT_FALSE(std::filesystem::exists(kWorkingFile));
}

TEST_F(RecordStoreTest, WritingTheWorkingCopyDoesNot) {
  EXPECT_EQ(quietly([&] { return SetResAllDataBinTemp(0, &mine); }), 1);
  EXPECT_EQ(steps(), (Lines{"write working"}));
  EXPECT_EQ(read_file(kWorkingFile), stored_record(kUsbPhys, payload_of(mine)));
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
}

TEST_F(RecordStoreTest, ReadingTellsNobody) {
  write_file(kSavedFile, stored_record(kUsbPhys, payload_of(mine)));
  write_file(kWorkingFile, stored_record(kUsbPhys, payload_of(mine)));
  quietly([&] { return GetResAllDataBin(0, &none) + GetResAllDataBinTemp(0, &none); });
  EXPECT_EQ(steps(), (Lines{"read saved", "read working"}));
}

TEST_F(RecordStoreTest, AFailedWriteKeepsTheFileAndTellsNobody) {
  const std::string before = stored_record(kUsbPhys, payload_of(none));
  write_file(kSavedFile, before);
  fail_file_call("write", kSavedFile + ".*", ENOSPC);
  EXPECT_EQ(quietly([&] { return SetResAllDataBin(0, &mine); }), 0);
  EXPECT_EQ(steps(), (Lines{"write saved"}));
  EXPECT_EQ(read_file(kSavedFile), before);
}

TEST_F(RecordStoreTest, WithoutADisplayTheRecordIsSavedAllTheSame) {
  x.reachable = false;
  EXPECT_EQ(quietly([&] { return SetResAllDataBin(0, &mine); }), 1);
  EXPECT_EQ(steps(), (Lines{"write saved"}));
  EXPECT_EQ(read_file(kSavedFile), stored_record(kUsbPhys, payload_of(mine)));
}

TEST_F(RecordStoreTest, ReadingTheWorkingCopyAloneSetsThePlaceholderSerialNumber) {
  unsigned char(&number)[8] = TouchDevice[0].SN;
  const auto as_text = [] {
    return std::string(std::begin(TouchDevice[0].SN), std::end(TouchDevice[0].SN));
  };
  const std::string zeros(8, '\0');
  const std::string placeholder = "\x01\x02\x03\x04\x05\x06\x07\x08";
  std::memset(number, 0, sizeof number);
  quietly([&] { return SetResAllDataBin(0, &mine); });
  quietly([&] { return GetResAllDataBin(0, &mine); });
  quietly([&] { return SetResAllDataBinTemp(0, &mine); });
  quietly([&] { return DelResAllDataBinTemp(0); });
  EXPECT_EQ(as_text(), zeros);
  EXPECT_EQ(read_file(kWorkingFile),
            stored_record(kUsbPhys, payload_of(mine), "3A4C_1688", "0000000000000000"));
  quietly([&] { return GetResAllDataBinTemp(0, &mine); });
  EXPECT_EQ(as_text(), placeholder);
  // It is set whether or not there is a record to read.
  std::memset(number, 0, sizeof number);
  std::memset(TouchDevice[0].Phys, 0, sizeof TouchDevice[0].Phys);
  EXPECT_EQ(GetResAllDataBinTemp(0, &mine), 0);
  EXPECT_EQ(as_text(), placeholder);
}

// --- the deletion that erases nothing ---

TEST_F(RecordStoreTest, ADeletedWorkingCopyReadsBackUnchanged) {
  quietly([&] { return SetResAllDataBinTemp(0, &mine); });
  const std::string before = read_file(kWorkingFile);
  clear_trace();
  EXPECT_EQ(quietly([&] { return DelResAllDataBinTemp(0); }), 1);
  EXPECT_EQ(steps(), (Lines{"read working", "write working"}));
  EXPECT_EQ(read_file(kWorkingFile), before);
  ResDevInfo read{};
  EXPECT_EQ(quietly([&] { return GetResAllDataBinTemp(0, &read); }), 1);
  EXPECT_EQ(payload_of(read), payload_of(mine));
}

TEST_F(RecordStoreTest, DeletingKeepsTheWholePayload) {
  Bytes payload(64);
  for (size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<uint8_t>(0x40 + i);
  write_file(kWorkingFile, stored_record(kUsbPhys, payload));
  EXPECT_EQ(quietly([&] { return DelResAllDataBinTemp(0); }), 1);
  EXPECT_EQ(read_file(kWorkingFile), stored_record(kUsbPhys, payload));
}

TEST_F(RecordStoreTest, DeletingARecordThatIsNotThereFailsAndWritesNothing) {
  EXPECT_EQ(quietly([&] { return DelResAllDataBinTemp(0); }), 0);
  EXPECT_EQ(quietly([&] { return CleanResAllDataBin(kSavedFile.c_str(), 0); }), 0);
  EXPECT_EQ(steps(), (Lines{"read working", "read saved"}));
  EXPECT_FALSE(std::filesystem::exists(kWorkingFile));
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
}

TEST_F(RecordStoreTest, ADeletionThatCannotWriteFails) {
  quietly([&] { return SetResAllDataBinTemp(0, &mine); });
  fail_file_call("write", kWorkingFile + ".*", ENOSPC);
  EXPECT_EQ(quietly([&] { return DelResAllDataBinTemp(0); }), 0);
}

// --- whether both records agree ---

struct AgreeRow {
  const char* name;
  std::optional<unsigned> saved;  // the stored checksum; none: no record
  std::optional<unsigned> working;
  int result;
  Lines steps;
};

TEST_F(RecordStoreTest, RecordsAgreeByTheirStoredChecksumsAlone) {
  const AgreeRow rows[] = {
      {"Equal", 0x6700, 0x6700, 1, {"read saved", "read working"}},
      {"HighByteDiffers", 0x6700, 0x6600, 0, {"read saved", "read working"}},
      {"LowByteDiffers", 0x6700, 0x6701, 0, {"read saved", "read working"}},
      {"NothingSaved", std::nullopt, 0x6700, 0, {"read saved"}},
      {"NoWorkingCopy", 0x6700, std::nullopt, 0, {"read saved", "read working"}},
      {"ZeroSavedAndNoWorkingCopy", 0, std::nullopt, 0, {"read saved", "read working"}},
      {"Neither", std::nullopt, std::nullopt, 0, {"read saved"}},
  };
  const auto put = [](const std::string& path, std::optional<unsigned> sum, ResDevInfo record) {
    std::filesystem::remove(path);
    if (!sum) return;
    Bytes payload = payload_of(record);
    payload[32] = static_cast<uint8_t>(*sum >> 8);
    payload[33] = static_cast<uint8_t>(*sum);
    write_file(path, stored_record(kUsbPhys, payload));
  };
  for (const AgreeRow& row : rows) {
    SCOPED_TRACE(row.name);
    put(kSavedFile, row.saved, record_of(0x10));
    put(kWorkingFile, row.working, record_of(0x60));
    clear_trace();
    EXPECT_EQ(quietly([&] { return MatchResCheckSum(0); }), row.result);
    EXPECT_EQ(steps(), row.steps);
  }
}

}  // namespace
