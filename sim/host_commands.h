// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Stand-ins for the programs by which a host finds serial ports and runs the daemons of its panels:
// dmesg, killall, pgrep, pidof and systemctl. They know of the ports and services of a session
// alone, so that nothing of the machine is stopped, started or told.
#pragma once

#include <functional>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zelkora::sim {

class HostCommands {
 public:
  struct Outcome {
    int status = 0;
    std::string text = {};  // what it prints, as an error when the status is not 0
  };

  // No process can have this number or a higher one: Linux stops at 2^22.
  static constexpr int kFirstPid = 5'000'001;

  static std::span<const std::string_view> names();

  // The kernel log tells of these ports: "ttyS0", "ttyUSB0".
  explicit HostCommands(std::vector<std::string> ports) : ports_(std::move(ports)) {}

  // Carries out a command line, word by word, the name of the program first:
  //   dmesg                                  the kernel log
  //   systemctl start|stop|restart UNIT...   a unit NAME@INSTANCE.service runs the process NAME
  //   systemctl enable|disable|daemon-reload nothing comes of it
  //   pgrep TEXT, pidof NAME, killall NAME   words that begin with a '-' are passed over
  Outcome run(std::span<const std::string> words);

  // From now on the program does nothing and ends with this status; 0: it works again. False: there
  // is no such program.
  bool fail(std::string_view name, int status);

  // The command lines so far, each with " -> STATUS" behind it when that is not 0. Words that a
  // shell would not take as they are stand in single quotes.
  const std::vector<std::string>& record() const { return record_; }
  // Receives each line of the record as it is made.
  void set_trace(std::function<void(const std::string&)> trace) { trace_ = std::move(trace); }

 private:
  using Words = std::span<const std::string>;

  Outcome carry_out(const std::string& name, Words arguments);
  Outcome dmesg() const;
  Outcome systemctl(Words arguments);
  Outcome pgrep(Words arguments) const;
  Outcome pidof(Words arguments) const;
  Outcome killall(Words arguments);
  void start(const std::string& process);

  std::vector<std::string> ports_;
  std::map<std::string, int> processes_;  // by name, with their ids
  int next_pid_ = kFirstPid;
  std::map<std::string, int, std::less<>> failures_;
  std::vector<std::string> record_;
  std::function<void(const std::string&)> trace_;
};

}  // namespace zelkora::sim
