// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A parameter record in words, on the debug trace.
#include "show_params.h"

#include <cstddef>

#include "core/log.h"
#include "core/text.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

// A value that reads as a line of its own.
struct Line {
  unsigned value;
  const char* text;
};

constexpr Line kBeeps[] = {
    {1, "Beep : Pen Down Beep\n"},
    {2, "Beep : Pen Up Beep\n"},
    {3, "Beep : Pen Up And Pen down Beep\n"},
    {4, "Beep : OFF\n"},
};
constexpr Line kPctModes[] = {
    {0, "HidMode : Mouse Mode\n"},
    {1, "HidMode : Digitizer Mode\n"},
};
constexpr Line kClickModes[] = {
    {0, "mouse click mode : MouseEmu\n"},
    {1, "mouse click mode : Click on touch\n"},
    {2, "mouse click mode : Click on release\n"},
    {3, "mouse click mode : Right button prior for the delay\n"},
};
constexpr Line kResistiveModes[] = {
    {2, "HidMode : Mouse Mode\n"},
    {3, "HidMode : Digitizer Mode\n"},
};
constexpr Line kReportModes[] = {
    {1, "Report Mode : Button Mode\n"},
    {3, "Report Mode : Disable Touch\n"},
    {0, "Report Mode : Drawing Mode\n"},
};

// Other values have no line.
template <size_t kSize>
void show(const Line (&lines)[kSize], unsigned value) {
  for (const Line& line : lines) {
    if (line.value == value) DebugMsg(kTrace, "%s", line.text);
  }
}

void show_switch(unsigned value, const char* when_one, const char* otherwise) {
  DebugMsg(kTrace, "%s", value == 1 ? when_one : otherwise);
}

void show_right_click(unsigned disabled, double seconds) {
  show_switch(disabled, "auto right-click : OFF\n", "auto right-click : ON\n");
  DebugMsg(kTrace, "auto right-click count: %1.2lfsec\n", seconds);
}

// What records of both families begin with.
void show_common(const char* firmware, unsigned beep, unsigned frequency, unsigned duration,
                 unsigned screen) {
  DebugMsg(kTrace, "%s\n", "Version:1.3.6");
  DebugMsg(kTrace, "Firmware Version : %s\n", firmware != nullptr ? firmware : "");
  show(kBeeps, beep);
  DebugMsg(kTrace, "Frequency : %d\n", static_cast<int>(frequency));
  DebugMsg(kTrace, "Duration : %d\n", static_cast<int>(duration));
  DebugMsg(kTrace, "Screen Number : %d\n", static_cast<int>(screen) + 1);
  show_screen(static_cast<int>(screen));
}

void show_pct(const PCTDevInfo& rec) {
  show_common(rec.FWVersion, rec.BeepOn, rec.Frequency, rec.Duration, rec.ScreenNumber);
  show(kPctModes, rec.Digitizer);
  show(kClickModes, rec.ClickMode);
  show_right_click(rec.DisableRight, rec.RightTime * 0.25 + 0.75);
  show_switch(rec.RightUp, "Pop up menu on right down\n", "Pop up menu on right up\n");
  show_switch(rec.DisableReport, "Disable Report : ON\n", "Disable Report : OFF\n");
}

// Resistive records carry no firmware text.
const char* firmware_of_active_device() {
  const bool valid = ActiveDevice >= 1 && ActiveDevice <= ZELKORA_MAX_DEVICES;
  return valid ? TouchDevice[ActiveDevice - 1].FWVersion : nullptr;
}

void show_resistive(const ResDevInfo& rec) {
  show_common(firmware_of_active_device(), rec.BeepOn, rec.Frequency, rec.Duration,
              rec.ScreenNumber);
  show(kResistiveModes, rec.HidMode);
  show(kReportModes, rec.ReportMode);
  show_switch(rec.FirstMove, "First Move : ON\n", "First Move : OFF\n");
  show_right_click(rec.DisableRight, (rec.RightTime * 250 + 500) / 1000.0);
}

}  // namespace

void zelkora::pct::log_parameters(const char* heading, const PCTDevInfo& rec) {
  DebugMsg(kTrace, "***%sSN:%s\n***", heading, SerialNumberText(rec.SN).text);
  DebugMsg(kTrace,
           "***%sbeep:%d Play:%d freq:%d dura:%d scrno:%d click:%d right:%d time:%d range:%d up:%d "
           "DisableReport:%d HideCursor:%d\n***",
           heading, rec.BeepOn, rec.PlayMethod, static_cast<int>(rec.Frequency), rec.Duration,
           rec.ScreenNumber, rec.ClickMode, rec.DisableRight, rec.RightTime, rec.RightRange,
           rec.RightUp, rec.DisableReport, rec.HideCursor);
}

void ShowParams(const void* rec, int type) {
  if (type == ZELKORA_TYPE_PCT) {
    show_pct(*static_cast<const PCTDevInfo*>(rec));
  } else {
    show_resistive(*static_cast<const ResDevInfo*>(rec));
  }
}
