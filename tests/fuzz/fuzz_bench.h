// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The bench of the fuzz targets: each input meets the library's variables at zero, an empty data
// directory, no device nodes and an empty working directory, in a private root that the process
// entered once. Waits are not slept and commands not run, as in the unit tests.
//
// Beyond what the sanitizers see, an input is a finding when
//   - a command, or a file that others run or read, holds more of a device or a writable file than
//     the name of a port (see output_rules.h),
//   - the device table leaves its bounds, or a text in it lacks its end,
//   - a descriptor of anything but a device node is left open.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz_input.h"
#include "support/bench.h"

namespace zelkora::fuzz {

class FuzzBench {
 public:
  FuzzBench();
  ~FuzzBench();
  FuzzBench(const FuzzBench&) = delete;
  FuzzBench& operator=(const FuzzBench&) = delete;

  // The number to unplug the device by; it must outlive the bench.
  int attach(sim::HidDevice& device, const sim::HidNodes& nodes);
  int attach(sim::SerialDevice& device, const std::string& path);
  // The boot script of the machine, or that in rc.d; its own lines may stand in it afterwards.
  void write_boot_script(const std::string& path, const std::string& text);
  // What "dmesg" prints, and what "pgrep" and "pidof" do.
  void set_kernel_log(const std::string& text);
  void set_process_ids(const std::string& text);

 private:
  struct BootScript {
    std::string path;
    std::string text;
  };

  void show(const std::string& path);
  void check_commands() const;
  void check_files() const;
  void close_nodes();

  test::Seams seams_;
  std::vector<std::string> shown_nodes_;
  std::vector<BootScript> boot_scripts_;
  int next_descriptor_ = 0;
};

// Ends the process as a finding.
[[noreturn]] void fail(const std::string& what);
inline void require(bool holds, const char* what) {
  if (!holds) fail(what);
}

// An input names steps of a table, at most `most` of them, by a count and a byte for each.
template <typename Steps>
void take_steps(FuzzInput& input, const Steps& steps, size_t most) {
  const std::vector<uint8_t> chosen = input.bytes(1 + input.byte() % most);
  for (const uint8_t number : chosen) steps[number % std::size(steps)]();
}

}  // namespace zelkora::fuzz
