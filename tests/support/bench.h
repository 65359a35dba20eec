// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The test bench: a fixture with virtual controllers on a virtual kernel, a host with settable
// answers, and one ordered trace of all that the library did. Each test starts with the library's
// variables at zero, an empty data directory, no device nodes and an empty working directory.
//
//   using CommandsTest = zelkora::test::Bench;
//
//   TEST_F(CommandsTest, ReadEepValueAsksForTheAddressInHex) {
//     Panel& panel = open_resistive();        // attached, in the table, opened; trace cleared
//     panel.controller.set_value(84, 0x0012);
//     EXPECT_EQ(ReadEEPValue(84), 0x0012);
//     EXPECT_EQ(trace_of({"set_report", "usleep", "get_report"}),
//               (Lines{"set_report 1: 06 01 47 50 35 34 0D", "usleep 50000", "usleep 50000",
//                      "get_report 1: 06 01 30 30 31 32 0D"}));
//   }
//
// The trace holds the lines of the virtual kernel (see virtual_kernel.h) and
//   usleep 50000 | sleep 1 | uname | system CMD | popen CMD | pclose | perror TEXT | log TEXT
//   XOpenDisplay | XRRGetCrtcInfo 0 | mydoled_all_display 0x800 0 (see fake_x.h)
//   tcgetattr /dev/ttyS0 | tcflush TCIFLUSH /dev/ttyS0 | tcsetattr TCSANOW /dev/ttyS0
// where TEXT of a log line stands behind its prefix and without its line feed: "log EE:unable to
// open device". messages() has it to the byte.
//
// A test fails when the library opens a node that is not there (expect_absent() allows it), runs a
// command that has no answer (answer_command(), allow_any_command()), or leaves a descriptor open
// that the test did not expect (expect_leaked_descriptors()).
//
// Tests of files use the real ones, below sim::kDataDirectory or any other place: the test program
// runs in a private root.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "fake_x.h"
#include "host.h"
#include "private_root.h"
#include "resistive_controller.h"
#include "seams.h"

namespace zelkora::test {

using Lines = std::vector<std::string>;

// A resistive controller on USB. Its nodes are numbered in the order of attaching:
// /dev/usb/hiddev0, /dev/hidraw0, /dev/input/event0, usb-0000:00:14.0-1/input0 and so on.
struct Panel {
  explicit Panel(sim::UsbIdentity identity) : usb(controller, std::move(identity)) {}

  sim::ResistiveController controller;
  sim::ResistiveUsb usb;
  sim::HidNodes nodes;
  int attachment = 0;
};

struct SerialPanel {
  sim::ResistiveController controller;
  sim::ResistiveSerial port{controller};
  std::string path;
  int attachment = 0;
};

struct PanelOptions {
  sim::UsbIdentity identity = {0x3A4C, 0x1688, "Zelkora", "Virtual Resistive"};
  std::optional<std::string> phys = {};
  std::optional<std::string> hiddev = {};  // an empty path: no such node
  std::optional<std::string> hidraw = {};
  std::optional<std::string> event = {};
};

class Bench : public testing::Test {
 protected:
  Bench();
  ~Bench() override;
  void SetUp() override;
  void TearDown() override;

  Host& host = g_host;
  FakeX& x = g_x;

 private:
  Seams seams_;

 protected:
  sim::VirtualKernel& kernel = seams_.kernel;

  // --- controllers ---
  Panel& attach_resistive(const PanelOptions& options = {});
  SerialPanel& attach_serial(const std::string& path = "/dev/ttyS0");
  // Any device; the caller keeps it alive until the end of the test.
  int attach(sim::HidDevice& device, const sim::HidNodes& nodes);
  void unplug(const Panel& panel);
  void unplug(const SerialPanel& panel);
  // The resistive list of product names, such that attach_resistive()'s panels are found.
  void write_resistive_list(const std::string& text = "Virtual Resistive\n");
  // Attaches a panel and opens it as entry 0 of the table; closed at the end of the test.
  Panel& open_resistive(const PanelOptions& options = {});
  // Attaches a serial panel and opens its port on fd, with device_type set.
  SerialPanel& open_serial(const std::string& path = "/dev/ttyS0");

  // --- what happened ---
  const Lines& trace() const { return seams_.trace; }
  // The lines that begin with one of these, as whole words: "usleep", "ioctl HIDIOCSREPORT".
  Lines trace_of(std::initializer_list<std::string_view> beginnings) const;
  size_t count_of(std::string_view beginning) const { return trace_of({beginning}).size(); }
  // The library's messages as they were printed, prefix and line feed included.
  const Lines& messages() const { return seams_.messages; }
  void clear_trace();

  // --- what the machine answers ---
  void set_kernel_release(std::string release) { seams_.kernel_release = std::move(release); }
  void answer_command(CommandAnswer answer) { seams_.commands.push_back(std::move(answer)); }
  void forget_commands() { seams_.commands.clear(); }
  void allow_any_command() { seams_.any_command = true; }
  // The node is not there, and the library may find that out by opening it.
  void expect_absent(const std::string& path) { seams_.absent_nodes.insert(path); }
  // The next call of that name on that file fails, once `skipped` such calls went through: open,
  // read, write, fopen, popen (by its command), opendir, mkostemp, rename (by its target), fsync,
  // fchown, fchmod, ftruncate, unlink. A path that ends in "*" stands for all that begin like it.
  void fail_file_call(std::string call, std::string path, int error, int skipped = 0) {
    seams_.fail_file_call(std::move(call), std::move(path), error, skipped);
  }
  // A file that is opened with fopen() can be read up to a place, and fails there.
  void break_reading(std::string path, size_t bytes) {
    seams_.break_reading(std::move(path), bytes);
  }
  // In a child process: kills it at that call, from 1 on, of those that change what is on disk.
  void kill_at_write_call(int count) { seams_.kill_at_write_call(count); }
  // Is told of every change on disk from now on; an empty function ends that.
  void record_disk_operations(std::function<void(const DiskOperation&)> recorder) {
    seams_.on_disk_operation = std::move(recorder);
  }
  // What else happens while the library waits: the other end of a real port answers.
  void during_usleep(std::function<void()> effect) { seams_.during_usleep = std::move(effect); }
  termios& terminal(const std::string& path) { return seams_.terminals[path]; }

  // --- descriptors ---
  static std::vector<int> open_descriptors();
  // Those opened since the test began and still open, without the one that the bench opened.
  std::vector<int> leaked_descriptors() const;
  void expect_leaked_descriptors(size_t count) { expected_leaks_ = count; }

 private:
  void own_descriptor(int descriptor) { owned_.push_back(descriptor); }
  void show(const std::string& path);

  std::vector<std::unique_ptr<Panel>> panels_;
  std::vector<std::unique_ptr<SerialPanel>> serial_panels_;
  std::vector<std::string> shown_nodes_;
  std::vector<int> descriptors_before_;
  std::vector<int> owned_;
  size_t expected_leaks_ = 0;
};

// What the action writes to standard output, the library's messages included.
std::string captured_stdout(const std::function<void()>& action);

// Whole files. Writing makes the directories above; reading a missing file fails the test.
void write_file(const std::string& path, std::string_view text);
std::string read_file(const std::string& path);
// "/opt/.touch_panel/NAME"
std::string data_file(std::string_view name);

}  // namespace zelkora::test
