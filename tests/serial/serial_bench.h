// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the tests of serial panels share: table entries, the boot files, a machine that answers the
// shell commands, and the lines that a controller on a port leaves in the trace.
#pragma once

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "support/bench.h"

namespace zelkora::test {

inline constexpr char kRcLocal[] = "/etc/rc.local";
inline constexpr char kRcLocalInRcD[] = "/etc/rc.d/rc.local";
inline constexpr char kUdevRule[] = "/etc/udev/rules.d/10-serialtouch.rules";
inline constexpr char kTakeKernelLog[] = "dmesg | grep tty > /opt/.touch_panel/tty.log";
inline constexpr char kRemoveKernelLog[] = "rm /opt/.touch_panel/tty.log";
inline constexpr char kRemoveUnits[] = "rm -f \"/systemd/system/vastrel*\"";
inline constexpr char kShareRecords[] = "chmod 777 \"/opt/.touch_panel/.restpbin\"";
inline constexpr char kUnsupported[] =
    "zelkora DD:Driver dose not support this device,\nplease contact us via "
    "support@zelkora.example\n";

inline const std::string kSerialListPath = data_file("sertp.conf");

inline Lines joined(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

inline Lines repeated(size_t count, const Lines& lines) {
  Lines all;
  for (size_t i = 0; i < count; ++i) all.insert(all.end(), lines.begin(), lines.end());
  return all;
}

// The trace messages as they are printed; each with its line feed.
inline Lines traced(const Lines& texts) {
  Lines lines;
  for (const std::string& text : texts) lines.push_back("zelkora DD:" + text + "\n");
  return lines;
}

// Exit status as system() reports it.
constexpr int exited(int status) { return status << 8; }

// The lines of an exchange with a controller on a port.
inline Lines exchange_lines(const std::string& port, const std::string& sent, int limit,
                            const std::string& answer) {
  const std::string path = "/dev/" + port;
  const std::string end = answer.empty() ? " -> EAGAIN" : ": " + answer;
  return {"write " + path + ": " + sent, "usleep 50000",
          "read " + path + " " + std::to_string(limit) + end};
}

inline Lines opened_lines(const std::string& port) {
  const std::string path = "/dev/" + port;
  return {"open " + path + " O_RDWR|O_NONBLOCK|O_NOCTTY", "tcgetattr " + path,
          "tcflush TCIFLUSH " + path, "tcsetattr TCSANOW " + path};
}

inline Lines probe_lines(const std::string& port, const std::string& answer = "01 31 0D") {
  return exchange_lines(port, "01 5A 5A 0D", 10, answer);
}

// "V1.2" is "01 56 31 2E 32 0D" on the wire.
inline Lines firmware_lines(const std::string& port, const std::string& answer) {
  return exchange_lines(port, "01 4F 49 0D", 20, answer);
}

class SerialBench : public Bench {
 protected:
  void SetUp() override {
    Bench::SetUp();
    host.debug = DbgFlag = 1;
    fd = -1;  // some paths close it, whatever it is
    for (const char* path : {kRcLocal, "/etc/rc.d", "/etc/udev"}) std::filesystem::remove_all(path);
  }
  void TearDown() override {
    for (const char* path : {kRcLocal, "/etc/rc.d", "/etc/udev"}) std::filesystem::remove_all(path);
    Bench::TearDown();
  }

  static void set_entry(int index, const std::string& name, const std::string& firmware = "V1.2") {
    TouchDeviceEntry& entry = TouchDevice[index];
    entry = {};
    for (char* field : {entry.Name, entry.Phys, entry.ID}) std::strcpy(field, name.c_str());
    std::strcpy(entry.FWVersion, firmware.c_str());
    entry.Type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  }
  static void set_entries(const std::vector<std::string>& names) {
    std::memset(TouchDevice, 0, sizeof TouchDevice);
    for (size_t i = 0; i < names.size(); ++i) set_entry(static_cast<int>(i), names[i]);
    DeviceNumber = static_cast<int>(names.size());
  }

  // The kernel log, filtered for "tty", from now on.
  void set_kernel_log(const std::string& text) {
    forget_commands();
    answer_command(
        {.command = kTakeKernelLog, .effect = [text] { write_file(data_file("tty.log"), text); }});
    answer_command({.command = kRemoveKernelLog,
                    .effect = [] { std::filesystem::remove(data_file("tty.log")); }});
  }

  // What went over ports, to the shell and into waits.
  Lines actions() const {
    return trace_of({"open", "close", "read", "write", "tcgetattr", "tcflush", "tcsetattr",
                     "usleep", "sleep", "system", "popen", "pclose"});
  }
  Lines commands() const { return trace_of({"system", "popen"}); }
};

}  // namespace zelkora::test
