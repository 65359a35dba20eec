// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "usb_device.h"

#include <algorithm>

#include "usb_descriptors.h"

namespace zelkora::sim {
namespace {

using Bytes = std::vector<uint8_t>;

// A request's type and its number: the same number means different things to the device, its
// interface and the HID class.
constexpr unsigned key(uint8_t request_type, uint8_t request) {
  return unsigned{request_type} << 8 | request;
}

enum Request : unsigned {
  kGetStatus = key(0x80, 0x00),
  kGetDescriptor = key(0x80, 0x06),
  kGetConfiguration = key(0x80, 0x08),
  kSetConfiguration = key(0x00, 0x09),
  kGetInterfaceStatus = key(0x81, 0x00),
  kGetInterfaceDescriptor = key(0x81, 0x06),
  kGetReport = key(0xA1, 0x01),
  kSetReport = key(0x21, 0x09),
  kSetIdle = key(0x21, 0x0A),
};

constexpr uint8_t kFeatureReportType = 3;

}  // namespace

std::optional<Bytes> UsbDevice::control(const SetupPacket& setup, std::span<const uint8_t> data) {
  std::optional<Bytes> answer = serve(setup, data);
  if (answer && answer->size() > setup.length) answer->resize(setup.length);
  return answer;
}

std::optional<Bytes> UsbDevice::serve(const SetupPacket& setup, std::span<const uint8_t> data) {
  switch (key(setup.request_type, setup.request)) {
    case kGetStatus:
    case kGetInterfaceStatus:
      return Bytes{0, 0};
    case kGetDescriptor:
      return descriptor(setup);
    case kGetConfiguration:
      return Bytes{configuration_};
    case kSetConfiguration:
      if (setup.value > 1) return std::nullopt;
      configuration_ = setup.value.low();
      return Bytes{};
    case kGetInterfaceDescriptor:
      return interface_descriptor(setup);
    case kGetReport:
      return get_report(setup);
    case kSetReport:
      return set_report(setup, data);
    case kSetIdle:
      return Bytes{};
    default:
      return std::nullopt;
  }
}

std::optional<Bytes> UsbDevice::descriptor(const SetupPacket& setup) const {
  switch (setup.value.high()) {
    case kDeviceDescriptor:
      return device_descriptor(interfaces_[0].hid.identity());
    case kConfigurationDescriptor:
      return setup.value.low() == 0 ? std::optional(configuration_descriptor(interfaces_))
                                    : std::nullopt;
    case kStringDescriptor:
      return string(setup.value.low());
    default:
      return std::nullopt;
  }
}

std::optional<Bytes> UsbDevice::string(uint8_t index) const {
  const UsbIdentity& identity = interfaces_[0].hid.identity();
  switch (index) {
    case 0:
      return language_descriptor();
    case kManufacturerString:
      return string_descriptor(identity.manufacturer);
    case kProductString:
      return string_descriptor(identity.product_name);
    default:
      return std::nullopt;
  }
}

// The interface that a request to an interface names; nullptr: there is no such one.
const UsbInterface* UsbDevice::addressed(const SetupPacket& setup) const {
  const size_t number = setup.index.low();
  return number < interfaces_.size() ? &interfaces_[number] : nullptr;
}

std::optional<Bytes> UsbDevice::interface_descriptor(const SetupPacket& setup) const {
  const UsbInterface* interface = addressed(setup);
  if (interface == nullptr) return std::nullopt;
  switch (setup.value.high()) {
    case kHidDescriptor:
      return hid_descriptor(*interface);
    case kReportDescriptor:
      return report_descriptor(*interface);
    default:
      return std::nullopt;
  }
}

std::optional<Bytes> UsbDevice::get_report(const SetupPacket& setup) {
  const UsbInterface* interface = addressed(setup);
  if (interface == nullptr) return std::nullopt;
  const auto reports = interface->hid.feature_reports();
  const auto report = std::ranges::find(reports, setup.value.low(), &FeatureReport::id);
  if (setup.value.high() != kFeatureReportType || report == reports.end()) return std::nullopt;
  const std::optional<Bytes> payload = interface->hid.get_feature(report->id);
  if (!payload) return std::nullopt;
  // The device sends the whole report, whatever it has to say.
  Bytes answer{report->id};
  answer.insert(answer.end(), payload->begin(), payload->end());
  answer.resize(1 + report->usage_count);
  return answer;
}

std::optional<Bytes> UsbDevice::set_report(const SetupPacket& setup,
                                           std::span<const uint8_t> data) {
  const UsbInterface* interface = addressed(setup);
  const uint8_t id = setup.value.low();
  if (interface == nullptr || setup.value.high() != kFeatureReportType || data.empty() ||
      data[0] != id) {
    return std::nullopt;
  }
  if (!interface->hid.set_feature(id, data.subspan(1))) return std::nullopt;
  return Bytes{};
}

}  // namespace zelkora::sim
