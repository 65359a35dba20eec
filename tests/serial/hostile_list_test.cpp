// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The serial panel list may be written by anybody, and what it names ends up where root's commands
// and files are made. Whatever it holds, only names of ports come out at the other end.
#include <cerrno>
#include <set>

#include "serial_bench.h"

namespace {

using namespace zelkora::test;

namespace fs = std::filesystem;

struct Hostile {
  const char* title;
  std::string name;
};

const std::vector<Hostile> kNames = {
    {"a second command", "ttyS0;touch /opt/owned"},
    {"a command in quotes", "ttyS0\"; reboot; \""},
    {"a command substituted", "tty$(reboot)"},
    {"a command in backticks", "tty`reboot`"},
    {"a pipe", "ttyS0|sh"},
    {"the background", "ttyS0&reboot"},
    {"a redirection", "ttyS0>/etc/passwd"},
    {"a variable", "tty$HOME"},
    {"a wildcard", "tty*"},
    {"a question mark", "ttyS?"},
    {"brackets", "tty[S]0"},
    {"braces", "tty{S0,S1}"},
    {"a tilde", "~tty"},
    {"a comment", "tty#S0"},
    {"an exclamation mark", "tty!1"},
    {"a single quote", "tty'S0"},
    {"a backslash", "tty\\S0"},
    {"a blank", "ttyS0 x"},
    {"a blank at the end", "ttyS0 "},
    {"a tab", "ttyS0\tx"},
    {"a carriage return", "ttyS0\r"},
    {"an escape character", "tty\x1b[2J"},
    {"the way up", "../tty"},
    {"the way up in the middle", "tty/../../opt/owned"},
    {"the way up at the end", "tty/.."},
    {"more dots", "tty...S0"},
    {"another instance", "ttyS0@x"},
    {"a percent sign", "tty%n%s%n"},
    {"a rule", "tty\", RUN+=\"/bin/x"},
    {"a plus sign", "tty+S0"},
    {"a comma", "ttyS0,ttyS1"},
    {"a colon", "tty:S0"},
    {"an equals sign", "tty=S0"},
    {"a high byte", "tty\xff"},
    {"a letter of another alphabet", "tty\xc3\xa9"},
    {"a delete character", "tty\x7f"},
};

class HostileListTest : public SerialBench {
 protected:
  void SetUp() override {
    SerialBench::SetUp();
    fs::create_directories("/etc/udev/rules.d");
    write_file(kRcLocal, kScript);
    write_file(kRcLocalInRcD, kScript);
    allow_any_command();
  }

  static inline const std::string kScript = "#\nmodprobe morlex\n";

  // Everything that a host may do with what the list made of the table.
  void use_the_table() {
    for (int i = 0; i < ZELKORA_MAX_DEVICES; ++i) {
      EnableRS232(i, TouchDevice[i].Name);
      OpenSerialDevice(TouchDevice[i].Name);
      OpenTouchDevice(i);
    }
    DisableRS232Report(1);
    DisableRS232Report(0);
    SetSerialDeviceConf();
  }

  // Every file that the library wrote for others to run or to read.
  static std::string generated() {
    std::string all;
    for (const char* root : {"/etc", "."}) {
      for (const auto& entry : fs::recursive_directory_iterator(root)) {
        if (!entry.is_regular_file()) continue;
        all += entry.path().string() + "\n";
        if (!is_systems_own(entry.path())) all += read_file(entry.path());
      }
    }
    return all + read_file(kSerialListPath);
  }
  static bool is_systems_own(const fs::path& path) {
    return path.parent_path() == "/etc";  // names alone
  }
  static std::set<std::string> files_below(const char* root) {
    std::set<std::string> names;
    for (const auto& entry : fs::recursive_directory_iterator(root)) names.insert(entry.path());
    return names;
  }
};

TEST_F(HostileListTest, NoCommandAndNoFileHoldsANameThatIsNoneOfAPort) {
  for (const Hostile& row : kNames) {
    SCOPED_TRACE(row.title);
    std::memset(TouchDevice, 0, sizeof TouchDevice);
    DeviceNumber = 0;
    write_file(kSerialListPath, "SerialDevice1=" + row.name + "\nFW1=V1.2\n");
    EXPECT_EQ(GetSerialDevceNameConf(), 1);
    EXPECT_EQ(std::string(TouchDevice[0].Name), row.name);
    const std::set<std::string> before = files_below("/opt");
    clear_trace();
    use_the_table();
    EXPECT_EQ(actions(), Lines{});
    EXPECT_EQ(files_below("/opt"), before);
    EXPECT_EQ(generated().find(row.name), std::string::npos);
    EXPECT_EQ(read_file(kRcLocal), kScript);
    EXPECT_EQ(read_file(kRcLocalInRcD), kScript);
    EXPECT_EQ(read_file(kSerialListPath), "");
    EXPECT_FALSE(fs::exists(kUdevRule));
    EXPECT_TRUE(fs::is_empty("."));
  }
}

TEST_F(HostileListTest, AGoodPanelBesideAHostileOneKeepsItsNumber) {
  for (const Hostile& row : kNames) {
    SCOPED_TRACE(row.title);
    std::memset(TouchDevice, 0, sizeof TouchDevice);
    DeviceNumber = 0;
    for (const char* path : {kUdevRule, "vastrel2@.service"}) fs::remove(path);
    write_file(kRcLocal, kScript);
    write_file(kSerialListPath,
               "SerialDevice1=" + row.name + "\nFW1=V1.2\nSerialDevice2=ttyS0\nFW2=V1.2\n");
    EXPECT_EQ(GetSerialDevceNameConf(), 2);
    clear_trace();
    EXPECT_EQ(SetSerialDeviceConf(), 6);
    EXPECT_EQ(EnableRS232(1, TouchDevice[1].Name), 0);
    EXPECT_EQ(commands(), (Lines{std::string("system ") + kRemoveUnits,
                                 "system systemctl start vastrel2@ttyS0.service"}));
    EXPECT_EQ(generated().find(row.name), std::string::npos);
    EXPECT_EQ(read_file(kRcLocal), kScript + "/usr/bin/vastrel2 -morlex --daemon /dev/ttyS0\n");
    EXPECT_EQ(read_file(kSerialListPath), "SerialDevice2=ttyS0\nFW2=V1.2\n");
    EXPECT_EQ(read_file(kUdevRule),
              "ACTION==\"add|change\", SUBSYSTEM==\"tty|pnp\", KERNEL==\"ttyS0\", "
              "MODE:=\"0777\", \\\nRUN+=\"/sbin/modprobe morlex\", \\\n"
              "TAG+=\"systemd\", ENV{SYSTEMD_WANTS}+=\"vastrel2@%k.service\"\n");
    EXPECT_FALSE(fs::exists("vastrel1@.service"));
    EXPECT_TRUE(fs::exists("vastrel2@.service"));
  }
}

TEST_F(HostileListTest, AHostilePanelAloneIsNoPanelForTheBootFiles) {
  set_entries({"tty;x"});
  EXPECT_EQ(SetSerialDeviceConf(), 0);
  EXPECT_EQ(trace(), Lines{});
  EXPECT_EQ(read_file(kSerialListPath), "");
}

TEST_F(HostileListTest, NamesFromTheHostAreHeldToTheSame) {
  std::vector<Hostile> names = kNames;
  names.push_back({"a line feed", "ttyS0\nreboot"});
  names.push_back({"300 characters", std::string(300, 'y') + "tty"});
  names.push_back({"36 characters", "tty" + std::string(33, 'S')});
  for (const Hostile& row : names) {
    SCOPED_TRACE(row.title);
    EXPECT_EQ(EnableRS232(0, row.name.c_str()), 1);
    EXPECT_EQ(OpenSerialDevice(row.name.c_str()), 0);
    EXPECT_EQ(actions(), Lines{});
  }
}

TEST_F(HostileListTest, ALineFeedInTheTableMakesNoLineInAFile) {
  set_entries({"ttyS0\nreboot", "ttyS1"});
  EXPECT_EQ(SetSerialDeviceConf(), 6);
  EXPECT_EQ(generated().find("reboot"), std::string::npos);
  EXPECT_EQ(read_file(kRcLocal), kScript + "/usr/bin/vastrel2 -morlex --daemon /dev/ttyS1\n");
}

TEST_F(HostileListTest, FirmwareTextsMakeNoLinesAndNoFormats) {
  struct Row {
    const char* title;
    std::string firmware;
    std::string written;
  };
  const Row rows[] = {
      {"a line feed", "V1\nSerialDevice2=x", "V1"},
      {"format characters", "V%s%n%d", "V%s%n%d"},
      {"an escape character", "V1\x1b[2J", "V1"},
      {"a high byte", "V1\xff", "V1"},
      {"a delete character", "V1\x7f", "V1"},
      {"a NUL first", "", ""},
      {"shell characters are text there", "V1;$(x)", "V1;$(x)"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.title);
    set_entry(0, "ttyS0", row.firmware);
    EXPECT_EQ(SetSerialDeviceConf(), 6);
    EXPECT_EQ(read_file(kSerialListPath), "SerialDevice1=ttyS0\nFW1=" + row.written + "\n");
  }
  // A field that is full to its last byte.
  std::memset(TouchDevice[0].FWVersion, 'V', sizeof TouchDevice[0].FWVersion);
  EXPECT_EQ(SetSerialDeviceConf(), 6);
  EXPECT_EQ(read_file(kSerialListPath),
            "SerialDevice1=ttyS0\nFW1=" + std::string(sizeof TouchDevice[0].FWVersion, 'V') + "\n");
}

TEST_F(HostileListTest, LongNamesAreCutAndNeverWhole) {
  const std::string name = "tty" + std::string(297, 'S');
  write_file(kSerialListPath, "SerialDevice1=" + name + "\nFW1=V1.2\n");
  // The first piece of the line has room for the key and 241 characters of it.
  EXPECT_EQ(GetSerialDevceNameConf(), 1);
  EXPECT_EQ(std::string(TouchDevice[0].Name), name.substr(0, 35));
  for (int i = 0; i < 3; ++i) SetSerialDeviceConf();
  EXPECT_EQ(generated().find(name.substr(0, 36)), std::string::npos);
}

TEST_F(HostileListTest, FiveSlotsAndRepeatedKeysStayWithinTheTables) {
  std::string list;
  for (int i = 1; i <= 9; ++i) {
    const std::string k = std::to_string(i);
    list += "SerialDevice" + k + "=ttyS" + k + "\nFW" + k + "=V1." + k + "\n";
  }
  std::string many;
  for (int i = 0; i < 200; ++i) many += list;
  std::memset(TempSer, 0x7E, sizeof TempSer);
  write_file(kSerialListPath, many);
  EXPECT_EQ(GetSerialDevceNameConf(), 4);
  EXPECT_EQ(GetSerialDevceNameConf(), 4);
  for (int i = 0; i < 4; ++i) {
    const std::string k = std::to_string(i + 1);
    EXPECT_EQ(cMySerInfo[i].Name, "ttyS" + k);
    EXPECT_EQ(TouchDevice[i].Name, "ttyS" + k);
  }
  const std::string untouched(sizeof TempSer, '\x7E');
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(TempSer), sizeof TempSer), untouched);
}

TEST_F(HostileListTest, BytesOfAnyValueAreReadWithoutHarm) {
  // A fixed sequence that is no text of any kind, with the keys strewn in.
  std::string bytes;
  uint32_t state = 12345;
  for (int i = 0; i < 100'000; ++i) {
    state = state * 1664525 + 1013904223;
    bytes += static_cast<char>(state >> 24);
    if (i % 97 == 0) bytes += "SerialDevice" + std::to_string(i % 6) + "=tty";
    if (i % 89 == 0) bytes += "FW" + std::to_string(i % 6) + "=V";
  }
  write_file(kSerialListPath, bytes);
  EXPECT_LE(GetSerialDevceNameConf(), 4);
  clear_trace();
  use_the_table();
  EXPECT_LE(DeviceNumber, 4);
  for (const std::string& line : commands()) {
    EXPECT_EQ(line.find_first_not_of(
                  "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._/-@ \"*"),
              line.npos)
        << line;
  }
}

}  // namespace
