// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What each command says and returns: frames byte for byte, values and texts.
#include <gtest/gtest.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "command_rows.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::Carrier;
using zelkora::test::framed;
using zelkora::test::kAcknowledge;
using zelkora::test::kCarriers;
using zelkora::test::kPageBytes;
using zelkora::test::Lines;
using zelkora::test::name_of;
using zelkora::test::Panel;
using zelkora::test::with_bytes;
using zelkora::test::with_page;

class CommandsTest : public zelkora::test::ScriptedBench {
 protected:
  // The frame of the last command.
  Bytes last_frame() const {
    return controller.frames.empty() ? Bytes() : controller.frames.back();
  }

  // What GetFirmware() makes of a reply; a buffer of 21 bytes shows that 20 of them are its own.
  struct Firmware {
    int result;
    std::string text;
    friend bool operator==(const Firmware&, const Firmware&) = default;
  };
  Firmware firmware_of(const Bytes& reply) {
    restart({reply});
    char buffer[21];
    std::memset(buffer, 'x', sizeof buffer);
    const int result = GetFirmware(buffer);
    EXPECT_EQ(buffer[20], 'x');
    const std::string text(buffer);
    EXPECT_TRUE(std::all_of(buffer + text.size(), buffer + 20, [](char c) { return c == 0; }));
    return {result, text};
  }
};

TEST_F(CommandsTest, FramesOfValueCommandsOverHiddev) {
  Panel& panel = open_resistive();
  panel.controller.set_value(84, 0x0012);
  EXPECT_EQ(ReadEEPValue(84), 0x0012);
  EXPECT_EQ(trace_of({"set_report", "usleep", "get_report"}),
            (Lines{"set_report 1: 06 01 47 50 35 34 0D", "usleep 50000", "usleep 50000",
                   "get_report 1: 06 01 30 30 31 32 0D"}));
  clear_trace();
  EXPECT_EQ(WriteEEPValue(55, 2), 1);
  EXPECT_EQ(trace_of({"set_report", "usleep", "get_report"}),
            (Lines{"set_report 1: 0A 01 53 50 33 37 30 30 30 32 0D", "usleep 50000", "usleep 50000",
                   "get_report 1: 03 01 30 0D"}));
  EXPECT_EQ(panel.controller.value(55), 2);
}

TEST_F(CommandsTest, FramesOfPageCommandsOverHiddev) {
  Panel& panel = open_resistive();
  const std::string page =
      " 00 0D 01 0D 80 FF 45 52 0D 0D 7F 30 0D 01 02 03"
      " 10 20 30 40 50 60 70 80 90 A0 B0 C0 D0 E0 F0 0D 0D";
  EXPECT_EQ(AXI_WriteEEPValue(2, kPageBytes.data()), 1);
  EXPECT_EQ(trace_of({"set_report", "usleep", "get_report"}),
            (Lines{"set_report 1: 25 01 45 57 02" + page, "usleep 50000", "usleep 200000",
                   "get_report 1: 03 01 30 0D", "usleep 200000"}));
  clear_trace();
  unsigned char out[32] = {};
  EXPECT_EQ(AXI_ReadEEPValue(2, out), 1);
  EXPECT_EQ(trace_of({"set_report", "usleep", "get_report"}),
            (Lines{"set_report 1: 05 01 45 52 02 0D", "usleep 50000", "usleep 200000",
                   "get_report 1: 25 01 45 52 02" + page, "usleep 200000"}));
  EXPECT_TRUE(std::ranges::equal(out, kPageBytes));
  EXPECT_TRUE(
      std::equal(kPageBytes.begin(), kPageBytes.end(), panel.controller.eeprom().begin() + 64));
}

TEST_F(CommandsTest, FramesOfPlainCommandsOverHiddev) {
  open_resistive();
  const struct {
    int (*command)();
    const char* frame;
  } kRows[] = {{EnterCalibMode, "set_report 1: 04 01 43 52 0D"},
               {PermanentParameter, "set_report 1: 04 01 50 4C 0D"},
               {ResetController, "set_report 1: 03 01 52 0D"},
               {ChkAutoSetHid, "set_report 1: 04 01 41 55 0D"},
               {[] { return SetBackLightDuty(0x80); }, "set_report 1: 05 01 44 55 80 0D"},
               {zelkora::test::run_get_firmware, "set_report 1: 04 01 4F 49 0D"}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.frame);
    clear_trace();
    row.command();
    EXPECT_EQ(trace_of({"set_report"}).front(), row.frame);
  }
}

TEST_F(CommandsTest, FramesOfValueCommandsOnKernels2Dot4) {
  set_kernel_release("2.4.37");
  open_controller(Carrier::kUsb);
  ReadEEPValue(84);
  EXPECT_EQ(trace_of({"set_report"}).front(), "set_report 1: 01 06 01 47 50 35 34 0D");
}

TEST_F(CommandsTest, AddressesAreTwoUpperCaseDigits) {
  const struct {
    short address;
    const char* digits;
  } kRows[] = {{0, "00"},  {9, "09"},  {10, "0A"}, {51, "33"},  {53, "35"}, {54, "36"}, {55, "37"},
               {56, "38"}, {66, "42"}, {67, "43"}, {68, "44"},  {69, "45"}, {70, "46"}, {71, "47"},
               {72, "48"}, {73, "49"}, {75, "4B"}, {84, "54"},  {85, "55"}, {86, "56"}, {87, "57"},
               {88, "58"}, {89, "59"}, {91, "5B"}, {171, "AB"}, {255, "FF"}};
  for (const Carrier carrier : kCarriers) {
    open_controller(carrier);
    for (const auto& row : kRows) {
      SCOPED_TRACE(testing::Message() << name_of(carrier) << " " << row.address);
      restart({framed("0000")});
      EXPECT_EQ(ReadEEPValue(row.address), 0);
      EXPECT_EQ(last_frame(), framed(std::string("GP") + row.digits));
      restart({kAcknowledge});
      EXPECT_EQ(WriteEEPValue(row.address, 0), 1);
      EXPECT_EQ(last_frame(), framed(std::string("SP") + row.digits + "0000"));
    }
  }
}

TEST_F(CommandsTest, WrittenValuesAreTheLowSixteenBitsAsFourUpperCaseDigits) {
  const struct {
    unsigned value;
    const char* digits;
  } kRows[] = {{0, "0000"},       {1, "0001"},       {300, "012C"},
               {2000, "07D0"},    {0xABCD, "ABCD"},  {0xFFFF, "FFFF"},
               {0x10000, "0000"}, {0x12345, "2345"}, {0xFFFFFFFF, "FFFF"}};
  for (const Carrier carrier : kCarriers) {
    open_controller(carrier);
    for (const auto& row : kRows) {
      SCOPED_TRACE(testing::Message() << name_of(carrier) << " " << row.value);
      restart({kAcknowledge});
      EXPECT_EQ(WriteEEPValue(88, row.value), 1);
      EXPECT_EQ(last_frame(), framed(std::string("SP58") + row.digits));
    }
  }
}

TEST_F(CommandsTest, AddressesOfMoreThanTwoDigitsAreRefusedUnsent) {
  open_controller(Carrier::kSerial);
  constexpr short kAddresses[] = {-1, 256, 0x7FFF, -0x8000};
  for (const short address : kAddresses) {
    SCOPED_TRACE(address);
    restart({framed("0001")});
    EXPECT_EQ(ReadEEPValue(address), -1);
    restart({kAcknowledge});
    EXPECT_EQ(WriteEEPValue(address, 1), 0);
    EXPECT_EQ(trace(), Lines());
  }
}

TEST_F(CommandsTest, ReadValuesAreFourHexDigits) {
  const struct {
    const char* digits;
    int value;
  } kRows[] = {{"0000", 0},     {"0001", 1},     {"0012", 0x12}, {"FFFF", 65535}, {"abcd", 0xABCD},
               {"7FFF", 32767}, {"8000", 32768}, {"1G00", 1},    {"....", 0},     {"12.4", 0x12}};
  for (const Carrier carrier : kCarriers) {
    open_controller(carrier);
    for (const auto& row : kRows) {
      SCOPED_TRACE(name_of(carrier) + " " + row.digits);
      restart({framed(row.digits)});
      EXPECT_EQ(ReadEEPValue(86), row.value);
    }
  }
}

TEST_F(CommandsTest, TheCountUnitIsValue54) {
  open_controller(Carrier::kUsb);
  restart({framed("01F4")});
  EXPECT_EQ(GetCountUnit(), 500);
  EXPECT_EQ(controller.frames, (std::vector<Bytes>{framed("GP36")}));
  restart({});
  EXPECT_EQ(GetCountUnit(), -1);
}

TEST_F(CommandsTest, TheFirmwareTextStandsBetweenTheMarkers) {
  const struct {
    Bytes reply;
    int result;
    const char* text;
  } kRows[] = {
      {{0x01, 0x56, 0x31, 0x2E, 0x32, 0x0D}, 1, "V1.2"},
      {framed("AB"), 1, "AB"},
      {framed("V1.2\rjunk"), 1, "V1.2"},
      {framed("%s%n%x"), 1, "%s%n%x"},
      // 0D at index 1 or 2 ends nothing; the text goes on behind it.
      {framed("A"), 0, ""},
      {framed(""), 0, ""},
      {framed("A\rC"), 1, "A\rC"},
      {framed("\r\r"), 1, "\r\r"},
      {{0x02, 'V', '1', '.', '2', 0x0D}, 0, ""},
      {{0x01, 'V', '1', '.', '2'}, 0, ""},
      {{0x01, 'V', '1', '.', '2', 0x0A}, 0, ""},
      {{}, 0, ""},
  };
  for (const Carrier carrier : kCarriers) {
    open_controller(carrier);
    for (const auto& row : kRows) {
      SCOPED_TRACE(with_bytes(name_of(carrier), row.reply));
      EXPECT_EQ(firmware_of(row.reply), (Firmware{row.result, row.text}));
      EXPECT_EQ(controller.frames.size(), row.result == 1 ? 1U : 4U);
    }
  }
}

TEST_F(CommandsTest, TheLongestFirmwareTextIsAByteShorterOverUsb) {
  const std::string seventeen(17, 'a');
  const std::string eighteen(18, 'a');
  const std::string nineteen(19, 'a');
  open_controller(Carrier::kSerial);
  EXPECT_EQ(firmware_of(framed(eighteen)), (Firmware{1, eighteen}));
  EXPECT_EQ(firmware_of(framed(nineteen)), (Firmware{0, ""}));
  open_controller(Carrier::kUsb);
  EXPECT_EQ(firmware_of(framed(seventeen)), (Firmware{1, seventeen}));
  EXPECT_EQ(firmware_of(framed(eighteen)), (Firmware{0, ""}));
}

TEST_F(CommandsTest, AReplyIsReadNoFurtherThanItsStatedLength) {
  open_controller(Carrier::kUsb);
  controller.stated_length = 5;  // leaves out the 0D
  EXPECT_EQ(firmware_of(framed("V1.2")), (Firmware{0, ""}));
  controller.stated_length = 0x86;  // negative
  EXPECT_EQ(firmware_of(framed("V1.2")), (Firmware{0, ""}));
  controller.stated_length = 127;  // past the frame
  EXPECT_EQ(firmware_of(framed("V1.2")), (Firmware{1, "V1.2"}));
}

TEST_F(CommandsTest, PagesGoOutAsOneBinaryByte) {
  const struct {
    int page;
    uint8_t byte;
  } kRows[] = {{0, 0}, {1, 1}, {2, 2}, {3, 3}, {0x0D, 0x0D}, {255, 255}, {256, 0}, {-1, 255}};
  for (const Carrier carrier : kCarriers) {
    open_controller(carrier);
    for (const auto& row : kRows) {
      SCOPED_TRACE(testing::Message() << name_of(carrier) << " " << row.page);
      unsigned char out[32] = {};
      restart({with_page({0x01, 0x45, 0x52, row.byte})});
      EXPECT_EQ(AXI_ReadEEPValue(row.page, out), 1);
      EXPECT_TRUE(std::ranges::equal(out, kPageBytes));
      EXPECT_EQ(controller.frames, (std::vector<Bytes>{{0x01, 0x45, 0x52, row.byte, 0x0D}}));

      restart({kAcknowledge});
      EXPECT_EQ(AXI_WriteEEPValue(row.page, kPageBytes.data()), 1);
      EXPECT_EQ(controller.frames, (std::vector<Bytes>{with_page({0x01, 0x45, 0x57, row.byte})}));
      EXPECT_EQ(last_frame().size(), 37U);
    }
  }
}

TEST_F(CommandsTest, APageThatCannotBeReadLeavesTheBufferAlone) {
  open_controller(Carrier::kSerial);
  Bytes reply = with_page({0x01, 0x45, 0x52, 0x01});
  reply.back() = 0x0A;
  restart({reply});
  Bytes out(32, 0xEE);
  EXPECT_EQ(AXI_ReadEEPValue(1, out.data()), 0);
  EXPECT_EQ(out, Bytes(32, 0xEE));
  EXPECT_EQ(controller.frames.size(), 4U);
}

TEST_F(CommandsTest, AnEchoOfAnotherPageIsRefusedAndTheReadRetried) {
  Panel& panel = open_resistive();
  panel.controller.faults.wrong_echoes = 2;
  std::ranges::copy(kPageBytes, panel.controller.eeprom().begin() + 32);
  unsigned char out[32] = {};
  EXPECT_EQ(AXI_ReadEEPValue(1, out), 1);
  EXPECT_TRUE(std::ranges::equal(out, kPageBytes));
  EXPECT_EQ(panel.controller.frames().size(), 3U);
  panel.controller.faults.wrong_echoes = 4;
  EXPECT_EQ(AXI_ReadEEPValue(1, out), 0);
}

TEST_F(CommandsTest, ThePageCommandsReachTheEeprom) {
  Panel& panel = open_resistive();
  EXPECT_EQ(AXI_WriteEEPValue(3, kPageBytes.data()), 1);
  EXPECT_TRUE(
      std::equal(kPageBytes.begin(), kPageBytes.end(), panel.controller.eeprom().begin() + 96));
  EXPECT_EQ(AXI_WriteEEPValue(4, kPageBytes.data()), 0);
}

TEST_F(CommandsTest, TheDutyGoesOutAsOneBinaryByte) {
  open_controller(Carrier::kSerial);
  const struct {
    int duty;
    uint8_t byte;
  } kRows[] = {{0, 0}, {5, 5}, {0x0D, 0x0D}, {255, 255}, {256, 0}, {-1, 255}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.duty);
    restart({kAcknowledge});
    EXPECT_EQ(SetBackLightDuty(row.duty), 1);
    EXPECT_EQ(controller.frames, (std::vector<Bytes>{{0x01, 0x44, 0x55, row.byte, 0x0D}}));
  }
}

TEST_F(CommandsTest, TheDutyIsSetOverUsbAlthoughTheResultSaysOtherwise) {
  Panel& panel = open_resistive();
  EXPECT_EQ(SetBackLightDuty(9), 0);
  EXPECT_EQ(panel.controller.backlight_duty(), 9);
  EXPECT_EQ(ChkAutoSetHid(), 0);
  EXPECT_TRUE(panel.controller.automatic_hid());
  EXPECT_EQ(panel.controller.frames().size(), 8U);
}

TEST_F(CommandsTest, PlainCommandsReachTheController) {
  Panel& panel = open_resistive();
  EXPECT_EQ(EnterCalibMode(), 1);
  EXPECT_TRUE(panel.controller.calibrating());
  EXPECT_EQ(WriteEEPValue(86, 0), 1);
  EXPECT_EQ(PermanentParameter(), 1);
  EXPECT_EQ(panel.controller.commits(), 1U);
  EXPECT_EQ(panel.controller.permanent_value(86), 0);
  EXPECT_EQ(ResetController(), 1);
  EXPECT_EQ(panel.controller.resets(), 1U);
  EXPECT_FALSE(panel.controller.calibrating());
}

TEST_F(CommandsTest, LockingParametersOpensCommitsAndCloses) {
  Panel& panel = open_resistive();
  CloseTouchDevice(0);
  clear_trace();
  host.config_reads = 0;
  LockParameter(0);
  EXPECT_EQ(host.config_reads, 1);
  EXPECT_EQ(panel.controller.commits(), 1U);
  EXPECT_EQ(trace_of({"open", "set_report", "close"}),
            (Lines{"open /dev/usb/hiddev0 O_RDONLY", "set_report 1: 04 01 50 4C 0D",
                   "close /dev/usb/hiddev0"}));
}

TEST_F(CommandsTest, LockingParametersClosesEvenWhatItCouldNotOpen) {
  host.debug = 1;
  expect_absent("/dev/usb/hiddev5");
  std::strcpy(TouchDevice[1].Name, "/dev/usb/hiddev5");
  TouchDevice[1].Type = ZELKORA_TYPE_RESISTIVE_USB;
  LockParameter(1);
  EXPECT_EQ(ActiveDevice, 2);
  EXPECT_EQ(trace(),
            (Lines{"log zelkora DD:OpenTouchDevice devname=/dev/usb/hiddev5 DevNum=1 type=1",
                   "log zelkora DD:OpenTouchDevice VID=0000 PID=0000",
                   "log zelkora DD:OpenTouchDevice---Res USB HidRaw:0",
                   "open /dev/usb/hiddev5 O_RDONLY -> ENOENT",
                   "log zelkora DD:device1 not exist err: 0", "log zelkora DD:CloseTouchDevice"}));
}

TEST_F(CommandsTest, LockingParametersOfANegativeDeviceDoesNothing) {
  host.debug = DbgFlag = 1;
  LockParameter(-1);
  EXPECT_EQ(trace(), Lines());
  EXPECT_EQ(ActiveDevice, 0);
  EXPECT_EQ(host.config_reads, 0);
}

}  // namespace
