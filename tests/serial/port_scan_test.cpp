// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cerrno>

#include "discovery/discovery_bench.h"
#include "serial_bench.h"

namespace {

using namespace zelkora::test;

constexpr char kV30[] = "01 56 33 2E 30 0D";

class PortScanTest : public SerialBench {
 protected:
  void SetUp() override {
    SerialBench::SetUp();
    set_kernel_log("00:04: ttyS0 at I/O 0x3f8 is a 16550A\nusb 1-1: now attached to ttyUSB0\n");
  }
  static Lines log_lines() {
    return {std::string("system ") + kTakeKernelLog, std::string("system ") + kRemoveKernelLog};
  }
  static Lines closed_lines(const std::string& port) { return {"close /dev/" + port}; }
};

TEST_F(PortScanTest, APortOfTheKernelLogIsThere) {
  EXPECT_EQ(CheckSerialPortExist("ttyUSB0"), 1);
  EXPECT_EQ(trace(), (Lines{std::string("system ") + kTakeKernelLog,
                            "log zelkora DD:CheckSerialPortExist DevName:ttyUSB0",
                            std::string("system ") + kRemoveKernelLog}));
  EXPECT_EQ(messages(), traced({"CheckSerialPortExist DevName:ttyUSB0"}));
  EXPECT_FALSE(std::filesystem::exists(data_file("tty.log")));
}

TEST_F(PortScanTest, TheNameMayStandAnywhereInALine) {
  struct Row {
    const char* name;
    std::string log;
    int result;
  };
  const Row rows[] = {
      {"an empty log", "", 0},
      {"another port", "ttyS1 is here\n", 0},
      {"the last line, without a line feed", "x\nttyS0", 1},
      {"part of a longer name", "ttyS01\n", 1},
      {"other letters", "TTYS0\n", 0},
      {"format characters", "%s%n ttyS0\n", 1},
      // Lines are looked at in pieces of 511 characters.
      {"within the first piece", std::string(506, '.') + "ttyS0\n", 1},
      {"across the seam", std::string(508, '.') + "ttyS0\n", 0},
      {"within the second piece", std::string(511, '.') + "ttyS0\n", 1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    set_kernel_log(row.log);
    clear_trace();
    EXPECT_EQ(CheckSerialPortExist("ttyS0"), row.result);
    EXPECT_EQ(commands(), log_lines());
  }
}

TEST_F(PortScanTest, ALogThatCannotBeTakenMentionsNoPort) {
  forget_commands();
  answer_command({.command = kTakeKernelLog, .status = exited(1)});
  answer_command({.command = kRemoveKernelLog, .status = exited(1)});
  EXPECT_EQ(CheckSerialPortExist("ttyS0"), 0);
  EXPECT_EQ(commands(), log_lines());
}

TEST_F(PortScanTest, TheLogIsNotTakenThroughALinkInItsPlace) {
  const std::string outside = "/opt/zelkora-tests/outside";
  zelkora::test::write_file(outside, "kept");
  std::filesystem::create_symlink(outside, data_file("tty.log"));
  EXPECT_EQ(CheckSerialPortExist("ttyS0"), 1);
  EXPECT_EQ(zelkora::test::read_file(outside), "kept");
  std::filesystem::remove(outside);
}

TEST_F(PortScanTest, APanelIsEnteredAndItsPortClosed) {
  SerialPanel& panel = attach_serial();
  panel.controller.set_firmware("V2.1");
  EXPECT_EQ(FindMyttyDevice(), 1);
  EXPECT_EQ(DeviceNumber, 1);
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_SERIAL);
  const TouchDeviceEntry& entry = TouchDevice[0];
  EXPECT_STREQ(entry.Name, "ttyS0");
  EXPECT_STREQ(entry.Phys, "ttyS0");
  EXPECT_STREQ(entry.ID, "ttyS0");
  EXPECT_STREQ(entry.FWVersion, "V2.1");
  EXPECT_EQ(entry.Type, ZELKORA_TYPE_RESISTIVE_SERIAL);
  EXPECT_EQ(entry.VID, 0x3B17U);
  EXPECT_EQ(entry.PID, 0x0001U);
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(entry.SN), 8), "\1\2\3\4\5\6\7\10");
  EXPECT_EQ(actions(),
            joined({log_lines(), opened_lines("ttyS0"), probe_lines("ttyS0"),
                    firmware_lines("ttyS0", "01 56 32 2E 31 0D"), closed_lines("ttyS0")}));
  EXPECT_EQ(messages().front(), "zelkora DD:FindMyttyDevice--start\n");
  EXPECT_EQ(messages()[2], "zelkora DD:filename /dev/ttyS0\n");
  EXPECT_EQ(messages().back(), "zelkora DD:FindMyttyDevice--end DeviceNumber:1\n");
}

TEST_F(PortScanTest, WithoutNodesNothingIsDone) {
  EXPECT_EQ(FindMyttyDevice(), 0);
  EXPECT_EQ(actions(), Lines{});
  EXPECT_EQ(messages(), traced({"FindMyttyDevice--start", "FindMyttyDevice--end DeviceNumber:0"}));
}

TEST_F(PortScanTest, SwitchedOffSerialSupportSearchesNothing) {
  attach_serial();
  write_file(data_file(".disable_rs232"), "");
  device_type = 1;
  EXPECT_EQ(FindMyttyDevice(), 0);
  EXPECT_EQ(device_type, 1);
  EXPECT_EQ(actions(), Lines{});
  EXPECT_EQ(messages(), traced({"FindMyttyDevice--start"}));
}

TEST_F(PortScanTest, ADirectoryThatCannotBeReadHasNoPanels) {
  attach_serial();
  fail_file_call("opendir", "/dev", EACCES);
  EXPECT_EQ(FindMyttyDevice(), 0);
  EXPECT_EQ(messages(), traced({"FindMyttyDevice--start", "FindMyttyDevice--end DeviceNumber:0"}));
}

TEST_F(PortScanTest, OnlySerialNodesThatTheLogMentionsAreOpened) {
  set_kernel_log("ttyS0 ttyS1 ttyUSB0 ttyACM0 tty1 xttySx\n");
  for (const char* node : {"ttyS1", "ttyUSB0", "ttyACM0", "tty1", "ttyS2", "xttySx"}) {
    attach_serial(std::string("/dev/") + node);
  }
  EXPECT_EQ(FindMyttyDevice(), 1);
  EXPECT_EQ(DeviceNumber, 3);
  Lines names;
  for (int i = 0; i < 3; ++i) names.emplace_back(TouchDevice[i].Name);
  Lines expected = listed("/dev", "tty");
  std::erase_if(expected, [](const std::string& name) {
    return name != "ttyS1" && name != "ttyUSB0" && name != "xttySx";
  });
  EXPECT_EQ(names, expected) << "in the order of the directory";
  // The log is taken afresh for each of the four nodes by that name.
  EXPECT_EQ(count_of(std::string("system ") + kTakeKernelLog), 4U);
  EXPECT_EQ(count_of(std::string("system ") + kRemoveKernelLog), 4U);
}

TEST_F(PortScanTest, APortThatCannotBeOpenedIsPassedOver) {
  attach_serial();
  kernel.fail_open("/dev/ttyS0", EBUSY);
  EXPECT_EQ(FindMyttyDevice(), 0);
  EXPECT_EQ(actions(),
            joined({log_lines(), {"open /dev/ttyS0 O_RDWR|O_NONBLOCK|O_NOCTTY -> EBUSY"}}));
}

TEST_F(PortScanTest, APortWithoutHardwareIsAskedInVainAndClosed) {
  attach_serial().controller.faults.no_hardware = true;
  EXPECT_EQ(FindMyttyDevice(), 0);
  EXPECT_EQ(count_of("open /dev/ttyS0"), 1U);
  EXPECT_EQ(count_of("close /dev/ttyS0"), 1U);
  EXPECT_EQ(DeviceNumber, 0);
}

TEST_F(PortScanTest, ASilentPortIsClosed) {
  attach_serial().controller.faults.silent = true;
  EXPECT_EQ(FindMyttyDevice(), 0);
  EXPECT_EQ(actions(), joined({log_lines(), opened_lines("ttyS0"),
                               repeated(10, probe_lines("ttyS0", "")), closed_lines("ttyS0")}));
}

TEST_F(PortScanTest, APortThatStreamsCoordinatesIsClosed) {
  attach_serial().controller.faults.streaming = true;
  EXPECT_EQ(FindMyttyDevice(), 0);
  EXPECT_EQ(actions(), joined({log_lines(), opened_lines("ttyS0"),
                               repeated(50, probe_lines("ttyS0", "00 98 10 20 30 40 00 00 00 00")),
                               closed_lines("ttyS0")}));
}

TEST_F(PortScanTest, WithoutAFirmwareThatCountsAPortIsAskedFourTimesAndClosedEachTime) {
  struct Row {
    const char* name;
    std::string firmware;
    Lines asked;
  };
  const Row rows[] = {
      {"an unsupported one", "V3.0", firmware_lines("ttyS0", kV30)},
      {"an empty one", std::string("\0ab", 3), firmware_lines("ttyS0", "01 00 61 62 0D")},
      {"none", "V", repeated(4, firmware_lines("ttyS0", "01 56 0D"))},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    SerialPanel& panel = attach_serial();
    panel.controller.set_firmware(row.firmware);
    clear_trace();
    EXPECT_EQ(FindMyttyDevice(), 0);
    EXPECT_EQ(DeviceNumber, 0);
    const Lines once =
        joined({opened_lines("ttyS0"), probe_lines("ttyS0"), row.asked, closed_lines("ttyS0")});
    EXPECT_EQ(actions(), joined({log_lines(), repeated(4, once)}));
    EXPECT_EQ(std::ranges::count(messages(), "zelkora DD:filename /dev/ttyS0\n"), 4);
    EXPECT_EQ(std::ranges::count(messages(), kUnsupported), 0);
    unplug(panel);
  }
}

TEST_F(PortScanTest, APortThatComesToItsSensesIsAPanel) {
  for (const int opening : {2, 3, 4}) {
    SCOPED_TRACE(opening);
    std::memset(TouchDevice, 0, sizeof TouchDevice);
    DeviceNumber = 0;
    SerialPanel& panel = attach_serial();
    panel.controller.set_firmware("V3.0");
    clear_trace();
    during_usleep([&] {
      const bool now = count_of("open /dev/ttyS0") == static_cast<size_t>(opening);
      panel.controller.set_firmware(now ? "V1.2" : "V3.0");
    });
    EXPECT_EQ(FindMyttyDevice(), 1);
    EXPECT_EQ(count_of("open /dev/ttyS0"), static_cast<size_t>(opening));
    EXPECT_EQ(count_of("close /dev/ttyS0"), static_cast<size_t>(opening));
    EXPECT_STREQ(TouchDevice[0].FWVersion, "V1.2");
    unplug(panel);
  }
}

TEST_F(PortScanTest, APortThatVanishesBetweenTwoTriesIsPassedOver) {
  SerialPanel& panel = attach_serial();
  panel.controller.set_firmware("V3.0");
  kernel.fail_open("/dev/ttyS0", ENXIO, 0);
  during_usleep([&] {
    if (count_of("open /dev/ttyS0") == 2) kernel.fail_open("/dev/ttyS0", ENXIO);
  });
  EXPECT_EQ(FindMyttyDevice(), 0);
  EXPECT_EQ(count_of("open /dev/ttyS0"), 3U);
  EXPECT_EQ(count_of("close /dev/ttyS0"), 2U);
}

TEST_F(PortScanTest, ARefusedPortDoesNotStopTheWalk) {
  set_kernel_log("ttyS0 ttyS1 ttyS2 ttyS3\n");
  attach_serial("/dev/ttyS0").controller.set_firmware("V3.0");
  attach_serial("/dev/ttyS1").controller.faults.silent = true;
  attach_serial("/dev/ttyS2");
  attach_serial("/dev/ttyS3");
  kernel.fail_open("/dev/ttyS3", EIO);
  EXPECT_EQ(FindMyttyDevice(), 1);
  EXPECT_EQ(DeviceNumber, 1);
  EXPECT_STREQ(TouchDevice[0].Name, "ttyS2");
  EXPECT_STREQ(TouchDevice[1].Name, "");
}

TEST_F(PortScanTest, AFifthPanelIsNotEnteredAndItsPortIsClosed) {
  set_kernel_log("ttyS0 ttyS1 ttyS2 ttyS3 ttyS4\n");
  for (int i = 0; i < 5; ++i) attach_serial("/dev/ttyS" + std::to_string(i));
  EXPECT_EQ(FindMyttyDevice(), 1);
  EXPECT_EQ(DeviceNumber, 4);
  EXPECT_EQ(count_of("open"), 5U);
  EXPECT_EQ(count_of("close"), 5U);
  const Lines order = listed("/dev", "ttyS");
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(TouchDevice[i].Name, order[i]);
}

TEST_F(PortScanTest, AFullTableFindsNothing) {
  attach_serial();
  DeviceNumber = 4;
  EXPECT_EQ(FindMyttyDevice(), 0);
  EXPECT_EQ(DeviceNumber, 4);
  EXPECT_EQ(actions().back(), "close /dev/ttyS0");
}

TEST_F(PortScanTest, ALongFirmwareTextFitsItsField) {
  attach_serial().controller.set_firmware("V1.234567890123456789012345");
  EXPECT_EQ(FindMyttyDevice(), 0) << "without its end in the reply it is no text";
  EXPECT_EQ(count_of("open /dev/ttyS0"), 4U);
}

TEST_F(PortScanTest, TheLongestFirmwareTextIsEnteredWhole) {
  // 18 characters, with the bytes around them a reply of 20.
  attach_serial().controller.set_firmware("V1.234567890123456");
  EXPECT_EQ(FindMyttyDevice(), 1);
  EXPECT_STREQ(TouchDevice[0].FWVersion, "V1.234567890123456");
}

}  // namespace
