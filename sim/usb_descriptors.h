// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What a virtual controller tells about itself on USB: a full-speed device with HID interfaces.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "usb_interface.h"

namespace zelkora::sim {

inline constexpr uint8_t kDeviceDescriptor = 0x01;
inline constexpr uint8_t kConfigurationDescriptor = 0x02;
inline constexpr uint8_t kStringDescriptor = 0x03;
inline constexpr uint8_t kInterfaceDescriptor = 0x04;
inline constexpr uint8_t kEndpointDescriptor = 0x05;
inline constexpr uint8_t kHidDescriptor = 0x21;
inline constexpr uint8_t kReportDescriptor = 0x22;

// The strings that the device descriptor names, each if the device has it.
inline constexpr uint8_t kNoString = 0;
inline constexpr uint8_t kManufacturerString = 1;
inline constexpr uint8_t kProductString = 2;

std::vector<uint8_t> device_descriptor(const UsbIdentity& identity);

// The configuration with the interface, HID and endpoint descriptors of each interface.
std::vector<uint8_t> configuration_descriptor(std::span<const UsbInterface> interfaces);

std::vector<uint8_t> hid_descriptor(const UsbInterface& interface);

// Descriptor 0: the languages that strings exist in.
std::vector<uint8_t> language_descriptor();

// ASCII text; what does not fit a descriptor is cut.
std::vector<uint8_t> string_descriptor(std::string_view text);

// The applications with their reports, the feature reports among them.
std::vector<uint8_t> report_descriptor(const UsbInterface& interface);

// The report of the mouse or the pen: the first id that no feature report uses.
uint8_t input_report_id(std::span<const FeatureReport> reports);

}  // namespace zelkora::sim
