// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The workflow of serial panels: the same modes on the files alone.
#include <cerrno>

#include "record_bench.h"

namespace {

using namespace zelkora::test;
using enum Kept;

class SerialSaveTest : public SetBench {};
class SerialFetchTest : public SetBench {};

const Lines kDevice = {"open", "close", "ioctl", "read", "write", "usleep", "tcgetattr"};

// clang-format off
const SetRow kSerialSaveRows[] = {
    {"Save", 1, 0, kSaved, kWorking, kNone,
     {"write working", "write saved", "notify"}, kMine, kMine, kMine, 1},
    {"SaveForTheFirstTime", 1, 0, kNone, kNone, kNone,
     {"write working", "write saved", "notify"}, kMine, kMine, kMine, 1},
    {"RevertWithBothAlike", 2, 0, kSaved, kSaved, kNone,
     {"read saved", "read working"}, kSaved, kSaved, kMine, 0},
    {"RevertToTheWorkingCopy", 2, 0, kSaved, kWorking, kNone,
     {"read saved", "read working", "read working", "read working", "write working",
      "write saved", "notify"}, kWorking, kWorking, kWorking, 1},
    {"RevertWithNothingSaved", 2, 0, kNone, kWorking, kNone,
     {"read saved", "read working", "read working", "write working", "write saved", "notify"},
     kWorking, kWorking, kWorking, 1},
    {"RevertWithoutAWorkingCopy", 2, 0, kSaved, kNone, kNone,
     {"read saved", "read working", "read working", "read working", "write saved", "notify"},
     kMine, kNone, kMine, 1},
    {"RevertWithoutAnyRecord", 2, 0, kNone, kNone, kNone,
     {"read saved", "read working", "read working", "write saved", "notify"},
     kMine, kNone, kMine, 1},
    // No deletion of its own.
    {"EndWithBothAlike", 5, 0, kSaved, kSaved, kNone,
     {"read saved", "read working"}, kSaved, kSaved, kMine, 0},
    {"EndWithTheWorkingCopy", 5, 0, kSaved, kWorking, kNone,
     {"read saved", "read working", "read working", "read working", "write working",
      "write saved", "notify"}, kWorking, kWorking, kWorking, 1},
    {"EndWithoutAnyRecord", 5, 0, kNone, kNone, kNone,
     {"read saved", "read working", "read working", "write saved", "notify"},
     kMine, kNone, kMine, 1},
    {"Store", 6, 0, kSaved, kWorking, kNone,
     {"write saved", "notify"}, kMine, kWorking, kMine, 1},
    {"StoreForTheFirstTime", 6, 0, kNone, kNone, kNone,
     {"write saved", "notify"}, kMine, kNone, kMine, 1},
    {"Mode0", 0, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
    {"Mode3", 3, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
    {"Mode4", 4, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
    {"Mode7", 7, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
    {"ModeMinus1", -1, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
};

const SetRow kSerialFetchRows[] = {
    {"LoadWithBoth", 0, 0, kSaved, kWorking, kNone,
     {"read saved", "read working"}, kSaved, kWorking, kSaved, 1},
    {"LoadMakesTheWorkingCopy", 0, 0, kSaved, kNone, kNone,
     {"read saved", "read working", "write working"}, kSaved, kSaved, kSaved, 1},
    {"LoadWithNothingSaved", 0, 0, kNone, kWorking, kNone,
     {"read saved"}, kNone, kWorking, kMine, 0},
    {"Begin", 3, 0, kSaved, kWorking, kNone,
     {"read saved", "write working"}, kSaved, kSaved, kSaved, 1},
    {"BeginWithNothingSaved", 3, 0, kNone, kWorking, kNone,
     {"read saved", "write saved", "notify", "write working"},
     kDefaultsOverMine, kDefaultsOverMine, kDefaultsOverMine, 1},
    {"BeginWithNeither", 3, 0, kNone, kNone, kNone,
     {"read saved", "write saved", "notify", "write working"},
     kDefaultsOverMine, kDefaultsOverMine, kDefaultsOverMine, 1},
    {"ReadSaved", 4, 0, kSaved, kWorking, kNone, {"read saved"}, kSaved, kWorking, kSaved, 1},
    {"ReadNothingSaved", 4, 0, kNone, kWorking, kNone, {"read saved"},
     kNone, kWorking, kMine, 0},
    // There is no check of a flash.
    {"Mode7", 7, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
    {"Mode7WithNothingSaved", 7, 0, kNone, kNone, kNone, {}, kNone, kNone, kMine, 0},
    {"Mode1", 1, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
    {"Mode2", 2, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
    {"Mode5", 5, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
    {"Mode6", 6, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
    {"ModeMinus1", -1, 0, kSaved, kWorking, kNone, {}, kSaved, kWorking, kMine, 0},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Modes, SerialSaveTest, testing::ValuesIn(kSerialSaveRows), set_row_name);
INSTANTIATE_TEST_SUITE_P(Modes, SerialFetchTest, testing::ValuesIn(kSerialFetchRows), set_row_name);

TEST_P(SerialSaveTest, DoesTheseStepsAndTouchesNoDevice) {
  attach_serial();
  add_serial_entry();
  prepare_files();
  ResDevInfo record = record_named(kMine);
  const auto mode = static_cast<signed char>(row.mode);
  EXPECT_EQ(quietly([&] { return ResSerSetAllParams(0, &record, mode); }), row.result);
  EXPECT_EQ(steps(), row.steps);
  for (const std::string& call : kDevice) EXPECT_EQ(count_of(call), 0U) << call;
  expect_files_after();
  expect_record_after(record);
  EXPECT_EQ(ActiveDevice, 0);
  EXPECT_EQ(host.config_reads, 0);
}

TEST_P(SerialFetchTest, DoesTheseStepsAndTouchesNoDevice) {
  attach_serial();
  add_serial_entry();
  prepare_files();
  ResDevInfo record = record_named(kMine);
  const auto mode = static_cast<signed char>(row.mode);
  EXPECT_EQ(quietly([&] { return ResSerGetAllParams(0, &record, mode); }), row.result);
  EXPECT_EQ(steps(), row.steps);
  for (const std::string& call : kDevice) EXPECT_EQ(count_of(call), 0U) << call;
  expect_files_after();
  expect_record_after(record);
  EXPECT_EQ(messages().front(),
            "zelkora DD:***ResSerGetAllParams Mode:" + std::to_string(row.mode) + "***\n");
  EXPECT_EQ(ActiveDevice, 0);
}

class SerialSetTest : public RecordBench {
 protected:
  void SetUp() override {
    RecordBench::SetUp();
    add_serial_entry();
  }
  ResDevInfo record = record_named(kMine);
};

TEST_F(SerialSetTest, OnlyFetchingIsLogged) {
  ResSerSetAllParams(0, &record, 0);
  EXPECT_EQ(messages(), Lines());
}

TEST_F(SerialSetTest, SavingReportsTheSavedFile) {
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(quietly([&] { return ResSerSetAllParams(0, &record, 1); }), 0);
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(quietly([&] { return ResSerSetAllParams(0, &record, 6); }), 0);
  fail_file_call("rename", kWorkingFile, EACCES);
  EXPECT_EQ(quietly([&] { return ResSerSetAllParams(0, &record, 1); }), 1);
}

TEST_F(SerialSetTest, AnEditReportsTheWorkingCopy) {
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(quietly([&] { return ResSerGetAllParams(0, &record, 3); }), 1);
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
  fail_file_call("rename", kWorkingFile, EACCES);
  EXPECT_EQ(quietly([&] { return ResSerGetAllParams(0, &record, 3); }), 0);
  EXPECT_TRUE(std::filesystem::exists(kSavedFile));
}

TEST_F(SerialSetTest, ThePortIsThePhysOfTheRecord) {
  quietly([&] { return ResSerSetAllParams(0, &record, 1); });
  const std::string expected = stored_record("ttyS0", payload_of(record), "0000_0000");
  EXPECT_EQ(read_file(kSavedFile), expected);
  EXPECT_EQ(read_file(kWorkingFile), expected);
}

TEST_F(SerialSetTest, ThePanelOfThatNumberIsMeant) {
  TouchDevice[2] = TouchDevice[0];
  std::snprintf(TouchDevice[2].Phys, sizeof TouchDevice[2].Phys, "ttyUSB7");
  quietly([&] { return ResSerSetAllParams(2, &record, 6); });
  EXPECT_EQ(read_file(kSavedFile), stored_record("ttyUSB7", payload_of(record), "0000_0000"));
}

TEST_F(SerialSetTest, APanelWithoutPhysHasNoSet) {
  std::memset(TouchDevice[0].Phys, 0, sizeof TouchDevice[0].Phys);
  for (const signed char mode : std::initializer_list<signed char>{1, 2, 5, 6}) {
    EXPECT_EQ(quietly([&] { return ResSerSetAllParams(0, &record, mode); }), 0);
  }
  EXPECT_EQ(payload_of(record), payload_of(record_named(kMine)));
  for (const signed char mode : std::initializer_list<signed char>{0, 3, 4}) {
    EXPECT_EQ(quietly([&] { return ResSerGetAllParams(0, &record, mode); }), 0);
  }
  EXPECT_EQ(payload_of(record), payload_of(record_named(kDefaultsOverMine)));
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
  EXPECT_FALSE(std::filesystem::exists(kWorkingFile));
}

}  // namespace
