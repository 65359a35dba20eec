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

Response response_of(std::optional<Bytes> answer) {
  if (!answer) return {Outcome::kStall};
  return {Outcome::kDone, std::move(*answer)};
}

}  // namespace

UsbDevice::UsbDevice(std::vector<UsbInterface> interfaces, const Trace& trace)
    : interfaces_(std::move(interfaces)) {
  for (const UsbInterface& interface : interfaces_) links_.emplace_back(interface.hid, trace);
}

Response UsbDevice::control(const SetupPacket& setup, std::span<const uint8_t> data) {
  Response response;
  switch (key(setup.request_type, setup.request)) {
    case kGetReport:
      response = get_report(setup);
      break;
    case kSetReport:
      response = set_report(setup, data);
      break;
    default:
      response = response_of(serve(setup));
      break;
  }
  if (response.data.size() > setup.length) response.data.resize(setup.length);
  return response;
}

std::optional<Bytes> UsbDevice::serve(const SetupPacket& setup) {
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

std::optional<size_t> UsbDevice::addressed(const SetupPacket& setup) const {
  const size_t number = setup.index.low();
  return number < interfaces_.size() ? std::optional(number) : std::nullopt;
}

std::optional<Bytes> UsbDevice::interface_descriptor(const SetupPacket& setup) const {
  const std::optional<size_t> number = addressed(setup);
  if (!number) return std::nullopt;
  switch (setup.value.high()) {
    case kHidDescriptor:
      return hid_descriptor(interfaces_[*number]);
    case kReportDescriptor:
      return report_descriptor(interfaces_[*number]);
    default:
      return std::nullopt;
  }
}

Response UsbDevice::get_report(const SetupPacket& setup) {
  const std::optional<size_t> number = addressed(setup);
  if (!number) return {Outcome::kStall};
  const auto reports = interfaces_[*number].hid.feature_reports();
  const auto report = std::ranges::find(reports, setup.value.low(), &FeatureReport::id);
  if (setup.value.high() != kFeatureReportType || report == reports.end()) {
    return {Outcome::kStall};
  }
  Response response = links_[*number].get_report(report->id);
  if (response.outcome != Outcome::kDone) return response;
  // The device sends the whole report, whatever it has to say.
  response.data.insert(response.data.begin(), report->id);
  response.data.resize(1 + report->usage_count);
  return response;
}

Response UsbDevice::set_report(const SetupPacket& setup, std::span<const uint8_t> data) {
  const std::optional<size_t> number = addressed(setup);
  const uint8_t id = setup.value.low();
  if (!number || setup.value.high() != kFeatureReportType || data.empty() || data[0] != id) {
    return {Outcome::kStall};
  }
  return {links_[*number].set_report(id, data.subspan(1))};
}

}  // namespace zelkora::sim
