// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "fake_pct.h"

#include <unistd.h>

#include <algorithm>

#include "fake_library.h"

FakePct pct;

int isHybrid;
ScreenInfoEntry screen_info[ZELKORA_MAX_SCREENS];

namespace {

constexpr unsigned char kSerialNumber[8] = {1, 2, 3, 4, 5, 6, 7, 8};

int open_pct() {
  if (!pct.opens) return 0;
  ++pct.open;
  return 1;
}

void send_to_controller() {
  pct.controller = pct.current;
  if (pct.worn_click_mode == pct.current.ClickMode && pct.worn_click_mode != 0) {
    pct.controller.ClickMode = 0;
  }
}

int store_current(const PCTDevInfo& set) {
  if (pct.unplugged_by_set) pct.opens = false;
  if (pct.sets_left == 0) return pct.says_stored ? 1 : 0;
  if (pct.sets_left > 0) --pct.sets_left;
  pct.current = set;
  send_to_controller();
  return 1;
}

int store_saved(const PCTDevInfo& set) {
  if (pct.saves) pct.saved = set;
  return pct.saves || pct.says_saved ? 1 : 0;
}

int by_mode(PCTDevInfo* rec, int mode) {
  switch (mode) {
    case 1:
      store_saved(*rec);
      return store_current(*rec);
    case 2:
      if (!pct.saved) return 0;
      *rec = *pct.saved;
      pct.saved.reset();
      return store_current(*rec);
    case 6:
      return store_current(*rec);
    default:
      return 0;
  }
}

}  // namespace

int usleep(useconds_t microseconds) {
  pct.waits.push_back(microseconds);
  return 0;
}

int GetTouchPanels(int) {
  if (panel.type != ZELKORA_TYPE_PCT) return 1;
  if (pct.resets > 0 && pct.looks_away-- > 0) return 0;
  std::ranges::copy(kSerialNumber, TouchDevice[0].SN);
  TouchDevice[0].IsLegacy = ZELKORA_FAMILY_8752;
  TouchDevice[0].POSMode = static_cast<unsigned char>(pct.pos_mode);
  return 1;
}

int OpenPCTDevice(int) { return open_pct(); }
int CloseDevice() {
  --pct.open;
  return 0;
}
int PCTGetAllParams(int, PCTDevInfo* rec, signed char mode) {
  if (!pct.opens) return 0;
  pct.command_mode = false;
  send_to_controller();
  *rec = pct.current;
  return mode == 3 ? store_saved(*rec) : 1;
}
int PCTSetAllParams(int, PCTDevInfo* rec, signed char mode) {
  return pct.opens ? by_mode(rec, mode) : 0;
}
int GetMyHidDeviceTempParames(PCTDevInfo* rec) {
  if (!pct.saved) return 0;
  *rec = *pct.saved;
  return 3;
}
int ChkPOSConfig(PCTDevInfo* rec, unsigned char*) {
  // Right click is switched off in every configuration that is sent.
  return rec->DisableRight == 1 && rec->ClickMode == pct.controller.ClickMode ? 1 : 0;
}
void GetPCTParamDefault(PCTDevInfo* rec) {
  rec->BeepOn = 2;
  rec->Frequency = 1000;
}
int SetPCTDefaultFlash(int) {
  PCTDevInfo set = pct.current;
  GetPCTParamDefault(&set);
  pct.command_mode = true;
  return store_current(set);
}
int SetCurrPOSMode(int, int mode) {
  const bool hybrid = mode == 3 && pct.pos_mode == 4;  // as good, of an 8753 panel
  if (mode == pct.pos_mode || hybrid) return 0;
  if (pct.takes_modes) pct.pos_mode = mode;
  return 1;
}
int ResetPCTController() {
  ++pct.resets;
  return 1;
}
int PCT_ResetDevice(int) {
  if (!pct.opens) return 0;
  return ResetPCTController();
}

int get_screen() {
  screen_info[0] = {1920, 1080, 0, 0, "HDMI-1"};
  screen_info[1] = {1280, 1024, 1920, -56, "DP\x1b-2"};
  return 2;
}
