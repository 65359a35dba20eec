// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands on a panel that fails half way: nothing it held before may be lost. The library's
// functions are stood in for here, so that one value alone can be worn out.
#include "commands.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <zelkora.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

namespace {

struct FakePanel {
  std::map<int, int> values;
  std::set<int> worn;        // addresses that keep what they hold and acknowledge all the same
  std::set<int> unreadable;  // addresses that are not told
  bool keeps = true;         // acknowledges PermanentParameter()
  int writes_left = -1;      // then it falls silent; -1: never
  int commits = 0;
  int type = ZELKORA_TYPE_RESISTIVE_USB;
  bool opens = true;
  int opened = 0;
  int closed = 0;
  int interrupt_at_write = -1;  // raises SIGINT during this write, counted from 0
  int writes = 0;
};

FakePanel panel;

bool silent() { return panel.writes_left == 0; }

int store_and_read(short address, unsigned int value) {
  return WriteEEPValue(address, value) == 0 ? -1 : ReadEEPValue(address);
}

}  // namespace

TouchDeviceEntry TouchDevice[ZELKORA_MAX_DEVICES];
unsigned char MyConfig[ZELKORA_CONFIG_BYTES];
int ManufCnt;
int rManufCnt;

int GetTouchPanels(int) { return 1; }
int GetTouchDeviceType(int) { return panel.type; }
void GetTouchDeviceName(int, char* out) {
  std::string("/dev/usb/hiddev0").copy(out, 17);
  out[16] = '\0';
}
void GetTouchDeviceID(int, char* out) { *out = '\0'; }
void GetTouchDeviceFw(int, char* out) { *out = '\0'; }
void GetEventDeviceName(int, char* out) { *out = '\0'; }
int OpenTouchDevice(int) {
  if (!panel.opens) return 0;
  ++panel.opened;
  return ZELKORA_TYPE_RESISTIVE_USB;
}
void CloseTouchDevice(int) { ++panel.closed; }
int GetFirmware(char* firmware) {
  *firmware = '\0';
  return 0;
}
int ReadEEPValue(short address) {
  if (silent() || panel.unreadable.contains(address)) return -1;
  return panel.values[address];
}
int WriteEEPValue(short address, unsigned int value) {
  if (silent()) return 0;
  if (panel.writes++ == panel.interrupt_at_write) raise(SIGINT);
  if (panel.writes_left > 0) --panel.writes_left;
  // The lamp has a command of its own.
  const bool taken = address != ZELKORA_EEP_BACKLIGHT_DUTY && !panel.worn.contains(address);
  if (taken) panel.values[address] = static_cast<int>(value);
  return 1;
}
int PermanentParameter() {
  ++panel.commits;
  return panel.keeps ? 1 : 0;
}
int SetBackLightDuty(int duty) {
  if (!panel.worn.contains(ZELKORA_EEP_BACKLIGHT_DUTY)) {
    panel.values[ZELKORA_EEP_BACKLIGHT_DUTY] = duty;
  }
  return 0;
}
int SetHidMode(unsigned int value) {
  WriteEEPValue(ZELKORA_EEP_AUTO_HID, 0);
  return store_and_read(ZELKORA_EEP_HID_MODE, value);
}
int SetRightCount(unsigned int value) {
  return value == 0 ? -1 : store_and_read(ZELKORA_EEP_RIGHT_TIME, value);
}
int SetBeepOn(unsigned int value) { return store_and_read(ZELKORA_EEP_BEEP_ON, value); }
int SetPlayMethod(unsigned int value) { return store_and_read(ZELKORA_EEP_PLAY_METHOD, value); }
int SetFrequency(unsigned int value) { return store_and_read(ZELKORA_EEP_FREQUENCY, value); }
int SetDuration(unsigned int value) { return store_and_read(ZELKORA_EEP_DURATION, value); }
int SetScreenNo(unsigned int value) { return store_and_read(ZELKORA_EEP_SCREEN_NUMBER, value); }
int SetAutoRightClick(unsigned int value) {
  return store_and_read(ZELKORA_EEP_DISABLE_RIGHT, value);
}
int SetRotation(unsigned int value) { return store_and_read(ZELKORA_EEP_ROTATION, value); }
int SetReportMode(unsigned int value) { return store_and_read(ZELKORA_EEP_REPORT_MODE, value); }
int SetFirstMove(unsigned int value) { return store_and_read(ZELKORA_EEP_FIRST_MOVE, value); }
int SetEdgeRight(unsigned int value) { return store_and_read(ZELKORA_EEP_EDGE_RIGHT, value); }
int SetEdgeLeft(unsigned int value) { return store_and_read(ZELKORA_EEP_EDGE_LEFT, value); }
int SetEdgeDown(unsigned int value) { return store_and_read(ZELKORA_EEP_EDGE_DOWN, value); }
int SetEdgeUp(unsigned int value) { return store_and_read(ZELKORA_EEP_EDGE_UP, value); }

namespace {

using zelkoractl::Answer;
using zelkoractl::ExitCode;

class Commands : public ::testing::Test {
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

TEST_F(Commands, SetPutsBackWhatItChangedWhenALaterValueIsNotTaken) {
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

TEST_F(Commands, SetTellsWhatItCouldNotPutBackAndMakesNothingPermanent) {
  panel.writes_left = 2;
  const Answer answer = set({"beep=off", "frequency=1000"});
  EXPECT_EQ(panel.commits, 0);
  ASSERT_TRUE(answer.failure);
  EXPECT_NE(answer.failure->message().find("not put back: beep, frequency"), std::string::npos);
  EXPECT_NE(answer.failure->remedy().find("its old settings come back"), std::string::npos);
  EXPECT_EQ(outcome(answer, "beep"), "not put back");
}

TEST_F(Commands, SetWritesNothingWhenAnOldValueCannotBeRead) {
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

TEST_F(Commands, SetTellsWhenThePanelDoesNotConfirmKeepingTheValues) {
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

TEST_F(Commands, SetTakesTheBacklightsReadBackForItsResult) {
  const Answer good = set({"backlight=0"});
  EXPECT_FALSE(good.failure);
  EXPECT_EQ(panel.values[ZELKORA_EEP_BACKLIGHT_DUTY], 0);

  panel.worn = {ZELKORA_EEP_BACKLIGHT_DUTY};
  const Answer bad = set({"backlight=9"});
  ASSERT_TRUE(bad.failure);
  EXPECT_NE(bad.failure->message().find("stored 0 instead of 9"), std::string::npos);
}

bool interrupted = false;

TEST_F(Commands, SetIsNotInterruptedHalfWay) {
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

TEST_F(Commands, GetTellsWhatItCouldAndWhatItCouldNotRead) {
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

TEST_F(Commands, APanelThatCannotBeOpenedIsAFailureOfItsNode) {
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

TEST_F(Commands, AProjectedCapacitivePanelIsShownButHasNoSettings) {
  panel.type = ZELKORA_TYPE_PCT;
  const Answer shown = zelkoractl::show_panel("0");
  EXPECT_FALSE(shown.failure);
  EXPECT_EQ(shown.document["panel"]["type"], "pct-usb");
  EXPECT_FALSE(shown.document.contains("settings"));
  EXPECT_THROW(zelkoractl::set_settings("0", {"beep=off"}), zelkoractl::Failure);
  EXPECT_EQ(panel.opened, 0);
}

}  // namespace
