// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "usb_interface.h"

#include <gtest/gtest.h>

#include <string>

#include "resistive_controller.h"

namespace zelkora::sim {
namespace {

const std::string kLong(140, 'm');

TEST(UsbIdentityTest, TheKernelNamesADeviceByTheTextsThatItHas) {
  struct Case {
    std::string maker, name, kernel_name;
  };
  for (const auto& [maker, name, kernel_name] :
       {Case{"Zelkora", "Panel", "Zelkora Panel"}, Case{"", "Panel", "Panel"},
        Case{"Zelkora", "", "Zelkora"}, Case{"", "", "HID 2575:87af"},
        Case{kLong, "", kLong.substr(0, 126)}, Case{"", kLong, kLong.substr(0, 126)},
        Case{kLong, "Panel", kLong.substr(0, 126) + " "},
        Case{"Zelkora", kLong, "Zelkora " + kLong.substr(0, 119)}}) {
    SCOPED_TRACE(maker + "|" + name);
    EXPECT_EQ((UsbIdentity{0x2575, 0x87AF, maker, name}).kernel_name(), kernel_name);
  }
}

class UsbInterfaceTest : public testing::Test {
 protected:
  std::string event_name(const std::string& product, Applications applications) {
    ResistiveUsb panel(controller_, {0x3A4C, 0x1688, "Zelkora", product});
    return UsbInterface(panel, applications).event_name();
  }

  ResistiveController controller_;
};

TEST_F(UsbInterfaceTest, TheEventNodeIsNamedAfterTheApplicationWhereThereAreSeveral) {
  EXPECT_EQ(event_name("Panel", Applications::kVendorAndMouse), "Zelkora Panel Mouse");
  EXPECT_EQ(event_name("Panel", Applications::kMouse), "Zelkora Panel");
  EXPECT_EQ(event_name("Panel", Applications::kPen), "Zelkora Panel Stylus");
}

TEST_F(UsbInterfaceTest, ANameThatTellsTheApplicationAlreadyIsLeftAlone) {
  EXPECT_EQ(event_name("Air Mouse", Applications::kVendorAndMouse), "Zelkora Air Mouse");
  EXPECT_EQ(event_name("Air Mouse", Applications::kPen), "Zelkora Air Mouse Stylus");
}

TEST_F(UsbInterfaceTest, OnlyAVendorsApplicationMakesAHiddevNode) {
  ResistiveUsb panel(controller_, {});
  EXPECT_TRUE(UsbInterface(panel).makes_hiddev());
  EXPECT_FALSE(UsbInterface(panel, Applications::kMouse).makes_hiddev());
  EXPECT_FALSE(UsbInterface(panel, Applications::kPen).makes_hiddev());
}

TEST_F(UsbInterfaceTest, APenIsPartOfItsPanelAndKnowsNoFeatureReport) {
  ResistiveUsb panel(controller_, {0x3A4C, 0x1688, "Zelkora", "Panel"});
  PenInterface pen(panel);
  EXPECT_EQ(pen.identity().kernel_name(), "Zelkora Panel");
  EXPECT_TRUE(pen.feature_reports().empty());
}

}  // namespace
}  // namespace zelkora::sim
