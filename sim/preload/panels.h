// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The panels of a session: their models, attached to one virtual kernel, and the placeholder files
// that stand for their nodes in the session's /dev.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "panel_description.h"
#include "panel_queries.h"
#include "virtual_kernel.h"
#include "virtual_panel.h"

namespace zelkora::sim {

// The file that stands for a node.
struct NodePlaceholder {
  std::filesystem::path path;
  mode_t mode;
};

class Panels final : public PluggedPanels {
 public:
  explicit Panels(std::span<const PanelDescription> descriptions);

  size_t size() const override { return panels_.size(); }
  VirtualPanel& panel(size_t number) override { return panels_[number]->panel; }
  bool unplug(size_t number) override;
  std::optional<std::vector<std::string>> plug(size_t number) override;

  HostCommands* commands() override { return &commands_; }

  VirtualKernel& kernel() { return kernel_; }

  // Creates the placeholders and the default product-name lists. To be called in the private root.
  // Returns what failed, or an empty text.
  std::string create_files() const;

 private:
  struct Panel {
    explicit Panel(const PanelDescription& described);

    VirtualPanel panel;
    PanelDescription description;
    unsigned usb_port = 0;            // of a panel on USB, from 1
    std::vector<HidNodes> usb_nodes;  // of each interface
    std::string serial_port;          // the node of a panel there
    int attachment = -1;
    bool plugged = false;
  };

  static std::vector<NodePlaceholder> placeholders(const Panel& panel);
  void attach(Panel& panel);
  bool unplug(Panel& panel);
  void refuse_opens(const Panel& panel);
  unsigned free_usb_port_other_than(unsigned left) const;
  std::string create_name_lists() const;

  std::vector<std::unique_ptr<Panel>> panels_;
  HostCommands commands_;
  VirtualKernel kernel_;  // after the panels: it goes first and never sees a dead device
};

}  // namespace zelkora::sim
