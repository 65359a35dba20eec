// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Which variables opening and closing a device sets, and which it leaves as they are.
#include <cerrno>
#include <cstring>
#include <string>

#include "support/bench.h"

namespace {

class DeviceStateTest : public zelkora::test::Bench {
 protected:
  static constexpr char kNode[] = "/dev/usb/hiddev0";

  static void set_entry(unsigned char type, bool hidraw) {
    TouchDevice[0].Type = type;
    TouchDevice[0].HidRaw = hidraw ? 1 : 0;
    std::strcpy(TouchDevice[0].Name, kNode);
  }
  static std::string id_table() {
    return {reinterpret_cast<const char*>(&cMyHidInfo), sizeof cMyHidInfo};
  }
};

TEST_F(DeviceStateTest, AFailedOpenLeavesTheTransportAndTypeThatItChose) {
  expect_absent(kNode);
  for (const bool hidraw : {false, true}) {
    SCOPED_TRACE(hidraw);
    HidRaw = 77;
    device_type = 66;
    set_entry(ZELKORA_TYPE_RESISTIVE_USB, hidraw);
    EXPECT_EQ(OpenTouchDevice(0), 0);
    EXPECT_EQ(HidRaw, hidraw ? 1 : 0);
    EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_USB);

    HidRaw = 77;
    device_type = 66;
    set_entry(ZELKORA_TYPE_PCT, hidraw);
    EXPECT_EQ(OpenTouchDevice(0), 0);
    EXPECT_EQ(HidRaw, hidraw ? 1 : 0);
    EXPECT_EQ(device_type, 66);
  }
}

TEST_F(DeviceStateTest, ThePctEntryPointLeavesTheOtherDeviceStateAlone) {
  attach_resistive();
  set_entry(ZELKORA_TYPE_PCT, false);
  for (const int opened : {1, 0}) {
    SCOPED_TRACE(opened);
    device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
    ActiveDevice = 3;
    std::memset(&cMyHidInfo, 0xEE, sizeof cMyHidInfo);
    if (opened == 0) kernel.fail_open(kNode, EACCES);
    EXPECT_EQ(OpenPCTDevice(0), opened);
    EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_SERIAL);
    EXPECT_EQ(ActiveDevice, 3);
    EXPECT_EQ(id_table(), std::string(sizeof cMyHidInfo, '\xEE'));
    CloseTouchDevice(0);
  }
}

TEST_F(DeviceStateTest, ClosingResetsNothing) {
  attach_resistive();
  for (void (*close_device)() : {+[] { CloseDevice(); }, +[] { CloseTouchDevice(0); }}) {
    ASSERT_EQ(OpenResUsbDevice(0, kNode), 1);
    HidRaw = 1;
    // Only the 8752 family is told that it is closed.
    IsLegacy = ZELKORA_FAMILY_8753;
    device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
    ActiveDevice = 4;
    close_device();
    EXPECT_EQ(HidRaw, 1);
    EXPECT_EQ(IsLegacy, ZELKORA_FAMILY_8753);
    EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_SERIAL);
    EXPECT_EQ(ActiveDevice, 4);
  }
}

TEST_F(DeviceStateTest, ADescriptorThatNeverOpenedIsClosedAllTheSame) {
  fd = -1;
  errno = 0;
  CloseTouchDevice(0);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(CloseDevice(), -1);
}

}  // namespace
