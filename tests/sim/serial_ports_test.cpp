// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "serial_ports.h"

#include <gtest/gtest.h>

#include <string>
#include <variant>
#include <vector>

namespace zelkora::sim {
namespace {

std::vector<PanelDescription> described(const std::vector<std::string>& texts) {
  std::vector<PanelDescription> panels;
  for (const std::string& text : texts) EXPECT_EQ(parse_panel(text, panels.emplace_back()), "");
  return panels;
}

std::string ports_of(const std::vector<PanelDescription>& panels) {
  std::string ports;
  for (const PanelDescription& panel : panels) {
    const auto* serial = std::get_if<SerialDescription>(&panel.controller);
    ports += (serial != nullptr ? serial->port : "usb") + " ";
  }
  return ports;
}

TEST(SerialPortsTest, AreGivenOutFromTheFirstFreeOne) {
  auto panels = described({"serial", "resistive", "serial,port=ttyS0", "serial",
                           "serial,port=ttyUSB0", "serial,port=ttyS2", "pct8752", "serial"});
  EXPECT_EQ(assign_ports(panels), "");
  EXPECT_EQ(ports_of(panels), "ttyS1 usb ttyS0 ttyS3 ttyUSB0 ttyS2 usb ttyS4 ");
}

TEST(SerialPortsTest, HaveOnePanelEach) {
  auto panels = described({"serial,port=ttyUSB1", "serial", "serial,port=ttyUSB1"});
  EXPECT_EQ(assign_ports(panels), "two panels are on port ttyUSB1");
}

}  // namespace
}  // namespace zelkora::sim
