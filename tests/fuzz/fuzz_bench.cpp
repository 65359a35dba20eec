// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "fuzz_bench.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "output_rules.h"

namespace zelkora::fuzz {
namespace {

namespace fs = std::filesystem;
using test::data_file;

constexpr char kWorkingDirectory[] = "/opt/zelkora-fuzz";
constexpr char kRule[] = "/etc/udev/rules.d/10-serialtouch.rules";
constexpr const char* kBootScripts[] = {"/etc/rc.local", "/etc/rc.d/rc.local"};
constexpr int kDescriptors = 1024;

void empty_directory(const fs::path& directory) {
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    fs::remove_all(entry.path());
  }
}

// Nothing when there is no such file.
std::string content(const std::string& path) {
  return fs::exists(path) ? test::read_file(path) : std::string();
}

int lowest_free_descriptor() {
  const int number = ::dup(STDERR_FILENO);
  ::close(number);
  return number;
}

// Inputs may have the library close the number 0, which stands for no device in its variable.
void keep_standard_input() {
  if (::fcntl(STDIN_FILENO, F_GETFD) < 0) static_cast<void>(!::open("/dev/null", O_RDONLY));
}

template <size_t kSize>
void check_text(const char (&field)[kSize]) {
  require(std::memchr(field, '\0', kSize) != nullptr, "a text in the device table has no end");
}

void check_table() {
  require(DeviceNumber >= 0 && DeviceNumber <= ZELKORA_MAX_DEVICES, "DeviceNumber out of bounds");
  for (const TouchDeviceEntry& entry : TouchDevice) {
    check_text(entry.Name);
    check_text(entry.Phys);
    check_text(entry.EventName);
    check_text(entry.ID);
    check_text(entry.FWVersion);
  }
}

void check_file(const std::string& path, const std::string& bad_line) {
  if (!bad_line.empty()) fail(path + " holds " + bad_line);
}

}  // namespace

void fail(const std::string& what) {
  std::fprintf(stderr, "finding: %s\n", what.c_str());
  std::abort();
}

FuzzBench::FuzzBench() {
  keep_standard_input();
  test::g_host = {};
  test::g_host.debug = 1;
  test::g_x = {};
  test::reset_library_state();
  DbgFlag = 1;
  fd = -1;  // some paths close it, whatever it is
  empty_directory(sim::kDataDirectory);
  empty_directory(kWorkingDirectory);
  fs::remove(kRule);
  for (const char* path : kBootScripts) fs::remove(path);
  seams_.any_command = true;
  seams_.any_node = true;
  next_descriptor_ = lowest_free_descriptor();
}

FuzzBench::~FuzzBench() {
  check_commands();
  check_files();
  check_table();
  close_nodes();
  keep_standard_input();
  require(lowest_free_descriptor() == next_descriptor_, "a descriptor was left open");
  for (const std::string& path : shown_nodes_) {
    if (seams_.kernel.owns(path)) sim::remove_node_placeholder(path);
  }
}

void FuzzBench::show(const std::string& path) {
  if (path.empty()) return;
  const std::string error = sim::make_node_placeholder(path);
  if (!error.empty()) fail(error);
  shown_nodes_.push_back(path);
}

int FuzzBench::attach(sim::HidDevice& device, const sim::HidNodes& nodes) {
  for (const std::string& path : {nodes.hiddev, nodes.hidraw, nodes.event}) show(path);
  const int attachment = seams_.kernel.attach(device, nodes);
  device.set_on_unplug([this, attachment, nodes] {
    seams_.kernel.unplug(attachment);
    for (const std::string& path : {nodes.hiddev, nodes.hidraw, nodes.event}) {
      if (!path.empty()) sim::remove_node_placeholder(path);
    }
  });
  return attachment;
}

int FuzzBench::attach(sim::SerialDevice& device, const std::string& path) {
  show(path);
  return seams_.kernel.attach(device, path);
}

void FuzzBench::write_boot_script(const std::string& path, const std::string& text) {
  test::write_file(path, text);
  boot_scripts_.push_back({path, text});
}

void FuzzBench::set_kernel_log(const std::string& text) {
  const std::string log = data_file("tty.log");
  seams_.commands.push_back({.command = "dmesg | grep tty > /opt/.touch_panel/tty.log",
                             .effect = [log, text] { test::write_file(log, text); }});
  seams_.commands.push_back(
      {.command = "rm /opt/.touch_panel/tty.log", .effect = [log] { fs::remove(log); }});
}

void FuzzBench::set_process_ids(const std::string& text) {
  for (const char* command :
       {"pgrep vastrel1", "pgrep vastrel2", "pgrep vastrel3", "pgrep vastrel4", "pidof pelvand"}) {
    seams_.commands.push_back({.command = command, .output = text});
  }
}

void FuzzBench::check_commands() const {
  for (const std::string& line : seams_.trace) {
    for (const std::string_view call : {"system ", "popen "}) {
      if (!line.starts_with(call)) continue;
      const std::string_view command = std::string_view(line).substr(call.size());
      if (!is_allowed_command(command)) fail("the command " + std::string(command));
    }
  }
}

void FuzzBench::check_files() const {
  for (const BootScript& script : boot_scripts_) {
    check_file(script.path, bad_boot_line(script.text, content(script.path)));
  }
  check_file(kRule, bad_rule_line(content(kRule)));
  for (const fs::directory_entry& entry : fs::directory_iterator(kWorkingDirectory)) {
    check_file(entry.path(), bad_unit_line(content(entry.path())));
  }
}

void FuzzBench::close_nodes() {
  for (int number = 0; number < kDescriptors; ++number) {
    if (seams_.serves(number)) ::close(number);
  }
}

}  // namespace zelkora::fuzz

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  using zelkora::fuzz::kWorkingDirectory;
  // What the seams take for a failed test is a finding as well.
  testing::FLAGS_gtest_throw_on_failure = true;
  const std::string error =
      zelkora::sim::enter_private_root({.private_etc = true, .private_boot = true});
  if (!error.empty()) {
    std::fprintf(stderr, "cannot make a private root: %s\n", error.c_str());
    std::exit(1);
  }
  if (mkdir(kWorkingDirectory, 0755) != 0 || chdir(kWorkingDirectory) != 0) {
    std::perror(kWorkingDirectory);
    std::exit(1);
  }
  // The library's dumps; libFuzzer tells its progress on standard error.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) std::exit(1);
  std::filesystem::create_directories("/etc/udev/rules.d");
  std::filesystem::create_directories("/etc/rc.d");
  return 0;
}
