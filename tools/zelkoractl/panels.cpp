// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panels.h"

#include <zelkora.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <optional>

#include "nodes.h"
#include "paths.h"

namespace zelkoractl {
namespace {

// The kernel hides transfer errors on hiddev: what is read from a controller that keeps silent is
// the command last sent. Its firmware query then seems to be answered by the query's own letters,
// and every value reads as 0.
constexpr std::string_view kFirmwareQueryEchoed = "OI";

std::string usb_id(unsigned vendor, unsigned product) {
  char text[sizeof "VVVV:PPPP"];
  std::snprintf(text, sizeof text, "%04X:%04X", vendor & 0xFFFF, product & 0xFFFF);
  return text;
}

void read_pct(const TouchDeviceEntry& entry, Panel& panel) {
  panel.family = entry.IsLegacy;
  panel.pos_mode = entry.POSMode;
  for (const unsigned char byte : entry.SN) {
    char digits[3];
    std::snprintf(digits, sizeof digits, "%02x", byte);
    panel.serial_number += digits;
  }
  panel.recorded_usb_id = usb_id(entry.OldVID, entry.OldPID);
}

Panel read_entry(int index) {
  char node[sizeof TouchDeviceEntry::Name];
  char id[sizeof TouchDeviceEntry::ID];
  char firmware[sizeof TouchDeviceEntry::FWVersion];
  GetTouchDeviceName(index, node);
  GetTouchDeviceID(index, id);
  GetTouchDeviceFw(index, firmware);
  const TouchDeviceEntry& entry = TouchDevice[index];
  Panel panel{index, GetTouchDeviceType(index), node, id, firmware, entry.Phys, 0, 0, "", ""};
  std::ranges::replace(panel.usb_id, '_', ':');
  if (panel.type == ZELKORA_TYPE_RESISTIVE_SERIAL) {
    // Name and id are that of the port.
    panel.node = std::string(paths::kDev) + "/" + panel.node;
    panel.usb_id.clear();
  } else if (panel.is_pct()) {
    read_pct(entry, panel);
  } else if (panel.firmware == kFirmwareQueryEchoed) {
    panel.firmware.clear();
  }
  return panel;
}

std::optional<size_t> parse_index(const std::string& text) {
  size_t index = 0;
  const char* const text_end = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), text_end, index);
  if (error != std::errc() || end != text_end) return std::nullopt;
  return index;
}

}  // namespace

std::vector<Panel> find_panels() {
  std::vector<Panel> panels;
  const int count = GetTouchPanels(0);
  panels.reserve(static_cast<size_t>(count));
  for (int index = 0; index < count; ++index) {
    panels.push_back(read_entry(index));
  }
  return panels;
}

Panel find_panel(const std::string& name) {
  const std::optional<size_t> index = parse_index(name);
  if (!index) {
    throw Failure(ExitCode::kUsage, "\"" + name + "\" is no panel number", "",
                  "take a number from the first column of zelkoractl list");
  }
  std::vector<Panel> panels = find_panels();
  if (*index < panels.size()) return panels[*index];
  const Nodes nodes = look_at_nodes();
  if (!nodes.locked.empty()) throw no_permission(nodes);
  std::string message = "there is no panel " + name;
  if (panels.empty()) {
    for (const std::string& reason : why_nothing_was_found(nodes)) {
      message += "; " + reason;
    }
  }
  throw Failure(ExitCode::kNotFound, message, "", "zelkoractl list shows the panels there are");
}

std::string find_event_node(const Panel& panel) {
  // An empty path would match the first event node there is.
  if (panel.phys.empty()) return "";
  char node[sizeof TouchDeviceEntry::EventName];
  GetEventDeviceName(panel.index, node);
  return node;
}

std::string call(const Panel& panel) { return "panel " + std::to_string(panel.index); }

std::string_view type_name(const Panel& panel) {
  switch (panel.type) {
    case ZELKORA_TYPE_RESISTIVE_USB:
      return "resistive-usb";
    case ZELKORA_TYPE_RESISTIVE_SERIAL:
      return "resistive-serial";
    case ZELKORA_TYPE_PCT:
      return "pct-usb";
    default:
      return "unknown";
  }
}

std::string_view family_name(const Panel& panel) {
  if (!panel.is_pct()) return "";
  switch (panel.family) {
    case ZELKORA_FAMILY_8752:
      return "8752";
    case ZELKORA_FAMILY_LEGACY:
      return "legacy";
    case ZELKORA_FAMILY_8753:
      return "8753";
    default:
      return "unknown";
  }
}

std::string_view pos_mode_name(int pos_mode) {
  constexpr std::string_view kNames[] = {"", "digitizer", "mouse", "hybrid", "hybrid-4"};
  const auto index = static_cast<size_t>(pos_mode);
  return index < std::size(kNames) ? kNames[index] : "";
}

Failure cannot_open(const Panel& panel) {
  if (is_locked(panel.node)) {
    return no_permission("no permission to open " + call(panel), {panel.node});
  }
  return {ExitCode::kFailed, call(panel) + " cannot be opened", panel.node,
          "check that it is still plugged in, then try again"};
}

OpenPanel::OpenPanel(const Panel& panel) : index_(panel.index) {
  if (OpenTouchDevice(index_) == 0) {
    // A port where nobody answers stays open.
    if (panel.type == ZELKORA_TYPE_RESISTIVE_SERIAL) CloseTouchDevice(index_);
    throw cannot_open(panel);
  }
  char firmware[20];
  if (GetFirmware(firmware) != 0 && firmware == kFirmwareQueryEchoed) {
    CloseTouchDevice(index_);
    throw Failure(ExitCode::kFailed, call(panel) + " does not answer", panel.node,
                  "unplug the panel, plug it in again, then try again");
  }
}

OpenPanel::~OpenPanel() { CloseTouchDevice(index_); }

}  // namespace zelkoractl
