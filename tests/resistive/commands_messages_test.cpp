// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the commands print while debugging.
#include <cerrno>
#include <cstdio>

#include "command_rows.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::Carrier;
using zelkora::test::command_row;
using zelkora::test::CommandRow;
using zelkora::test::framed;
using zelkora::test::kAcknowledge;
using zelkora::test::kCarriers;
using zelkora::test::kCommands;
using zelkora::test::kPageBytes;
using zelkora::test::Lines;
using zelkora::test::name_of;
using zelkora::test::repeated;

class CommandsMessagesTest : public zelkora::test::ScriptedBench {
 protected:
  void SetUp() override {
    ScriptedBench::SetUp();
    DbgFlag = 1;
  }

  Lines messages_of(int (*command)(), const std::deque<Bytes>& replies) {
    restart(replies);
    command();
    return messages();
  }

  // The dump of a page reply.
  static Lines page_lines(int count, const Bytes& bytes) {
    Lines lines = {"zelkora DD:AXI_ReadEEPValue Len=" + std::to_string(count) + "\n"};
    for (int i = 0; i < count; ++i) {
      const auto at = static_cast<size_t>(i);
      char line[40];
      std::snprintf(line, sizeof line, "zelkora DD:[%d]0x%02X\n", i,
                    at < bytes.size() ? static_cast<int8_t>(bytes[at]) : 0);
      lines.emplace_back(line);
    }
    return lines;
  }
};

Lines operator+(Lines first, const Lines& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

TEST_F(CommandsMessagesTest, TheFirmwareQueryPrintsEveryAttemptAndTheText) {
  for (const Carrier carrier : kCarriers) {
    SCOPED_TRACE(name_of(carrier));
    open_controller(carrier);
    EXPECT_EQ(
        messages_of(
            zelkora::test::run_get_firmware,
            {{0x81, 0xFF, 0x90, 0xA0, 0xB0, 0xC0, 0x80}, {0x01, 'A', 0x0D}, framed("V1.2")}),
        (Lines{
            "zelkora DD:GetFirmware Len:7 FFFFFF81 FFFFFFFF FFFFFF90 FFFFFFA0 FFFFFFB0 FFFFFFC0\n",
            "zelkora DD:GetFirmware Len:3 0001 0041 000D 0000 0000 0000\n",
            "zelkora DD:GetFirmware Len:6 0001 0056 0031 002E 0032 000D\n",
            "zelkora DD:GetFirmware FW = V1.2\n"}));
  }
}

TEST_F(CommandsMessagesTest, FirmwareTextsAreNoFormatStrings) {
  open_controller(Carrier::kSerial);
  EXPECT_EQ(messages_of(zelkora::test::run_get_firmware, {framed("%s%n%n")}).back(),
            "zelkora DD:GetFirmware FW = %s%n%n\n");
}

// The count of a read is kept in eight bits.
TEST_F(CommandsMessagesTest, AFailedSerialReadCountsAs255) {
  open_controller(Carrier::kSerial);
  EXPECT_EQ(messages_of(zelkora::test::run_get_firmware, {}),
            repeated({"zelkora DD:GetFirmware Len:255 0000 0000 0000 0000 0000 0000\n"}, 4));
  EXPECT_EQ(messages_of(command_row("AXI_WriteEEPValue").run, {}),
            repeated({"zelkora DD:device_type=2 rLen=255 [0]0x00 [1]0x00 [2]0x00 [3]0x00\n"}, 4));
  EXPECT_EQ(messages_of(zelkora::test::run_read_page, {}), repeated(page_lines(255, {}), 4));
}

TEST_F(CommandsMessagesTest, APortThatHungUpCountsAsNothing) {
  open_controller(Carrier::kSerial);
  unplug_port();
  EXPECT_EQ(messages_of(zelkora::test::run_get_firmware, {}),
            repeated({"zelkora DD:GetFirmware Len:0 0000 0000 0000 0000 0000 0000\n"}, 4));
  EXPECT_EQ(messages_of(zelkora::test::run_read_page, {}), repeated(page_lines(0, {}), 4));
}

TEST_F(CommandsMessagesTest, AReplyAtTheLimitCountsAsTheLimit) {
  for (const Carrier carrier : kCarriers) {
    SCOPED_TRACE(name_of(carrier));
    open_controller(carrier);
    restart({Bytes(60, 'a')});
    zelkora::test::run_get_firmware();
    EXPECT_EQ(messages().front(), "zelkora DD:GetFirmware Len:20 0061 0061 0061 0061 0061 0061\n");
    restart({Bytes(60, 'a')});
    zelkora::test::run_read_page();
    EXPECT_EQ(messages()[0], "zelkora DD:AXI_ReadEEPValue Len=40\n");
    EXPECT_EQ(messages()[39], "zelkora DD:[38]0x61\n");
    EXPECT_EQ(messages()[40],
              carrier == Carrier::kUsb ? "zelkora DD:[39]0x00\n" : "zelkora DD:[39]0x61\n");
    EXPECT_EQ(messages().size(), 4U * 41U);
  }
}

TEST_F(CommandsMessagesTest, CalibrationModePrintsItsSuccessOnly) {
  for (const Carrier carrier : kCarriers) {
    SCOPED_TRACE(name_of(carrier));
    open_controller(carrier);
    EXPECT_EQ(messages_of(EnterCalibMode, {{0x02}, kAcknowledge}),
              (Lines{"zelkora DD:EnterCalibMode--ok\n"}));
    EXPECT_EQ(messages_of(EnterCalibMode, {}), Lines());
  }
}

TEST_F(CommandsMessagesTest, AValueReadPrintsItsStartOnly) {
  open_controller(Carrier::kUsb);
  EXPECT_EQ(messages_of([] { return ReadEEPValue(84); }, {}),
            (Lines{"zelkora DD:ReadEEPValue device_type=1 Address:54\n"}));
  open_controller(Carrier::kSerial);
  EXPECT_EQ(messages_of([] { return ReadEEPValue(10); }, {{0x02}, framed("0001")}),
            (Lines{"zelkora DD:ReadEEPValue device_type=2 Address:0A\n"}));
  EXPECT_EQ(messages_of(GetCountUnit, {framed("0001")}),
            (Lines{"zelkora DD:ReadEEPValue device_type=2 Address:36\n"}));
}

TEST_F(CommandsMessagesTest, AValueWritePrintsItsStartAndEveryAttempt) {
  open_controller(Carrier::kUsb);
  EXPECT_EQ(
      messages_of([] { return WriteEEPValue(171, 65535); }, {{0x80, 0xFF, 0x7F}, kAcknowledge}),
      (Lines{"zelkora DD:WriteEEPValue---start Address:0xab Value:65535\n",
             "zelkora DD:device_type=1 [0]0xffffff80 [1]0xffffffff [2]0x7f\n",
             "zelkora DD:device_type=1 [0]0x1 [1]0x30 [2]0xd\n"}));
  open_controller(Carrier::kSerial);
  EXPECT_EQ(messages_of([] { return WriteEEPValue(70, static_cast<unsigned>(-5)); }, {}),
            (Lines{"zelkora DD:WriteEEPValue---start Address:0x46 Value:-5\n"} +
             repeated({"zelkora DD:device_type=2 [0]0x0 [1]0x0 [2]0x0\n"}, 4)));
}

TEST_F(CommandsMessagesTest, FourEmptyAttemptsArePrintedForADeviceOfNoKnownType) {
  open_controller(Carrier::kUsb);
  device_type = ZELKORA_TYPE_NONE;
  EXPECT_EQ(messages_of(zelkora::test::run_get_firmware, {framed("V1.2")}),
            repeated({"zelkora DD:GetFirmware Len:0 0000 0000 0000 0000 0000 0000\n"}, 4));
  EXPECT_EQ(messages_of([] { return WriteEEPValue(55, 2); }, {kAcknowledge}),
            (Lines{"zelkora DD:WriteEEPValue---start Address:0x37 Value:2\n"} +
             repeated({"zelkora DD:device_type=0 [0]0x0 [1]0x0 [2]0x0\n"}, 4)));
}

TEST_F(CommandsMessagesTest, APageReadPrintsEveryByteOfEveryAttempt) {
  const Bytes good = command_row("AXI_ReadEEPValue").reply;
  const Bytes odd = {0x01, 0x80, 0xFF};
  for (const Carrier carrier : kCarriers) {
    SCOPED_TRACE(name_of(carrier));
    open_controller(carrier);
    const Lines lines = messages_of(zelkora::test::run_read_page, {odd, good});
    EXPECT_EQ(lines, page_lines(3, odd) + page_lines(37, good));
    EXPECT_EQ(lines[1], "zelkora DD:[0]0x01\n");
    EXPECT_EQ(lines[2], "zelkora DD:[1]0xFFFFFF80\n");
    EXPECT_EQ(lines[3], "zelkora DD:[2]0xFFFFFFFF\n");
  }
}

TEST_F(CommandsMessagesTest, APageWritePrintsEveryAttempt) {
  open_controller(Carrier::kUsb);
  EXPECT_EQ(
      messages_of(command_row("AXI_WriteEEPValue").run, {{0x80, 0xFF, 0x7F, 0x90}, kAcknowledge}),
      (Lines{"zelkora DD:device_type=1 rLen=4 [0]0xffffff80 [1]0xffffffff [2]0x7f [3]0xffffff90\n",
             "zelkora DD:device_type=1 rLen=3 [0]0x01 [1]0x30 [2]0x0d [3]0x00\n"}));
  open_controller(Carrier::kSerial);
  EXPECT_EQ(messages_of(command_row("AXI_WriteEEPValue").run, {{0x01, 0x30, 0x0D, 0x09}}),
            (Lines{"zelkora DD:device_type=2 rLen=4 [0]0x01 [1]0x30 [2]0x0d [3]0x09\n"}));
}

TEST_F(CommandsMessagesTest, TheOtherCommandsPrintNothing) {
  for (const Carrier carrier : kCarriers) {
    SCOPED_TRACE(name_of(carrier));
    open_controller(carrier);
    for (int (*command)() : {PermanentParameter, ResetController, ChkAutoSetHid,
                             command_row("SetBackLightDuty").run}) {
      EXPECT_EQ(messages_of(command, {{0x02}, kAcknowledge}), Lines());
    }
  }
}

TEST_F(CommandsMessagesTest, NothingIsPrintedUnlessDebugging) {
  DbgFlag = 0;
  for (const CommandRow& row : kCommands) {
    for (const Carrier carrier : kCarriers) {
      SCOPED_TRACE(name_of(carrier) + " " + row.name);
      open_controller(carrier);
      EXPECT_EQ(messages_of(row.run, {{0x02}, row.reply}), Lines());
    }
  }
}

// Attempts are printed when they are over, their waits included.
TEST_F(CommandsMessagesTest, AnAttemptIsPrintedAfterItsReply) {
  open_controller(Carrier::kSerial);
  restart({kAcknowledge});
  EXPECT_EQ(WriteEEPValue(55, 2), 1);
  EXPECT_EQ(trace(), (Lines{"log zelkora DD:WriteEEPValue---start Address:0x37 Value:2",
                            "write /dev/ttyS8: 01 53 50 33 37 30 30 30 32 0D", "usleep 50000",
                            "read /dev/ttyS8 10: 01 30 0D",
                            "log zelkora DD:device_type=2 [0]0x1 [1]0x30 [2]0xd"}));
}

}  // namespace
