// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "conversations.h"

#include <cstdio>
#include <cstring>
#include <iterator>

#include "fuzz_bench.h"
#include "zelkora.h"

namespace zelkora::fuzz {
namespace {

constexpr int kEntry = 0;
constexpr size_t kMostSteps = 8;

using Step = void (*)();

// The buffers are as small as the interface allows, for the sanitizer to watch.
template <size_t kSize>
struct Buffer {
  unsigned char bytes[kSize]{};
  char* text() { return reinterpret_cast<char*>(bytes); }
};

ResDevInfo g_res;
PCTDevInfo g_pct;

template <int (*kGet)()>
void get() {
  kGet();
}
template <int (*kSet)(unsigned int)>
void set() {
  kSet(1);
}
template <int kPage>
void page() {
  Buffer<32> bytes;
  if (AXI_ReadEEPValue(kPage, bytes.bytes) != 0) AXI_WriteEEPValue(kPage, bytes.bytes);
}
template <signed char kMode>
void fetch_resistive() {
  ResGetAllParams(kEntry, &g_res, kMode);
}
template <signed char kMode>
void save_resistive() {
  ResSetAllParams(kEntry, &g_res, kMode, 0);
}
template <signed char kMode>
void fetch_pct() {
  PCTGetAllParams(kEntry, &g_pct, kMode);
}
template <signed char kMode>
void save_pct() {
  PCTSetAllParams(kEntry, &g_pct, kMode);
}
template <int kMode>
void change_pos_mode() {
  SetCurrPOSMode(kEntry, kMode);
}

const Step kResistiveTalk[] = {
    [] { GetFirmware(Buffer<20>().text()); },
    [] { ReadEEPValue(ZELKORA_EEP_ROTATION); },
    [] { WriteEEPValue(ZELKORA_EEP_ROTATION, 3); },
    get<EnterCalibMode>,
    get<PermanentParameter>,
    get<ResetController>,
    get<ChkAutoSetHid>,
    get<GetCountUnit>,
    get<GetAutoRightClick>,
    get<GetRightCount>,
    get<GetRotation>,
    get<GetHidMode>,
    get<GetReportMode>,
    get<GetFirstMove>,
    get<GetEdgeRight>,
    get<GetBeepOn>,
    get<GetPlayMethod>,
    get<GetFrequency>,
    get<GetDuration>,
    get<GetScreenNo>,
    get<GetBackLightDuty>,
    get<GetParamCheckSumDev>,
    set<SetAutoRightClick>,
    set<SetRotation>,
    set<SetHidMode>,
    set<SetReportMode>,
    set<SetFrequency>,
    set<SetScreenNo>,
    [] { SetBackLightDuty(7); },
    [] { ChkResFW(kEntry); },
    [] { ShowDeviceInfo(kEntry); },
    page<0>,
    page<3>,
    [] { SetCurrenBeepOn(kEntry, 1); },
    [] { ChkDevExist(); },
    [] { OpenTouchDevice(kEntry); },
};

const Step kPctTalk[] = {
    [] { IsLegacy = TouchDevice[kEntry].IsLegacy = GetIsLegacy(); },
    [] { GetFwID(kEntry); },
    get<enter_cmd_mode>,
    get<leave_cmd_mode>,
    [] { ReadPCTParames(Buffer<32>().bytes, ZELKORA_PCT_BLOCK); },
    [] { WritePCTParames(Buffer<32>().bytes); },
    [] {
      unsigned vendor = TouchDevice[kEntry].VID;
      unsigned product = 0;
      ReadUSBID(&vendor, &product);
    },
    [] { WriteUSBID(0x2575, 0x8753); },
    get<ResetPCTController>,
    get<EmptyParames>,
    [] { GetFWVersionStr(kEntry, Buffer<64>().text()); },
    [] { ReadPOSConfig(Buffer<16>().bytes, 16); },
    get<GetPOSMode>,
    [] { SetPOSConfig(&g_pct, 0); },
    [] { ChkPOSConfig(&g_pct, Buffer<8>().bytes); },
    change_pos_mode<1>,
    change_pos_mode<2>,
    change_pos_mode<4>,
    [] { GetMySN(kEntry); },
    [] { SetMySN(kEntry); },
    [] { ChkSNFlash(kEntry); },
    [] { OpenPCTDevice(kEntry); },
    [] { ChkPosMode(kEntry, 2); },
    [] { SetDevtoMouse(kEntry); },
    [] { PCT_ResetDevice(kEntry); },
    [] { ShowDeviceInfo(kEntry); },
};

const Step kResistiveSets[] = {
    fetch_resistive<0>,
    fetch_resistive<3>,
    fetch_resistive<4>,
    fetch_resistive<7>,
    save_resistive<1>,
    save_resistive<2>,
    save_resistive<6>,
    [] { ResSerGetAllParams(kEntry, &g_res, 3); },
    [] { ResSerSetAllParams(kEntry, &g_res, 1); },
    [] { GetCurrenAllParame(kEntry, &g_res); },
    [] { SetCurrenAllParame(kEntry, &g_res); },
    [] { ResRestoreDefault(kEntry); },
    [] { SetResDefaultFlash(kEntry); },
    [] { SetSerDefaultFlash(kEntry); },
    [] { DelResAllDataBinTemp(kEntry); },
    [] { MatchResCheckSum(kEntry); },
    [] { ShowParams(&g_res, ZELKORA_TYPE_RESISTIVE_USB); },
};

const Step kPctSets[] = {
    fetch_pct<0>,
    fetch_pct<3>,
    fetch_pct<4>,
    save_pct<1>,
    save_pct<2>,
    save_pct<5>,
    [] { GetPCTParam(kEntry, &g_pct); },
    [] { SetPCTDefaultFlash(kEntry); },
    [] { EmptyFlash(kEntry); },
    [] { GetMyHidDeviceParames(&g_pct); },
    [] { SetMyHidDeviceParames(&g_pct); },
    [] { GetMyHidDeviceTempParames(&g_pct); },
    [] { SetMyHidDeviceTempParames(&g_pct); },
    [] { DelMyHidDeviceTempParames(&g_pct); },
    [] { GetPCTParamBin(kEntry, Buffer<32>().bytes, 1); },
    [] { GetPCTParamBin(kEntry, Buffer<32>().bytes, 2); },
    [] { SetPCTParamTempBin(kEntry, Buffer<32>().bytes); },
    [] { DelPCTParamTempBin(kEntry); },
    [] { GetMySNBin(kEntry); },
    [] { SetMySNBin(kEntry); },
    [] { ListPCTAllBin(); },
    [] { PCTEnumAllBin(); },
    [] { ShowParams(&g_pct, ZELKORA_TYPE_PCT); },
};

}  // namespace

void open_entry(unsigned char type, const char* node, unsigned vendor, unsigned product) {
  g_res = {};
  g_pct = {};
  TouchDeviceEntry& entry = TouchDevice[kEntry];
  std::snprintf(entry.Name, sizeof entry.Name, "%s", node);
  std::snprintf(entry.Phys, sizeof entry.Phys, "%s",
                type == ZELKORA_TYPE_RESISTIVE_SERIAL ? node : "usb-0000:00:14.0-1/input0");
  std::snprintf(entry.ID, sizeof entry.ID, "%04X_%04X", vendor, product);
  entry.Type = type;
  entry.HidRaw = std::strstr(node, "hidraw") != nullptr ? 1 : 0;
  entry.VID = vendor;
  entry.PID = product;
  DeviceNumber = 1;
  OpenTouchDevice(kEntry);
}

void talk_to_resistive(FuzzInput& input) { take_steps(input, kResistiveTalk, kMostSteps); }

void talk_to_pct(FuzzInput& input) {
  // The family lies in the entry, where an enumeration would have put it.
  IsLegacy = TouchDevice[kEntry].IsLegacy = input.byte() % 4;
  take_steps(input, kPctTalk, kMostSteps);
}

void work_with_resistive_sets(FuzzInput& input) { take_steps(input, kResistiveSets, kMostSteps); }

void work_with_pct_sets(FuzzInput& input) { take_steps(input, kPctSets, kMostSteps); }

}  // namespace zelkora::fuzz
