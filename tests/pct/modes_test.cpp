// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Changing the POS mode of the open device.
#include "modes_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::debug_messages;
using zelkora::test::joined;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::repeated;
using zelkora::test::way_name;

using ModesTest = zelkora::test::ModesBench;
INSTANTIATE_TEST_SUITE_P(Pct, ModesTest, testing::ValuesIn(kWays), way_name);

TEST_P(ModesTest, AModeThatIsThereAlreadyIsOnlyRead) {
  open_way();
  report(1);
  EXPECT_EQ(SetCurrPOSMode(kPanel, 1), 0);
  EXPECT_EQ(wire(), joined({reading(1), {"usleep 200000"}}));
  EXPECT_EQ(messages(), joined({start_message(), choice_message(0x8753, 1), read_messages(1),
                                current_message(1), end_message(0)}));
}

TEST_P(ModesTest, AnotherModeIsWrittenAndReadBack) {
  entry.PID = 0x9969;  // of the mode
  open_way();
  report(1);
  take_modes();
  EXPECT_EQ(SetCurrPOSMode(kPanel, 2), 1);
  EXPECT_EQ(wire(), joined({reading(1), writing(2), reading(2), {"usleep 200000"}}));
  EXPECT_EQ(messages(), joined({start_message(), choice_message(0x9969, 2), read_messages(1),
                                current_message(1), hit_messages(2), end_message(1)}));
}

TEST_P(ModesTest, TheProductIdIsWrittenFirst) {
  open_way();
  report(1);
  take_modes();
  EXPECT_EQ(SetCurrPOSMode(kPanel, 2), 1);
  const Lines id = is_8752() ? Lines() : writing_id(0x9969);
  const Lines id_said = is_8752() ? Lines() : id_message(0x9969);
  EXPECT_EQ(wire(), joined({id, reading(1), writing(2), reading(2), {"usleep 200000"}}));
  EXPECT_EQ(messages(),
            joined({start_message(), choice_message(0x9969, 2), id_said, read_messages(1),
                    current_message(1), hit_messages(2), end_message(1)}));
}

// The mode is there, but under another product id.
TEST_P(ModesTest, ANewProductIdHasTheModeWrittenAgain) {
  open_way();
  report(2);
  const Lines read_only = joined({reading(2), {"usleep 200000"}});
  const Lines rewritten =
      joined({writing_id(0x9969), reading(2), writing(2), reading(2), {"usleep 200000"}});
  EXPECT_EQ(SetCurrPOSMode(kPanel, 2), is_8752() ? 0 : 1);
  EXPECT_EQ(wire(), is_8752() ? read_only : rewritten);
}

TEST_P(ModesTest, AModeIsWrittenUpToElevenTimes) {
  entry.PID = 0x9969;
  open_way();
  for (const int misses : {1, 2, 10}) {
    SCOPED_TRACE(misses);
    report(1);
    take_modes(misses);
    clear_trace();
    EXPECT_EQ(SetCurrPOSMode(kPanel, 2), 1);
    const auto times = static_cast<size_t>(misses);
    EXPECT_EQ(wire(), joined({reading(1),
                              repeated(times, joined({writing(2), reading(1)})),
                              writing(2),
                              reading(2),
                              {"usleep 200000"}}));
    EXPECT_EQ(messages(), joined({start_message(), choice_message(0x9969, 2), read_messages(1),
                                  current_message(1), repeated(times, miss_messages(2, 1)),
                                  hit_messages(2), end_message(1)}));
  }
}

TEST_P(ModesTest, AfterElevenMissesTheModeReportedIsTheOneAskedFor) {
  entry.PID = 0x9969;
  open_way();
  report(1);
  const Lines misses = joined({reading(1), repeated(11, joined({writing(2), reading(1)}))});
  EXPECT_EQ(SetCurrPOSMode(kPanel, 2), is_8752() ? 0 : 1);
  const Lines settled =
      is_8752() ? reading(1) : joined({writing_id(0x8753), reading(1), writing(1), reading(1)});
  EXPECT_EQ(wire(), joined({misses, settled, {"usleep 200000"}}));
  const Lines first = joined({start_message(), choice_message(0x9969, 2), read_messages(1),
                              current_message(1), repeated(11, miss_messages(2, 1))});
  const Lines id_said = is_8752() ? Lines() : id_message(0x8753);
  const Lines rewritten = is_8752() ? Lines() : hit_messages(1);
  EXPECT_EQ(messages(), joined({first, choice_message(0x8753, 1), id_said, read_messages(1),
                                current_message(1), rewritten, end_message(is_8752() ? 0 : 1)}));
}

TEST_P(ModesTest, TheModeToSettleOnIsTheOneReadLast) {
  entry.PID = 0x9969;
  open_way();
  report(2);
  std::deque<int> modes(11, 1);  // the first reading and ten after writes
  modes.push_back(2);            // the last one
  report_next(modes);
  // A mode that is none has the product id 0, which is written; the mouse's is the panel's already.
  EXPECT_EQ(SetCurrPOSMode(kPanel, 5), is_8752() ? 0 : 1);
  EXPECT_EQ(count_of("usleep 200000"), 1U);
  std::vector<int> expected(11, 5);
  if (!is_8752()) expected.push_back(2);
  EXPECT_EQ(written_modes, expected);
}

TEST_P(ModesTest, ANewRoundHasElevenAttemptsAgain) {
  entry.PID = 0x9969;
  open_way();
  // It settles on the first of these, but by then the second one is reported.
  std::deque<int> modes(12, 6);
  modes.insert(modes.end(), 12, 7);
  report_next(modes);
  report(7);
  SetCurrPOSMode(kPanel, 2);
  std::vector<int> expected(11, 2);
  expected.insert(expected.end(), 11, 6);
  EXPECT_EQ(written_modes, expected);
}

TEST_P(ModesTest, AModeThatCannotBeReadIsSettledOnToo) {
  entry.PID = 0x9969;
  open_way();
  report(kSilent);
  EXPECT_EQ(SetCurrPOSMode(kPanel, 2), 0);
  EXPECT_EQ(written_modes, std::vector<int>(11, 2));
  EXPECT_EQ(messages().back(), "zelkora DD:***SetCurrPOSMode End reset:0***\n");
  EXPECT_EQ(messages()[messages().size() - 2], "zelkora DD:***SetCurrPOSMode CurrPOSMode:0***\n");
}

TEST_P(ModesTest, AModeThatFitsInNoCommandIsCutAndNeverTaken) {
  entry.PID = 0;  // of a mode that is none
  open_way();
  report(1);
  for (const int mode : {-1, 300, 256 + 1}) {
    SCOPED_TRACE(mode);
    device.received.clear();
    written_modes.clear();
    SetCurrPOSMode(kPanel, mode);
    EXPECT_EQ(device.received[1].second[is_8752() ? 4 : 3], static_cast<uint8_t>(mode + 31));
    EXPECT_EQ(written_modes.size(), is_8752() ? 11U : 12U);  // the last one is what it settles on
  }
}

// The result is that of the last write, whatever was read.
TEST_P(ModesTest, AModeThatCannotBeSentButIsReportedGivesNothing) {
  if (is_8752()) {
    entry.PID = 0x9969;
    report_next({1, 2});
  } else {
    report(2);  // under another product id
  }
  open_way();
  const auto obey = device.on_command;
  device.on_command = [this, obey, queries = 0](const Bytes& payload) mutable {
    obey(payload);
    if (payload[0] == 0xA2 && queries++ == 0) fail_sends(1);
  };
  EXPECT_EQ(SetCurrPOSMode(kPanel, 2), 0);
  EXPECT_TRUE(written_modes.empty());
  EXPECT_EQ(count_of("usleep 200000"), 1U);
  EXPECT_EQ(count_of("usleep 10000"), 0U);
  EXPECT_EQ(Lines(messages().end() - 2, messages().end()),
            debug_messages({"***SetCurrPOSMode WritePOSMode mode:2 NewPosMode:2***\n",
                            "***SetCurrPOSMode End reset:0***\n"}));
}

}  // namespace
