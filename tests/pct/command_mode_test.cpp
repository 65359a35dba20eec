// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "pct_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::debug_messages;
using zelkora::test::joined;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::padded;
using zelkora::test::PctWays;
using zelkora::test::repeated;
using zelkora::test::way_name;

using CommandModeTest = PctWays;
INSTANTIATE_TEST_SUITE_P(Pct, CommandModeTest, testing::ValuesIn(kWays), way_name);

const Bytes kQuery = {0x06, 0x73, 0x0C, 0x00, 0x00, 0x00, 0x00, 0x00};

Bytes mode_command(uint8_t mode) { return {0x08, 0x91, 0x02, 0x00, 0x82, mode}; }

TEST_P(CommandModeTest, SettingAModeSendsItAndWaitsForNothing) {
  open_way();
  for (const uint8_t mode : {uint8_t{0x90}, uint8_t{0x01}, uint8_t{0xFF}}) {
    SCOPED_TRACE(int{mode});
    clear_trace();
    set_device_mode(mode);
    EXPECT_EQ(wire(), sent(mode_command(mode)));
    EXPECT_EQ(messages(), Lines());
    EXPECT_EQ(device.received.back().second, padded({0x91, 0x02, 0x00, 0x82, mode}, 63));
  }
}

TEST_P(CommandModeTest, AModeThatCannotBeSentIsABraceAndAnError) {
  open_way();
  fail_sends(1);
  set_device_mode(0x90);
  EXPECT_EQ(messages(), debug_messages({"{ failed err:000\n"}));
  EXPECT_TRUE(device.received.empty());
}

TEST_P(CommandModeTest, AskingComparesTheFourthByteOfTheReply) {
  const struct {
    uint8_t expected, actual;
    int result;
    const char* message;
  } kRows[] = {
      {0x90, 0x90, 1, "get_device_mode 0x90:0x90---match\n"},
      {0x01, 0x01, 1, "get_device_mode 0x1:0x1---match\n"},
      {0x90, 0x01, 0, "get_device_mode 0x90:0x1----not match\n"},
      {0x01, 0x90, 0, "get_device_mode 0x1:0x90----not match\n"},
      {0x00, 0xFF, 0, "get_device_mode 0x0:0xff----not match\n"},
      {0xBB, 0xCC, 0, "get_device_mode 0xbb:0xcc----not match\n"},
  };
  open_way();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.message);
    clear_trace();
    answers_mode(row.actual);
    EXPECT_EQ(get_device_mode(row.expected), row.result);
    EXPECT_EQ(wire(), joined({sent(kQuery), {"usleep 10000"}, received(7, device.answers[7])}));
    EXPECT_EQ(messages(), debug_messages({row.message}));
    EXPECT_EQ(device.received.back().second, padded({0x73, 0x0C}, 63));
  }
}

TEST_P(CommandModeTest, AQuestionThatCannotBeSentIsNotWaitedFor) {
  open_way();
  answers_mode(0x90);
  fail_sends(1);
  EXPECT_EQ(get_device_mode(0x90), 0);
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(messages(), debug_messages({"failed err:000\n"}));
}

TEST_P(CommandModeTest, AnAnswerThatCannotBeReadIsNoMatchAndNoMessage) {
  forget_report(7);
  open_way();
  // Not even the mode that an empty buffer would show.
  EXPECT_EQ(get_device_mode(0x00), 0);
  EXPECT_EQ(trace_of({"set_report", "usleep"}),
            joined({{"set_report 6: 73 0C"}, settled(), {"usleep 10000"}}));
  EXPECT_EQ(messages(), Lines());
}

TEST_P(CommandModeTest, EnteringAsksForCommandModeAndLooksWhetherItIsThere) {
  follow_modes();
  open_way();
  EXPECT_EQ(enter_cmd_mode(), 20);
  EXPECT_EQ(wire(), joined({sent(mode_command(0x90)),
                            {"usleep 5000"},
                            sent(kQuery),
                            {"usleep 10000"},
                            received(7, device.answers[7])}));
  EXPECT_EQ(messages(),
            debug_messages({"enter_cmd_mode\n", "get_device_mode 0x90:0x90---match\n"}));
}

TEST_P(CommandModeTest, LeavingAsksForNormalModeAndLooksWhetherItIsThere) {
  follow_modes();
  answers_mode(0x90);
  open_way();
  EXPECT_EQ(leave_cmd_mode(), 20);
  EXPECT_EQ(wire(), joined({sent(mode_command(0x01)),
                            {"usleep 5000"},
                            sent(kQuery),
                            {"usleep 10000"},
                            received(7, device.answers[7])}));
  EXPECT_EQ(messages(), debug_messages({"leave_cmd_mode\n", "get_device_mode 0x1:0x1---match\n"}));
}

constexpr struct {
  int refusals;
  int result;
  size_t attempts;
} kAttempts[] = {{0, 20, 1},  {1, 19, 2},   {10, 10, 11}, {19, 1, 20},
                 {20, 0, 21}, {21, -1, 21}, {100, -1, 21}};

TEST_P(CommandModeTest, TheResultIsTheAttemptsLeft) {
  open_way();
  for (const auto& row : kAttempts) {
    SCOPED_TRACE(row.refusals);
    follow_modes(row.refusals);
    clear_trace();
    EXPECT_EQ(enter_cmd_mode(), row.result);
    EXPECT_EQ(count_of("set_report 8"), row.attempts);

    follow_modes(row.refusals);
    answers_mode(0x90);
    clear_trace();
    EXPECT_EQ(leave_cmd_mode(), row.result);
    EXPECT_EQ(count_of("set_report 8"), row.attempts);
  }
}

TEST_P(CommandModeTest, EveryAttemptIsAWholeOne) {
  follow_modes(100);
  open_way();
  EXPECT_EQ(enter_cmd_mode(), -1);
  EXPECT_EQ(exchanges(), repeated(21, joined({{"set_report 8: 91 02 00 82 90"},
                                              settled(),
                                              {"usleep 5000"},
                                              {"set_report 6: 73 0C"},
                                              settled(),
                                              {"usleep 10000", "get_report 7: AA BB CC 01 DD"}})));
  EXPECT_EQ(messages(),
            joined({debug_messages({"enter_cmd_mode\n"}),
                    repeated(21, debug_messages({"get_device_mode 0x90:0x1----not match\n"}))}));
}

TEST_P(CommandModeTest, ReportsThatCannotBeSentUseAttemptsUpToo) {
  follow_modes();
  open_way();
  fail_sends(3);
  EXPECT_EQ(enter_cmd_mode(), 18);
  // The first attempt sends neither report; the second only the question, which finds nothing new.
  EXPECT_EQ(messages(),
            debug_messages({"enter_cmd_mode\n", "{ failed err:000\n", "failed err:000\n",
                            "{ failed err:000\n", "get_device_mode 0x90:0x1----not match\n",
                            "get_device_mode 0x90:0x90---match\n"}));
  EXPECT_EQ(count_of("usleep 5000"), 3U);
  EXPECT_EQ(count_of("usleep 10000"), 2U);
}

TEST_P(CommandModeTest, ADeviceThatTakesNothingIsTried21Times) {
  open_way();
  fail_sends(-1);
  EXPECT_EQ(leave_cmd_mode(), -1);
  EXPECT_EQ(trace_of({"usleep"}), repeated(21, {"usleep 5000"}));
  EXPECT_EQ(messages(),
            joined({debug_messages({"leave_cmd_mode\n"}),
                    repeated(21, debug_messages({"{ failed err:000\n", "failed err:000\n"}))}));
}

}  // namespace
