// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The panels that the library found, and one of them opened.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace zelkoractl {

struct Panel {
  int index;
  int type;  // ZELKORA_TYPE_...
  std::string node;
  std::string usb_id;    // "3A4C:1688"; empty on a serial port
  std::string firmware;  // empty when the controller keeps silent
  std::string phys;
};

std::vector<Panel> find_panels();

// The panel that the command line names. Throws not found; or no permission, when what is missing
// may be behind a node that may not be opened.
Panel find_panel(const std::string& name);

// The input event node, empty when there is none.
std::string find_event_node(const Panel& panel);

std::string_view type_name(const Panel& panel);

// A resistive panel, open as long as this lives. Throws when the panel is of another kind, cannot
// be opened or does not answer.
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
