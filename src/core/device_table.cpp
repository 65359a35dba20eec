// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cstring>

#include "log.h"
#include "zelkora.h"

using zelkora::kTrace;

int GetTouchDeviceType(int index) { return TouchDevice[index].Type; }

void GetTouchDeviceName(int index, char* out) {
  std::memcpy(out, TouchDevice[index].Name, sizeof TouchDevice[index].Name);
}

void GetTouchDeviceID(int index, char* out) {
  std::memcpy(out, TouchDevice[index].ID, sizeof TouchDevice[index].ID);
}

void GetTouchDeviceFw(int index, char* out) {
  std::memcpy(out, TouchDevice[index].FWVersion, sizeof TouchDevice[index].FWVersion);
}

void ShowDeviceInfo(int index) {
  constexpr char kSeparator[] = "---------------------------------------------------------\n";
  const TouchDeviceEntry& entry = TouchDevice[index];
  DebugMsg(kTrace, "%s", kSeparator);
  DebugMsg(kTrace, "Name : %s\n", entry.Name);
  DebugMsg(kTrace, "Type : %d\n", entry.Type);
  DebugMsg(kTrace, "Phys : %s\n", entry.Phys);
  DebugMsg(kTrace, "FWVersion : %s\n", entry.FWVersion);
  DebugMsg(kTrace, "POSMode : %d\n", entry.POSMode);
  DebugMsg(kTrace, "HidRaw : %d\n", entry.HidRaw);
  DebugMsg(kTrace, "IsLegacy : %d\n", entry.IsLegacy);
  DebugMsg(kTrace, "VID : 0x%04X\n", entry.VID);
  DebugMsg(kTrace, "PID : 0x%04X\n", entry.PID);
  const unsigned char* sn = entry.SN;
  DebugMsg(kTrace, "SN:%02X%02X%02X%02X%02X%02X%02X%02X\n", sn[0], sn[1], sn[2], sn[3], sn[4],
           sn[5], sn[6], sn[7]);
  DebugMsg(kTrace, "%s", kSeparator);
}
