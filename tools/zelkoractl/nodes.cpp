// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "nodes.h"

#include <fcntl.h>
#include <unistd.h>
#include <zelkora.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <string_view>

#include "config.h"
#include "output.h"
#include "paths.h"

namespace zelkoractl {
namespace {

namespace fs = std::filesystem;

void collect(const char* directory, std::string_view part, std::vector<std::string>& nodes) {
  std::error_code ignored;  // a missing directory holds no nodes
  for (fs::directory_iterator entry(directory, ignored), end; entry != end;
       entry.increment(ignored)) {
    const std::string path = entry->path();
    if (entry->path().filename().string().find(part) != std::string::npos) nodes.push_back(path);
  }
}

std::string hint_at_list(const char* kind, const char* path) {
  std::error_code ignored;
  const char* state = fs::exists(path, ignored) ? "empty" : "missing";
  return std::string("the list of ") + kind + " product names " + path + " is " + state +
         ": no such panel is accepted without its product name in it";
}

bool is_on(int position) { return current_config().switches[static_cast<size_t>(position)] != 0; }

std::string switched_off(const std::string& key) {
  const std::string& file = current_config().file;
  return key + " = off in the configuration" + (file.empty() ? "" : " file " + file);
}

}  // namespace

bool is_locked(const std::string& node) {
  // Opened as the enumeration opens it: permission bits do not tell all that can forbid it.
  const int descriptor = open(node.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) return errno == EACCES || errno == EPERM;
  close(descriptor);
  return false;
}

Nodes look_at_nodes() {
  Nodes nodes;
  collect(paths::kDev, "hiddev", nodes.all);
  collect(paths::kDevUsb, "hiddev", nodes.all);
  if (is_on(ZELKORA_CONFIG_HIDRAW)) collect(paths::kDev, "hidraw", nodes.all);
  std::ranges::sort(nodes.all);
  std::ranges::copy_if(nodes.all, std::back_inserter(nodes.locked), is_locked);
  return nodes;
}

Failure no_permission(const std::string& message, const std::vector<std::string>& nodes) {
  return {ExitCode::kNoPermission, message, nodes,
          "run zelkoractl as root, or add a udev rule that gives this user read and write access"};
}

Failure no_permission(const Nodes& nodes) {
  return no_permission("no permission to open", nodes.locked);
}

std::vector<std::string> why_nothing_was_found(const Nodes& nodes) {
  const bool resistive = is_on(ZELKORA_CONFIG_RESISTIVE);
  const bool hidraw = is_on(ZELKORA_CONFIG_HIDRAW);
  std::vector<std::string> hints;
  if (nodes.all.empty()) {
    hints.push_back(std::string("no panel found: there is no ") +
                    (hidraw ? "hiddev or hidraw" : "hiddev") + " node; is a panel plugged in?");
  } else {
    hints.push_back("no panel found among " + join(nodes.all));
  }
  if (!hidraw) hints.push_back("hidraw nodes are passed over: " + switched_off("hidraw"));
  if (!resistive) hints.push_back("resistive panels are passed over: " + switched_off("resistive"));
  if (nodes.all.empty()) return hints;
  const bool accepts_resistive = resistive && rManufCnt != 0;
  if (resistive && !accepts_resistive) {
    hints.push_back(hint_at_list("resistive", paths::kResistiveNames));
  }
  // Where resistive panels are accepted, an empty list of the other kind is the usual case.
  if (!accepts_resistive && ManufCnt == 0) {
    hints.push_back(hint_at_list("projected-capacitive", paths::kPctNames));
  }
  hints.emplace_back("--debug shows how each node was judged");
  return hints;
}

}  // namespace zelkoractl
