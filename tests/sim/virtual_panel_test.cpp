// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "virtual_panel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/hiddev.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>

#include <array>
#include <cerrno>
#include <string>
#include <vector>

#include "panel_description.h"
#include "virtual_kernel.h"

namespace zelkora::sim {
namespace {

PanelDescription described(std::string_view text) {
  PanelDescription description;
  EXPECT_EQ(parse_panel(text, description), "");
  return description;
}

TEST(VirtualPanelTest, IsOfTheKindDescribed) {
  for (const std::string kind : {"resistive", "pct8752", "pct8753"}) {
    SCOPED_TRACE(kind);
    VirtualPanel panel(described(kind + ",id=3A4C:0005"));
    EXPECT_EQ(panel.kind(), kind);
    EXPECT_EQ(panel.resistive() != nullptr, kind == "resistive");
    EXPECT_EQ(panel.pct() != nullptr, kind != "resistive");
    ASSERT_NE(panel.usb(), nullptr);
    EXPECT_EQ(panel.usb()->identity().product, 0x0005);
    EXPECT_EQ(panel.serial(), nullptr);
  }
}

TEST(VirtualPanelTest, DescribesItsFieldsAsSignedWhenItIsToldTo) {
  for (const bool is_signed : {false, true}) {
    VirtualPanel panel(described(is_signed ? "resistive,signed-fields" : "resistive"));
    const FeatureReport& report = panel.usb()->feature_reports()[0];
    EXPECT_EQ(report.id, 1);
    EXPECT_EQ(report.usage_count, 63U);
    EXPECT_EQ(report.logical_minimum, is_signed ? -128 : 0);
    EXPECT_EQ(report.logical_maximum, is_signed ? 127 : 255);
  }
}

TEST(VirtualPanelTest, IsOnASerialPortAsDescribed) {
  VirtualPanel panel(described("serial,firmware=V2.1,beep=0,new-generation,failed-opens=1"));
  EXPECT_EQ(panel.kind(), "serial");
  EXPECT_EQ(panel.usb(), nullptr);
  EXPECT_EQ(panel.pct(), nullptr);
  ASSERT_NE(panel.serial(), nullptr);
  EXPECT_EQ(panel.resistive()->firmware(), "V2.1");
  EXPECT_EQ(panel.resistive()->permanent_value(86), 0);
  EXPECT_FALSE(panel.serial()->opens());
  panel.serial()->receive(std::array<uint8_t, 4>{0x01, 'Z', 'Z', 0x0D});
  EXPECT_EQ(panel.serial()->transmit(10), (std::vector<uint8_t>{0x01, '0', 0x0D}));
}

TEST(VirtualPanelTest, ShowsTheInterfacesDescribed) {
  struct Case {
    const char* text;
    std::vector<Applications> shown;
  };
  for (const auto& [text, shown] :
       {Case{"pct8753", {Applications::kVendorAndMouse}},
        Case{"pct8752,nodes=hidraw", {Applications::kMouse}},
        Case{"pct8753,pen", {Applications::kVendorAndMouse, Applications::kPen}},
        Case{"resistive,nodes=hidraw,pen", {Applications::kMouse, Applications::kPen}},
        Case{"serial", {}}}) {
    SCOPED_TRACE(text);
    VirtualPanel panel(described(text));
    std::vector<Applications> applications;
    for (const UsbInterface& interface : panel.usb_interfaces()) {
      applications.push_back(interface.applications);
      EXPECT_EQ(&interface.hid.identity(), &panel.usb()->identity());
    }
    EXPECT_EQ(applications, shown);
  }
}

TEST(VirtualPanelTest, HasTheStoredValuesFirmwareAndFaultsDescribed) {
  VirtualPanel old(described("resistive,firmware=V9,word84=7,wrong-echoes=2"));
  EXPECT_EQ(old.resistive()->firmware(), "V9");
  EXPECT_EQ(old.resistive()->permanent_value(84), 7);
  EXPECT_EQ(old.resistive()->faults.wrong_echoes, 2U);

  VirtualPanel pct(described("pct8753,firmware=00020168,pos=3,bad-checksums=2"));
  EXPECT_EQ(pct.pct()->firmware(), 0x00020168U);
  EXPECT_EQ(pct.pct()->pos_mode(), 3U);
  EXPECT_EQ(pct.pct()->pos_config(), (PctController::PosConfig{0x21, 2, 0x10, 0xA4}));
  EXPECT_EQ(pct.pct()->faults.bad_checksums, 2U);
}

TEST(VirtualPanelTest, HasTheFaultsOfItsConnection) {
  for (const char* kind : {"resistive", "pct8752", "pct8753"}) {
    VirtualPanel panel(described(std::string(kind) + ",hangs=on,unplugs-after=0"));
    EXPECT_TRUE(panel.usb()->usb_faults.hangs) << kind;
    EXPECT_EQ(panel.usb()->usb_faults.unplugs_after, 0U) << kind;
  }
}

TEST(VirtualPanelTest, HasABlankFlashAsDelivered) {
  VirtualPanel panel(described("pct8752"));
  EXPECT_EQ(panel.pct()->flash(), PctController::Flash{});
}

TEST(VirtualPanelTest, HasAnIdentityBlockWithItsSerialNumber) {
  VirtualPanel panel(described("pct8753,firmware=87538ABC,id=3D8E:3D28,sn=1122334455667788"));
  PctController::Flash flash = {0x3D, 0x8E, 0x3D, 0x28, 0x0A, 0xBC, 0,    0,    0,    0,
                                0,    0,    0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77, 0x88};
  flash[32] = 0xC0;  // the bytes add up to 045A, and 6666 + 045A = 6AC0
  flash[33] = 0x6A;
  EXPECT_EQ(panel.pct()->flash(), flash);
}

// A panel on the virtual kernel that comes back when a host resets it.
class ResetPanelTest : public testing::TestWithParam<const char*> {
 protected:
  ResetPanelTest() : panel_(described(GetParam())) {
    attachment_ = kernel_.attach(*panel_.usb(), {"usb-1/input0", kHiddev, kHidraw, kEvent});
    panel_.set_on_reset([this] { kernel_.replug(attachment_); });
    hiddev_ = kernel_.open(kHiddev, O_RDWR);
    hidraw_ = kernel_.open(kHidraw, O_RDWR);
  }

  int send(int handle, std::vector<uint8_t> report) {
    report.resize(64);
    return kernel_.ioctl(handle, HIDIOCSFEATURE(64), report.data());
  }
  int reset() {
    const bool is_8752 = panel_.kind() == "pct8752";
    return send(hidraw_, is_8752 ? std::vector<uint8_t>{0x08, 0x85, 0x01, 0x00, 0x02}
                                 : std::vector<uint8_t>{0x08, 0x84, 0x09});
  }
  uint16_t product(int handle) {
    hidraw_devinfo info{};
    EXPECT_EQ(kernel_.ioctl(handle, HIDIOCGRAWINFO, &info), 0);
    return static_cast<uint16_t>(info.product);
  }
  hiddev_devinfo hiddev_info() {
    hiddev_devinfo info{};
    const int handle = kernel_.open(kHiddev, O_RDWR);
    EXPECT_EQ(kernel_.ioctl(handle, HIDIOCGDEVINFO, &info), 0);
    return info;
  }

  static constexpr char kHiddev[] = "/dev/usb/hiddev3";
  static constexpr char kHidraw[] = "/dev/hidraw3";
  static constexpr char kEvent[] = "/dev/input/event3";

  VirtualPanel panel_;
  VirtualKernel kernel_;
  int attachment_ = 0;
  int hiddev_ = 0;
  int hidraw_ = 0;
};

INSTANTIATE_TEST_SUITE_P(Families, ResetPanelTest,
                         testing::Values("pct8752,id=2575:8752", "pct8753,id=2575:8753"),
                         [](const auto& suite) { return std::string(suite.param, 7); });

TEST_P(ResetPanelTest, EndsTheRequestWellAndLeavesOpenDescriptorsDead) {
  EXPECT_EQ(reset(), 64);
  hidraw_devinfo info{};
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGRAWINFO, &info), -ENODEV);
  EXPECT_EQ(send(hidraw_, {0x06, 0x73, 0x0C}), -ENODEV);
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCINITREPORT, nullptr), -ENODEV);
  EXPECT_EQ(kernel_.close(hidraw_), 0);
  EXPECT_EQ(panel_.pct()->resets(), 1U);
}

TEST_P(ResetPanelTest, ComesBackOnTheSameNodesWithTheUsbIdLastWritten) {
  send(hidraw_, {0xF3, 0x08, 0x00, 0x02, 0x00, 0x00, 0x75, 0x25, 0x69, 0x99});
  const uint16_t before = product(hidraw_);
  EXPECT_NE(before, 0x9969);
  const unsigned number = hiddev_info().devnum;
  reset();
  EXPECT_EQ(kernel_.node_paths(), (std::vector<std::string>{kHiddev, kHidraw, kEvent}));
  EXPECT_EQ(product(kernel_.open(kHidraw, O_RDWR)), 0x9969);
  EXPECT_EQ(hiddev_info().product, static_cast<int16_t>(0x9969));
  EXPECT_EQ(hiddev_info().devnum, number + 1);
  std::array<char, 64> phys{};
  kernel_.ioctl(kernel_.open(kHiddev, O_RDWR), HIDIOCGPHYS(64), phys.data());
  EXPECT_STREQ(phys.data(), "usb-1/input0");
}

TEST_P(ResetPanelTest, CanBeResetAgainAndUnpluggedAfterwards) {
  reset();
  hidraw_ = kernel_.open(kHidraw, O_RDWR);
  EXPECT_EQ(reset(), 64);
  EXPECT_EQ(panel_.pct()->resets(), 2U);
  hidraw_ = kernel_.open(kHidraw, O_RDWR);
  kernel_.unplug(attachment_);
  EXPECT_TRUE(kernel_.node_paths().empty());
  EXPECT_EQ(reset(), -ENODEV);
  kernel_.replug(attachment_);  // it is not there any more
  EXPECT_TRUE(kernel_.node_paths().empty());
}

TEST(ResistiveResetTest, AResistivePanelStaysOnTheBusWhenItIsReset) {
  VirtualPanel panel(described("resistive"));
  bool left = false;
  panel.set_on_reset([&] { left = true; });
  panel.resistive()->answer(std::array<uint8_t, 3>{0x01, 'R', 0x0D});
  EXPECT_EQ(panel.resistive()->resets(), 1U);
  EXPECT_FALSE(left);
}

}  // namespace
}  // namespace zelkora::sim
