// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A virtual panel: the controller that a description asks for, of whatever kind.
#pragma once

#include <functional>
#include <optional>
#include <string_view>
#include <variant>
#include <vector>

#include "hid_device.h"
#include "panel_description.h"
#include "pct_controller.h"
#include "resistive_controller.h"
#include "usb_interface.h"

namespace zelkora::sim {

class VirtualPanel {
 public:
  explicit VirtualPanel(const PanelDescription& description);
  VirtualPanel(const VirtualPanel&) = delete;
  VirtualPanel& operator=(const VirtualPanel&) = delete;

  // As in a description: "resistive", "serial", "pct8752" or "pct8753".
  std::string_view kind() const;

  // Where it is plugged in; the other one is nullptr.
  HidDevice* usb();
  ResistiveSerial* serial();

  // What it shows on USB: the controller, and its pen if it has one.
  std::vector<UsbInterface> usb_interfaces();

  // The controller, if the panel is of this kind.
  ResistiveController* resistive();
  PctController* pct() { return std::get_if<PctController>(&model_); }

  // Called in the midst of a request after which the panel leaves the bus and comes back.
  void set_on_reset(std::function<void()> on_reset);

 private:
  struct Resistive {
    Resistive(const ResistiveDescription& description, const UsbIdentity& identity);

    ResistiveController controller;
    ResistiveUsb usb;
  };

  struct Serial {
    explicit Serial(const SerialDescription& description);

    ResistiveController controller;
    ResistiveSerial port{controller};
  };

  void set_up(const PctDescription& description);

  std::variant<std::monostate, Resistive, Serial, PctController> model_;
  Applications applications_;
  std::optional<PenInterface> pen_;
};

}  // namespace zelkora::sim
