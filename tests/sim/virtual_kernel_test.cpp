// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "virtual_kernel.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/hiddev.h>
#include <linux/hidraw.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <memory>
#include <string>
#include <vector>

#include "sim/hid_nodes_bench.h"
#include "usb_descriptors.h"

namespace {

namespace sim = zelkora::sim;

using zelkora::sim::VirtualKernel;
using zelkora::test::Bytes;
using zelkora::test::EchoDevice;
using zelkora::test::kEvent;
using zelkora::test::kHiddev;
using zelkora::test::kHidraw;
using zelkora::test::kPhys;
using zelkora::test::Lines;
using zelkora::test::VirtualHidTest;

using VirtualHidrawTest = VirtualHidTest;
using VirtualEventTest = VirtualHidTest;

TEST_F(VirtualHidrawTest, GivesTheDeviceWithSignedIds) {
  hidraw_devinfo info{};
  ASSERT_EQ(kernel_.ioctl(hidraw_, HIDIOCGRAWINFO, &info), 0);
  EXPECT_EQ(info.bustype, static_cast<unsigned>(BUS_USB));
  EXPECT_EQ(info.vendor, 0x3A4C);
  EXPECT_EQ(info.product, -30893);
}

TEST_F(VirtualHidrawTest, GivesNameAndPhys) {
  std::array<char, 256> text{};
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGRAWNAME(256), text.data()), 13);
  EXPECT_STREQ(text.data(), "Zelkora Echo");
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGRAWPHYS(5), text.data()), 5);
  EXPECT_STREQ(text.data(), "usb-0ra Echo");
}

TEST_F(VirtualHidrawTest, SendsAFeatureReportBehindItsId) {
  std::array<uint8_t, 4> report = {1, 0xAA, 0xBB, 0xCC};
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCSFEATURE(4), report.data()), 4);
  EXPECT_EQ(device_.last_id, 1);
  EXPECT_EQ(device_.received, (Bytes{0xAA, 0xBB, 0xCC}));
}

TEST_F(VirtualHidrawTest, GetsAFeatureReportWithItsIdAndNoMoreThanItHolds) {
  device_.answer = {1, 2, 3, 0x84};
  std::array<uint8_t, 512> report{};
  report.fill(0xEE);
  report[0] = 1;
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGFEATURE(512), report.data()), 5);
  EXPECT_EQ(Bytes(report.begin(), report.begin() + 6), (Bytes{1, 1, 2, 3, 0x84, 0xEE}));
  report.fill(0xEE);
  report[0] = 1;
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGFEATURE(3), report.data()), 3);
  EXPECT_EQ(Bytes(report.begin(), report.begin() + 4), (Bytes{1, 1, 2, 0xEE}));
}

TEST_F(VirtualHidrawTest, ReportsStallsAndOddLengths) {
  std::array<uint8_t, 4> report = {1};
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCSFEATURE(1), report.data()), -EINVAL);
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGFEATURE(1), report.data()), -EINVAL);
  device_.stalls = true;
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCSFEATURE(4), report.data()), -EPIPE);
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGFEATURE(4), report.data()), -EPIPE);
}

TEST_F(VirtualHidrawTest, AsksTheDeviceForAnUnknownReport) {
  std::array<uint8_t, 4> report = {99};
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGFEATURE(4), report.data()), 4);
  EXPECT_EQ(device_.last_id, 99);
}

TEST_F(VirtualHidrawTest, GivesTheReportDescriptor) {
  const Bytes whole = sim::report_descriptor(sim::UsbInterface{device_});
  int size = 0;
  ASSERT_EQ(kernel_.ioctl(hidraw_, HIDIOCGRDESCSIZE, &size), 0);
  EXPECT_EQ(size, static_cast<int>(whole.size()));
  const auto room = std::make_unique<hidraw_report_descriptor>();
  for (const size_t wanted : {size_t{0}, size_t{5}, whole.size(), size_t{4095}}) {
    *room = {static_cast<unsigned>(wanted), {}};
    EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGRDESC, room.get()), 0);
    Bytes expected(whole.begin(),
                   whole.begin() + static_cast<ptrdiff_t>(std::min(wanted, whole.size())));
    expected.resize(sizeof room->value);
    EXPECT_TRUE(std::ranges::equal(room->value, expected)) << wanted;
  }
  room->size = 4096;
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGRDESC, room.get()), -EINVAL);
}

TEST_F(VirtualHidrawTest, HasNoSerialNumberToTell) {
  std::array<char, 8> text = {"before"};
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGRAWUNIQ(8), text.data()), 1);
  EXPECT_STREQ(text.data(), "");
}

TEST_F(VirtualHidrawTest, TheDeviceStallsWhatIsNoFeatureReport) {
  Bytes report(64, 1);
  for (const unsigned long request :
       {HIDIOCGINPUT(64), HIDIOCSINPUT(64), HIDIOCGOUTPUT(64), HIDIOCSOUTPUT(64)}) {
    EXPECT_EQ(kernel_.ioctl(hidraw_, request, report.data()), -EPIPE);
  }
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGINPUT(1), report.data()), -EINVAL);
  EXPECT_EQ(device_.last_id, -1);
}

TEST_F(VirtualHidrawTest, ReadsTheReportsThatHiddevAskedFor) {
  Bytes room(64);
  device_.answer = {1, 2, 3, 4};
  EXPECT_EQ(kernel_.poll(hidraw_), POLLOUT | POLLWRNORM);
  ASSERT_EQ(report_request(HIDIOCGREPORT), 0);
  ASSERT_EQ(report_request(HIDIOCGREPORT, 7), 0);
  EXPECT_EQ(kernel_.poll(hidraw_), POLLOUT | POLLWRNORM | POLLIN | POLLRDNORM);
  EXPECT_EQ(kernel_.read(hidraw_, room), 5);
  EXPECT_EQ(Bytes(room.begin(), room.begin() + 5), (Bytes{1, 1, 2, 3, 4}));
  EXPECT_EQ(kernel_.read(hidraw_, std::span(room).first(2)), 2);  // the rest of it is lost
  EXPECT_EQ(Bytes(room.begin(), room.begin() + 2), (Bytes{7, 1}));
  EXPECT_EQ(kernel_.read(hidraw_, room), -EAGAIN);
}

TEST_F(VirtualHidrawTest, KeepsSixtyThreeReportsUntilTheyAreRead) {
  Bytes room(64);
  for (int i = 0; i < 70; ++i) report_request(HIDIOCGREPORT);
  for (int i = 0; i < 63; ++i) EXPECT_EQ(kernel_.read(hidraw_, room), 5);
  EXPECT_EQ(kernel_.read(hidraw_, room), -EAGAIN);
}

TEST_F(VirtualHidrawTest, AReadOfNothingLosesAllThatWaits) {
  Bytes room(64);
  report_request(HIDIOCGREPORT);
  report_request(HIDIOCGREPORT);
  EXPECT_EQ(kernel_.read(hidraw_, {}), -EAGAIN);
  EXPECT_EQ(kernel_.read(hidraw_, room), -EAGAIN);
}

TEST_F(VirtualHidrawTest, TellsUnknownRequestsByDirectionAndType) {
  std::array<uint8_t, 64> buffer{};
  EXPECT_EQ(kernel_.ioctl(hidraw_, _IOR('H', 0x7F, int), buffer.data()), -ENOTTY);
  EXPECT_EQ(kernel_.ioctl(hidraw_, _IOW('H', 0x7F, int), buffer.data()), -EINVAL);
  EXPECT_EQ(kernel_.ioctl(hidraw_, TCGETS, buffer.data()), -EINVAL);
}

TEST_F(VirtualEventTest, GivesNamePhysAndId) {
  std::array<char, 256> text{};
  EXPECT_EQ(kernel_.ioctl(event_, EVIOCGNAME(256), text.data()), 19);
  EXPECT_STREQ(text.data(), "Zelkora Echo Mouse");
  EXPECT_EQ(kernel_.ioctl(event_, EVIOCGUNIQ(256), text.data()), 1);
  EXPECT_STREQ(text.data(), "");
  EXPECT_EQ(kernel_.ioctl(event_, EVIOCGPHYS(256), text.data()), 26);
  EXPECT_STREQ(text.data(), kPhys);
  input_id id{};
  EXPECT_EQ(kernel_.ioctl(event_, EVIOCGID, &id), 0);
  EXPECT_EQ(id.vendor, 0x3A4C);
  EXPECT_EQ(id.product, 0x8753);
  int version = 0;
  EXPECT_EQ(kernel_.ioctl(event_, EVIOCGVERSION, &version), 0);
  EXPECT_EQ(version, EV_VERSION);
  EXPECT_EQ(kernel_.ioctl(event_, EVIOCGKEY(16), text.data()), -EINVAL);
}

TEST_F(VirtualEventTest, HasNoPhysWhenTheDeviceHasNone) {
  EchoDevice device;
  kernel_.attach(device, {.phys = "", .hiddev = "/dev/hiddev1", .hidraw = "", .event = "/dev/e1"});
  std::array<char, 8> text = {"before"};
  EXPECT_EQ(kernel_.ioctl(kernel_.open("/dev/e1", O_RDONLY), EVIOCGPHYS(8), text.data()), -ENOENT);
  EXPECT_STREQ(text.data(), "before");
  // hiddev has an empty one.
  EXPECT_EQ(kernel_.ioctl(kernel_.open("/dev/hiddev1", O_RDWR), HIDIOCGPHYS(8), text.data()), 1);
  EXPECT_STREQ(text.data(), "");
}

TEST_F(VirtualHidTest, HaveNothingToReadOrWrite) {
  std::array<uint8_t, 64> bytes{};
  EXPECT_EQ(kernel_.read(hiddev_, bytes), -EAGAIN);
  EXPECT_EQ(kernel_.read(hidraw_, bytes), -EAGAIN);
  EXPECT_EQ(kernel_.read(event_, bytes), -EAGAIN);
  EXPECT_EQ(kernel_.write(hiddev_, bytes), -EINVAL);
  EXPECT_EQ(kernel_.write(hidraw_, bytes), -EPIPE);
  EXPECT_EQ(kernel_.write(event_, bytes), -EBADF);  // it was opened for reading
}

TEST_F(VirtualHidTest, UnpluggedDevicesAnswerNoDevice) {
  kernel_.unplug(attachment_);
  std::array<uint8_t, 64> bytes = {1};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCINITREPORT, nullptr), -ENODEV);
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCSFEATURE(4), bytes.data()), -ENODEV);
  EXPECT_EQ(kernel_.ioctl(event_, EVIOCGNAME(4), bytes.data()), -ENODEV);
  EXPECT_EQ(kernel_.read(hidraw_, bytes), -EIO);
  EXPECT_EQ(kernel_.open(kHiddev, O_RDWR), -ENOENT);
  EXPECT_FALSE(kernel_.owns(kHiddev));
  EXPECT_TRUE(kernel_.node_paths().empty());
  EXPECT_EQ(kernel_.close(hiddev_), 0);
  EXPECT_EQ(kernel_.close(hiddev_), -EBADF);
}

TEST_F(VirtualHidTest, OddLengthsAreJudgedBeforeTheDevice) {
  std::array<uint8_t, 7> few{};
  const int writer = kernel_.open(kEvent, O_WRONLY);
  for (const bool plugged : {true, false}) {
    SCOPED_TRACE(plugged);
    if (!plugged) kernel_.unplug(attachment_);
    EXPECT_EQ(kernel_.read(hiddev_, few), 0);
    EXPECT_EQ(kernel_.read(hiddev_, {}), 0);
    EXPECT_EQ(kernel_.read(event_, few), -EINVAL);
    EXPECT_EQ(kernel_.read(event_, {}), plugged ? -EAGAIN : -ENODEV);
    EXPECT_EQ(kernel_.write(writer, few), -EINVAL);
    EXPECT_EQ(kernel_.write(writer, {}), plugged ? 0 : -ENODEV);
  }
}

TEST_F(VirtualHidTest, HangUpWhenUnplugged) {
  EXPECT_EQ(kernel_.poll(hiddev_), 0);
  EXPECT_EQ(kernel_.poll(event_), POLLOUT | POLLWRNORM);
  kernel_.unplug(attachment_);
  EXPECT_EQ(kernel_.poll(hiddev_), POLLERR | POLLHUP);
  EXPECT_EQ(kernel_.poll(hidraw_), POLLOUT | POLLWRNORM | POLLERR | POLLHUP);
  EXPECT_EQ(kernel_.poll(event_), POLLERR | POLLHUP);
  EXPECT_EQ(kernel_.poll(-1), POLLNVAL);
}

TEST_F(VirtualHidTest, AreOnlyThoseWithAPath) {
  EchoDevice device;
  kernel_.attach(device, {.phys = "p", .hiddev = "", .hidraw = "/dev/hidraw1", .event = ""});
  EXPECT_EQ(kernel_.node_paths(), (Lines{kHiddev, kHidraw, kEvent, "/dev/hidraw1"}));
  EXPECT_FALSE(kernel_.owns(""));
}

// A device of two interfaces is plugged as one.
class VirtualPenTest : public VirtualHidTest {
 protected:
  std::string text(const char* node, unsigned long request) {
    std::array<char, 64> room{};
    EXPECT_GT(kernel_.ioctl(kernel_.open(node, O_RDONLY), request, room.data()), 0) << node;
    return room.data();
  }

  zelkora::sim::PenInterface pen_{device_};
  int pair_ = kernel_.attach(
      {{device_, {"usb-2/input0", "/dev/usb/hiddev1", "/dev/hidraw1", "/dev/input/event1"}},
       {{pen_, zelkora::sim::Applications::kPen},
        {"usb-2/input1", "", "/dev/hidraw2", "/dev/input/event2"}}});
};

TEST_F(VirtualPenTest, HasNodesOfItsOwnWithThePhysOfItsInterface) {
  EXPECT_EQ(text("/dev/hidraw1", HIDIOCGRAWPHYS(64)), "usb-2/input0");
  EXPECT_EQ(text("/dev/hidraw2", HIDIOCGRAWPHYS(64)), "usb-2/input1");
  EXPECT_EQ(text("/dev/hidraw2", HIDIOCGRAWNAME(64)), "Zelkora Echo");
  EXPECT_EQ(text("/dev/input/event2", EVIOCGPHYS(64)), "usb-2/input1");
  EXPECT_EQ(text("/dev/input/event2", EVIOCGNAME(64)), "Zelkora Echo Stylus");
}

TEST_F(VirtualPenTest, StallsEveryFeatureReport) {
  const int pen = kernel_.open("/dev/hidraw2", O_RDWR);
  Bytes report = {1, 0xAA};
  EXPECT_EQ(kernel_.ioctl(pen, HIDIOCSFEATURE(2), report.data()), -EPIPE);
  EXPECT_EQ(kernel_.ioctl(pen, HIDIOCGFEATURE(2), report.data()), -EPIPE);
  EXPECT_EQ(device_.last_id, -1);
}

TEST_F(VirtualPenTest, LeavesAndComesBackWithItsPanel) {
  const int pen = kernel_.open("/dev/hidraw2", O_RDWR);
  const Lines before = kernel_.node_paths();
  kernel_.replug(pair_);
  hidraw_devinfo info{};
  EXPECT_EQ(kernel_.ioctl(pen, HIDIOCGRAWINFO, &info), -ENODEV);
  EXPECT_EQ(kernel_.node_paths(), before);
  kernel_.unplug(pair_);
  EXPECT_EQ(kernel_.node_paths(), (Lines{kHiddev, kHidraw, kEvent}));
}

TEST_F(VirtualHidTest, TracesEachRequestWithWhatItNames) {
  hiddev_report_info report{HID_REPORT_TYPE_FEATURE, 1, 0};
  hiddev_field_info field{};
  field.report_type = HID_REPORT_TYPE_FEATURE;
  field.report_id = 2;
  std::array<uint8_t, 256> buffer = {1, 0xAB};
  kernel_.ioctl(hiddev_, HIDIOCGREPORTINFO, &report);
  kernel_.ioctl(hiddev_, HIDIOCGFIELDINFO, &field);
  kernel_.ioctl(hiddev_, HIDIOCGNAME(256), buffer.data());
  kernel_.ioctl(hiddev_, HIDIOCGPHYS(12), buffer.data());
  buffer = {1, 0xAB};
  kernel_.ioctl(hidraw_, HIDIOCSFEATURE(64), buffer.data());
  kernel_.ioctl(event_, EVIOCGPHYS(256), buffer.data());
  kernel_.ioctl(hidraw_, TCGETS, buffer.data());
  EXPECT_EQ(trace_,
            (Lines{"ioctl HIDIOCGREPORTINFO type=3 id=1",
                   "ioctl HIDIOCGFIELDINFO type=3 id=2 field=0 -> EINVAL", "ioctl HIDIOCGNAME 256",
                   "ioctl HIDIOCGPHYS 12", "ioctl HIDIOCSFEATURE 64", "set_report 1: AB",
                   "ioctl EVIOCGPHYS 256", "ioctl 0x00005401 -> EINVAL"}));
}

TEST_F(VirtualHidTest, TracesUsagesAndReports) {
  usage(0);  // initialises the reports
  trace_.clear();
  set_usage(0, -128);
  usage(0);
  report_request(HIDIOCSREPORT);
  device_.stalls = true;
  report_request(HIDIOCGREPORT);
  EXPECT_EQ(
      trace_,
      (Lines{"ioctl HIDIOCSUSAGE type=3 id=1 field=0 usage=0 code=FF000001 value=-128",
             "ioctl HIDIOCGUSAGE type=3 id=1 field=0 usage=0", "ioctl HIDIOCSREPORT type=3 id=1",
             "set_report 1: 80", "ioctl HIDIOCGREPORT type=3 id=1", "get_report 1: stall"}));
}

TEST_F(VirtualHidTest, TracesOpeningAndClosing) {
  const int handle = kernel_.open(kHidraw, O_RDWR | O_NONBLOCK);
  kernel_.close(handle);
  kernel_.open("/dev/hidraw9", O_RDONLY);
  EXPECT_EQ(trace_, (Lines{"open /dev/hidraw0 O_RDWR|O_NONBLOCK", "close /dev/hidraw0",
                           "open /dev/hidraw9 O_RDONLY -> ENOENT"}));
}

TEST_F(VirtualHidTest, FailByScriptForAsLongAsItSays) {
  std::array<char, 256> text{};
  kernel_.fail_ioctl(kHiddev, HIDIOCGNAME(0), EIO, 2);
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGNAME(256), text.data()), -EIO);
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGRAWNAME(256), text.data()), 13);
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGPHYS(256), text.data()), 26);
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGNAME(8), text.data()), -EIO);
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGNAME(256), text.data()), 13);

  kernel_.fail_open(kHiddev, EACCES);
  EXPECT_EQ(kernel_.open(kHiddev, O_RDWR), -EACCES);
  EXPECT_EQ(kernel_.open(kHiddev, O_RDWR), -EACCES);
  EXPECT_EQ(trace_.back(), "open /dev/usb/hiddev0 O_RDWR -> EACCES");
}

}  // namespace
