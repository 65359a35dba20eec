// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Saving and fetching the parameter set of a PCT panel by its table index.
#include <cstring>

#include "core/log.h"
#include "show_params.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

constexpr short kChecksumAddress = 91;

// What a host asks for when it saves a set, and when it fetches one.
enum SaveMode { kSaveBoth = 1, kRevert = 2, kRevertAgain = 5, kSaveCurrent = 6 };
enum FetchMode { kFetch = 0, kKeepCurrent = 3, kFetchOnly = 4, kFetchOnlyAgain = 7 };

int revert(PCTDevInfo* rec) {
  const int found = GetMyHidDeviceTempParames(rec);
  if (found == 0) return 0;
  DelMyHidDeviceTempParames(rec);
  return SetMyHidDeviceParames(rec);
}

int save(PCTDevInfo* rec, signed char mode) {
  switch (mode) {
    case kSaveBoth:
      SetMyHidDeviceTempParames(rec);
      return SetMyHidDeviceParames(rec);
    case kRevert:
    case kRevertAgain:
      return revert(rec);
    case kSaveCurrent:
      return SetMyHidDeviceParames(rec);
    default:
      return 0;
  }
}

int fetch(PCTDevInfo* rec, signed char mode) {
  switch (mode) {
    case kFetch: {
      const int found = GetMyHidDeviceParames(rec);
      // The serial number of this record is all zero, so a panel that has one gets its temporary
      // set written anew each time.
      PCTDevInfo scratch{};
      scratch.DevNum = rec->DevNum;
      return GetMyHidDeviceTempParames(&scratch) == 0 ? SetMyHidDeviceTempParames(rec) : found;
    }
    case kKeepCurrent:
      GetMyHidDeviceParames(rec);
      return SetMyHidDeviceTempParames(rec);
    case kFetchOnly:
    case kFetchOnlyAgain:
      return GetMyHidDeviceParames(rec);
    default:
      return 0;
  }
}

}  // namespace

int PCTSetAllParams(int index, PCTDevInfo* rec, signed char mode) {
  if (OpenPCTDevice(index) == 0) return 0;
  DebugMsg(kTrace, "===================PCTSetAllParams start===================\n");
  DebugMsg(kTrace, "PCTSetAllParams--Device%d Mode:%d\n", index, mode);
  rec->DevNum = static_cast<unsigned>(index);
  int result = save(rec, mode);
  if (result != 0 && SetPOSConfig(rec, 0) != 0) result = 1;
  CloseDevice();
  DebugMsg(kTrace, "===================PCTSetAllParams end===================\n");
  return result;
}

int PCTGetAllParams(int index, PCTDevInfo* rec, signed char mode) {
  DebugMsg(kTrace, "=================PCTGetAllParams start==========================\n");
  DebugMsg(kTrace, "PCTGetAllParams--Mode:%d DevNum:%d\n", mode, index);
  rec->DevNum = static_cast<unsigned>(index);
  int result = 0;
  if (OpenPCTDevice(index) != 0) {
    result = fetch(rec, mode);
    CloseDevice();
  }
  DebugMsg(kTrace, "=================PCTGetAllParams end==========================\n");
  return result;
}

int GetPCTParam(int index, PCTDevInfo* rec) {
  if (OpenPCTUsbDevice(index) == 0) {
    DebugMsg(zelkora::kError, "unable to open device\n");
    return 0;
  }
  rec->DevNum = static_cast<unsigned>(index);
  const int found = GetMyHidDeviceParames(rec);
  if (found == 0) {
    DebugMsg(zelkora::kError, "Can't read flash.\n");
    return 0;
  }
  if (found == 2) {
    DebugMsg(zelkora::kError, "Check sum error. You need to re-install the touch driver.\n");
    return 0;
  }
  rec->FWVersion = TouchDevice[index].FWVersion;
  DebugMsg(kTrace, "GetPCTParam FWVersion:%s\n", rec->FWVersion);
  rec->POSMode = TouchDevice[index].POSMode;
  CloseDevice();
  return -1;
}

int SetPCTDefaultFlash(int index) {
  if (index < 0 || index >= DeviceNumber || OpenTouchDevice(index) == 0) return 0;
  PCTDevInfo rec{};
  GetPCTParamDefault(&rec);
  std::memcpy(rec.SN, TouchDevice[index].SN, sizeof rec.SN);
  rec.DevNum = static_cast<unsigned>(index);
  const int result = SetMyHidDeviceParames(&rec);
  CloseTouchDevice(index);
  zelkora::pct::log_parameters("SetPCTDefaultFlash ", rec);
  return result;
}

int EmptyFlash(int index) {
  if (OpenPCTUsbDevice(index) == 0) {
    DebugMsg(zelkora::kError, "unable to open device\n");
    return 0;
  }
  EmptyParames();
  return 1;
}

int GetParamCheckSumDev(void) { return ReadEEPValue(kChecksumAddress); }

int SetParamCheckSumDev(unsigned int value) {
  if (WriteEEPValue(kChecksumAddress, value) == 0) {
    DebugMsg(kTrace, "SetParamCheckSumDev error\n");
    return -1;
  }
  return ReadEEPValue(kChecksumAddress);
}
