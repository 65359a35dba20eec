// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// From a matching node to its entry in the table.
#include <linux/hiddev.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>

#include "discovery_bench.h"

namespace {

using zelkora::test::bytes_of;
using zelkora::test::kPctIdentity;
using zelkora::test::kResistiveIdentity;
using zelkora::test::Lines;
using zelkora::test::Panel;
using zelkora::test::trace_messages;

class HidScanEntryTest : public zelkora::test::DiscoveryBench {
 protected:
  void SetUp() override {
    DiscoveryBench::SetUp();
    host.config = {1, 0, 0, 0, 0, 1};
    write_resistive_list();
    write_pct_list();
  }
};

TEST_F(HidScanEntryTest, AResistivePanelFillsItsEntry) {
  Panel& panel = attach_resistive({.hidraw = ""});
  panel.controller.set_firmware("V2.7");
  ASSERT_EQ(GetTouchPanels(0), 1);
  const TouchDeviceEntry& entry = TouchDevice[0];
  EXPECT_STREQ(entry.Name, "/dev/usb/hiddev0");
  EXPECT_EQ(entry.Type, ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_STREQ(entry.Phys, "usb-0000:00:14.0-1/input0");
  EXPECT_STREQ(entry.EventName, "");
  EXPECT_STREQ(entry.ID, "3A4C_1688");
  EXPECT_STREQ(entry.FWVersion, "V2.7");
  EXPECT_EQ(entry.HidRaw, 0);
  EXPECT_EQ(entry.VID, 0x3A4CU);
  EXPECT_EQ(entry.PID, 0x1688U);
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_EQ(PCTDeviceNumber, 0);
  EXPECT_EQ(messages_of({"Device"}),
            trace_messages({"Device1 : /dev/usb/hiddev0 phys:usb-0000:00:14.0-1/input0 "
                            "MatchFlag:1\n"}));
}

TEST_F(HidScanEntryTest, WhatOnlyAPctPanelHasIsZeroForAResistiveOne) {
  attach_resistive({.hidraw = ""});
  std::memset(TouchDevice, 0xFF, sizeof TouchDevice);
  IsLegacy = 7;
  ASSERT_EQ(GetTouchPanels(0), 1);
  const TouchDeviceEntry& entry = TouchDevice[0];
  for (const unsigned char byte : entry.SN) EXPECT_EQ(byte, 0);
  EXPECT_EQ(entry.POSMode, 0);
  for (const unsigned char byte : entry.Reserved) EXPECT_EQ(byte, 0);
  EXPECT_EQ(entry.IsLegacy, 0);
  EXPECT_EQ(entry.OldVID, 0U);
  EXPECT_EQ(entry.OldPID, 0U);
  EXPECT_EQ(entry.FWRev, 0);
  EXPECT_EQ(entry.FWRevFlash, 0);
}

TEST_F(HidScanEntryTest, APctPanelFillsItsEntry) {
  add("/dev/hidraw4", {0x2575, 0x8ABC, "Zelkora", "Virtual PCT"}, "usb-4/input0");
  device_type = 2;
  ASSERT_EQ(GetTouchPanels(0), 1);
  const TouchDeviceEntry& entry = TouchDevice[0];
  EXPECT_STREQ(entry.Name, "/dev/hidraw4");
  EXPECT_EQ(entry.Type, ZELKORA_TYPE_PCT);
  EXPECT_STREQ(entry.Phys, "usb-4/input0");
  EXPECT_STREQ(entry.ID, "2575_8ABC");
  EXPECT_EQ(entry.HidRaw, 1);
  EXPECT_EQ(entry.VID, 0x2575U);
  EXPECT_EQ(entry.PID, 0x8ABCU);
  EXPECT_EQ(device_type, 2) << "set for resistive panels only";
  EXPECT_EQ(PCTDeviceNumber, 1);
  EXPECT_EQ(
      messages_of({"Device", "+++check"}),
      trace_messages({"Device1 : /dev/hidraw4 phys:usb-4/input0 MatchFlag:3\n", "+++check PCT+++\n",
                      "Device1 : /dev/hidraw4 phys:usb-4/input0 fw:S8.7.53(r400) POSMode:1 "
                      "PCTDeviceNumber:1\n"}));
}

TEST_F(HidScanEntryTest, TheIdTextHasFourUpperCaseDigitsEach) {
  add("/dev/hiddev0", {0x2575, 0x000B, "Zelkora", "Virtual PCT"});
  GetTouchPanels(0);
  EXPECT_STREQ(TouchDevice[0].ID, "2575_000B");
}

TEST_F(HidScanEntryTest, AnAcceptedNodeIsAskedForItsPhysAndClosedAtTheEnd) {
  attach_resistive({.hidraw = ""});
  GetTouchPanels(0);
  const Lines calls = trace_of({"open", "close", "ioctl HIDIOCGDEVINFO", "ioctl HIDIOCGNAME",
                                "ioctl HIDIOCGPHYS", "ioctl HIDIOCSREPORT"});
  EXPECT_EQ(calls, (Lines{"open /dev/usb/hiddev0 O_RDWR|O_NONBLOCK", "ioctl HIDIOCGDEVINFO",
                          "ioctl HIDIOCGNAME 256", "ioctl HIDIOCGPHYS 256",
                          "ioctl HIDIOCSREPORT type=3 id=1", "close /dev/usb/hiddev0"}));
  EXPECT_EQ(leaked_descriptors().size(), 0U);
}

TEST_F(HidScanEntryTest, AHidrawNodeIsAskedForItsPhysByItsOwnRequest) {
  add("/dev/hidraw0", kPctIdentity);
  GetTouchPanels(0);
  EXPECT_EQ(count_of("ioctl HIDIOCGRAWPHYS 256"), 1U);
  EXPECT_EQ(count_of("ioctl HIDIOCGPHYS"), 0U);
}

TEST_F(HidScanEntryTest, PanelsAreNumberedInTheOrderOfTheirAcceptance) {
  const Lines nodes = slots("/dev/usb/hiddev", 3);
  plug(nodes[0], kPctIdentity, "usb-1/input0");
  plug_resistive(nodes[1], "usb-2/input0");
  plug(nodes[2], kPctIdentity, "usb-3/input0");
  EXPECT_EQ(GetTouchPanels(0), 3);
  EXPECT_EQ(PCTDeviceNumber, 2);
  EXPECT_EQ(
      messages_of({"Device"}),
      trace_messages({"Device1 : " + nodes[0] + " phys:usb-1/input0 MatchFlag:3\n",
                      "Device1 : " + nodes[0] +
                          " phys:usb-1/input0 fw:S8.7.53(r400) POSMode:1 PCTDeviceNumber:1\n",
                      "Device2 : " + nodes[1] + " phys:usb-2/input0 MatchFlag:1\n",
                      "Device3 : " + nodes[2] + " phys:usb-3/input0 MatchFlag:3\n",
                      "Device3 : " + nodes[2] +
                          " phys:usb-3/input0 fw:S8.7.53(r400) POSMode:1 PCTDeviceNumber:2\n"}));
  EXPECT_EQ(TouchDevice[1].Type, ZELKORA_TYPE_RESISTIVE_USB);
}

struct PhysCase {
  const char* name;
  std::string first;
  std::string second;
  int panels;
};

TEST_F(HidScanEntryTest, ANodeWhosePhysAnEntryContainsIsTheSamePanel) {
  const PhysCase cases[] = {
      {"the same", "usb-1/input0", "usb-1/input0", 1},
      {"the start of the entry's", "usb-1/input01", "usb-1/input0", 1},
      {"the end of the entry's", "pci-usb-1/input0", "usb-1/input0", 1},
      {"longer than the entry's", "usb-1/input0", "usb-1/input01", 2},
      {"another interface", "usb-1/input0", "usb-1/input1", 2},
      {"none", "usb-1/input0", "", 2},
      {"an entry without phys", "", "usb-1/input0", 2},
      {"both without phys", "", "", 2},
  };
  for (const PhysCase& row : cases) {
    SCOPED_TRACE(row.name);
    // Resistive panels, which are entered without a phys too.
    const auto& first = add("/dev/hiddev0", kResistiveIdentity, row.first);
    const auto& second = add("/dev/usb/hiddev1", kResistiveIdentity, row.second);
    clear_trace();
    EXPECT_EQ(GetTouchPanels(0), row.panels);
    EXPECT_STREQ(TouchDevice[0].Name, "/dev/hiddev0");
    EXPECT_EQ(TouchDevice[1].Type, row.panels == 2 ? 1 : 0);
    const Lines said = row.panels == 2 ? Lines{} : Lines{"###exist phys:" + row.second + "###\n"};
    EXPECT_EQ(messages_of({"###exist"}), trace_messages(said));
    EXPECT_EQ(node_calls().back(), "close /dev/usb/hiddev1");
    remove(first);
    remove(second);
  }
}

TEST_F(HidScanEntryTest, EveryEntryIsComparedNotOnlyTheLast) {
  const Lines nodes = slots("/dev/usb/hiddev", 3);
  plug(nodes[0], kPctIdentity, "usb-1/input0");
  plug(nodes[1], kPctIdentity, "usb-2/input0");
  plug(nodes[2], kPctIdentity, "usb-1/input0");
  EXPECT_EQ(GetTouchPanels(0), 2);
}

TEST_F(HidScanEntryTest, ADuplicateIsNotedOnce) {
  const Lines nodes = slots("/dev/usb/hiddev", 3);
  plug(nodes[0], kPctIdentity, "usb-1/input0");
  plug(nodes[1], kPctIdentity, "usb-1/input0-more");
  plug(nodes[2], kPctIdentity, "usb-1/input0");
  EXPECT_EQ(GetTouchPanels(0), 2);
  EXPECT_EQ(messages_of({"###exist"}).size(), 1U);
}

TEST_F(HidScanEntryTest, ADuplicateChangesNoEntry) {
  add("/dev/hiddev0", kPctIdentity, "usb-1/input0");
  add("/dev/usb/hiddev1", kPctIdentity, "usb-1/input0");
  GetTouchPanels(0);
  EXPECT_EQ(bytes_of(TouchDevice[1]), std::string(sizeof(TouchDeviceEntry), '\0'));
}

TEST_F(HidScanEntryTest, AFailingPhysRequestIsNotChecked) {
  add("/dev/hiddev0", kResistiveIdentity, "usb-1/input0");
  add("/dev/usb/hiddev1", kResistiveIdentity, "usb-1/input0");
  for (const char* node : {"/dev/hiddev0", "/dev/usb/hiddev1"}) {
    kernel.fail_ioctl(node, HIDIOCGPHYS(0), EIO);
  }
  EXPECT_EQ(GetTouchPanels(0), 2);
  EXPECT_STREQ(TouchDevice[0].Phys, "");
  EXPECT_STREQ(TouchDevice[1].Phys, "");
  EXPECT_EQ(count_of("perror"), 0U);
}

TEST_F(HidScanEntryTest, APctPanelWithoutPhysIsRefusedForWantOfARecord) {
  add("/dev/hidraw0", kPctIdentity, "usb-1/input0");
  kernel.fail_ioctl("/dev/hidraw0", HIDIOCGRAWPHYS(0), EIO);
  EXPECT_EQ(GetTouchPanels(0), 0);
  EXPECT_EQ(messages_of({"+++check PCT+++"}).size(), 1U);
  EXPECT_EQ(count_of("system"), 0U) << "no file is made";
  EXPECT_EQ(node_calls().back(), "close /dev/hidraw0");
}

TEST_F(HidScanEntryTest, ARefusedPanelIsNotCountedAndLeavesItsFields) {
  Panel& panel = attach_resistive({.hidraw = ""});
  panel.controller.set_firmware("V3.0");
  EXPECT_EQ(GetTouchPanels(0), 0);
  EXPECT_EQ(DeviceNumber, 0);
  EXPECT_STREQ(TouchDevice[0].Name, "/dev/usb/hiddev0");
  EXPECT_EQ(TouchDevice[0].Type, ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_STREQ(TouchDevice[0].ID, "3A4C_1688");
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_EQ(node_calls(),
            (Lines{"open /dev/usb/hiddev0 O_RDWR|O_NONBLOCK", "close /dev/usb/hiddev0"}));
}

TEST_F(HidScanEntryTest, TheNextPanelOverwritesARefusedOne) {
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  const std::string long_phys = "usb-" + std::string(200, '9') + "/input0";
  plug_resistive(nodes[0], long_phys).controller.set_firmware("V3.0");
  plug(nodes[1], kPctIdentity, "usb-1/input0");
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(TouchDevice[0].Name, nodes[1]);
  EXPECT_EQ(TouchDevice[0].Type, ZELKORA_TYPE_PCT);
  EXPECT_STREQ(TouchDevice[0].ID, "2575_8753");
  const std::string phys(TouchDevice[0].Phys, sizeof TouchDevice[0].Phys);
  EXPECT_EQ(phys, "usb-1/input0" + std::string(sizeof TouchDevice[0].Phys - 12, '\0'));
}

TEST_F(HidScanEntryTest, ARefusedPanelIsNoDuplicateOfTheNext) {
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  plug_resistive(nodes[0], "usb-1/input0").controller.set_firmware("V3.0");
  plug(nodes[1], kPctIdentity, "usb-1/input0");
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(messages_of({"###exist"}), Lines{});
}

TEST_F(HidScanEntryTest, APanelWithoutAnswerIsTakenWithoutFirmwareText) {
  attach_resistive({.hidraw = ""}).usb.set_forged_reply(std::vector<uint8_t>(63, 0));
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_STREQ(TouchDevice[0].FWVersion, "");
}

TEST_F(HidScanEntryTest, AFifthPanelIsNotEntered) {
  const Lines nodes = slots("/dev/usb/hiddev", 6);
  std::vector<Panel*> panels;
  for (size_t i = 0; i < nodes.size(); ++i) {
    panels.push_back(&plug_resistive(nodes[i], "usb-" + std::to_string(i) + "/input0"));
  }
  EXPECT_EQ(GetTouchPanels(0), 4);
  EXPECT_EQ(DeviceNumber, 4);
  for (size_t i = 0; i < 4; ++i) EXPECT_EQ(TouchDevice[i].Name, nodes[i]);
  EXPECT_EQ(messages_of({"Device"}).size(), 4U);
  for (size_t i = 0; i < nodes.size(); ++i) {
    EXPECT_EQ(panels[i]->controller.frames().empty(), i >= 4) << i;
  }
  EXPECT_EQ(node_calls().back(), "close " + nodes[5]);
  EXPECT_EQ(leaked_descriptors().size(), 0U);
}

TEST_F(HidScanEntryTest, AFifthPctPanelIsNotCounted) {
  for (int i = 0; i < 5; ++i) add_pct(std::to_string(i), "usb-" + std::to_string(i) + "/input0");
  EXPECT_EQ(GetTouchPanels(0), 4);
  EXPECT_EQ(PCTDeviceNumber, 4);
  EXPECT_EQ(GetPCTTouchPanels(0), 4);
}

TEST_F(HidScanEntryTest, NamesThatDoNotFitAreCut) {
  const std::string fits = "/dev/hiddev" + std::string(24, '1');
  const std::string too_long = "/dev/hiddev" + std::string(25, '2');
  for (const std::string& path : {fits, too_long}) {
    SCOPED_TRACE(path.size());
    const auto& panel = add(path, kPctIdentity);
    clear_trace();
    EXPECT_EQ(GetTouchPanels(0), 1);
    EXPECT_EQ(TouchDevice[0].Name, path.substr(0, 35));
    EXPECT_EQ(messages_of({"Device1 : "})[0], "zelkora DD:Device1 : " + path.substr(0, 35) +
                                                  " phys:usb-0000:00:14.0-1/input0 MatchFlag:3\n");
    remove(panel);
  }
}

TEST_F(HidScanEntryTest, PhysOf255BytesFitsAndLongerOnesAreCut) {
  for (const char* node : {"/dev/hiddev0", "/dev/hidraw0"}) {
    for (const size_t length : {254U, 255U, 256U, 257U, 1000U}) {
      SCOPED_TRACE(length);
      const std::string phys(length, 'p');
      const auto& panel = add(node, kPctIdentity, phys);
      EXPECT_EQ(GetTouchPanels(0), 1);
      EXPECT_EQ(TouchDevice[0].Phys, phys.substr(0, 255));
      EXPECT_STREQ(TouchDevice[0].EventName, "");
      remove(panel);
    }
  }
}

TEST_F(HidScanEntryTest, PathAndPhysAreNoFormats) {
  add("/dev/hiddev%s%n", kPctIdentity, "usb%s%n");
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_STREQ(TouchDevice[0].Name, "/dev/hiddev%s%n");
  EXPECT_EQ(messages_of({"FindMyHidDevice--/"}),
            trace_messages({"FindMyHidDevice--/dev/hiddev%s%n\n"}));
  EXPECT_EQ(messages_of({"Device1"})[0],
            "zelkora DD:Device1 : /dev/hiddev%s%n phys:usb%s%n MatchFlag:3\n");
}

TEST_F(HidScanEntryTest, EveryAcceptedEntryTakesTheHidRawOfItsNode) {
  add("/dev/usb/hiddev0", kPctIdentity, "usb-1/input0");
  add("/dev/hidraw1", kPctIdentity, "usb-2/input0");
  ASSERT_EQ(GetTouchPanels(0), 2);
  EXPECT_EQ(TouchDevice[0].HidRaw, 0);
  EXPECT_EQ(TouchDevice[1].HidRaw, 1);
  EXPECT_EQ(HidRaw, 1) << "as the last node left it";
}

}  // namespace
