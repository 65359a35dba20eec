// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "host_commands.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "typed_text.h"

namespace zelkora::sim {
namespace {

class HostCommandsTest : public testing::Test {
 protected:
  HostCommands::Outcome run(std::string_view line) {
    std::vector<std::string> words;
    for (const auto word : split(line, ' ')) words.emplace_back(word);
    return commands_.run(words);
  }
  std::string output(std::string_view line) {
    const auto outcome = run(line);
    EXPECT_EQ(outcome.status, 0) << line;
    return outcome.text;
  }
  std::string error(std::string_view line) {
    const auto outcome = run(line);
    EXPECT_EQ(outcome.status, 1) << line;
    return outcome.text;
  }

  HostCommands commands_{{"ttyS0", "ttyUSB3"}};
};

TEST_F(HostCommandsTest, LogTheSerialPortsOfTheSession) {
  EXPECT_EQ(output("dmesg"),
            "[    0.000000] Linux version 6.1.0 (virtual)\n"
            "[    0.500000] serial8250: ttyS0 (base_baud = 115200) is a 16550A\n"
            "[    1.500000] usb 1-1: serial converter now attached to ttyUSB3\n");
}

TEST_F(HostCommandsTest, RunTheDaemonsOfStartedUnits) {
  EXPECT_EQ(error("pgrep vastrel1"), "");
  EXPECT_EQ(output("systemctl start vastrel1@ttyS0.service"), "");
  EXPECT_EQ(output("systemctl start vastrel2@ttyUSB3.service pelvand"), "");
  EXPECT_EQ(output("pgrep vastrel1"), "5000001\n");
  EXPECT_EQ(output("pgrep vastrel2"), "5000002\n");
  EXPECT_EQ(output("pgrep -f vastrel"), "5000001\n5000002\n");
  EXPECT_EQ(output("pidof vastrel2 vastrel1"), "5000002 5000001\n");
  EXPECT_EQ(output("pidof pelvand"), "5000003\n");
  EXPECT_EQ(error("pidof vastrel"), "");
}

TEST_F(HostCommandsTest, GiveAStartedUnitANewIdOnlyWhenItIsRestarted) {
  run("systemctl start vastrel1@ttyS0.service");
  run("systemctl start vastrel1@ttyS0.service");
  EXPECT_EQ(output("pidof vastrel1"), "5000001\n");
  run("systemctl restart vastrel1@ttyS0.service");
  EXPECT_EQ(output("pidof vastrel1"), "5000002\n");
}

TEST_F(HostCommandsTest, EndDaemonsByUnitAndByName) {
  run("systemctl start vastrel1@ttyS0.service vastrel11@ttyS1.service");
  EXPECT_EQ(output("systemctl stop vastrel1@ttyS0.service"), "");
  EXPECT_EQ(error("pidof vastrel1"), "");
  EXPECT_EQ(output("killall -9 vastrel11"), "");
  EXPECT_EQ(error("pidof vastrel11"), "");
  EXPECT_EQ(error("killall vastrel11"), "vastrel11: no process found\n");
}

TEST_F(HostCommandsTest, RefuseWhatTheyDoNotKnow) {
  EXPECT_EQ(output("systemctl daemon-reload"), "");
  EXPECT_EQ(output("systemctl --now enable vastrel1@ttyS0.service"), "");
  EXPECT_EQ(error("pidof vastrel1"), "");
  EXPECT_EQ(error("systemctl poweroff"), "Unknown command verb 'poweroff'.\n");
  EXPECT_EQ(error("systemctl"), "Unknown command verb ''.\n");
  EXPECT_EQ(error("systemctl start"), "Too few arguments.\n");
  EXPECT_EQ(run("reboot").status, 127);
  EXPECT_EQ(commands_.run({}).status, 1);
}

TEST_F(HostCommandsTest, FailAsToldWithoutDoingAnything) {
  run("systemctl start vastrel1@ttyS0.service");
  EXPECT_TRUE(commands_.fail("killall", 4));
  EXPECT_EQ(run("killall vastrel1").status, 4);
  EXPECT_EQ(output("pidof vastrel1"), "5000001\n");
  EXPECT_TRUE(commands_.fail("killall", 5));
  EXPECT_EQ(run("killall vastrel1").status, 5);
  EXPECT_TRUE(commands_.fail("killall", 0));
  EXPECT_EQ(output("killall vastrel1"), "");
  EXPECT_FALSE(commands_.fail("rm", 1));
}

TEST_F(HostCommandsTest, AreRecordedInOrder) {
  std::vector<std::string> traced;
  commands_.set_trace([&](const std::string& line) { traced.push_back(line); });
  run("dmesg");
  run("pgrep vastrel1");
  run("systemctl start vastrel1@ttyS0.service");
  const std::vector<std::string> expected = {"dmesg", "pgrep vastrel1 -> 1",
                                             "systemctl start vastrel1@ttyS0.service"};
  EXPECT_EQ(commands_.record(), expected);
  EXPECT_EQ(traced, expected);
}

TEST_F(HostCommandsTest, AreRecordedWordForWordWhateverTheWordsHold) {
  commands_.run(std::vector<std::string>{"killall", "a b", "$(x)", "", "c\nd"});
  EXPECT_EQ(commands_.record(), std::vector<std::string>{"killall 'a b' '$(x)' '' 'c\nd' -> 1"});
}

}  // namespace
}  // namespace zelkora::sim
