// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// How every command is carried: what is sent, read and waited for, in order, and how often.
#include <sys/ioctl.h>

#include <cerrno>

#include "command_rows.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::Carrier;
using zelkora::test::CommandRow;
using zelkora::test::kCarriers;
using zelkora::test::kCommands;
using zelkora::test::Lines;
using zelkora::test::name_of;
using zelkora::test::repeated;
using zelkora::test::ScriptedBench;
using zelkora::test::with_bytes;

class ExchangeTest : public ScriptedBench, public testing::WithParamInterface<CommandRow> {
 protected:
  // Everything that an exchange does to the outside.
  Lines steps() const {
    return trace_of({"write", "read", "usleep", "sleep", "ioctl HIDIOCSREPORT", "set_report",
                     "ioctl HIDIOCGREPORT", "get_report"});
  }

  static void wait(Lines& lines, unsigned microseconds) {
    if (microseconds != 0) lines.push_back("usleep " + std::to_string(microseconds));
  }

  // One attempt over USB and the reply that it gets.
  static Lines usb_attempt(const CommandRow& row, const Bytes& reply) {
    Bytes sent = row.frame;
    sent.insert(sent.begin(), static_cast<uint8_t>(row.frame.size()));
    Bytes received = reply;
    received.insert(received.begin(), static_cast<uint8_t>(reply.size()));
    Lines lines = {"ioctl HIDIOCSREPORT type=3 id=1", with_bytes("set_report 1", sent),
                   "usleep 50000"};
    wait(lines, row.usb_wait);
    lines.emplace_back("ioctl HIDIOCGREPORT type=3 id=1");
    lines.push_back(reply.empty() ? "get_report 1:" : with_bytes("get_report 1", received));
    wait(lines, row.settle);
    return lines;
  }

  static std::string read_line(const CommandRow& row) {
    return std::string("read ") + kPort + " " + std::to_string(row.limit);
  }

  // The same on a serial port.
  static Lines serial_attempt(const CommandRow& row, const Bytes& reply) {
    Lines lines = {with_bytes(std::string("write ") + kPort, row.frame)};
    wait(lines, row.serial_wait);
    lines.push_back(reply.empty() ? read_line(row) + " -> EAGAIN"
                                  : with_bytes(read_line(row), reply));
    wait(lines, row.settle);
    return lines;
  }

  static Lines attempt(Carrier carrier, const CommandRow& row, const Bytes& reply) {
    return carrier == Carrier::kUsb ? usb_attempt(row, reply) : serial_attempt(row, reply);
  }

  static bool works(Carrier carrier, const CommandRow& row) {
    return carrier == Carrier::kSerial || row.works_over_usb;
  }
};

INSTANTIATE_TEST_SUITE_P(Commands, ExchangeTest, testing::ValuesIn(kCommands),
                         [](const testing::TestParamInfo<CommandRow>& row) {
                           return std::string(row.param.name);
                         });

TEST_P(ExchangeTest, AnAcceptedReplyEndsItAfterOneAttempt) {
  const CommandRow& row = GetParam();
  for (const Carrier carrier : kCarriers) {
    SCOPED_TRACE(name_of(carrier));
    open_controller(carrier);
    restart({row.reply});
    const bool accepted = works(carrier, row);
    EXPECT_EQ(row.run(), accepted ? row.success : row.failure);
    EXPECT_EQ(steps(), repeated(attempt(carrier, row, row.reply), accepted ? 1 : 4));
  }
}

TEST_P(ExchangeTest, ASilentControllerIsAskedFourTimes) {
  const CommandRow& row = GetParam();
  for (const Carrier carrier : kCarriers) {
    SCOPED_TRACE(name_of(carrier));
    open_controller(carrier);
    EXPECT_EQ(row.run(), row.failure);
    EXPECT_EQ(steps(), repeated(attempt(carrier, row, {}), 4));
  }
}

TEST_P(ExchangeTest, ARefusedReplyIsFollowedByTheNextAttemptAtOnce) {
  const CommandRow& row = GetParam();
  const Bytes refused = {0x02, 0x31, 0x0A};
  for (const Carrier carrier : kCarriers) {
    if (!works(carrier, row)) continue;
    for (size_t failures = 0; failures <= 4; ++failures) {
      SCOPED_TRACE(testing::Message() << name_of(carrier) << " after " << failures);
      open_controller(carrier);
      std::deque<Bytes> replies(failures, refused);
      replies.push_back(row.reply);
      restart(replies);
      EXPECT_EQ(row.run(), failures < 4 ? row.success : row.failure);
      Lines expected = repeated(attempt(carrier, row, refused), failures);
      if (failures < 4) {
        const Lines last = attempt(carrier, row, row.reply);
        expected.insert(expected.end(), last.begin(), last.end());
      }
      EXPECT_EQ(steps(), expected);
    }
  }
}

TEST_P(ExchangeTest, AFailedSendStillWaitsAndReads) {
  const CommandRow& row = GetParam();
  open_controller(Carrier::kUsb);
  restart({row.reply});
  kernel.fail_ioctl(kHiddev, HIDIOCSREPORT, EIO, 1);
  EXPECT_EQ(row.run(), row.works_over_usb ? row.success : row.failure);
  Lines expected = usb_attempt(row, row.reply);
  // The report never reaches the device, and its own wait falls away.
  expected[0] += " -> EIO";
  expected.erase(expected.begin() + 1, expected.begin() + 3);
  const Lines again = repeated(usb_attempt(row, row.reply), row.works_over_usb ? 0 : 3);
  expected.insert(expected.end(), again.begin(), again.end());
  EXPECT_EQ(steps(), expected);

  open_controller(Carrier::kSerial);
  restart({row.reply});
  kernel.fail_write(kPort, EIO, 1);
  EXPECT_EQ(row.run(), row.success);
  expected = serial_attempt(row, row.reply);
  expected[0] += " -> EIO";
  EXPECT_EQ(steps(), expected);
}

TEST_P(ExchangeTest, AFailedReadIsARefusedReply) {
  const CommandRow& row = GetParam();
  open_controller(Carrier::kSerial);
  restart({row.reply});
  kernel.fail_read(kPort, EIO, 3);
  EXPECT_EQ(row.run(), row.success);
  EXPECT_EQ(count_of("write"), 4U);
  EXPECT_EQ(trace_of({"read"}),
            (Lines{read_line(row) + " -> EIO", read_line(row) + " -> EIO",
                   read_line(row) + " -> EIO", with_bytes(read_line(row), row.reply)}));
}

TEST_P(ExchangeTest, APortThatHungUpIsARefusedReply) {
  const CommandRow& row = GetParam();
  open_controller(Carrier::kSerial);
  unplug_port();
  EXPECT_EQ(row.run(), row.failure);
  EXPECT_EQ(trace_of({"read"}), repeated({read_line(row) + ":"}, 4));
}

// A reply must not be completed by what the attempt before it left behind.
TEST_P(ExchangeTest, EveryAttemptStartsWithAnEmptyReply) {
  const CommandRow& row = GetParam();
  Bytes headless = row.reply;
  headless[0] = 0x02;
  for (const Carrier carrier : kCarriers) {
    SCOPED_TRACE(name_of(carrier));
    open_controller(carrier);
    restart({headless, {0x01}});
    EXPECT_EQ(row.run(), row.failure);
    EXPECT_EQ(controller.frames.size(), 4U);
  }
}

TEST_P(ExchangeTest, NothingIsCarriedForOtherDeviceTypes) {
  const CommandRow& row = GetParam();
  open_controller(Carrier::kUsb);
  constexpr unsigned char kOthers[] = {ZELKORA_TYPE_NONE, ZELKORA_TYPE_PCT, 4, 255};
  for (const unsigned char type : kOthers) {
    SCOPED_TRACE(int{type});
    restart({row.reply});
    device_type = type;
    EXPECT_EQ(row.run(), row.failure);
    EXPECT_EQ(trace(), Lines());
  }
}

TEST_P(ExchangeTest, EveryAttemptSendsTheSameFrame) {
  const CommandRow& row = GetParam();
  for (const Carrier carrier : kCarriers) {
    SCOPED_TRACE(name_of(carrier));
    open_controller(carrier);
    row.run();
    EXPECT_EQ(controller.frames, std::vector<Bytes>(4, row.frame));
  }
}

// A hiddev node hides that a controller stalled: its field still holds the command, and that is
// what comes back. Commands that end where their reply would end take it for one.
TEST_P(ExchangeTest, OnAHiddevNodeAStalledReplyReadsAsTheCommandItself) {
  const CommandRow& row = GetParam();
  zelkora::test::Panel& panel = open_resistive();
  panel.controller.faults.silent = true;
  const std::string name = row.name;
  const bool taken = name == "GetFirmware" || name == "ReadEEPValue";
  EXPECT_EQ(row.run(), name == "GetFirmware" ? 1 : 0);
  EXPECT_EQ(trace_of({"get_report"}), repeated({"get_report 1: stall"}, taken ? 1 : 4));
}

}  // namespace
