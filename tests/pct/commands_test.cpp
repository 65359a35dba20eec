// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands that move the parameter block, write the USB id and reset.
#include "pct_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::captured_stdout;
using zelkora::test::debug_messages;
using zelkora::test::dump;
using zelkora::test::encoded_block;
using zelkora::test::head;
using zelkora::test::joined;
using zelkora::test::joined_bytes;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::padded;
using zelkora::test::rising;
using zelkora::test::way_name;

class CommandsTest : public zelkora::test::PctWays {
 protected:
  // A reply with the block where this family has it, and other bytes around it.
  Bytes reply_of(const Bytes& block) const {
    Bytes reply = joined_bytes(Bytes(is_8752() ? 3 : 7, 0xEE), block);
    reply.resize(63, 0xDD);
    return reply;
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, CommandsTest, testing::ValuesIn(kWays), way_name);

const Bytes kReadCommand = {0x06, 0xA1, 0x22};

TEST_P(CommandsTest, ReadingAsksForTheBlockAndItsChecksumAndDecodesThem) {
  const Bytes block = encoded_block(rising(32));
  open_way();
  device.answers[7] = reply_of(block);
  Bytes plain(33, 0xEE);
  EXPECT_EQ(ReadPCTParames(plain.data(), 32), block[33] << 8 | block[32]);
  EXPECT_EQ(plain, joined_bytes(rising(32), {0xEE}));
  EXPECT_EQ(wire(),
            joined({sent(kReadCommand), {"usleep 100000"}, received(7, device.answers[7])}));
  EXPECT_EQ(device.received.back().second, padded({0xA1, 0x22}, 63));
}

TEST_P(CommandsTest, ReadingShowsTheReplyAndTheBlock) {
  const Bytes block = encoded_block(rising(32));
  open_way();
  device.answers[7] = reply_of(block);
  Bytes plain(32);
  const std::string text = captured_stdout([&] { ReadPCTParames(plain.data(), 32); });
  const std::string expected = std::string("zelkora DD:***ReadPCTParames start***\n") +
                               (is_8752() ? "zelkora DD:***ReadPCTParames 8752***\n"
                                          : "zelkora DD:***ReadPCTParames 8753***\n") +
                               dump("ReadPCTParames RespBuf", head(device.answers[7], 32)) +
                               dump("ReadPCTParames tmp", head(block, 32)) +
                               dump("DecodeParames original", head(block, 32));
  EXPECT_EQ(text.substr(0, expected.size()), expected);
}

TEST_P(CommandsTest, AReplyOfTheOtherFamilyIsRefused) {
  open_way();
  device.answers[7] = joined_bytes(Bytes(is_8752() ? 7 : 3, 0xEE), encoded_block(rising(32)));
  Bytes plain(32, 0xEE);
  EXPECT_EQ(ReadPCTParames(plain.data(), 32), 0);
  EXPECT_EQ(plain, Bytes(32, 0xEE));
  EXPECT_EQ(messages().back(), "zelkora DD:DecodeParames checksum fail\n");
  EXPECT_EQ(count_of("set_report"), 1U);
}

TEST_P(CommandsTest, AReadThatCannotBeSentIsNotWaitedFor) {
  open_way();
  fail_sends(1);
  Bytes plain(32, 0xEE);
  EXPECT_EQ(ReadPCTParames(plain.data(), 32), 0);
  EXPECT_EQ(plain, Bytes(32, 0xEE));
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(messages(),
            is_8752()
                ? debug_messages({"***ReadPCTParames start***\n", "***ReadPCTParames 8752***\n",
                                  "ReadPCTParames failed err:001\n"})
                : debug_messages({"***ReadPCTParames start***\n", "***ReadPCTParames 8753***\n",
                                  "ReadPCTParames failed err:003\n"}));
}

TEST_P(CommandsTest, AReadWithoutAReplyLeavesTheBlockAlone) {
  forget_report(7);
  open_way();
  Bytes plain(32, 0xEE);
  EXPECT_EQ(ReadPCTParames(plain.data(), 32), 0);
  EXPECT_EQ(plain, Bytes(32, 0xEE));
  EXPECT_EQ(count_of("usleep 100000"), 1U);
  EXPECT_EQ(messages(),
            is_8752()
                ? debug_messages({"***ReadPCTParames start***\n", "***ReadPCTParames 8752***\n",
                                  "ReadPCTParames failed err:002\n"})
                : debug_messages({"***ReadPCTParames start***\n", "***ReadPCTParames 8753***\n",
                                  "ReadPCTParames failed err:004\n"}));
}

TEST_P(CommandsTest, OtherLengthsGoOutAsOneByteAndCutWhatComesBack) {
  const struct {
    int length;
    uint8_t asked;
    bool whole;  // both checksum bytes are among what is copied
  } kRows[] = {{0, 2, false},     {16, 18, false}, {30, 32, false},  {31, 33, false},
               {33, 35, true},    {62, 64, true},  {253, 255, true}, {254, 0, false},
               {4096, 2, false},  {-1, 1, false},  {-2, 0, false},   {-3, 255, true},
               {-100, 158, true}, {290, 36, true}};
  const Bytes block = encoded_block(rising(32));
  open_way();
  device.answers[7] = reply_of(block);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.length);
    Bytes plain(33, 0xEE);
    EXPECT_EQ(ReadPCTParames(plain.data(), row.length) != 0, row.whole);
    EXPECT_EQ(device.received.back().second, padded({0xA1, row.asked}, 63));
    EXPECT_EQ(plain, row.whole ? joined_bytes(rising(32), {0xEE}) : Bytes(33, 0xEE));
  }
}

TEST_P(CommandsTest, WritingSendsTheEncodedBytesWithoutTheirChecksum) {
  open_way();
  const Bytes block = encoded_block(rising(32));
  EXPECT_EQ(WritePCTParames(rising(32).data()), 1);
  Bytes command = joined_bytes({0x08, 0xA8, 0x22}, Bytes(is_8752() ? 1 : 5, 0));
  command = padded(joined_bytes(command, head(block, 32)), 64);
  EXPECT_EQ(wire(), sent(command));
  EXPECT_EQ(device.received.back().second, Bytes(command.begin() + 1, command.end()));
  EXPECT_EQ(messages().size(), 4U);
  EXPECT_EQ(messages().front(), "zelkora DD:***WritePCTParames***\n");
  EXPECT_EQ(messages()[1], "zelkora DD:***EncodeParames***\n");
  EXPECT_EQ(messages().back(), "zelkora DD:***WritePCTParames--end***\n");
}

TEST_P(CommandsTest, AWriteThatCannotBeSentIsNotRepeated) {
  open_way();
  fail_sends(1);
  EXPECT_EQ(WritePCTParames(rising(32).data()), 0);
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(messages().size(), 4U);
  EXPECT_EQ(messages().back(), is_8752() ? "zelkora DD:WritePCTParames failed err:000\n"
                                         : "zelkora DD:WritePCTParames failed err:001\n");
}

TEST_P(CommandsTest, AnEmptyBlockIsAWriteOfZerosWithALengthOfItsOwn) {
  open_way();
  EXPECT_EQ(EmptyParames(), 1);
  EXPECT_EQ(wire(), sent({0x08, 0xA8, 0x40}));
  EXPECT_EQ(device.received.back().second, padded({0xA8, 0x40}, 63));
  EXPECT_EQ(messages(),
            debug_messages({"***EmptyParames--start***\n", "***EmptyParames--end***\n"}));

  clear_trace();
  fail_sends(1);
  EXPECT_EQ(EmptyParames(), 0);
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(messages(),
            debug_messages({"***EmptyParames--start***\n", "EmptyParames failed err:000\n"}));
}

TEST_P(CommandsTest, WritingTheUsbIdPutsBothIdsLowByteFirst) {
  const struct {
    unsigned vid, pid;
    Bytes bytes;
    const char* message;
  } kRows[] = {
      {0x2575, 0x8753, {0x75, 0x25, 0x53, 0x87}, "WriteUSBID VID:0x2575 PID:0x8753\n"},
      {0x0001, 0x000A, {0x01, 0x00, 0x0A, 0x00}, "WriteUSBID VID:0x0001 PID:0x000A\n"},
      {0xFFFF, 0xABCD, {0xFF, 0xFF, 0xCD, 0xAB}, "WriteUSBID VID:0xFFFF PID:0xABCD\n"},
      {0x12345, 0xFFFFFFFF, {0x45, 0x23, 0xFF, 0xFF}, "WriteUSBID VID:0x12345 PID:0xFFFFFFFF\n"},
  };
  open_way();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.message);
    clear_trace();
    EXPECT_EQ(WriteUSBID(row.vid, row.pid), 1);
    const Bytes command = joined_bytes({0xF3, 0x08, 0x00, 0x02, 0x00, 0x00}, row.bytes);
    EXPECT_EQ(wire(), sent(command));
    EXPECT_EQ(messages(), debug_messages({row.message}));
  }
  fail_sends(1);
  EXPECT_EQ(WriteUSBID(0x2575, 0x8753), 0);
}

TEST_P(CommandsTest, ResettingSendsTheCommandOfTheFamilyAndNeverFails) {
  const Bytes command = is_8752() ? Bytes{0x08, 0x85, 0x01, 0x00, 0x02} : Bytes{0x08, 0x84, 0x09};
  const Lines said = GetParam().hidraw ? debug_messages({"***ResetPCTController HidRaw:1***\n",
                                                         "***ResetPCTController end***\n"})
                                       : debug_messages({"***ResetPCTController HidRaw:0***\n",
                                                         "***ResetPCTController end***\n"});
  open_way();
  EXPECT_EQ(ResetPCTController(), 1);
  EXPECT_EQ(wire(), sent(command));
  EXPECT_EQ(messages(), said);

  clear_trace();
  fail_sends(1);
  EXPECT_EQ(ResetPCTController(), 1);
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(messages(), said);
}

}  // namespace
