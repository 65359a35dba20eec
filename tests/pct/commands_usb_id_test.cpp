// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Reading the USB id: 21 attempts, and the last one counts.
#include "pct_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::debug_messages;
using zelkora::test::joined;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::repeated;
using zelkora::test::rising;
using zelkora::test::Way;
using zelkora::test::way_name;

constexpr unsigned kVid = 0x2575;

Bytes usb_id_reply(unsigned vid, unsigned pid) {
  Bytes reply = rising(63);
  reply[6] = static_cast<uint8_t>(vid);
  reply[7] = static_cast<uint8_t>(vid >> 8);
  reply[8] = static_cast<uint8_t>(pid);
  reply[9] = static_cast<uint8_t>(pid >> 8);
  return reply;
}

class UsbIdTest : public zelkora::test::PctWays {
 protected:
  // The answers of the attempts to come, the first first.
  void script(std::initializer_list<std::pair<int, std::optional<Bytes>>> runs) {
    for (const auto& [count, answer] : runs) {
      for (int i = 0; i < count; ++i) device.script[0xF3].push_back(answer);
    }
  }

  int read_id() { return ReadUSBID(&vid, &pid); }
  // The count that the carrier makes of a whole report.
  int count() const { return GetParam().hidraw ? 64 : 63; }

  unsigned vid = kVid;
  unsigned pid = 0xDEAD;
};
INSTANTIATE_TEST_SUITE_P(Pct, UsbIdTest, testing::ValuesIn(kWays), way_name);

const Bytes kCommand = {0xF3, 0x04, 0x00, 0x02};

TEST_P(UsbIdTest, TheFirstReplyOfTheExpectedVendorEndsIt) {
  open_way();
  device.answers[0xF3] = usb_id_reply(kVid, 0x8753);
  EXPECT_EQ(read_id(), count());
  EXPECT_EQ(vid, kVid);
  EXPECT_EQ(pid, 0x8753U);
  EXPECT_EQ(wire(),
            joined({sent(kCommand), {"usleep 300000"}, received(0xF3, device.answers[0xF3], 512)}));
}

TEST_P(UsbIdTest, AReplyIsShownInEightLines) {
  open_way();
  device.answers[0xF3] = usb_id_reply(kVid, 0x8753);
  read_id();
  EXPECT_EQ(messages(), debug_messages({
                            "=========ReadUSBID==========\n",
                            GetParam().hidraw ? "ReadUSBID RespBuf---start ret:64"
                                              : "ReadUSBID RespBuf---start ret:63",
                            "0x01 0x02 0x03 0x04 0x05 0x06 0x75 0x25\n",
                            "0x53 0x87 0x0b 0x0c 0x0d 0x0e 0x0f 0x10\n",
                            "0x11 0x12 0x13 0x14 0x15 0x16 0x17 0x18\n",
                            "0x19 0x1a 0x1b 0x1c 0x1d 0x1e 0x1f 0x20\n",
                            "0x21 0x22 0x23 0x24 0x25 0x26 0x27 0x28\n",
                            "0x29 0x2a 0x2b 0x2c 0x2d 0x2e 0x2f 0x30\n",
                            "0x31 0x32 0x33 0x34 0x35 0x36 0x37 0x38\n",
                            "0x39 0x3a 0x3b 0x3c 0x3d 0x3e 0x3f 0x00\n",
                            "ReadUSBID RespBuf---End\n",
                        }));
}

TEST_P(UsbIdTest, TwentyOtherVendorsAndThenTheExpectedOne) {
  open_way();
  script({{20, usb_id_reply(0x1111, 0x2222)}, {1, usb_id_reply(kVid, 0x8753)}});
  EXPECT_EQ(read_id(), count());
  EXPECT_EQ(vid, kVid);
  EXPECT_EQ(pid, 0x8753U);
  EXPECT_EQ(trace_of({"set_report", "usleep"}),
            repeated(21, joined({{"set_report 243: 04 00 02"}, settled(), {"usleep 300000"}})));
  EXPECT_EQ(count_of("get_report"), 21U);
}

TEST_P(UsbIdTest, AfterTwentyOneOtherVendorsTheLastReplyIsKept) {
  open_way();
  script({{20, usb_id_reply(0x1111, 0x2222)},
          {1, usb_id_reply(0x3333, 0x4444)},
          {1, usb_id_reply(kVid, 0x8753)}});
  EXPECT_EQ(read_id(), count());
  EXPECT_EQ(vid, 0x3333U);
  EXPECT_EQ(pid, 0x4444U);
  EXPECT_EQ(count_of("usleep 300000"), 21U);
  EXPECT_EQ(count_of("get_report"), 21U);
}

TEST_P(UsbIdTest, TheExpectedVendorIsThatOfTheCallNotThatOfTheLastReply) {
  open_way();
  script({{2, usb_id_reply(0x1111, 0x2222)}, {1, usb_id_reply(kVid, 0x8753)}});
  EXPECT_EQ(read_id(), count());
  EXPECT_EQ(vid, kVid);
  EXPECT_EQ(count_of("get_report"), 3U);
}

TEST_P(UsbIdTest, AVendorBeyondSixteenBitsIsNeverMet) {
  open_way();
  vid = 0x10000 + kVid;
  device.answers[0xF3] = usb_id_reply(kVid, 0x8753);
  EXPECT_EQ(read_id(), count());
  EXPECT_EQ(vid, kVid);
  EXPECT_EQ(count_of("get_report"), 21U);
}

TEST_P(UsbIdTest, WithoutAnyReplyBothIdsStay) {
  forget_report(0xF3);
  open_way();
  EXPECT_EQ(read_id(), 0);
  EXPECT_EQ(vid, kVid);
  EXPECT_EQ(pid, 0xDEADU);
  EXPECT_EQ(trace_of({"usleep 300000"}), repeated(21, {"usleep 300000"}));
}

TEST_P(UsbIdTest, ACommandThatCannotBeSentIsWaitedForButNoReplyIsRead) {
  open_way();
  device.answers[0xF3] = usb_id_reply(kVid, 0x8753);
  fail_sends(-1);
  EXPECT_EQ(read_id(), 0);
  EXPECT_EQ(vid, kVid);
  EXPECT_EQ(pid, 0xDEADU);
  EXPECT_EQ(exchanges(), repeated(21, {"usleep 300000"}));
  EXPECT_EQ(messages(),
            joined({debug_messages({"=========ReadUSBID==========\n"}),
                    repeated(21, debug_messages({"ReadUSBID HidD_SetFeature failed err=0x5\r\n",
                                                 "ReadUSBID HidD_GetFeature failed err=5\r\n"}))}));
}

TEST_P(UsbIdTest, FailedSendsAndOtherVendorsCountTogether) {
  const struct {
    int failures;
    int mismatches;
    unsigned vid;
    size_t replies;
  } kRows[] = {{20, 0, kVid, 1}, {10, 10, kVid, 11}, {10, 11, 0x1111, 11}, {20, 1, 0x1111, 1}};
  open_way();
  device.answers[0xF3] = usb_id_reply(kVid, 0x8753);
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.failures << ' ' << row.mismatches);
    clear_trace();
    vid = kVid;
    fail_sends(row.failures);
    script({{row.mismatches, usb_id_reply(0x1111, 0x2222)}});
    EXPECT_EQ(read_id(), count());
    EXPECT_EQ(vid, row.vid);
    EXPECT_EQ(count_of("get_report"), row.replies);
    EXPECT_EQ(count_of("usleep 300000"), 21U);
  }
}

// Only hidraw tells that the controller did not answer.
class UsbIdHidrawTest : public UsbIdTest {};
INSTANTIATE_TEST_SUITE_P(Pct, UsbIdHidrawTest, testing::Values(Way{true, 1}, Way{true, 3}),
                         way_name);

TEST_P(UsbIdHidrawTest, AnUnansweredCommandIsRepeated) {
  open_way();
  script({{2, std::nullopt}, {1, usb_id_reply(kVid, 0x8753)}});
  EXPECT_EQ(read_id(), 64);
  EXPECT_EQ(pid, 0x8753U);
  EXPECT_EQ(messages()[1], "zelkora DD:ReadUSBID HidD_GetFeature failed err=32\r\n");
  EXPECT_EQ(messages()[2], "zelkora DD:ReadUSBID HidD_GetFeature failed err=32\r\n");
  EXPECT_EQ(messages()[3], "zelkora DD:ReadUSBID RespBuf---start ret:64");
  EXPECT_EQ(count_of("usleep 300000"), 3U);
}

TEST_P(UsbIdHidrawTest, AFailureAtTheLastAttemptFailsWhateverCameBefore) {
  open_way();
  script({{20, usb_id_reply(0x1111, 0x2222)}, {1, std::nullopt}, {1, usb_id_reply(kVid, 1)}});
  EXPECT_EQ(read_id(), 0);
  EXPECT_EQ(vid, kVid);
  EXPECT_EQ(pid, 0xDEADU);
  EXPECT_EQ(count_of("get_report"), 21U);
}

TEST_P(UsbIdHidrawTest, RepliesOfEveryLengthStayWithinTheBuffer) {
  const struct {
    size_t payload;
    int result;  // the count and the report id, in eight bits
  } kRows[] = {{10, 11}, {63, 64}, {254, 255}, {255, 0}, {256, 1}, {511, 0}, {600, 0}};
  open_way();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.payload);
    Bytes reply = usb_id_reply(kVid, 0x8753);
    reply.resize(row.payload, 0xEE);
    device.answers[0xF3] = reply;
    pid = 0xDEAD;
    EXPECT_EQ(read_id(), row.result);
    EXPECT_EQ(pid, row.result == 0 ? 0xDEADU : 0x8753U);
  }
}

}  // namespace
