// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Every getter and setter against a controller on USB. Repairs and mirroring have files of their
// own.
#include <algorithm>

#include "settings_bench.h"

namespace {

using namespace zelkora::test;
using SettingsTest = Bench;

class EverySettingTest : public Bench, public testing::WithParamInterface<SettingRow> {
 protected:
  const SettingRow& row = GetParam();
};

TEST_P(EverySettingTest, GetterReadsItsOwnAddressOnce) {
  Panel& panel = open_resistive();
  for (int address = 0; address < 256; ++address) {
    panel.controller.set_value(static_cast<uint8_t>(address), 0xBEEF);
  }
  panel.controller.set_value(row.address, row.good);
  EXPECT_EQ(row.get(), row.good);
  EXPECT_EQ(frames_of(panel.controller), Lines{read_frame(row.address)});
}

TEST_P(EverySettingTest, GetterGivesMinusOneWhenTheReadFailsAndWritesNothing) {
  Panel& panel = open_resistive();
  panel.usb.set_forged_reply(kNoReply);
  EXPECT_EQ(row.get(), -1);
  EXPECT_EQ(frames_of(panel.controller), times(4, read_frame(row.address)));
}

TEST_P(EverySettingTest, SetterWritesThenReturnsWhatItReadsBack) {
  Panel& panel = open_resistive();
  EXPECT_EQ(row.set(row.good), row.good);
  EXPECT_EQ(panel.controller.value(row.address), row.good);
  EXPECT_EQ(frames_of(panel.controller), setter_frames(row, row.good));
}

TEST_P(EverySettingTest, SetterLeavesEveryOtherValueAlone) {
  Panel& panel = open_resistive();
  const zelkora::sim::ResistiveController before = panel.controller;
  row.set(row.good);
  for (int i = 0; i < 256; ++i) {
    const auto address = static_cast<uint8_t>(i);
    const bool automatic_hid = row.address == 69 && address == 68;
    if (address == row.address || automatic_hid) continue;
    EXPECT_EQ(panel.controller.value(address), before.value(address)) << i;
  }
}

TEST_P(EverySettingTest, SetterChecksNoRange) {
  Panel& panel = open_resistive();
  EXPECT_EQ(row.set(0xFFFF), 0xFFFF);
  EXPECT_EQ(panel.controller.value(row.address), 0xFFFF);
  EXPECT_EQ(frames_of(panel.controller), setter_frames(row, 0xFFFF));
}

TEST_P(EverySettingTest, SetterSendsTheLowSixteenBits) {
  Panel& panel = open_resistive();
  EXPECT_EQ(row.set(0xFFFF0123), 0x0123);
  EXPECT_EQ(frames_of(panel.controller), setter_frames(row, 0x0123));
}

TEST_P(EverySettingTest, SetterReturnsTheStoredValueAndNotTheOneAskedFor) {
  Panel& panel = open_resistive();
  panel.controller.faults.stores = 0x1234;
  EXPECT_EQ(row.set(row.good), 0x1234);
}

INSTANTIATE_TEST_SUITE_P(Row, EverySettingTest, testing::ValuesIn(kSettings), row_name);

class FailingSetterTest : public DeafPortBench, public testing::WithParamInterface<SettingRow> {
 protected:
  const SettingRow& row = GetParam();
};

TEST_P(FailingSetterTest, PrintsItsErrorAndGivesMinusOneWithoutReadingBack) {
  const std::string frame = write_frame(row.address, row.good);
  open_port_deaf_to(frame);
  DbgFlag = 1;
  EXPECT_EQ(row.set(row.good), -1);
  EXPECT_EQ(messages().back(), std::string("zelkora DD:") + row.error);
  Lines frames = times(4, frame);
  if (row.address == 69) frames.insert(frames.begin(), write_frame(68, 0));
  EXPECT_EQ(port.frames, frames);
}

TEST_P(FailingSetterTest, IsSilentWhileTheDebugSwitchIsOff) {
  open_port_deaf_to("\1SP");
  EXPECT_EQ(row.set(row.good), -1);
  EXPECT_EQ(messages(), Lines{});
}

TEST_P(FailingSetterTest, GivesMinusOneWhenTheReadBackFails) {
  open_port_deaf_to("\1GP");
  DbgFlag = 1;
  EXPECT_EQ(row.set(row.good), -1);
  EXPECT_EQ(port.controller.value(row.address), row.good);
  EXPECT_EQ(std::ranges::count(messages(), std::string("zelkora DD:") + row.error), 0);
}

INSTANTIATE_TEST_SUITE_P(Row, FailingSetterTest, testing::ValuesIn(kSettings), row_name);

// --- what one setting alone does ---

TEST_F(SettingsTest, BackLightDutyIsReadFromItsAddress) {
  Panel& panel = open_resistive();
  panel.controller.set_value(75, 0xFFFF);
  EXPECT_EQ(GetBackLightDuty(), 0xFFFF);
  EXPECT_EQ(frames_of(panel.controller), Lines{read_frame(75)});
  panel.usb.set_forged_reply(kNoReply);
  EXPECT_EQ(GetBackLightDuty(), -1);
}

TEST_F(SettingsTest, RightCountRefusesZeroWithoutAskingTheController) {
  Panel& panel = open_resistive();
  DbgFlag = 1;
  EXPECT_EQ(SetRightCount(0), -1);
  EXPECT_EQ(frames_of(panel.controller), Lines{});
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(SettingsTest, RightCountPrintsItsResultEveryTime) {
  Panel& panel = open_resistive();
  DbgFlag = 1;
  panel.controller.set_value(85, 200);
  EXPECT_EQ(GetRightCount(), 200);
  EXPECT_EQ(messages().back(), "zelkora DD:RightTime:200\n");
  panel.usb.set_forged_reply(kNoReply);
  EXPECT_EQ(GetRightCount(), -1);
  EXPECT_EQ(messages().back(), "zelkora DD:RightTime:-1\n");
}

TEST_F(SettingsTest, HidModeSwitchesTheAutomaticSettingOffFirst) {
  Panel& panel = open_resistive();
  panel.controller.set_value(68, 1);
  EXPECT_EQ(SetHidMode(2), 2);
  EXPECT_EQ(panel.controller.value(68), 0);
  EXPECT_EQ(frames_of(panel.controller), (Lines{"\1SP440000\r", "\1SP450002\r", "\1GP45\r"}));
}

TEST_F(SettingsTest, BeepSetterPrintsTheDeviceAndTheStoredValue) {
  Panel& panel = open_resistive();
  DbgFlag = 1;
  ActiveDevice = 3;
  panel.controller.faults.stores = 9;
  EXPECT_EQ(SetBeepOn(1), 9);
  EXPECT_EQ(messages().back(), "zelkora DD:ActiveDevice:3 Set Beep On :9\n");
}

class FailingSettingsTest : public DeafPortBench {};

TEST_F(FailingSettingsTest, HidModeStopsWhenTheAutomaticSettingStaysOn) {
  open_port_deaf_to(write_frame(68, 0));
  DbgFlag = 1;
  EXPECT_EQ(SetHidMode(3), -1);
  EXPECT_EQ(messages().back(), "zelkora DD:SetAutoSetHid error\n");
  EXPECT_EQ(port.frames, times(4, write_frame(68, 0)));
  EXPECT_EQ(port.controller.value(69), 2);
}

TEST_F(FailingSettingsTest, BeepSetterPrintsAFailedReadBackToo) {
  open_port_deaf_to("\1GP");
  ActiveDevice = 1;
  DbgFlag = 1;
  EXPECT_EQ(SetBeepOn(0), -1);
  EXPECT_EQ(trace_of({"log zelkora DD:ActiveDevice:1"}),
            Lines{"log zelkora DD:ActiveDevice:1 Set Beep On :-1"});
}

}  // namespace
