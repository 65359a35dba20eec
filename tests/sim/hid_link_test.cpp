// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hid_link.h"

#include <linux/hiddev.h>
#include <linux/hidraw.h>

#include <array>
#include <cerrno>

#include "hid_nodes_bench.h"

namespace zelkora::test {
namespace {

using sim::Outcome;

class HidLinkTest : public testing::Test {
 protected:
  HidLinkTest() {
    device_.answer = {6, 1, 0, 0};
    device_.set_on_unplug([this] { ++unplugs_; });
  }

  EchoDevice device_;
  int unplugs_ = 0;
  Lines trace_;
  sim::HidLink link_{device_, [this](std::string line) { trace_.push_back(std::move(line)); }};
};

TEST_F(HidLinkTest, TellsTheReportsThatGoThroughWithoutTheZerosAtTheirEnd) {
  EXPECT_EQ(link_.set_report(1, Bytes{2, 0, 3, 0}), Outcome::kDone);
  EXPECT_EQ(link_.set_report(7, Bytes{0, 0}), Outcome::kDone);
  EXPECT_EQ(link_.get_report(1).data, (Bytes{6, 1, 0, 0}));
  EXPECT_EQ(trace_, (Lines{"set_report 1: 02 00 03", "set_report 7:", "get_report 1: 06 01"}));
}

TEST_F(HidLinkTest, TellsAStall) {
  device_.stalls = true;
  EXPECT_EQ(link_.set_report(1, Bytes{2}), Outcome::kStall);
  EXPECT_EQ(link_.get_report(1).outcome, Outcome::kStall);
  EXPECT_EQ(trace_, (Lines{"set_report 1: 02 -> stall", "get_report 1: stall"}));
}

TEST_F(HidLinkTest, NothingReachesADeviceThatHangsUntilItGoesOn) {
  device_.usb_faults.hangs = true;
  EXPECT_EQ(link_.set_report(1, Bytes{2}), Outcome::kNoAnswer);
  EXPECT_EQ(link_.get_report(1).outcome, Outcome::kNoAnswer);
  EXPECT_EQ(trace_, (Lines{"set_report 1: 02 -> no answer", "get_report 1: no answer"}));
  EXPECT_EQ(device_.last_id, -1);
  device_.usb_faults.hangs = false;
  EXPECT_EQ(link_.set_report(1, Bytes{2}), Outcome::kDone);
  EXPECT_EQ(unplugs_, 0);
}

TEST_F(HidLinkTest, ADeviceIsUnpluggedInTheRequestBehindThoseItServes) {
  device_.usb_faults.unplugs_after = 2;
  EXPECT_EQ(link_.set_report(1, Bytes{2}), Outcome::kDone);
  EXPECT_EQ(link_.get_report(1).outcome, Outcome::kDone);
  EXPECT_EQ(unplugs_, 0);
  EXPECT_EQ(link_.set_report(1, Bytes{9}), Outcome::kNoAnswer);
  EXPECT_EQ(unplugs_, 1);
  EXPECT_EQ(device_.received, Bytes{2});
}

TEST_F(HidLinkTest, NothingPassesAnUnpluggedDevicesLinkAgain) {
  device_.usb_faults.unplugs_after = 0;
  EXPECT_EQ(link_.get_report(1).outcome, Outcome::kNoAnswer);
  EXPECT_EQ(link_.get_report(1).outcome, Outcome::kNoAnswer);
  EXPECT_EQ(unplugs_, 1);
  EXPECT_EQ(device_.last_id, -1);
  sim::HidLink plugged_in_again(device_, {});
  EXPECT_EQ(plugged_in_again.get_report(1).outcome, Outcome::kDone);
}

// What the virtual kernel makes of it; the real one answers the same, five or ten seconds later.
class LostRequestTest : public VirtualHidTest {
 protected:
  LostRequestTest() {
    device_.set_on_unplug([this] { kernel_.unplug(attachment_); });
  }
  int feature_request(unsigned long request) {
    std::array<uint8_t, 5> report{1};
    return kernel_.ioctl(hidraw_, request, report.data());
  }
};

TEST_F(LostRequestTest, HiddevHidesThatADeviceHangsAndKeepsTheValues) {
  set_usage(0, 77);
  device_.usb_faults.hangs = true;
  device_.answer = {5, 5, 5, 5};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCINITREPORT, nullptr), 0);
  EXPECT_EQ(report_request(HIDIOCSREPORT), 0);
  EXPECT_EQ(report_request(HIDIOCGREPORT), 0);
  EXPECT_EQ(usage(0), 77);
}

TEST_F(LostRequestTest, HidrawTellsThatADeviceHangs) {
  device_.usb_faults.hangs = true;
  EXPECT_EQ(feature_request(HIDIOCSFEATURE(5)), -ETIMEDOUT);
  EXPECT_EQ(feature_request(HIDIOCGFEATURE(5)), -ETIMEDOUT);
}

TEST_F(LostRequestTest, HiddevHidesThatADeviceIsUnpluggedUntilTheNextRequest) {
  for (const unsigned long request : {HIDIOCSREPORT, HIDIOCGREPORT}) {
    set_usage(0, 77);
    device_.usb_faults.unplugs_after = 0;
    EXPECT_EQ(report_request(request), 0);
    EXPECT_EQ(report_request(HIDIOCGREPORT), -ENODEV);
    EXPECT_TRUE(kernel_.node_paths().empty());
    attachment_ = kernel_.attach(device_, {kPhys, kHiddev, kHidraw, kEvent});
    hiddev_ = kernel_.open(kHiddev, O_RDWR);
  }
}

TEST_F(LostRequestTest, HidrawTellsThatADeviceIsUnplugged) {
  for (const unsigned long request : {HIDIOCSFEATURE(5), HIDIOCGFEATURE(5)}) {
    device_.usb_faults.unplugs_after = 0;
    EXPECT_EQ(feature_request(request), -ETIMEDOUT);
    EXPECT_EQ(feature_request(request), -ENODEV);
    EXPECT_TRUE(kernel_.node_paths().empty());
    attachment_ = kernel_.attach(device_, {kPhys, kHiddev, kHidraw, kEvent});
    hidraw_ = kernel_.open(kHidraw, O_RDWR);
  }
}

}  // namespace
}  // namespace zelkora::test
