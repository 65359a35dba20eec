// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The plugged controllers and the commands that look into them.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "panel_description.h"
#include "usbip_server.h"

namespace zelkora::sim {

// Failures are thrown as std::runtime_error with a text for the user.
class Bench {
 public:
  Bench();
  ~Bench();
  Bench(const Bench&) = delete;
  Bench& operator=(const Bench&) = delete;

  UsbNodes plug(const PanelDescription& description);

  // Runs one command and returns its one-line answer; "error: " and the reason when it was not
  // understood or failed.
  //   value PANEL ADDRESS       the 16-bit value in the controller
  //   permanent PANEL ADDRESS   the value that survives a reset
  //   set PANEL ADDRESS VALUE   changes the value in the controller
  //   silent PANEL on|off       whether the controller stalls every request for its reply
  //   frames PANEL              how many command frames came, then each of them in hex
  //   unplug PANEL              pulls the plug and waits until the nodes are gone
  std::string run(std::string_view line);

  // Answers the kernel until this descriptor can be read.
  void serve_until_readable(int descriptor) { server_.serve_until_readable(descriptor); }

 private:
  struct Panel;

  std::string dispatch(const std::vector<std::string_view>& words);

  // Declared before the server, so that it outlives it.
  std::vector<std::unique_ptr<Panel>> panels_;
  UsbipServer server_;
};

}  // namespace zelkora::sim
