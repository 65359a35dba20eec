// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <linux/hidraw.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>

#include "fake_hid.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::Lines;
using zelkora::test::rising;
using HidrawTest = zelkora::test::TransportBench;

// A report with its id in front.
Bytes with_id(uint8_t id, Bytes payload) {
  payload.insert(payload.begin(), id);
  return payload;
}

TEST_F(HidrawTest, SendsAsManyBytesAsItIsTold) {
  open_node(kHidraw);
  for (const unsigned length : {2U, 10U, 64U, 256U, 512U}) {
    SCOPED_TRACE(length);
    clear_trace();
    const Bytes payload = rising(length - 1);
    EXPECT_EQ(HidRaw_Set_Feature(with_id(6, payload).data(), length), 1U);
    EXPECT_EQ(trace_of({"ioctl", "usleep"}),
              (Lines{"ioctl HIDIOCSFEATURE " + std::to_string(length)}));
    EXPECT_EQ(device.received.back(), std::pair(uint8_t{6}, payload));
  }
}

TEST_F(HidrawTest, SendsAtMost512Bytes) {
  open_node(kHidraw);
  for (const unsigned length : {513U, 600U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(length);
    clear_trace();
    const Bytes payload = rising(511);
    EXPECT_EQ(HidRaw_Set_Feature(with_id(6, payload).data(), length), 1U);
    EXPECT_EQ(trace_of({"ioctl"}), (Lines{"ioctl HIDIOCSFEATURE 512"}));
    EXPECT_EQ(device.received.back().second, payload);
  }
}

TEST_F(HidrawTest, ReportsTooShortForTheKernelFail) {
  open_node(kHidraw);
  const Bytes bytes = {6};
  EXPECT_EQ(HidRaw_Set_Feature(bytes.data(), 0), 0U);
  EXPECT_EQ(HidRaw_Set_Feature(bytes.data(), 1), 0U);
  EXPECT_EQ(trace(),
            (Lines{"ioctl HIDIOCSFEATURE 0 -> EINVAL", "ioctl HIDIOCSFEATURE 1 -> EINVAL"}));
  EXPECT_TRUE(device.received.empty());
}

TEST_F(HidrawTest, AFailedSendIsAnErrorTextWhileTheDebugSwitchIsOne) {
  open_node(kHidraw);
  device.stalls = true;
  const Bytes bytes = with_id(6, rising(63));
  for (const int debug : {0, 1, 2}) {
    SCOPED_TRACE(debug);
    clear_trace();
    DbgFlag = debug;
    EXPECT_EQ(HidRaw_Set_Feature(bytes.data(), 64), 0U);
    EXPECT_EQ(trace_of({"ioctl"}), (Lines{"ioctl HIDIOCSFEATURE 64 -> EPIPE"}));
    EXPECT_EQ(trace_of({"perror"}), debug == 1 ? Lines{"perror HIDIOCSFEATURE"} : Lines());
    EXPECT_EQ(count_of("usleep"), 0U);
  }
}

TEST_F(HidrawTest, OnlyNegativeResultsAreFailures) {
  DbgFlag = 1;
  open_node(kHidraw);
  const Bytes bytes = with_id(6, rising(63));
  kernel.fail_ioctl(kHidraw, HIDIOCSFEATURE(0), 0, 1);
  EXPECT_EQ(HidRaw_Set_Feature(bytes.data(), 64), 1U);
  kernel.fail_ioctl(kHidraw, HIDIOCGFEATURE(0), 0, 1);
  Bytes out(63, 0xEE);
  EXPECT_EQ(HidRaw_Get_Feature(6, out.data(), 64), 0U);
  EXPECT_EQ(out, Bytes(63, 0));
  // There is no byte to copy then, and none is.
  kernel.fail_ioctl(kHidraw, HIDIOCGFEATURE(0), 0, 1);
  uint8_t untouched = 0xEE;
  EXPECT_EQ(HidRaw_Get_Feature(6, &untouched, 0), 0U);
  EXPECT_EQ(untouched, 0xEE);
  EXPECT_EQ(count_of("perror"), 0U);

  const int open = fd;
  fd = -1;
  EXPECT_EQ(HidRaw_Set_Feature(bytes.data(), 64), 0U);
  EXPECT_EQ(HidRaw_Get_Feature(6, out.data(), 64), 0U);
  EXPECT_EQ(trace_of({"perror"}), (Lines{"perror HIDIOCSFEATURE", "perror HIDIOCGFEATURE"}));
  fd = open;
}

// The report id is asked for in byte 0 and dropped from the answer; the count includes it.
TEST_F(HidrawTest, GetsThePayloadWithoutTheReportId) {
  const struct {
    unsigned length;
    unsigned count;
  } kRows[] = {{2, 2}, {10, 10}, {63, 63}, {64, 64}, {65, 64}, {256, 64}, {512, 64}};
  open_node(kHidraw);
  device.answers[7] = rising(63);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.length);
    clear_trace();
    // Bytes behind the answer come out as zeros; nothing is written behind length - 1.
    Bytes expected = rising(63);
    expected.resize(row.length - 1);
    expected.push_back(0xEE);
    Bytes out(row.length, 0xEE);
    EXPECT_EQ(HidRaw_Get_Feature(7, out.data(), row.length), row.count);
    EXPECT_EQ(out, expected);
    EXPECT_EQ(trace_of({"ioctl", "usleep"}),
              (Lines{"ioctl HIDIOCGFEATURE " + std::to_string(row.length)}));
  }
}

TEST_F(HidrawTest, GetsAtMost512Bytes) {
  open_node(kHidraw);
  device.answers[7] = rising(600);
  for (const unsigned length : {512U, 513U, 600U, 0xFFFFFFFFU}) {
    SCOPED_TRACE(length);
    clear_trace();
    Bytes out(511, 0xEE);
    EXPECT_EQ(HidRaw_Get_Feature(7, out.data(), length), 512U);
    EXPECT_EQ(out, rising(511));
    EXPECT_EQ(trace_of({"ioctl"}), (Lines{"ioctl HIDIOCGFEATURE 512"}));
  }
}

TEST_F(HidrawTest, LengthsTooShortForTheKernelYieldNothing) {
  open_node(kHidraw);
  device.answers[7] = rising(63);
  uint8_t out = 0xEE;
  EXPECT_EQ(HidRaw_Get_Feature(7, &out, 0), 0U);
  EXPECT_EQ(HidRaw_Get_Feature(7, &out, 1), 0U);
  EXPECT_EQ(out, 0xEE);
}

TEST_F(HidrawTest, AFailedGetIsAnErrorTextWhileTheDebugSwitchIsOne) {
  open_node(kHidraw);
  for (const int debug : {0, 1, 2}) {
    SCOPED_TRACE(debug);
    clear_trace();
    DbgFlag = debug;
    Bytes out(63, 0xEE);
    EXPECT_EQ(HidRaw_Get_Feature(7, out.data(), 64), 0U);
    EXPECT_EQ(out, Bytes(63, 0xEE));
    EXPECT_EQ(trace_of({"ioctl"}), (Lines{"ioctl HIDIOCGFEATURE 64 -> EPIPE"}));
    EXPECT_EQ(trace_of({"perror"}), debug == 1 ? Lines{"perror HIDIOCGFEATURE"} : Lines());
  }
}

}  // namespace
