// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One setting of one panel by its table index: open, set, close.
#include "zelkora.h"

namespace {

// Compares what came back with what was asked, whatever it is: a panel that cannot be opened
// brings back 0, and a failed setter -1. Hosts were built on both.
int set_current(int devnum, unsigned value, int (*setter)(unsigned)) {
  if (devnum < 0) return 0;
  const int stored = OpenTouchDevice(devnum) != 0 ? setter(value) : 0;
  CloseTouchDevice(devnum);
  return static_cast<unsigned>(stored) == value ? 1 : 0;
}

}  // namespace

int SetCurrenAutoRightClick(int devnum, unsigned int value) {
  return set_current(devnum, value, SetAutoRightClick);
}

int SetCurrenReportMode(int devnum, unsigned int value) {
  return set_current(devnum, value, SetReportMode);
}

int SetCurrenHidMode(int devnum, unsigned int value) {
  return set_current(devnum, value, SetHidMode);
}

int SetCurrenRightCount(int devnum, unsigned int value) {
  return set_current(devnum, value, SetRightCount);
}

int SetCurrenScreenNo(int devnum, unsigned int value) {
  return set_current(devnum, value, SetScreenNo);
}

int SetCurrenRotation(int devnum, unsigned int value) {
  return set_current(devnum, value, SetRotation);
}

int SetCurrenFirstMove(int devnum, unsigned int value) {
  return set_current(devnum, value, SetFirstMove);
}

int SetCurrenBeepOn(int devnum, unsigned int value) {
  return set_current(devnum, value, SetBeepOn);
}

int SetCurrenPlayMethod(int devnum, unsigned int value) {
  return set_current(devnum, value, SetPlayMethod);
}

int SetCurrenFrequency(int devnum, unsigned int value) {
  return set_current(devnum, value, SetFrequency);
}

int SetCurrenDuration(int devnum, unsigned int value) {
  return set_current(devnum, value, SetDuration);
}

int SetCurrenBackLightDuty(int devnum, int duty) {
  if (devnum < 0) return 0;
  const int done = OpenTouchDevice(devnum) != 0 ? SetBackLightDuty(duty & 0xFF) : 0;
  CloseTouchDevice(devnum);
  return done;
}

void LockParameter(int devnum) {
  if (devnum < 0) return;
  if (OpenTouchDevice(devnum) != 0) PermanentParameter();
  CloseTouchDevice(devnum);
}
