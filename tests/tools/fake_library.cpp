// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "fake_library.h"

#include <signal.h>

#include <string>

FakePanel panel;

namespace {

bool silent() { return panel.writes_left == 0; }

int store_and_read(short address, unsigned int value) {
  return WriteEEPValue(address, value) == 0 ? -1 : ReadEEPValue(address);
}

}  // namespace

TouchDeviceEntry TouchDevice[ZELKORA_MAX_DEVICES];
unsigned char MyConfig[ZELKORA_CONFIG_BYTES];
int ManufCnt;
int rManufCnt;

int GetTouchDeviceType(int) { return panel.type; }
void GetTouchDeviceName(int, char* out) {
  std::string("/dev/usb/hiddev0").copy(out, 17);
  out[16] = '\0';
}
void GetTouchDeviceID(int, char* out) { *out = '\0'; }
void GetTouchDeviceFw(int, char* out) { *out = '\0'; }
void GetEventDeviceName(int, char* out) { *out = '\0'; }
int OpenTouchDevice(int) {
  if (!panel.opens) return 0;
  ++panel.opened;
  return ZELKORA_TYPE_RESISTIVE_USB;
}
void CloseTouchDevice(int) { ++panel.closed; }
int GetFirmware(char* firmware) {
  *firmware = '\0';
  return 0;
}
int ReadEEPValue(short address) {
  if (silent() || panel.unreadable.contains(address)) return -1;
  return panel.values[address];
}
int WriteEEPValue(short address, unsigned int value) {
  if (silent()) return 0;
  if (panel.writes++ == panel.interrupt_at_write) raise(SIGINT);
  if (panel.writes_left > 0) --panel.writes_left;
  // The lamp has a command of its own.
  const bool taken = address != ZELKORA_EEP_BACKLIGHT_DUTY && !panel.worn.contains(address);
  if (taken) panel.values[address] = static_cast<int>(value);
  return 1;
}
int ResetController() { return panel.confirms_reset ? 1 : 0; }
void GetResParamDefault(ResDevInfo* rec) {
  *rec = {};
  rec->Frequency = 1500;
  rec->Duration = 20;
  rec->RightTime = 4;
}
int PermanentParameter() {
  ++panel.commits;
  return panel.keeps ? 1 : 0;
}
int SetBackLightDuty(int duty) {
  if (!panel.worn.contains(ZELKORA_EEP_BACKLIGHT_DUTY)) {
    panel.values[ZELKORA_EEP_BACKLIGHT_DUTY] = duty;
  }
  return 0;
}
int SetHidMode(unsigned int value) {
  WriteEEPValue(ZELKORA_EEP_AUTO_HID, 0);
  return store_and_read(ZELKORA_EEP_HID_MODE, value);
}
int SetRightCount(unsigned int value) {
  return value == 0 ? -1 : store_and_read(ZELKORA_EEP_RIGHT_TIME, value);
}
int SetBeepOn(unsigned int value) { return store_and_read(ZELKORA_EEP_BEEP_ON, value); }
int SetPlayMethod(unsigned int value) { return store_and_read(ZELKORA_EEP_PLAY_METHOD, value); }
int SetFrequency(unsigned int value) { return store_and_read(ZELKORA_EEP_FREQUENCY, value); }
int SetDuration(unsigned int value) { return store_and_read(ZELKORA_EEP_DURATION, value); }
int SetScreenNo(unsigned int value) { return store_and_read(ZELKORA_EEP_SCREEN_NUMBER, value); }
int SetAutoRightClick(unsigned int value) {
  return store_and_read(ZELKORA_EEP_DISABLE_RIGHT, value);
}
int SetRotation(unsigned int value) { return store_and_read(ZELKORA_EEP_ROTATION, value); }
int SetReportMode(unsigned int value) { return store_and_read(ZELKORA_EEP_REPORT_MODE, value); }
int SetFirstMove(unsigned int value) { return store_and_read(ZELKORA_EEP_FIRST_MOVE, value); }
int SetEdgeRight(unsigned int value) { return store_and_read(ZELKORA_EEP_EDGE_RIGHT, value); }
int SetEdgeLeft(unsigned int value) { return store_and_read(ZELKORA_EEP_EDGE_LEFT, value); }
int SetEdgeDown(unsigned int value) { return store_and_read(ZELKORA_EEP_EDGE_DOWN, value); }
int SetEdgeUp(unsigned int value) { return store_and_read(ZELKORA_EEP_EDGE_UP, value); }
int GetResAllDataBinTemp(int, ResDevInfo* rec) {
  if (panel.kept) *rec = *panel.kept;
  return panel.kept ? 1 : 0;
}
int MatchResCheckSum(int) { return panel.kept ? 1 : 0; }
int ResSerSetAllParams(int, ResDevInfo* rec, signed char) {
  if (panel.store_works) panel.kept = *rec;
  return panel.store_works ? 1 : 0;
}
// Brings values of its own along, as the flash form does.
int ResSetAllParams(int devnum, ResDevInfo* rec, signed char mode, int) {
  panel.values[ZELKORA_EEP_REPORT_MODE] = 1;
  return ResSerSetAllParams(devnum, rec, mode);
}
