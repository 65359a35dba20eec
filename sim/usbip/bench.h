// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The plugged panels and the queries to them.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "panel_description.h"
#include "panel_queries.h"
#include "serial_line.h"
#include "usbip_server.h"

namespace zelkora::sim {

// Failures are thrown as std::runtime_error with a text for the user.
class Bench final : public PluggedPanels {
 public:
  // Where the controllers' own ends of the serial lines are, by the name of the host's port.
  using LineEnds = std::map<std::string, std::string, std::less<>>;

  // The trace receives a line for each feature report, see VirtualKernel::set_trace(), and for each
  // time that a panel comes or goes, "panel NUMBER " in front; it may be empty.
  explicit Bench(LineEnds line_ends = {}, Trace trace = {});
  ~Bench();
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  // Returns the nodes that the kernel made, or the port that a serial panel is on.
  std::vector<std::string> plug(const PanelDescription& description);

  size_t size() const override { return panels_.size(); }
  VirtualPanel& panel(size_t number) override { return *panels_[number].panel; }
  // Waits until the nodes are gone.
  bool unplug(size_t number) override;
  std::optional<std::vector<std::string>> plug(size_t number) override;

  // Answers a query in one line: with "ok" when there is nothing to say, with the number of lines
  // and " | " in front of each when it is a list, with "error: " and the reason when it failed.
  std::string run(std::string_view line);

  // Answers the kernel until this descriptor can be read.
  void serve_until_readable(int descriptor) { server_.serve_until_readable(descriptor); }

 private:
  struct Panel {
    explicit Panel(const PanelDescription& described)
        : panel(std::make_unique<VirtualPanel>(described)), description(described) {}

    std::unique_ptr<VirtualPanel> panel;
    PanelDescription description;
    bool plugged = true;
  };

  std::vector<std::string> plug_serial(size_t number, const std::string& port);
  std::vector<std::string> plug_usb(size_t number);
  size_t usb_number(size_t number) const;
  Trace trace_of(size_t number) const;

  LineEnds line_ends_;
  Trace trace_;
  // Declared before the server, so that they outlive it.
  std::vector<Panel> panels_;
  std::map<size_t, SerialLine> lines_;  // of the serial panels, by their numbers
  UsbipServer server_;
};

}  // namespace zelkora::sim
