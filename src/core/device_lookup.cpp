// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cstring>

#include "text.h"
#include "zelkora.h"

void GetEventDeviceName(int index, char* out) {
  GetTouchConf(0);
  FindMyEVDevice(index);
  std::memcpy(out, TouchDevice[index].EventName, sizeof TouchDevice[index].EventName);
}

int GetDeviceNode(int number, char* out) {
  if (GetTouchPanels(0) == 0) return 0;
  const auto& name = TouchDevice[number - 1].Name;
  zelkora::copy_text(out, name);
  if (zelkora::contains(zelkora::field_text(name), "hid")) return 1;
  if (zelkora::contains(zelkora::field_text(name), "tty")) return 2;
  return 0;
}
