// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The daemon lines of both boot scripts; the rule and the units are in boot_glue_test.cpp.
#include <sys/stat.h>

#include <cerrno>

#include "core/child_process.h"
#include "serial_bench.h"
#include "size_limit.h"

namespace {

using namespace zelkora::test;

struct Script {
  const char* name;
  const char* path;
  int (*rewrite)();
};

class BootScriptTest : public SerialBench, public testing::WithParamInterface<Script> {
 protected:
  static int rewrite() { return GetParam().rewrite(); }
  static const char* path() { return GetParam().path; }
  // The script after a rewrite for these panels.
  static std::string rewritten(std::string_view text, const std::vector<std::string>& ports) {
    set_entries(ports);
    write_file(path(), text);
    EXPECT_EQ(rewrite(), 1);
    return read_file(path());
  }
  static ino_t inode() {
    struct stat status {};
    EXPECT_EQ(::stat(path(), &status), 0);
    return status.st_ino;
  }
};

INSTANTIATE_TEST_SUITE_P(Both, BootScriptTest,
                         testing::Values(Script{"Etc", kRcLocal, SetSerDevBootFile},
                                         Script{"RcD", kRcLocalInRcD, SetSerDevBootFile_rcd}),
                         [](const auto& one) { return one.param.name; });

constexpr char kS0[] = "/usr/bin/vastrel1 -morlex --daemon /dev/ttyS0\n";
constexpr char kUsb1[] = "/usr/bin/vastrel2 -morlex --daemon /dev/ttyUSB1\n";

struct Rewrite {
  const char* name;
  std::string before;
  std::vector<std::string> ports;
  std::string after;
};
const std::string kHead = "#!/bin/sh\n";
const std::string kModule = "modprobe morlex\n";
const std::string kBoth = std::string(kS0) + kUsb1;
const std::string kStale = "/usr/bin/vastrel7 -morlex --daemon /dev/ttyS9\n";
const std::vector<std::string> kTwo = {"ttyS0", "ttyUSB1"};
const std::vector<Rewrite> kRewrites = {
    {"module third", kHead + "a\n" + kModule + "exit 0\n", kTwo,
     kHead + "a\n" + kModule + kBoth + "exit 0\n"},
    {"module second", kHead + kModule, {"ttyS0"}, kHead + kModule + kS0},
    {"module first: left alone", kModule + kStale + "exit 0\n", kTwo,
     kModule + kStale + "exit 0\n"},
    {"module first but for daemon lines: left alone", kStale + kModule + "x\n", kTwo,
     kStale + kModule + "x\n"},
    {"no module: daemon lines go", kHead + kStale + "exit 0\n" + kStale, kTwo, kHead + "exit 0\n"},
    {"module twice: behind the last", kHead + kModule + "b\n" + kModule + "c\n", kTwo,
     kHead + kModule + "b\n" + kModule + kBoth + "c\n"},
    {"module first and third: behind the last", kModule + "b\n" + kModule, kTwo,
     kModule + "b\n" + kModule + kBoth},
    {"old daemon lines everywhere", kHead + kStale + kModule + kUsb1 + "d\n" + kStale, kTwo,
     kHead + kModule + kBoth + "d\n"},
    {"the module inside a line",
     kHead + "  /sbin/modprobe morlex || true # x\n",
     {"ttyS0"},
     kHead + "  /sbin/modprobe morlex || true # x\n" + kS0},
    {"the module in a comment",
     kHead + "#modprobe morlex\n",
     {"ttyS0"},
     kHead + "#modprobe morlex\n" + kS0},
    {"a daemon line that loads the module goes", kHead + "vastrel; modprobe morlex\nx\n", kTwo,
     kHead + "x\n"},
    {"another module", kHead + "modprobe  morlex\nmodprobe morle\n", kTwo,
     kHead + "modprobe  morlex\nmodprobe morle\n"},
    {"no panels", kHead + kStale + kModule + kStale, {}, kHead + kModule},
    {"an entry of another kind is no panel",
     kHead + kModule,
     {"hiddev0", "ttyS0"},
     kHead + kModule + kS0},
    {"an empty script", "", kTwo, ""},
    {"no line feed at the end",
     kHead + kModule + "exit 0",
     {"ttyS0"},
     kHead + kModule + kS0 + "exit 0"},
    {"no line feed behind the module", kHead + "modprobe morlex", kTwo, kHead + kModule + kBoth},
    {"no line feed behind the module, no panels",
     kHead + "modprobe morlex",
     {},
     kHead + "modprobe morlex"},
    {"a last daemon line without a line feed",
     kHead + kModule + "vastrel",
     {"ttyS0"},
     kHead + kModule + kS0},
    {"carriage returns",
     "#!\r\nmodprobe morlex\r\nexit\r\n",
     {"ttyS0"},
     "#!\r\nmodprobe morlex\r\n" + std::string(kS0) + "exit\r\n"},
    {"empty lines", "\n\n" + kModule + "\n\n", {"ttyS0"}, "\n\n" + kModule + kS0 + "\n\n"},
    {"format characters",
     "%s%n\n" + kModule + "%d\n",
     {"ttyS0"},
     "%s%n\n" + kModule + kS0 + "%d\n"},
};

TEST_P(BootScriptTest, DaemonLinesStandBehindTheModuleAndNowhereElse) {
  for (const Rewrite& row : kRewrites) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(rewritten(row.before, row.ports), row.after);
    // Again, nothing changes any more.
    EXPECT_EQ(rewrite(), 1);
    EXPECT_EQ(read_file(path()), row.after);
  }
  EXPECT_EQ(trace(), Lines{});
}

TEST_P(BootScriptTest, PanelsAreNumberedInTableOrder) {
  EXPECT_EQ(rewritten("#\nmodprobe morlex\n", {"ttyS3", "ttyS1", "ttyUSB0", "/dev/ttyS2"}),
            "#\nmodprobe morlex\n"
            "/usr/bin/vastrel1 -morlex --daemon /dev/ttyS3\n"
            "/usr/bin/vastrel2 -morlex --daemon /dev/ttyS1\n"
            "/usr/bin/vastrel3 -morlex --daemon /dev/ttyUSB0\n"
            "/usr/bin/vastrel4 -morlex --daemon /dev//dev/ttyS2\n");
}

TEST_P(BootScriptTest, AScriptThatBeginsWithTheModuleIsNotTouched) {
  write_file(path(), "modprobe morlex\n");
  set_entries({"ttyS0"});
  const ino_t before = inode();
  EXPECT_EQ(rewrite(), 1);
  EXPECT_EQ(inode(), before);
}

TEST_P(BootScriptTest, AMissingScriptIsNotCreated) {
  set_entries({"ttyS0"});
  EXPECT_EQ(rewrite(), 0);
  EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_P(BootScriptTest, TheOtherScriptStaysAsItIs) {
  const char* other = std::string_view(path()) == kRcLocal ? kRcLocalInRcD : kRcLocal;
  const std::string text = "#\nmodprobe morlex\nvastrel\n";
  write_file(other, text);
  EXPECT_EQ(rewritten(text, {"ttyS0"}), "#\nmodprobe morlex\n" + std::string(kS0));
  EXPECT_EQ(read_file(other), text);
}

TEST_P(BootScriptTest, TwoThousandLinesAllStay) {
  std::string before;
  std::string after;
  for (int i = 0; i < 2000; ++i) {
    if (i % 100 == 50) before += "vastrel" + std::to_string(i) + "\n";
    const std::string line = i == 1500 ? "modprobe morlex\n" : "line " + std::to_string(i) + "\n";
    before += line;
    after += line;
    if (i == 1500) after += std::string(kS0) + kUsb1;
  }
  EXPECT_EQ(rewritten(before, {"ttyS0", "ttyUSB1"}), after);
}

TEST_P(BootScriptTest, LinesOfFiveThousandCharactersAllStay) {
  const std::string filler(5000, 'x');
  // The module far behind what a short buffer would hold, and across its seams.
  for (const size_t at : {0U, 240U, 250U, 255U, 256U, 4000U}) {
    SCOPED_TRACE(at);
    std::string module = filler + "\n";
    module.insert(at, "modprobe morlex");
    std::string daemon = filler + "\n";
    daemon.insert(at, "vastrel");
    EXPECT_EQ(rewritten(filler + "\n" + daemon + module + filler, {"ttyS0"}),
              filler + "\n" + module + kS0 + filler);
    EXPECT_EQ(rewritten(module + filler, {"ttyS0"}), module + filler);
  }
}

TEST_P(BootScriptTest, BytesOfEveryValueStay) {
  std::string every;
  for (int i = 0; i < 256; ++i) every += static_cast<char>(i);
  const std::string nul(1, '\0');
  const std::string text = every + "\n" + "a" + nul + "b\nx" + nul + "modprobe morlex" + nul + "\n";
  EXPECT_EQ(rewritten(text + every, {"ttyS0"}), text + kS0 + every);
  EXPECT_EQ(rewritten("#\n" + nul + "vastrel\n" + nul + "\n", {"ttyS0"}), "#\n" + nul + "\n");
}

TEST_P(BootScriptTest, ModeStays) {
  write_file(path(), "#\nmodprobe morlex\n");
  ASSERT_EQ(::chmod(path(), 0755), 0);
  set_entries({"ttyS0"});
  EXPECT_EQ(rewrite(), 1);
  EXPECT_EQ(std::filesystem::status(path()).permissions(), std::filesystem::perms(0755));
  EXPECT_EQ(read_file(path()), "#\nmodprobe morlex\n" + std::string(kS0));
}

TEST_P(BootScriptTest, AScriptThatCannotBeReadOrWrittenStays) {
  const std::string text = "#\nmodprobe morlex\nvastrel\n";
  write_file(path(), text);
  set_entries({"ttyS0"});
  fail_file_call("fopen", path(), EACCES);
  EXPECT_EQ(rewrite(), 0);
  for (const char* call : {"open", "rename"}) {
    SCOPED_TRACE(call);
    fail_file_call(call, path(), EACCES);
    EXPECT_EQ(rewrite(), 1);
    EXPECT_EQ(read_file(path()), text);
  }
  for (const char* call : {"write", "fsync"}) {
    SCOPED_TRACE(call);
    fail_file_call(call, std::string(path()) + ".*", ENOSPC);
    EXPECT_EQ(rewrite(), 1);
    EXPECT_EQ(read_file(path()), text);
  }
  EXPECT_EQ(rewrite(), 1);
  EXPECT_EQ(read_file(path()), "#\nmodprobe morlex\n" + std::string(kS0));
}

TEST_P(BootScriptTest, ADirectoryInItsPlaceStays) {
  std::filesystem::create_directories(path());
  set_entries({"ttyS0"});
  EXPECT_EQ(rewrite(), 1);
  EXPECT_TRUE(std::filesystem::is_directory(path()));
}

TEST_P(BootScriptTest, AProcessKilledInTheMiddleOfARewriteLeavesTheOldScript) {
  const std::string text = "#\nmodprobe morlex\n" + std::string(100'000, 'x') + "\n";
  write_file(path(), text);
  set_entries({"ttyS0"});
  EXPECT_EQ(status_in_child([] { return limit_file_size(5000) ? rewrite() : -1; }), -SIGXFSZ);
  EXPECT_EQ(read_file(path()), text);
}

TEST_P(BootScriptTest, AProcessKilledAtAnyCallLeavesTheOldOrTheNewScript) {
  const std::string old = "#\nmodprobe morlex\nvastrel\n";
  const std::string changed = "#\nmodprobe morlex\n" + std::string(kS0);
  int kills = 0;
  for (int status = -SIGKILL; status == -SIGKILL && kills < 100; ++kills) {
    SCOPED_TRACE(kills);
    set_entries({"ttyS0"});
    write_file(path(), old);
    status = status_in_child([&] {
      kill_at_write_call(kills + 1);
      return rewrite();
    });
    const std::string found = read_file(path());
    EXPECT_TRUE(found == old || found == changed) << found;
    EXPECT_TRUE(status == -SIGKILL || found == changed);
  }
  EXPECT_GT(kills, 3);
  EXPECT_LT(kills, 100);
}

TEST_P(BootScriptTest, NamesThatFillTheirFieldAreLeftOutAndKeepTheirNumber) {
  set_entries({"ttyS0", "x", "ttyS2"});
  std::memset(TouchDevice[1].Name, 't', sizeof TouchDevice[1].Name);
  std::memcpy(TouchDevice[1].Name, "tty", 3);
  write_file(path(), "#\nmodprobe morlex\n");
  EXPECT_EQ(rewrite(), 1);
  EXPECT_EQ(read_file(path()), "#\nmodprobe morlex\n" + std::string(kS0) +
                                   "/usr/bin/vastrel3 -morlex --daemon /dev/ttyS2\n");
}

}  // namespace
