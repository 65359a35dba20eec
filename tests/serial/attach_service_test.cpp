// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cerrno>

#include "serial_bench.h"

namespace {

using namespace zelkora::test;

class AttachServiceTest : public SerialBench {
 protected:
  void daemon_runs(int number, const std::string& output = "4711\n") {
    answer_command({.command = "pgrep vastrel" + std::to_string(number), .output = output});
  }
  void kill_gives(int number, int status) {
    answer_command({.command = "killall vastrel" + std::to_string(number), .status = status});
  }
};

TEST_F(AttachServiceTest, GetPidReadsTheFirstNumberThatPgrepPrints) {
  struct Row {
    const char* name;
    std::string output;
    int pid;
  };
  const Row rows[] = {
      {"no daemon", "", 0},
      {"a daemon", "4711\n", 4711},
      {"two daemons", "12\n34\n", 12},
      {"without a line feed", "99", 99},
      {"decimal, whatever it begins with", "0123\n", 123},
      {"no hexadecimal number", "0x10\n", 0},
      {"words", "pgrep: out of luck\n", 0},
      {"an empty line first", "\n77\n", 0},
      {"blanks first", "   5\n", 5},
      // 49 zeros, and the 50th character is the last that is read.
      {"50 characters", std::string(49, '0') + "789\n", 7},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    forget_commands();
    clear_trace();
    daemon_runs(3, row.output);
    EXPECT_EQ(GetPid(3), row.pid);
    EXPECT_EQ(trace(), (Lines{"popen pgrep vastrel3",
                              "log zelkora DD:pid=" + std::to_string(row.pid), "pclose"}));
    EXPECT_EQ(messages(), traced({"pid=" + std::to_string(row.pid)}));
  }
}

TEST_F(AttachServiceTest, GetPidSurvivesAShellThatCannotBeStarted) {
  fail_file_call("popen", "pgrep vastrel1", ENOMEM);
  EXPECT_EQ(GetPid(1), 0);
  EXPECT_EQ(messages(), traced({"pid=0"}));
}

TEST_F(AttachServiceTest, NumbersOfAnySizeFitTheCommands) {
  daemon_runs(-2147483647);
  EXPECT_EQ(GetPid(-2147483647), 4711);
  kill_gives(-2147483647, 0);
  EXPECT_EQ(DisableRS232(-2147483647 - 1), 0);
}

TEST_F(AttachServiceTest, DisableDoesNothingWhereNoDaemonRuns) {
  daemon_runs(1, "");
  EXPECT_EQ(DisableRS232(0), 0);
  EXPECT_EQ(actions(), (Lines{"popen pgrep vastrel1", "pclose"}));
  EXPECT_EQ(messages(), traced({"*****DisableRS232---start DevNum=1*****", "pid=0"}));
}

TEST_F(AttachServiceTest, DisableKillsTheDaemonAndGivesItASecond) {
  struct Row {
    int status;
    int result;
    std::string exit_status;
  };
  const Row rows[] = {{0, 0, "0"},
                      {exited(1), 1, "1"},
                      {exited(127), 1, "127"},
                      {exited(255), 1, "255"},
                      {9, 0, "0"}};  // killed by a signal: no exit status
  for (const Row& row : rows) {
    SCOPED_TRACE(row.status);
    forget_commands();
    clear_trace();
    daemon_runs(4);
    kill_gives(4, row.status);
    EXPECT_EQ(DisableRS232(3), row.result);
    EXPECT_EQ(actions(),
              (Lines{"popen pgrep vastrel4", "pclose", "system killall vastrel4", "sleep 1"}));
    EXPECT_EQ(messages(),
              traced({"*****DisableRS232---start DevNum=4*****", "pid=4711",
                      "*****DisableRS232 system---ret=" + std::to_string(row.status) + "*****",
                      "*****DisableRS232---WEXITSTATUS s=" + row.exit_status + "*****"}));
    EXPECT_EQ(trace().back(), "sleep 1");
  }
}

TEST_F(AttachServiceTest, DisableWithoutAShellIsNoFailureAndDoesNotWait) {
  daemon_runs(1);
  kill_gives(1, -1);
  EXPECT_EQ(DisableRS232(0), 0);
  EXPECT_EQ(actions(), (Lines{"popen pgrep vastrel1", "pclose", "system killall vastrel1"}));
  EXPECT_EQ(messages(), traced({"*****DisableRS232---start DevNum=1*****", "pid=4711",
                                "*****DisableRS232 system---ret=-1*****"}));
}

TEST_F(AttachServiceTest, EnableStartsTheInstanceOfThePort) {
  struct Row {
    int status;
    int result;
    Lines waits;
  };
  const Row rows[] = {{0, 0, {"sleep 0"}},
                      {-1, 0, {}},
                      {exited(1), 1, {}},
                      {exited(5), 1, {}},
                      {15, 0, {"sleep 0"}}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.status);
    forget_commands();
    clear_trace();
    answer_command({.command = "systemctl start vastrel2@ttyUSB0.service", .status = row.status});
    EXPECT_EQ(EnableRS232(1, "ttyUSB0"), row.result);
    EXPECT_EQ(trace(), joined({{"system systemctl start vastrel2@ttyUSB0.service"}, row.waits}));
  }
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(AttachServiceTest, EnableRefusesWhatIsNoTty) {
  for (const char* name : {"", "event0", "TTYS0", "tt"}) {
    SCOPED_TRACE(name);
    EXPECT_EQ(EnableRS232(0, name), 1);
  }
  EXPECT_EQ(trace(), Lines{});
}

TEST_F(AttachServiceTest, TheLongestNameFitsTheCommandAndALongerOneIsRefused) {
  const std::string longest = "tty" + std::string(32, 'S');
  answer_command({.command = "systemctl start vastrel-2147483647@" + longest + ".service"});
  EXPECT_EQ(EnableRS232(-2147483647 - 1, longest.c_str()), 0);
  clear_trace();
  EXPECT_EQ(EnableRS232(0, (longest + "S").c_str()), 1);
  EXPECT_EQ(trace(), Lines{});
}

}  // namespace
