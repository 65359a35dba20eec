// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "serial_ports.h"

#include <set>
#include <variant>

namespace zelkora::sim {
namespace {

std::string first_free(const std::set<std::string>& taken) {
  std::string port;
  for (unsigned number = 0; port.empty() || taken.contains(port); ++number) {
    port = "ttyS" + std::to_string(number);
  }
  return port;
}

}  // namespace

std::string assign_ports(std::span<PanelDescription> panels) {
  std::set<std::string> taken;
  for (const PanelDescription& panel : panels) {
    const auto* serial = std::get_if<SerialDescription>(&panel.controller);
    if (serial == nullptr || serial->port.empty()) continue;
    if (!taken.insert(serial->port).second) return "two panels are on port " + serial->port;
  }
  for (PanelDescription& panel : panels) {
    auto* serial = std::get_if<SerialDescription>(&panel.controller);
    if (serial == nullptr || !serial->port.empty()) continue;
    serial->port = first_free(taken);
    taken.insert(serial->port);
  }
  return {};
}

}  // namespace zelkora::sim
