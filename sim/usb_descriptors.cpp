// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "usb_descriptors.h"

#include <algorithm>
#include <iterator>

namespace zelkora::sim {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint16_t kUsbVersion = 0x0110;
constexpr uint16_t kHidVersion = 0x0111;
constexpr uint8_t kControlPacketSize = 64;  // also of the interrupt endpoint
constexpr uint8_t kFirstInterruptIn = 0x81;
constexpr uint8_t kPollMilliseconds = 10;

constexpr uint8_t low(unsigned value) { return static_cast<uint8_t>(value); }
constexpr uint8_t high(unsigned value) { return static_cast<uint8_t>(value >> 8); }

void append(Bytes& out, const Bytes& more) { std::ranges::copy(more, std::back_inserter(out)); }

// Item tags of a report descriptor, without the two bits that hold the data's size.
enum Item : uint8_t {
  kUsagePage = 0x04,
  kUsage = 0x08,
  kLogicalMinimum = 0x14,
  kUsageMinimum = 0x18,
  kLogicalMaximum = 0x24,
  kUsageMaximum = 0x28,
  kReportSize = 0x74,
  kInput = 0x80,
  kReportId = 0x84,
  kReportCount = 0x94,
  kCollection = 0xA0,
  kFeature = 0xB0,
  kEndCollection = 0xC0,
};

constexpr int kDesktopPage = 0x01;
constexpr int kButtonPage = 0x09;
constexpr int kDigitizerPage = 0x0D;
constexpr int kX = 0x30;  // of the desktop page
constexpr int kY = 0x31;

constexpr int kPhysical = 0;
constexpr int kApplication = 1;

constexpr int kConstant = 0x01;  // of an input or feature item; 0: data
constexpr int kVariable = 0x02;
constexpr int kRelative = 0x04;

// Data is written in one, two or four bytes, so that it reads the same as a signed number.
void put(Bytes& out, Item tag, int value) {
  const bool one = value == static_cast<int8_t>(value);
  const bool two = value == static_cast<int16_t>(value);
  const unsigned size = one ? 1 : two ? 2 : 4;
  out.push_back(static_cast<uint8_t>(tag | (size == 4 ? 3 : size)));
  for (unsigned i = 0; i < size; ++i) out.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

void put_feature_report(Bytes& out, const FeatureReport& report) {
  put(out, kReportId, report.id);
  put(out, kLogicalMinimum, report.logical_minimum);
  put(out, kLogicalMaximum, report.logical_maximum);
  put(out, kReportSize, 8);
  put(out, kReportCount, static_cast<int>(report.usage_count));
  put(out, kUsageMinimum, 1);
  put(out, kUsageMaximum, static_cast<int>(report.usage_count));
  put(out, kFeature, kVariable);
}

// The page has its top bit set, so put() would widen it to four bytes.
void put_vendor_page(Bytes& out) { append(out, {kUsagePage | 2, 0x00, 0xFF}); }

void put_bits(Bytes& out, int count, int size, int kind) {
  put(out, kReportCount, count);
  put(out, kReportSize, size);
  put(out, kInput, kind);
}

// Three buttons and two relative axes, behind the feature reports that the application has.
void put_mouse(Bytes& out, uint8_t id, std::span<const FeatureReport> reports) {
  constexpr int kPointer = 0x01, kMouse = 0x02;
  put(out, kUsagePage, kDesktopPage);
  put(out, kUsage, kMouse);
  put(out, kCollection, kApplication);
  if (!reports.empty()) put_vendor_page(out);
  for (const FeatureReport& report : reports) put_feature_report(out, report);
  if (!reports.empty()) put(out, kUsagePage, kDesktopPage);
  put(out, kReportId, id);
  put(out, kUsage, kPointer);
  put(out, kCollection, kPhysical);
  put(out, kUsagePage, kButtonPage);
  put(out, kUsageMinimum, 1);
  put(out, kUsageMaximum, 3);
  put(out, kLogicalMinimum, 0);
  put(out, kLogicalMaximum, 1);
  put_bits(out, 3, 1, kVariable);
  put_bits(out, 1, 5, kConstant);
  put(out, kUsagePage, kDesktopPage);
  put(out, kUsage, kX);
  put(out, kUsage, kY);
  put(out, kLogicalMinimum, -127);
  put(out, kLogicalMaximum, 127);
  put_bits(out, 2, 8, kVariable | kRelative);
  out.push_back(kEndCollection);
  out.push_back(kEndCollection);
}

// One end of a pen: whether it touches, whether it is near, and two absolute axes.
void put_pen_end(Bytes& out, uint8_t id, int touches) {
  constexpr int kPen = 0x02, kStylus = 0x20, kInRange = 0x32;
  put(out, kUsagePage, kDigitizerPage);
  put(out, kUsage, kPen);
  put(out, kCollection, kApplication);
  put(out, kReportId, id);
  put(out, kUsage, kStylus);
  put(out, kCollection, kPhysical);
  put(out, kUsage, touches);
  put(out, kUsage, kInRange);
  put(out, kLogicalMinimum, 0);
  put(out, kLogicalMaximum, 1);
  put_bits(out, 2, 1, kVariable);
  put_bits(out, 1, 6, kConstant);
  put(out, kUsagePage, kDesktopPage);
  put(out, kUsage, kX);
  put(out, kUsage, kY);
  put(out, kLogicalMaximum, 4095);
  put_bits(out, 2, 16, kVariable);
  out.push_back(kEndCollection);
  out.push_back(kEndCollection);
}

// Both ends are applications of the same kind: the kernel makes one event node of them, and says
// in its name what it is for, since there is more than one. A stylus in place of the pen would be
// called "Pen", but is no input application to hiddev, which would make a node of its own.
void put_pen(Bytes& out, uint8_t id) {
  constexpr int kTipSwitch = 0x42, kEraser = 0x45;
  put_pen_end(out, id, kTipSwitch);
  put_pen_end(out, static_cast<uint8_t>(id + 1), kEraser);
}

Bytes interface_descriptors(uint8_t number, const UsbInterface& interface) {
  Bytes out = {9,      kInterfaceDescriptor,
               number, 0,  // alternate setting
               1,          // endpoint
               3,      0,
               0,  // HID, no boot protocol
               0};
  append(out, hid_descriptor(interface));
  append(out, {7, kEndpointDescriptor, static_cast<uint8_t>(kFirstInterruptIn + number),
               3,  // interrupt
               kControlPacketSize, 0, kPollMilliseconds});
  return out;
}

}  // namespace

Bytes device_descriptor(const UsbIdentity& identity) {
  return {18,
          kDeviceDescriptor,
          low(kUsbVersion),
          high(kUsbVersion),
          0,  // class, subclass and protocol: told by the interface
          0,
          0,
          kControlPacketSize,
          low(identity.vendor),
          high(identity.vendor),
          low(identity.product),
          high(identity.product),
          0x00,  // device release 1.00
          0x01,
          identity.manufacturer.empty() ? kNoString : kManufacturerString,
          identity.product_name.empty() ? kNoString : kProductString,
          kNoString,  // serial number
          1};         // configuration
}

Bytes configuration_descriptor(std::span<const UsbInterface> interfaces) {
  Bytes out = {9,
               kConfigurationDescriptor,
               0,
               0,  // the total length, set below
               static_cast<uint8_t>(interfaces.size()),
               1,  // this configuration's value
               0,
               0x80,  // powered by the bus
               50};   // 100 mA
  uint8_t number = 0;
  for (const UsbInterface& interface : interfaces) {
    append(out, interface_descriptors(number++, interface));
  }
  out[2] = low(static_cast<unsigned>(out.size()));
  out[3] = high(static_cast<unsigned>(out.size()));
  return out;
}

Bytes hid_descriptor(const UsbInterface& interface) {
  const auto length = static_cast<unsigned>(report_descriptor(interface).size());
  return {9, kHidDescriptor,    low(kHidVersion), high(kHidVersion), 0,  // no country
          1, kReportDescriptor, low(length),      high(length)};
}

Bytes language_descriptor() {
  return {4, kStringDescriptor, 0x09, 0x04};  // United States English
}

Bytes string_descriptor(std::string_view text) {
  static_assert(2 + 2 * kLongestUsbText <= UINT8_MAX);
  text = text.substr(0, kLongestUsbText);
  Bytes out{static_cast<uint8_t>(2 + 2 * text.size()), kStringDescriptor};
  for (const char c : text) {
    out.push_back(static_cast<uint8_t>(c));
    out.push_back(0);
  }
  return out;
}

Bytes report_descriptor(const UsbInterface& interface) {
  const auto reports = interface.hid.feature_reports();
  const uint8_t id = input_report_id(reports);
  Bytes out;
  switch (interface.applications) {
    case Applications::kVendorAndMouse:
      put_vendor_page(out);
      put(out, kUsage, 1);
      put(out, kCollection, kApplication);
      for (const FeatureReport& report : reports) put_feature_report(out, report);
      out.push_back(kEndCollection);
      put_mouse(out, id, {});
      break;
    case Applications::kMouse:
      put_mouse(out, id, reports);
      break;
    case Applications::kPen:
      put_pen(out, id);
      break;
  }
  return out;
}

uint8_t input_report_id(std::span<const FeatureReport> reports) {
  uint8_t id = 1;
  while (std::ranges::find(reports, id, &FeatureReport::id) != reports.end()) ++id;
  return id;
}

}  // namespace zelkora::sim
