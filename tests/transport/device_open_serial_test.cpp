// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cstdio>

#include "support/bench.h"

namespace {

using zelkora::test::Lines;
using zelkora::test::SerialPanel;

class DeviceOpenSerialTest : public zelkora::test::Bench {
 protected:
  void SetUp() override {
    Bench::SetUp();
    host.debug = 1;
    set_name("ttyS0");
    TouchDevice[1].Type = ZELKORA_TYPE_RESISTIVE_SERIAL;
    HidRaw = 1;
    device_type = ZELKORA_TYPE_PCT;
  }

  static void set_name(const char* name) {
    std::snprintf(TouchDevice[1].Name, sizeof TouchDevice[1].Name, "%s", name);
  }
};

TEST_F(DeviceOpenSerialTest, ASerialPanelIsOpenedByItsNameAndTakesCommands) {
  SerialPanel& panel = attach_serial("/dev/ttyS0");
  panel.controller.set_value(86, 1);
  EXPECT_EQ(OpenTouchDevice(1), ZELKORA_TYPE_RESISTIVE_SERIAL);
  EXPECT_EQ(ActiveDevice, 2);
  EXPECT_EQ(HidRaw, 0);
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_SERIAL);
  ASSERT_GE(messages().size(), 4U);
  EXPECT_EQ(Lines(messages().begin(), messages().begin() + 4),
            (Lines{"zelkora DD:OpenTouchDevice devname=ttyS0 DevNum=1 type=2\n",
                   "zelkora DD:OpenTouchDevice VID=0000 PID=0000\n",
                   "zelkora DD:OpenTouchDevice---serial\n",
                   "zelkora DD:OpenSerialDevice ttyS0 device_type=2\n"}));
  EXPECT_EQ(ReadEEPValue(ZELKORA_EEP_BEEP_ON), 1);
  CloseTouchDevice(1);
}

TEST_F(DeviceOpenSerialTest, AMissingPortIsNoDevice) {
  expect_absent("/dev/ttyS0");
  EXPECT_EQ(OpenTouchDevice(1), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:device1 not exist err: 0\n");
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_SERIAL);
}

TEST_F(DeviceOpenSerialTest, ANameThatLeavesDevIsNotOpened) {
  set_name("../etc/tty");
  EXPECT_EQ(OpenTouchDevice(1), 0);
  EXPECT_EQ(trace_of({"open"}), Lines{});
}

}  // namespace
