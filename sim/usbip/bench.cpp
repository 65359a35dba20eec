// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "bench.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <iterator>
#include <stdexcept>
#include <utility>
#include <variant>

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

Bench::Bench(LineEnds line_ends, Trace trace)
    : line_ends_(std::move(line_ends)), trace_(std::move(trace)) {}
Bench::~Bench() = default;

std::vector<std::string> Bench::plug(const PanelDescription& description) {
  const auto* serial = std::get_if<SerialDescription>(&description.controller);
  if (serial == nullptr && !description.on_hidraw) {
    throw std::runtime_error(
        "nodes=hiddev: a real kernel gives every panel on USB a hidraw node; "
        "nodes=hidraw and nodes=both are possible");
  }
  const size_t number = panels_.size();
  panels_.emplace_back(description);
  return serial != nullptr ? plug_serial(number, serial->port) : plug_usb(number);
}

std::vector<std::string> Bench::plug_usb(size_t number) {
  Panel& panel = panels_[number];
  const size_t usb = usb_number(number);
  panel.panel->set_on_reset([this, usb] { server_.replug(usb); });
  panel.panel->usb()->set_on_unplug([this, number, usb] {
    panels_[number].plugged = false;
    server_.drop(usb);
  });
  return give_permissions(panel.description,
                          server_.plug(panel.panel->usb_interfaces(), trace_of(number)));
}

std::vector<std::string> Bench::plug_serial(size_t number, const std::string& port) {
  if (port.empty()) throw std::runtime_error("which port is it on? serial,port=NAME");
  const auto end = line_ends_.find(port);
  if (end == line_ends_.end()) {
    throw std::runtime_error("where does the line of port " + port + " end? --line " + port +
                             "=PATH");
  }
  const auto line = lines_.try_emplace(number, *panels_[number].panel->serial(), end->second).first;
  server_.also_serve(line->second);
  return {port};
}

// The server numbers those on USB alone.
size_t Bench::usb_number(size_t number) const {
  return number - static_cast<size_t>(std::distance(lines_.begin(), lines_.lower_bound(number)));
}

std::optional<std::vector<std::string>> Bench::plug(size_t number) {
  Panel& panel = panels_[number];
  if (panel.plugged) return std::nullopt;
  std::vector<std::string> nodes;
  if (const auto* serial = std::get_if<SerialDescription>(&panel.description.controller)) {
    lines_.at(number).plug();
    nodes = {serial->port};
  } else {
    nodes = give_permissions(panel.description, server_.plug_again(usb_number(number)));
  }
  panel.plugged = true;
  return nodes;
}

Trace Bench::trace_of(size_t number) const {
  if (!trace_) return {};
  return [this, front = "panel " + std::to_string(number) + " "](const std::string& line) {
    trace_(front + line);
  };
}

bool Bench::unplug(size_t number) {
  if (!std::exchange(panels_[number].plugged, false)) return false;
  if (const auto line = lines_.find(number); line != lines_.end()) {
    line->second.unplug();
  } else {
    server_.unplug(usb_number(number));
  }
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
