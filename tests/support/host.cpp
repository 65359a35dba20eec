// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "host.h"

#include <algorithm>
#include <cstring>

namespace zelkora::test {

Host g_host;

namespace {

template <typename... Variable>
void clear(Variable&... variables) {
  (std::memset(&variables, 0, sizeof variables), ...);
}

}  // namespace

void reset_library_state() {
  clear(TouchDevice, DeviceNumber, PCTDeviceNumber, ActiveDevice, fd, HidRaw, device_type);
  clear(IsLegacy, isPureMouse, isHybrid, DbgFlag, MyConfig);
  clear(MatchProduct, rMatchProduct, ManufCnt, rManufCnt, cMyHidInfo);
  clear(cMySerInfo, TempSer, oldtio, ReadSerConf, screen_info);
  clear(KernelVersion, report, field, uref, rinfo, finfo, devinfo, running, shmID);
}

}  // namespace zelkora::test

unsigned char Read_Config(unsigned char* config) {
  using zelkora::test::g_host;
  ++g_host.config_reads;
  if (g_host.config_read != 0) std::ranges::copy(g_host.config, config);
  return g_host.config_read;
}

int GetEnableDebug(void) { return zelkora::test::g_host.debug; }
