// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panels.h"

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <stdexcept>
#include <utility>

#include "private_root.h"

namespace zelkora::sim {
namespace {

namespace fs = std::filesystem;

std::string failure(const std::string& what, const fs::path& path) {
  return "cannot " + what + " " + path.string() + ": " + std::strerror(errno);
}

std::string create_placeholder(const NodePlaceholder& node) {
  std::string problem = make_node_placeholder(node.path);
  if (problem.empty() && chmod(node.path.c_str(), node.mode) != 0) {
    problem = failure("set the permissions of", node.path);
  }
  return problem;
}

std::string create_all(std::span<const NodePlaceholder> nodes) {
  for (const NodePlaceholder& node : nodes) {
    std::string problem = create_placeholder(node);
    if (!problem.empty()) return problem;
  }
  return {};
}

bool listed_in_order(const std::vector<NodePlaceholder>& nodes) {
  std::vector<fs::path> listed;
  for (const auto& entry : fs::directory_iterator(nodes.front().path.parent_path())) {
    if (std::ranges::find(nodes, entry.path(), &NodePlaceholder::path) != nodes.end()) {
      listed.push_back(entry.path());
    }
  }
  return std::ranges::equal(listed, nodes, {}, {}, &NodePlaceholder::path);
}

// Makes a directory walk meet the nodes in this order. tmpfs lists the newest file first, as
// devtmpfs does, but some kernels list the oldest first.
std::string create_in_order(std::vector<NodePlaceholder> nodes) {
  std::vector<NodePlaceholder> reversed(nodes.rbegin(), nodes.rend());
  std::string problem = create_all(reversed);
  if (!problem.empty() || listed_in_order(nodes)) return problem;
  for (const NodePlaceholder& node : nodes) fs::remove(node.path);
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
  const std::string suffix = std::to_string(number);
  return {.phys = {},
          .hiddev = panel.on_hiddev ? "/dev/usb/hiddev" + suffix : "",
          .hidraw = panel.on_hidraw ? "/dev/hidraw" + suffix : "",
          .event = "/dev/input/event" + suffix};
}

HidNodes nodes_of_pen(const PanelDescription& panel, size_t number) {
  HidNodes nodes = nodes_of(panel, number);
  nodes.hiddev.clear();
  return nodes;
}

// What tells a panel from other devices: the product name, or what the kernel makes up.
std::string list_name(const UsbIdentity& identity) {
  return identity.product_name.empty() ? identity.kernel_name() : identity.product_name;
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

Panels::Panel::Panel(const PanelDescription& described) : panel(described), description(described) {
  const auto* serial = std::get_if<SerialDescription>(&described.controller);
  if (serial != nullptr) serial_port = "/dev/" + serial->port;
}

Panels::Panels(std::span<const PanelDescription> descriptions) : commands_(ports_of(descriptions)) {
  unsigned port = 0;
  size_t pen_number = descriptions.size();
  for (const PanelDescription& description : descriptions) {
    Panel& panel = *panels_.emplace_back(std::make_unique<Panel>(description));
    panel.usb_port = ++port;
    const size_t number = panels_.size() - 1;
    if (!is_serial(description)) panel.usb_nodes.push_back(nodes_of(description, number));
    if (description.has_pen) panel.usb_nodes.push_back(nodes_of_pen(description, pen_number++));
    attach(panel);
    refuse_opens(panel);
  }
}

void Panels::attach(Panel& panel) {
  panel.plugged = true;
  if (ResistiveSerial* serial = panel.panel.serial()) {
    panel.attachment = kernel_.attach(*serial, panel.serial_port);
    return;
  }
  std::vector<PluggedInterface> interfaces;
  for (const UsbInterface& interface : panel.panel.usb_interfaces()) {
    const size_t number = interfaces.size();
    HidNodes& nodes = panel.usb_nodes[number];
    nodes.phys =
        "usb-0000:00:14.0-" + std::to_string(panel.usb_port) + "/input" + std::to_string(number);
    interfaces.push_back({interface, nodes});
  }
  panel.attachment = kernel_.attach(std::move(interfaces));
  panel.panel.usb()->set_on_unplug([this, &panel] { unplug(panel); });
  panel.panel.set_on_reset([this, &panel] { kernel_.replug(panel.attachment); });
}

// Permissions do not stop root, but a test run by root wants nodes that nobody can open.
void Panels::refuse_opens(const Panel& panel) {
  for (const NodePlaceholder& node : placeholders(panel)) {
    if (node.mode == 0) kernel_.fail_open(node.path, EACCES);
  }
}

std::vector<NodePlaceholder> Panels::placeholders(const Panel& panel) {
  const PanelDescription& description = panel.description;
  std::vector<NodePlaceholder> all;
  for (const HidNodes& nodes : panel.usb_nodes) {
    all.insert(all.end(), {{nodes.hiddev, description.hiddev_mode},
                           {nodes.hidraw, description.mode},
                           {nodes.event, description.mode}});
  }
  all.push_back({panel.serial_port, description.mode});
  std::erase_if(all, [](const NodePlaceholder& node) { return node.path.empty(); });
  return all;
}

std::string Panels::create_name_lists() const {
  std::vector<std::string> resistive, pct;
  for (const auto& panel : panels_) {
    if (panel->panel.serial()) continue;  // on a port, a panel does not tell its name
    auto& names = panel->panel.pct() ? pct : resistive;
    const std::string name = list_name(panel->description.identity);
    if (std::ranges::find(names, name) == names.end()) names.push_back(name);
  }
  const fs::path directory = kDataDirectory;
  std::string problem = create_list(directory / "rmanuflist.conf", resistive);
  if (problem.empty()) problem = create_list(directory / "manuflist.conf", pct);
  return problem;
}

std::string Panels::create_files() const {
  std::map<fs::path, std::vector<NodePlaceholder>> directories;
  for (const auto& panel : panels_) {
    for (NodePlaceholder& node : placeholders(*panel)) {
      directories[node.path.parent_path()].push_back(std::move(node));
    }
  }
  try {
    for (const auto& [directory, nodes] : directories) {
      std::string problem = create_in_order(nodes);
      if (!problem.empty()) return problem;
    }
    return create_name_lists();
  } catch (const fs::filesystem_error& error) {
    return error.what();
  }
}

bool Panels::unplug(size_t number) { return unplug(*panels_[number]); }

bool Panels::unplug(Panel& panel) {
  if (!panel.plugged) return false;
  panel.plugged = false;
  kernel_.unplug(panel.attachment);
  for (const NodePlaceholder& node : placeholders(panel)) remove_node_placeholder(node.path);
  return true;
}

std::optional<std::vector<std::string>> Panels::plug(size_t number) {
  Panel& panel = *panels_[number];
  if (panel.plugged) return std::nullopt;
  if (!panel.panel.serial()) panel.usb_port = free_usb_port_other_than(panel.usb_port);
  const std::string problem = create_all(placeholders(panel));
  if (!problem.empty()) throw std::runtime_error(problem);
  attach(panel);
  if (panel.panel.serial()) return {{panel.serial_port}};
  std::vector<std::string> list;
  for (const HidNodes& nodes : panel.usb_nodes) {
    list.insert(list.end(), {nodes.hiddev, nodes.hidraw, nodes.event});
  }
  return list;
}

unsigned Panels::free_usb_port_other_than(unsigned left) const {
  const auto taken = [&](unsigned port) {
    return port == left || std::ranges::any_of(panels_, [&](const auto& panel) {
             return panel->plugged && panel->usb_port == port;
           });
  };
  unsigned port = 1;
  while (taken(port)) ++port;
  return port;
}

}  // namespace zelkora::sim
