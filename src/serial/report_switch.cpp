// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Switching the reports of all serial panels off, and back to what they were.
#include <unistd.h>

#include "core/log.h"
#include "core/text.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

constexpr int kReportsOff = 3;
constexpr int kHighestRestored = 2;

int switch_off(int index) {
  SerialReportSlot& slot = TempSer[index];
  zelkora::set_text(slot.Name, zelkora::field_text(TouchDevice[index].Name));
  slot.ReportMode = GetReportMode();
  DebugMsg(kTrace, "No.%d Name:%s ReportMode:%d\n", index, slot.Name, slot.ReportMode);
  return SetReportMode(kReportsOff);
}

// What was kept under the panel's name, wherever it stood then. `last` when there is nothing.
int restore(int index, int last) {
  const TouchDeviceEntry& entry = TouchDevice[index];
  int number = 0;
  for (const SerialReportSlot& slot : TempSer) {
    DebugMsg(kTrace, "TempNo.%d temp_Name:%s curr_name:%s\n", number, slot.Name, entry.Name);
    if (zelkora::contains(zelkora::field_text(slot.Name), zelkora::field_text(entry.Name))) {
      DebugMsg(kTrace, "TempNo.%d temp_Name:%s ReportMode:%d\n", number, slot.Name,
               slot.ReportMode);
      const bool known = slot.ReportMode >= 0 && slot.ReportMode <= kHighestRestored;
      return known ? SetReportMode(static_cast<unsigned>(slot.ReportMode)) : last;
    }
    ++number;
  }
  return last;
}

}  // namespace

int DisableRS232Report(int disable) {
  int result = 0;
  for (int i = 0; i < ZELKORA_MAX_DEVICES; ++i) {
    if (TouchDevice[i].Type != ZELKORA_TYPE_RESISTIVE_SERIAL) continue;
    if (OpenSerialDevice(TouchDevice[i].Name) == 0) continue;
    result = disable != 0 ? switch_off(i) : restore(i, result);
    close(fd);
  }
  return result;
}
