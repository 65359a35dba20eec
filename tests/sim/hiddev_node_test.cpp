// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <linux/hidraw.h>
#include <linux/input.h>
#include <poll.h>

#include <array>
#include <bit>
#include <cerrno>
#include <memory>

#include "sim/hid_nodes_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::kHiddev;
using zelkora::test::kPhys;
using zelkora::test::Lines;
using VirtualHiddevTest = zelkora::test::VirtualHidTest;

TEST_F(VirtualHiddevTest, GivesTheDeviceWithSignedIds) {
  hiddev_devinfo info{};
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGDEVINFO, &info), 0);
  EXPECT_EQ(info.bustype, static_cast<unsigned>(BUS_USB));
  EXPECT_EQ(info.busnum, 1U);
  EXPECT_EQ(info.devnum, 1U);
  EXPECT_EQ(info.ifnum, 1U);
  EXPECT_EQ(info.vendor, 0x3A4C);
  EXPECT_EQ(info.product, -30893);
  EXPECT_EQ(info.version, 0x0100);
  EXPECT_EQ(info.num_applications, 2U) << "the vendor's and a mouse";
}

TEST_F(VirtualHiddevTest, GivesNameAndPhysAndTheNumberOfBytesCopied) {
  std::array<char, 256> text{};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGNAME(256), text.data()), 13);
  EXPECT_STREQ(text.data(), "Zelkora Echo");
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGPHYS(256), text.data()), 26);
  EXPECT_STREQ(text.data(), kPhys);
}

TEST_F(VirtualHiddevTest, CutsANameThatDoesNotFitWithoutTerminatingIt) {
  std::array<char, 8> text;
  text.fill('#');
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGNAME(7), text.data()), 7);
  EXPECT_EQ(std::string(text.data(), text.size()), "Zelkora#");
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGNAME(0), text.data()), 0);
}

TEST_F(VirtualHiddevTest, GivesItsVersion) {
  int version = 0;
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGVERSION, &version), 0);
  EXPECT_EQ(version, HID_VERSION);
}

TEST_F(VirtualHiddevTest, KeepsItsFlags) {
  int flags = HIDDEV_FLAG_UREF | HIDDEV_FLAG_REPORT;
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCSFLAG, &flags), 0);
  int stored = 0;
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGFLAG, &stored), 0);
  EXPECT_EQ(stored, flags);
  flags = HIDDEV_FLAG_REPORT;
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCSFLAG, &flags), -EINVAL);
}

TEST_F(VirtualHiddevTest, DescribesReportsAndFields) {
  hiddev_report_info report{HID_REPORT_TYPE_FEATURE, 7, 99};
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGREPORTINFO, &report), 0);
  EXPECT_EQ(report.num_fields, 1U);

  hiddev_field_info field{};
  field.report_type = HID_REPORT_TYPE_FEATURE;
  field.report_id = 7;
  field.unit = 99;
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGFIELDINFO, &field), 0);
  EXPECT_EQ(field.report_id, 7U);
  EXPECT_EQ(field.maxusage, 2U);
  EXPECT_EQ(field.flags, static_cast<unsigned>(HID_FIELD_VARIABLE));
  EXPECT_EQ(field.logical_minimum, -128);
  EXPECT_EQ(field.logical_maximum, 127);
  EXPECT_EQ(field.unit, 0U);
}

TEST_F(VirtualHiddevTest, WalksReportsFromTheFirstToTheNext) {
  hiddev_report_info report{HID_REPORT_TYPE_FEATURE, HID_REPORT_ID_FIRST, 0};
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGREPORTINFO, &report), 0);
  EXPECT_EQ(report.report_id, 1U);
  report.report_id |= HID_REPORT_ID_NEXT;
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGREPORTINFO, &report), 0);
  EXPECT_EQ(report.report_id, 7U);
  report.report_id |= HID_REPORT_ID_NEXT;
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGREPORTINFO, &report), -EINVAL);
}

TEST_F(VirtualHiddevTest, GivesUsageCodesOfTheVendorPage) {
  hiddev_usage_ref usage{HID_REPORT_TYPE_FEATURE, 1, 0, 3, 0, 0};
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGUCODE, &usage), 0);
  EXPECT_EQ(usage.usage_code, 0xFF000004U);
}

TEST_F(VirtualHiddevTest, FindsAUsageByItsCodeAlone) {
  set_usage(1, 42);
  hiddev_usage_ref usage{HID_REPORT_TYPE_FEATURE, HID_REPORT_ID_UNKNOWN, 9, 9, 0xFF000002, 0};
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGUSAGE, &usage), 0);
  EXPECT_EQ(usage.value, 42);
  EXPECT_EQ(usage.report_id, 1U);
  EXPECT_EQ(usage.usage_index, 1U);
  usage = {HID_REPORT_TYPE_FEATURE, HID_REPORT_ID_UNKNOWN, 0, 0, 0xFF000005, 0};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGUSAGE, &usage), -EINVAL);
}

TEST_F(VirtualHiddevTest, RefusesWhatTheDeviceDoesNotHave) {
  struct {
    const char* what;
    hiddev_usage_ref usage;
  } const kCases[] = {
      {"report id", {HID_REPORT_TYPE_FEATURE, 2, 0, 0, 0, 0}},
      {"input report", {HID_REPORT_TYPE_INPUT, 1, 0, 0, 0, 0}},
      {"report type", {4, 1, 0, 0, 0, 0}},
      {"field", {HID_REPORT_TYPE_FEATURE, 1, 1, 0, 0, 0}},
      {"usage", {HID_REPORT_TYPE_FEATURE, 1, 0, 4, 0, 0}},
  };
  for (const auto& [what, usage] : kCases) {
    for (const unsigned long request : {HIDIOCGUCODE, HIDIOCGUSAGE, HIDIOCSUSAGE}) {
      hiddev_usage_ref copy = usage;
      EXPECT_EQ(kernel_.ioctl(hiddev_, request, &copy), -EINVAL) << what;
    }
  }
  for (const unsigned long request : {HIDIOCGREPORTINFO, HIDIOCGREPORT, HIDIOCSREPORT})
    EXPECT_EQ(report_request(request, 2), -EINVAL);
  hiddev_field_info field{};
  field.report_type = HID_REPORT_TYPE_FEATURE;
  field.report_id = 1;
  field.field_index = 1;
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGFIELDINFO, &field), -EINVAL);
}

TEST_F(VirtualHiddevTest, FillsInTheLastUsageForTheFieldsNumber) {
  hiddev_field_info field{};
  field.report_type = HID_REPORT_TYPE_FEATURE;
  field.report_id = 1;
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGFIELDINFO, &field), 0);
  EXPECT_EQ(field.field_index, 3U);
}

TEST_F(VirtualHiddevTest, LeavesTheNameOfAReportAsItWasAsked) {
  hiddev_usage_ref usage{HID_REPORT_TYPE_FEATURE, HID_REPORT_ID_FIRST, 0, 1, 0, 0};
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGUSAGE, &usage), 0);
  EXPECT_EQ(usage.report_id, unsigned{HID_REPORT_ID_FIRST});
}

TEST_F(VirtualHiddevTest, IsAMouseAsWell) {
  hiddev_report_info info{HID_REPORT_TYPE_INPUT, HID_REPORT_ID_FIRST, 0};
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGREPORTINFO, &info), 0);
  EXPECT_EQ(info.report_id, 2U);
  EXPECT_EQ(info.num_fields, 2U);
  hiddev_usage_ref axis{HID_REPORT_TYPE_INPUT, 2, 1, 1, 0, 0};
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGUCODE, &axis), 0);
  EXPECT_EQ(axis.usage_code, 0x10031U);
  hiddev_usage_ref button{HID_REPORT_TYPE_INPUT, HID_REPORT_ID_UNKNOWN, 9, 9, 0x90003, 7};
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGUSAGE, &button), 0);
  EXPECT_EQ(button.report_id, 2U);
  EXPECT_EQ(button.field_index, 0U);
  EXPECT_EQ(button.usage_index, 2U);
  EXPECT_EQ(button.value, 0);
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCSUSAGE, &axis), -EINVAL);
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGREPORT, &info), 0);
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCSREPORT, &info), -EINVAL);
}

TEST_F(VirtualHiddevTest, TellsItsCollections) {
  constexpr hiddev_collection_info kCollections[] = {
      {0, 1, 0xFF000001, 0}, {1, 1, 0x10002, 0}, {2, 0, 0x10001, 1}};
  for (const hiddev_collection_info& expected : kCollections) {
    hiddev_collection_info told{expected.index, 7, 7, 7};
    ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCGCOLLECTIONINFO, &told), 0);
    EXPECT_EQ(told.type, expected.type);
    EXPECT_EQ(told.usage, expected.usage);
    EXPECT_EQ(told.level, expected.level);
  }
  hiddev_collection_info none{3, 0, 0, 0};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGCOLLECTIONINFO, &none), -EINVAL);
  hiddev_usage_ref usage{HID_REPORT_TYPE_FEATURE, 1, 0, 3, 0, 0};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGCOLLECTIONINDEX, &usage), 0);
}

TEST_F(VirtualHiddevTest, TellsItsApplicationsAsResults) {
  const auto application = [this](uintptr_t index) {
    return kernel_.ioctl(hiddev_, HIDIOCAPPLICATION, std::bit_cast<void*>(index));
  };
  EXPECT_EQ(static_cast<unsigned>(application(0)), 0xFF000001U);
  EXPECT_EQ(application(1), 0x10002);
  EXPECT_EQ(application(2), -EINVAL);
  EXPECT_EQ(trace_[0], "ioctl HIDIOCAPPLICATION");  // a negative result, and no failure
}

TEST_F(VirtualHiddevTest, TellsTheStringsOfTheDevice) {
  hiddev_string_descriptor text{1, {}};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGSTRING, &text), 7);
  EXPECT_STREQ(text.value, "Zelkora");
  text.index = 2;
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGSTRING, &text), 4);
  EXPECT_STREQ(text.value, "Echo");
  for (const int index : {0, 3, -1}) {
    text.index = index;
    EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGSTRING, &text), -EINVAL) << index;
  }
}

TEST_F(VirtualHiddevTest, MovesManyValuesAtOnce) {
  const auto many = std::make_unique<hiddev_usage_ref_multi>();
  *many = {{HID_REPORT_TYPE_FEATURE, 1, 0, 1, 0, 0}, 3, {11, 12, 13}};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCSUSAGES, many.get()), 0);
  EXPECT_EQ(usage(0), 0);
  EXPECT_EQ(usage(3), 13);
  *many = {{HID_REPORT_TYPE_FEATURE, HID_REPORT_ID_UNKNOWN, 0, 0, 0xFF000003, 0}, 2, {}};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGUSAGES, many.get()), 0);
  EXPECT_EQ(many->uref.usage_index, 2U);
  EXPECT_EQ(many->values[0], 12);
  EXPECT_EQ(many->values[1], 13);
  many->num_values = 3;  // one more than there are from there on
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGUSAGES, many.get()), -EINVAL);
}

TEST_F(VirtualHiddevTest, EachOpenHasFlagsOfItsOwn) {
  const int other = kernel_.open(kHiddev, O_RDWR);
  int flags = HIDDEV_FLAG_UREF;
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCSFLAG, &flags), 0);
  ASSERT_EQ(kernel_.ioctl(other, HIDIOCGFLAG, &flags), 0);
  EXPECT_EQ(flags, 0);
}

TEST_F(VirtualHiddevTest, TellsOfReportsToThoseWhoAskForThat) {
  std::array<hiddev_usage_ref, 2> events{};
  const auto read_events = [&](size_t size) {
    return kernel_.read(hiddev_, std::span(reinterpret_cast<uint8_t*>(events.data()), size));
  };
  report_request(HIDIOCGREPORT);
  EXPECT_EQ(read_events(sizeof events), -EAGAIN);
  int flags = HIDDEV_FLAG_UREF | HIDDEV_FLAG_REPORT;
  ASSERT_EQ(kernel_.ioctl(hiddev_, HIDIOCSFLAG, &flags), 0);
  EXPECT_EQ(kernel_.poll(hiddev_), 0);
  report_request(HIDIOCGREPORT, 7);
  EXPECT_EQ(kernel_.poll(hiddev_), POLLIN | POLLRDNORM | POLLOUT);
  EXPECT_EQ(read_events(sizeof events[0] - 1), 0);  // no room for one
  EXPECT_EQ(read_events(sizeof events), static_cast<ssize_t>(sizeof events[0]));
  EXPECT_EQ(events[0].report_type, unsigned{HID_REPORT_TYPE_FEATURE});
  EXPECT_EQ(events[0].report_id, 7U);
  EXPECT_EQ(events[0].field_index, unsigned{HID_FIELD_INDEX_NONE});
  EXPECT_EQ(read_events(sizeof events), -EAGAIN);
}

TEST_F(VirtualHiddevTest, UnsignedFieldsKeepTheLowByteOfEitherExtension) {
  set_usage(0, 0x80);
  set_usage(1, -128);
  set_usage(2, 0x7F);
  set_usage(3, -1);
  ASSERT_EQ(report_request(HIDIOCSREPORT), 0);
  EXPECT_EQ(device_.received, (Bytes{0x80, 0x80, 0x7F, 0xFF}));
}

TEST_F(VirtualHiddevTest, SignedFieldsSaturate) {
  set_usage(0, 0x80, 7);
  set_usage(1, -129, 7);
  ASSERT_EQ(report_request(HIDIOCSREPORT, 7), 0);
  EXPECT_EQ(device_.received, (Bytes{0x7F, 0x80}));
  set_usage(0, 127, 7);
  set_usage(1, -128, 7);
  ASSERT_EQ(report_request(HIDIOCSREPORT, 7), 0);
  EXPECT_EQ(device_.received, (Bytes{0x7F, 0x80}));
}

TEST_F(VirtualHiddevTest, UsagesReadAsUnsignedOrNegativeByTheFieldsRange) {
  device_.answer = {0x80, 0xFF, 0x7F, 0x00};
  ASSERT_EQ(report_request(HIDIOCGREPORT), 0);
  EXPECT_EQ(usage(0), 0x80);
  EXPECT_EQ(usage(1), 0xFF);
  ASSERT_EQ(report_request(HIDIOCGREPORT, 7), 0);
  EXPECT_EQ(usage(0, 7), -128);
  EXPECT_EQ(usage(1, 7), -1);
}

TEST_F(VirtualHiddevTest, AShortReportFillsTheFieldUpWithZeros) {
  device_.answer = {1, 2, 3, 4};
  report_request(HIDIOCGREPORT);
  device_.answer = {9};
  report_request(HIDIOCGREPORT);
  EXPECT_EQ(usage(0), 9);
  EXPECT_EQ(usage(3), 0);
}

TEST_F(VirtualHiddevTest, HidesStallsAndKeepsTheOldValues) {
  set_usage(0, 42);
  device_.stalls = true;
  EXPECT_EQ(report_request(HIDIOCSREPORT), 0);
  EXPECT_EQ(report_request(HIDIOCGREPORT), 0);
  EXPECT_EQ(usage(0), 42);
}

TEST_F(VirtualHiddevTest, KeepsValuesInTheFieldAcrossDescriptors) {
  set_usage(2, 5);
  ASSERT_EQ(kernel_.close(hiddev_), 0);
  hiddev_ = kernel_.open(kHiddev, O_RDONLY);
  EXPECT_EQ(usage(2), 5);
}

TEST_F(VirtualHiddevTest, ReadsAllReportsOnInitialisation) {
  device_.answer = {1, 2, 3, 4};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCINITREPORT, nullptr), 0);
  EXPECT_EQ(trace_, (Lines{"ioctl HIDIOCINITREPORT", "get_report 1: 01 02 03 04",
                           "get_report 7: 01 02 03 04"}));
  EXPECT_EQ(usage(3), 4);
}

TEST_F(VirtualHiddevTest, InitialisesBeforeTheFirstUsageRequest) {
  device_.answer = {1, 2, 3, 4};
  EXPECT_EQ(usage(3), 4);
  device_.answer = {9, 9, 9, 9};
  EXPECT_EQ(usage(3), 4);
}

TEST_F(VirtualHiddevTest, RefusesRequestsOfHidrawAndOthers) {
  std::array<uint8_t, 64> buffer{};
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCSFEATURE(64), buffer.data()), -EINVAL);
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGRAWINFO, buffer.data()), -EINVAL);
  EXPECT_EQ(kernel_.ioctl(hiddev_, TCGETS, buffer.data()), -EINVAL);
}

TEST_F(VirtualHiddevTest, RefusesAMissingArgument) {
  EXPECT_EQ(kernel_.ioctl(hiddev_, HIDIOCGDEVINFO, nullptr), -EFAULT);
  EXPECT_EQ(kernel_.ioctl(hidraw_, HIDIOCGFEATURE(4), nullptr), -EFAULT);
  EXPECT_EQ(kernel_.ioctl(event_, EVIOCGID, nullptr), -EFAULT);
}

}  // namespace
