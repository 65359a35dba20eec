// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panels.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "private_root.h"

namespace zelkora::sim {
namespace {

namespace fs = std::filesystem;

std::string failure(const std::string& what, const fs::path& path) {
  return "cannot " + what + " " + path.string() + ": " + std::strerror(errno);
}

struct Placeholder {
  fs::path path;
  mode_t mode;
};

std::string create_placeholder(const Placeholder& node) {
  std::string problem = make_node_placeholder(node.path);
  if (problem.empty() && chmod(node.path.c_str(), node.mode) != 0) {
    problem = failure("set the permissions of", node.path);
  }
  return problem;
}

std::string create_all(std::span<const Placeholder> nodes) {
  for (const Placeholder& node : nodes) {
    std::string problem = create_placeholder(node);
    if (!problem.empty()) return problem;
  }
  return {};
}

bool listed_in_order(const std::vector<Placeholder>& nodes) {
  std::vector<fs::path> listed;
  for (const auto& entry : fs::directory_iterator(nodes.front().path.parent_path())) {
    if (std::ranges::find(nodes, entry.path(), &Placeholder::path) != nodes.end()) {
      listed.push_back(entry.path());
    }
  }
  return std::ranges::equal(listed, nodes, {}, {}, &Placeholder::path);
}

// Makes a directory walk meet the nodes in this order. tmpfs lists the newest file first, as
// devtmpfs does, but some kernels list the oldest first.
std::string create_in_order(std::vector<Placeholder> nodes) {
  std::vector<Placeholder> reversed(nodes.rbegin(), nodes.rend());
  std::string problem = create_all(reversed);
  if (!problem.empty() || listed_in_order(nodes)) return problem;
  for (const Placeholder& node : nodes) fs::remove(node.path);
  problem = create_all(nodes);
  if (!problem.empty() || listed_in_order(nodes)) return problem;
  return nodes.front().path.parent_path().string() + " does not list its files by age";
}

// A list that is there already belongs to the owner of the data directory.
std::string create_list(const fs::path& path, const std::vector<std::string>& names) {
  if (fs::exists(path)) return {};
  std::ofstream file(path);
  for (const std::string& name : names) file << name << '\n';
  file.close();
  return file ? std::string() : failure("write", path);
}

// All nodes of a panel have its number, also where panels before it have none of their kind.
HidNodes nodes_of(const PanelDescription& panel, size_t number) {
  if (is_serial(panel)) return {};
  const std::string suffix = std::to_string(number);
  return {.phys = "usb-0000:00:14.0-" + std::to_string(number + 1) + "/input0",
          .hiddev = panel.on_hiddev ? "/dev/usb/hiddev" + suffix : "",
          .hidraw = panel.on_hidraw ? "/dev/hidraw" + suffix : "",
          .event = "/dev/input/event" + suffix};
}

std::string port_of(const PanelDescription& panel) {
  const auto* serial = std::get_if<SerialDescription>(&panel.controller);
  return serial != nullptr ? "/dev/" + serial->port : "";
}

std::vector<std::string> ports_of(std::span<const PanelDescription> panels) {
  std::vector<std::string> ports;
  for (const PanelDescription& panel : panels) {
    const auto* serial = std::get_if<SerialDescription>(&panel.controller);
    if (serial != nullptr) ports.push_back(serial->port);
  }
  return ports;
}

}  // namespace

Panels::Panel::Panel(const PanelDescription& described, size_t number)
    : panel(described),
      nodes(nodes_of(described, number)),
      port(port_of(described)),
      description(described) {}

Panels::Panels(std::span<const PanelDescription> descriptions) : commands_(ports_of(descriptions)) {
  for (const PanelDescription& description : descriptions) {
    plug(*panels_.emplace_back(std::make_unique<Panel>(description, panels_.size())));
  }
}

void Panels::plug(Panel& panel) {
  if (ResistiveSerial* serial = panel.panel.serial()) {
    panel.attachment = kernel_.attach(*serial, panel.port);
  } else {
    panel.attachment = kernel_.attach(*panel.panel.usb(), panel.nodes);
    panel.panel.set_on_reset([this, &panel] { kernel_.replug(panel.attachment); });
  }
  refuse_opens(panel);
}

// Permissions do not stop root, but a test run by root wants nodes that nobody can open.
void Panels::refuse_opens(const Panel& panel) {
  if (panel.description.hiddev_mode == 0) kernel_.fail_open(panel.nodes.hiddev, EACCES);
  if (panel.description.mode == 0) {
    kernel_.fail_open(panel.nodes.hidraw, EACCES);
    kernel_.fail_open(panel.nodes.event, EACCES);
    kernel_.fail_open(panel.port, EACCES);
  }
}

std::string Panels::create_nodes(NodeOf node_of, mode_t PanelDescription::*mode) const {
  std::vector<Placeholder> nodes;
  for (const auto& panel : panels_) {
    const std::string& path = node_of(*panel);
    if (!path.empty()) nodes.push_back({path, panel->description.*mode});
  }
  return nodes.empty() ? std::string() : create_in_order(std::move(nodes));
}

std::string Panels::create_name_lists() const {
  std::vector<std::string> resistive, pct;
  for (const auto& panel : panels_) {
    if (panel->panel.serial()) continue;  // on a port, a panel does not tell its name
    auto& names = panel->panel.pct() ? pct : resistive;
    const std::string& name = panel->description.identity.product_name;
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
  }
  const fs::path directory = kDataDirectory;
  std::string problem = create_list(directory / "rmanuflist.conf", resistive);
  if (problem.empty()) problem = create_list(directory / "manuflist.conf", pct);
  return problem;
}

std::string Panels::create_files() const {
  try {
    constexpr std::pair<NodeOf, mode_t PanelDescription::*> kKinds[] = {
        {[](const Panel& panel) -> auto& {return panel.nodes.hiddev;
  }
  , &PanelDescription::hiddev_mode
}
, {[](const Panel& panel) -> auto& {return panel.nodes.hidraw;
}  // namespace zelkora::sim
, &PanelDescription::mode
}
, {[](const Panel& panel) -> auto& {return panel.nodes.event;
}
, &PanelDescription::mode
}
, {
  [](const Panel& panel) -> auto& { return panel.port; }
  , &PanelDescription::mode
}
}
;
for (const auto& [node_of, mode] : kKinds) {
  std::string problem = create_nodes(node_of, mode);
  if (!problem.empty()) return problem;
}
return create_name_lists();
}
catch (const fs::filesystem_error& error) {
  return error.what();
}
}

bool Panels::unplug(size_t number) {
  Panel& panel = *panels_[number];
  if (!panel.plugged) return false;
  panel.plugged = false;
  kernel_.unplug(panel.attachment);
  for (const std::string& node :
       {panel.nodes.hiddev, panel.nodes.hidraw, panel.nodes.event, panel.port}) {
    if (!node.empty()) remove_node_placeholder(node);
  }
  return true;
}

}  // namespace zelkora::sim
