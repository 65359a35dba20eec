// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "pct_bench.h"

namespace {

using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::Way;
using zelkora::test::way_name;

using ResetTest = zelkora::test::PctWays;
INSTANTIATE_TEST_SUITE_P(Pct, ResetTest, testing::ValuesIn(kWays), way_name);

TEST_P(ResetTest, TheEntryIsOpenedResetAndClosed) {
  set_entry(GetParam(), 2);
  follow_modes();
  HidRaw = 77;
  EXPECT_EQ(PCT_ResetDevice(2), 1);
  const std::string path = node();
  const Lines expected =
      is_8752() ? Lines{"open " + path + " O_RDONLY",
                        "set_report 8: 91 02 00 82 90",
                        "usleep 5000",
                        "set_report 6: 73 0C",
                        "usleep 10000",
                        "set_report 8: 85 01 00 02",
                        "set_report 8: 91 02 00 82 01",
                        "usleep 5000",
                        "set_report 6: 73 0C",
                        "usleep 10000",
                        "close " + path}
                : Lines{"open " + path + " O_RDONLY", "set_report 8: 84 09", "close " + path};
  EXPECT_EQ(trace_of({"open", "close", "set_report", "usleep 5000", "usleep 10000"}), expected);
}

TEST_P(ResetTest, ANodeThatCannotBeOpenedIsNotReset) {
  set_entry(GetParam());
  kernel.fail_open(node(), EACCES, 1);
  EXPECT_EQ(PCT_ResetDevice(0), 0);
  EXPECT_EQ(messages(), Lines{"EE:unable to open device\n"});
  EXPECT_EQ(count_of("ioctl"), 0U);
  EXPECT_EQ(count_of("close"), 0U);
}

TEST_P(ResetTest, AResetThatCannotBeSentCountsAsDone) {
  Way way = GetParam();
  if (way.is_8752()) way.family = 2;  // its command mode needs reports that go out
  set_entry(way);
  fail_sends(1);
  EXPECT_EQ(PCT_ResetDevice(0), 1);
  EXPECT_TRUE(device.received.empty());
  EXPECT_EQ(count_of("close"), 1U);
}

}  // namespace
