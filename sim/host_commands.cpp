// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "host_commands.h"

#include <algorithm>
#include <set>

namespace zelkora::sim {
namespace {

using Outcome = HostCommands::Outcome;
using Words = std::span<const std::string>;

constexpr std::string_view kNames[] = {"dmesg", "killall", "pgrep", "pidof", "systemctl"};

bool is_plain(const std::string& word) {
  constexpr std::string_view kPlain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789%+,-./:=@_";
  return !word.empty() && word.find_first_not_of(kPlain) == std::string::npos;
}

std::string command_line(Words words) {
  std::string line;
  for (const std::string& word : words) {
    if (!line.empty()) line += ' ';
    line += is_plain(word) ? word : "'" + word + "'";
  }
  return line;
}

// The arguments that are no options.
std::vector<std::string> operands(Words arguments) {
  std::vector<std::string> found;
  std::ranges::copy_if(arguments, std::back_inserter(found),
                       [](const std::string& word) { return !word.starts_with('-'); });
  return found;
}

// "vastrel1@ttyS0.service" runs vastrel1.
std::string process_of(const std::string& unit) {
  constexpr std::string_view kSuffix = ".service";
  std::string name = unit;
  if (name.ends_with(kSuffix)) name.resize(name.size() - kSuffix.size());
  return name.substr(0, name.find('@'));
}

Outcome failure(std::string text) { return {1, std::move(text) + "\n"}; }

}  // namespace

std::span<const std::string_view> HostCommands::names() { return kNames; }

Outcome HostCommands::run(Words words) {
  if (words.empty()) return failure("no command");
  const auto failing = failures_.find(words.front());
  Outcome outcome = failing != failures_.end() ? Outcome{failing->second}
                                               : carry_out(words.front(), words.subspan(1));
  std::string line = command_line(words);
  if (outcome.status != 0) line += " -> " + std::to_string(outcome.status);
  if (trace_) trace_(line);
  record_.push_back(std::move(line));
  return outcome;
}

bool HostCommands::fail(std::string_view name, int status) {
  if (std::ranges::find(kNames, name) == std::end(kNames)) return false;
  failures_.erase(std::string(name));
  if (status != 0) failures_.emplace(name, status);
  return true;
}

Outcome HostCommands::carry_out(const std::string& name, Words arguments) {
  if (name == "dmesg") return dmesg();
  if (name == "systemctl") return systemctl(arguments);
  if (name == "pgrep") return pgrep(arguments);
  if (name == "pidof") return pidof(arguments);
  if (name == "killall") return killall(arguments);
  return {127, name + ": not found\n"};
}

Outcome HostCommands::dmesg() const {
  std::string log = "[    0.000000] Linux version 6.1.0 (virtual)\n";
  for (const std::string& port : ports_) {
    const bool adapter = port.starts_with("ttyUSB");
    log += adapter ? "[    1.500000] usb 1-1: serial converter now attached to " + port + "\n"
                   : "[    0.500000] serial8250: " + port + " (base_baud = 115200) is a 16550A\n";
  }
  return {0, log};
}

void HostCommands::start(const std::string& process) {
  if (processes_.try_emplace(process, next_pid_).second) ++next_pid_;
}

Outcome HostCommands::systemctl(Words arguments) {
  const std::vector<std::string> words = operands(arguments);
  const std::string verb = words.empty() ? "" : words.front();
  constexpr std::string_view kWithoutEffect[] = {"enable", "disable", "daemon-reload"};
  if (std::ranges::find(kWithoutEffect, verb) != std::end(kWithoutEffect)) return {};
  if (verb != "start" && verb != "stop" && verb != "restart") {
    return failure("Unknown command verb '" + verb + "'.");
  }
  if (words.size() < 2) return failure("Too few arguments.");
  for (const std::string& unit : Words(words).subspan(1)) {
    const std::string process = process_of(unit);
    if (verb != "start") processes_.erase(process);
    if (verb != "stop") start(process);
  }
  return {};
}

Outcome HostCommands::pgrep(Words arguments) const {
  std::set<int> pids;
  for (const std::string& text : operands(arguments)) {
    for (const auto& [name, pid] : processes_) {
      if (name.find(text) != std::string::npos) pids.insert(pid);
    }
  }
  Outcome outcome{pids.empty() ? 1 : 0};
  for (const int pid : pids) outcome.text += std::to_string(pid) + "\n";
  return outcome;
}

Outcome HostCommands::pidof(Words arguments) const {
  std::string pids;
  for (const std::string& name : operands(arguments)) {
    const auto found = processes_.find(name);
    if (found == processes_.end()) continue;
    pids.append(pids.empty() ? "" : " ").append(std::to_string(found->second));
  }
  return pids.empty() ? Outcome{1} : Outcome{0, pids + "\n"};
}

Outcome HostCommands::killall(Words arguments) {
  Outcome outcome;
  for (const std::string& name : operands(arguments)) {
    if (processes_.erase(name) != 0) continue;
    outcome.status = 1;
    outcome.text += name + ": no process found\n";
  }
  return outcome;
}

}  // namespace zelkora::sim
