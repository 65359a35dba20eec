// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands on a PCT panel that fails half way: there must always be a way back.
#include <gtest/gtest.h>
#include <zelkora.h>

#include <string>
#include <vector>

#include "commands.h"
#include "fake_library.h"
#include "fake_pct.h"

namespace {

using zelkoractl::Answer;
using zelkoractl::ExitCode;
using zelkoractl::Failure;

class PctCommands : public ::testing::Test {
 protected:
  void SetUp() override {
    panel = {};
    panel.type = ZELKORA_TYPE_PCT;
    pct = {};
    pct.current.BeepOn = 1;
    pct.current.Frequency = 2000;
    pct.current.Duration = 10;
    isHybrid = 0;
  }

  void TearDown() override {
    EXPECT_EQ(pct.open, 0) << "the panel is left open";
    EXPECT_FALSE(pct.command_mode) << "the panel is left in command mode";
  }

  static std::string outcome(const Answer& answer, const char* setting) {
    return answer.document["settings"][setting]["outcome"];
  }

  template <typename Command>
  static void expect_failure(Command command, const std::string& message) {
    try {
      command();
      FAIL() << "the command was carried out";
    } catch (const Failure& failure) {
      EXPECT_EQ(failure.code(), ExitCode::kFailed);
      EXPECT_EQ(failure.message(), message);
      EXPECT_EQ(failure.nodes(), std::vector<std::string>{"/dev/usb/hiddev0"});
    }
  }
};

Answer set(const std::vector<std::string>& words) { return zelkoractl::set_settings("0", words); }

TEST_F(PctCommands, SetSavesWhatThereWasOnceOnly) {
  set({"beep=off"});
  set({"beep=both", "frequency=700"});
  ASSERT_TRUE(pct.saved);
  EXPECT_EQ(pct.saved->BeepOn, 1);
  EXPECT_EQ(pct.saved->Frequency, 2000U);
  EXPECT_EQ(pct.current.BeepOn, 3);
  EXPECT_EQ(pct.current.Frequency, 700U);
  EXPECT_EQ(pct.current.Duration, 10) << "it was not asked to change";
}

TEST_F(PctCommands, SetChangesNothingWhenThereWouldBeNoWayBack) {
  pct.saves = false;
  expect_failure([] { set({"beep=off"}); },
                 "the settings to go back to cannot be saved; nothing was changed");
  pct.says_saved = true;
  expect_failure([] { set({"beep=off"}); },
                 "the settings to go back to cannot be saved; nothing was changed");
  EXPECT_EQ(pct.current.BeepOn, 1);
}

TEST_F(PctCommands, SetPutsBackWhatTheControllerDoesNotTake) {
  pct.worn_click_mode = 2;
  const Answer answer = set({"beep=off", "click-mode=release"});
  EXPECT_EQ(answer.text, "");
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->code(), ExitCode::kFailed);
  EXPECT_EQ(answer.failure->message(),
            "the panel did not take the settings; every setting has its old value");
  EXPECT_EQ(outcome(answer, "beep"), "put back");
  EXPECT_EQ(outcome(answer, "click-mode"), "put back");
  EXPECT_EQ(answer.document["permanent"], false);
  EXPECT_EQ(pct.current.BeepOn, 1);
  EXPECT_EQ(pct.current.ClickMode, 0);
}

TEST_F(PctCommands, SetLooksIntoTheStoreWhateverItWasTold) {
  pct.sets_left = 0;
  pct.says_stored = true;
  const Answer answer = set({"beep=off"});
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(outcome(answer, "beep"), "put back") << "the store still holds the old value";
}

TEST_F(PctCommands, SetTellsTheStoresRefusalEvenOfTheValueThereIs) {
  pct.sets_left = 0;
  const Answer answer = set({"beep=down"});
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(outcome(answer, "beep"), "put back");
}

TEST_F(PctCommands, SetTellsWhenThePanelIsGone) {
  pct.unplugged_by_set = true;
  const Answer answer = set({"beep=off"});
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->message(),
            "the panel took neither the settings nor its old ones again");
  EXPECT_NE(answer.failure->remedy().find("zelkoractl revert"), std::string::npos);
  EXPECT_EQ(outcome(answer, "beep"), "not put back");
  EXPECT_TRUE(pct.saved) << "there is a way back";
}

TEST_F(PctCommands, APanelThatCannotBeOpenedIsAFailureOfItsNode) {
  pct.opens = false;
  const std::string message = "panel 0 cannot be opened";
  expect_failure([] { zelkoractl::show_panel("0"); }, message);
  expect_failure([] { zelkoractl::get_settings("0", "beep"); }, message);
  expect_failure([] { set({"beep=off"}); }, message);
  expect_failure([] { zelkoractl::apply_defaults("0"); }, message);
  expect_failure([] { zelkoractl::keep_settings("0"); }, message);
  expect_failure([] { zelkoractl::revert_settings("0"); }, message);
  expect_failure([] { zelkoractl::set_mode("0", "mouse"); }, message);
  expect_failure([] { zelkoractl::reset_panel("0"); }, message);
}

TEST_F(PctCommands, AStoredValueOutOfRangeIsMarked) {
  pct.current.DisableReport = 2;  // the only one that the library does not repair
  const Answer answer = zelkoractl::get_settings("0", "reports");
  EXPECT_FALSE(answer.failure);
  EXPECT_EQ(answer.text, "2\n");
  ASSERT_EQ(answer.hints.size(), 1U);
  EXPECT_EQ(answer.hints[0], "reports holds 2, which is out of range (on, off)");
}

TEST_F(PctCommands, DefaultsSaveWhatThereWasAndEndOutsideCommandMode) {
  const Answer answer = zelkoractl::apply_defaults("0");
  EXPECT_FALSE(answer.failure);
  EXPECT_EQ(pct.current.BeepOn, 2);
  EXPECT_EQ(pct.current.Frequency, 1000U);
  ASSERT_TRUE(pct.saved);
  EXPECT_EQ(pct.saved->BeepOn, 1);
}

TEST_F(PctCommands, DefaultsThatAreNotStoredEndOutsideCommandModeToo) {
  pct.sets_left = 0;
  const Answer answer = zelkoractl::apply_defaults("0");
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(outcome(answer, "beep"), "put back");
}

TEST_F(PctCommands, KeepLooksWhetherTheSetWasSaved) {
  pct.saves = false;
  expect_failure([] { zelkoractl::keep_settings("0"); }, "the settings could not be kept");
  pct.saved = pct.current;
  pct.saved->BeepOn = 3;
  expect_failure([] { zelkoractl::keep_settings("0"); }, "the settings could not be kept");
}

TEST_F(PctCommands, KeepFailsWhenTheCurrentSetIsNotStored) {
  pct.sets_left = 0;
  expect_failure([] { zelkoractl::keep_settings("0"); }, "the settings could not be kept");
}

TEST_F(PctCommands, RevertFailsWhenThePanelDoesNotFollow) {
  set({"click-mode=touch"});
  pct.saved->ClickMode = 2;
  pct.worn_click_mode = 2;
  expect_failure([] { zelkoractl::revert_settings("0"); },
                 "the panel did not go back to its old settings");
}

TEST_F(PctCommands, AResetPanelIsWaitedFor) {
  pct.looks_away = 3;
  const Answer answer = zelkoractl::set_mode("0", "mouse");
  EXPECT_FALSE(answer.failure);
  EXPECT_EQ(answer.document["mode"], "mouse");
  EXPECT_EQ(answer.document["was_reset"], true);
  EXPECT_EQ(pct.waits, (std::vector<unsigned>{1'000'000, 500'000, 500'000, 500'000}));
}

TEST_F(PctCommands, AResetPanelIsNotWaitedForForEver) {
  pct.looks_away = 100;
  expect_failure([] { zelkoractl::reset_panel("0"); }, "panel 0 is gone and has not come back");
  EXPECT_EQ(pct.resets, 1);
  EXPECT_EQ(pct.waits.size(), 21U);
}

TEST_F(PctCommands, APanelInTheModeIsNeitherResetNorWaitedFor) {
  const Answer answer = zelkoractl::set_mode("0", "digitizer");
  EXPECT_EQ(answer.document["was_reset"], false);
  EXPECT_EQ(pct.resets, 0);
  EXPECT_EQ(pct.waits, std::vector<unsigned>{});
}

TEST_F(PctCommands, AModeThatIsNotTakenIsTold) {
  pct.takes_modes = false;
  const Answer answer = zelkoractl::set_mode("0", "hybrid");
  ASSERT_TRUE(answer.failure);
  EXPECT_EQ(answer.failure->message(), "panel 0 did not take the mode");
  EXPECT_EQ(answer.document["mode"], "digitizer");
}

TEST_F(PctCommands, BothHybridModesAreHybrid) {
  pct.pos_mode = 3;
  EXPECT_FALSE(zelkoractl::set_mode("0", "hybrid").failure);
  pct.pos_mode = 4;
  EXPECT_FALSE(zelkoractl::set_mode("0", "hybrid").failure);
  EXPECT_EQ(pct.resets, 0);
  isHybrid = 1;
  const Answer answer = zelkoractl::set_mode("0", "digitizer");
  EXPECT_FALSE(answer.failure);
  ASSERT_EQ(answer.hints.size(), 1U);
  EXPECT_NE(answer.hints[0].find("a digitizer becomes a hybrid"), std::string::npos);
}

TEST_F(PctCommands, FamiliesHaveNamesAndAnUnreadModeDoesNot) {
  pct.pos_mode = 0;
  const Answer answer = zelkoractl::list_panels();
  const auto& document = answer.document["panels"][0];
  EXPECT_EQ(document["family"], "8752");
  EXPECT_TRUE(document["mode"].is_null());
  EXPECT_NE(answer.text.find("no answer"), std::string::npos);
}

TEST_F(PctCommands, ScreensAreNumberedAsTheirSettingIs) {
  const Answer answer = zelkoractl::list_screens();
  EXPECT_TRUE(answer.hints.empty());
  EXPECT_EQ(answer.text,
            "SCREEN  OUTPUT    AREA\n"
            "0       HDMI-1    1920x1080+0+0\n"
            "1       DP\\x1B-2  1280x1024+1920+-56\n");
  EXPECT_EQ(answer.document["screens"][1]["y"], -56);
  EXPECT_EQ(answer.document["screens"][0]["output"], "HDMI-1");
}

}  // namespace
