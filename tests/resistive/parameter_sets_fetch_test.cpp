// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Fetching the whole set of a USB panel, by mode, and the calls that take or give one without a
// mode: files, controller and driver in the order in which they are reached.
#include <cerrno>

#include "record_bench.h"

namespace {

using namespace zelkora::test;

class FetchTest : public SetBench {};

Lines flash(Kept kept) { return joined({flash_steps(record_named(kept)), {"PL"}}); }

const Lines kGetOrDefault = {"read saved", "write saved", "notify"};

using enum Kept;

// clang-format off
const SetRow kFetchRows[] = {
    // 0: load
    {"LoadWithBoth", 0, 0, kSaved, kWorking, kNone,
     {"read saved", "read working"}, kSaved, kWorking, kSaved, 1},
    {"LoadMakesTheWorkingCopy", 0, 0, kSaved, kNone, kNone,
     {"read saved", "read working", "write working"}, kSaved, kSaved, kSaved, 1},
    {"LoadWithNothingSaved", 0, 0, kNone, kWorking, kNone,
     {"read saved"}, kNone, kWorking, kMine, 0},
    {"LoadWithNeither", 0, 0, kNone, kNone, kNone, {"read saved"}, kNone, kNone, kMine, 0},
    // 3: begin editing
    {"BeginWithTheFlashInLine", 3, 0, kSaved, kWorking, kSaved,
     {"read saved", "write working", "GP5B"}, kSaved, kSaved, kSaved, 1},
    {"BeginWithAnotherFlash", 3, 0, kSaved, kWorking, kWorking,
     joined({{"read saved", "write working", "GP5B"}, flash(kSaved)}), kSaved, kSaved, kSaved, 1},
    {"BeginWithNothingSaved", 3, 0, kNone, kWorking, kWorking,
     joined({kGetOrDefault, {"write working", "GP5B"}, flash(kDefaultsOverMine)}),
     kDefaultsOverMine, kDefaultsOverMine, kDefaultsOverMine, 1},
    {"BeginWithNeither", 3, 0, kNone, kNone, kNone,
     joined({kGetOrDefault, {"write working", "GP5B"}, flash(kDefaultsOverMine)}),
     kDefaultsOverMine, kDefaultsOverMine, kDefaultsOverMine, 1},
    {"BeginWithTheDefaultsInTheFlash", 3, 0, kNone, kNone, kDefaultsOverMine,
     joined({kGetOrDefault, {"write working", "GP5B"}}), kDefaultsOverMine, kDefaultsOverMine, kDefaultsOverMine, 1},
    // 7: check
    {"CheckWithTheFlashInLine", 7, 0, kSaved, kWorking, kSaved,
     {"read saved", "GP5B"}, kSaved, kWorking, kSaved, 1},
    {"CheckWithAnotherFlash", 7, 0, kSaved, kNone, kWorking,
     joined({{"read saved", "GP5B"}, flash(kSaved)}), kSaved, kNone, kSaved, 1},
    {"CheckWithNothingSaved", 7, 0, kNone, kWorking, kWorking,
     joined({kGetOrDefault, {"GP5B"}, flash(kDefaultsOverMine)}), kDefaultsOverMine, kWorking, kDefaultsOverMine, 1},
    {"CheckWithTheDefaultsInTheFlash", 7, 0, kNone, kNone, kDefaultsOverMine,
     joined({kGetOrDefault, {"GP5B"}}), kDefaultsOverMine, kNone, kDefaultsOverMine, 1},
    // 4: read saved
    {"ReadSaved", 4, 0, kSaved, kWorking, kWorking,
     {"read saved"}, kSaved, kWorking, kSaved, 1},
    {"ReadNothingSaved", 4, 0, kNone, kWorking, kWorking,
     {"read saved"}, kNone, kWorking, kMine, 0},
    // any other
    {"Mode1", 1, 0, kSaved, kWorking, kWorking, {}, kSaved, kWorking, kMine, 0},
    {"Mode2", 2, 0, kSaved, kWorking, kWorking, {}, kSaved, kWorking, kMine, 0},
    {"Mode5", 5, 0, kSaved, kWorking, kWorking, {}, kSaved, kWorking, kMine, 0},
    {"Mode6", 6, 0, kSaved, kWorking, kWorking, {}, kSaved, kWorking, kMine, 0},
    {"ModeMinus1", -1, 0, kSaved, kWorking, kWorking, {}, kSaved, kWorking, kMine, 0},
    {"Mode8", 8, 0, kSaved, kWorking, kWorking, {}, kSaved, kWorking, kMine, 0},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Modes, FetchTest, testing::ValuesIn(kFetchRows), set_row_name);

TEST_P(FetchTest, DoesTheseStepsInThisOrder) {
  Panel& panel = add_usb_panel();
  prepare_files();
  if (row.flash != kNone) {
    panel.controller.set_value(91, static_cast<uint16_t>(flash_checksum(record_named(row.flash))));
  }
  ResDevInfo record = record_named(kMine);
  const auto mode = static_cast<signed char>(row.mode);
  EXPECT_EQ(quietly([&] { return ResGetAllParams(0, &record, mode); }), row.result);
  EXPECT_EQ(steps(), joined({{"open"}, row.steps, {"close"}}));
  expect_files_after();
  expect_record_after(record);
  EXPECT_EQ(messages().front(),
            "zelkora DD:***ResGetAllParams Mode:" + std::to_string(row.mode) + "***\n");
}

class WholeSetTest : public RecordBench {
 protected:
  int fetch(int mode) {
    return quietly([&] { return ResGetAllParams(0, &record, static_cast<signed char>(mode)); });
  }
  static std::string file_of(Kept kept) {
    return stored_record(kUsbPhys, payload_of(record_named(kept)));
  }

  ResDevInfo record = record_named(kMine);
};

TEST_F(WholeSetTest, FetchingFromADeviceThatDoesNotOpenDoesNothing) {
  write_file(kSavedFile, file_of(kSaved));
  TouchDevice[0].Type = ZELKORA_TYPE_NONE;
  for (const int mode : {0, 3, 4, 7}) {
    SCOPED_TRACE(mode);
    clear_trace();
    EXPECT_EQ(fetch(mode), 0);
    EXPECT_EQ(steps(), Lines());
    EXPECT_EQ(payload_of(record), payload_of(record_named(kMine)));
    // It is not closed either.
    EXPECT_EQ(messages().back(), "zelkora DD:device0 not exist err: 0\n");
  }
}

TEST_F(WholeSetTest, LoadingReportsAWorkingCopyThatCannotBeWritten) {
  add_usb_panel();
  write_file(kSavedFile, file_of(kSaved));
  fail_file_call("rename", kWorkingFile, EACCES);
  EXPECT_EQ(fetch(0), 0);
  EXPECT_EQ(payload_of(record), payload_of(record_named(kSaved)));
}

TEST_F(WholeSetTest, EditingBeginsWithTheWorkingCopysResult) {
  Panel& panel = add_usb_panel();
  write_file(kSavedFile, file_of(kSaved));
  panel.controller.set_value(91, static_cast<uint16_t>(flash_checksum(record_named(kSaved))));
  fail_file_call("rename", kWorkingFile, EACCES);
  EXPECT_EQ(fetch(3), 0);
  // The same with another flash succeeds: the write of the flash has the last word.
  panel.controller.set_value(91, 0);
  fail_file_call("rename", kWorkingFile, EACCES);
  EXPECT_EQ(fetch(3), 1);
}

TEST_F(WholeSetTest, DefaultsThatCannotBeSavedDoNotStopAnEdit) {
  Panel& panel = add_usb_panel();
  panel.controller.set_value(91, static_cast<uint16_t>(flash_checksum(default_record())));
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(fetch(3), 1);
  EXPECT_EQ(read_file(kWorkingFile), file_of(kDefaultsOverMine));
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(fetch(7), 0);
}

TEST_F(WholeSetTest, APanelWithoutPhysGetsTheDefaultsIntoItsFlashAlone) {
  add_usb_panel();
  std::memset(TouchDevice[0].Phys, 0, sizeof TouchDevice[0].Phys);
  EXPECT_EQ(fetch(3), 1);
  EXPECT_EQ(steps(), joined({{"open", "GP5B"}, flash(kDefaultsOverMine), {"close"}}));
  // With the flash in line nothing is left that could succeed.
  clear_trace();
  EXPECT_EQ(fetch(3), 0);
  EXPECT_EQ(fetch(7), 0);
  EXPECT_EQ(steps(), (Lines{"open", "GP5B", "close", "open", "GP5B", "close"}));
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
  EXPECT_FALSE(std::filesystem::exists(kWorkingFile));
}

TEST_F(WholeSetTest, AFailedChecksumReadForcesAWrite) {
  silence(add_usb_panel());
  write_file(kSavedFile, file_of(kSaved));
  EXPECT_EQ(fetch(7), 1);
  EXPECT_EQ(steps().size(), 1U + 1 + 4 + 11 * 4 + 4 + 1);
  EXPECT_EQ(count_of("mydoled_all_display"), 0U);
}

TEST_F(WholeSetTest, TheDefaultsAreThoseOfTheFile) {
  add_usb_panel();
  write_file(data_file("TouchUtil.ini"), "[Res_Default]\nEdgeRight=7\nDigitizer=1\n");
  EXPECT_EQ(fetch(3), 1);
  ResDevInfo expected = record_named(kDefaultsOverMine);
  expected.EdgeRight = 7;
  expected.HidMode = 3;
  EXPECT_EQ(read_file(kSavedFile), stored_record(kUsbPhys, payload_of(expected)));
  EXPECT_EQ(read_file(kWorkingFile), stored_record(kUsbPhys, payload_of(expected)));
}

// --- without a mode ---

struct CurrentRow {
  const char* name;
  Kept saved;
  Kept working;
  Lines steps;
  Kept saved_after;
};

TEST_F(WholeSetTest, ASetIsStoredOnlyWhereTheTwoRecordsDiffer) {
  const CurrentRow rows[] = {
      {"BothAlike", kSaved, kSaved, {"open", "read saved", "read working", "close"}, kSaved},
      {"BothDiffer",
       kSaved,
       kWorking,
       {"open", "read saved", "read working", "write saved", "notify", "close"},
       kMine},
      {"NothingSaved",
       kNone,
       kWorking,
       {"open", "read saved", "write saved", "notify", "close"},
       kMine},
      {"NoWorkingCopy",
       kSaved,
       kNone,
       {"open", "read saved", "read working", "write saved", "notify", "close"},
       kMine},
      {"Neither", kNone, kNone, {"open", "read saved", "write saved", "notify", "close"}, kMine},
  };
  add_usb_panel();
  for (const CurrentRow& row : rows) {
    SCOPED_TRACE(row.name);
    std::filesystem::remove(kSavedFile);
    std::filesystem::remove(kWorkingFile);
    if (row.saved != kNone) write_file(kSavedFile, file_of(row.saved));
    if (row.working != kNone) write_file(kWorkingFile, file_of(row.working));
    clear_trace();
    EXPECT_EQ(quietly([&] { return SetCurrenAllParame(0, &record); }), 1);
    EXPECT_EQ(steps(), row.steps);
    EXPECT_EQ(read_file(kSavedFile), file_of(row.saved_after));
    EXPECT_EQ(std::filesystem::exists(kWorkingFile), row.working != kNone);
  }
}

TEST_F(WholeSetTest, AStoreThatFailsIsReported) {
  add_usb_panel();
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(quietly([&] { return SetCurrenAllParame(0, &record); }), 0);
  EXPECT_EQ(steps(), (Lines{"open", "read saved", "write saved", "close"}));
}

TEST_F(WholeSetTest, StoringIntoADeviceThatDoesNotOpenDoesNothing) {
  TouchDevice[0].Type = ZELKORA_TYPE_NONE;
  EXPECT_EQ(SetCurrenAllParame(0, &record), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:device0 not exist err: 0\n");
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
}

TEST_F(WholeSetTest, GettingTheSetReadsTheSavedRecord) {
  add_usb_panel();
  write_file(kSavedFile, file_of(kSaved));
  write_file(kWorkingFile, file_of(kWorking));
  EXPECT_EQ(quietly([&] { return GetCurrenAllParame(0, &record); }), 1);
  EXPECT_EQ(steps(), (Lines{"open", "read saved", "close"}));
  EXPECT_EQ(payload_of(record), payload_of(record_named(kSaved)));
  EXPECT_EQ(messages().front(), "zelkora DD:GetCurrenAllParame--start\n");
  const Lines& lines = messages();
  EXPECT_EQ(std::count(lines.begin(), lines.end(), "zelkora DD:GetCurrenAllParame DevNum=0\n"), 1);
}

TEST_F(WholeSetTest, GettingTheSetOfAPanelWithoutOneFails) {
  add_usb_panel();
  EXPECT_EQ(quietly([&] { return GetCurrenAllParame(0, &record); }), 0);
  EXPECT_EQ(steps(), (Lines{"open", "read saved", "close"}));
  EXPECT_EQ(std::memcmp(&record, std::vector{record_named(kMine)}.data(), sizeof record), 0);
}

TEST_F(WholeSetTest, GettingTheSetOfADeviceThatDoesNotOpenFails) {
  TouchDevice[0].Type = ZELKORA_TYPE_NONE;
  EXPECT_EQ(GetCurrenAllParame(0, &record), 0);
  EXPECT_EQ(messages().front(), "zelkora DD:GetCurrenAllParame--start\n");
  EXPECT_EQ(messages().back(), "zelkora DD:device0 not exist err: 0\n");
}

TEST_F(WholeSetTest, NegativeNumbersTouchNothing) {
  for (const int devnum : {-1, INT32_MIN}) {
    SCOPED_TRACE(devnum);
    clear_trace();
    EXPECT_EQ(SetCurrenAllParame(devnum, &record), 0);
    EXPECT_EQ(ResRestoreDefault(devnum), 0);
    EXPECT_EQ(messages(), Lines());
    EXPECT_EQ(GetCurrenAllParame(devnum, &record), 0);
    EXPECT_EQ(messages(), (Lines{"zelkora DD:GetCurrenAllParame--start\n"}));
    EXPECT_EQ(host.config_reads, 0);
  }
}

TEST_F(WholeSetTest, RestoringTheDefaultsStoresThemAndLogsThem) {
  add_usb_panel();
  write_file(kSavedFile, file_of(kSaved));
  write_file(data_file("TouchUtil.ini"),
             "[Res_Default]\nBeepOn=0\nFrequency=700\nDuration=21\nScreenNumber=3\n"
             "DisableRight=1\nRightTime=9\nFirstMove=5\nEdgeRight=31\nEdgeLeft=-32\n"
             "EdgeDown=33\nEdgeUp=34\nReportMode=6\nDigitizer=1\n");
  EXPECT_EQ(quietly([&] { return ResRestoreDefault(0); }), 1);
  EXPECT_EQ(steps(),
            (Lines{"open", "read saved", "read working", "write saved", "notify", "close"}));
  ResDevInfo expected = default_record();
  expected.BeepOn = 0;
  expected.Frequency = 700;
  expected.Duration = 21;
  expected.ScreenNumber = 2;
  expected.DisableRight = 1;
  expected.RightTime = 9;
  expected.EdgeRight = 31;
  expected.EdgeLeft = -32;
  expected.EdgeDown = 33;
  expected.EdgeUp = 34;
  expected.ReportMode = 6;
  expected.HidMode = 3;
  EXPECT_EQ(read_file(kSavedFile), stored_record(kUsbPhys, payload_of(expected)));
  const Lines logged = {
      "zelkora DD:DevInfo.BeepOn:0\n",       "zelkora DD:DevInfo.Frequency:700\n",
      "zelkora DD:DevInfo.Duration:21\n",    "zelkora DD:DevInfo.ScreenNumber:3\n",
      "zelkora DD:DevInfo.DisableRight:1\n", "zelkora DD:DevInfo.RightTime:9\n",
      "zelkora DD:DevInfo.FirstMove:5\n",    "zelkora DD:DevInfo.EdgeRight:31\n",
      "zelkora DD:DevInfo.EdgeLeft:-32\n",   "zelkora DD:DevInfo.EdgeDown:33\n",
      "zelkora DD:DevInfo.EdgeUp:34\n",      "zelkora DD:DevInfo.ReportMode:6\n",
      "zelkora DD:DevInfo.HidMode:3\n"};
  ASSERT_GE(messages().size(), logged.size());
  EXPECT_EQ(Lines(messages().end() - static_cast<ptrdiff_t>(logged.size()), messages().end()),
            logged);
}

TEST_F(WholeSetTest, DefaultsAreNotStoredWhereTheRecordsAgree) {
  add_usb_panel();
  write_file(kSavedFile, file_of(kSaved));
  write_file(kWorkingFile, file_of(kSaved));
  EXPECT_EQ(quietly([&] { return ResRestoreDefault(0); }), 1);
  EXPECT_EQ(read_file(kSavedFile), file_of(kSaved));
}

TEST_F(WholeSetTest, DefaultsOfADeviceThatDoesNotOpenAreLoggedAllTheSame) {
  TouchDevice[0].Type = ZELKORA_TYPE_NONE;
  EXPECT_EQ(ResRestoreDefault(0), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:DevInfo.HidMode:2\n");
}

}  // namespace
