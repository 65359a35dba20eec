// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the identity word tells: the firmware family and version.
#include <cstring>

#include "pct_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::captured_stdout;
using zelkora::test::debug_messages;
using zelkora::test::dump;
using zelkora::test::head;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::rising;
using zelkora::test::way_name;

// A reply that begins with the word, low byte first.
Bytes identity_reply(uint32_t word) {
  Bytes reply = rising(63);
  for (size_t i = 0; i < 4; ++i) reply[i] = static_cast<uint8_t>(word >> (8 * i));
  return reply;
}

using IdentityTest = zelkora::test::PctWays;
INSTANTIATE_TEST_SUITE_P(Pct, IdentityTest, testing::ValuesIn(kWays), way_name);

const char* family_message(int family) {
  switch (family) {
    case 1:
      return "It is WDT8755 or WDT8752 !\n";
    case 2:
      return "It is FW_LEGACY!\n";
    default:
      return "It is FW_WITH_CMD!\n";
  }
}

TEST_P(IdentityTest, TheFamilyFollowsFromTheIdentityWord) {
  const struct {
    uint32_t word;
    int family;
  } kRows[] = {
      // The chip decides first, whatever the firmware says.
      {0x30000000, 1},
      {0x3FFFFFFF, 1},
      {0x30008000 + 800, 1},
      {0x30002000 + 360, 1},
      {0x20000000, 3},
      {0x40000000, 3},
      {0x70000000, 3},
      {0xB0000000, 3},
      {0xF0000000, 3},
      {0x03000000, 3},
      {0x00000003, 3},
      {0x00000000, 3},
      // Family 8, both ranges.
      {0x8000 + 799, 3},
      {0x8000 + 800, 2},
      {0x8000 + 812, 2},
      {0x8000 + 824, 2},
      {0x8000 + 825, 3},
      {0x8000 + 359, 3},
      {0x8000 + 360, 2},
      {0x8000 + 392, 2},
      {0x8000 + 393, 3},
      {0x8000 + 394, 3},
      {0x8000 + 395, 3},
      {0x8000 + 600, 3},
      // Family 2, one range.
      {0x2000 + 359, 3},
      {0x2000 + 360, 2},
      {0x2000 + 393, 2},
      {0x2000 + 395, 2},
      {0x2000 + 396, 3},
      {0x2000 + 800, 3},
      {0x2000 + 812, 3},
      {0x2000 + 824, 3},
      // The bits between chip and family do not count.
      {0x8FFF8000 + 824, 2},
      {0x0FFF2000 + 395, 2},
      {0x00012000 + 396, 3},
  };
  open_way();
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << std::hex << row.word);
    clear_trace();
    device.answers[0xF2] = identity_reply(row.word);
    const int before = IsLegacy;
    EXPECT_EQ(GetIsLegacy(), row.family);
    EXPECT_EQ(IsLegacy, before);
    EXPECT_EQ(wire(), received(0xF2, device.answers[0xF2]));
    EXPECT_EQ(messages(), debug_messages({"GetIsLegacy\n", family_message(row.family)}));
  }
}

TEST_P(IdentityTest, OtherFirmwareFamiliesAreNeverLegacy) {
  open_way();
  for (uint32_t family = 0; family < 16; ++family) {
    if (family == 2 || family == 8) continue;
    for (const uint32_t revision : {360U, 376U, 392U, 395U, 800U, 812U, 824U}) {
      SCOPED_TRACE(testing::Message() << family << ' ' << revision);
      device.answers[0xF2] = identity_reply(family << 12 | revision);
      EXPECT_EQ(GetIsLegacy(), ZELKORA_FAMILY_8753);
    }
  }
}

TEST_P(IdentityTest, AControllerThatDoesNotTellIsOfNoKnownFamily) {
  forget_report(0xF2);
  open_way();
  TouchDevice[0].IsLegacy = 5;
  EXPECT_EQ(GetIsLegacy(), 0);
  EXPECT_EQ(TouchDevice[0].IsLegacy, 5);
  EXPECT_EQ(count_of("usleep"), 0U);
  EXPECT_EQ(messages(), debug_messages({"GetIsLegacy\n", "IsLegacy failed err:003\n"}));
}

TEST_P(IdentityTest, TheVersionTextIsMadeOfTheWordsHexDigits) {
  const struct {
    uint32_t word;
    const char* text;
    int revision;
  } kRows[] = {
      {0x30811234, "S3.0.81(r564)", 564},   {0x00020168, "S0.0.02(r360)", 360},
      {0xABCDE000, "SA.B.CD(r0)", 0},       {0xFFFFFFFF, "SF.F.FF(r4095)", 4095},
      {0x12345678, "S1.2.34(r1656)", 1656}, {0x00000000, "S0.0.00(r0)", 0},
  };
  open_way();
  for (const int index : {0, 3}) {
    for (const auto& row : kRows) {
      SCOPED_TRACE(row.text);
      clear_trace();
      TouchDevice[index].FWRev = -1;
      std::memset(TouchDevice[index].FWVersion, 'x', sizeof TouchDevice[index].FWVersion);
      device.answers[0xF2] = identity_reply(row.word);
      EXPECT_EQ(GetFwID(index), 1);
      EXPECT_STREQ(TouchDevice[index].FWVersion, row.text);
      EXPECT_EQ(TouchDevice[index].FWRev, row.revision);
      EXPECT_STREQ(TouchDevice[1].FWVersion, "");
      EXPECT_EQ(TouchDevice[1].FWRev, 0);
      EXPECT_EQ(wire(), received(0xF2, device.answers[0xF2]));
      EXPECT_EQ(messages(),
                debug_messages({"GetFwID\n", std::string("1 Firmware Version:") + row.text + "\n",
                                "GetFwID end\n"}));
    }
  }
}

TEST_P(IdentityTest, TheVersionQueryShowsTheFirst16Bytes) {
  open_way();
  device.answers[0xF2] = identity_reply(0x30811234);
  EXPECT_EQ(captured_stdout([] { GetFwID(0); }),
            "zelkora DD:GetFwID\n" + dump("GetFwID RespBuf", head(device.answers[0xF2], 16)) +
                "zelkora DD:1 Firmware Version:S3.0.81(r564)\nzelkora DD:GetFwID end\n");
}

TEST_P(IdentityTest, AFailedVersionQueryLeavesTheEntryAlone) {
  forget_report(0xF2);
  open_way();
  std::strcpy(TouchDevice[2].FWVersion, "old");
  TouchDevice[2].FWRev = 7;
  EXPECT_EQ(GetFwID(2), 0);
  EXPECT_STREQ(TouchDevice[2].FWVersion, "old");
  EXPECT_EQ(TouchDevice[2].FWRev, 7);
  EXPECT_EQ(messages(), debug_messages({"GetFwID\n", "GetFwID failed err:003\n"}));
}

}  // namespace
