// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Everything anew: serial panels searched for, their daemons restarted, list and boot glue written,
// USB panels enumerated.
#include <cstring>

#include "core/log.h"
#include "core/paths.h"
#include "port_names.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::serial::PortName;

int RefreshSerialDevice(void) {
  GetTouchConf(0);
  LoadVidPid();
  if (MyConfig[ZELKORA_CONFIG_RESISTIVE] == 0) return 1;
  DeviceNumber = 0;
  PCTDeviceNumber = 0;
  ReadSerConf = 0;
  DelFile(ChkUdevPath() != 0 ? zelkora::paths::kUdevRuleInEtc : zelkora::paths::kUdevRuleInLib);
  // The daemons hold the ports that are to be asked.
  for (int i = 0; i < ZELKORA_MAX_SERIAL; ++i) DisableRS232(i);
  std::memset(TouchDevice, 0, sizeof TouchDevice);
  // Without a serial panel the list keeps what it held.
  if (FindMyttyDevice() != 0) {
    zelkora::serial::for_each_serial_panel(
        [](int number, const PortName& name, const TouchDeviceEntry&) {
          DebugMsg(kTrace, "RefreshSerialDevice [%d]%s\n", number - 1, name.text);
          EnableRS232(number - 1, name.text);
        });
    SetSerialDeviceConf();
  }
  DelFile(zelkora::paths::kPctSerialNumbers);
  FindMyHidDevice();
  if (MyConfig[ZELKORA_CONFIG_HIDRAW] != 0) FindMyHidRawDevice();
  ReadSerConf = 1;
  return DeviceNumber;
}
