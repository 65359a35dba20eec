// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The identity block: reading, writing and keeping it up to date.
#include <cstring>

#include "serial_number_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::head;
using zelkora::test::joined;
using zelkora::test::kBlock;
using zelkora::test::kPanel;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::repeated;
using zelkora::test::way_name;

using SerialNumberTest = zelkora::test::SerialNumberBench;
INSTANTIATE_TEST_SUITE_P(Pct, SerialNumberTest, testing::ValuesIn(kWays), way_name);

using NewSerialNumberTest = zelkora::test::Bench;

TEST_F(NewSerialNumberTest, ItIsPickedFromSixteenRandomBytes) {
  Bytes out(9, 0xEE);
  GenerateSreialNumber(out.data());
  EXPECT_EQ(out, (Bytes{0x05, 0x0A, 0x02, 0x07, 0x0B, 0x09, 0x03, 0x08, 0xEE}));
  EXPECT_EQ(host.random_argument, 1);

  for (size_t i = 0; i < host.random.size(); ++i) {
    host.random[i] = static_cast<unsigned char>(0xF0 + i);
  }
  GenerateSreialNumber(out.data());
  EXPECT_EQ(out, (Bytes{0xF5, 0xFA, 0xF2, 0xF7, 0xFB, 0xF9, 0xF3, 0xF8, 0xEE}));
}

TEST_P(SerialNumberTest, ReadingFillsTheEntry) {
  open_way();
  HidRaw = 77;
  device.answers[7] = reply_of(kBlock);
  EXPECT_EQ(GetMySN(kPanel), 1);
  EXPECT_EQ(HidRaw, GetParam().hidraw ? 1 : 0);
  EXPECT_EQ(serial_number(), (Bytes{0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0x0A, 0xA7}));
  EXPECT_EQ(entry.OldVID, 0x2575U);
  EXPECT_EQ(entry.OldPID, 0x8753U);
  EXPECT_EQ(entry.FWRevFlash, 0x0234);
  EXPECT_EQ(wire(), reading(device.answers[7]));
  EXPECT_EQ(messages().back(),
            "zelkora DD:***GetMySN FLASH SN:a0a1a2a3a4a50aa7 OLD VID:0x2575 PID:0x8753***\n");
}

TEST_P(SerialNumberTest, NumbersInTheBlockHaveSixteenBits) {
  Bytes block(32, 0xFF);
  block[3] = 0x00;
  open_way();
  device.answers[7] = reply_of(block);
  EXPECT_EQ(GetMySN(kPanel), 1);
  EXPECT_EQ(entry.OldVID, 0xFFFFU);
  EXPECT_EQ(entry.OldPID, 0xFF00U);
  EXPECT_EQ(entry.FWRevFlash, 0xFFFF);
  EXPECT_EQ(messages().back(),
            "zelkora DD:***GetMySN FLASH SN:ffffffffffffffff OLD VID:0xFFFF PID:0xFF00***\n");
}

TEST_P(SerialNumberTest, ABlockThatCannotBeReadIsAskedForElevenTimes) {
  Bytes spoiled = reply_of(kBlock);
  spoiled[20] ^= 1;
  open_way();
  device.answers[7] = spoiled;
  const TouchDeviceEntry before = entry;
  EXPECT_EQ(GetMySN(kPanel), 0);
  EXPECT_EQ(wire(), repeated(11, joined({reading(spoiled), {"usleep 300000"}})));
  EXPECT_EQ(std::memcmp(&entry, &before, sizeof entry), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:GetMySN ReadPCTParames ret=0x0000\n");

  clear_trace();
  fail_sends(11);
  EXPECT_EQ(GetMySN(kPanel), 0);
  EXPECT_EQ(exchanges(), repeated(11, {"usleep 300000"}));
}

TEST_P(SerialNumberTest, TheFirstGoodBlockEndsTheAttempts) {
  open_way();
  for (const size_t failures : {1U, 3U, 10U}) {
    SCOPED_TRACE(failures);
    device.script[7].assign(failures, Bytes(63));
    device.answers[7] = reply_of(kBlock);
    clear_trace();
    EXPECT_EQ(GetMySN(kPanel), 1);
    EXPECT_EQ(wire(), joined({repeated(failures, joined({reading({}), {"usleep 300000"}})),
                              reading(device.answers[7])}));
  }
}

TEST_P(SerialNumberTest, EachAttemptGoesOverTheInterfaceOfTheEntry) {
  open_way();
  device.answers[7] = reply_of(kBlock);
  // The first reply is asked for in the other way and so is lost.
  device.on_command = [this](const Bytes&) {
    if (device.received.size() == 1) HidRaw = GetParam().hidraw ? 0 : 1;
  };
  EXPECT_EQ(GetMySN(kPanel), 1);
  EXPECT_EQ(device.received.size(), 2U);
  EXPECT_EQ(HidRaw, entry.HidRaw);
}

// ------------------------------------------------------------------------------------------------

TEST_P(SerialNumberTest, WritingSendsTheIdentityOfTheEntry) {
  entry.FWRev = 0x0ABC;
  open_way();
  EXPECT_EQ(SetMySN(kPanel), 1);
  const Bytes plain = {0x25, 0x75, 0x87, 0x55, 0x0A, 0xBC, 0, 0, 0, 0, 0, 0, 0xB0, 0xB1, 0xB2, 0xB3,
                       0xB4, 0xB5, 0xB6, 0xB7, 0,    0,    0, 0, 0, 0, 0, 0, 0,    0,    0,    0};
  EXPECT_EQ(wire(), writing(plain));
  EXPECT_EQ(messages().back(), GetParam().hidraw
                                   ? "zelkora DD:***SetMySN WriteParamas HidRaw:1 status=1***\n"
                                   : "zelkora DD:***SetMySN WriteParamas HidRaw:0 status=1***\n");
}

TEST_P(SerialNumberTest, TheProductWrittenIsTheDigitizers) {
  const struct {
    unsigned vid, pid;
    uint8_t high, low;
  } kRows[] = {{0x2575, 0x8753, 0x87, 0x53}, {0x2575, 0x9968, 0x87, 0x53},
               {0x2575, 0x9969, 0x87, 0x53}, {0x3A4C, 0x9968, 0x00, 0x40},
               {0x3A4C, 0x9969, 0x00, 0x40}, {0x3D8E, 0x9969, 0x3D, 0x28},
               {0x1111, 0x9968, 0x87, 0x53}, {0x2575, 0x9967, 0x99, 0x67},
               {0x2575, 0x996A, 0x99, 0x6A}, {0x2575, 0x0000, 0x00, 0x00}};
  open_way();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.vid);
    SCOPED_TRACE(row.pid);
    entry.VID = row.vid;
    entry.PID = row.pid;
    EXPECT_EQ(SetMySN(kPanel), 1);
    const auto byte = [](unsigned value) { return static_cast<uint8_t>(value); };
    EXPECT_EQ(head(written_blocks.back(), 4),
              (Bytes{byte(row.vid >> 8), byte(row.vid), row.high, row.low}));
    EXPECT_EQ(entry.PID, row.pid);
  }
}

TEST_P(SerialNumberTest, ARevisionHasSixteenBits) {
  open_way();
  for (const int revision : {0, 1, 4095, 0xFFFF, 0x12345, -1, -2}) {
    SCOPED_TRACE(revision);
    entry.FWRev = revision;
    EXPECT_EQ(SetMySN(kPanel), 1);
    EXPECT_EQ(written_blocks.back()[4], static_cast<uint8_t>(revision >> 8));
    EXPECT_EQ(written_blocks.back()[5], static_cast<uint8_t>(revision));
  }
}

TEST_P(SerialNumberTest, ABlockThatCannotBeSentIsNotWritten) {
  open_way();
  fail_sends(1);
  EXPECT_EQ(SetMySN(kPanel), 0);
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(messages().back(), GetParam().hidraw
                                   ? "zelkora DD:***SetMySN WriteParamas HidRaw:1 status=0***\n"
                                   : "zelkora DD:***SetMySN WriteParamas HidRaw:0 status=0***\n");
}

}  // namespace
