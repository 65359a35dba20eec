// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "discovery/discovery_bench.h"
#include "serial_bench.h"

namespace {

using namespace zelkora::test;

constexpr char kFirmwareAnswer[] = "01 56 31 2E 32 0D";

class SerialPortTest : public SerialBench {
 protected:
  void SetUp() override {
    SerialBench::SetUp();
    device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  }
  void TearDown() override {
    if (fd >= 0) ::close(fd);
    SerialBench::TearDown();
  }
  static bool is_open() { return ::fcntl(fd, F_GETFD) >= 0; }
};

TEST_F(SerialPortTest, InitOpensSavesFlushesAndSetsInThisOrder) {
  attach_serial("/dev/ttyS3");
  EXPECT_EQ(init_rs232touch("/dev/ttyS3"), 1);
  EXPECT_EQ(trace(), opened_lines("ttyS3"));
  EXPECT_TRUE(is_open());
}

TEST_F(SerialPortTest, InitSetsRawNineThousandSixHundredAndKeepsWhatItFound) {
  attach_serial();
  termios found;
  std::memset(&found, 0x5C, sizeof found);
  terminal("/dev/ttyS0") = found;
  EXPECT_EQ(init_rs232touch("/dev/ttyS0"), 1);
  EXPECT_EQ(std::memcmp(&oldtio, &found, sizeof found), 0);

  termios expected;
  std::memset(&expected, 0, sizeof expected);
  expected.c_cflag = 0x8BD;
  expected.c_cc[VMIN] = 1;
  const termios& set = terminal("/dev/ttyS0");
  EXPECT_EQ(set.c_iflag, 0U);
  EXPECT_EQ(set.c_oflag, 0U);
  EXPECT_EQ(set.c_lflag, 0U);
  EXPECT_EQ(set.c_cflag, 0x8BDU);
  EXPECT_EQ(set.c_cflag, static_cast<tcflag_t>(B9600 | CS8 | CREAD | CLOCAL));
  EXPECT_EQ(set.c_cc[VMIN], 1);
  EXPECT_EQ(set.c_cc[VTIME], 0);
  EXPECT_EQ(set.c_line, 0);
  EXPECT_EQ(set.c_ispeed, 0U);
  EXPECT_EQ(set.c_ospeed, 0U);
  EXPECT_EQ(std::memcmp(set.c_cc, expected.c_cc, sizeof set.c_cc), 0);
}

TEST_F(SerialPortTest, APortThatCannotBeOpenedLeavesANegativeDescriptor) {
  attach_serial();
  kernel.fail_open("/dev/ttyS0", EIO);
  fd = 77;
  std::memset(&oldtio, 0x11, sizeof oldtio);
  const termios before = oldtio;
  EXPECT_EQ(init_rs232touch("/dev/ttyS0"), 0);
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(trace(), Lines{"open /dev/ttyS0 O_RDWR|O_NONBLOCK|O_NOCTTY -> EIO"});
  EXPECT_EQ(std::memcmp(&oldtio, &before, sizeof before), 0);
}

TEST_F(SerialPortTest, DescriptorZeroIsAnOpenPort) {
  attach_serial();
  const WithoutStandardInput closed;
  EXPECT_EQ(init_rs232touch("/dev/ttyS0"), 1);
  EXPECT_EQ(fd, 0);
  ::close(fd);
  fd = -1;
}

TEST_F(SerialPortTest, NothingRestoresTheSettingsThatWereFound) {
  attach_serial();
  EXPECT_EQ(OpenSerialDevice("ttyS0"), 1);
  clear_trace();
  CloseTouchDevice(0);
  EXPECT_EQ(actions(), Lines{"close /dev/ttyS0"});
  EXPECT_EQ(terminal("/dev/ttyS0").c_cflag, 0x8BDU);
  fd = -1;
}

TEST_F(SerialPortTest, OpenAsksWhoIsThereAndForTheFirmware) {
  attach_serial();
  EXPECT_EQ(OpenSerialDevice("ttyS0"), 1);
  EXPECT_EQ(actions(), joined({opened_lines("ttyS0"), probe_lines("ttyS0"),
                               firmware_lines("ttyS0", kFirmwareAnswer)}));
  EXPECT_EQ(messages().front(), "zelkora DD:OpenSerialDevice ttyS0 device_type=2\n");
  EXPECT_TRUE(is_open());
}

TEST_F(SerialPortTest, OpenBuildsThePathBeneathDev) {
  attach_serial("/dev/usb/by-id.1");
  EXPECT_EQ(OpenSerialDevice("usb/by-id.1"), 1);
  EXPECT_EQ(trace()[1], "open /dev/usb/by-id.1 O_RDWR|O_NONBLOCK|O_NOCTTY");
}

TEST_F(SerialPortTest, OpenReportsThePortThatCannotBeOpened) {
  expect_absent("/dev/ttyS7");
  device_type = 1;
  EXPECT_EQ(OpenSerialDevice("ttyS7"), 0);
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(messages(), traced({"OpenSerialDevice ttyS7 device_type=1"}));
}

TEST_F(SerialPortTest, OpenLeavesThePortOpenWhereNobodyAnswers) {
  attach_serial().controller.faults.silent = true;
  EXPECT_EQ(OpenSerialDevice("ttyS0"), 0);
  EXPECT_EQ(actions(), joined({opened_lines("ttyS0"), repeated(10, probe_lines("ttyS0", ""))}));
  EXPECT_TRUE(is_open());
}

TEST_F(SerialPortTest, OpenLeavesThePortOpenWhereCoordinatesStream) {
  attach_serial().controller.faults.streaming = true;
  EXPECT_EQ(OpenSerialDevice("ttyS0"), 0);
  EXPECT_EQ(count_of("write"), 50U);
  EXPECT_EQ(count_of("usleep 50000"), 50U);
  EXPECT_TRUE(is_open());
}

TEST_F(SerialPortTest, OpenAcceptsAControllerThatDoesNotTellItsFirmware) {
  SerialPanel& panel = attach_serial();
  // Whatever it answers, it is no firmware text: that has two characters at least.
  panel.controller.set_firmware("V");
  EXPECT_EQ(OpenSerialDevice("ttyS0"), 1);
  EXPECT_EQ(actions(), joined({opened_lines("ttyS0"), probe_lines("ttyS0"),
                               repeated(4, firmware_lines("ttyS0", "01 56 0D"))}));
  EXPECT_TRUE(is_open());
  EXPECT_EQ(std::ranges::count(messages(), kUnsupported), 0);
}

TEST_F(SerialPortTest, OpenRefusesAndClosesAnUnsupportedController) {
  // The last one begins with a NUL on the wire, which makes an empty text.
  for (const std::string& text : {std::string("V3.0"), std::string("xV3.0x"), std::string("AV3.01"),
                                  std::string("\0ab", 3)}) {
    SCOPED_TRACE(text);
    SerialPanel& panel = attach_serial();
    panel.controller.set_firmware(text);
    clear_trace();
    EXPECT_EQ(OpenSerialDevice("ttyS0"), 0);
    EXPECT_FALSE(is_open());
    EXPECT_EQ(actions().back(), "close /dev/ttyS0");
    EXPECT_EQ(messages().back(), kUnsupported);
    unplug(panel);
  }
}

TEST_F(SerialPortTest, OtherFirmwareTextsAreSupported) {
  for (const char* text : {"V3.1", "V30", "3.0", "v3.0", "V2.1", "V 3.0"}) {
    SCOPED_TRACE(text);
    SerialPanel& panel = attach_serial();
    panel.controller.set_firmware(text);
    EXPECT_EQ(OpenSerialDevice("ttyS0"), 1);
    EXPECT_TRUE(is_open());
    ::close(fd);
    unplug(panel);
  }
}

TEST_F(SerialPortTest, OpenRefusesNamesThatAreNoneOfAPort) {
  fd = -1;
  for (const std::string& name :
       {std::string("../etc/passwd"), std::string("ttyS0;reboot"), std::string("tty S0"),
        std::string(""), std::string("ttyS0\n"), std::string("tty%s%n"), std::string(36, 't'),
        std::string(300, 't'), std::string("tty/../../opt"), std::string("tty\x80")}) {
    SCOPED_TRACE(name);
    clear_trace();
    EXPECT_EQ(OpenSerialDevice(name.c_str()), 0);
    EXPECT_EQ(actions(), Lines{});
    EXPECT_EQ(messages(), traced({"OpenSerialDevice " + name + " device_type=2"}));
    EXPECT_EQ(fd, -1);
  }
}

TEST_F(SerialPortTest, TheLongestNameIsOpened) {
  const std::string name(35, 't');
  attach_serial("/dev/" + name);
  EXPECT_EQ(OpenSerialDevice(name.c_str()), 1);
}

struct CommandRow {
  const char* name;
  void (*command)();
};
const std::vector<CommandRow> kCommands = {
    {"firmware",
     [] {
       char text[20];
       GetFirmware(text);
     }},
    {"calibration", [] { EnterCalibMode(); }},
    {"permanent", [] { PermanentParameter(); }},
    {"reset", [] { ResetController(); }},
    {"read a value", [] { ReadEEPValue(84); }},
    {"write a value", [] { WriteEEPValue(86, 1); }},
    {"report mode", [] { SetReportMode(3); }},
    {"report mode read", [] { GetReportMode(); }},
    {"beep", [] { SetBeepOn(0); }},
    {"frequency", [] { SetFrequency(0x1234); }},
    {"read a page",
     [] {
       unsigned char page[40]{};
       AXI_ReadEEPValue(2, page);
     }},
    {"write a page",
     [] {
       unsigned char page[40]{1, 0x0D, 3};
       AXI_WriteEEPValue(1, page);
     }},
};

// The bytes that a command sends are the same on both carriers.
TEST_F(SerialPortTest, SerialFramesAreThoseOfUsb) {
  SerialPanel& serial = attach_serial();
  for (const CommandRow& row : kCommands) {
    SCOPED_TRACE(row.name);
    Panel& usb = open_resistive();
    row.command();
    const int usb_descriptor = fd;
    const size_t before = serial.controller.frames().size();
    ASSERT_EQ(init_rs232touch("/dev/ttyS0"), 1);
    device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
    row.command();
    ::close(fd);
    fd = usb_descriptor;
    const auto& frames = serial.controller.frames();
    const std::vector<std::vector<uint8_t>> sent(frames.begin() + static_cast<ptrdiff_t>(before),
                                                 frames.end());
    EXPECT_FALSE(sent.empty());
    EXPECT_EQ(sent, usb.controller.frames());
    unplug(usb);
    ::close(fd);
    fd = -1;
  }
}

}  // namespace
