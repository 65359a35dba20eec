// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Parameter records of PCT panels to and from the plain flash block, their repair and defaults.
#include <cstdint>
#include <cstring>

#include "core/log.h"
#include "core/paths.h"
#include "core/text.h"
#include "flash_block.h"
#include "layout.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::pct::FlashBlock;

namespace {

constexpr unsigned kLowestFrequency = 500;
constexpr unsigned kHighestFrequency = 3000;
constexpr unsigned kFallbackFrequency = 1000;
constexpr unsigned char kShortestDuration = 5;
constexpr unsigned char kLongestDuration = 50;

// A byte of the record that may not exceed its highest value.
struct Limit {
  unsigned char PCTDevInfo::*field;
  unsigned char highest;
  unsigned char fallback;
};

constexpr Limit kLimits[] = {
    {&PCTDevInfo::Digitizer, 1, 1},    {&PCTDevInfo::BeepOn, 3, 0},
    {&PCTDevInfo::PlayMethod, 2, 1},   {&PCTDevInfo::ScreenNumber, 9, 0},
    {&PCTDevInfo::DisableRight, 1, 0}, {&PCTDevInfo::ClickMode, 3, 0},
    {&PCTDevInfo::RightTime, 15, 4},   {&PCTDevInfo::RightRange, 15, 10},
    {&PCTDevInfo::FlashByte31, 3, 0},  {&PCTDevInfo::HideCursor, 1, 0},
};

void repair(PCTDevInfo& rec) {
  for (const Limit& limit : kLimits) {
    if (rec.*limit.field > limit.highest) rec.*limit.field = limit.fallback;
  }
  if (rec.Frequency < kLowestFrequency || rec.Frequency > kHighestFrequency) {
    rec.Frequency = kFallbackFrequency;
  }
  if (rec.Duration < kShortestDuration || rec.Duration > kLongestDuration) rec.Duration = 0;
  // A bad DisableReport stays as it is and costs DisableRight instead: records in the field were
  // written by readers that did so.
  if (rec.DisableReport > 1) rec.DisableRight = 0;
}

void log_block(const FlashBlock& block) {
  DebugMsg(kTrace, "PARAMES 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x\n", block.beep_on,
           block.play_method, block.frequency_high, block.frequency_low, block.duration,
           block.screen_number);
  DebugMsg(kTrace, "PosConfig 0x%02x 0x%02x 0x%02x\n", block.pos_config, block.click, block.right);
  DebugMsg(kTrace, "Digitizer:0x%02x DisableReport:0x%02x\n", block.digitizer,
           block.disable_report);
}

int read(const char* key, int default_value) {
  return ReadIniKeyValue(zelkora::paths::kDefaults, "Default", key, default_value);
}

unsigned char read_byte(const char* key, int default_value) {
  return static_cast<unsigned char>(read(key, default_value));
}

}  // namespace

void PCTParsingParamas(PCTDevInfo* rec, const unsigned char* plain) {
  FlashBlock block;
  std::memcpy(&block, plain, sizeof block);
  std::memcpy(rec->SN, block.serial_number, sizeof rec->SN);
  log_block(block);
  rec->Digitizer = block.digitizer;
  rec->DisableReport = block.disable_report;
  rec->FlashByte31 = block.flash_byte31;
  rec->HideCursor = block.hide_cursor;
  rec->BeepOn = block.beep_on;
  rec->PlayMethod = block.play_method;
  rec->Frequency = block.frequency_high * 256U + block.frequency_low;
  rec->Duration = block.duration;
  rec->ScreenNumber = block.screen_number;
  rec->DisableRight = (block.click >> 3) & 1;
  rec->RightUp = (block.click >> 2) & 1;
  rec->ClickMode = block.click & 3;
  rec->RightTime = block.right & 0xF;
  rec->RightRange = block.right >> 4;
  // These three are written but never read back.
  rec->POSEnable = 1;
  rec->HidEnable = 1;
  rec->SyncFlag = 1;
  repair(*rec);
}

void PCTParamaEncode(const PCTDevInfo* rec, unsigned char* plain) {
  FlashBlock block;
  std::memcpy(&block, plain, sizeof block);  // bytes of no parameter stay as they are
  std::memcpy(block.serial_number, rec->SN, sizeof rec->SN);
  block.beep_on = rec->BeepOn;
  block.play_method = rec->PlayMethod;
  block.frequency_high = static_cast<uint8_t>(rec->Frequency >> 8);
  block.frequency_low = static_cast<uint8_t>(rec->Frequency);
  block.duration = rec->Duration;
  block.screen_number = rec->ScreenNumber;
  block.digitizer = rec->Digitizer;
  block.disable_report = rec->DisableReport;
  block.flash_byte31 = rec->FlashByte31;
  block.hide_cursor = rec->HideCursor;
  block.pos_config = static_cast<uint8_t>(rec->POSEnable | rec->HidEnable << 5);
  block.click = static_cast<uint8_t>(rec->ClickMode | rec->SyncFlag << 4 | rec->DisableRight << 3 |
                                     rec->RightUp << 2);
  block.right = static_cast<uint8_t>(rec->RightRange << 4 | rec->RightTime);
  std::memcpy(plain, &block, sizeof block);
  DebugMsg(kTrace, "DevInfo->DisableReport:%d HideCursor:%d\n", rec->DisableReport,
           rec->HideCursor);
}

void GetPCTParamDefault(PCTDevInfo* rec) {
  rec->BeepOn = read_byte("BeepOn", 1);
  rec->PlayMethod = read_byte("PlayMethod", 1);
  rec->Frequency = static_cast<unsigned>(read("Frequency", 2000));
  rec->Duration = read_byte("Duration", 10);
  // The file counts screens from 1. Cut first: the smallest number has none before it.
  rec->ScreenNumber = static_cast<unsigned char>(read_byte("ScreenNumber", 1) - 1);
  rec->ClickMode = read_byte("ClickMode", 0);
  rec->DisableRight = read_byte("DisableRight", 0);
  rec->RightTime = read_byte("RightTime", 4);
  rec->RightRange = read_byte("RightRange", 10);
  rec->Digitizer = ChkMouseMode() == 0 ? read_byte("Digitizer", 0) : 0;
  rec->DisableReport = read_byte("DisableReport", 0);
  rec->HideCursor = read_byte("HideCursor", 0);
  rec->POSEnable = 1;
  rec->HidEnable = 1;
  rec->SyncFlag = 1;
  rec->RightUp = 0;
}

int EmptyParames(void) {
  constexpr uint8_t kFrame[zelkora::pct::kReportSize] = {zelkora::pct::kCommandReport, 0xA8, 0x40};
  DebugMsg(kTrace, "***EmptyParames--start***\n");
  if (SendDataNew(kFrame, sizeof kFrame) == 0) {
    DebugMsg(kTrace, "EmptyParames failed err:000\n");
    return 0;
  }
  DebugMsg(kTrace, "***EmptyParames--end***\n");
  return 1;
}

int GetFWVersionStr(int index, char* out) {
  zelkora::copy_text(out, TouchDevice[index].FWVersion);
  return 1;
}
