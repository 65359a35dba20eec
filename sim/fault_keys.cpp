// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "fault_keys.h"

#include "description_key.h"
#include "typed_text.h"

namespace zelkora::sim {
namespace {

using View = std::string_view;

constexpr View kCounts = "0..1000000";

template <typename Faults, unsigned Faults::*kCounter>
bool set_count(Faults& faults, View value) {
  const auto number = parse_number(value, 1'000'000);
  if (number) faults.*kCounter = *number;
  return number.has_value();
}

template <typename Faults, bool Faults::*kFault>
bool set_switch(Faults& faults, View value) {
  faults.*kFault = value == "on";
  return value == "on" || value == "off";
}

bool set_unplugs_after(UsbFaults& faults, View value) {
  faults.unplugs_after = parse_number(value, 1'000'000);
  return faults.unplugs_after.has_value();
}

constexpr Key<UsbFaults> kUsbKeys[] = {
    {"hangs", kSwitch, "", "lets requests time out (zelkora-sim: at once)",
     set_switch<UsbFaults, &UsbFaults::hangs>},
    {"unplugs-after", "COUNT", kCounts, "serves COUNT requests and is unplugged in the next one",
     set_unplugs_after},
};

bool set_stored(ResistiveFaults& faults, View value) {
  const auto number = parse_number(value, 0xFFFF);
  if (number) faults.stores = static_cast<uint16_t>(*number);
  return number.has_value();
}

template <unsigned ResistiveFaults::*kCounter>
constexpr auto kResistiveCount = set_count<ResistiveFaults, kCounter>;

constexpr Key<ResistiveFaults> kResistiveKeys[] = {
    {"silent", kSwitch, "", "answers no command",
     set_switch<ResistiveFaults, &ResistiveFaults::silent>},
    {"silent-commands", "COUNT", kCounts, "does not answer the first COUNT commands",
     kResistiveCount<&ResistiveFaults::silent_commands>},
    {"bad-acknowledges", "COUNT", kCounts, "refuses the first COUNT commands that change something",
     kResistiveCount<&ResistiveFaults::bad_acknowledges>},
    {"wrong-echoes", "COUNT", kCounts,
     "answers the first COUNT page reads with another page number",
     kResistiveCount<&ResistiveFaults::wrong_echoes>},
    {"stores", "VALUE", "0..65535", "stores VALUE whatever is written", set_stored},
};

constexpr Key<ResistiveFaults> kSerialKeys[] = {
    {"streaming", kSwitch, "", "sends coordinates instead of replies",
     set_switch<ResistiveFaults, &ResistiveFaults::streaming>},
    {"streamed-reports", "COUNT", kCounts, "sends coordinates COUNT times, then replies",
     kResistiveCount<&ResistiveFaults::streamed_reports>},
    {"failed-opens", "COUNT", kCounts, "fails to open COUNT times, with EIO",
     kResistiveCount<&ResistiveFaults::failed_opens>},
    {"no-hardware", kSwitch, "", "its port is a bare node that opens, and all else gives EIO",
     set_switch<ResistiveFaults, &ResistiveFaults::no_hardware>},
};

template <unsigned PctFaults::*kCounter>
constexpr auto kPctCount = set_count<PctFaults, kCounter>;

constexpr Key<PctFaults> kPctKeys[] = {
    {"silent", kSwitch, "", "carries out and answers no command",
     set_switch<PctFaults, &PctFaults::silent>},
    {"silent-commands", "COUNT", kCounts, "neither carries out nor answers the first COUNT",
     kPctCount<&PctFaults::silent_commands>},
    {"stalled-commands", "COUNT", kCounts, "stalls the first COUNT command reports",
     kPctCount<&PctFaults::stalled_commands>},
    {"refused-command-modes", "COUNT", kCounts, "stays out of command mode COUNT times",
     kPctCount<&PctFaults::refused_command_modes>},
    {"refused-normal-modes", "COUNT", kCounts, "stays in command mode COUNT times",
     kPctCount<&PctFaults::refused_normal_modes>},
    {"wrong-device-modes", "COUNT", kCounts, "tells the wrong device mode COUNT times",
     kPctCount<&PctFaults::wrong_device_modes>},
    {"bad-checksums", "COUNT", kCounts, "spoils the checksum of COUNT reads of the flash block",
     kPctCount<&PctFaults::bad_checksums>},
    {"blank-pos-replies", "COUNT", kCounts, "answers COUNT reads of the POS configuration blank",
     kPctCount<&PctFaults::blank_pos_replies>},
    {"refused-pos-modes", "COUNT", kCounts, "ignores COUNT writes of the POS mode",
     kPctCount<&PctFaults::refused_pos_modes>},
    {"wrong-usb-ids", "COUNT", kCounts, "tells another USB vendor COUNT times",
     kPctCount<&PctFaults::wrong_usb_ids>},
};

}  // namespace

std::optional<std::string> apply_fault(std::string_view text, UsbFaults& faults) {
  return apply_key(kUsbKeys, text, faults);
}

std::optional<std::string> apply_fault(std::string_view text, ResistiveFaults& faults) {
  return apply_key(kResistiveKeys, text, faults);
}

std::optional<std::string> apply_fault(std::string_view text, PctFaults& faults) {
  return apply_key(kPctKeys, text, faults);
}

std::optional<std::string> apply_serial_fault(std::string_view text, ResistiveFaults& faults) {
  return apply_key(kSerialKeys, text, faults);
}

void append_usb_fault_help(std::string& text) { append_help(text, kUsbKeys); }

void append_resistive_fault_help(std::string& text) { append_help(text, kResistiveKeys); }

void append_serial_fault_help(std::string& text) { append_help(text, kSerialKeys); }

void append_pct_fault_help(std::string& text) { append_help(text, kPctKeys); }

}  // namespace zelkora::sim
