// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Serial panels between the device table and their list.
#include "panel_table.h"

#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/file_rewrite.h"
#include "core/log.h"
#include "core/paths.h"
#include "core/text.h"
#include "port_names.h"
#include "resistive/firmware_check.h"
#include "resistive/record_words.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::serial::PortName;

namespace {

constexpr int kListWritten = 6;  // callers know this number

// A slot becomes the next table entry, with a stored parameter record.
void enter(const SerialPanelSlot& slot) {
  if (DeviceNumber < 0 || DeviceNumber >= ZELKORA_MAX_DEVICES) return;
  zelkora::serial::fill_entry(TouchDevice[DeviceNumber], zelkora::field_text(slot.Name),
                              zelkora::field_text(slot.FWVersion));
  ResDevInfo rec{};
  if (GetResAllDataBin(DeviceNumber, &rec) == 0) {
    GetResParamDefault(&rec);
    SetResAllDataBin(DeviceNumber, &rec);
  }
  DeviceNumber += 1;
}

}  // namespace

void zelkora::serial::fill_entry(TouchDeviceEntry& entry, std::string_view name,
                                 std::string_view firmware) {
  std::memcpy(entry.SN, resistive::kPlaceholderSerialNumber, sizeof entry.SN);
  set_text(entry.FWVersion, firmware);
  set_text(entry.Name, name);
  set_text(entry.Phys, field_text(entry.Name));
  set_text(entry.ID, field_text(entry.Name));
  entry.Type = ZELKORA_TYPE_RESISTIVE_SERIAL;
}

int GetSerialDevceNameConf(void) {
  DebugMsg(kTrace, "GetSerialDevceNameConf--start\n");
  if (ChkDisableRS232() != 0) return 0;
  const int count = GetSerDevInfo();
  for (int i = 0; i < count && i < ZELKORA_MAX_SERIAL; ++i) {
    const SerialPanelSlot& slot = cMySerInfo[i];
    if (slot.FWVersion[0] != '\0' && !zelkora::resistive::is_unsupported_firmware(slot.FWVersion)) {
      enter(slot);
    } else {
      zelkora::resistive::log_unsupported_device();
      close(fd);  // whatever it holds
    }
  }
  DebugMsg(kTrace, "GetSerialDevceNameConf--end\n");
  return DeviceNumber;
}

int SetSerialDeviceConf(void) {
  zelkora::NewContent list;
  if (list.stream() == nullptr) return 0;
  int count = 0;
  zelkora::serial::for_each_serial_panel(
      [&list, &count](int number, const PortName& name, const TouchDeviceEntry& entry) {
        if (!name.is_safe()) return;
        ++count;
        std::fprintf(list.stream(), "SerialDevice%d=%s\nFW%d=", number, name.text, number);
        list.write(zelkora::serial::listable(zelkora::field_text(entry.FWVersion)));
        std::fputc('\n', list.stream());
      });
  if (!list.commit(zelkora::paths::kSerialPanels) || count == 0) return 0;
  // There is no such directory, so nothing is removed: units that are there already stay.
  static_cast<void>(!std::system("rm -f \"/systemd/system/vastrel*\""));
  CreateServiceFile();
  SetSerDevBootFile();
  SetSerDevBootFile_rcd();
  SetUdevRule();
  return kListWritten;
}

int GetSerDeviceNumber(const char* name) {
  GetTouchConf(0);
  const int count = GetSerialDevceNameConf();
  DebugMsg(kTrace, "GetSerDeviceNumber ret:%d\n", count);
  if (count == 0) return -1;
  for (int i = 0; i < DeviceNumber; ++i) {
    DebugMsg(kTrace, "GetSerDeviceNumber %s : %s\n", name, TouchDevice[i].Phys);
    if (zelkora::contains(name, zelkora::field_text(TouchDevice[i].Phys))) return i;
  }
  return -1;
}
