// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Which replies the commands accept: each shape that one byte too few or one wrong byte makes.
#include "command_rows.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::Carrier;
using zelkora::test::command_row;
using zelkora::test::CommandRow;
using zelkora::test::kCarriers;
using zelkora::test::kCommands;
using zelkora::test::name_of;
using zelkora::test::ScriptedBench;
using zelkora::test::with_bytes;
using zelkora::test::with_page;

class CommandsAcceptanceTest : public ScriptedBench {
 protected:
  // Accepted at the first attempt, or refused at all four.
  void expect_judgement(Carrier carrier, const CommandRow& row, const Bytes& reply, bool accepted) {
    SCOPED_TRACE(with_bytes(name_of(carrier) + " " + row.name, reply));
    open_controller(carrier);
    restart({reply});
    const int result = row.run();
    if (!accepted) {
      EXPECT_EQ(result, row.failure);
    } else {
      EXPECT_NE(result, row.failure);
    }
    EXPECT_EQ(controller.frames.size(), accepted ? 1U : 4U);
  }

  void expect_judgement(const CommandRow& row, const Bytes& reply, bool accepted) {
    for (const Carrier carrier : kCarriers) {
      if (carrier == Carrier::kUsb && !row.works_over_usb) continue;
      expect_judgement(carrier, row, reply, accepted);
    }
  }
};

constexpr const char* kAcknowledged[] = {"EnterCalibMode", "PermanentParameter", "ResetController",
                                         "WriteEEPValue",  "AXI_WriteEEPValue",  "SetBackLightDuty",
                                         "ChkAutoSetHid"};

TEST_F(CommandsAcceptanceTest, AnAcknowledgeIsThreeBytes) {
  const struct {
    Bytes reply;
    bool accepted;
  } kRows[] = {
      {{0x01, 0x30, 0x0D}, true},
      {{}, false},
      {{0x01}, false},
      {{0x01, 0x30}, false},
      {{0x01, 0x31, 0x0D}, false},
      {{0x01, 0x00, 0x0D}, false},
      {{0x00, 0x30, 0x0D}, false},
      {{0x81, 0x30, 0x0D}, false},
      {{0x01, 0x30, 0x0A}, false},
      {{0x01, 0x30, 0x30, 0x0D}, false},
      {{0x30, 0x0D, 0x01}, false},
      {{0x00, 0x01, 0x30, 0x0D}, false},
      {{0x01, 0xB0, 0x0D}, false},
      {{0x01, 0x30, 0x8D}, false},
  };
  for (const char* name : kAcknowledged) {
    for (const auto& row : kRows) expect_judgement(command_row(name), row.reply, row.accepted);
  }
}

// What follows an acknowledge is of no interest.
TEST_F(CommandsAcceptanceTest, AnAcknowledgeMayHaveATail) {
  for (const char* name : kAcknowledged) {
    expect_judgement(command_row(name), {0x01, 0x30, 0x0D, 0x77, 0x01, 0x02, 0x03}, true);
  }
}

// With a longer reply there are bytes enough within the three that are read over USB - but for the
// last of them, which reads as 0 whatever the controller sent.
TEST_F(CommandsAcceptanceTest, NoReplyOverUsbSatisfiesTheCommandsThatReadThreeBytes) {
  for (const char* name : {"SetBackLightDuty", "ChkAutoSetHid"}) {
    constexpr uint8_t kLengths[] = {2, 3, 4, 63, 127};
    for (const uint8_t stated : kLengths) {
      SCOPED_TRACE(int{stated});
      controller.stated_length = stated;
      expect_judgement(Carrier::kUsb, command_row(name), {0x01, 0x30, 0x0D, 0x0D}, false);
    }
  }
}

// The stated length cuts the reply: two bytes of an acknowledge are none.
TEST_F(CommandsAcceptanceTest, AnAcknowledgeOfTwoStatedBytesIsRefused) {
  for (const char* name : kAcknowledged) {
    controller.stated_length = 2;
    expect_judgement(Carrier::kUsb, command_row(name), {0x01, 0x30, 0x0D}, false);
  }
}

TEST_F(CommandsAcceptanceTest, AFirmwareTextHasAtLeastTwoCharacters) {
  const CommandRow& row = command_row("GetFirmware");
  const struct {
    Bytes reply;
    bool accepted;
  } kRows[] = {
      {{0x01, 'V', '1', 0x0D}, true},       {{0x01, 'V', 0x0D}, false},
      {{0x01, 'V', 0x0D, '1'}, false},      {{0x01, 0x0D}, false},
      {{0x01, 'V', 0x0D, 0x0D}, true},      {{0x00, 'V', '1', 0x0D}, false},
      {{0x0D, 'V', '1', 0x0D}, false},      {{0x01, 'V', '1', 0x8D}, false},
      {{0x01, 'V', '1', 0x0D, 0xFF}, true}, {{0x01, 'V', '1', '.', '2'}, false},
  };
  for (const auto& [reply, accepted] : kRows) expect_judgement(row, reply, accepted);
}

TEST_F(CommandsAcceptanceTest, AValueIsFourBytesBetweenTheMarkers) {
  const CommandRow& row = command_row("ReadEEPValue");
  const struct {
    Bytes reply;
    bool accepted;
  } kRows[] = {
      {{0x01, '0', '0', '1', '2', 0x0D}, true},
      {{0x01, '0', '0', '1', '2', 0x0D, 0x55, 0x55, 0x55}, true},
      {{0x01, 0xFF, 0xFF, 0xFF, 0xFF, 0x0D}, true},
      {{0x01, '0', '0', '1', '2'}, false},
      {{0x01, '0', '0', '1', 0x0D}, false},
      {{0x01, '0', '0', '0', '1', '2', 0x0D}, false},
      {{0x00, '0', '0', '1', '2', 0x0D}, false},
      {{0x01, '0', '0', '1', '2', 0x0A}, false},
      {{0x01, 0x30, 0x0D}, false},
      {{}, false},
  };
  for (const auto& [reply, accepted] : kRows) expect_judgement(row, reply, accepted);
}

TEST_F(CommandsAcceptanceTest, APageEchoesTheCommandAndEndsAtByte36) {
  const CommandRow& row = command_row("AXI_ReadEEPValue");
  const Bytes good = with_page({0x01, 0x45, 0x52, 0x03});
  expect_judgement(row, good, true);

  Bytes longer = good;
  longer.push_back(0x77);
  expect_judgement(row, longer, true);

  Bytes shorter = good;
  shorter.pop_back();
  expect_judgement(row, shorter, false);
  expect_judgement(row, {}, false);
  expect_judgement(row, {0x01, 0x45, 0x52, 0x03, 0x0D}, false);

  constexpr size_t kJudged[] = {0, 1, 2, 3, 36};
  for (const size_t index : kJudged) {
    Bytes spoiled = good;
    spoiled[index] ^= 0x80;
    expect_judgement(row, spoiled, false);
  }
  Bytes other = good;
  other[3] = 0x02;
  expect_judgement(row, other, false);
  // The page's own bytes are not judged.
  for (size_t index = 4; index < 36; ++index) {
    Bytes changed = good;
    changed[index] ^= 0xFF;
    expect_judgement(row, changed, true);
  }
}

TEST_F(CommandsAcceptanceTest, EveryCommandIsJudgedHere) {
  size_t judged = std::size(kAcknowledged);
  for (const char* name : {"GetFirmware", "ReadEEPValue", "AXI_ReadEEPValue"}) {
    judged += static_cast<size_t>(
        std::ranges::count(kCommands, std::string_view(name), &CommandRow::name));
  }
  EXPECT_EQ(judged, kCommands.size());
}

}  // namespace
