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
  if (chmod(node.c_str(), mode) != 0) throw std::runtime_error(node + ": " + std::strerror(errno));
}

}  // namespace

Bench::Bench() = default;
Bench::~Bench() = default;

UsbNodes Bench::plug(const PanelDescription& description) {
  if (is_serial(description)) {
    throw std::runtime_error("a serial panel is not on USB");
  }
  if (!description.on_hiddev || !description.on_hidraw) {
    throw std::runtime_error("a real kernel gives every panel a hiddev and a hidraw node");
  }
  panels_.push_back({std::make_unique<VirtualPanel>(description)});
  VirtualPanel& panel = *panels_.back().panel;
  panel.set_on_reset([this, number = panels_.size() - 1] { server_.replug(number); });
  UsbNodes nodes = server_.plug(*panel.usb());
  set_mode(nodes.hiddev, description.hiddev_mode);
  set_mode(nodes.hidraw, description.mode);
  set_mode(nodes.event, description.mode);
  return nodes;
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
