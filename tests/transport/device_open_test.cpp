// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <string>

#include "pct/pct_bench.h"

namespace {

using zelkora::test::data_file;
using zelkora::test::debug_messages;
using zelkora::test::joined;
using zelkora::test::Lines;
using zelkora::test::Panel;
using zelkora::test::repeated;
using zelkora::test::Way;
using zelkora::test::write_file;

class DeviceOpenTest : public zelkora::test::Bench {
 protected:
  void SetUp() override {
    Bench::SetUp();
    host.debug = 1;
  }

  static void set_entry(int index, unsigned char type, const std::string& name) {
    TouchDevice[index].Type = type;
    std::snprintf(TouchDevice[index].Name, sizeof TouchDevice[index].Name, "%s", name.c_str());
    TouchDevice[index].VID = 0x3A4C;
    TouchDevice[index].PID = 0x001F;
  }

  // Each type with what is open for it: a hiddev node when resistive, a hidraw node when PCT.
  static std::string node_of(unsigned char type) {
    return type == ZELKORA_TYPE_PCT ? "/dev/hidraw0" : "/dev/usb/hiddev0";
  }
};

constexpr unsigned char kOpenedTypes[] = {ZELKORA_TYPE_RESISTIVE_USB, ZELKORA_TYPE_PCT};

TEST_F(DeviceOpenTest, AResistivePanelIsOpenedReadOnlyAndItsReportPrepared) {
  attach_resistive();
  set_entry(2, ZELKORA_TYPE_RESISTIVE_USB, "/dev/usb/hiddev0");
  HidRaw = 1;
  device_type = ZELKORA_TYPE_PCT;
  EXPECT_EQ(OpenTouchDevice(2), ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_EQ(trace_of({"log", "open", "ioctl"}),
            (Lines{"log zelkora DD:OpenTouchDevice devname=/dev/usb/hiddev0 DevNum=2 type=1",
                   "log zelkora DD:OpenTouchDevice VID=3A4C PID=001F",
                   "log zelkora DD:OpenTouchDevice---Res USB HidRaw:0",
                   "open /dev/usb/hiddev0 O_RDONLY", "ioctl HIDIOCGREPORTINFO type=3 id=1",
                   "ioctl HIDIOCGFIELDINFO type=3 id=1 field=0", "ioctl HIDIOCINITREPORT"}));
  EXPECT_EQ(messages(),
            (Lines{"zelkora DD:OpenTouchDevice devname=/dev/usb/hiddev0 DevNum=2 type=1\n",
                   "zelkora DD:OpenTouchDevice VID=3A4C PID=001F\n",
                   "zelkora DD:OpenTouchDevice---Res USB HidRaw:0\n"}));
  EXPECT_EQ(ActiveDevice, 3);
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_EQ(HidRaw, 0);
  EXPECT_EQ(host.config_reads, 1);
  EXPECT_EQ(leaked_descriptors(), std::vector{fd});
  CloseTouchDevice(2);
}

TEST_F(DeviceOpenTest, APctPanelIsOpenedReadOnlyAndLeavesTheDeviceTypeAlone) {
  attach_resistive();
  set_entry(0, ZELKORA_TYPE_PCT, "/dev/hidraw0");
  TouchDevice[0].HidRaw = 1;
  TouchDevice[0].IsLegacy = 3;
  device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  EXPECT_EQ(OpenTouchDevice(0), ZELKORA_TYPE_PCT);
  EXPECT_EQ(trace(),
            (Lines{"log zelkora DD:OpenTouchDevice devname=/dev/hidraw0 DevNum=0 type=3",
                   "log zelkora DD:OpenTouchDevice VID=3A4C PID=001F",
                   "log zelkora DD:OpenTouchDevice---PCT HidRaw:1", "open /dev/hidraw0 O_RDONLY"}));
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_SERIAL);
  EXPECT_EQ(ActiveDevice, 1);
  EXPECT_EQ(HidRaw, 1);
  EXPECT_EQ(IsLegacy, 3);
  EXPECT_EQ(host.config_reads, 1);
  CloseTouchDevice(0);
}

TEST_F(DeviceOpenTest, TheTransportIsThatOfTheEntry) {
  attach_resistive();
  for (const unsigned char type : kOpenedTypes) {
    for (const bool hidraw : {false, true}) {
      SCOPED_TRACE(testing::Message() << "type " << int{type} << " HidRaw " << hidraw);
      set_entry(1, type, node_of(type));
      TouchDevice[1].HidRaw = hidraw ? 1 : 0;
      HidRaw = 77;
      EXPECT_EQ(OpenTouchDevice(1), type);
      EXPECT_EQ(HidRaw, hidraw ? 1 : 0);
      CloseTouchDevice(1);
    }
  }
}

TEST_F(DeviceOpenTest, TheDebugSwitchIsReadBeforeTheFirstMessage) {
  attach_resistive();
  set_entry(0, ZELKORA_TYPE_RESISTIVE_USB, "/dev/usb/hiddev0");
  host.debug = 0;
  DbgFlag = 1;
  EXPECT_EQ(OpenTouchDevice(0), ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_EQ(messages(), Lines());
  CloseTouchDevice(0);
}

TEST_F(DeviceOpenTest, AnEntryOfNoKnownTypeDoesNotExist) {
  constexpr unsigned char kUnknownTypes[] = {ZELKORA_TYPE_NONE, 4, 255};
  for (const unsigned char type : kUnknownTypes) {
    SCOPED_TRACE(int{type});
    clear_trace();
    set_entry(3, type, "/dev/usb/hiddev0");
    fd = 99;
    HidRaw = 77;
    device_type = 66;
    EXPECT_EQ(OpenTouchDevice(3), 0);
    EXPECT_EQ(messages().back(), "zelkora DD:device3 not exist err: 0\n");
    EXPECT_EQ(messages().size(), 3U);
    EXPECT_EQ(count_of("open"), 0U);
    EXPECT_EQ(fd, 99);
    EXPECT_EQ(HidRaw, 77);
    EXPECT_EQ(device_type, 66);
    EXPECT_EQ(ActiveDevice, 4);
  }
}

TEST_F(DeviceOpenTest, ANodeThatCannotBeOpenedDoesNotExist) {
  attach_resistive();
  for (const unsigned char type : kOpenedTypes) {
    SCOPED_TRACE(int{type});
    clear_trace();
    set_entry(0, type, node_of(type));
    IsLegacy = 5;
    kernel.fail_open(node_of(type), EACCES, 1);
    EXPECT_EQ(OpenTouchDevice(0), 0);
    EXPECT_EQ(fd, -1);
    EXPECT_EQ(IsLegacy, 5);
    EXPECT_EQ(messages().back(), "zelkora DD:device0 not exist err: 0\n");
    EXPECT_EQ(count_of("ioctl"), 0U);
    EXPECT_EQ(count_of("open"), 1U);
  }
}

TEST_F(DeviceOpenTest, ADescriptorOfZeroCountsAsAFailedOpen) {
  attach_resistive();
  const int saved = ::dup(STDIN_FILENO);
  for (const unsigned char type : kOpenedTypes) {
    SCOPED_TRACE(int{type});
    set_entry(0, type, node_of(type));
    ::close(STDIN_FILENO);
    clear_trace();
    EXPECT_EQ(OpenTouchDevice(0), 0);
    EXPECT_EQ(fd, 0);
    EXPECT_EQ(count_of("ioctl"), 0U);
    // Nothing of it is closed, as fd 0 stands for no device.
    CloseTouchDevice(0);
    EXPECT_EQ(CloseDevice(), 0);
    EXPECT_EQ(count_of("close"), 0U);
  }
  ::dup2(saved, STDIN_FILENO);
  ::close(saved);
}

TEST_F(DeviceOpenTest, NodeNamesAreNoFormatStrings) {
  const std::string name = "/dev/%s%n%n%x";
  expect_absent(name);
  set_entry(0, ZELKORA_TYPE_RESISTIVE_USB, name);
  EXPECT_EQ(OpenTouchDevice(0), 0);
  EXPECT_EQ(messages().front(),
            "zelkora DD:OpenTouchDevice devname=/dev/%s%n%n%x DevNum=0 type=1\n");
}

TEST_F(DeviceOpenTest, OpeningANodeByPathTouchesTheTableNowhere) {
  attach_resistive();
  EXPECT_EQ(OpenResUsbDevice(1000, "/dev/usb/hiddev0"), 1);
  EXPECT_EQ(trace_of({"open", "ioctl", "log"}),
            (Lines{"open /dev/usb/hiddev0 O_RDONLY", "ioctl HIDIOCGREPORTINFO type=3 id=1",
                   "ioctl HIDIOCGFIELDINFO type=3 id=1 field=0", "ioctl HIDIOCINITREPORT"}));
  EXPECT_EQ(field.maxusage, 63U);
  EXPECT_EQ(ActiveDevice, 0);
  EXPECT_EQ(device_type, 0);
  CloseTouchDevice(0);

  expect_absent("/dev/usb/hiddev5");
  EXPECT_EQ(OpenResUsbDevice(0, "/dev/usb/hiddev5"), 0);
  EXPECT_EQ(fd, -1);
}

TEST_F(DeviceOpenTest, OpeningAPctPanelCopiesItsFirmwareFamily) {
  attach_resistive();
  set_entry(1, ZELKORA_TYPE_PCT, "/dev/usb/hiddev0");
  TouchDevice[1].HidRaw = 1;
  for (const int family : {0, 2, 3}) {
    SCOPED_TRACE(family);
    clear_trace();
    TouchDevice[1].IsLegacy = family;
    IsLegacy = 77;
    EXPECT_EQ(OpenPCTUsbDevice(1), 1);
    EXPECT_EQ(IsLegacy, family);
    EXPECT_EQ(HidRaw, 0);
    EXPECT_EQ(trace(), (Lines{"open /dev/usb/hiddev0 O_RDONLY"}));
    EXPECT_EQ(CloseDevice(), 0);
  }
}

TEST_F(DeviceOpenTest, ThePctEntryPointRefreshesTheModeFlags) {
  attach_resistive();
  set_entry(1, ZELKORA_TYPE_PCT, "/dev/hidraw0");
  TouchDevice[1].HidRaw = 1;
  const struct { bool mouse, hybrid; } kRows[] = {{false, false}, {true, false}, {false, true}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.mouse << row.hybrid);
    DelFile(data_file("mousedef").c_str());
    DelFile(data_file(".hybrid").c_str());
    if (row.mouse) write_file(data_file("mousedef"), "");
    if (row.hybrid) write_file(data_file(".hybrid"), "");
    isPureMouse = isHybrid = 9;
    HidRaw = 77;
    EXPECT_EQ(OpenPCTDevice(1), 1);
    EXPECT_EQ(isPureMouse, row.mouse ? 1 : 0);
    EXPECT_EQ(isHybrid, row.hybrid ? 1 : 0);
    EXPECT_EQ(HidRaw, 1);
    EXPECT_EQ(host.config_reads, 0);
    EXPECT_EQ(ActiveDevice, 0);
    EXPECT_EQ(messages(), Lines());
    EXPECT_EQ(CloseDevice(), 0);
    clear_trace();
  }
}

TEST_F(DeviceOpenTest, ThePctEntryPointSaysAloudWhenTheNodeCannotBeOpened) {
  expect_absent("/dev/hidraw3");
  set_entry(0, ZELKORA_TYPE_PCT, "/dev/hidraw3");
  DbgFlag = 0;
  EXPECT_EQ(OpenPCTDevice(0), 0);
  EXPECT_EQ(messages(), (Lines{"EE:unable to open device\n"}));
  EXPECT_EQ(fd, -1);
}

TEST_F(DeviceOpenTest, ClosingTwiceClosesTheSameNumberAgain) {
  open_resistive();
  const int number = fd;
  EXPECT_EQ(CloseDevice(), 0);
  EXPECT_EQ(trace(), (Lines{"log zelkora DD:CloseDevice", "close /dev/usb/hiddev0"}));
  EXPECT_EQ(messages(), (Lines{"zelkora DD:CloseDevice\n"}));
  EXPECT_EQ(fd, number);

  // Whatever has the number by then is closed.
  const int file = ::open("/dev/null", O_RDONLY);
  ASSERT_EQ(file, number);
  EXPECT_EQ(CloseDevice(), 0);
  EXPECT_EQ(::fcntl(file, F_GETFD), -1);

  EXPECT_EQ(CloseDevice(), -1);
  EXPECT_EQ(errno, EBADF);
  EXPECT_EQ(fd, number);
}

TEST_F(DeviceOpenTest, ClosingATouchDeviceNeitherLooksAtTheIndexNorResetsTheDescriptor) {
  open_resistive();
  const int number = fd;
  CloseTouchDevice(-1000);
  EXPECT_EQ(trace(), (Lines{"log zelkora DD:CloseTouchDevice", "close /dev/usb/hiddev0"}));
  EXPECT_EQ(messages(), (Lines{"zelkora DD:CloseTouchDevice\n"}));
  EXPECT_EQ(fd, number);
  EXPECT_EQ(::fcntl(number, F_GETFD), -1);
  CloseTouchDevice(0);
  EXPECT_EQ(fd, number);
}

TEST_F(DeviceOpenTest, WithADescriptorOfZeroNothingIsClosed) {
  DbgFlag = 1;
  fd = 0;
  EXPECT_EQ(CloseDevice(), 0);
  CloseTouchDevice(0);
  EXPECT_EQ(trace(), (Lines{"log zelkora DD:CloseDevice", "log zelkora DD:CloseTouchDevice"}));
  EXPECT_NE(::fcntl(0, F_GETFD), -1);
}

TEST_F(DeviceOpenTest, OpeningWhileOpenLeavesTheOldDescriptorOpen) {
  expect_leaked_descriptors(1);
  attach_resistive();
  set_entry(0, ZELKORA_TYPE_RESISTIVE_USB, "/dev/usb/hiddev0");
  set_entry(1, ZELKORA_TYPE_PCT, "/dev/hidraw0");
  ASSERT_EQ(OpenTouchDevice(0), ZELKORA_TYPE_RESISTIVE_USB);
  const int old = fd;
  ASSERT_EQ(OpenTouchDevice(1), ZELKORA_TYPE_PCT);
  EXPECT_NE(fd, old);
  EXPECT_EQ(CloseDevice(), 0);
  EXPECT_EQ(leaked_descriptors(), std::vector{old});
}

// Controllers of the 8752 family, which are open in command mode only.
class LegacyOpenTest : public zelkora::test::PctBench {
 protected:
  static constexpr Way kWay{true, ZELKORA_FAMILY_8752};

  static Lines mode_attempt(const std::string& wanted, const std::string& found) {
    return {"set_report 8: 91 02 00 82 " + wanted, "usleep 5000", "set_report 6: 73 0C",
            "usleep 10000", "get_report 7: AA BB CC " + found + " DD"};
  }
};

TEST_F(LegacyOpenTest, OpeningEntersCommandModeAndClosingLeavesIt) {
  follow_modes();
  set_entry(kWay, 1);
  EXPECT_EQ(OpenPCTUsbDevice(1), 1);
  EXPECT_EQ(IsLegacy, ZELKORA_FAMILY_8752);
  EXPECT_EQ(exchanges(), joined({{"open /dev/hidraw7 O_RDONLY"}, mode_attempt("90", "90")}));
  EXPECT_EQ(messages(), debug_messages({"OpenPCTUsbDevice 8752\n", "enter_cmd_mode\n",
                                        "get_device_mode 0x90:0x90---match\n"}));
  clear_trace();
  EXPECT_EQ(CloseDevice(), 0);
  EXPECT_EQ(exchanges(), joined({mode_attempt("01", "01"), {"close /dev/hidraw7"}}));
  EXPECT_EQ(messages(), debug_messages({"CloseDevice\n", "leave_cmd_mode\n",
                                        "get_device_mode 0x1:0x1---match\n"}));
}

TEST_F(LegacyOpenTest, OverHiddevItIsTheSame) {
  follow_modes();
  set_entry({false, ZELKORA_FAMILY_8752});
  EXPECT_EQ(OpenPCTDevice(0), 1);
  EXPECT_EQ(CloseDevice(), 0);
  EXPECT_EQ(trace_of({"open", "set_report", "close"}),
            (Lines{"open /dev/usb/hiddev7 O_RDONLY", "set_report 8: 91 02 00 82 90",
                   "set_report 6: 73 0C", "set_report 8: 91 02 00 82 01", "set_report 6: 73 0C",
                   "close /dev/usb/hiddev7"}));
}

TEST_F(LegacyOpenTest, ClosingATouchDeviceDoesNotLeaveCommandMode) {
  follow_modes();
  set_entry(kWay);
  EXPECT_EQ(OpenTouchDevice(0), ZELKORA_TYPE_PCT);
  clear_trace();
  CloseTouchDevice(0);
  EXPECT_EQ(trace(), (Lines{"log zelkora DD:CloseTouchDevice", "close /dev/hidraw7"}));
}

TEST_F(LegacyOpenTest, SuccessAtTheLastAttemptReadsAsFailureAndLeavesTheNodeOpen) {
  expect_leaked_descriptors(1);
  follow_modes(20);
  set_entry(kWay);
  EXPECT_EQ(OpenPCTDevice(0), 0);
  EXPECT_EQ(exchanges(), joined({{"open /dev/hidraw7 O_RDONLY"},
                                 repeated(20, mode_attempt("90", "01")),
                                 mode_attempt("90", "90")}));
  EXPECT_EQ(messages().back(), "EE:unable to open device\n");
  EXPECT_EQ(leaked_descriptors(), std::vector{fd});
}

TEST_F(LegacyOpenTest, ThatFailureReachesTheCallerOfOpenTouchDevice) {
  expect_leaked_descriptors(1);
  follow_modes(20);
  set_entry(kWay);
  EXPECT_EQ(OpenTouchDevice(0), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:device0 not exist err: 0\n");
}

TEST_F(LegacyOpenTest, AControllerThatNeverEntersCommandModePassesAsOpen) {
  follow_modes(21);
  set_entry(kWay);
  EXPECT_EQ(OpenPCTDevice(0), 1);
  EXPECT_EQ(exchanges(),
            joined({{"open /dev/hidraw7 O_RDONLY"}, repeated(21, mode_attempt("90", "01"))}));
  follow_modes();
  EXPECT_EQ(CloseDevice(), 0);
}

TEST_F(LegacyOpenTest, ANodeIsClosedEvenIfCommandModeCannotBeLeft) {
  follow_modes();
  set_entry(kWay);
  EXPECT_EQ(OpenPCTDevice(0), 1);
  clear_trace();
  fail_sends(-1);
  EXPECT_EQ(CloseDevice(), 0);
  EXPECT_EQ(exchanges(), joined({repeated(21, {"usleep 5000"}), {"close /dev/hidraw7"}}));
}

}  // namespace
