// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The panels that the library found, and one of them opened.
#pragma once

#include <zelkora.h>

#include <string>
#include <string_view>
#include <vector>

#include "failure.h"

namespace zelkoractl {

struct Panel {
  int index;
  int type;  // ZELKORA_TYPE_...
  std::string node;
  std::string usb_id;    // "3A4C:1688"; empty on a serial port
  std::string firmware;  // empty when the controller keeps silent
  std::string phys;

  // Of projected-capacitive panels; 0 and empty for others.
  int family;                   // ZELKORA_FAMILY_...
  int pos_mode;                 // 1..4, see pos_mode_name(); 0: could not be read
  std::string serial_number;    // 16 lower-case hex digits
  std::string recorded_usb_id;  // as it was when the serial number was written, as a digitizer

  bool is_pct() const { return type == ZELKORA_TYPE_PCT; }
};

std::vector<Panel> find_panels();

// The panel that the command line names. Throws not found; or no permission, when what is missing
// may be behind a node that may not be opened.
Panel find_panel(const std::string& name);

// The input event node, empty when there is none.
std::string find_event_node(const Panel& panel);

// "panel 0"
std::string call(const Panel& panel);

std::string_view type_name(const Panel& panel);

// "8752", "8753", "legacy" or "unknown"; empty for panels other than projected-capacitive ones.
std::string_view family_name(const Panel& panel);

// "digitizer", "mouse", "hybrid" or "hybrid-4"; empty for 0.
std::string_view pos_mode_name(int pos_mode);

// No permission, or gone.
Failure cannot_open(const Panel& panel);

// A resistive panel, open as long as this lives. Throws when it cannot be opened or does not
// answer.
class OpenPanel {
 public:
  explicit OpenPanel(const Panel& panel);
  ~OpenPanel();
  OpenPanel(const OpenPanel&) = delete;
  OpenPanel& operator=(const OpenPanel&) = delete;

 private:
  int index_;
};

}  // namespace zelkoractl
