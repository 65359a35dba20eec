// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The parameter sets of PCT panels in the store files: a current and a temporary one for each.
#include <cstring>

#include "core/log.h"
#include "core/paths.h"
#include "core/text.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::SerialNumberText;

namespace {

// Ways to look a record up, see Read_Binary_File().
constexpr int kBySerialNumber = 2;
constexpr int kByLikenessOnly = 3;

// What GetPCTParamBin() returns.
constexpr int kFoundByLikeness = 1;
constexpr int kFoundElsewhere = 2;

int write_block(const char* path, int index, const unsigned char* plain) {
  unsigned char payload[ZELKORA_STORE_PAYLOAD]{};
  EncodeParames(plain, payload, ZELKORA_PCT_BLOCK);
  return static_cast<int>(Write_Binary_File(path, index, payload, kBySerialNumber));
}

struct Payload {
  Payload() { std::memset(bytes, 0xFF, sizeof bytes); }
  unsigned char bytes[ZELKORA_STORE_PAYLOAD];
};

int decode(const Payload& payload, unsigned char* plain, int found) {
  if (found == 0) return 0;
  if (DecodeParames(plain, payload.bytes, ZELKORA_PCT_BLOCK) != 0) return found;
  DebugMsg(kTrace, "GetPCTParamBin DecodeParames checksum fail\n");
  return 0;
}

const TouchDeviceEntry& entry_of(const PCTDevInfo& rec) { return TouchDevice[rec.DevNum]; }

int index_of(const PCTDevInfo& rec) { return static_cast<int>(rec.DevNum); }

bool has_serial_number_of_panel(const PCTDevInfo& rec) {
  const unsigned char* panel = entry_of(rec).SN;
  for (size_t i = 0; i < sizeof rec.SN; ++i) {
    DebugMsg(kTrace, "GetMyHidDeviceParames SN[%d]0x%02X<->0x%02X\n", static_cast<int>(i), panel[i],
             rec.SN[i]);
    if (panel[i] != rec.SN[i]) return false;
  }
  return true;
}

struct Lookup {
  int result;    // 0: no set, not even for a panel like this one
  bool rewrite;  // the record is another than the panel's own
};

// Reads the set of the panel, of one like it, or the defaults.
Lookup look_up(PCTDevInfo& rec) {
  unsigned char plain[ZELKORA_PCT_BLOCK]{};
  int found = GetPCTParamBin(index_of(rec), plain, kBySerialNumber);
  DebugMsg(kTrace, "GetMyHidDeviceParames GetPCTParamBin SN_MODE ret:%d\n", found);
  if (found != 0) {
    DebugMsg(kTrace, "GetMyHidDeviceParames 000\n");
    PCTParsingParamas(&rec, plain);
    if (has_serial_number_of_panel(rec)) return {found, found == kFoundElsewhere};
    DebugMsg(kTrace, "GetMyHidDeviceParames 001\n");
  } else {
    found = GetPCTParamBin(index_of(rec), plain, kByLikenessOnly);
    if (found == kFoundByLikeness) {
      DebugMsg(kTrace, "GetMyHidDeviceParames 002\n");
      PCTParsingParamas(&rec, plain);
    } else {
      DebugMsg(kTrace, "GetMyHidDeviceParames 003\n");
      GetPCTParamDefault(&rec);
    }
  }
  std::memcpy(rec.SN, entry_of(rec).SN, sizeof rec.SN);
  return {found, true};
}

void log_set(const PCTDevInfo& rec) {
  DebugMsg(kTrace, "***GetMyHidDeviceParames SN:%s\n***", SerialNumberText(rec.SN).text);
  DebugMsg(kTrace,
           "***GetMyHidDeviceParames beep:%d Play:%d freq:%d dura:%d scrno:%d click:%d right:%d "
           "time:%d range:%d up:%d DisableReport:%d Digitizer:%d HideCursor:%d\n***",
           rec.BeepOn, rec.PlayMethod, static_cast<int>(rec.Frequency), rec.Duration,
           rec.ScreenNumber, rec.ClickMode, rec.DisableRight, rec.RightTime, rec.RightRange,
           rec.RightUp, rec.DisableReport, rec.Digitizer, rec.HideCursor);
}

}  // namespace

int SetPCTParamBin(int index, const unsigned char* plain) {
  return write_block(zelkora::paths::kPctRecords, index, plain);
}

int SetPCTParamTempBin(int index, const unsigned char* plain) {
  return write_block(zelkora::paths::kPctTemporaryRecords, index, plain);
}

int GetPCTParamBin(int index, unsigned char* plain, int mode) {
  Payload payload;
  const int found =
      static_cast<int>(Read_Binary_File(zelkora::paths::kPctRecords, index, payload.bytes, mode));
  DebugMsg(kTrace, "GetPCTParamBin Read_Binary_File ret:%d mode:%d\n", found, mode);
  return decode(payload, plain, found);
}

int GetPCTParamTempBin(int index, unsigned char* plain) {
  Payload payload;
  const int found = static_cast<int>(Read_Binary_File(zelkora::paths::kPctTemporaryRecords, index,
                                                      payload.bytes, kBySerialNumber));
  // The name is that of the other function: traces are compared by this text.
  DebugMsg(kTrace, "GetPCTParamBin Read_Binary_File ret:%d\n", found);
  return decode(payload, plain, found);
}

int DelPCTParamTempBin(int index) {
  const Payload erased;
  return static_cast<int>(Write_Binary_File(zelkora::paths::kPctTemporaryRecords, index,
                                            erased.bytes, kBySerialNumber));
}

int GetMyHidDeviceParames(PCTDevInfo* rec) {
  const Lookup lookup = look_up(*rec);
  int result = lookup.result;
  log_set(*rec);
  if (lookup.rewrite) {
    DebugMsg(kTrace, "GetMyHidDeviceParames SetMyHidDeviceParames\n");
    result = SetMyHidDeviceParames(rec);
  }
  if (result == 0) return 0;
  SetPOSConfig(rec, 0);
  return result;
}

int SetMyHidDeviceParames(PCTDevInfo* rec) {
  unsigned char plain[ZELKORA_PCT_BLOCK]{};
  PCTParamaEncode(rec, plain);
  const int written = SetPCTParamBin(index_of(*rec), plain);
  SendPCTConfigChange();
  return written & 0xFF;
}

int GetMyHidDeviceTempParames(PCTDevInfo* rec) {
  DebugMsg(kTrace, "GetMyHidDeviceTempParames DevNum:%d\n", index_of(*rec));
  unsigned char plain[ZELKORA_PCT_BLOCK]{};
  const int found = GetPCTParamTempBin(index_of(*rec), plain);
  if (found == 0) {
    DebugMsg(kTrace, "GetMyHidDeviceTempParames GetPCTParamTempBin checksum:0x%x fail\n", found);
    return 0;
  }
  DebugMsg(kTrace, "GetMyHidDeviceTempParames GetPCTParamTempBin checksum:0x%x pass\n", found);
  PCTDevInfo decoded = *rec;
  PCTParsingParamas(&decoded, plain);
  const bool same_panel = std::memcmp(decoded.SN, rec->SN, sizeof rec->SN) == 0;
  // The caller receives the set of another panel too, and tells by the result.
  *rec = decoded;
  return same_panel ? found : 0;
}

int SetMyHidDeviceTempParames(PCTDevInfo* rec) {
  unsigned char plain[ZELKORA_PCT_BLOCK]{};
  PCTParamaEncode(rec, plain);
  return SetPCTParamTempBin(index_of(*rec), plain);
}

int DelMyHidDeviceTempParames(PCTDevInfo* rec) {
  Payload payload;
  const int found = static_cast<int>(Read_Binary_File(
      zelkora::paths::kPctTemporaryRecords, index_of(*rec), payload.bytes, kBySerialNumber));
  return found != 0 ? DelPCTParamTempBin(index_of(*rec)) : found;
}
