// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Saving and reverting the whole set of a USB panel, by mode: files, controller and driver in the
// order in which they are reached.
#include <cerrno>

#include "record_bench.h"

namespace {

using namespace zelkora::test;

class SaveTest : public SetBench {};

const Lines kSaveBoth = {"write working", "write saved", "notify", "GP5B"};
const Lines kStillAgree = {"read saved", "read working"};
// From asking whether the records agree up to the flash.
const Lines kRevertBoth = {"read saved",    "read working", "read working", "read working",
                           "write working", "write saved",  "notify"};
const Lines kRevertWithoutSaved = {"read saved",    "read working", "read working",
                                   "write working", "write saved",  "notify"};
const Lines kRevertWithoutWorking = {"read saved",   "read working", "read working",
                                     "read working", "write saved",  "notify"};
const Lines kRevertWithoutBoth = {"read saved", "read working", "read working", "write saved",
                                  "notify"};
const Lines kDelete = {"read working", "write working"};
const Lines kDeleteInVain = {"read working"};
const Lines kPermanent = {"PL"};

Lines flash(Kept kept, unsigned only_address = 0) {
  return flash_steps(record_named(kept), only_address);
}

using enum Kept;

// clang-format off
const SetRow kSaveRows[] = {
    // 1: save
    {"SaveWithTheFlashInLine", 1, 0, kSaved, kWorking, kMine,
     kSaveBoth, kMine, kMine, kMine, 1},
    {"SaveWithAnotherFlash", 1, 0, kSaved, kWorking, kSaved,
     joined({kSaveBoth, flash(kMine), kPermanent}), kMine, kMine, kMine, 1},
    {"SaveWithAnotherFlashAndOneAddress", 1, 70, kSaved, kWorking, kSaved,
     joined({kSaveBoth, flash(kMine, 70), kPermanent}), kMine, kMine, kMine, 1},
    {"SaveWithAnotherFlashAndAnUnknownAddress", 1, 52, kSaved, kWorking, kSaved,
     joined({kSaveBoth, flash(kMine, 52), kPermanent}), kMine, kMine, kMine, 1},
    {"SaveForTheFirstTime", 1, 0, kNone, kNone, kNone,
     joined({kSaveBoth, flash(kMine), kPermanent}), kMine, kMine, kMine, 1},
    // 2: revert
    {"RevertWithBothAlike", 2, 0, kSaved, kSaved, kMine,
     kStillAgree, kSaved, kSaved, kMine, 0},
    {"RevertToTheWorkingCopy", 2, 0, kSaved, kWorking, kWorking,
     joined({kRevertBoth, flash(kWorking)}), kWorking, kWorking, kWorking, 1},
    {"RevertWritesEveryAddress", 2, 70, kSaved, kWorking, kMine,
     joined({kRevertBoth, flash(kWorking)}), kWorking, kWorking, kWorking, 1},
    {"RevertWithNothingSaved", 2, 0, kNone, kWorking, kMine,
     joined({kRevertWithoutSaved, flash(kWorking)}), kWorking, kWorking, kWorking, 1},
    {"RevertWithoutAWorkingCopyKeepsTheCallers", 2, 0, kSaved, kNone, kMine,
     joined({kRevertWithoutWorking, flash(kMine)}), kMine, kNone, kMine, 1},
    {"RevertWithoutAnyRecordKeepsTheCallers", 2, 0, kNone, kNone, kMine,
     joined({kRevertWithoutBoth, flash(kMine)}), kMine, kNone, kMine, 1},
    // 5: revert and end
    {"EndWithBothAlike", 5, 0, kSaved, kSaved, kMine,
     joined({kStillAgree, kDelete}), kSaved, kSaved, kMine, 0},
    {"EndWithTheWorkingCopy", 5, 70, kSaved, kWorking, kWorking,
     joined({kRevertBoth, flash(kWorking), kDelete}), kWorking, kWorking, kWorking, 1},
    {"EndWithNothingSaved", 5, 0, kNone, kWorking, kMine,
     joined({kRevertWithoutSaved, flash(kWorking), kDelete}), kWorking, kWorking, kWorking, 1},
    {"EndWithoutAWorkingCopy", 5, 0, kSaved, kNone, kMine,
     joined({kRevertWithoutWorking, flash(kMine), kDeleteInVain}), kMine, kNone, kMine, 1},
    {"EndWithoutAnyRecord", 5, 0, kNone, kNone, kMine,
     joined({kRevertWithoutBoth, flash(kMine), kDeleteInVain}), kMine, kNone, kMine, 1},
    // 6: store and flash
    {"StoreAndFlash", 6, 0, kSaved, kWorking, kSaved,
     joined({{"write saved", "notify"}, flash(kMine)}), kMine, kWorking, kMine, 1},
    {"StoreAndFlashWithTheFlashInLine", 6, 0, kNone, kNone, kMine,
     joined({{"write saved", "notify"}, flash(kMine)}), kMine, kNone, kMine, 1},
    {"StoreAndFlashOneAddress", 6, 71, kSaved, kWorking, kMine,
     joined({{"write saved", "notify"}, flash(kMine, 71)}), kMine, kWorking, kMine, 1},
    // any other
    {"Mode0", 0, 0, kSaved, kWorking, kSaved, {}, kSaved, kWorking, kMine, 0},
    {"Mode3", 3, 0, kSaved, kWorking, kSaved, {}, kSaved, kWorking, kMine, 0},
    {"Mode4", 4, 0, kSaved, kWorking, kSaved, {}, kSaved, kWorking, kMine, 0},
    {"Mode7", 7, 0, kSaved, kWorking, kSaved, {}, kSaved, kWorking, kMine, 0},
    {"ModeMinus1", -1, 0, kSaved, kWorking, kSaved, {}, kSaved, kWorking, kMine, 0},
    {"Mode127", 127, 0, kSaved, kWorking, kSaved, {}, kSaved, kWorking, kMine, 0},
};
// clang-format on

INSTANTIATE_TEST_SUITE_P(Modes, SaveTest, testing::ValuesIn(kSaveRows), set_row_name);

TEST_P(SaveTest, DoesTheseStepsInThisOrder) {
  Panel& panel = add_usb_panel();
  prepare_files();
  if (row.flash != kNone) {
    panel.controller.set_value(91, static_cast<uint16_t>(flash_checksum(record_named(row.flash))));
  }
  ResDevInfo record = record_named(kMine);
  const auto mode = static_cast<signed char>(row.mode);
  EXPECT_EQ(quietly([&] { return ResSetAllParams(0, &record, mode, row.only_address); }),
            row.result);
  EXPECT_EQ(steps(), joined({{"open"}, row.steps, {"close"}}));
  expect_files_after();
  expect_record_after(record);
  const bool made_permanent = !row.steps.empty() && row.steps.back() == "PL";
  EXPECT_EQ(panel.controller.commits(), made_permanent ? 1U : 0U);
}

class SaveFailureTest : public RecordBench {
 protected:
  int save(int mode, int only_address = 0) {
    return quietly(
        [&] { return ResSetAllParams(0, &record, static_cast<signed char>(mode), only_address); });
  }
  // The controller holds the caller's record already.
  static void bring_in_line(Panel& panel) {
    panel.controller.set_value(91, static_cast<uint16_t>(flash_checksum(record_named(kMine))));
  }

  ResDevInfo record = record_named(kMine);
};

TEST_F(SaveFailureTest, ADeviceThatDoesNotOpenLeavesEverythingAsItIs) {
  TouchDevice[0].Type = ZELKORA_TYPE_NONE;
  for (const int mode : {1, 2, 5, 6}) {
    SCOPED_TRACE(mode);
    clear_trace();
    EXPECT_EQ(save(mode), 0);
    EXPECT_EQ(steps(), Lines());
    EXPECT_EQ(messages().front(), "zelkora DD:***ResSetAllParams--start DevNum:0***\n");
    EXPECT_EQ(messages().back(), "zelkora DD:***ResSetAllParams--end DevNum:0***\n");
  }
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
  EXPECT_FALSE(std::filesystem::exists(kWorkingFile));
}

TEST_F(SaveFailureTest, TheCallIsLoggedFromStartToEnd) {
  add_usb_panel();
  save(0);
  EXPECT_EQ(messages().front(), "zelkora DD:***ResSetAllParams--start DevNum:0***\n");
  ASSERT_GE(messages().size(), 2U);
  EXPECT_EQ(messages().end()[-2], "zelkora DD:CloseTouchDevice\n");
  EXPECT_EQ(messages().back(), "zelkora DD:***ResSetAllParams--end DevNum:0***\n");
}

TEST_F(SaveFailureTest, SavingReportsTheSavedFileWhenTheFlashIsInLine) {
  bring_in_line(add_usb_panel());
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(save(1), 0);
  EXPECT_EQ(steps(), (Lines{"open", "write working", "write saved", "GP5B", "close"}));
  EXPECT_EQ(read_file(kWorkingFile), stored_record(kUsbPhys, payload_of(record)));
}

TEST_F(SaveFailureTest, AWorkingCopyThatCannotBeWrittenDoesNotStopTheSaving) {
  bring_in_line(add_usb_panel());
  fail_file_call("rename", kWorkingFile, EACCES);
  EXPECT_EQ(save(1), 1);
  EXPECT_EQ(read_file(kSavedFile), stored_record(kUsbPhys, payload_of(record)));
}

TEST_F(SaveFailureTest, TheFlashIsWrittenEvenWhenNeitherFileCanBe) {
  add_usb_panel();
  fail_file_call("rename", kSavedFile, EACCES);
  fail_file_call("rename", kWorkingFile, EACCES);
  EXPECT_EQ(save(1), 1);
  EXPECT_EQ(steps(), joined({{"open", "write working", "write saved", "GP5B"},
                             flash_steps(record),
                             {"PL", "close"}}));
}

TEST_F(SaveFailureTest, StoringIsNotASuccessOfItsOwn) {
  add_usb_panel();
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(save(6), 1);
  EXPECT_EQ(steps(), joined({{"open", "write saved"}, flash_steps(record), {"close"}}));
}

TEST_F(SaveFailureTest, APanelWithoutPhysGetsItsFlashAndNoRecord) {
  add_usb_panel();
  std::memset(TouchDevice[0].Phys, 0, sizeof TouchDevice[0].Phys);
  EXPECT_EQ(save(1, 70), 1);
  EXPECT_EQ(steps(), joined({{"open", "GP5B"}, flash_steps(record, 70), {"PL", "close"}}));
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
  EXPECT_FALSE(std::filesystem::exists(kWorkingFile));
}

TEST_F(SaveFailureTest, ASilentControllerIsWrittenToInVain) {
  silence(add_usb_panel());
  EXPECT_EQ(save(1, 70), 1);
  Lines expected{"open", "write working", "write saved", "notify"};
  for (const std::string& command : joined({{"GP5B"}, flash_steps(record, 70), {"PL"}})) {
    expected.insert(expected.end(), 4, command);
  }
  expected.emplace_back("close");
  EXPECT_EQ(steps(), expected);
}

TEST_F(SaveFailureTest, TheCallersRecordLeavesWithTheChecksumOfItsFlashForm) {
  bring_in_line(add_usb_panel());
  save(1);
  EXPECT_EQ(record.Chksum, flash_checksum(record));
}

TEST_F(SaveFailureTest, TheFlashFramesOfASavedSet) {
  add_usb_panel();
  save(1);
  // HID mode 1B and the edges 110, 210, 310 and 410.
  EXPECT_EQ(
      trace_of({"set_report"}),
      (Lines{"set_report 1: 06 01 47 50 35 42 0D", "set_report 1: 0A 01 53 50 33 33 30 30 30 30 0D",
             "set_report 1: 0A 01 53 50 33 35 30 31 32 43 0D",
             "set_report 1: 0A 01 53 50 33 38 30 30 30 30 0D",
             "set_report 1: 0A 01 53 50 34 33 30 30 30 30 0D",
             "set_report 1: 0A 01 53 50 34 34 30 30 30 30 0D",
             "set_report 1: 0A 01 53 50 34 35 30 30 31 42 0D",
             "set_report 1: 0A 01 53 50 34 36 30 31 31 30 0D",
             "set_report 1: 0A 01 53 50 34 37 30 32 31 30 0D",
             "set_report 1: 0A 01 53 50 34 38 30 33 31 30 0D",
             "set_report 1: 0A 01 53 50 34 39 30 34 31 30 0D",
             "set_report 1: 0A 01 53 50 35 42 36 36 46 38 0D", "set_report 1: 04 01 50 4C 0D"}));
}

}  // namespace
