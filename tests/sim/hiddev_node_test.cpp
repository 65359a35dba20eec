// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <linux/hidraw.h>
#include <linux/input.h>

#include <array>
#include <cerrno>

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
