// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Questions and orders to virtual panels while a host uses them, and to the stand-ins for commands
// around them, one line of words each: the name of the query, mostly the number of a panel, and
// what else query_help() says.
#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host_commands.h"
#include "virtual_panel.h"

namespace zelkora::sim {

enum ExitStatus { kExitDone = 0, kExitFailed = 1, kExitUsage = 2, kExitNotFound = 3 };

struct Answer {
  int status = kExitDone;
  std::string text = {};  // lines of an answer, or what is wrong
  bool is_list = false;   // any number of lines
};

// The panels, wherever they are plugged in.
class PluggedPanels {
 public:
  virtual ~PluggedPanels() = default;

  virtual size_t size() const = 0;
  virtual VirtualPanel& panel(size_t number) = 0;
  // False when the panel was unplugged before.
  virtual bool unplug(size_t number) = 0;
  // Puts an unplugged panel back, a panel on USB into another port. Returns its nodes, empty ones
  // where it has none: hiddev, hidraw and event, then those of a pen; or that of a serial port.
  // Nothing: the panel is plugged in. Failures are thrown as std::runtime_error.
  virtual std::optional<std::vector<std::string>> plug(size_t number) = 0;
  // Nothing: the machine's own commands are used here.
  virtual HostCommands* commands() { return nullptr; }
};

// "plugged NUMBER NODE...", with "-" for a node that does not exist.
std::string plugged_line(size_t number, std::span<const std::string> nodes);

struct QueryUsage {
  std::string_view name;
  std::string_view arguments;  // behind the name, a word each: "PANEL ADDRESS"
  std::string_view help;

  std::vector<std::string_view> argument_names() const;
};

std::vector<QueryUsage> query_usages();

// The queries with their arguments, a line each, for --help.
std::string query_help();

Answer answer_query(PluggedPanels& panels, std::string_view line);

}  // namespace zelkora::sim
