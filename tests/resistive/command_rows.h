// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The command set as its tests see it, a row each.
#pragma once

#include <array>
#include <ostream>

#include "scripted_controller.h"

namespace zelkora::test {

// The page that the page commands move: bytes that look like a frame's own among them.
inline constexpr std::array<unsigned char, 32> kPageBytes = {
    0x00, 0x0D, 0x01, 0x0D, 0x80, 0xFF, 0x45, 0x52, 0x0D, 0x0D, 0x7F, 0x30, 0x0D, 0x01, 0x02, 0x03,
    0x10, 0x20, 0x30, 0x40, 0x50, 0x60, 0x70, 0x80, 0x90, 0xA0, 0xB0, 0xC0, 0xD0, 0xE0, 0xF0, 0x0D};

struct CommandRow {
  const char* name;
  int (*run)();
  Bytes frame;
  unsigned limit;        // bytes of the reply that are read at most
  Bytes reply;           // an acceptable one
  unsigned usb_wait;     // between send and read, beside the one inside the send
  unsigned serial_wait;  // between send and read
  unsigned settle;       // after the read
  int success;
  int failure;
  bool works_over_usb;

  friend void PrintTo(const CommandRow& row, std::ostream* stream) { *stream << row.name; }
};

inline Bytes with_page(Bytes head) {
  head.insert(head.end(), kPageBytes.begin(), kPageBytes.end());
  head.push_back(0x0D);
  return head;
}

inline int run_get_firmware() {
  char text[20];
  return GetFirmware(text);
}

inline int run_read_page() {
  unsigned char out[32];
  return AXI_ReadEEPValue(3, out);
}

inline const Bytes kAcknowledge = framed("0");

inline const std::vector<CommandRow> kCommands = {
    {"GetFirmware", run_get_firmware, framed("OI"), 20, framed("V1.2"), 50000, 50000, 0, 1, 0,
     true},
    {"EnterCalibMode", EnterCalibMode, framed("CR"), 4, kAcknowledge, 50000, 50000, 0, 1, 0, true},
    {"PermanentParameter", PermanentParameter, framed("PL"), 4, kAcknowledge, 50000, 50000, 0, 1, 0,
     true},
    {"ResetController", ResetController, framed("R"), 10, kAcknowledge, 0, 50000, 0, 1, 0, true},
    {"ReadEEPValue", [] { return ReadEEPValue(84); }, framed("GP54"), 10, framed("0012"), 50000,
     50000, 0, 0x12, -1, true},
    {"WriteEEPValue", [] { return WriteEEPValue(55, 2); }, framed("SP370002"), 10, kAcknowledge,
     50000, 50000, 0, 1, 0, true},
    {"AXI_ReadEEPValue", run_read_page, framed("ER\x03"), 40, with_page({0x01, 0x45, 0x52, 0x03}),
     200000, 200000, 200000, 1, 0, true},
    {"AXI_WriteEEPValue", [] { return AXI_WriteEEPValue(2, kPageBytes.data()); },
     with_page({0x01, 0x45, 0x57, 0x02}), 10, kAcknowledge, 200000, 200000, 200000, 1, 0, true},
    // The reply is read one byte short over USB, so it is never the whole acknowledge there.
    {"SetBackLightDuty", [] { return SetBackLightDuty(0x80); }, framed("DU\x80"), 3, kAcknowledge,
     50000, 50000, 0, 1, 0, false},
    {"ChkAutoSetHid", ChkAutoSetHid, framed("AU"), 3, kAcknowledge, 50000, 50000, 0, 1, 0, false},
};

inline const CommandRow& command_row(std::string_view name) {
  return *std::ranges::find(kCommands, name, &CommandRow::name);
}

}  // namespace zelkora::test
