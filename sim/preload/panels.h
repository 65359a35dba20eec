// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The panels of a session: their models, attached to one virtual kernel, and the placeholder files
// that stand for their nodes in the session's /dev.
#pragma once

#include <memory>
#include <span>
#include <string>
#include <vector>

#include "panel_description.h"
#include "virtual_kernel.h"

namespace zelkora::sim {

class Panels {
 public:
  explicit Panels(std::span<const PanelDescription> descriptions);

  size_t size() const { return panels_.size(); }
  ResistiveController& controller(size_t panel) { return panels_[panel]->controller; }
  VirtualKernel& kernel() { return kernel_; }

  // Creates the placeholders and the default product-name lists. To be called in the private root.
  // Returns what failed, or an empty text.
  std::string create_files() const;

  // False when the panel was unplugged before.
  bool unplug(size_t panel);

 private:
  struct Panel {
    ResistiveController controller;
    ResistiveUsb usb;
    HidNodes nodes;
    PanelDescription description;
    int attachment = -1;
    bool plugged = true;

    Panel(const PanelDescription& described, size_t number);
  };

  std::string create_nodes(std::string HidNodes::*kind, mode_t PanelDescription::*mode) const;
  std::string create_name_lists() const;

  std::vector<std::unique_ptr<Panel>> panels_;
  VirtualKernel kernel_;  // after the panels: it goes first and never sees a dead device
};

}  // namespace zelkora::sim
