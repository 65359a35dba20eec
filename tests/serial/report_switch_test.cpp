// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cerrno>

#include "serial_bench.h"

namespace {

using namespace zelkora::test;

constexpr uint8_t kReportMode = 51;

class ReportSwitchTest : public SerialBench {
 protected:
  void SetUp() override {
    SerialBench::SetUp();
    device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  }
  // A panel on the port, at this place of the table.
  SerialPanel& add(int index, const std::string& port, uint16_t mode) {
    SerialPanel& panel = attach_serial("/dev/" + port);
    panel.controller.set_value(kReportMode, mode);
    set_entry(index, port);
    return panel;
  }
  static void keep(int slot, const std::string& name, int mode) {
    std::strcpy(TempSer[slot].Name, name.c_str());
    TempSer[slot].ReportMode = mode;
  }
  // The function's own messages.
  Lines told() const {
    Lines lines;
    for (const std::string& message : messages()) {
      const auto begins = [&](const char* text) {
        return message.starts_with(std::string("zelkora DD:") + text);
      };
      if (begins("No.") || begins("TempNo.")) lines.push_back(message);
    }
    return lines;
  }
};

TEST_F(ReportSwitchTest, SwitchingOffKeepsTheModeAndSetsThree) {
  SerialPanel& panel = add(0, "ttyS0", 1);
  EXPECT_EQ(DisableRS232Report(1), 3);
  EXPECT_EQ(panel.controller.value(kReportMode), 3);
  EXPECT_STREQ(TempSer[0].Name, "ttyS0");
  EXPECT_EQ(TempSer[0].ReportMode, 1);
  EXPECT_EQ(told(), traced({"No.0 Name:ttyS0 ReportMode:1"}));
  const auto value = [](const char* frame, const char* answer) {
    return exchange_lines("ttyS0", frame, 10, answer);
  };
  EXPECT_EQ(actions(), joined({opened_lines("ttyS0"),
                               probe_lines("ttyS0"),
                               firmware_lines("ttyS0", "01 56 31 2E 32 0D"),
                               value("01 47 50 33 33 0D", "01 30 30 30 31 0D"),
                               value("01 53 50 33 33 30 30 30 33 0D", "01 30 0D"),
                               value("01 47 50 33 33 0D", "01 30 30 30 33 0D"),
                               {"close /dev/ttyS0"}}));
}

TEST_F(ReportSwitchTest, EachPanelHasTheSlotOfItsTableEntry) {
  add(0, "ttyS0", 0);
  TouchDevice[1].Type = ZELKORA_TYPE_RESISTIVE_USB;
  std::strcpy(TouchDevice[1].Name, "/dev/usb/hiddev0");
  TouchDevice[2].Type = ZELKORA_TYPE_PCT;
  std::strcpy(TouchDevice[2].Name, "ttyS9");
  add(3, "ttyS1", 2);
  EXPECT_EQ(DisableRS232Report(-1), 3);
  EXPECT_EQ(told(), traced({"No.0 Name:ttyS0 ReportMode:0", "No.3 Name:ttyS1 ReportMode:2"}));
  EXPECT_STREQ(TempSer[0].Name, "ttyS0");
  EXPECT_STREQ(TempSer[1].Name, "");
  EXPECT_STREQ(TempSer[2].Name, "");
  EXPECT_STREQ(TempSer[3].Name, "ttyS1");
}

TEST_F(ReportSwitchTest, SwitchingOnRestoresWhatWasKept) {
  for (const uint16_t mode : std::initializer_list<uint16_t>{0, 1, 2}) {
    SCOPED_TRACE(mode);
    SerialPanel& panel = add(2, "ttyS0", mode);
    EXPECT_EQ(DisableRS232Report(1), 3);
    clear_trace();
    EXPECT_EQ(DisableRS232Report(0), mode);
    EXPECT_EQ(panel.controller.value(kReportMode), mode);
    EXPECT_EQ(told(),
              traced({"TempNo.0 temp_Name: curr_name:ttyS0", "TempNo.1 temp_Name: curr_name:ttyS0",
                      "TempNo.2 temp_Name:ttyS0 curr_name:ttyS0",
                      "TempNo.2 temp_Name:ttyS0 ReportMode:" + std::to_string(mode)}));
    EXPECT_EQ(trace().back(), "close /dev/ttyS0");
    EXPECT_STREQ(TempSer[2].Name, "ttyS0") << "what was kept stays kept";
    unplug(panel);
  }
}

TEST_F(ReportSwitchTest, OtherModesAreNotRestored) {
  SerialPanel& panel = add(0, "ttyS0", 3);
  for (const int mode : {3, 4, 65535, -1, -2147483647 - 1, 2147483647}) {
    SCOPED_TRACE(mode);
    keep(0, "ttyS0", mode);
    clear_trace();
    EXPECT_EQ(DisableRS232Report(0), 0);
    EXPECT_EQ(panel.controller.value(kReportMode), 3);
    EXPECT_EQ(told().back(),
              "zelkora DD:TempNo.0 temp_Name:ttyS0 ReportMode:" + std::to_string(mode) + "\n");
    EXPECT_EQ(trace().back(), "close /dev/ttyS0");
  }
}

TEST_F(ReportSwitchTest, APanelThatWasNotKeptIsLeftAsItIs) {
  SerialPanel& panel = add(0, "ttyS0", 3);
  keep(1, "ttyS1", 1);
  keep(3, "ttyS", 2);  // a part of the panel's name, not the other way round
  EXPECT_EQ(DisableRS232Report(0), 0);
  EXPECT_EQ(panel.controller.value(kReportMode), 3);
  EXPECT_EQ(
      told(),
      traced({"TempNo.0 temp_Name: curr_name:ttyS0", "TempNo.1 temp_Name:ttyS1 curr_name:ttyS0",
              "TempNo.2 temp_Name: curr_name:ttyS0", "TempNo.3 temp_Name:ttyS curr_name:ttyS0"}));
}

TEST_F(ReportSwitchTest, TheFirstSlotWhoseNameHoldsThePanelsCounts) {
  SerialPanel& panel = add(0, "ttyS1", 3);
  keep(1, "ttyS10", 2);
  keep(2, "ttyS1", 1);
  EXPECT_EQ(DisableRS232Report(0), 2);
  EXPECT_EQ(panel.controller.value(kReportMode), 2);
  EXPECT_EQ(told().size(), 3U);
}

TEST_F(ReportSwitchTest, TheResultIsThatOfTheLastWrite) {
  add(0, "ttyS0", 1);
  SerialPanel& second = add(1, "ttyS1", 2);
  second.controller.faults.stores = 9;
  EXPECT_EQ(DisableRS232Report(1), 9);
  second.controller.faults.stores.reset();
  // The second panel has no mode to go back to: the first one's result stands.
  TempSer[1].ReportMode = 7;
  EXPECT_EQ(DisableRS232Report(0), 1);
}

TEST_F(ReportSwitchTest, AModeThatCannotBeReadIsKeptAsMinusOne) {
  SerialPanel& panel = add(0, "ttyS0", 1);
  during_usleep([&] {
    if (count_of("write") == 2) panel.controller.faults.silent = true;
  });
  EXPECT_EQ(DisableRS232Report(1), -1);
  EXPECT_EQ(TempSer[0].ReportMode, -1);
  EXPECT_EQ(told(), traced({"No.0 Name:ttyS0 ReportMode:-1"}));
}

TEST_F(ReportSwitchTest, PanelsThatDoNotOpenArePassedOver) {
  SerialPanel& gone = add(0, "ttyS0", 1);
  add(1, "ttyS1", 1).controller.set_firmware("V3.0");
  SerialPanel& last = add(2, "ttyS2", 1);
  kernel.fail_open(gone.path, ENXIO);
  EXPECT_EQ(DisableRS232Report(1), 3);
  EXPECT_EQ(told(), traced({"No.2 Name:ttyS2 ReportMode:1"}));
  EXPECT_EQ(last.controller.value(kReportMode), 3);
  EXPECT_STREQ(TempSer[0].Name, "");
  EXPECT_STREQ(TempSer[1].Name, "");
}

TEST_F(ReportSwitchTest, NobodyAtThePortLeavesItOpen) {
  add(0, "ttyS0", 1).controller.faults.silent = true;
  EXPECT_EQ(DisableRS232Report(1), 0);
  EXPECT_EQ(told(), Lines{});
  EXPECT_EQ(leaked_descriptors(), std::vector<int>{fd});
  expect_leaked_descriptors(1);
}

TEST_F(ReportSwitchTest, AnEmptyTableIsNoWork) {
  EXPECT_EQ(DisableRS232Report(1), 0);
  EXPECT_EQ(DisableRS232Report(0), 0);
  EXPECT_EQ(trace(), Lines{});
}

}  // namespace
