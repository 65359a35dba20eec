// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Saving, trying and reverting whole parameter sets of resistive panels, as settings programs ask
// for it by mode. Serial panels have a workflow of their own: files alone, nothing in the flash.
#include "core/log.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

enum SaveMode { kSave = 1, kRevert = 2, kRevertAndEnd = 5, kStoreAndFlash = 6 };
enum FetchMode { kLoad = 0, kBeginEditing = 3, kReadSaved = 4, kCheck = 7 };

// Brings the flash in line with the record, and has the controller keep it.
int write_flash(int devnum, ResDevInfo* rec, int only_address) {
  const int written = SetResAllDataFlash(devnum, rec, static_cast<unsigned>(only_address));
  PermanentParameter();
  return written;
}

int save(int devnum, ResDevInfo* rec) {
  SetResAllDataBinTemp(devnum, rec);
  return SetResAllDataBin(devnum, rec);
}

// The working copy becomes the saved record.
int restore_working_copy(int devnum, ResDevInfo* rec) {
  GetResAllDataBinTemp(devnum, rec);
  DelResAllDataBinTemp(devnum);
  return SetResAllDataBin(devnum, rec);
}

// Nothing happens when both records agree already.
int revert(int devnum, ResDevInfo* rec) {
  if (MatchResCheckSum(devnum) != 0) return 0;
  restore_working_copy(devnum, rec);
  return SetResAllDataFlash(devnum, rec, 0);
}

int save_by_mode(int devnum, ResDevInfo* rec, signed char mode, int only_address) {
  switch (mode) {
    case kSave: {
      const int saved = save(devnum, rec);
      return MatchResDevChksum(rec) == 0 ? write_flash(devnum, rec, only_address) : saved;
    }
    case kRevert:
      return revert(devnum, rec);
    case kRevertAndEnd: {
      const int reverted = revert(devnum, rec);
      DelResAllDataBinTemp(devnum);
      return reverted;
    }
    case kStoreAndFlash:
      SetResAllDataBin(devnum, rec);
      return SetResAllDataFlash(devnum, rec, static_cast<unsigned>(only_address));
    default:
      return 0;
  }
}

// The saved record; the defaults, saved, where there is none.
int get_or_default(int devnum, ResDevInfo* rec) {
  const int found = GetResAllDataBin(devnum, rec);
  if (found != 0) return found;
  GetResParamDefault(rec);
  return SetResAllDataBin(devnum, rec);
}

int load(int devnum, ResDevInfo* rec) {
  const int found = GetResAllDataBin(devnum, rec);
  ResDevInfo scratch{};
  const bool copy = found != 0 && GetResAllDataBinTemp(devnum, &scratch) == 0;
  return copy ? SetResAllDataBinTemp(devnum, rec) : found;
}

int align_flash(int devnum, ResDevInfo* rec, int result) {
  return MatchResDevChksum(rec) == 0 ? write_flash(devnum, rec, 0) : result;
}

int fetch_by_mode(int devnum, ResDevInfo* rec, signed char mode) {
  switch (mode) {
    case kLoad:
      return load(devnum, rec);
    case kBeginEditing:
      get_or_default(devnum, rec);
      return align_flash(devnum, rec, SetResAllDataBinTemp(devnum, rec));
    case kCheck:
      return align_flash(devnum, rec, get_or_default(devnum, rec));
    case kReadSaved:
      return GetResAllDataBin(devnum, rec);
    default:
      return 0;
  }
}

}  // namespace

int ResSetAllParams(int devnum, ResDevInfo* rec, signed char mode, int only_address) {
  DebugMsg(kTrace, "***ResSetAllParams--start DevNum:%d***\n", devnum);
  int result = 0;
  if (OpenTouchDevice(devnum) != 0) {
    result = save_by_mode(devnum, rec, mode, only_address);
    CloseTouchDevice(devnum);
  }
  DebugMsg(kTrace, "***ResSetAllParams--end DevNum:%d***\n", devnum);
  return result;
}

int ResGetAllParams(int devnum, ResDevInfo* rec, signed char mode) {
  DebugMsg(kTrace, "***ResGetAllParams Mode:%d***\n", mode);
  if (OpenTouchDevice(devnum) == 0) return 0;
  const int result = fetch_by_mode(devnum, rec, mode);
  CloseTouchDevice(devnum);
  return result;
}

int ResSerSetAllParams(int devnum, ResDevInfo* rec, signed char mode) {
  switch (mode) {
    case kSave:
      return save(devnum, rec);
    case kRevert:
    case kRevertAndEnd:
      return MatchResCheckSum(devnum) == 0 ? restore_working_copy(devnum, rec) : 0;
    case kStoreAndFlash:
      return SetResAllDataBin(devnum, rec);
    default:
      return 0;
  }
}

int ResSerGetAllParams(int devnum, ResDevInfo* rec, signed char mode) {
  DebugMsg(kTrace, "***ResSerGetAllParams Mode:%d***\n", mode);
  switch (mode) {
    case kLoad:
      return load(devnum, rec);
    case kBeginEditing:
      get_or_default(devnum, rec);
      return SetResAllDataBinTemp(devnum, rec);
    case kReadSaved:
      return GetResAllDataBin(devnum, rec);
    default:
      return 0;
  }
}

int SetCurrenAllParame(int devnum, ResDevInfo* rec) {
  if (devnum < 0 || OpenTouchDevice(devnum) == 0) return 0;
  // Where the two stored records agree, the caller's is not stored: there was no edit.
  int result = MatchResCheckSum(devnum);
  if (result == 0) result = SetResAllDataBin(devnum, rec);
  CloseTouchDevice(devnum);
  return result;
}

int GetCurrenAllParame(int devnum, ResDevInfo* rec) {
  DebugMsg(kTrace, "GetCurrenAllParame--start\n");
  if (devnum < 0 || OpenTouchDevice(devnum) == 0) return 0;
  DebugMsg(kTrace, "GetCurrenAllParame DevNum=%d\n", devnum);
  const int result = GetResAllDataBin(devnum, rec);
  CloseTouchDevice(devnum);
  return result;
}

int ResRestoreDefault(int devnum) {
  if (devnum < 0) return 0;
  ResDevInfo rec{};
  GetResParamDefault(&rec);
  const int result = SetCurrenAllParame(devnum, &rec);
  DebugMsg(kTrace, "DevInfo.BeepOn:%d\n", rec.BeepOn);
  DebugMsg(kTrace, "DevInfo.Frequency:%d\n", static_cast<int>(rec.Frequency));
  DebugMsg(kTrace, "DevInfo.Duration:%d\n", rec.Duration);
  DebugMsg(kTrace, "DevInfo.ScreenNumber:%d\n", rec.ScreenNumber + 1);
  DebugMsg(kTrace, "DevInfo.DisableRight:%d\n", rec.DisableRight);
  DebugMsg(kTrace, "DevInfo.RightTime:%d\n", rec.RightTime);
  DebugMsg(kTrace, "DevInfo.FirstMove:%d\n", rec.FirstMove);
  DebugMsg(kTrace, "DevInfo.EdgeRight:%d\n", rec.EdgeRight);
  DebugMsg(kTrace, "DevInfo.EdgeLeft:%d\n", rec.EdgeLeft);
  DebugMsg(kTrace, "DevInfo.EdgeDown:%d\n", rec.EdgeDown);
  DebugMsg(kTrace, "DevInfo.EdgeUp:%d\n", rec.EdgeUp);
  DebugMsg(kTrace, "DevInfo.ReportMode:%d\n", rec.ReportMode);
  DebugMsg(kTrace, "DevInfo.HidMode:%d\n", rec.HidMode);
  return result;
}
