// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>

#include "fake_hid.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::joined;
using zelkora::test::Lines;
using zelkora::test::padded;
using zelkora::test::rising;
using zelkora::test::usages_read;
using zelkora::test::usages_set;
using ReportTest = zelkora::test::TransportBench;

// A command of that many bytes, for report 6.
Bytes command(size_t length) {
  Bytes bytes = rising(length);
  if (!bytes.empty()) bytes[0] = 6;
  return bytes;
}

Bytes without_id(const Bytes& bytes, size_t room) {
  if (bytes.empty()) return Bytes(room, 0);
  return padded(Bytes(bytes.begin() + 1, bytes.end()), room);
}

TEST_F(ReportTest, HidrawAlwaysSends64Bytes) {
  HidRaw = 1;
  open_node(kHidraw);
  for (const unsigned length : {0U, 1U, 2U, 10U, 63U, 64U, 65U, 256U, 512U}) {
    SCOPED_TRACE(length);
    clear_trace();
    Bytes bytes = command(length);
    bytes.reserve(1);
    EXPECT_EQ(SendDataNew(bytes.data(), length), 1);
    EXPECT_EQ(trace_of({"ioctl", "usleep"}), (Lines{"ioctl HIDIOCSFEATURE 64"}));
    EXPECT_EQ(device.received.back().first, length == 0 ? 0 : 6);
    EXPECT_EQ(device.received.back().second, without_id(bytes, 63));
  }
}

TEST_F(ReportTest, CommandsLongerThanTheBufferAreCut) {
  const Bytes bytes = command(512);
  HidRaw = 1;
  open_node(kHidraw);
  EXPECT_EQ(SendDataNew(bytes.data(), 600), 1);
  EXPECT_EQ(device.received.back().second, without_id(bytes, 63));
  CloseTouchDevice(0);

  HidRaw = 0;
  open_node(kHiddev);
  EXPECT_EQ(SendDataNew(bytes.data(), 0xFFFFFFFF), 1);
  EXPECT_EQ(device.received.back().second, without_id(bytes, 63));
}

TEST_F(ReportTest, AFailedHidrawSendIsAFailure) {
  HidRaw = 1;
  open_node(kHidraw);
  device.stalls = true;
  EXPECT_EQ(SendDataNew(command(10).data(), 10), 0);
}

TEST_F(ReportTest, HiddevPreparesTheReportAndSendsThePayload) {
  open_node(kHiddev);
  const Bytes bytes = {7, 0x11, 0x80, 0xFF};
  EXPECT_EQ(SendDataNew(bytes.data(), 4), 1);
  std::vector<int> values(63);
  std::ranges::copy(std::vector{0x11, 0x80, 0xFF}, values.begin());
  EXPECT_EQ(
      trace(),
      joined({{"ioctl HIDIOCGREPORTINFO type=3 id=7", "ioctl HIDIOCGFIELDINFO type=3 id=7 field=0"},
              usages_set(7, values),
              {"ioctl HIDIOCSREPORT type=3 id=7", "set_report 7: 11 80 FF", "usleep 50000"}}));
}

TEST_F(ReportTest, HiddevFillsAShortCommandUpWithZerosAndCutsALongOne) {
  open_node(kHiddev);
  for (const unsigned length : {1U, 10U, 64U, 65U, 512U}) {
    SCOPED_TRACE(length);
    const Bytes bytes = command(length);
    EXPECT_EQ(SendDataNew(bytes.data(), length), 1);
    EXPECT_EQ(device.received.back(), std::pair(uint8_t{6}, without_id(bytes, 63)));
  }
}

TEST_F(ReportTest, HiddevSends64BytesWhereTheReportHasThem) {
  device.reports = {{6, 64}};
  open_node(kHiddev);
  const Bytes bytes = command(65);
  EXPECT_EQ(SendDataNew(bytes.data(), 65), 1);
  EXPECT_EQ(device.received.back().second, without_id(bytes, 64));
}

TEST_F(ReportTest, HiddevSendsNothingWhenTheReportCannotBePrepared) {
  open_node(kHiddev);
  const Bytes unknown = {9, 1, 2, 3};
  EXPECT_EQ(SendDataNew(unknown.data(), 4), 0);
  EXPECT_EQ(trace(), (Lines{"ioctl HIDIOCGREPORTINFO type=3 id=9 -> EINVAL"}));
  EXPECT_TRUE(device.received.empty());
}

TEST_F(ReportTest, HiddevSendsNothingOfAnEmptyCommand) {
  open_node(kHiddev);
  const Bytes bytes = command(1);
  EXPECT_EQ(SendDataNew(bytes.data(), 0), 0);
  EXPECT_EQ(trace(), Lines());
}

TEST_F(ReportTest, AFailedHiddevSendIsAFailure) {
  open_node(kHiddev);
  kernel.fail_ioctl(kHiddev, HIDIOCSREPORT, EIO, 1);
  EXPECT_EQ(SendDataNew(command(10).data(), 10), 0);
  EXPECT_EQ(count_of("usleep"), 0U);
}

TEST_F(ReportTest, OnlyAHidRawOfOneMeansHidraw) {
  open_node(kHiddev);
  device.answers[6] = rising(63);
  constexpr unsigned char kOthers[] = {0, 2, 255};
  for (const unsigned char value : kOthers) {
    SCOPED_TRACE(int{value});
    clear_trace();
    HidRaw = value;
    Bytes out(63);
    EXPECT_EQ(SendDataNew(command(10).data(), 10), 1);
    EXPECT_EQ(ReceiveDataNew(6, out.data(), 64), 63);
    EXPECT_EQ(count_of("ioctl HIDIOCSFEATURE"), 0U);
    EXPECT_EQ(count_of("ioctl HIDIOCGFEATURE"), 0U);
  }
}

// The kernel's count includes the report id; what comes out holds one byte fewer.
TEST_F(ReportTest, HidrawReceivesTheKernelsCount) {
  HidRaw = 1;
  open_node(kHidraw);
  device.answers[6] = rising(63);
  Bytes out(64, 0xEE);
  EXPECT_EQ(ReceiveDataNew(6, out.data(), 64), 64);
  Bytes expected = rising(63);
  expected.push_back(0xEE);
  EXPECT_EQ(out, expected);
  EXPECT_EQ(trace_of({"ioctl", "usleep"}), (Lines{"ioctl HIDIOCGFEATURE 64"}));
  EXPECT_EQ(ReceiveDataNew(9, out.data(), 64), 0);
}

TEST_F(ReportTest, HidrawReceivesAsManyBytesAsItIsAskedFor) {
  const struct {
    unsigned length;
    int count;
  } kRows[] = {{0, 0}, {1, 0}, {2, 2}, {10, 10}, {64, 64}, {256, 64}, {512, 64}, {600, 64}};
  HidRaw = 1;
  open_node(kHidraw);
  device.answers[6] = rising(63);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.length);
    const size_t room = row.length < 2 ? 0 : std::min(row.length, 512U) - 1;
    Bytes out(room, 0xEE);
    EXPECT_EQ(ReceiveDataNew(6, out.data(), row.length), row.count);
    EXPECT_EQ(out, padded(padded(rising(63), std::min<size_t>(room, 63)), room));
  }
}

TEST_F(ReportTest, HidrawCountsAreCutToEightBits) {
  const struct {
    size_t payload;
    int count;
  } kRows[] = {{254, 255}, {255, 0}, {256, 1}, {299, 44}, {511, 0}};
  HidRaw = 1;
  open_node(kHidraw);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.payload);
    device.answers[8] = rising(row.payload);
    Bytes out(511);
    EXPECT_EQ(ReceiveDataNew(8, out.data(), 512), row.count);
    EXPECT_EQ(out, padded(rising(row.payload), 511));
  }
}

TEST_F(ReportTest, HiddevReceivesTheWholePayloadWhateverTheLength) {
  open_node(kHiddev);
  device.answers[8] = rising(63);
  for (const unsigned length : {0U, 1U, 10U, 64U, 600U}) {
    SCOPED_TRACE(length);
    clear_trace();
    Bytes out(64, 0xEE);
    EXPECT_EQ(ReceiveDataNew(8, out.data(), length), 63);
    Bytes expected = rising(63);
    expected.push_back(0xEE);
    EXPECT_EQ(out, expected);
    EXPECT_EQ(trace_of({"ioctl"}), joined({{"ioctl HIDIOCGREPORTINFO type=3 id=8",
                                            "ioctl HIDIOCGFIELDINFO type=3 id=8 field=0",
                                            "ioctl HIDIOCGREPORT type=3 id=8"},
                                           usages_read(8, 63)}));
  }
}

TEST_F(ReportTest, HiddevReceivesNothingWhenTheReportCannotBePrepared) {
  open_node(kHiddev);
  Bytes out(63, 0xEE);
  EXPECT_EQ(ReceiveDataNew(9, out.data(), 64), 0);
  kernel.fail_ioctl(kHiddev, HIDIOCGFIELDINFO, EIO, 1);
  EXPECT_EQ(ReceiveDataNew(6, out.data(), 64), 0);
  EXPECT_EQ(out, Bytes(63, 0xEE));
  EXPECT_EQ(count_of("ioctl HIDIOCGREPORT"), 0U);
}

}  // namespace
