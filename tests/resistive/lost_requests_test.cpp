// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Setting a panel that hangs, or that is unplugged at any place inside an exchange.
#include <cstdio>

#include "support/bench.h"
#include "zelkora.h"

namespace {

using namespace zelkora::test;

constexpr uint8_t kBeep = 86;
// The field's first values when the node is opened; then the write and the read-back, a request
// for the command and one for its reply each.
constexpr unsigned kRequests = 5;

class LostRequestsTest : public Bench {
 protected:
  Panel& list_resistive() {
    Panel& panel = attach_resistive();
    TouchDeviceEntry& entry = TouchDevice[0];
    std::snprintf(entry.Name, sizeof entry.Name, "%s", panel.nodes.hiddev.c_str());
    entry.Type = ZELKORA_TYPE_RESISTIVE_USB;
    DeviceNumber = 1;
    return panel;
  }
};

TEST_F(LostRequestsTest, APanelThatHangsIsNotSetAndIsSetOnceItGoesOn) {
  Panel& panel = list_resistive();
  panel.controller.set_value(kBeep, 0);
  panel.usb.usb_faults.hangs = true;
  EXPECT_EQ(SetCurrenBeepOn(0, 1), 0);
  EXPECT_TRUE(panel.controller.frames().empty());
  EXPECT_EQ(trace_of({"open", "close"}),
            (Lines{"open /dev/usb/hiddev0 O_RDONLY", "close /dev/usb/hiddev0"}));
  panel.usb.usb_faults.hangs = false;
  EXPECT_EQ(SetCurrenBeepOn(0, 1), 1);
  EXPECT_EQ(panel.controller.value(kBeep), 1);
}

class UnpluggedInsideTest : public LostRequestsTest,
                            public testing::WithParamInterface<unsigned> {};

TEST_P(UnpluggedInsideTest, FailsAndClosesTheNode) {
  Panel& panel = list_resistive();
  panel.controller.set_value(kBeep, 0);
  panel.usb.usb_faults.unplugs_after = GetParam();
  EXPECT_EQ(SetCurrenBeepOn(0, 1), 0);
  EXPECT_EQ(trace_of({"open", "close"}),
            (Lines{"open /dev/usb/hiddev0 O_RDONLY", "close /dev/usb/hiddev0"}));
  EXPECT_TRUE(kernel.node_paths().empty());
  // The command that was taken was carried out.
  EXPECT_EQ(panel.controller.value(kBeep), GetParam() >= 2 ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(EachRequest, UnpluggedInsideTest, testing::Range(0U, kRequests));

TEST_F(LostRequestsTest, APanelThatIsUnpluggedBehindTheLastRequestIsSet) {
  Panel& panel = list_resistive();
  panel.controller.set_value(kBeep, 0);
  panel.usb.usb_faults.unplugs_after = kRequests;
  EXPECT_EQ(SetCurrenBeepOn(0, 1), 1);
  EXPECT_FALSE(kernel.node_paths().empty());
}

}  // namespace
