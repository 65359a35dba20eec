// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Settings by table index: open, set, close.
#include <algorithm>
#include <climits>
#include <iterator>

#include "settings_bench.h"

namespace {

namespace sim = zelkora::sim;
using namespace zelkora::test;

class ByIndexBench : public Bench {
 protected:
  // A panel that is in the table and not open.
  Panel& list_resistive(int index) {
    Panel& panel = attach_resistive();
    TouchDeviceEntry& entry = TouchDevice[index];
    std::snprintf(entry.Name, sizeof entry.Name, "%s", panel.nodes.hiddev.c_str());
    entry.Type = ZELKORA_TYPE_RESISTIVE_USB;
    DeviceNumber = index + 1;
    return panel;
  }
  // An entry whose node went away.
  void list_missing(int index) {
    TouchDevice[index].Type = ZELKORA_TYPE_RESISTIVE_USB;
    std::snprintf(TouchDevice[index].Name, sizeof TouchDevice[index].Name, "/dev/usb/hiddev9");
    expect_absent("/dev/usb/hiddev9");
  }
  size_t closes() const { return count_of("log zelkora DD:CloseTouchDevice"); }
};

class ByIndexTest : public ByIndexBench, public testing::WithParamInterface<SettingRow> {
 protected:
  const SettingRow& row = GetParam();
  int set_current(int devnum, unsigned value) { return row.set_current(devnum, value); }
};

TEST_P(ByIndexTest, OpensSetsAndCloses) {
  Panel& panel = list_resistive(0);
  EXPECT_EQ(set_current(0, row.good), 1);
  EXPECT_EQ(panel.controller.value(row.address), row.good);
  EXPECT_EQ(frames_of(panel.controller), setter_frames(row, row.good));
  EXPECT_EQ(trace_of({"open", "close"}),
            (Lines{"open /dev/usb/hiddev0 O_RDONLY", "close /dev/usb/hiddev0"}));
  EXPECT_EQ(trace().back(), "close /dev/usb/hiddev0");
  EXPECT_EQ(ActiveDevice, 1);
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_EQ(host.config_reads, 1);
}

TEST_P(ByIndexTest, SetsThePanelOfItsIndexAlone) {
  Panel& first = list_resistive(0);
  Panel& last = list_resistive(3);
  EXPECT_EQ(set_current(3, row.good), 1);
  EXPECT_EQ(ActiveDevice, 4);
  EXPECT_EQ(frames_of(first.controller), Lines{});
  EXPECT_EQ(frames_of(last.controller), setter_frames(row, row.good));
}

TEST_P(ByIndexTest, RefusesANegativeIndexWithoutDoingAnything) {
  list_resistive(0);
  host.debug = 1;
  for (const int devnum : {-1, INT_MIN}) {
    EXPECT_EQ(set_current(devnum, row.good), 0);
    EXPECT_EQ(set_current(devnum, 0), 0);
  }
  EXPECT_EQ(trace(), Lines{});
  EXPECT_EQ(host.config_reads, 0);
  EXPECT_EQ(ActiveDevice, 0);
}

TEST_P(ByIndexTest, GivesZeroWhenAnotherValueComesBack) {
  Panel& panel = list_resistive(0);
  panel.controller.faults.stores = 0x1234;
  EXPECT_EQ(set_current(0, row.good), 0);
  EXPECT_EQ(count_of("close"), 1U);
}

TEST_P(ByIndexTest, ComparesBeyondTheSixteenBitsThatAreSent) {
  list_resistive(0);
  EXPECT_EQ(set_current(0, 0x10000U + row.good), 0);
  EXPECT_EQ(set_current(0, 0xFFFF), 1);
}

TEST_P(ByIndexTest, ClosesAfterAFailedSetterToo) {
  Panel& panel = list_resistive(0);
  panel.controller.faults.silent = true;
  host.debug = 1;
  EXPECT_EQ(set_current(0, row.good), 0);
  EXPECT_EQ(closes(), 1U);
  EXPECT_EQ(trace().back(), "close /dev/usb/hiddev0");
}

TEST_P(ByIndexTest, TakesAFailureForTheValueThatLooksLikeIt) {
  Panel& panel = list_resistive(0);
  panel.controller.faults.silent = true;
  EXPECT_EQ(set_current(0, UINT_MAX), 1);
}

TEST_P(ByIndexTest, TakesAPanelThatCannotBeOpenedForOneThatHoldsZero) {
  list_missing(0);
  host.debug = 1;
  EXPECT_EQ(set_current(0, 0), 1);
  EXPECT_EQ(set_current(0, 1), 0);
  EXPECT_EQ(set_current(0, UINT_MAX), 0);
  EXPECT_EQ(closes(), 3U);
}

TEST_P(ByIndexTest, ClosesWhatWasOpenWhenTheEntryIsEmpty) {
  open_resistive();
  host.debug = 1;
  EXPECT_EQ(set_current(1, 0), 1);
  EXPECT_EQ(closes(), 1U);
  EXPECT_EQ(trace_of({"open", "close"}), Lines{"close /dev/usb/hiddev0"});
}

std::vector<SettingRow> settings_by_index() {
  std::vector<SettingRow> rows;
  std::ranges::copy_if(kSettings, std::back_inserter(rows),
                       [](const SettingRow& row) { return row.set_current != nullptr; });
  return rows;
}

INSTANTIATE_TEST_SUITE_P(Row, ByIndexTest, testing::ValuesIn(settings_by_index()), row_name);

class ByIndexOddityTest : public ByIndexBench {};

TEST_F(ByIndexOddityTest, ElevenSettingsCanBeSetByIndex) {
  EXPECT_EQ(settings_by_index().size(), 11U);
}

TEST_F(ByIndexOddityTest, RightCountOfZeroIsRefusedOnceThePanelIsOpen) {
  Panel& panel = list_resistive(0);
  EXPECT_EQ(SetCurrenRightCount(0, 0), 0);
  EXPECT_EQ(frames_of(panel.controller), Lines{});
  EXPECT_EQ(trace_of({"open", "close"}),
            (Lines{"open /dev/usb/hiddev0 O_RDONLY", "close /dev/usb/hiddev0"}));
}

TEST_F(ByIndexOddityTest, AFrequencyOutOfRangeIsSetAsItIs) {
  Panel& panel = list_resistive(0);
  EXPECT_EQ(SetCurrenFrequency(0, 250), 1);
  EXPECT_EQ(panel.controller.value(88), 250);
}

TEST_F(ByIndexOddityTest, BeepOffIsOneWriteAndOneReadOfWord86) {
  Panel& panel = list_resistive(0);
  EXPECT_EQ(SetCurrenBeepOn(0, 0), 1);
  EXPECT_EQ(panel.controller.value(86), 0);
  EXPECT_EQ(trace_of({"set_report", "usleep", "get_report"}),
            (Lines{"get_report 1: stall", "set_report 1: 0A 01 53 50 35 36 30 30 30 30 0D",
                   "usleep 50000", "usleep 50000", "get_report 1: 03 01 30 0D",
                   "set_report 1: 06 01 47 50 35 36 0D", "usleep 50000", "usleep 50000",
                   "get_report 1: 06 01 30 30 30 30 0D"}));
}

// --- the backlight has a command of its own ---

class BackLightByIndexTest : public ByIndexBench {};

TEST_F(BackLightByIndexTest, SendsTheLowByteButSeesNoAnswerOverUsb) {
  Panel& panel = list_resistive(1);
  EXPECT_EQ(SetCurrenBackLightDuty(1, 0x7F05), 0);
  EXPECT_EQ(panel.controller.backlight_duty(), 5);
  EXPECT_EQ(frames_of(panel.controller), times(4, "\1DU\5\r"));
  EXPECT_EQ(trace_of({"open", "close"}),
            (Lines{"open /dev/usb/hiddev0 O_RDONLY", "close /dev/usb/hiddev0"}));
  EXPECT_EQ(ActiveDevice, 2);
  EXPECT_EQ(host.config_reads, 1);
}

TEST_F(BackLightByIndexTest, RefusesANegativeIndexWithoutDoingAnything) {
  list_resistive(0);
  host.debug = 1;
  EXPECT_EQ(SetCurrenBackLightDuty(-1, 5), 0);
  EXPECT_EQ(SetCurrenBackLightDuty(INT_MIN, 0), 0);
  EXPECT_EQ(trace(), Lines{});
  EXPECT_EQ(ActiveDevice, 0);
}

TEST_F(BackLightByIndexTest, GivesZeroAndClosesWhenThePanelCannotBeOpened) {
  list_missing(0);
  host.debug = 1;
  EXPECT_EQ(SetCurrenBackLightDuty(0, 0), 0);
  EXPECT_EQ(SetCurrenBackLightDuty(0, 5), 0);
  EXPECT_EQ(closes(), 2U);
}

class AcknowledgingPort final : public sim::SerialDevice {
 public:
  void receive(std::span<const uint8_t>) override {}
  std::vector<uint8_t> transmit(size_t) override { return {0x01, '0', 0x0D}; }
};

TEST_F(BackLightByIndexTest, GivesTheCommandsResult) {
  // Opening an entry of type 3 leaves device_type alone, so the command goes to its node raw.
  AcknowledgingPort port;
  const int attachment = kernel.attach(port, "/dev/ttyS0");
  device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  TouchDevice[0].Type = ZELKORA_TYPE_PCT;
  std::snprintf(TouchDevice[0].Name, sizeof TouchDevice[0].Name, "/dev/ttyS0");
  EXPECT_EQ(SetCurrenBackLightDuty(0, 5), 1);
  EXPECT_EQ(count_of("close"), 1U);
  kernel.unplug(attachment);
}

}  // namespace
