// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The first-time set-up of a panel: a stored record, and a flash that agrees with it.
#include <unistd.h>

#include <cstdio>

#include "core/log.h"
#include "firmware_check.h"
#include "serial/port_names.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

constexpr unsigned kReportsOff = 3;

// Writes the record to a controller that holds another.
void align_flash(int devnum, ResDevInfo* rec) {
  SetResAllDataFlash(devnum, rec, 0);
  PermanentParameter();
}

// Opens the panel's port into fd.
int open_port(int devnum) {
  const zelkora::serial::PortName name(TouchDevice[devnum].Phys);
  char path[sizeof "/dev/" + sizeof name.text] = "";
  int opened = 0;
  if (name.is_safe()) {
    std::snprintf(path, sizeof path, "/dev/%s", name.text);
    opened = init_rs232touch(path);
  }
  DebugMsg(kTrace, "SetSerDefaultFlash DevNum:%d init_rs232touch %s ret:%d\n", devnum, path,
           opened);
  return opened;
}

}  // namespace

int SetSerDefaultFlash(int devnum) {
  GetTouchConf(0);
  device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  if (open_port(devnum) == 0) return 0;
  char firmware[20]{};
  if (ChkDevExist() == 0 || GetFirmware(firmware) == 0 || firmware[0] == '\0') return 0;
  if (zelkora::resistive::is_unsupported_firmware(firmware)) {
    SetReportMode(kReportsOff);
    PermanentParameter();
    return 0;
  }
  UpdateSerFw(TouchDevice[devnum].Phys, firmware);
  ResDevInfo rec{};
  int result = GetResAllDataBin(devnum, &rec);
  if (result == 0) {
    DebugMsg(kTrace, "***SetSerDefaultFlash call GetResParamDefault***\n");
    GetResParamDefault(&rec);
    result = SetResAllDataBin(devnum, &rec);
  }
  if (result != 0 && MatchResDevChksum(&rec) == 0) {
    DebugMsg(kTrace, "SetSerDefaultFlash write flash\n");
    align_flash(devnum, &rec);
  }
  if (fd != 0) close(fd);
  return result;
}

int SetResDefaultFlash(int devnum) {
  DebugMsg(kTrace, "SetResDefaultFlash DevNum:%d ret:%d\n", devnum, 0);
  if (OpenTouchDevice(devnum) == 0) return 0;
  ResDevInfo rec{};
  int result = GetResAllDataBin(devnum, &rec);
  if (result == 0) {
    GetResParamDefault(&rec);
    unsigned words[ZELKORA_RES_STORED_WORDS];
    ResParamaEncode(&rec, words);
    result = SetResAllDataBin(devnum, &rec);
  }
  if (result != 0 && MatchResDevChksum(&rec) == 0) align_flash(devnum, &rec);
  CloseTouchDevice(devnum);
  return result;
}
