// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "support/bench.h"

#include <fcntl.h>
#include <gtest/gtest-spi.h>
#include <sys/ioctl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace {

using zelkora::sim::kDataDirectory;
using zelkora::test::captured_stdout;
using zelkora::test::data_file;
using zelkora::test::Lines;
using zelkora::test::Panel;
using zelkora::test::read_file;
using zelkora::test::SerialPanel;
using zelkora::test::write_file;
using BenchTest = zelkora::test::Bench;

TEST_F(BenchTest, ServesTheLibrarysCallsAndRecordsThemInOrder) {
  Panel& panel = open_resistive();
  panel.controller.set_value(84, 0x0012);
  EXPECT_EQ(ReadEEPValue(84), 0x0012);
  EXPECT_EQ(trace_of({"set_report", "usleep", "get_report"}),
            (Lines{"set_report 1: 06 01 47 50 35 34 0D", "usleep 50000", "usleep 50000",
                   "get_report 1: 06 01 30 30 31 32 0D"}));
  EXPECT_EQ(count_of("ioctl HIDIOCSUSAGE"), 63U);
}

TEST_F(BenchTest, FindsAnAttachedPanelByEnumeration) {
  write_resistive_list();
  attach_resistive();
  ASSERT_EQ(GetTouchPanels(0), 1);
  EXPECT_STREQ(TouchDevice[0].Name, "/dev/usb/hiddev0");
  EXPECT_STREQ(TouchDevice[0].Phys, "usb-0000:00:14.0-1/input0");
  EXPECT_STREQ(TouchDevice[0].ID, "3A4C_1688");
  EXPECT_EQ(leaked_descriptors().size(), 0U);
}

TEST_F(BenchTest, ShowsMessagesWithTheirPrefix) {
  EXPECT_EQ(DebugMsg(0, "code %d\n", 7), 7);
  EXPECT_EQ(DebugMsg(9, "bare"), 4);
  EXPECT_EQ(messages(), (Lines{"EE:code 7\n", "bare"}));
  EXPECT_EQ(trace(), (Lines{"log EE:code 7", "log bare"}));
}

TEST_F(BenchTest, CapturesStandardOutputWithTheMessages) {
  DbgFlag = 1;
  const unsigned char row[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  EXPECT_EQ(captured_stdout([&] {
              DebugMsg(1, "first\n");
              PrintData("dump", row, 8);
            }),
            "II:first\ndump---start\n0x01 0x02 0x03 0x04 0x05 0x06 0x07 0x08\ndump---End\n");
}

TEST_F(BenchTest, AnswersTheHostHooks) {
  host.config = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  host.debug = 1;
  EXPECT_EQ(GetTouchConf(0), 1);
  EXPECT_EQ(DbgFlag, 1);
  EXPECT_EQ(MyConfig[8], 9);
  EXPECT_EQ(host.config_reads, 1);
}

TEST_F(BenchTest, RecordsSleepsInsteadOfSleeping) {
  usleep(50000);
  sleep(1);
  EXPECT_EQ(trace(), (Lines{"usleep 50000", "sleep 1"}));
}

TEST_F(BenchTest, GivesTheKernelReleaseThatTheTestSet) {
  utsname name{};
  set_kernel_release("2.4.37");
  uname(&name);
  EXPECT_STREQ(name.release, "2.4.37");
  EXPECT_STREQ(name.sysname, "Linux");
}

TEST_F(BenchTest, AnswersCommandsFromAScript) {
  answer_command({.command = "true", .status = 256});
  answer_command({.command = "pgrep x", .output = "4711\n"});
  answer_command({.command = "make log", .effect = [] { write_file("log", "text"); }});
  EXPECT_EQ(system("true"), 256);
  EXPECT_EQ(system("make log"), 0);
  EXPECT_EQ(read_file("log"), "text");

  FILE* pipe = popen("pgrep x", "r");
  char line[16] = "";
  EXPECT_EQ(fgets(line, sizeof line, pipe), line);
  EXPECT_STREQ(line, "4711\n");
  EXPECT_EQ(pclose(pipe), 0);
  EXPECT_EQ(trace(), (Lines{"system true", "system make log", "popen pgrep x", "pclose"}));
}

TEST_F(BenchTest, FailsOnACommandWithoutAnswer) {
  EXPECT_NONFATAL_FAILURE(system("rm -rf /"), "shell command that no test set up: rm -rf /");
  allow_any_command();
  EXPECT_EQ(system("rm -rf /"), 0);
}

TEST_F(BenchTest, FailsOnADeviceThatIsNotThere) {
  EXPECT_NONFATAL_FAILURE(open("/dev/ttyS7", O_RDWR), "device access that no test set up");
  expect_absent("/dev/ttyS7");
  EXPECT_EQ(open("/dev/ttyS7", O_RDWR), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(trace_of({"open"}).back(), "open /dev/ttyS7 O_RDWR -> ENOENT");
}

TEST_F(BenchTest, ServesASerialPort) {
  SerialPanel& panel = open_serial();
  const unsigned char query[] = {0x01, 'O', 'I', 0x0D};
  EXPECT_EQ(write(fd, query, sizeof query), 4);
  unsigned char reply[20] = {};
  EXPECT_EQ(read(fd, reply, sizeof reply), 6);
  EXPECT_EQ(read(fd, reply, sizeof reply), -1);
  EXPECT_EQ(errno, EAGAIN);
  EXPECT_EQ(panel.controller.frames().size(), 1U);
  EXPECT_EQ(trace(),
            (Lines{"write /dev/ttyS0: 01 4F 49 0D", "read /dev/ttyS0 20: 01 56 31 2E 32 0D",
                   "read /dev/ttyS0 20 -> EAGAIN"}));
}

TEST_F(BenchTest, KeepsTheSettingsOfASerialPort) {
  open_serial();
  termios settings{};
  terminal("/dev/ttyS0").c_cflag = B9600 | CS8;
  ASSERT_EQ(tcgetattr(fd, &settings), 0);
  EXPECT_EQ(settings.c_cflag, static_cast<tcflag_t>(B9600 | CS8));
  settings.c_cc[VMIN] = 1;
  ASSERT_EQ(tcflush(fd, TCIFLUSH), 0);
  ASSERT_EQ(tcsetattr(fd, TCSANOW, &settings), 0);
  EXPECT_EQ(terminal("/dev/ttyS0").c_cc[VMIN], 1);
  EXPECT_EQ(trace(), (Lines{"tcgetattr /dev/ttyS0", "tcflush TCIFLUSH /dev/ttyS0",
                            "tcsetattr TCSANOW /dev/ttyS0"}));
}

TEST_F(BenchTest, CountsDescriptorsLeftOpen) {
  expect_leaked_descriptors(1);
  attach_resistive();
  const int descriptor = open("/dev/hidraw0", O_RDONLY);
  EXPECT_EQ(leaked_descriptors(), std::vector<int>{descriptor});
}

TEST_F(BenchTest, MakesTheNthCallOnAFileFail) {
  const std::string path = data_file("options");
  write_file(path, "a=1\n");
  fail_file_call("fopen", path, EACCES, 1);
  for (const bool opens : {true, false, true}) {
    FILE* file = fopen(path.c_str(), "r");
    EXPECT_EQ(file != nullptr, opens);
    if (file != nullptr) {
      fclose(file);
    } else {
      EXPECT_EQ(errno, EACCES);
    }
  }
}

TEST_F(BenchTest, MakesWritesToAKindOfFileFail) {
  fail_file_call("write", data_file("*"), ENOSPC);
  const int descriptor = open(data_file("full").c_str(), O_WRONLY | O_CREAT, 0600);
  EXPECT_EQ(write(descriptor, "x", 1), -1);
  EXPECT_EQ(errno, ENOSPC);
  EXPECT_EQ(write(descriptor, "x", 1), 1);
  close(descriptor);
}

TEST_F(BenchTest, UnpluggedPanelsAreGoneFromTheDirectory) {
  Panel& panel = open_resistive();
  unplug(panel);
  EXPECT_FALSE(std::filesystem::exists("/dev/usb/hiddev0"));
  EXPECT_EQ(ioctl(fd, HIDIOCINITREPORT, nullptr), -1);
  EXPECT_EQ(errno, ENODEV);
}

// Two tests that would see each other's traces if the bench did not tidy up.
class TidyBenchTest : public zelkora::test::Bench, public testing::WithParamInterface<int> {};

TEST_P(TidyBenchTest, StartsEmpty) {
  EXPECT_EQ(DeviceNumber, 0);
  EXPECT_FALSE(std::filesystem::exists("/dev/usb/hiddev0"));
  EXPECT_TRUE(std::filesystem::is_empty(kDataDirectory));
  EXPECT_TRUE(std::filesystem::is_empty("."));
  EXPECT_EQ(host.debug, 0);
  attach_resistive();
  write_resistive_list();
  write_file("unit.service", "x");
  DeviceNumber = 3;
  host.debug = 1;
}

INSTANTIATE_TEST_SUITE_P(Twice, TidyBenchTest, testing::Values(1, 2));

}  // namespace
