// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "zelkora.h"

int PCT_ResetDevice(int index) {
  if (OpenPCTDevice(index) == 0) return 0;
  ResetPCTController();
  CloseDevice();
  return 1;
}
