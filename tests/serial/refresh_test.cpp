// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <sys/mount.h>

#include <cerrno>

#include "discovery/discovery_bench.h"
#include "serial_bench.h"

namespace {

using namespace zelkora::test;

namespace fs = std::filesystem;

constexpr char kRulesInLib[] = "/lib/udev/rules.d";
const std::string kRuleInLib = std::string(kRulesInLib) + "/10-serialtouch.rules";
constexpr char kScript[] = "#!/bin/sh\nmodprobe morlex\n/usr/bin/vastrel9 old\nexit 0\n";

class RefreshTest : public SerialBench {
 protected:
  void SetUp() override {
    SerialBench::SetUp();
    // What is deleted there is not to be the machine's.
    if (fs::is_directory(kRulesInLib)) {
      ASSERT_EQ(::mount("tmpfs", kRulesInLib, "tmpfs", 0, nullptr), 0);
      private_lib_ = true;
    }
    fs::create_directories("/etc/udev/rules.d");
    write_file(kRcLocal, kScript);
    write_file(kRcLocalInRcD, kScript);
    write_resistive_list();
    set_machine();
  }
  void TearDown() override {
    if (private_lib_) {
      EXPECT_EQ(::umount(kRulesInLib), 0);
    }
    SerialBench::TearDown();
  }

  // No daemon runs, every port is in the kernel log; services start.
  void set_machine(const std::string& log = "ttyS0 ttyS1 ttyS2 ttyS3 ttyS4 ttyUSB0\n") {
    set_kernel_log(log);
    for (int k = 1; k <= 4; ++k) {
      answer_command({.command = "pgrep vastrel" + std::to_string(k)});
      for (const char* port : {"ttyS0", "ttyS1", "ttyS2", "ttyS3", "ttyS4", "ttyUSB0"}) {
        answer_command(
            {.command = "systemctl start vastrel" + std::to_string(k) + "@" + port + ".service"});
      }
    }
    answer_command({.command = kRemoveUnits});
  }

  // Panels on ttyS0 and up, and the names in the order of the directory.
  Lines attach_panels(int count) {
    for (int i = 0; i < count; ++i) {
      attached_.push_back(&attach_serial("/dev/ttyS" + std::to_string(i)));
    }
    return listed("/dev", "ttyS");
  }

  // The machine as it was before attach_panels(), and its files too.
  void start_over() {
    for (const SerialPanel* panel : std::exchange(attached_, {})) unplug(*panel);
    fs::remove(kUdevRule);
    fs::remove(kSerialListPath);
    write_file(kRcLocal, kScript);
    write_file(kRcLocalInRcD, kScript);
    for (int k = 1; k <= 4; ++k) fs::remove("vastrel" + std::to_string(k) + "@.service");
  }

  static Lines stopping_lines() {
    Lines lines;
    for (int k = 1; k <= 4; ++k) lines.push_back("popen pgrep vastrel" + std::to_string(k));
    return lines;
  }
  static Lines searching_lines(size_t ports) {
    return repeated(ports, {std::string("system ") + kTakeKernelLog,
                            std::string("system ") + kRemoveKernelLog});
  }
  static Lines starting_lines(const Lines& ports) {
    Lines lines;
    for (size_t i = 0; i < ports.size(); ++i) {
      lines.push_back("system systemctl start vastrel" + std::to_string(i + 1) + "@" + ports[i] +
                      ".service");
    }
    return lines;
  }

  // All that a refresh which found these panels leaves behind.
  void expect_system(const Lines& ports) {
    std::string list;
    std::string daemons;
    std::string rule;
    Lines units;
    for (size_t i = 0; i < ports.size(); ++i) {
      const std::string k = std::to_string(i + 1);
      EXPECT_EQ(TouchDevice[i].Name, ports[i]);
      EXPECT_EQ(TouchDevice[i].Type, ZELKORA_TYPE_RESISTIVE_SERIAL);
      list += "SerialDevice" + k + "=" + ports[i] + "\nFW" + k + "=V1.2\n";
      daemons += "/usr/bin/vastrel" + k + " -morlex --daemon /dev/" + ports[i] + "\n";
      rule += "ACTION==\"add|change\", SUBSYSTEM==\"tty|pnp\", KERNEL==\"" + ports[i] +
              "\", MODE:=\"0777\", \\\nRUN+=\"/sbin/modprobe morlex\", \\\n"
              "TAG+=\"systemd\", ENV{SYSTEMD_WANTS}+=\"vastrel" +
              k + "@%k.service\"\n";
      EXPECT_EQ(read_file("vastrel" + k + "@.service"),
                "[Unit]\nDescription=attach serial touch screen\n\n[Service]\nType=simple\n"
                "ExecStart=/usr/bin/vastrel" +
                    k + " -morlex /dev/%I\n");
    }
    EXPECT_FALSE(fs::exists("vastrel" + std::to_string(ports.size() + 1) + "@.service"));
    EXPECT_EQ(read_file(kSerialListPath), list);
    const std::string script = "#!/bin/sh\nmodprobe morlex\n" + daemons + "exit 0\n";
    EXPECT_EQ(read_file(kRcLocal), script);
    EXPECT_EQ(read_file(kRcLocalInRcD), script);
    EXPECT_EQ(read_file(kUdevRule), rule);
  }

  // Nothing was found, and nothing changed.
  void expect_untouched() {
    EXPECT_EQ(read_file(kRcLocal), kScript);
    EXPECT_EQ(read_file(kRcLocalInRcD), kScript);
    EXPECT_FALSE(fs::exists(kUdevRule));
    EXPECT_TRUE(fs::is_empty("."));
  }

  bool private_lib_ = false;
  std::vector<const SerialPanel*> attached_;
};

TEST_F(RefreshTest, WithoutResistiveSupportNothingIsDone) {
  host.config[ZELKORA_CONFIG_RESISTIVE] = 0;
  set_entries({"ttyS0", "ttyS1"});
  ReadSerConf = 7;
  write_file(kUdevRule, "old\n");
  EXPECT_EQ(RefreshSerialDevice(), 1);
  EXPECT_EQ(DeviceNumber, 2);
  EXPECT_STREQ(TouchDevice[1].Name, "ttyS1");
  EXPECT_EQ(ReadSerConf, 7);
  EXPECT_EQ(commands(), Lines{});
  EXPECT_TRUE(fs::exists(kUdevRule));
}

TEST_F(RefreshTest, WithoutPortsTheOldListStays) {
  write_file(kSerialListPath, "SerialDevice1=ttyS7\nFW1=V1.1\n");
  set_entries({"ttyS7"});
  PCTDeviceNumber = 3;
  EXPECT_EQ(RefreshSerialDevice(), 0);
  EXPECT_EQ(PCTDeviceNumber, 0);
  EXPECT_STREQ(TouchDevice[0].Name, "");
  EXPECT_EQ(commands(), stopping_lines());
  EXPECT_EQ(read_file(kSerialListPath), "SerialDevice1=ttyS7\nFW1=V1.1\n");
  expect_untouched();
  EXPECT_EQ(ReadSerConf, 1);
}

TEST_F(RefreshTest, OneTwoAndFourPanelsAreStartedAndWritten) {
  for (const int count : {1, 2, 4}) {
    SCOPED_TRACE(count);
    const Lines ports = attach_panels(count);
    ASSERT_EQ(ports.size(), static_cast<size_t>(count));
    clear_trace();
    EXPECT_EQ(RefreshSerialDevice(), count);
    expect_system(ports);
    EXPECT_EQ(commands(), joined({stopping_lines(),
                                  searching_lines(ports.size()),
                                  starting_lines(ports),
                                  {std::string("system ") + kRemoveUnits}}));
    EXPECT_EQ(count_of("sleep 0"), ports.size());
    EXPECT_EQ(count_of("sleep 1"), 0U);
    for (size_t i = 0; i < ports.size(); ++i) {
      const std::string text = "RefreshSerialDevice [" + std::to_string(i) + "]" + ports[i];
      EXPECT_EQ(std::ranges::count(messages(), "zelkora DD:" + text + "\n"), 1) << text;
    }
    start_over();
  }
}

TEST_F(RefreshTest, OfFivePanelsFourAreEntered) {
  Lines ports = attach_panels(5);
  EXPECT_EQ(RefreshSerialDevice(), 4);
  EXPECT_EQ(count_of("open /dev/" + ports[4]), 1U);
  EXPECT_EQ(count_of("close /dev/" + ports[4]), 1U);
  ports.pop_back();
  expect_system(ports);
  EXPECT_EQ(commands(), joined({stopping_lines(),
                                searching_lines(5),
                                starting_lines(ports),
                                {std::string("system ") + kRemoveUnits}}));
}

TEST_F(RefreshTest, PortsWithoutASupportedPanelAreLeftOut) {
  attach_serial("/dev/ttyS0").controller.faults.silent = true;
  attach_serial("/dev/ttyS1").controller.set_firmware("V3.0");
  attach_serial("/dev/ttyS2").controller.faults.streaming = true;
  attach_serial("/dev/ttyS3");
  kernel.fail_open("/dev/ttyS3", EIO);
  attach_serial("/dev/ttyUSB0");
  EXPECT_EQ(RefreshSerialDevice(), 1);
  expect_system({"ttyUSB0"});
  EXPECT_EQ(commands(), joined({stopping_lines(),
                                searching_lines(5),
                                starting_lines({"ttyUSB0"}),
                                {std::string("system ") + kRemoveUnits}}));
}

TEST_F(RefreshTest, PortsWithoutAnyPanelChangeNothing) {
  struct Row {
    const char* name;
    void (*spoil)(SerialPanel& panel);
  };
  const Row rows[] = {
      {"silent", [](SerialPanel& panel) { panel.controller.faults.silent = true; }},
      {"wrong firmware", [](SerialPanel& panel) { panel.controller.set_firmware("V3.0"); }},
      {"streaming", [](SerialPanel& panel) { panel.controller.faults.streaming = true; }},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    SerialPanel& panel = attach_serial();
    row.spoil(panel);
    clear_trace();
    EXPECT_EQ(RefreshSerialDevice(), 0);
    EXPECT_EQ(commands(), joined({stopping_lines(), searching_lines(1)}));
    EXPECT_FALSE(fs::exists(kSerialListPath));
    expect_untouched();
    unplug(panel);
  }
}

TEST_F(RefreshTest, ReadSerConfIsZeroWhileItRuns) {
  attach_serial();
  std::vector<int> seen;
  forget_commands();
  const auto look = [&seen] { seen.push_back(ReadSerConf); };
  for (int k = 1; k <= 4; ++k) {
    answer_command({.command = "pgrep vastrel" + std::to_string(k), .effect = look});
  }
  answer_command({.command = kTakeKernelLog, .effect = [look] {
                    look();
                    write_file(data_file("tty.log"), "ttyS0\n");
                  }});
  answer_command({.command = kRemoveKernelLog, .effect = look});
  answer_command({.command = "systemctl start vastrel1@ttyS0.service", .effect = look});
  answer_command({.command = kRemoveUnits, .effect = look});
  ReadSerConf = 1;
  EXPECT_EQ(RefreshSerialDevice(), 1);
  EXPECT_EQ(seen, std::vector<int>(8, 0));
  EXPECT_EQ(ReadSerConf, 1);
}

TEST_F(RefreshTest, RunningDaemonsAreStoppedFirst) {
  forget_commands();
  set_kernel_log("ttyS0\n");
  for (int k = 1; k <= 4; ++k) {
    const std::string number = std::to_string(k);
    answer_command({.command = "pgrep vastrel" + number, .output = k == 3 ? "" : "100\n"});
    answer_command({.command = "killall vastrel" + number, .status = exited(k == 4 ? 1 : 0)});
  }
  answer_command({.command = "systemctl start vastrel1@ttyS0.service", .status = exited(5)});
  answer_command({.command = kRemoveUnits});
  attach_serial();
  EXPECT_EQ(RefreshSerialDevice(), 1) << "what the commands give is not asked for";
  const Lines expected = {"popen pgrep vastrel1",
                          "pclose",
                          "system killall vastrel1",
                          "sleep 1",
                          "popen pgrep vastrel2",
                          "pclose",
                          "system killall vastrel2",
                          "sleep 1",
                          "popen pgrep vastrel3",
                          "pclose",
                          "popen pgrep vastrel4",
                          "pclose",
                          "system killall vastrel4",
                          "sleep 1",
                          std::string("system ") + kTakeKernelLog,
                          std::string("system ") + kRemoveKernelLog,
                          "system systemctl start vastrel1@ttyS0.service",
                          std::string("system ") + kRemoveUnits};
  EXPECT_EQ(trace_of({"popen", "pclose", "system", "sleep"}), expected);
}

TEST_F(RefreshTest, TheRuleInEtcIsWrittenAnewWhenTheFlagNamesIt) {
  write_file(data_file("udevdef"), "");
  write_file(kUdevRule, "old\n");
  if (private_lib_) write_file(kRuleInLib, "lib\n");
  attach_serial();
  EXPECT_EQ(RefreshSerialDevice(), 1);
  expect_system({"ttyS0"});
  if (private_lib_) {
    EXPECT_EQ(read_file(kRuleInLib), "lib\n");
  }
}

TEST_F(RefreshTest, WithoutTheFlagTheRuleInLibIsDeletedAndTheOneInEtcStays) {
  if (!private_lib_) GTEST_SKIP() << "this machine has no " << kRulesInLib;
  write_file(kUdevRule, "old\n");
  write_file(kRuleInLib, "lib\n");
  attach_serial();
  EXPECT_EQ(RefreshSerialDevice(), 1);
  EXPECT_EQ(read_file(kUdevRule), "old\n");
  EXPECT_FALSE(fs::exists(kRuleInLib));
}

TEST_F(RefreshTest, TheRuleIsDeletedEvenWhereNoPanelIsFound) {
  write_file(data_file("udevdef"), "");
  write_file(kUdevRule, "old\n");
  EXPECT_EQ(RefreshSerialDevice(), 0);
  EXPECT_FALSE(fs::exists(kUdevRule));
}

TEST_F(RefreshTest, UsbPanelsFollowTheSerialOnes) {
  attach_resistive();
  answer_command({.command = kShareRecords});
  EXPECT_EQ(GetTouchPanels(0), 1) << "the names of USB products are read by an enumeration";
  attach_serial();
  write_file(data_file(".pctuniq"), "known");
  clear_trace();
  EXPECT_EQ(RefreshSerialDevice(), 2);
  EXPECT_STREQ(TouchDevice[0].Name, "ttyS0");
  EXPECT_STREQ(TouchDevice[1].Name, "/dev/usb/hiddev0");
  EXPECT_EQ(TouchDevice[1].Type, ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_FALSE(fs::exists(data_file(".pctuniq")));
  EXPECT_EQ(count_of("open /dev/hidraw0"), 0U);
}

TEST_F(RefreshTest, UsbPanelsAreNotKnownByNameBeforeTheFirstEnumeration) {
  attach_resistive();
  attach_serial();
  EXPECT_EQ(RefreshSerialDevice(), 1);
  EXPECT_EQ(count_of("open /dev/usb/hiddev0"), 1U);
}

TEST_F(RefreshTest, HidrawNodesAreLookedAtWhenTheyCount) {
  host.config[ZELKORA_CONFIG_HIDRAW] = 1;
  static_assert(ZELKORA_CONFIG_HIDRAW == 5);
  EXPECT_EQ(RefreshSerialDevice(), 0);
  const Lines expected = traced({"FindMyHidDevice--end", "FindMyHidRawDevice--start"});
  const Lines& told = messages();
  EXPECT_NE(std::search(told.begin(), told.end(), expected.begin(), expected.end()), told.end());
  host.config[ZELKORA_CONFIG_HIDRAW] = 0;
  clear_trace();
  EXPECT_EQ(RefreshSerialDevice(), 0);
  EXPECT_EQ(std::ranges::count(messages(), "zelkora DD:FindMyHidRawDevice--start\n"), 0);
}

TEST_F(RefreshTest, SwitchedOffSerialSupportStopsTheDaemonsAndSearchesNothing) {
  write_file(data_file(".disable_rs232"), "");
  attach_serial();
  EXPECT_EQ(RefreshSerialDevice(), 0);
  EXPECT_EQ(commands(), stopping_lines());
  expect_untouched();
}

TEST_F(RefreshTest, AnEnumerationReadsWhatTheRefreshWrote) {
  attach_panels(2);
  EXPECT_EQ(RefreshSerialDevice(), 2);
  const Lines names = {TouchDevice[0].Name, TouchDevice[1].Name};
  clear_trace();
  answer_command({.command = kShareRecords});
  EXPECT_EQ(GetTouchPanels(0), 2);
  EXPECT_EQ(names, (Lines{TouchDevice[0].Name, TouchDevice[1].Name}));
  EXPECT_EQ(actions(), Lines{std::string("system ") + kShareRecords}) << "no port is opened";
}

}  // namespace
