// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands on a resistive panel that fails half way: nothing it held before may be lost.
#include <gtest/gtest.h>
#include <signal.h>
#include <zelkora.h>

#include <map>
#include <string>
#include <vector>

#include "commands.h"
#include "fake_library.h"

namespace {

using zelkoractl::Answer;
using zelkoractl::ExitCode;

class ResistiveCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    panel = {};
    panel.values = {{ZELKORA_EEP_BEEP_ON, 1},        {ZELKORA_EEP_FREQUENCY, 2000},
                    {ZELKORA_EEP_DURATION, 10},      {ZELKORA_EEP_RIGHT_TIME, 0},
                    {ZELKORA_EEP_AUTO_HID, 1},       {ZELKORA_EEP_HID_MODE, 2},
                    {ZELKORA_EEP_EDGE_LEFT, 0xFFFB}, {ZELKORA_EEP_BACKLIGHT_DUTY, 200}};
    before_ = panel.values;
  }

  Answer set(const std::vector<std::string>& words) {
    Answer answer = zelkoractl::set_settings("0", words);
    EXPECT_EQ(panel.opened, panel.closed);
    return answer;
  }

  static std::string outcome(const Answer& answer, const char* setting) {
    return answer.document["settings"][setting]["outcome"];
  }

  std::map<int, int> before_;
};

TEST_F(ResistiveCommands, SetPutsBackWhatItChangedWhenALaterValueIsNotTaken) {
  panel.worn = {ZELKORA_EEP_FREQUENCY};
  const Answer answer = set({"beep=off", "right-time=9", "hid-mode=3", "edge-left=7",
                             "backlight=10", "frequency=1000", "duration=20"});
  EXPECT_EQ(panel.values, before_);
  EXPECT_EQ(panel.commits, 0);
  EXPECT_EQ(answer.text, "");
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->code(), ExitCode::kFailed);
  EXPECT_EQ(answer.failure->nodes(), std::vector<std::string>{"/dev/usb/hiddev0"});
  EXPECT_EQ(answer.failure->message(),
            "frequency: the panel stored 2000 instead of 1000; every setting has its old value "
            "again");
  EXPECT_EQ(outcome(answer, "beep"), "put back");
  EXPECT_EQ(outcome(answer, "frequency"), "put back");
  EXPECT_EQ(outcome(answer, "duration"), "untouched");
  EXPECT_EQ(answer.document["permanent"], false);
}

TEST_F(ResistiveCommands, SetTellsWhatItCouldNotPutBackAndMakesNothingPermanent) {
  panel.writes_left = 2;
  const Answer answer = set({"beep=off", "frequency=1000"});
  EXPECT_EQ(panel.commits, 0);
  ASSERT_TRUE(answer.failure);
  EXPECT_NE(answer.failure->message().find("not put back: beep, frequency"), std::string::npos);
  EXPECT_NE(answer.failure->remedy().find("its old settings come back"), std::string::npos);
  EXPECT_EQ(outcome(answer, "beep"), "not put back");
}

TEST_F(ResistiveCommands, SetWritesNothingWhenAnOldValueCannotBeRead) {
  panel.unreadable = {ZELKORA_EEP_FREQUENCY};
  try {
    set({"beep=off", "frequency=1000"});
    FAIL() << "the change was carried out";
  } catch (const zelkoractl::Failure& failure) {
    EXPECT_EQ(failure.code(), ExitCode::kFailed);
    EXPECT_EQ(failure.message(), "the old value of frequency cannot be read; nothing was changed");
  }
  EXPECT_EQ(panel.writes, 0);
  EXPECT_EQ(panel.opened, panel.closed);
}

TEST_F(ResistiveCommands, SetTellsWhenThePanelDoesNotConfirmKeepingTheValues) {
  panel.keeps = false;
  const Answer answer = set({"beep=off"});
  EXPECT_EQ(panel.values[ZELKORA_EEP_BEEP_ON], 0);
  EXPECT_EQ(answer.text, "beep=off\n");
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->code(), ExitCode::kFailed);
  EXPECT_NE(answer.failure->message().find("may be lost when the panel loses power"),
            std::string::npos);
  EXPECT_EQ(answer.document["permanent"], false);
}

TEST_F(ResistiveCommands, SetTakesTheBacklightsReadBackForItsResult) {
  const Answer good = set({"backlight=0"});
  EXPECT_FALSE(good.failure);
  EXPECT_EQ(panel.values[ZELKORA_EEP_BACKLIGHT_DUTY], 0);

  panel.worn = {ZELKORA_EEP_BACKLIGHT_DUTY};
  const Answer bad = set({"backlight=9"});
  ASSERT_TRUE(bad.failure);
  EXPECT_NE(bad.failure->message().find("stored 0 instead of 9"), std::string::npos);
}

bool interrupted = false;

TEST_F(ResistiveCommands, SetIsNotInterruptedHalfWay) {
  signal(SIGINT, [](int) {
    interrupted = true;
    panel.writes_left = 0;
  });
  panel.interrupt_at_write = 0;
  const Answer answer = zelkoractl::set_settings("0", {"beep=off", "frequency=1000"});
  signal(SIGINT, SIG_DFL);
  EXPECT_FALSE(answer.failure);
  EXPECT_EQ(panel.commits, 1);
  EXPECT_TRUE(interrupted) << "the signal is delivered once the change is complete";
}

TEST_F(ResistiveCommands, GetTellsWhatItCouldAndWhatItCouldNotRead) {
  panel.unreadable = {ZELKORA_EEP_FREQUENCY, ZELKORA_EEP_DURATION};
  const Answer answer = zelkoractl::get_settings("0", "");
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->code(), ExitCode::kFailed);
  EXPECT_EQ(answer.failure->message(), "the panel did not tell frequency, duration");
  EXPECT_TRUE(answer.text.starts_with("beep=on\n"));
  EXPECT_EQ(answer.text.find("frequency"), std::string::npos);
  EXPECT_TRUE(answer.document["settings"]["frequency"]["value"].is_null());
  EXPECT_EQ(answer.document["settings"]["beep"]["value"], "on");
}

TEST_F(ResistiveCommands, APanelThatCannotBeOpenedIsAFailureOfItsNode) {
  panel.opens = false;
  try {
    zelkoractl::get_settings("0", "");
    FAIL() << "the panel was read";
  } catch (const zelkoractl::Failure& failure) {
    EXPECT_EQ(failure.code(), ExitCode::kFailed);
    EXPECT_EQ(failure.message(), "panel 0 cannot be opened");
    EXPECT_EQ(failure.nodes(), std::vector<std::string>{"/dev/usb/hiddev0"});
  }
  EXPECT_EQ(panel.closed, 0) << "there is nothing to close";
}

TEST_F(ResistiveCommands, AResetThatIsNotConfirmedIsAFailure) {
  panel.confirms_reset = false;
  try {
    zelkoractl::reset_panel("0");
    FAIL() << "the panel was reset";
  } catch (const zelkoractl::Failure& failure) {
    EXPECT_EQ(failure.code(), ExitCode::kFailed);
    EXPECT_EQ(failure.message(), "panel 0 did not confirm the reset");
  }
  EXPECT_EQ(panel.opened, panel.closed);
}

TEST_F(ResistiveCommands, DefaultsArePutBackLikeAnyChange) {
  panel.worn = {ZELKORA_EEP_FREQUENCY};
  const Answer answer = zelkoractl::apply_defaults("0");
  for (const auto& [address, value] : before_) EXPECT_EQ(panel.values[address], value) << address;
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(outcome(answer, "beep"), "put back");
  EXPECT_FALSE(answer.document["settings"].contains("backlight")) << "it has no default";
}

TEST_F(ResistiveCommands, KeepGivesBackWhatTheFlashFormReplaces) {
  panel.values[ZELKORA_EEP_REPORT_MODE] = 2;
  const Answer answer = zelkoractl::keep_settings("0");
  EXPECT_FALSE(answer.failure);
  EXPECT_EQ(panel.values[ZELKORA_EEP_REPORT_MODE], 2);
  EXPECT_EQ(panel.kept->ReportMode, 2);
  EXPECT_EQ(panel.kept->EdgeLeft, 0xFFFB);
  EXPECT_EQ(panel.opened, panel.closed);
}

TEST_F(ResistiveCommands, KeepFailsWhereTheStoreCannotBeWritten) {
  panel.store_works = false;
  EXPECT_THROW(zelkoractl::keep_settings("0"), zelkoractl::Failure);
  EXPECT_EQ(panel.opened, panel.closed);
}

TEST_F(ResistiveCommands, RevertPutsBackWhatItChangedWhenAValueIsNotTaken) {
  panel.values[ZELKORA_EEP_RIGHT_TIME] = 4;
  zelkoractl::keep_settings("0");
  panel.values[ZELKORA_EEP_BEEP_ON] = 0;
  panel.values[ZELKORA_EEP_EDGE_LEFT] = 7;
  const std::map<int, int> before = panel.values;
  panel.worn = {ZELKORA_EEP_EDGE_LEFT};
  const Answer answer = zelkoractl::revert_settings("0");
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->code(), ExitCode::kFailed);
  EXPECT_EQ(outcome(answer, "beep"), "put back");
  EXPECT_EQ(panel.values, before);
  EXPECT_EQ(panel.opened, panel.closed);
}

}  // namespace
