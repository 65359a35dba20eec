// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <climits>

#include "support/bench.h"

namespace {

using zelkora::test::Bench;
using zelkora::test::Lines;

// Statuses as system() returns them.
constexpr int kNoShell = -1;
constexpr int exited_with(int code) { return code << 8; }
constexpr int kKilled = 9;

struct ToolCase {
  const char* command;
  int (*run)();
};

constexpr ToolCase kTools[] = {
    {"/usr/local/bin/Zarvik /dev/input/event12 9",
     [] { return ExecuteCalibration("/dev/input/event12", 9); }},
    {"/usr/local/bin/Zarvik  -1", [] { return ExecuteCalibration("", -1); }},
    {"/usr/local/bin/Scrimble 1 -2 ttyS0", [] { return ExecuteScrimble(1, -2, "ttyS0"); }},
    {"/usr/local/bin/Scrimble 0 0 %s%n", [] { return ExecuteScrimble(0, 0, "%s%n"); }},
    {"/usr/local/bin/Tessaline", ExecuteMap},
};

struct StatusCase {
  const char* name;
  int status;
  int result;
};

constexpr StatusCase kStatuses[] = {
    {"success", 0, 0},
    {"exit status 1", exited_with(1), 1},
    {"exit status 2", exited_with(2), 1},
    {"exit status 255", exited_with(255), 1},
    {"ended by a signal", kKilled, 0},
    {"no shell", kNoShell, 0},
};

class ToolsTest : public Bench {};

TEST_F(ToolsTest, AToolIsRunThroughTheShellAndWaitedFor) {
  for (const ToolCase& row : kTools) {
    SCOPED_TRACE(row.command);
    answer_command({.command = row.command});
    clear_trace();
    EXPECT_EQ(row.run(), 0);
    EXPECT_EQ(trace_of({"system"}), Lines{std::string("system ") + row.command});
    EXPECT_EQ(count_of("usleep"), 0U);
  }
}

TEST_F(ToolsTest, AToolReturnsOneWhenItFailed) {
  for (const StatusCase& status : kStatuses) {
    SCOPED_TRACE(status.name);
    for (const ToolCase& row : kTools) {
      int runs = 0;
      forget_commands();
      answer_command({.command = row.command, .status = status.status, .effect = [&] { ++runs; }});
      EXPECT_EQ(row.run(), status.result) << row.command;
      EXPECT_EQ(runs, 1) << row.command;
    }
  }
}

TEST_F(ToolsTest, ExecuteCalibrationPrintsItsArgumentsWithoutALineFeed) {
  allow_any_command();
  DbgFlag = 1;
  ExecuteCalibration("/dev/%s", -4);
  EXPECT_EQ(messages(), Lines{"zelkora DD:ExecuteCalibration DevPath:/dev/%s CalibPoint:-4"});
  clear_trace();
  ExecuteScrimble(1, 2, "text");
  ExecuteMap();
  DbgFlag = 0;
  ExecuteCalibration("/dev/input/event0", 4);
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(ToolsTest, ACommandOf49CharactersIsRunAndALongerOneIsNot) {
  allow_any_command();
  const std::string path(25, 'p');
  EXPECT_EQ(ExecuteCalibration(path.c_str(), 9), 0);
  EXPECT_EQ(trace().back(), "system /usr/local/bin/Zarvik " + path + " 9");
  EXPECT_EQ(trace().back().size(), std::string("system ").size() + 49);
  EXPECT_EQ(ExecuteCalibration((path + "p").c_str(), 9), 1);
  EXPECT_EQ(ExecuteCalibration(path.c_str(), 10), 1);
  EXPECT_EQ(ExecuteCalibration(std::string(100'000, 'p').c_str(), INT_MIN), 1);
  const std::string text(21, 't');
  EXPECT_EQ(ExecuteScrimble(1, 2, text.c_str()), 0);
  EXPECT_EQ(trace().back(), "system /usr/local/bin/Scrimble 1 2 " + text);
  EXPECT_EQ(ExecuteScrimble(1, 2, (text + "t").c_str()), 1);
  EXPECT_EQ(ExecuteScrimble(INT_MIN, INT_MIN, "tt"), 1);
  EXPECT_EQ(count_of("system"), 2U);
}

// --- the touch service ---

class TouchServiceTest : public Bench {
 protected:
  void answer_pids(const std::string& output) {
    forget_commands();
    answer_command({.command = "pidof pelvand", .output = output});
  }
};

struct PidCase {
  const char* name;
  std::string output;
  std::vector<int> pids;
};

TEST_F(TouchServiceTest, TheProcessIdsAreWhatPidofPrints) {
  const PidCase kCases[] = {
      {"none runs", "", {}},
      {"one", "4711\n", {4711}},
      {"two", "101 202\n", {101, 202}},
      {"no line feed", "101 202", {101, 202}},
      {"many blanks", "  101   202 \n", {101, 202, 0}},
      {"an empty line", "\n", {0}},
      {"the first line only", "101\n202\n", {101}},
      {"words", "pelvand 12x\n", {0, 12}},
  };
  for (const PidCase& row : kCases) {
    SCOPED_TRACE(row.name);
    answer_pids(row.output);
    clear_trace();
    std::vector<int> pids(ZELKORA_MAX_PIDS, -7);
    EXPECT_EQ(GetTouchServicePid(pids.data()), static_cast<int>(row.pids.size()));
    std::vector<int> expected = row.pids;
    expected.resize(ZELKORA_MAX_PIDS, -7);
    EXPECT_EQ(pids, expected);
    EXPECT_EQ(trace(), (Lines{"popen pidof pelvand", "pclose"}));
  }
}

TEST_F(TouchServiceTest, EachProcessIdIsPrinted) {
  answer_pids("101 202\n");
  DbgFlag = 1;
  int pids[ZELKORA_MAX_PIDS];
  EXPECT_EQ(GetTouchServicePid(pids), 2);
  EXPECT_EQ(messages(), (Lines{"zelkora DD:101\n", "zelkora DD:202\n"}));
}

TEST_F(TouchServiceTest, AHundredProcessIdsAreTaken) {
  std::string output;
  for (int pid = 1; pid <= 150; ++pid) output += std::to_string(pid) + " ";
  answer_pids(output + "\n");
  std::vector<int> pids(ZELKORA_MAX_PIDS + 1, -7);
  EXPECT_EQ(GetTouchServicePid(pids.data()), 100);
  EXPECT_EQ(pids[0], 1);
  EXPECT_EQ(pids[99], 100);
  EXPECT_EQ(pids[100], -7);
}

TEST_F(TouchServiceTest, ALineIsReadUpTo1024Characters) {
  answer_pids(std::string(1022, ' ') + "12345 6\n");
  int pids[ZELKORA_MAX_PIDS];
  EXPECT_EQ(GetTouchServicePid(pids), 1);
  EXPECT_EQ(pids[0], 12);
}

TEST_F(TouchServiceTest, WithoutAPipeThereAreNoProcessIds) {
  fail_file_call("popen", "pidof pelvand", EMFILE);
  int pids[ZELKORA_MAX_PIDS];
  EXPECT_EQ(GetTouchServicePid(pids), 0);
  fail_file_call("popen", "pidof pelvand", EMFILE);
  EXPECT_EQ(DisableTouchService(), 0);
  EXPECT_EQ(trace(), Lines{});
}

TEST_F(TouchServiceTest, DisablingKillsEachProcessAndWaits) {
  answer_pids("101 202\n");
  answer_command({.command = "kill -9 101"});
  answer_command({.command = "kill -9 202"});
  EXPECT_EQ(DisableTouchService(), 0);
  EXPECT_EQ(trace(), (Lines{"popen pidof pelvand", "pclose", "system kill -9 101",
                            "system kill -9 202", "usleep 100000"}));
}

TEST_F(TouchServiceTest, DisablingPrintsEachStep) {
  answer_pids("101 202\n");
  answer_command({.command = "kill -9 101"});
  answer_command({.command = "kill -9 202", .status = exited_with(1)});
  DbgFlag = 1;
  EXPECT_EQ(DisableTouchService(), 1);
  EXPECT_EQ(messages(),
            (Lines{"zelkora DD:*****DisableTouchService---start*****\n", "zelkora DD:101\n",
                   "zelkora DD:202\n", "zelkora DD:Pids : 2\n", "zelkora DD:kill -9 101\n",
                   "zelkora DD:*****DisableTouchService system---ret=0*****\n",
                   "zelkora DD:kill -9 202\n",
                   "zelkora DD:*****DisableTouchService system---ret=256*****\n",
                   "zelkora DD:*****DisableTouchService---WEXITSTATUS s=1*****\n"}));
  EXPECT_EQ(trace().back(), "usleep 100000");
}

TEST_F(TouchServiceTest, TheLastKillDecides) {
  for (const StatusCase& last : kStatuses) {
    for (const int first : {0, exited_with(1), kNoShell}) {
      SCOPED_TRACE(std::string(last.name) + ", first " + std::to_string(first));
      answer_pids("101 202\n");
      answer_command({.command = "kill -9 101", .status = first});
      answer_command({.command = "kill -9 202", .status = last.status});
      clear_trace();
      EXPECT_EQ(DisableTouchService(), last.result);
      EXPECT_EQ(count_of("usleep"), last.status == kNoShell ? 0U : 1U);
    }
  }
}

TEST_F(TouchServiceTest, DisablingWithoutAProcessRunsNothingAndDoesNotWait) {
  for (const char* output : {"", "\n", "0 0\n"}) {
    answer_pids(output);
    clear_trace();
    EXPECT_EQ(DisableTouchService(), 0);
    EXPECT_EQ(trace(), (Lines{"popen pidof pelvand", "pclose"}));
  }
}

TEST_F(TouchServiceTest, AnIdOfZeroIsPassedOver) {
  answer_pids("0 101 \n");
  answer_command({.command = "kill -9 101"});
  EXPECT_EQ(DisableTouchService(), 0);
  EXPECT_EQ(trace_of({"system"}), Lines{"system kill -9 101"});
}

TEST_F(TouchServiceTest, EnablingStartsItInTheBackgroundAndWaitsWhenThatWorked) {
  for (const StatusCase& row : kStatuses) {
    SCOPED_TRACE(row.name);
    forget_commands();
    answer_command({.command = "pelvand &", .status = row.status});
    clear_trace();
    EXPECT_EQ(EnableTouchService(), row.result);
    Lines expected = {"system pelvand &"};
    if (row.result == 0 && row.status != kNoShell) expected.emplace_back("usleep 100000");
    EXPECT_EQ(trace(), expected);
  }
}

}  // namespace
