// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cstring>

#include "discovery/discovery_bench.h"

namespace {

using zelkora::test::kPctIdentity;
using zelkora::test::Lines;

class DeviceLookupTest : public zelkora::test::DiscoveryBench {
 protected:
  void SetUp() override {
    DiscoveryBench::SetUp();
    std::memset(out_, '#', sizeof out_);
  }

  char out_[64];
};

TEST_F(DeviceLookupTest, TheEventNameIsLookedUpAndCopiedWhole) {
  add("/dev/input/event4", kPctIdentity, "usb-1/input0");
  std::strcpy(TouchDevice[1].Phys, "usb-1/input0");
  GetEventDeviceName(1, out_);
  EXPECT_STREQ(out_, "/dev/input/event4");
  EXPECT_EQ(std::memcmp(out_, TouchDevice[1].EventName, 36), 0);
  EXPECT_EQ(out_[35], '\0');
  EXPECT_EQ(out_[36], '#');
}

TEST_F(DeviceLookupTest, WithoutAnEventNodeTheNameIsEmpty) {
  GetEventDeviceName(0, out_);
  EXPECT_EQ(std::string(out_, 37), std::string(36, '\0') + "#");
}

TEST_F(DeviceLookupTest, TheEventNameReadsTheConfigurationFirst) {
  host.config[4] = 7;
  DbgFlag = 0;
  GetEventDeviceName(0, out_);
  EXPECT_EQ(host.config_reads, 1);
  EXPECT_EQ(MyConfig[4], 7);
  EXPECT_EQ(messages().front(), "zelkora DD:FindMyEVDevice--start\n");
}

TEST_F(DeviceLookupTest, TheEventNameLeavesTheTableToTheEnumeration) {
  TouchDevice[0].Type = 3;
  DeviceNumber = 1;
  GetEventDeviceName(0, out_);
  EXPECT_EQ(TouchDevice[0].Type, 3);
  EXPECT_EQ(DeviceNumber, 1);
}

TEST_F(DeviceLookupTest, ANodeIsFoundByAFullEnumeration) {
  add_resistive();
  EXPECT_EQ(GetDeviceNode(1, out_), 1);
  EXPECT_STREQ(out_, "/dev/usb/hiddev0");
  EXPECT_EQ(DeviceNumber, 1);
  EXPECT_EQ(host.config_reads, 1);
}

TEST_F(DeviceLookupTest, AHidrawNodeIsAHidNode) {
  host.config[5] = 1;
  write_pct_list();
  add("/dev/hidraw3", kPctIdentity);
  EXPECT_EQ(GetDeviceNode(1, out_), 1);
  EXPECT_STREQ(out_, "/dev/hidraw3");
}

TEST_F(DeviceLookupTest, NodesAreNumberedFromOne) {
  write_resistive_list();
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  plug_resistive(nodes[0], "usb-1/input0");
  plug_resistive(nodes[1], "usb-2/input0");
  EXPECT_EQ(GetDeviceNode(2, out_), 1);
  EXPECT_EQ(out_, nodes[1]);
  EXPECT_EQ(GetDeviceNode(1, out_), 1);
  EXPECT_EQ(out_, nodes[0]);
}

TEST_F(DeviceLookupTest, WithoutPanelsTheTextIsUntouched) {
  EXPECT_EQ(GetDeviceNode(1, out_), 0);
  EXPECT_EQ(std::string(out_, sizeof out_), std::string(sizeof out_, '#'));
}

TEST_F(DeviceLookupTest, OnlyTheTextAndItsEndAreCopied) {
  add_resistive();
  GetDeviceNode(1, out_);
  EXPECT_EQ(out_[16], '\0');
  EXPECT_EQ(out_[17], '#');
}

TEST_F(DeviceLookupTest, AnEntryBehindTheLastPanelHasNoNode) {
  add_resistive();
  EXPECT_EQ(GetDeviceNode(2, out_), 0);
  EXPECT_STREQ(out_, "");
}

TEST_F(DeviceLookupTest, ADroppedPanelHasNoNode) {
  write_pct_list();
  add("/dev/usb/hiddev0", kPctIdentity).controller.faults.silent = true;
  EXPECT_EQ(GetDeviceNode(1, out_), 0);
  EXPECT_EQ(out_[0], '#') << "though its name is still in the table";
  EXPECT_STREQ(TouchDevice[0].Name, "/dev/usb/hiddev0");
}

TEST_F(DeviceLookupTest, ADroppedPanelBehindTheLastStillHasItsNode) {
  write_pct_list();
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  plug(nodes[0], kPctIdentity, "usb-1/input0");
  plug(nodes[1], kPctIdentity, "usb-2/input0").controller.faults.silent = true;
  EXPECT_EQ(GetDeviceNode(2, out_), 1);
  EXPECT_EQ(out_, nodes[1]);
  EXPECT_EQ(DeviceNumber, 1);
}

// The name in the table is what counts, and it may be cut.
TEST_F(DeviceLookupTest, ANameThatHoldsTtyIsATty) {
  write_pct_list();
  const std::string path = "/dev/tty" + std::string(40, '-') + "hiddev0";
  add(path, kPctIdentity);
  EXPECT_EQ(GetDeviceNode(1, out_), 2);
  EXPECT_EQ(out_, path.substr(0, 35));
  EXPECT_EQ(out_[36], '#');
}

TEST_F(DeviceLookupTest, HidGoesBeforeTty) {
  write_pct_list();
  add("/dev/tty-hiddev0", kPctIdentity);
  EXPECT_EQ(GetDeviceNode(1, out_), 1);
}

TEST_F(DeviceLookupTest, ANameOfNeitherKindIsZero) {
  write_pct_list();
  add("/dev/" + std::string(40, '-') + "hiddev0", kPctIdentity);
  EXPECT_EQ(GetDeviceNode(1, out_), 0);
  EXPECT_EQ(out_, "/dev/" + std::string(30, '-'));
}

}  // namespace
