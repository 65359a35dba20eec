// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Reading the POS configuration, and reading and writing the POS mode.
#include <climits>

#include "data_reply.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::captured_stdout;
using zelkora::test::data_reply;
using zelkora::test::debug_messages;
using zelkora::test::dump;
using zelkora::test::head;
using zelkora::test::joined;
using zelkora::test::joined_bytes;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::padded;
using zelkora::test::repeated;
using zelkora::test::rising;
using zelkora::test::way_name;

class PosConfigTest : public zelkora::test::PctWays {
 protected:
  Bytes reply_of(const Bytes& data) const { return data_reply(GetParam(), data); }

  // One attempt at 16 bytes.
  static Lines attempt(const Bytes& reply) {
    return joined({sent({0x06, 0xA2, 0x10}), {"usleep 50000"}, received(7, reply)});
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, PosConfigTest, testing::ValuesIn(kWays), way_name);

TEST_P(PosConfigTest, ReadingAsksForTheLengthAndTakesThatManyBytes) {
  open_way();
  device.answers[7] = reply_of(rising(16));
  Bytes out(17, 0xEE);
  EXPECT_EQ(ReadPOSConfig(out.data(), 16), 1);
  EXPECT_EQ(out, joined_bytes(rising(16), {0xEE}));
  EXPECT_EQ(wire(), attempt(device.answers[7]));
  EXPECT_EQ(device.received.back().second, padded({0xA2, 0x10}, 63));
  EXPECT_EQ(messages(), debug_messages({"***ReadPOSConfig***\n"}));
}

TEST_P(PosConfigTest, ZerosAreAskedForSevenTimes) {
  open_way();
  device.answers[7] = reply_of(Bytes(16));
  Bytes out(17, 0xEE);
  EXPECT_EQ(ReadPOSConfig(out.data(), 16), 0);
  EXPECT_EQ(out, joined_bytes(Bytes(16), {0xEE}));
  EXPECT_EQ(wire(), repeated(7, attempt(device.answers[7])));
  EXPECT_EQ(messages(), joined({debug_messages({"***ReadPOSConfig***\n"}),
                                repeated(6, debug_messages({"ReadPOSConfig --fail\n"}))}));
}

TEST_P(PosConfigTest, TheFirstReplyWithAnotherByteThanZeroCounts) {
  const Bytes last_byte = joined_bytes(Bytes(15), {0x80});
  open_way();
  for (const size_t zeros : {0U, 1U, 5U, 6U}) {
    SCOPED_TRACE(zeros);
    clear_trace();
    device.script[7].assign(zeros, reply_of(Bytes(16)));
    device.answers[7] = reply_of(last_byte);
    Bytes out(16, 0xEE);
    EXPECT_EQ(ReadPOSConfig(out.data(), 16), 1);
    EXPECT_EQ(out, last_byte);
    EXPECT_EQ(count_of("usleep 50000"), (zeros + 1) * (1 + settled().size()));
    EXPECT_EQ(messages().size(), 1 + zeros);
  }
}

TEST_P(PosConfigTest, AShortReplyHasZerosBehindIt) {
  open_way();
  device.answers[7] = joined_bytes(Bytes(is_8752() ? 3 : 7, 0xEE), {0x21, 0x01});
  Bytes out(17, 0xEE);
  EXPECT_EQ(ReadPOSConfig(out.data(), 16), 1);
  EXPECT_EQ(out, joined_bytes(padded({0x21, 0x01}, 16), {0xEE}));

  device.answers[7] = {0xEE, 0xEE};
  EXPECT_EQ(ReadPOSConfig(out.data(), 16), 0);
  EXPECT_EQ(out, joined_bytes(Bytes(16), {0xEE}));
}

TEST_P(PosConfigTest, AQueryThatCannotBeSentEndsTheReading) {
  open_way();
  fail_sends(1);
  Bytes out(17, 0xEE);
  EXPECT_EQ(ReadPOSConfig(out.data(), 16), 0);
  EXPECT_EQ(out, joined_bytes(Bytes(16), {0xEE}));
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(messages(),
            debug_messages({"***ReadPOSConfig***\n", "ReadPOSConfig SendDataPct failed\n "}));

  // Later attempts are no different.
  clear_trace();
  device.answers[7] = reply_of(Bytes(16));
  device.on_command = [this](const Bytes&) { fail_sends(1); };
  EXPECT_EQ(ReadPOSConfig(out.data(), 16), 0);
  EXPECT_EQ(count_of("set_report"), 1U);
  EXPECT_EQ(messages(), debug_messages({"***ReadPOSConfig***\n", "ReadPOSConfig --fail\n",
                                        "ReadPOSConfig SendDataPct failed\n "}));
}

TEST_P(PosConfigTest, AMissingReplyEndsTheReading) {
  forget_report(7);
  open_way();
  Bytes out(17, 0xEE);
  EXPECT_EQ(ReadPOSConfig(out.data(), 16), 0);
  EXPECT_EQ(out, joined_bytes(Bytes(16), {0xEE}));
  EXPECT_EQ(count_of("set_report"), 1U);
  EXPECT_EQ(messages(),
            debug_messages({"***ReadPOSConfig***\n", "ReadPOSConfig ReceiveDataPct failed\n "}));
}

TEST_P(PosConfigTest, OtherLengthsGoOutAsOneByteAndStayWithinTheReply) {
  // What there is behind the data's beginning, of 63 bytes and the one that their id leaves.
  const size_t room = is_8752() ? 61 : 57;
  const struct {
    int length;
    uint8_t asked;
    size_t copied;
  } kRows[] = {{4, 4, 4},      {1, 1, 1},          {17, 17, 17},        {57, 57, 57},
               {61, 61, room}, {62, 62, room},     {64, 64, room},      {255, 255, room},
               {256, 0, room}, {1000, 0xE8, room}, {INT_MAX, 255, room}};
  open_way();
  device.answers[7] = reply_of(rising(56));
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.length);
    Bytes out(80, 0xEE);
    EXPECT_EQ(ReadPOSConfig(out.data(), row.length), 1);
    EXPECT_EQ(device.received.back().second, padded({0xA2, row.asked}, 63));
    Bytes data(device.answers[7].begin() + (is_8752() ? 3 : 7), device.answers[7].end());
    Bytes expected = head(data, row.copied);
    expected.resize(std::max<size_t>(row.copied, 16));  // cleared
    expected.resize(80, 0xEE);
    EXPECT_EQ(out, expected);
  }
}

TEST_P(PosConfigTest, ALengthOfNothingNeverSucceeds) {
  open_way();
  device.answers[7] = reply_of(rising(16));
  for (const int length : {0, -1, -16, INT_MIN}) {
    SCOPED_TRACE(length);
    clear_trace();
    Bytes out(17, 0xEE);
    EXPECT_EQ(ReadPOSConfig(out.data(), length), 0);
    EXPECT_EQ(out, joined_bytes(Bytes(16), {0xEE}));
    EXPECT_EQ(count_of("set_report"), 7U);
    EXPECT_EQ(device.received.back().second,
              padded({0xA2, static_cast<uint8_t>(static_cast<unsigned>(length))}, 63));
  }
}

TEST_P(PosConfigTest, WritingSendsThreeBytes) {
  const std::string said =
      "***WritePOSConfig IsLegacy:" + std::to_string(GetParam().family) + "***\n";
  open_way();
  EXPECT_EQ(WritePOSConfig(0x21, 0xFF, 0xA4), 1);
  const Bytes command = is_8752() ? Bytes{0x08, 0x91, 0x05, 0x00, 0xC0, 0x21, 0xFF, 0xA4}
                                  : Bytes{0x08, 0x84, 0xC0, 0x00, 0x21, 0xFF, 0xA4};
  EXPECT_EQ(wire(), sent(command));
  EXPECT_EQ(device.received.back().second, padded({command.begin() + 1, command.end()}, 63));
  EXPECT_EQ(messages(), debug_messages({said}));

  clear_trace();
  fail_sends(1);
  EXPECT_EQ(WritePOSConfig(1, 2, 3), 0);
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(messages(), debug_messages({said}));
}

TEST_P(PosConfigTest, TheModeIsWrittenByACommandOfItsOwn) {
  open_way();
  for (const uint8_t mode : Bytes{0x20, 0x21, 0x22, 0x23, 0x00, 0xFF}) {
    char said[64];
    std::snprintf(said, sizeof said, "***WritePOSMode Mode:0x%02x***", mode);
    SCOPED_TRACE(said);
    clear_trace();
    EXPECT_EQ(WritePOSMode(mode), 1);
    const Bytes command =
        is_8752() ? Bytes{0x08, 0x91, 0x05, 0x00, 0xC9, mode} : Bytes{0x08, 0x84, 0xC9, 0x00, mode};
    EXPECT_EQ(wire(), is_8752() ? joined({sent(command), {"usleep 10000"}}) : sent(command));
    EXPECT_EQ(device.received.back().second, padded({command.begin() + 1, command.end()}, 63));
    EXPECT_EQ(messages(), debug_messages({said}));
  }
}

TEST_P(PosConfigTest, TheModeCommandOfThe8753LayoutIsShown) {
  open_way();
  const std::string said = "zelkora DD:***WritePOSMode Mode:0x22***";
  const std::string shown = dump("WritePOSMode", {0x08, 0x84, 0xC9, 0x00, 0x22, 0, 0, 0});
  EXPECT_EQ(captured_stdout([] { WritePOSMode(0x22); }), is_8752() ? said : said + shown);
}

TEST_P(PosConfigTest, AModeThatCannotBeSentIsNotWaitedFor) {
  open_way();
  fail_sends(1);
  EXPECT_EQ(WritePOSMode(0x20), 0);
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(messages(), debug_messages({"***WritePOSMode Mode:0x20***"}));
}

TEST_P(PosConfigTest, TheModeIsTheSecondByteAndOne) {
  const struct {
    uint8_t byte;
    int mode;
  } kRows[] = {{0, 1}, {1, 2}, {2, 3}, {3, 4}, {4, 5}, {0xFE, 255}, {0xFF, 0}};
  const std::string asked =
      GetParam().hidraw ? "###GetPOSMode HidRaw:1###\n" : "###GetPOSMode HidRaw:0###\n";
  open_way();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.mode);
    clear_trace();
    device.answers[7] = reply_of(padded({0x21, row.byte, 0x77, 0x66}, 16));
    EXPECT_EQ(GetPOSMode(), row.mode);
    EXPECT_EQ(wire(), attempt(device.answers[7]));
    EXPECT_EQ(messages(),
              debug_messages({asked, "***ReadPOSConfig***\n",
                              "###GetPOSMode Mode:" + std::to_string(row.mode) + "###\n"}));
  }
}

TEST_P(PosConfigTest, AModeThatCannotBeReadIsNone) {
  open_way();
  fail_sends(1);
  EXPECT_EQ(GetPOSMode(), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:###GetPOSMode Mode:0###\n");

  device.answers[7] = reply_of(Bytes(16));
  EXPECT_EQ(GetPOSMode(), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:###GetPOSMode Mode:0###\n");
}

}  // namespace
