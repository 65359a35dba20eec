// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Questions and orders to virtual panels while a host uses them, and to the stand-ins for commands
// around them, one line of words each: the name of the query, mostly the number of a panel, and
// what else query_help() says.
#pragma once

#include <cstddef>
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
  // Nothing: the machine's own commands are used here.
  virtual HostCommands* commands() { return nullptr; }
};

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
