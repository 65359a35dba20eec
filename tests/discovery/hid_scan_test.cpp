// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The enumerations and their walks over the directories.
#include <fcntl.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "discovery_bench.h"

namespace {

using zelkora::test::data_file;
using zelkora::test::kPctIdentity;
using zelkora::test::kResistiveIdentity;
using zelkora::test::kStrangeIdentity;
using zelkora::test::Lines;
using zelkora::test::Panel;
using zelkora::test::read_file;
using zelkora::test::reset_library_state;
using zelkora::test::trace_messages;
using zelkora::test::write_file;
using HidScanTest = zelkora::test::DiscoveryBench;

// What one enumeration says that finds no node.
const Lines kWalk = {"FindMyHidDevice--start\n", "FindMyHidDevice--end\n"};
const Lines kRawWalk = {"FindMyHidRawDevice--start\n", "FindMyHidRawDevice--end\n"};

Lines joined(std::initializer_list<Lines> parts) {
  Lines lines;
  for (const Lines& part : parts) lines.insert(lines.end(), part.begin(), part.end());
  return trace_messages(lines);
}

TEST_F(HidScanTest, GetTouchPanelsSaysItsStepsInOrder) {
  host.config = {1, 0, 0, 0, 0, 1};
  EXPECT_EQ(GetTouchPanels(0), 0);
  EXPECT_EQ(messages(),
            joined({{"can't open pct manuflist\n", "GetTouchPanels--start\n",
                     "can't open Res manuflist\n", "GetSerialDevceNameConf--start\n",
                     "GetSerialDevceNameConf--end\n", "GetTouchPanels---FindMyHidDevice\n"},
                    kWalk,
                    kRawWalk,
                    {"GetTouchPanels DeviceNumber:0---end\n"}}));
}

TEST_F(HidScanTest, AnEnumerationLeavesTheOpenPanelAndOtherSubsystemsAlone) {
  open_resistive();
  const int open_before = fd;
  ActiveDevice = 3;
  ReadSerConf = 1;
  IsLegacy = 7;
  GetTouchPanels(0);
  GetPCTTouchPanels(0);
  EXPECT_EQ(ActiveDevice, 3);
  EXPECT_EQ(ReadSerConf, 1);
  EXPECT_EQ(IsLegacy, 7);
  EXPECT_NE(::fcntl(open_before, F_GETFD), -1) << "the descriptor open before stays open";
}

TEST_F(HidScanTest, GetTouchPanelsIsSilentWithoutTheDebugSwitch) {
  host.debug = 0;
  host.config = {1, 0, 0, 0, 0, 1};
  add_resistive();
  write_pct_list();
  add_pct("7", "usb-7/input0");
  EXPECT_EQ(GetTouchPanels(0), 2);
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(HidScanTest, WithoutByteZeroTheResistiveListIsNotLoaded) {
  host.config = {};
  write_resistive_list("Virtual Resistive\n");
  rManufCnt = 5;
  std::strcpy(rMatchProduct[0], "Old");
  GetTouchPanels(0);
  EXPECT_EQ(messages(), joined({{"can't open pct manuflist\n", "GetTouchPanels--start\n",
                                 "GetTouchPanels---FindMyHidDevice\n"},
                                kWalk,
                                {"GetTouchPanels DeviceNumber:0---end\n"}}));
  EXPECT_EQ(rManufCnt, 5);
  EXPECT_STREQ(rMatchProduct[0], "Old");
}

TEST_F(HidScanTest, TheListsAndTheirCountsAreLoaded) {
  write_pct_list("One\nTwo\n");
  write_resistive_list("Three\nFour\nFive\n");
  GetTouchPanels(0);
  EXPECT_EQ(ManufCnt, 2);
  EXPECT_EQ(rManufCnt, 3);
  EXPECT_STREQ(MatchProduct[1], "Two");
  EXPECT_STREQ(rMatchProduct[2], "Five");
  EXPECT_EQ(messages_of({"Res List:"}),
            trace_messages({"Res List:Three", "Res List:Four", "Res List:Five"}));
}

TEST_F(HidScanTest, TheConfigurationIsReadOnceAndFirst) {
  host.config = {1, 1, 1, 1, 9, 0, 0, 0, 0};
  for (int (*enumerate)(int) : {GetTouchPanels, GetPCTTouchPanels}) {
    reset_library_state();
    clear_trace();
    host.config_reads = 0;
    enumerate(0);
    EXPECT_EQ(host.config_reads, 1);
    EXPECT_EQ(MyConfig[4], 9);
    EXPECT_EQ(cMyHidInfo.PctVendorCount, 2) << "the id table goes by the new configuration";
    EXPECT_EQ(messages().front(), "zelkora DD:can't open pct manuflist\n");
  }
}

TEST_F(HidScanTest, BothEnumerationsClearTheWholeTable) {
  for (int (*enumerate)(int) : {GetTouchPanels, GetPCTTouchPanels}) {
    std::memset(TouchDevice, 0xFF, sizeof TouchDevice);
    DeviceNumber = 3;
    PCTDeviceNumber = 2;
    EXPECT_EQ(enumerate(0), 0);
    const std::string bytes(reinterpret_cast<const char*>(TouchDevice), sizeof TouchDevice);
    EXPECT_EQ(bytes, std::string(sizeof TouchDevice, '\0'));
    EXPECT_EQ(DeviceNumber, 0);
    EXPECT_EQ(PCTDeviceNumber, 0);
  }
}

TEST_F(HidScanTest, TheArgumentHasNoUse) {
  add_resistive();
  write_pct_list();
  add("/dev/hiddev7", kPctIdentity, "usb-7/input0");
  for (const int argument : {0, 1, -1, 2147483647}) {
    SCOPED_TRACE(argument);
    EXPECT_EQ(GetTouchPanels(argument), 2);
    EXPECT_EQ(GetPCTTouchPanels(argument), 1);
  }
}

TEST_F(HidScanTest, EveryEnumerationStartsAnew) {
  add_resistive();
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(messages_of({"GetTouchPanels DeviceNumber"}),
            trace_messages({"GetTouchPanels DeviceNumber:1---end\n",
                            "GetTouchPanels DeviceNumber:1---end\n"}));
}

TEST_F(HidScanTest, GetPctTouchPanelsSaysItsStepsInOrder) {
  host.config = {1, 0, 0, 0, 0, 1};
  EXPECT_EQ(GetPCTTouchPanels(0), 0);
  EXPECT_EQ(messages(), joined({{"can't open pct manuflist\n"}, kWalk, kRawWalk}));
}

TEST_F(HidScanTest, GetPctTouchPanelsRemovesTheListOfSerialNumbersBeforeTheWalk) {
  write_file(data_file(".pctuniq"), "numbers");
  GetPCTTouchPanels(0);
  EXPECT_FALSE(std::filesystem::exists(data_file(".pctuniq")));
  EXPECT_EQ(messages(),
            joined({{"can't open pct manuflist\n", "***DelFile remove status=0***\n"}, kWalk}));
}

TEST_F(HidScanTest, GetTouchPanelsKeepsTheListOfSerialNumbers) {
  write_file(data_file(".pctuniq"), "numbers");
  GetTouchPanels(0);
  EXPECT_EQ(read_file(data_file(".pctuniq")), "numbers");
}

TEST_F(HidScanTest, GetPctTouchPanelsCountsThePctPanelsAlone) {
  write_pct_list();
  add_resistive();
  add("/dev/usb/hiddev7", kPctIdentity, "usb-7/input0");
  EXPECT_EQ(GetTouchPanels(0), 2);
  EXPECT_EQ(PCTDeviceNumber, 1);
  // The resistive list that GetTouchPanels left still matches.
  EXPECT_EQ(GetPCTTouchPanels(0), 1);
  EXPECT_EQ(DeviceNumber, 2);
}

TEST_F(HidScanTest, GetPctTouchPanelsLoadsNoResistiveList) {
  add_resistive();
  EXPECT_EQ(GetPCTTouchPanels(0), 0);
  EXPECT_EQ(DeviceNumber, 0);
  EXPECT_EQ(rManufCnt, 0);
}

TEST_F(HidScanTest, GetPctTouchPanelsWalksHidrawNodesOnlyWithByteFive) {
  write_pct_list();
  add("/dev/hidraw0", kPctIdentity);
  EXPECT_EQ(GetPCTTouchPanels(0), 0);
  host.config[5] = 1;
  EXPECT_EQ(GetPCTTouchPanels(0), 1);
}

TEST_F(HidScanTest, GetTouchPanelsWalksHidrawNodesOnlyWithByteFive) {
  write_pct_list();
  add("/dev/hidraw0", kPctIdentity);
  EXPECT_EQ(GetTouchPanels(0), 0);
  EXPECT_EQ(node_calls(), Lines{});
  host.config[5] = 0x80;
  EXPECT_EQ(GetTouchPanels(0), 1);
}

TEST_F(HidScanTest, TheWalksGoOverDevThenUsbThenHidraw) {
  host.config = {1, 0, 0, 0, 0, 1};
  write_resistive_list();
  write_pct_list();
  attach_resistive({.phys = "usb-1/input0"});
  add("/dev/hiddev5", kPctIdentity, "usb-2/input0");
  add("/dev/hidraw9", kPctIdentity, "usb-3/input0");
  EXPECT_EQ(GetTouchPanels(0), 3);
  EXPECT_STREQ(TouchDevice[0].Name, "/dev/hiddev5");
  EXPECT_STREQ(TouchDevice[1].Name, "/dev/usb/hiddev0");
  EXPECT_STREQ(TouchDevice[2].Name, "/dev/hidraw9");
}

TEST_F(HidScanTest, FindMyHidDeviceNamesNodesOfDevBeforeAndNodesOfUsbAfterTheMatch) {
  add("/dev/hiddev5", kStrangeIdentity);
  add("/dev/usb/hiddev6", kStrangeIdentity);
  kernel.fail_open("/dev/hiddev5", EACCES);
  kernel.fail_open("/dev/usb/hiddev6", EACCES);
  EXPECT_EQ(FindMyHidDevice(), 1);
  EXPECT_EQ(messages(),
            trace_messages({"FindMyHidDevice--start\n", "FindMyHidDevice--/dev/hiddev5\n",
                            "MatchMyHidDevice device node:/dev/hiddev5 HidRaw:0 fd:-1\n",
                            "MatchMyHidDevice device node:/dev/usb/hiddev6 HidRaw:0 fd:-1\n",
                            "FindMyHidDevice--/dev/usb/hiddev6\n", "FindMyHidDevice--end\n"}));
}

TEST_F(HidScanTest, FindMyHidRawDeviceNamesNodesBeforeTheMatch) {
  add("/dev/hidraw5", kStrangeIdentity);
  kernel.fail_open("/dev/hidraw5", EACCES);
  EXPECT_EQ(FindMyHidRawDevice(), 1);
  EXPECT_EQ(
      messages(),
      trace_messages({"FindMyHidRawDevice--start\n", "++++FindMyHidRawDevice /dev/hidraw5+++\n",
                      "MatchMyHidDevice device node:/dev/hidraw5 HidRaw:1 fd:-1\n",
                      "FindMyHidRawDevice--end\n"}));
}

TEST_F(HidScanTest, NodesAreTakenInTheOrderOfTheirDirectory) {
  write_resistive_list();
  for (const char* stem : {"/dev/hiddev", "/dev/usb/hiddev"}) {
    const Lines nodes = slots(stem, 4);
    Lines expected;
    for (const std::string& node : nodes) {
      plug(node, kStrangeIdentity, "");
      kernel.fail_open(node, EACCES);
      expected.push_back("open " + node + " O_RDWR|O_NONBLOCK -> EACCES");
    }
    clear_trace();
    FindMyHidDevice();
    const Lines opened = node_calls();
    ASSERT_GE(opened.size(), 4U);
    EXPECT_EQ(Lines(opened.end() - 4, opened.end()), expected);
  }
}

TEST_F(HidScanTest, HidrawNodesAreTakenInTheOrderOfTheirDirectory) {
  Lines expected;
  for (const std::string& node : slots("/dev/hidraw", 4)) {
    plug(node, kStrangeIdentity, "");
    kernel.fail_open(node, EACCES);
    expected.push_back("open " + node + " O_RDWR|O_NONBLOCK -> EACCES");
  }
  FindMyHidRawDevice();
  EXPECT_EQ(node_calls(), expected);
}

TEST_F(HidScanTest, OnlyNodesThatBearTheNameAreOpened) {
  add("/dev/usb/hidraw1", kPctIdentity);
  add("/dev/usb/lp0", kPctIdentity);
  add("/dev/input/hiddev1", kPctIdentity);
  add("/dev/hid1", kPctIdentity);
  add("/dev/ttyS0", kPctIdentity);
  FindMyHidDevice();
  FindMyHidRawDevice();
  EXPECT_EQ(trace_of({"open"}), Lines{});
}

TEST_F(HidScanTest, ANodeMayHoldTheNameAnywhere) {
  add("/dev/my-hiddev-1", kStrangeIdentity);
  add("/dev/usb/old.hiddev", kStrangeIdentity);
  add("/dev/my-hidraw-1", kStrangeIdentity);
  for (const char* path : {"/dev/my-hiddev-1", "/dev/usb/old.hiddev", "/dev/my-hidraw-1"}) {
    kernel.fail_open(path, EACCES);
  }
  FindMyHidDevice();
  FindMyHidRawDevice();
  EXPECT_EQ(trace_of({"open"}), (Lines{"open /dev/my-hiddev-1 O_RDWR|O_NONBLOCK -> EACCES",
                                       "open /dev/usb/old.hiddev O_RDWR|O_NONBLOCK -> EACCES",
                                       "open /dev/my-hidraw-1 O_RDWR|O_NONBLOCK -> EACCES"}));
}

TEST_F(HidScanTest, ADirectoryThatCannotBeOpenedIsSkipped) {
  write_pct_list();
  add("/dev/hiddev1", kPctIdentity, "usb-1/input0");
  add("/dev/usb/hiddev2", kPctIdentity, "usb-2/input0");
  add("/dev/hidraw3", kPctIdentity, "usb-3/input0");
  host.config[5] = 1;

  fail_file_call("opendir", "/dev", EACCES);
  EXPECT_EQ(GetTouchPanels(0), 2);
  EXPECT_STREQ(TouchDevice[0].Name, "/dev/usb/hiddev2");
  EXPECT_STREQ(TouchDevice[1].Name, "/dev/hidraw3");

  fail_file_call("opendir", "/dev/usb", ENOENT);
  EXPECT_EQ(GetTouchPanels(0), 2);
  EXPECT_STREQ(TouchDevice[0].Name, "/dev/hiddev1");
  EXPECT_STREQ(TouchDevice[1].Name, "/dev/hidraw3");

  fail_file_call("opendir", "/dev", EACCES, 1);
  EXPECT_EQ(GetTouchPanels(0), 2);
  EXPECT_STREQ(TouchDevice[1].Name, "/dev/usb/hiddev2");
}

TEST_F(HidScanTest, WithoutAnyDirectoryNothingElseIsSaid) {
  fail_file_call("opendir", "/dev", EACCES);
  fail_file_call("opendir", "/dev/usb", EACCES);
  fail_file_call("opendir", "/dev", EACCES);
  EXPECT_EQ(FindMyHidDevice(), 1);
  EXPECT_EQ(FindMyHidRawDevice(), 1);
  EXPECT_EQ(messages(), joined({kWalk, kRawWalk}));
}

TEST_F(HidScanTest, ANodeThatVanishedIsPassedOver) {
  write_resistive_list();
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  plug_resistive(nodes[0], "usb-1/input0");
  plug_resistive(nodes[1], "usb-2/input0");
  kernel.fail_open(nodes[0], ENODEV);
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(TouchDevice[0].Name, nodes[1]);
}

TEST_F(HidScanTest, APanelSeenTwiceIsEnteredOnceAsItsHiddevNode) {
  host.config[5] = 1;
  write_pct_list();
  add_pct();
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(PCTDeviceNumber, 1);
  EXPECT_STREQ(TouchDevice[0].Name, "/dev/usb/hiddev0");
  EXPECT_EQ(TouchDevice[0].HidRaw, 0);
  EXPECT_EQ(messages_of({"###exist"}),
            trace_messages({"###exist phys:usb-0000:00:14.0-1/input0###\n"}));
  EXPECT_EQ(node_calls().back(), "close /dev/hidraw0");
}

TEST_F(HidScanTest, NodesOfTheLongestNameAreOpenedByTheirWholePath) {
  for (const std::string& path :
       {"/dev/hiddev" + std::string(249, 'a'), "/dev/usb/hiddev" + std::string(249, 'b'),
        "/dev/hidraw" + std::string(249, 'c')}) {
    SCOPED_TRACE(path);
    add(path, kStrangeIdentity);
    kernel.fail_open(path, EACCES);
    clear_trace();
    FindMyHidDevice();
    FindMyHidRawDevice();
    EXPECT_EQ(trace_of({"open"}).back(), "open " + path + " O_RDWR|O_NONBLOCK -> EACCES");
  }
}

}  // namespace
