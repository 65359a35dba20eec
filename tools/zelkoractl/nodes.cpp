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

namespace zelkoractl {
namespace {

namespace fs = std::filesystem;

constexpr const char* kResistiveList = "/opt/.touch_panel/rmanuflist.conf";
constexpr const char* kPctList = "/opt/.touch_panel/manuflist.conf";

void collect(const char* directory, std::string_view part, std::vector<std::string>& nodes) {
  std::error_code ignored;  // a missing directory holds no nodes
  for (fs::directory_iterator entry(directory, ignored), end; entry != end;
       entry.increment(ignored)) {
    const std::string path = entry->path();
    if (entry->path().filename().string().find(part) != std::string::npos) nodes.push_back(path);
  }
}

std::string join(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) {
    text += (text.empty() ? "" : ", ") + part;
  }
  return text;
}

std::string hint_at_list(const char* kind, const char* path) {
  std::error_code ignored;
  const char* state = fs::exists(path, ignored) ? "empty" : "missing";
  return std::string("the list of ") + kind + " product names " + path + " is " + state +
         ": no such panel is accepted without its product name in it";
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
  collect("/dev", "hiddev", nodes.all);
  collect("/dev/usb", "hiddev", nodes.all);
  if (MyConfig[ZELKORA_CONFIG_HIDRAW] != 0) collect("/dev", "hidraw", nodes.all);
  std::ranges::sort(nodes.all);
  std::ranges::copy_if(nodes.all, std::back_inserter(nodes.locked), is_locked);
  return nodes;
}

Failure no_permission(const std::string& message, const std::string& node) {
  return {ExitCode::kNoPermission, message, node,
          "run zelkoractl as root, or add a udev rule that gives this user read and write access"};
}

Failure no_permission(const Nodes& nodes) {
  return no_permission("no permission to open", join(nodes.locked));
}

std::vector<std::string> why_nothing_was_found(const Nodes& nodes) {
  if (nodes.all.empty()) {
    return {"no panel found: there is no hiddev or hidraw node; is a panel plugged in?"};
  }
  std::vector<std::string> hints = {"no panel found among " + join(nodes.all)};
  const bool resistive = MyConfig[ZELKORA_CONFIG_RESISTIVE] != 0;
  if (resistive && rManufCnt == 0) hints.push_back(hint_at_list("resistive", kResistiveList));
  if (ManufCnt == 0) hints.push_back(hint_at_list("projected-capacitive", kPctList));
  if (hints.size() == 1) hints.emplace_back("--debug shows how each node was judged");
  return hints;
}

}  // namespace zelkoractl
