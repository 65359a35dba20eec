// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include "core/log.h"
#include "zelkora.h"

using zelkora::kTrace;

int OpenTouchDevice(int index) {
  TouchDeviceEntry& entry = TouchDevice[index];
  ActiveDevice = index + 1;
  GetTouchConf(0);
  DebugMsg(kTrace, "OpenTouchDevice devname=%s DevNum=%d type=%d\n", entry.Name, index, entry.Type);
  DebugMsg(kTrace, "OpenTouchDevice VID=%04X PID=%04X\n", entry.VID, entry.PID);

  int opened = 0;
  switch (entry.Type) {
    case ZELKORA_TYPE_RESISTIVE_SERIAL:
      device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
      DebugMsg(kTrace, "OpenTouchDevice---serial\n");
      HidRaw = 0;
      opened = OpenSerialDevice(entry.Name);
      break;
    case ZELKORA_TYPE_PCT:
      // device_type stays as enumeration left it.
      HidRaw = entry.HidRaw;
      DebugMsg(kTrace, "OpenTouchDevice---PCT HidRaw:%d\n", HidRaw);
      opened = OpenPCTUsbDevice(index);
      break;
    case ZELKORA_TYPE_RESISTIVE_USB:
      HidRaw = entry.HidRaw;
      device_type = ZELKORA_TYPE_RESISTIVE_USB;
      DebugMsg(kTrace, "OpenTouchDevice---Res USB HidRaw:%d\n", HidRaw);
      opened = OpenResUsbDevice(index, entry.Name);
      break;
    default:
      break;
  }
  if (opened != 0) return entry.Type;
  DebugMsg(kTrace, "device%d not exist err: %d\n", index, 0);
  return 0;
}

int OpenResUsbDevice(int /*index*/, const char* path) {
  fd = open(path, O_RDONLY);
  if (fd < 1) return 0;
  init_Hiddev();
  return 1;
}

int OpenPCTUsbDevice(int index) {
  // Feature requests work on a read-only descriptor.
  fd = open(TouchDevice[index].Name, O_RDONLY);
  if (fd < 1) return 0;
  IsLegacy = TouchDevice[index].IsLegacy;
  if (IsLegacy != ZELKORA_FAMILY_8752) return 1;
  DebugMsg(kTrace, "OpenPCTUsbDevice 8752\n");
  return enter_cmd_mode() != 0 ? 1 : 0;
}

int OpenPCTDevice(int index) {
  isPureMouse = ChkMouseMode();
  isHybrid = ChkHybridMode();
  HidRaw = TouchDevice[index].HidRaw;
  const int opened = OpenPCTUsbDevice(index);
  if (opened == 0) DebugMsg(zelkora::kError, "unable to open device\n");
  return opened;
}

// Neither call resets fd: callers close twice and rely on the second result.

int CloseDevice(void) {
  DebugMsg(kTrace, "CloseDevice\n");
  if (fd == 0) return 0;
  if (IsLegacy == ZELKORA_FAMILY_8752) leave_cmd_mode();
  return close(fd);
}

void CloseTouchDevice(int /*index*/) {
  DebugMsg(kTrace, "CloseTouchDevice\n");
  if (fd != 0) close(fd);
}
