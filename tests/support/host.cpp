// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "host.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "fake_x.h"
#include "seams.h"

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
  g_host.debug_flag_at_read = DbgFlag;
  if (g_host.config_read != 0) std::ranges::copy(g_host.config, config);
  return g_host.config_read;
}

int GetEnableDebug(void) { return zelkora::test::g_host.debug; }

void mydoled_all_display(void* display, unsigned int request, int config) {
  using zelkora::test::g_host;
  if (zelkora::test::Seams* seams = zelkora::test::Seams::active()) {
    char line[64];
    std::snprintf(line, sizeof line, "mydoled_all_display 0x%X %d", request, config);
    seams->trace.emplace_back(line);
  }
  g_host.notified_display = display;
  g_host.display_was_open = display != nullptr && display == zelkora::test::g_x.last_display;
}

void GenerateRand(unsigned char* buffer, int one) {
  using zelkora::test::g_host;
  std::ranges::copy(g_host.random, buffer);
  g_host.random_argument = one;
}

// A scheme of the host's own: not a plain copy, so that a forgotten call shows.
void EncodeData(const unsigned char* source, unsigned char* destination, int zero, int length) {
  zelkora::test::g_host.encode_argument = zero;
  std::transform(source, source + length, destination,
                 [](unsigned char byte) { return static_cast<unsigned char>(byte ^ 0x5A); });
}

void DecodeData(const unsigned char* source, unsigned char* destination) {
  EncodeData(source, destination, 0, ZELKORA_PCT_BLOCK);
}
