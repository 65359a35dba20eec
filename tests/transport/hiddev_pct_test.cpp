// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The hiddev reports of projected-capacitive controllers: any report id, bytes unframed.
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>

#include "fake_hid.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::joined;
using zelkora::test::Lines;
using zelkora::test::padded;
using zelkora::test::rising;
using zelkora::test::TransportBench;
using zelkora::test::usages_read;
using zelkora::test::usages_set;

using HiddevPctTest = TransportBench;

constexpr struct {
  unsigned stated;
  size_t used;
} kUsageCounts[] = {{0, 0}, {8, 8}, {63, 63}, {64, 64}, {65, 64}, {4096, 64}};

TEST_F(HiddevPctTest, PreparingNamesTheReportAndLeavesItUninitialised) {
  open_node(kHiddev);
  for (const unsigned id : {6U, 7U, 8U}) {
    SCOPED_TRACE(id);
    clear_trace();
    std::memset(&field, 0xEE, sizeof field);
    std::memset(&uref, 0xEE, sizeof uref);
    const std::string number = std::to_string(id);
    EXPECT_EQ(init_Pct_Hiddev(id), 1U);
    EXPECT_EQ(trace(), (Lines{"ioctl HIDIOCGREPORTINFO type=3 id=" + number,
                              "ioctl HIDIOCGFIELDINFO type=3 id=" + number + " field=0"}));
    EXPECT_EQ(report.report_type, 3U);
    EXPECT_EQ(report.report_id, id);
    EXPECT_EQ(field.report_type, 3U);
    EXPECT_EQ(field.report_id, id);
    EXPECT_EQ(field.field_index, 62U);  // as the kernel fills it in: the last usage
    EXPECT_EQ(field.maxusage, 63U);
    EXPECT_EQ(uref.report_type, 3U);
    EXPECT_EQ(uref.report_id, id);
    EXPECT_EQ(uref.field_index, 0U);
  }
}

TEST_F(HiddevPctTest, PreparingNeedsADescriptor) {
  DbgFlag = 1;
  fd = -1;
  EXPECT_EQ(init_Pct_Hiddev(6), 0U);
  EXPECT_EQ(trace(), Lines());
}

TEST_F(HiddevPctTest, PreparingStopsAtAFailedRequestAndSaysSoWhileDebugging) {
  const struct {
    unsigned long request;
    Lines made;
    const char* error;
  } kRows[] = {
      {HIDIOCGREPORTINFO,
       {"ioctl HIDIOCGREPORTINFO type=3 id=6 -> EINVAL"},
       "perror init : HIDIOCGREPORTINFO"},
      {HIDIOCGFIELDINFO,
       {"ioctl HIDIOCGREPORTINFO type=3 id=6",
        "ioctl HIDIOCGFIELDINFO type=3 id=6 field=0 -> EINVAL"},
       "perror init : HIDIOCGFIELDINFO"},
  };
  open_node(kHiddev);
  for (const auto& row : kRows) {
    for (const int debug : {0, 1, 2}) {
      SCOPED_TRACE(testing::Message() << row.error << " at " << debug);
      clear_trace();
      DbgFlag = debug;
      kernel.fail_ioctl(kHiddev, row.request, EINVAL, 1);
      EXPECT_EQ(init_Pct_Hiddev(6), 0U);
      EXPECT_EQ(trace(), debug == 0 ? row.made : joined({row.made, {row.error}}));
    }
  }
}

TEST_F(HiddevPctTest, PreparingAReportThatTheDeviceDoesNotHaveFails) {
  open_node(kHiddev);
  EXPECT_EQ(init_Pct_Hiddev(9), 0U);
  EXPECT_EQ(init_Pct_Hiddev(0), 0U);
  EXPECT_EQ(init_Pct_Hiddev(0xFFFFFFFF), 0U);
}

TEST_F(HiddevPctTest, SendingPutsOneByteInEachUsageUnframedAndUnsigned) {
  open_hiddev(8, 6);
  const Bytes data = {0x00, 0x01, 0x7F, 0x80, 0x81, 0xFE, 0xFF, 0x40};
  EXPECT_EQ(SendDataPct(data.data()), 1U);
  EXPECT_EQ(trace(), joined({usages_set(6, {0, 1, 127, 128, 129, 254, 255, 64}),
                             {"ioctl HIDIOCSREPORT type=3 id=6",
                              "set_report 6: 00 01 7F 80 81 FE FF 40", "usleep 50000"}}));
}

TEST_F(HiddevPctTest, SendingTakesAsManyBytesAsTheReportHasUsagesAndAtMost64) {
  for (const auto& row : kUsageCounts) {
    SCOPED_TRACE(row.stated);
    open_hiddev(row.stated, 7);
    const Bytes data = rising(row.used);
    EXPECT_EQ(SendDataPct(data.data()), 1U);
    EXPECT_EQ(count_of("ioctl HIDIOCSUSAGE"), row.used);
    EXPECT_EQ(device.received.back().second, padded(data, row.stated));
    CloseTouchDevice(0);
  }
}

TEST_F(HiddevPctTest, UsagesThatCannotBeSetDoNotStopTheReport) {
  open_hiddev(8, 6);
  kernel.fail_ioctl(kHiddev, HIDIOCSUSAGE, EINVAL, 8);
  EXPECT_EQ(SendDataPct(rising(8).data()), 1U);
  EXPECT_EQ(trace_of({"ioctl HIDIOCSREPORT", "usleep"}),
            (Lines{"ioctl HIDIOCSREPORT type=3 id=6", "usleep 50000"}));
}

TEST_F(HiddevPctTest, AReportThatCannotBeSentIsAnErrorTextWhileDebugging) {
  open_hiddev(8, 6);
  for (const int debug : {0, 1, 2}) {
    SCOPED_TRACE(debug);
    clear_trace();
    DbgFlag = debug;
    kernel.fail_ioctl(kHiddev, HIDIOCSREPORT, EIO, 1);
    EXPECT_EQ(SendDataPct(rising(8).data()), 0U);
    EXPECT_EQ(trace_of({"ioctl HIDIOCSREPORT"}), (Lines{"ioctl HIDIOCSREPORT type=3 id=6 -> EIO"}));
    EXPECT_EQ(count_of("usleep"), 0U);
    EXPECT_EQ(messages(), Lines());
    const Lines expected = {"perror Send data to the touch controller\n"};
    EXPECT_EQ(trace_of({"perror"}), debug == 0 ? Lines() : expected);
  }
}

TEST_F(HiddevPctTest, ReceivingReadsEveryUsage) {
  open_hiddev(8, 6);
  device.answers[6] = {0x00, 0x7F, 0x80, 0xFF, 5, 6, 7, 8};
  Bytes out(9, 0xEE);
  EXPECT_EQ(ReceiveDataPct(out.data()), 8U);
  EXPECT_EQ(out, (Bytes{0x00, 0x7F, 0x80, 0xFF, 5, 6, 7, 8, 0xEE}));
  EXPECT_EQ(trace(),
            joined({{"ioctl HIDIOCGREPORT type=3 id=6", "get_report 6: 00 7F 80 FF 05 06 07 08"},
                    usages_read(6, 8)}));
}

TEST_F(HiddevPctTest, ReceivingKeepsTheLowByteOfSignedValues) {
  device.reports = {{6, 4, -128, 127}};
  device.answers[6] = {0x00, 0x7F, 0x80, 0xFF};
  open_node(kHiddev);
  ASSERT_EQ(init_Pct_Hiddev(6), 1U);
  Bytes out(4);
  EXPECT_EQ(ReceiveDataPct(out.data()), 4U);
  EXPECT_EQ(out, device.answers[6]);
}

TEST_F(HiddevPctTest, ReceivingYieldsTheUsageCountAndAtMost64Bytes) {
  for (const auto& row : kUsageCounts) {
    SCOPED_TRACE(row.stated);
    open_hiddev(row.stated, 8);
    device.answers[8] = rising(row.stated);
    Bytes out(row.used + 1, 0xEE);
    EXPECT_EQ(ReceiveDataPct(out.data()), row.used);
    Bytes expected = rising(row.used);
    expected.push_back(0xEE);
    EXPECT_EQ(out, expected);
    EXPECT_EQ(count_of("ioctl HIDIOCGUSAGE"), row.used);
    CloseTouchDevice(0);
  }
}

TEST_F(HiddevPctTest, AReportThatCannotBeFetchedIsWhatTheFieldHeld) {
  open_hiddev(8, 6);
  SendDataPct(rising(8).data());
  kernel.fail_ioctl(kHiddev, HIDIOCGREPORT, EIO, 1);
  Bytes out(8);
  EXPECT_EQ(ReceiveDataPct(out.data()), 8U);
  EXPECT_EQ(out, rising(8));
}

}  // namespace
