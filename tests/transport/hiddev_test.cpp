// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The hiddev reports of resistive controllers: feature report 1, a length byte and the bytes.
#include <sys/ioctl.h>

#include <algorithm>
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

class HiddevTest : public TransportBench {
 protected:
  // What reached the device with the last report sent.
  Bytes last_received() const {
    return device.received.empty() ? Bytes() : device.received.back().second;
  }
};

const Bytes kQuery = {0x01, 'G', 'P', '5', '4', 0x0D};

TEST_F(HiddevTest, PreparingNamesFeatureReportOneAndItsFieldZero) {
  open_node(kHiddev);
  std::memset(&report, 0xEE, sizeof report);
  std::memset(&field, 0xEE, sizeof field);
  std::memset(&uref, 0xEE, sizeof uref);
  EXPECT_EQ(init_Hiddev(), 1U);
  EXPECT_EQ(trace_of({"ioctl"}),
            (Lines{"ioctl HIDIOCGREPORTINFO type=3 id=1",
                   "ioctl HIDIOCGFIELDINFO type=3 id=1 field=0", "ioctl HIDIOCINITREPORT"}));
  EXPECT_EQ(report.report_type, 3U);
  EXPECT_EQ(report.report_id, 1U);
  EXPECT_EQ(report.num_fields, 1U);
  EXPECT_EQ(field.report_type, 3U);
  EXPECT_EQ(field.report_id, 1U);
  EXPECT_EQ(field.field_index, 62U);  // as the kernel fills it in: the last usage
  EXPECT_EQ(field.maxusage, 63U);
  EXPECT_EQ(uref.report_type, 3U);
  EXPECT_EQ(uref.report_id, 1U);
  EXPECT_EQ(uref.field_index, 0U);
}

TEST_F(HiddevTest, PreparingNeedsADescriptor) {
  fd = -1;
  EXPECT_EQ(init_Hiddev(), 0U);
  EXPECT_EQ(trace(), Lines());
  EXPECT_EQ(report.report_type, 0U);
}

TEST_F(HiddevTest, ADescriptorOfZeroIsOneToPrepare) {
  DbgFlag = 1;
  EXPECT_EQ(init_Hiddev(), 1U);
  EXPECT_EQ(uref.report_id, 1U);
  // Only the requests fail: that descriptor is no hiddev node.
  EXPECT_EQ(init_Pct_Hiddev(6), 0U);
  EXPECT_EQ(trace(), (Lines{"perror init : HIDIOCGREPORTINFO"}));
}

TEST_F(HiddevTest, PreparingGoesOnAfterAFailedRequest) {
  DbgFlag = 1;
  open_node(kHiddev);
  constexpr unsigned long kRequests[] = {HIDIOCGREPORTINFO, HIDIOCGFIELDINFO, HIDIOCINITREPORT};
  for (const unsigned long request : kRequests) {
    SCOPED_TRACE(request);
    clear_trace();
    kernel.fail_ioctl(kHiddev, request, EINVAL, 1);
    EXPECT_EQ(init_Hiddev(), 1U);
    EXPECT_EQ(count_of("ioctl"), 3U);
    EXPECT_EQ(count_of("perror"), 0U);
    EXPECT_EQ(uref.report_id, 1U);
  }
}

TEST_F(HiddevTest, AnExchangeMakesExactlyTheseRequests) {
  device.answers[1] = {0x06, 0x01, '0', '0', '1', '2', 0x0D};
  open_node(kHiddev);
  init_Hiddev();
  clear_trace();

  EXPECT_EQ(SendData(kQuery.data(), 6), 1U);
  std::vector<int> values(63);
  std::ranges::copy(std::vector{6, 1, 0x47, 0x50, 0x35, 0x34, 0x0D}, values.begin());
  EXPECT_EQ(trace(), joined({{"uname"},
                             usages_set(1, values),
                             {"ioctl HIDIOCSREPORT type=3 id=1",
                              "set_report 1: 06 01 47 50 35 34 0D", "usleep 50000"}}));
  clear_trace();

  Bytes reply(10, 0xEE);
  EXPECT_EQ(ReceiveData(reply.data(), 10), 6U);
  EXPECT_EQ(reply, (Bytes{0x01, '0', '0', '1', '2', 0x0D, 0xEE, 0xEE, 0xEE, 0xEE}));
  EXPECT_EQ(trace(),
            joined({{"ioctl HIDIOCGREPORT type=3 id=1", "get_report 1: 06 01 30 30 31 32 0D"},
                    usages_read(1, 63)}));
}

TEST_F(HiddevTest, TheReportIdLeadsOnKernels2Dot4Only) {
  const struct {
    const char* release;
    Bytes payload;
  } kRows[] = {
      {"2.4.37", {1, 3, 0x01, 'R', 0x0D}},   {"2.4", {1, 3, 0x01, 'R', 0x0D}},
      {"2.40-rc1", {1, 3, 0x01, 'R', 0x0D}}, {"2.6.32", {3, 0x01, 'R', 0x0D}},
      {"6.1.0", {3, 0x01, 'R', 0x0D}},       {"12.4.1", {3, 0x01, 'R', 0x0D}},
      {"2.", {3, 0x01, 'R', 0x0D}},          {"", {3, 0x01, 'R', 0x0D}},
  };
  open_hiddev(63);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.release);
    set_kernel_release(row.release);
    const Bytes reset = {0x01, 'R', 0x0D};
    EXPECT_EQ(SendData(reset.data(), 3), 1U);
    EXPECT_EQ(last_received(), padded(row.payload, 63));
    EXPECT_STREQ(KernelVersion.release, row.release);
  }
}

TEST_F(HiddevTest, TheKernelIsAskedForItsReleaseBeforeEverySend) {
  open_hiddev(63);
  std::memset(&KernelVersion, 0x7F, sizeof KernelVersion);
  SendData(kQuery.data(), 6);
  SendData(kQuery.data(), 6);
  EXPECT_EQ(count_of("uname"), 2U);
  EXPECT_STREQ(KernelVersion.sysname, "Linux");
}

TEST_F(HiddevTest, BytesFrom80GoOutAsNegativeValues) {
  open_hiddev(8);
  const Bytes bytes = {0x00, 0x7F, 0x80, 0x81, 0xFE, 0xFF};
  EXPECT_EQ(SendData(bytes.data(), 6), 1U);
  EXPECT_EQ(trace_of({"ioctl HIDIOCSUSAGE"}), usages_set(1, {6, 0, 127, -128, -127, -2, -1, 0}));
}

TEST_F(HiddevTest, EveryUsageIsOneOfFieldZero) {
  open_hiddev(8);
  device.answers[1] = {1, 2};
  uref.field_index = 5;
  EXPECT_EQ(SendData(kQuery.data(), 6), 1U);
  EXPECT_EQ(trace_of({"ioctl HIDIOCSUSAGE"}), usages_set(1, {6, 1, 'G', 'P', '5', '4', 0x0D, 0}));
  uref.field_index = 5;
  Bytes reply(8);
  EXPECT_EQ(ReceiveData(reply.data(), 8), 1U);
  EXPECT_EQ(trace_of({"ioctl HIDIOCGUCODE", "ioctl HIDIOCGUSAGE"}), usages_read(1, 8));
}

TEST_F(HiddevTest, ByteValuesSurviveSignedAndUnsignedFields) {
  const Bytes bytes = {0x00, 0x7F, 0x80, 0xFF};
  for (const auto& [low, high] : {std::pair(-128, 127), std::pair(0, 255)}) {
    SCOPED_TRACE(low);
    device.reports = {{1, 8, low, high}};
    device.answers[1] = {0x04, 0x00, 0x7F, 0x80, 0xFF};
    open_node(kHiddev);
    init_Hiddev();
    EXPECT_EQ(SendData(bytes.data(), 4), 1U);
    EXPECT_EQ(last_received(), (Bytes{4, 0x00, 0x7F, 0x80, 0xFF, 0, 0, 0}));
    Bytes reply(5, 0xEE);
    EXPECT_EQ(ReceiveData(reply.data(), 5), 4U);
    EXPECT_EQ(reply, (Bytes{0x00, 0x7F, 0x80, 0xFF, 0xEE}));
    CloseTouchDevice(0);
  }
}

TEST_F(HiddevTest, ALongCommandIsCutToTheFrameButKeepsItsLengthByte) {
  const struct {
    const char* release;
    unsigned length;
    Bytes head;
  } kRows[] = {
      {"6.1.0", 63, {63}},          {"6.1.0", 64, {64}},
      {"6.1.0", 200, {200}},        {"6.1.0", 0x80000000, {0}},
      {"6.1.0", 0xFFFFFFFF, {255}}, {"2.4.1", 62, {1, 62}},
      {"2.4.1", 63, {1, 63}},       {"2.4.1", 0xFFFFFFFF, {1, 255}},
  };
  open_hiddev(64);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.length);
    set_kernel_release(row.release);
    // Not a byte more than fits behind the head, so that reading further would be noticed.
    const Bytes data = rising(64 - row.head.size());
    EXPECT_EQ(SendData(data.data(), row.length), 1U);
    Bytes expected = row.head;
    expected.insert(
        expected.end(), data.begin(),
        data.begin() + std::min<unsigned>(row.length, static_cast<unsigned>(data.size())));
    EXPECT_EQ(last_received(), padded(expected, 64));
  }
}

TEST_F(HiddevTest, AnEmptyCommandIsALengthByteOfZero) {
  open_hiddev(8);
  EXPECT_EQ(SendData(kQuery.data(), 0), 1U);
  EXPECT_EQ(last_received(), Bytes(8, 0));
}

// The report carries as many bytes as the device has usages, and never more than a frame holds.
TEST_F(HiddevTest, TheUsageCountIsTheReportsLength) {
  const struct {
    unsigned stated;
    size_t used;
  } kRows[] = {{0, 0}, {1, 1}, {8, 8}, {63, 63}, {64, 64}, {65, 64}, {4096, 64}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.stated);
    open_hiddev(row.stated);
    device.answers[1] = padded({2, 0xAA, 0xBB}, row.stated);
    const Bytes data = rising(63);
    EXPECT_EQ(SendData(data.data(), 63), 1U);
    EXPECT_EQ(count_of("ioctl HIDIOCSUSAGE"), row.used);
    Bytes frame = {63};
    frame.insert(frame.end(), data.begin(), data.end());
    EXPECT_EQ(last_received(), padded(padded(frame, row.used), row.stated));

    clear_trace();
    Bytes reply(64, 0xEE);
    EXPECT_EQ(ReceiveData(reply.data(), 64), row.stated == 0 ? 0U : 2U);
    EXPECT_EQ(trace_of({"ioctl HIDIOCGUCODE", "ioctl HIDIOCGUSAGE"}), usages_read(1, row.used));
    CloseTouchDevice(0);
  }
}

TEST_F(HiddevTest, ANonsenseUsageCountStaysInsideTheFrame) {
  open_hiddev(64);
  field.maxusage = 0xFFFFFFFF;
  EXPECT_EQ(SendData(kQuery.data(), 6), 1U);
  EXPECT_EQ(count_of("ioctl HIDIOCSUSAGE"), 64U);
  Bytes reply(64);
  ReceiveData(reply.data(), 64);
  EXPECT_EQ(count_of("ioctl HIDIOCGUSAGE"), 64U);
}

TEST_F(HiddevTest, UsagesThatCannotBeSetDoNotStopTheReport) {
  open_hiddev(8);
  kernel.fail_ioctl(kHiddev, HIDIOCSUSAGE, EINVAL, 8);
  EXPECT_EQ(SendData(kQuery.data(), 6), 1U);
  EXPECT_EQ(count_of("ioctl HIDIOCSUSAGE"), 8U);
  EXPECT_EQ(trace_of({"ioctl HIDIOCSREPORT", "usleep"}),
            (Lines{"ioctl HIDIOCSREPORT type=3 id=1", "usleep 50000"}));
}

TEST_F(HiddevTest, AReportThatCannotBeSentIsAMessageAndNoWait) {
  open_hiddev(8);
  for (const int debug : {0, 1, 2}) {
    SCOPED_TRACE(debug);
    clear_trace();
    DbgFlag = debug;
    kernel.fail_ioctl(kHiddev, HIDIOCSREPORT, EIO, 1);
    EXPECT_EQ(SendData(kQuery.data(), 6), 0U);
    EXPECT_EQ(count_of("ioctl HIDIOCSREPORT"), 1U);
    EXPECT_EQ(count_of("usleep"), 0U);
    EXPECT_EQ(count_of("perror"), 0U);
    const Lines expected = {
        "zelkora DD:Error (HIDIOCSREPORT) while talking to the touch controller\n"};
    EXPECT_EQ(messages(), debug == 0 ? Lines() : expected);
  }
}

TEST_F(HiddevTest, RepliesAreCutToTheirOwnLengthAndToTheLimit) {
  const struct {
    const char* name;
    Bytes report;
    unsigned limit;
    Bytes reply;
  } kRows[] = {
      {"shorter than the limit", {5, 1, 2, 3, 4, 5, 6}, 10, {1, 2, 3, 4, 5}},
      // The report is read as far as the limit goes, its length byte included.
      {"as long as the limit", {5, 1, 2, 3, 4, 5, 6}, 5, {1, 2, 3, 4, 0}},
      {"longer than the limit", {5, 1, 2, 3, 4, 5, 6}, 3, {1, 2, 0}},
      {"one byte below the limit", {5, 1, 2, 3, 4, 5, 6}, 6, {1, 2, 3, 4, 5}},
      {"limit of one", {5, 1, 2, 3, 4, 5, 6}, 1, {0}},
      {"limit of nothing", {5, 1, 2, 3, 4, 5, 6}, 0, {}},
      {"empty", {0, 1, 2, 3, 4, 5, 6}, 10, {}},
      {"negative", {0x80, 1, 2, 3, 4, 5, 6}, 10, {}},
      {"minus one", {0xFF, 1, 2, 3, 4, 5, 6}, 10, {}},
      {"longer than what the device sent", {9, 1, 2}, 10, {1, 2, 0, 0, 0, 0, 0, 0, 0}},
  };
  open_hiddev(63);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    device.answers[1] = row.report;
    Bytes expected = row.reply;
    expected.resize(80, 0xEE);
    Bytes out(80, 0xEE);
    EXPECT_EQ(ReceiveData(out.data(), row.limit), row.reply.size());
    EXPECT_EQ(out, expected);
  }
}

TEST_F(HiddevTest, ARepliesStatedLengthNeverLeadsPastTheFrame) {
  const struct {
    uint8_t stated;
    unsigned limit;
    size_t count;
  } kRows[] = {{62, 255, 62},         {63, 255, 63}, {64, 255, 63},        {127, 127, 63},
               {127, 0xFFFFFFFF, 63}, {127, 64, 63}, {128, 0xFFFFFFFF, 0}, {127, 62, 62}};
  open_hiddev(64);
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << int{row.stated} << " limit " << row.limit);
    Bytes frame = rising(63);
    frame.insert(frame.begin(), row.stated);
    device.answers[1] = frame;
    Bytes out(row.count + 1, 0xEE);
    EXPECT_EQ(ReceiveData(out.data(), row.limit), row.count);
    Bytes expected = rising(row.count);
    if (row.limit < 64) expected.back() = 0;
    expected.push_back(0xEE);
    EXPECT_EQ(out, expected);
  }
}

TEST_F(HiddevTest, AReplyThatCannotBeFetchedIsWhatTheFieldHeld) {
  open_hiddev(63);
  const Lines sent = {"ioctl HIDIOCGREPORT type=3 id=1 -> EIO"};
  SendData(kQuery.data(), 6);
  clear_trace();
  kernel.fail_ioctl(kHiddev, HIDIOCGREPORT, EIO, 1);
  Bytes reply(10, 0xEE);
  EXPECT_EQ(ReceiveData(reply.data(), 10), 6U);
  EXPECT_EQ(Bytes(reply.begin(), reply.begin() + 6), kQuery);
  EXPECT_EQ(trace_of({"ioctl HIDIOCGREPORT"}), sent);
  EXPECT_EQ(count_of("usleep"), 0U);
}

TEST_F(HiddevTest, OnlyPreparingLooksAtTheDescriptorBeforeItIsUsed) {
  DbgFlag = 1;
  open_hiddev(8);
  const int open = fd;
  fd = -1;
  EXPECT_EQ(SendData(kQuery.data(), 6), 0U);
  EXPECT_EQ(messages().size(), 1U);
  Bytes reply(10, 0xEE);
  EXPECT_EQ(ReceiveData(reply.data(), 10), 0U);
  EXPECT_EQ(SendDataPct(rising(8).data()), 0U);
  EXPECT_EQ(ReceiveDataPct(reply.data()), 8U);
  fd = open;
  EXPECT_EQ(count_of("ioctl"), 0U);
}

TEST_F(HiddevTest, AnUnpluggedControllerAnswersNothing) {
  open_hiddev(63);
  unplug_device();
  EXPECT_EQ(SendData(kQuery.data(), 6), 0U);
  Bytes reply(10, 0xEE);
  EXPECT_EQ(ReceiveData(reply.data(), 10), 0U);
  EXPECT_EQ(reply, Bytes(10, 0xEE));
}

}  // namespace
