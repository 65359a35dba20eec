// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "bench.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "typed_text.h"

namespace zelkora::sim {
namespace {

// The kernel's bench reads one line for each command.
std::string one_line(const Answer& answer) {
  if (answer.status != kExitDone) return "error: " + answer.text;
  std::vector<std::string_view> lines = split(answer.text, '\n');
  lines.pop_back();  // nothing behind the last line feed
  if (!answer.is_list) return lines.empty() ? "ok" : std::string(lines[0]);
  std::string text = std::to_string(lines.size());
  for (const std::string_view line : lines) text.append(" | ").append(line);
  return text;
}

void set_mode(const std::string& node, mode_t mode) {
  if (node.empty()) return;
  if (chmod(node.c_str(), mode) != 0) throw std::runtime_error(node + ": " + std::strerror(errno));
}

// Returns the nodes as a list.
std::vector<std::string> give_permissions(const PanelDescription& description,
                                          const std::vector<UsbNodes>& interfaces) {
  std::vector<std::string> list;
  for (const auto& [hiddev, hidraw, event] : interfaces) {
    set_mode(hiddev, description.hiddev_mode);
    set_mode(hidraw, description.mode);
    set_mode(event, description.mode);
    list.insert(list.end(), {hiddev, hidraw, event});
  }
  return list;
}

}  // namespace

Bench::Bench(Trace trace) : trace_(std::move(trace)) {}
Bench::~Bench() = default;

std::vector<std::string> Bench::plug(const PanelDescription& description) {
  if (is_serial(description)) {
    throw std::runtime_error("a serial panel is not on USB");
  }
  if (!description.on_hidraw) {
    throw std::runtime_error(
        "nodes=hiddev: a real kernel gives every panel on USB a hidraw node; "
        "nodes=hidraw and nodes=both are possible");
  }
  panels_.push_back({std::make_unique<VirtualPanel>(description), description});
  VirtualPanel& panel = *panels_.back().panel;
  const size_t number = panels_.size() - 1;
  panel.set_on_reset([this, number] { server_.replug(number); });
  panel.usb()->set_on_unplug([this, number] {
    panels_[number].plugged = false;
    server_.drop(number);
  });
  return give_permissions(description, server_.plug(panel.usb_interfaces(), trace_of(number)));
}

std::optional<std::vector<std::string>> Bench::plug(size_t number) {
  Panel& panel = panels_[number];
  if (panel.plugged) return std::nullopt;
  const std::vector<UsbNodes> nodes = server_.plug_again(number);
  panel.plugged = true;
  return give_permissions(panel.description, nodes);
}

Trace Bench::trace_of(size_t number) const {
  if (!trace_) return {};
  return [this, front = "panel " + std::to_string(number) + " "](const std::string& line) {
    trace_(front + line);
  };
}

bool Bench::unplug(size_t number) {
  if (!std::exchange(panels_[number].plugged, false)) return false;
  server_.unplug(number);
  return true;
}

std::string Bench::run(std::string_view line) {
  try {
    return one_line(answer_query(*this, line));
  } catch (const std::exception& error) {
    return std::string("error: ") + error.what();
  }
}

}  // namespace zelkora::sim
