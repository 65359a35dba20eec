// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "virtual_panel.h"

#include <algorithm>
#include <array>
#include <utility>

namespace zelkora::sim {
namespace {

// The block by which a host knows the panel again: what it was when the block was written, and its
// serial number. Numbers have their high byte first. The host's encoding is a plain copy.
std::array<uint8_t, PctController::kBlockSize> identity_block(
    const UsbIdentity& identity, uint32_t firmware, const std::array<uint8_t, 8>& serial_number) {
  constexpr size_t kSerialNumberAt = 12;
  constexpr unsigned kRevisionMask = 0xFFF;
  std::array<uint8_t, PctController::kBlockSize> block{};
  size_t at = 0;
  for (const unsigned number :
       {unsigned{identity.vendor}, unsigned{identity.product}, firmware & kRevisionMask}) {
    block[at++] = static_cast<uint8_t>(number >> 8);
    block[at++] = static_cast<uint8_t>(number);
  }
  std::ranges::copy(serial_number, block.begin() + kSerialNumberAt);
  return block;
}

void deliver(ResistiveController& controller, const ResistiveDescription& description) {
  controller.set_firmware(description.firmware);
  controller.faults = description.faults;
  for (const auto& [address, value] : description.words) {
    controller.set_stored_value(address, value);
  }
}

}  // namespace

VirtualPanel::Resistive::Resistive(const ResistiveDescription& description,
                                   const UsbIdentity& identity)
    : usb(controller, identity) {
  deliver(controller, description);
  if (description.signed_fields) {
    usb.set_report({ResistiveUsb::kReportId, ResistiveUsb::kUsageCount, -128, 127});
  }
}

VirtualPanel::Serial::Serial(const SerialDescription& description) {
  deliver(controller, description);
  controller.set_new_generation(description.new_generation);
}

VirtualPanel::VirtualPanel(const PanelDescription& description)
    : applications_(description.on_hiddev ? Applications::kVendorAndMouse : Applications::kMouse) {
  if (const auto* own = std::get_if<ResistiveDescription>(&description.controller)) {
    model_.emplace<Resistive>(*own, description.identity);
  } else if (const auto* serial = std::get_if<SerialDescription>(&description.controller)) {
    model_.emplace<Serial>(*serial);
  } else {
    const auto& pct = std::get<PctDescription>(description.controller);
    model_.emplace<PctController>(pct.firmware, description.identity);
    set_up(pct);
  }
  HidDevice* device = usb();
  if (device == nullptr) return;
  device->usb_faults = description.usb_faults;
  if (description.has_pen) pen_.emplace(*device);
}

void VirtualPanel::set_up(const PctDescription& description) {
  PctController& controller = *pct();
  controller.faults = description.faults;
  controller.set_pos_mode(description.pos_mode);
  if (description.serial_number) {
    controller.store_block(
        identity_block(controller.identity(), description.firmware, *description.serial_number));
  }
}

std::string_view VirtualPanel::kind() const {
  if (std::holds_alternative<Serial>(model_)) return "serial";
  const auto* controller = std::get_if<PctController>(&model_);
  if (controller == nullptr) return "resistive";
  return controller->family() == PctFamily::k8752 ? "pct8752" : "pct8753";
}

HidDevice* VirtualPanel::usb() {
  if (PctController* controller = pct()) return controller;
  auto* own = std::get_if<Resistive>(&model_);
  return own != nullptr ? &own->usb : nullptr;
}

ResistiveSerial* VirtualPanel::serial() {
  auto* own = std::get_if<Serial>(&model_);
  return own != nullptr ? &own->port : nullptr;
}

std::vector<UsbInterface> VirtualPanel::usb_interfaces() {
  std::vector<UsbInterface> interfaces;
  if (HidDevice* controller = usb()) interfaces.emplace_back(*controller, applications_);
  if (pen_) interfaces.emplace_back(*pen_, Applications::kPen);
  return interfaces;
}

ResistiveController* VirtualPanel::resistive() {
  if (auto* serial = std::get_if<Serial>(&model_)) return &serial->controller;
  auto* own = std::get_if<Resistive>(&model_);
  return own != nullptr ? &own->controller : nullptr;
}

// A resistive controller stays on the bus when it is reset.
void VirtualPanel::set_on_reset(std::function<void()> on_reset) {
  if (PctController* controller = pct()) controller->set_on_reset(std::move(on_reset));
}

}  // namespace zelkora::sim
