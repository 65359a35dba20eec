// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panel_report.h"

#include <zelkora.h>

namespace zelkoractl {
namespace {

std::string or_dash(std::string_view text) { return text.empty() ? "-" : printable(text); }

// A controller that keeps silent is still a panel; a resistive one always has a firmware text.
std::string firmware_text(const Panel& panel) {
  if (panel.firmware.empty() && !panel.is_pct()) return "no answer";
  return or_dash(panel.firmware);
}

std::string mode_text(const Panel& panel) {
  if (panel.is_pct() && panel.pos_mode == 0) return "no answer";
  return or_dash(pos_mode_name(panel.pos_mode));
}

Json name_or_null(std::string_view name) { return or_null(std::string(name)); }

}  // namespace

Json panel_document(const Panel& panel) {
  return {{"index", panel.index},
          {"type", type_name(panel)},
          {"node", panel.node},
          {"usb_id", or_null(panel.usb_id)},
          {"firmware", or_null(panel.firmware)},
          {"family", name_or_null(family_name(panel))},
          {"mode", name_or_null(pos_mode_name(panel.pos_mode))},
          {"serial_number", or_null(panel.serial_number)},
          {"recorded_usb_id", or_null(panel.recorded_usb_id)},
          {"event_node", or_null(find_event_node(panel))},
          {"phys", or_null(panel.phys)}};
}

std::string panel_text(const Panel& panel) {
  std::vector<std::vector<std::string>> rows = {{"panel", std::to_string(panel.index)},
                                                {"type", std::string(type_name(panel))},
                                                {"node", printable(panel.node)},
                                                {"usb id", or_dash(panel.usb_id)},
                                                {"firmware", firmware_text(panel)}};
  if (panel.is_pct()) {
    rows.push_back({"family", or_dash(family_name(panel))});
    rows.push_back({"mode", mode_text(panel)});
    rows.push_back({"serial number", panel.serial_number});
    rows.push_back({"recorded id", panel.recorded_usb_id});
  }
  rows.push_back({"event node", or_dash(find_event_node(panel))});
  rows.push_back({"phys", or_dash(panel.phys)});
  return align(rows);
}

std::vector<std::string> panel_headings() {
  return {"PANEL", "TYPE", "NODE", "USB-ID", "FIRMWARE", "FAMILY", "MODE", "SERIAL-NUMBER"};
}

std::vector<std::string> panel_row(const Panel& panel) {
  return {std::to_string(panel.index),
          std::string(type_name(panel)),
          printable(panel.node),
          or_dash(panel.usb_id),
          firmware_text(panel),
          or_dash(family_name(panel)),
          mode_text(panel),
          or_dash(panel.serial_number)};
}

}  // namespace zelkoractl
