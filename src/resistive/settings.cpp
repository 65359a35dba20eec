// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Getters and setters of the open controller's settings: two algorithms over the settings table.
#include "core/log.h"
#include "settings_table.h"
#include "zelkora.h"

using namespace zelkora::resistive;

namespace {

int repaired(const Repair& rule, int value) {
  if (value >= rule.minimum && value <= rule.maximum) return value;
  if (value == 0) return rule.for_zero;
  return value < rule.minimum ? rule.for_less : rule.for_more;
}

int get(const Setting& setting) {
  const int stored = ReadEEPValue(setting.address);
  if (stored == -1) return -1;
  const int value = setting.repair == nullptr ? stored : repaired(*setting.repair, stored);
  // A repair that fails is tried again by the next call.
  if (value != stored) WriteEEPValue(setting.repair->address, static_cast<unsigned>(value));
  const bool due = setting.getter_mirror == Mirror::kAlways ||
                   (setting.getter_mirror == Mirror::kAfterRepair && value != stored);
  if (due && device_type == ZELKORA_TYPE_RESISTIVE_SERIAL && ReadSerConf != 0) {
    SetSerConf(setting.getter_key, static_cast<unsigned>(value));
  }
  return value;
}

int set(const Setting& setting, unsigned value) {
  if (WriteEEPValue(setting.address, value) == 0) {
    DebugMsg(zelkora::kTrace, "%s", setting.set_error);
    return -1;
  }
  const int stored = ReadEEPValue(setting.address);
  if (setting.log_set != nullptr) setting.log_set(stored);
  // Unlike the getters, setters mirror before the first refresh too.
  if (setting.setter_key != nullptr && device_type == ZELKORA_TYPE_RESISTIVE_SERIAL) {
    SetSerConf(setting.setter_key, static_cast<unsigned>(stored));
  }
  return stored;
}

}  // namespace

int GetAutoRightClick(void) { return get(kAutoRightClick); }
int GetRotation(void) { return get(kRotation); }
int GetHidMode(void) { return get(kHidMode); }
int GetReportMode(void) { return get(kReportMode); }
int GetFirstMove(void) { return get(kFirstMove); }
int GetEdgeRight(void) { return get(kEdgeRight); }
int GetEdgeLeft(void) { return get(kEdgeLeft); }
int GetEdgeDown(void) { return get(kEdgeDown); }
int GetEdgeUp(void) { return get(kEdgeUp); }
int GetBeepOn(void) { return get(kBeepOn); }
int GetPlayMethod(void) { return get(kPlayMethod); }
int GetFrequency(void) { return get(kFrequency); }
int GetDuration(void) { return get(kDuration); }
int GetScreenNo(void) { return get(kScreenNo); }
int GetBackLightDuty(void) { return ReadEEPValue(ZELKORA_EEP_BACKLIGHT_DUTY); }

int GetRightCount(void) {
  const int value = get(kRightCount);
  DebugMsg(zelkora::kTrace, "RightTime:%d\n", value);
  return value;
}

int SetAutoRightClick(unsigned int value) { return set(kAutoRightClick, value); }
int SetRotation(unsigned int value) { return set(kRotation, value); }
int SetReportMode(unsigned int value) { return set(kReportMode, value); }
int SetFirstMove(unsigned int value) { return set(kFirstMove, value); }
int SetEdgeRight(unsigned int value) { return set(kEdgeRight, value); }
int SetEdgeLeft(unsigned int value) { return set(kEdgeLeft, value); }
int SetEdgeDown(unsigned int value) { return set(kEdgeDown, value); }
int SetEdgeUp(unsigned int value) { return set(kEdgeUp, value); }
int SetBeepOn(unsigned int value) { return set(kBeepOn, value); }
int SetPlayMethod(unsigned int value) { return set(kPlayMethod, value); }
int SetFrequency(unsigned int value) { return set(kFrequency, value); }
int SetDuration(unsigned int value) { return set(kDuration, value); }
int SetScreenNo(unsigned int value) { return set(kScreenNo, value); }

int SetRightCount(unsigned int value) { return value == 0 ? -1 : set(kRightCount, value); }

int SetHidMode(unsigned int value) {
  // The controller would choose a mode of its own while the automatic setting is on.
  if (WriteEEPValue(ZELKORA_EEP_AUTO_HID, 0) == 0) {
    DebugMsg(zelkora::kTrace, "SetAutoSetHid error\n");
    return -1;
  }
  return set(kHidMode, value);
}
