// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The udev rule and the systemd units; the boot scripts are in boot_script_test.cpp.
#include <sys/stat.h>

#include <cerrno>

#include "core/child_process.h"
#include "serial_bench.h"
#include "size_limit.h"

namespace {

using namespace zelkora::test;

namespace fs = std::filesystem;

class BootGlueTest : public SerialBench {
 protected:
  void SetUp() override {
    SerialBench::SetUp();
    fs::create_directories("/etc/udev/rules.d");
  }

  static Lines names_in(const std::string& directory) {
    Lines names;
    for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
      names.push_back(entry.path().filename());
    }
    std::ranges::sort(names);
    return names;
  }
};

constexpr char kRuleOfS0[] =
    "ACTION==\"add|change\", SUBSYSTEM==\"tty|pnp\", KERNEL==\"ttyS0\", MODE:=\"0777\", \\\n"
    "RUN+=\"/sbin/modprobe morlex\", \\\n"
    "TAG+=\"systemd\", ENV{SYSTEMD_WANTS}+=\"vastrel1@%k.service\"\n";
constexpr char kRuleOfUsb1[] =
    "ACTION==\"add|change\", SUBSYSTEM==\"tty|pnp\", KERNEL==\"ttyUSB1\", MODE:=\"0777\", \\\n"
    "RUN+=\"/sbin/modprobe morlex\", \\\n"
    "TAG+=\"systemd\", ENV{SYSTEMD_WANTS}+=\"vastrel2@%k.service\"\n";
constexpr char kUnit1[] =
    "[Unit]\n"
    "Description=attach serial touch screen\n"
    "\n"
    "[Service]\n"
    "Type=simple\n"
    "ExecStart=/usr/bin/vastrel1 -morlex /dev/%I\n";
constexpr char kUnit3[] =
    "[Unit]\n"
    "Description=attach serial touch screen\n"
    "\n"
    "[Service]\n"
    "Type=simple\n"
    "ExecStart=/usr/bin/vastrel3 -morlex /dev/%I\n";

TEST_F(BootGlueTest, TheRuleHasThreeLinesForEachPanel) {
  set_entries({"ttyS0", "ttyUSB1"});
  EXPECT_EQ(SetUdevRule(), 1);
  EXPECT_EQ(read_file(kUdevRule), std::string(kRuleOfS0) + kRuleOfUsb1);
  EXPECT_EQ(names_in("/etc/udev/rules.d"), Lines{"10-serialtouch.rules"});
  EXPECT_EQ(trace(), Lines{});
}

TEST_F(BootGlueTest, OnlySerialPanelsCountForTheRule) {
  set_entries({"/dev/usb/hiddev0", "ttyS0", "/dev/hidraw1", "ttyUSB1"});
  EXPECT_EQ(SetUdevRule(), 1);
  EXPECT_EQ(read_file(kUdevRule), std::string(kRuleOfS0) + kRuleOfUsb1);
}

TEST_F(BootGlueTest, TheRuleIsEmptyWithoutPanels) {
  EXPECT_EQ(SetUdevRule(), 1);
  EXPECT_EQ(read_file(kUdevRule), "");
}

TEST_F(BootGlueTest, AnExistingRuleIsNeverChanged) {
  set_entries({"ttyS0"});
  for (const char* text : {"", "mine\n", "KERNEL==\"ttyS7\"\n"}) {
    write_file(kUdevRule, text);
    EXPECT_EQ(SetUdevRule(), 1);
    EXPECT_EQ(read_file(kUdevRule), text);
  }
}

TEST_F(BootGlueTest, TheRuleGoesToEtcWhateverTheFlagSays) {
  set_entries({"ttyS0"});
  for (const bool flag : {true, false}) {
    if (flag) write_file(data_file("udevdef"), "");
    EXPECT_EQ(SetUdevRule(), 1);
    EXPECT_EQ(read_file(kUdevRule), kRuleOfS0);
    fs::remove(kUdevRule);
    fs::remove(data_file("udevdef"));
  }
}

TEST_F(BootGlueTest, ARuleThatCannotBeCreatedIsReported) {
  set_entries({"ttyS0"});
  fs::remove_all("/etc/udev");
  EXPECT_EQ(SetUdevRule(), 0);
  EXPECT_EQ(messages(), traced({"Create udev rules fail!!"}));
  EXPECT_FALSE(fs::exists("/etc/udev"));
}

TEST_F(BootGlueTest, ARuleThatCannotBeCompletedIsNotLeftBehind) {
  set_entries({"ttyS0"});
  const std::string temporary = std::string(kUdevRule) + ".*";
  for (const char* call : {"mkostemp", "write", "fsync"}) {
    SCOPED_TRACE(call);
    clear_trace();
    fail_file_call(call, temporary, ENOSPC);
    EXPECT_EQ(SetUdevRule(), 0);
    EXPECT_EQ(messages(), traced({"Create udev rules fail!!"}));
    EXPECT_EQ(names_in("/etc/udev/rules.d"), Lines{});
  }
}

TEST_F(BootGlueTest, AProcessKilledWhileItWritesTheRuleLeavesNone) {
  set_entries({"ttyS0"});
  EXPECT_EQ(status_in_child([] { return limit_file_size(50) ? SetUdevRule() : -1; }), -SIGXFSZ);
  EXPECT_FALSE(fs::exists(kUdevRule)) << "a rule that is there is never written again";
  EXPECT_EQ(SetUdevRule(), 1);
  EXPECT_EQ(read_file(kUdevRule), kRuleOfS0);
}

TEST_F(BootGlueTest, UnitsAreNumberedByTheTableAndCreatedInTheCurrentDirectory) {
  set_entries({"ttyS0", "/dev/usb/hiddev0", "ttyS1"});
  EXPECT_EQ(CreateServiceFile(), 0);
  EXPECT_EQ(names_in("."), (Lines{"vastrel1@.service", "vastrel3@.service"}));
  EXPECT_EQ(read_file("vastrel1@.service"), kUnit1);
  EXPECT_EQ(read_file("vastrel3@.service"), kUnit3);
  EXPECT_EQ(trace(), Lines{});
}

TEST_F(BootGlueTest, TheWholeTableIsLookedAtWhateverTheCounterSays) {
  set_entries({"ttyS0", "ttyS1", "ttyS2", "ttyS3"});
  DeviceNumber = 0;
  EXPECT_EQ(CreateServiceFile(), 0);
  EXPECT_EQ(names_in("."), (Lines{"vastrel1@.service", "vastrel2@.service", "vastrel3@.service",
                                  "vastrel4@.service"}));
}

TEST_F(BootGlueTest, WithoutPanelsThereAreNoUnits) {
  EXPECT_EQ(CreateServiceFile(), 0);
  EXPECT_EQ(names_in("."), Lines{});
}

TEST_F(BootGlueTest, AnExistingUnitStays) {
  set_entries({"ttyS0", "x", "ttyS1"});
  write_file("vastrel1@.service", "mine\n");
  EXPECT_EQ(CreateServiceFile(), 0);
  EXPECT_EQ(read_file("vastrel1@.service"), "mine\n");
  EXPECT_EQ(read_file("vastrel3@.service"), kUnit3);
}

TEST_F(BootGlueTest, TheFirstUnitThatCannotBeCreatedEndsTheWork) {
  set_entries({"ttyS0", "ttyS1", "ttyS2"});
  fail_file_call("mkostemp", "./vastrel2@.service.*", ENOSPC);
  EXPECT_EQ(CreateServiceFile(), 1);
  EXPECT_EQ(messages(), traced({"Create systemd service fail!!"}));
  EXPECT_EQ(names_in("."), Lines{"vastrel1@.service"});
  EXPECT_EQ(CreateServiceFile(), 0);
  EXPECT_EQ(read_file("vastrel3@.service"), kUnit3);
}

TEST_F(BootGlueTest, AnUnwritableDirectoryGetsNoUnits) {
  set_entries({"ttyS0"});
  ASSERT_EQ(::chmod(".", 0555), 0);
  EXPECT_EQ(status_in_child([] { return without_capabilities() ? CreateServiceFile() : -1; }), 1);
  ASSERT_EQ(::chmod(".", 0755), 0);
  EXPECT_EQ(names_in("."), Lines{});
}

TEST_F(BootGlueTest, AProcessKilledWhileItWritesAUnitLeavesNone) {
  set_entries({"ttyS0"});
  const auto create = [] { return limit_file_size(50) ? CreateServiceFile() : -1; };
  EXPECT_EQ(status_in_child(create), -SIGXFSZ);
  EXPECT_FALSE(fs::exists("vastrel1@.service")) << "a unit that is there is never written again";
}

TEST_F(BootGlueTest, AProcessKilledAtAnyCallLeavesWholeFilesOrNone) {
  struct Row {
    std::string path;
    int (*create)();
    const char* text;
  };
  const Row rows[] = {{kUdevRule, SetUdevRule, kRuleOfS0},
                      {"vastrel1@.service", CreateServiceFile, kUnit1}};
  set_entries({"ttyS0"});
  for (const Row& row : rows) {
    SCOPED_TRACE(row.path);
    int kills = 0;
    for (int status = -SIGKILL; status == -SIGKILL && kills < 100; ++kills) {
      SCOPED_TRACE(kills);
      fs::remove(row.path);
      status = status_in_child([&] {
        kill_at_write_call(kills + 1);
        return row.create();
      });
      const bool whole = fs::exists(row.path) && read_file(row.path) == row.text;
      EXPECT_TRUE(whole || !fs::exists(row.path));
      EXPECT_TRUE(whole || status == -SIGKILL);
    }
    EXPECT_GT(kills, 3);
    EXPECT_LT(kills, 100);
  }
}

TEST_F(BootGlueTest, NewFilesHaveTheModeOfTheProcess) {
  set_entries({"ttyS0"});
  struct Row {
    mode_t mask;
    unsigned mode;
  };
  for (const Row& row : {Row{022, 0644}, Row{077, 0600}, Row{0, 0666}}) {
    SCOPED_TRACE(row.mask);
    fs::remove("vastrel1@.service");
    const mode_t before = ::umask(row.mask);
    EXPECT_EQ(CreateServiceFile(), 0);
    EXPECT_EQ(::umask(before), row.mask) << "the mask itself stays";
    EXPECT_EQ(fs::status("vastrel1@.service").permissions(), fs::perms(row.mode));
  }
}

}  // namespace
