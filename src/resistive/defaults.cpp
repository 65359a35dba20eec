// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "core/log.h"
#include "core/paths.h"
#include "zelkora.h"

namespace {

constexpr unsigned char kMouseHidMode = 2;
constexpr unsigned char kDigitizerHidMode = 3;

int read(const char* key, int default_value) {
  return ReadIniKeyValue(zelkora::paths::kDefaults, "Res_Default", key, default_value);
}

unsigned char read_byte(const char* key, int default_value) {
  return static_cast<unsigned char>(read(key, default_value));
}

}  // namespace

void GetResParamDefault(ResDevInfo* rec) {
  rec->BeepOn = read_byte("BeepOn", 1);
  rec->PlayMethod = read_byte("PlayMethod", 1);
  rec->Frequency = static_cast<unsigned>(read("Frequency", 2000));
  rec->Duration = read_byte("Duration", 10);
  // The file counts screens from 1. Cut first: the smallest number has none before it.
  rec->ScreenNumber = static_cast<unsigned char>(read_byte("ScreenNumber", 1) - 1);
  rec->DisableRight = read_byte("DisableRight", 0);
  rec->RightTime = read_byte("RightTime", 4);
  rec->FirstMove = read_byte("FirstMove", 1);
  DebugMsg(zelkora::kTrace, "DevInfo->FirstMove:%d\n", rec->FirstMove);
  rec->EdgeRight = read("EdgeRight", 0);
  rec->EdgeLeft = read("EdgeLeft", 0);
  rec->EdgeDown = read("EdgeDown", 0);
  rec->EdgeUp = read("EdgeUp", 0);
  rec->ReportMode = read_byte("ReportMode", 1);
  rec->HidMode = read("Digitizer", 0) != 0 ? kDigitizerHidMode : kMouseHidMode;
  rec->DisableReport = read_byte("DisableReport", 0);
  rec->HideCursor = read_byte("HideCursor", 0);
}
