// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <array>

#include "support/bench.h"

namespace {

using HostConfigTest = zelkora::test::Bench;
using Config = std::array<unsigned char, ZELKORA_CONFIG_BYTES>;

Config config() {
  Config bytes;
  std::ranges::copy(MyConfig, bytes.begin());
  return bytes;
}

TEST_F(HostConfigTest, TakesOverTheNineBytesOfTheHost) {
  host.config = {11, 12, 13, 14, 15, 16, 17, 18, 19};
  EXPECT_EQ(GetTouchConf(0), 1);
  EXPECT_EQ(config(), (Config{11, 12, 13, 14, 15, 16, 17, 18, 19}));
}

TEST_F(HostConfigTest, AFailedReadKeepsBytesFiveToSevenAndClearsTheOthers) {
  host.config = {11, 12, 13, 14, 15, 16, 17, 18, 19};
  ASSERT_EQ(GetTouchConf(0), 1);
  host.config_read = 0;
  EXPECT_EQ(GetTouchConf(0), 0);
  EXPECT_EQ(config(), (Config{0, 0, 0, 0, 0, 16, 17, 18, 0}));
  EXPECT_EQ(InitialZelkora(0), 0);
}

TEST_F(HostConfigTest, EveryAnswerButZeroCountsAsRead) {
  for (const int answer : {1, 2, 0x80, 0xFF}) {
    SCOPED_TRACE(answer);
    host.config_read = static_cast<unsigned char>(answer);
    EXPECT_EQ(GetTouchConf(0), 1);
    EXPECT_EQ(InitialZelkora(0), 1);
  }
}

TEST_F(HostConfigTest, TakesOverTheDebugSwitchAsItIs) {
  for (const int debug : {1, 0, 2, -1}) {
    host.debug = debug;
    GetTouchConf(0);
    EXPECT_EQ(DbgFlag, debug);
  }
}

TEST_F(HostConfigTest, TakesOverTheDebugSwitchBeforeTheConfigurationIsRead) {
  for (const int debug : {1, 0, 2}) {
    host.debug = debug;
    DbgFlag = 77;
    GetTouchConf(0);
    EXPECT_EQ(host.debug_flag_at_read, debug);
  }
}

TEST_F(HostConfigTest, TakesOverTheDebugSwitchEvenWhenTheReadFails) {
  host.debug = 1;
  host.config_read = 0;
  EXPECT_EQ(GetTouchConf(0), 0);
  EXPECT_EQ(DbgFlag, 1);
}

TEST_F(HostConfigTest, AsksTheHostOnceForEachCallWhateverTheArgument) {
  int calls = 0;
  for (const int argument : {0, 1, -1, 0x7FFFFFFF}) {
    EXPECT_EQ(InitialZelkora(argument), 1);
    EXPECT_EQ(host.config_reads, ++calls);
    EXPECT_EQ(GetTouchConf(argument), 1);
    EXPECT_EQ(host.config_reads, ++calls);
  }
}

TEST_F(HostConfigTest, InitialZelkoraReadsBothTheSwitchesAndTheDebugSwitch) {
  host.config[ZELKORA_CONFIG_HIDRAW] = 1;
  host.debug = 1;
  EXPECT_EQ(InitialZelkora(0), 1);
  EXPECT_EQ(MyConfig[ZELKORA_CONFIG_HIDRAW], 1);
  EXPECT_EQ(DbgFlag, 1);
}

}  // namespace
