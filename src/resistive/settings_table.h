// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The settings of a resistive controller, a row each: change a setting's rule here.
#pragma once

#include "core/log.h"
#include "zelkora.h"

namespace zelkora::resistive {

// The values a setting may hold, and what a getter writes in place of a stored one outside.
struct Repair {
  int minimum;
  int maximum;
  int for_zero;   // instead of 0, where 0 lies outside
  int for_less;   // instead of 1 up to minimum - 1
  int for_more;   // instead of all above the maximum
  short address;  // where the replacement is written
};

// When a getter copies its value into the serial panel list.
enum class Mirror { kNever, kAfterRepair, kAlways };

struct Setting {
  short address;
  const char* set_error;           // logged when a write fails
  const Repair* repair = nullptr;  // null: a stored value is returned as it is
  Mirror getter_mirror = Mirror::kNever;
  const char* getter_key = nullptr;  // key stems in the serial panel list; null: not kept there
  const char* setter_key = nullptr;
  void (*log_set)(int stored) = nullptr;
};

inline void log_beep(int stored) {
  DebugMsg(kTrace, "ActiveDevice:%d Set Beep On :%d\n", ActiveDevice, stored);
}

// clang-format off
//                                       min  max   0     less  more  address
inline constexpr Repair kRepairRight     {0,   1,    0,    0,    1,    ZELKORA_EEP_DISABLE_RIGHT};
inline constexpr Repair kRepairBeep      {0,   1,    0,    0,    1,    ZELKORA_EEP_BEEP_ON};
// Written to the frequency's address; the play method itself stays as it was. Panels in the field
// carry what this wrote, so it stays.
inline constexpr Repair kRepairPlayMethod{0,   2,    0,    0,    1,    ZELKORA_EEP_FREQUENCY};
inline constexpr Repair kRepairFrequency {500, 3000, 2000, 500,  3000, ZELKORA_EEP_FREQUENCY};
inline constexpr Repair kRepairDuration  {5,   50,   10,   5,    50,   ZELKORA_EEP_DURATION};
inline constexpr Repair kRepairScreen    {0,   4,    0,    0,    0,    ZELKORA_EEP_SCREEN_NUMBER};

inline constexpr Setting kRotation  {ZELKORA_EEP_ROTATION,    "SetRotation error\n"};
inline constexpr Setting kHidMode   {ZELKORA_EEP_HID_MODE,    "SetHidMode error\n"};
inline constexpr Setting kReportMode{ZELKORA_EEP_REPORT_MODE, "SetReportMode error\n"};
inline constexpr Setting kFirstMove {ZELKORA_EEP_FIRST_MOVE,  "SetFirstMove error\n"};
inline constexpr Setting kEdgeRight {ZELKORA_EEP_EDGE_RIGHT,  "SetEdgeRight error\n"};
inline constexpr Setting kEdgeLeft  {ZELKORA_EEP_EDGE_LEFT,   "SetEdgeLeft error\n"};
inline constexpr Setting kEdgeDown  {ZELKORA_EEP_EDGE_DOWN,   "SetEdgeDown error\n"};
inline constexpr Setting kEdgeUp    {ZELKORA_EEP_EDGE_UP,     "SetEdgeUp error\n"};

inline constexpr Setting kAutoRightClick{
    ZELKORA_EEP_DISABLE_RIGHT, "SetAutoRightClick error\n", &kRepairRight,
    Mirror::kAlways, "SerialDeviceDisableRight", "SerialDeviceDisableRight"};
// Never repaired, whatever is stored: hosts keep values beyond the documented ones here.
inline constexpr Setting kRightCount{
    ZELKORA_EEP_RIGHT_TIME, "SetRightCount error\n", nullptr,
    Mirror::kAlways, "SerialDeviceRightTime", "SerialDeviceRightTime"};
// A repaired beep is mirrored under the play method's key, where readers of the list expect it.
inline constexpr Setting kBeepOn{
    ZELKORA_EEP_BEEP_ON, "Set Beep On error\n", &kRepairBeep,
    Mirror::kAfterRepair, "SerialDevicePlayMethod", "SerialDeviceBeepOn", log_beep};
inline constexpr Setting kPlayMethod{
    ZELKORA_EEP_PLAY_METHOD, "Set Play Method error\n", &kRepairPlayMethod,
    Mirror::kAfterRepair, "SerialDevicePlayMethod", "SerialDevicePlayMethod"};
inline constexpr Setting kFrequency{
    ZELKORA_EEP_FREQUENCY, "Set Frequency error\n", &kRepairFrequency,
    Mirror::kAfterRepair, "SerialDeviceFrequency", "SerialDeviceFrequency"};
inline constexpr Setting kDuration{
    ZELKORA_EEP_DURATION, "Set Duration error\n", &kRepairDuration,
    Mirror::kAfterRepair, "SerialDeviceDuration", "SerialDeviceDuration"};
inline constexpr Setting kScreenNo{
    ZELKORA_EEP_SCREEN_NUMBER, "SetScreenNo error\n", &kRepairScreen,
    Mirror::kAfterRepair, "SerialScreenNum", "SerialScreenNum"};
// clang-format on

}  // namespace zelkora::resistive
