// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "core/child_process.h"
#include "serial_bench.h"
#include "size_limit.h"

namespace {

using namespace zelkora::test;

const std::string kRecords = data_file(".restpbin");
const std::string kPlaceholder("\1\2\3\4\5\6\7\10", 8);

class PanelTableTest : public SerialBench {
 protected:
  void SetUp() override {
    SerialBench::SetUp();
    answer_command({.command = kShareRecords});
  }
  // The table filled from this list.
  static int enter(const std::string& list) {
    write_file(kSerialListPath, list);
    return GetSerialDevceNameConf();
  }
  static void expect_entry(int index, const std::string& name, const std::string& firmware) {
    SCOPED_TRACE(name);
    const TouchDeviceEntry& entry = TouchDevice[index];
    EXPECT_EQ(std::string(entry.Name), name);
    EXPECT_EQ(std::string(entry.Phys), name);
    EXPECT_EQ(std::string(entry.ID), name);
    EXPECT_EQ(std::string(entry.FWVersion), firmware);
    EXPECT_EQ(entry.Type, ZELKORA_TYPE_RESISTIVE_SERIAL);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(entry.SN), 8), kPlaceholder);
    EXPECT_EQ(entry.VID, 0U);
    EXPECT_EQ(entry.PID, 0U);
  }
  void allow_list_commands() { answer_command({.command = kRemoveUnits}); }
};

TEST_F(PanelTableTest, EachPanelOfTheListBecomesAnEntry) {
  EXPECT_EQ(enter("SerialDevice1=/dev/ttyS0\nFW1=V2.1\nSerialDevice2=ttyUSB0\nFW2=V1.2\n"), 2);
  EXPECT_EQ(DeviceNumber, 2);
  expect_entry(0, "/dev/ttyS0", "V2.1");
  expect_entry(1, "ttyUSB0", "V1.2");
  EXPECT_EQ(messages().front(), "zelkora DD:GetSerialDevceNameConf--start\n");
  EXPECT_EQ(messages().back(), "zelkora DD:GetSerialDevceNameConf--end\n");
}

TEST_F(PanelTableTest, PanelsAreAppendedToTheTable) {
  DeviceNumber = 2;
  EXPECT_EQ(enter("SerialDevice1=ttyS0\nFW1=V2.1\n"), 3);
  EXPECT_STREQ(TouchDevice[0].Name, "");
  expect_entry(2, "ttyS0", "V2.1");
}

TEST_F(PanelTableTest, WithoutAListTheTableStays) {
  DeviceNumber = 1;
  EXPECT_EQ(GetSerialDevceNameConf(), 1);
  EXPECT_EQ(messages(), traced({"GetSerialDevceNameConf--start", "GetSerialDevceNameConf--end"}));
}

TEST_F(PanelTableTest, SwitchedOffSerialSupportReadsNothing) {
  write_file(data_file(".disable_rs232"), "");
  DeviceNumber = 1;
  EXPECT_EQ(enter("SerialDevice1=ttyS0\nFW1=V2.1\n"), 0);
  EXPECT_EQ(DeviceNumber, 1);
  EXPECT_STREQ(cMySerInfo[0].Name, "");
  EXPECT_EQ(messages(), traced({"GetSerialDevceNameConf--start"}));
}

TEST_F(PanelTableTest, UnsupportedPanelsAreSkippedAndTheOpenDescriptorIsClosed) {
  for (const char* firmware : {"FW1=V3.0\n", "FW1=AV3.05\n", "FW1=\n", ""}) {
    SCOPED_TRACE(firmware);
    std::memset(cMySerInfo, 0, sizeof cMySerInfo);
    DeviceNumber = 0;
    clear_trace();
    fd = ::open("/dev/null", O_RDONLY);
    EXPECT_EQ(
        enter("SerialDevice1=ttyS0\n" + std::string(firmware) + "SerialDevice2=ttyS1\nFW2=V1.2\n"),
        1);
    EXPECT_LT(::fcntl(fd, F_GETFD), 0);
    EXPECT_EQ(std::ranges::count(messages(), kUnsupported), 1);
    expect_entry(0, "ttyS1", "V1.2");
  }
  fd = -1;
}

TEST_F(PanelTableTest, APanelListedTwiceCountsTwice) {
  EXPECT_EQ(enter("SerialDevice1=ttyS0\nSerialDevice1=ttyS1\nFW1=V2.1\n"), 1);
  expect_entry(0, "ttyS1", "V2.1");
  // The second slot has no version.
  EXPECT_EQ(std::ranges::count(messages(), kUnsupported), 1);
}

TEST_F(PanelTableTest, SlotsNotInTheListKeepWhatTheyHeld) {
  enter("SerialDevice1=ttyS0\nFW1=V2.1\nSerialDevice2=ttyS1\nFW2=V2.2\n");
  std::memset(TouchDevice, 0, sizeof TouchDevice);
  DeviceNumber = 0;
  EXPECT_EQ(enter("SerialDevice1=ttyS3\nSerialDevice1=ttyS2\n"), 2);
  expect_entry(0, "ttyS2", "V2.1");
  expect_entry(1, "ttyS1", "V2.2");
}

TEST_F(PanelTableTest, MoreThanFourPanelsEndAtTheSlotsAndAtTheTable) {
  std::string list;
  for (int i = 1; i <= 4; ++i) {
    const std::string k = std::to_string(i);
    list += "SerialDevice" + k + "=ttyS" + k + "\nFW" + k + "=V1.2\n";
  }
  for (int i = 0; i < 20; ++i) list += "SerialDevice1=ttyS1\n";
  EXPECT_EQ(enter(list), 4);
  expect_entry(3, "ttyS4", "V1.2");
  const std::string table(reinterpret_cast<const char*>(TouchDevice), sizeof TouchDevice);
  EXPECT_EQ(GetSerialDevceNameConf(), 4);
  EXPECT_EQ(table, std::string(reinterpret_cast<const char*>(TouchDevice), sizeof TouchDevice));
  DeviceNumber = -1;
  EXPECT_EQ(GetSerialDevceNameConf(), -1);
}

TEST_F(PanelTableTest, APanelWithoutARecordGetsTheDefaults) {
  write_file(data_file("TouchUtil.ini"), "[Res_Default]\nFrequency=3210\nBeepOn=0\n");
  EXPECT_EQ(enter("SerialDevice1=ttyS0\nFW1=V2.1\n"), 1);
  EXPECT_EQ(std::filesystem::file_size(kRecords), 347U);
  ResDevInfo rec{};
  EXPECT_NE(GetResAllDataBin(0, &rec), 0);
  EXPECT_EQ(rec.Frequency, 3210U);
  EXPECT_EQ(rec.BeepOn, 0);
  EXPECT_EQ(count_of("mydoled_all_display"), 1U);
}

TEST_F(PanelTableTest, AStoredRecordStays) {
  enter("SerialDevice1=ttyS0\nFW1=V2.1\n");
  ResDevInfo rec{};
  GetResAllDataBin(0, &rec);
  rec.Frequency = 1234;
  SetResAllDataBin(0, &rec);
  const std::string before = read_file(kRecords);
  std::memset(TouchDevice, 0, sizeof TouchDevice);
  DeviceNumber = 0;
  clear_trace();
  EXPECT_EQ(enter("SerialDevice1=ttyS0\nFW1=V2.1\n"), 1);
  EXPECT_EQ(read_file(kRecords), before);
  EXPECT_EQ(count_of("mydoled_all_display"), 0U);
}

TEST_F(PanelTableTest, TheListIsWrittenFromTheTable) {
  set_entries({"ttyS0", "/dev/usb/hiddev0", "ttyUSB1"});
  std::strcpy(TouchDevice[2].FWVersion, "V2.1");
  allow_list_commands();
  EXPECT_EQ(SetSerialDeviceConf(), 6);
  EXPECT_EQ(read_file(kSerialListPath),
            "SerialDevice1=ttyS0\nFW1=V1.2\nSerialDevice2=ttyUSB1\nFW2=V2.1\n");
}

TEST_F(PanelTableTest, TheListReadsBackAsItWasWritten) {
  set_entries({"ttyS0", "ttyS1", "ttyS2", "ttyS3"});
  allow_list_commands();
  EXPECT_EQ(SetSerialDeviceConf(), 6);
  std::memset(TouchDevice, 0, sizeof TouchDevice);
  DeviceNumber = 0;
  EXPECT_EQ(GetSerialDevceNameConf(), 4);
  expect_entry(3, "ttyS3", "V1.2");
}

TEST_F(PanelTableTest, TheBootFilesFollowTheListInOrder) {
  set_entries({"ttyS0"});
  write_file(kRcLocal, "#\nmodprobe morlex\n");
  write_file(kRcLocalInRcD, "#\nmodprobe morlex\n");
  std::filesystem::create_directories("/etc/udev/rules.d");
  // Each step sees what the ones before left: one that fails stops none behind it.
  answer_command({.command = kRemoveUnits, .effect = [] {
                    EXPECT_EQ(read_file(kSerialListPath), "SerialDevice1=ttyS0\nFW1=V1.2\n");
                    EXPECT_FALSE(std::filesystem::exists("vastrel1@.service"));
                    EXPECT_EQ(read_file(kRcLocal), "#\nmodprobe morlex\n");
                    EXPECT_FALSE(std::filesystem::exists(kUdevRule));
                  }});
  EXPECT_EQ(SetSerialDeviceConf(), 6);
  EXPECT_EQ(commands(), Lines{"system rm -f \"/systemd/system/vastrel*\""});
  EXPECT_TRUE(std::filesystem::exists("vastrel1@.service"));
  const std::string script = "#\nmodprobe morlex\n/usr/bin/vastrel1 -morlex --daemon /dev/ttyS0\n";
  EXPECT_EQ(read_file(kRcLocal), script);
  EXPECT_EQ(read_file(kRcLocalInRcD), script);
  EXPECT_TRUE(std::filesystem::exists(kUdevRule));
}

TEST_F(PanelTableTest, BootFilesThatFailDoNotChangeTheResult) {
  set_entries({"ttyS0"});
  answer_command({.command = kRemoveUnits, .status = -1});
  fail_file_call("mkostemp", "./vastrel1@.service.*", ENOSPC);
  EXPECT_EQ(SetSerialDeviceConf(), 6);
  // No rc.local, no directory for the rule.
  EXPECT_EQ(messages(), traced({"Create systemd service fail!!", "Create udev rules fail!!"}));
}

TEST_F(PanelTableTest, WithoutPanelsTheListIsEmptiedAndNothingElseTouched) {
  write_file(kSerialListPath, "SerialDevice1=ttyS0\nFW1=V1.2\n");
  write_file(kRcLocal, "#\nmodprobe morlex\nvastrel\n");
  set_entries({"/dev/usb/hiddev0"});
  EXPECT_EQ(SetSerialDeviceConf(), 0);
  EXPECT_EQ(read_file(kSerialListPath), "");
  EXPECT_EQ(read_file(kRcLocal), "#\nmodprobe morlex\nvastrel\n");
  EXPECT_EQ(trace(), Lines{});
}

TEST_F(PanelTableTest, AListThatCannotBeWrittenTouchesNothingElse) {
  set_entries({"ttyS0"});
  std::filesystem::create_directories(kSerialListPath);
  EXPECT_EQ(SetSerialDeviceConf(), 0);
  EXPECT_EQ(trace(), Lines{});
  std::filesystem::remove(kSerialListPath);
  write_file(kSerialListPath, "old\n");
  fail_file_call("write", kSerialListPath + ".*", ENOSPC);
  EXPECT_EQ(SetSerialDeviceConf(), 0);
  EXPECT_EQ(read_file(kSerialListPath), "old\n");
  EXPECT_EQ(trace(), Lines{});
}

TEST_F(PanelTableTest, AProcessKilledInTheMiddleOfTheListLeavesTheOldOne) {
  const std::string old = "SerialDevice1=ttyS7\nFW1=V1.1\n";
  write_file(kSerialListPath, old);
  set_entries({"ttyS0", "ttyS1"});
  EXPECT_EQ(status_in_child([] { return limit_file_size(10) ? SetSerialDeviceConf() : -1; }),
            -SIGXFSZ);
  EXPECT_EQ(read_file(kSerialListPath), old);
}

TEST_F(PanelTableTest, APanelIsFoundByTheNameThatHoldsItsPhys) {
  write_file(kSerialListPath, "SerialDevice1=ttyS0\nFW1=V1.2\nSerialDevice2=ttyS1\nFW2=V1.2\n");
  EXPECT_EQ(GetSerDeviceNumber("/dev/ttyS1"), 1);
  EXPECT_EQ(host.config_reads, 1);
  const Lines told = messages();
  const Lines end(told.end() - 4, told.end());
  EXPECT_EQ(end, traced({"GetSerialDevceNameConf--end", "GetSerDeviceNumber ret:2",
                         "GetSerDeviceNumber /dev/ttyS1 : ttyS0",
                         "GetSerDeviceNumber /dev/ttyS1 : ttyS1"}));
}

TEST_F(PanelTableTest, APanelThatIsNotListedHasNoNumber) {
  write_file(kSerialListPath, "SerialDevice1=ttyS0\nFW1=V1.2\n");
  EXPECT_EQ(GetSerDeviceNumber("ttyS"), -1);
  EXPECT_EQ(messages().back(), "zelkora DD:GetSerDeviceNumber ttyS : ttyS0\n");
  std::filesystem::remove(kSerialListPath);
  DeviceNumber = 0;
  clear_trace();
  EXPECT_EQ(GetSerDeviceNumber("ttyS0"), -1);
  EXPECT_EQ(messages().back(), "zelkora DD:GetSerDeviceNumber ret:0\n");
}

TEST_F(PanelTableTest, SwitchedOffSerialSupportHasNoNumbers) {
  write_file(data_file(".disable_rs232"), "");
  set_entries({"ttyS0"});
  EXPECT_EQ(GetSerDeviceNumber("ttyS0"), -1);
  EXPECT_EQ(messages().back(), "zelkora DD:GetSerDeviceNumber ret:0\n");
}

}  // namespace
