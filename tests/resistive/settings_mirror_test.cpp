// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Which getters and setters copy their value into the serial panel list, and when.
#include <algorithm>

#include "settings_bench.h"

namespace {

using namespace zelkora::test;

// The setting's value out of range and what becomes of it, for those that are repaired.
struct Repaired {
  uint16_t stored;
  int returned;
};

Repaired repaired(const SettingRow& row) {
  switch (row.address) {
    case 55:
      return {9, 0};
    case 84:
      return {7, 1};
    case 86:
      return {5, 1};
    case 87:
      return {7, 1};
    case 88:
      return {250, 500};
    case 89:
      return {3, 5};
    default:
      return {200, 200};
  }
}

class SettingsMirrorTest : public Bench, public testing::WithParamInterface<SettingRow> {
 protected:
  const SettingRow& row = GetParam();

  // The panel is the second one of the list.
  SerialPanel& open_listed_panel() {
    SerialPanel& panel = open_serial();
    name_active_device("ttyS0");
    write_file(kSerialList, serial_list({"ttyS1", "ttyS0"}));
    ReadSerConf = 1;
    return panel;
  }

  void expect_list_with(const char* stem, int value) {
    EXPECT_EQ(read_file(kSerialList),
              serial_list({"ttyS1", "ttyS0"}, std::pair(std::string(stem) + "2", value)));
  }
  void expect_untouched_list() {
    EXPECT_EQ(read_file(kSerialList), serial_list({"ttyS1", "ttyS0"}));
    EXPECT_EQ(count_of("log zelkora DD:SetSerConf"), 0U);
  }
};

TEST_P(SettingsMirrorTest, GetterOfAValueInRange) {
  SerialPanel& panel = open_listed_panel();
  panel.controller.set_value(row.address, row.good);
  DbgFlag = 1;
  EXPECT_EQ(row.get(), row.good);
  if (row.getter_mirrors == Mirrored::kAlways) {
    expect_list_with(row.getter_key, row.good);
  } else {
    expect_untouched_list();
  }
}

TEST_P(SettingsMirrorTest, GetterOfAValueOutOfRange) {
  SerialPanel& panel = open_listed_panel();
  const Repaired value = repaired(row);
  panel.controller.set_value(row.address, value.stored);
  DbgFlag = 1;
  EXPECT_EQ(row.get(), value.returned);
  if (row.getter_mirrors == Mirrored::kNever) {
    expect_untouched_list();
  } else {
    expect_list_with(row.getter_key, value.returned);
  }
}

TEST_P(SettingsMirrorTest, GetterMirrorsAReplacementThatCouldNotBeWritten) {
  SerialPanel& panel = open_listed_panel();
  const Repaired value = repaired(row);
  panel.controller.set_value(row.address, value.stored);
  panel.controller.faults.bad_acknowledges = 4;
  EXPECT_EQ(row.get(), value.returned);
  if (row.getter_mirrors == Mirrored::kNever) {
    expect_untouched_list();
  } else {
    expect_list_with(row.getter_key, value.returned);
  }
}

TEST_P(SettingsMirrorTest, GetterMirrorsAtAnyRefreshMarkButZero) {
  SerialPanel& panel = open_listed_panel();
  panel.controller.set_value(row.address, repaired(row).stored);
  ReadSerConf = 2;
  row.get();
  if (row.getter_mirrors == Mirrored::kNever) {
    expect_untouched_list();
  } else {
    expect_list_with(row.getter_key, repaired(row).returned);
  }
}

TEST_P(SettingsMirrorTest, GetterMirrorsNothingBeforeTheFirstRefresh) {
  SerialPanel& panel = open_listed_panel();
  panel.controller.set_value(row.address, repaired(row).stored);
  DbgFlag = 1;
  ReadSerConf = 0;
  EXPECT_EQ(row.get(), repaired(row).returned);
  expect_untouched_list();
}

TEST_P(SettingsMirrorTest, GetterMirrorsNothingAfterAFailedRead) {
  SerialPanel& panel = open_listed_panel();
  panel.controller.faults.silent = true;
  DbgFlag = 1;
  EXPECT_EQ(row.get(), -1);
  expect_untouched_list();
}

TEST_P(SettingsMirrorTest, GetterMirrorsNothingOfAPanelOnUsb) {
  Panel& panel = open_resistive();
  panel.controller.set_value(row.address, repaired(row).stored);
  const std::string list = serial_list({panel.nodes.hiddev});
  write_file(kSerialList, list);
  ReadSerConf = 1;
  EXPECT_EQ(row.get(), repaired(row).returned);
  EXPECT_EQ(read_file(kSerialList), list);
}

TEST_P(SettingsMirrorTest, SetterMirrorsBeforeTheFirstRefreshToo) {
  SerialPanel& panel = open_listed_panel();
  DbgFlag = 1;
  ReadSerConf = 0;
  EXPECT_EQ(row.set(row.good), row.good);
  EXPECT_EQ(frames_of(panel.controller), setter_frames(row, row.good));
  if (row.setter_key == nullptr) {
    expect_untouched_list();
  } else {
    expect_list_with(row.setter_key, row.good);
  }
}

TEST_P(SettingsMirrorTest, SetterMirrorsWhatIsStoredAndNotWhatWasAskedFor) {
  SerialPanel& panel = open_listed_panel();
  panel.controller.faults.stores = 4321;
  EXPECT_EQ(row.set(row.good), 4321);
  if (row.setter_key == nullptr) {
    expect_untouched_list();
  } else {
    expect_list_with(row.setter_key, 4321);
  }
}

TEST_P(SettingsMirrorTest, SetterMirrorsNothingAfterAFailedWrite) {
  SerialPanel& panel = open_listed_panel();
  panel.controller.faults.silent = true;
  DbgFlag = 1;
  EXPECT_EQ(row.set(row.good), -1);
  expect_untouched_list();
}

TEST_P(SettingsMirrorTest, SetterMirrorsNothingOfAPanelOnUsb) {
  Panel& panel = open_resistive();
  const std::string list = serial_list({panel.nodes.hiddev});
  write_file(kSerialList, list);
  ReadSerConf = 1;
  EXPECT_EQ(row.set(row.good), row.good);
  EXPECT_EQ(read_file(kSerialList), list);
}

INSTANTIATE_TEST_SUITE_P(Row, SettingsMirrorTest, testing::ValuesIn(kSettings), row_name);

class FailedReadBackTest : public DeafPortBench, public testing::WithParamInterface<SettingRow> {};

TEST_P(FailedReadBackTest, IsMirroredAsMinusOne) {
  const SettingRow& row = GetParam();
  open_port_deaf_to("\1GP");
  name_active_device("ttyS0");
  write_file(kSerialList, serial_list({"ttyS0"}));
  EXPECT_EQ(row.set(row.good), -1);
  const std::string expected =
      row.setter_key == nullptr
          ? serial_list({"ttyS0"})
          : serial_list({"ttyS0"}, std::pair(std::string(row.setter_key) + "1", -1));
  EXPECT_EQ(read_file(kSerialList), expected);
}

INSTANTIATE_TEST_SUITE_P(Row, FailedReadBackTest, testing::ValuesIn(kSettings), row_name);

using MirrorOrderTest = Bench;

TEST_F(MirrorOrderTest, BeepIsPrintedBeforeItIsMirrored) {
  open_serial();
  name_active_device("ttyS0");
  write_file(kSerialList, serial_list({"ttyS0"}));
  DbgFlag = 1;
  EXPECT_EQ(SetBeepOn(0), 0);
  const auto printed = std::ranges::find(messages(), "zelkora DD:ActiveDevice:1 Set Beep On :0\n");
  ASSERT_NE(printed, messages().end());
  EXPECT_EQ(*(printed + 1), "zelkora DD:SetSerConf KeyName:SerialDeviceBeepOn\n");
}

}  // namespace
