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
#include "panel_queries.h"
#include "virtual_kernel.h"
#include "virtual_panel.h"

namespace zelkora::sim {

class Panels final : public PluggedPanels {
 public:
  explicit Panels(std::span<const PanelDescription> descriptions);

  size_t size() const override { return panels_.size(); }
  VirtualPanel& panel(size_t number) override { return panels_[number]->panel; }
  bool unplug(size_t number) override;

  HostCommands* commands() override { return &commands_; }

  VirtualKernel& kernel() { return kernel_; }

  // Creates the placeholders and the default product-name lists. To be called in the private root.
  // Returns what failed, or an empty text.
  std::string create_files() const;

 private:
  struct Panel {
    Panel(const PanelDescription& described, size_t number);

    VirtualPanel panel;
    HidNodes nodes;    // of a panel on USB
    std::string port;  // of a serial one
    PanelDescription description;
    int attachment = -1;
    bool plugged = true;
  };

  void plug(Panel& panel);
  void refuse_opens(const Panel& panel);

  // The node of one kind, empty when a panel has none.
  using NodeOf = const std::string& (*)(const Panel& panel);
  std::string create_nodes(NodeOf node_of, mode_t PanelDescription::*mode) const;
  std::string create_name_lists() const;

  std::vector<std::unique_ptr<Panel>> panels_;
  HostCommands commands_;
  VirtualKernel kernel_;  // after the panels: it goes first and never sees a dead device
};

}  // namespace zelkora::sim
