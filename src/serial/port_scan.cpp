// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The search for serial panels: every serial node that the kernel log mentions is asked.
#include <dirent.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "core/log.h"
#include "core/open_file.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "core/text.h"
#include "panel_table.h"
#include "port_names.h"
#include "resistive/firmware_check.h"
#include "zelkora.h"

using zelkora::contains;
using zelkora::kTrace;

namespace {

constexpr unsigned kVendor = 0x3B17;
constexpr unsigned kProduct = 0x0001;
constexpr int kFirmwareTries = 4;
constexpr size_t kLogLine = 512;

enum class Answer { kNoPort, kNoController, kNoFirmware, kPanel };

bool is_usable(const char* firmware) {
  return firmware[0] != '\0' && !zelkora::resistive::is_unsupported_firmware(firmware);
}

// Opens the port into fd and asks who is there; fd stays open unless there is no port.
Answer ask(const char* path, char* firmware) {
  DebugMsg(kTrace, "filename %s\n", path);
  if (init_rs232touch(path) == 0) return Answer::kNoPort;
  if (ChkDevExist() == 0) return Answer::kNoController;
  const bool told = GetFirmware(firmware) != 0 && is_usable(firmware);
  return told ? Answer::kPanel : Answer::kNoFirmware;
}

// Asks until there is a firmware text that counts, a few times: a controller that was streaming
// coordinates needs a moment.
bool find_panel(const char* path, char* firmware) {
  for (int i = 0; i < kFirmwareTries; ++i) {
    const Answer answer = ask(path, firmware);
    if (answer == Answer::kNoPort) return false;
    if (answer == Answer::kPanel) return true;
    close(fd);
    if (answer == Answer::kNoController) return false;
  }
  return false;
}

void enter(const char* name, const char* firmware) {
  TouchDeviceEntry& entry = TouchDevice[DeviceNumber];
  zelkora::serial::fill_entry(entry, name, firmware);
  entry.VID = kVendor;
  entry.PID = kProduct;
  DeviceNumber += 1;
}

// True when the node is a panel, now in the table.
bool examine(const char* name) {
  char path[sizeof "/dev/" + sizeof dirent::d_name];
  std::snprintf(path, sizeof path, "/dev/%s", name);
  char firmware[20]{};
  if (!find_panel(path, firmware)) return false;
  const bool room = DeviceNumber < ZELKORA_MAX_DEVICES;
  if (room) enter(name, firmware);
  close(fd);
  return room;
}

bool is_serial_node(const char* name) { return contains(name, "ttyS") || contains(name, "ttyUSB"); }

}  // namespace

int CheckSerialPortExist(const char* name) {
  // The shell would write through a link that somebody put there.
  unlink(zelkora::paths::kKernelLog);
  // Taken afresh for every port: adapters come and go.
  static_cast<void>(!std::system("dmesg | grep tty > /opt/.touch_panel/tty.log"));
  DebugMsg(kTrace, "CheckSerialPortExist DevName:%s\n", name);
  int found = 0;
  {
    const zelkora::ScopedFile log(zelkora::open_file(zelkora::paths::kKernelLog, "r"));
    char line[kLogLine];
    while (log && found == 0 && std::fgets(line, sizeof line, log.get()) != nullptr) {
      if (contains(line, name)) found = 1;
    }
  }
  static_cast<void>(!std::system("rm /opt/.touch_panel/tty.log"));
  return found;
}

int FindMyttyDevice(void) {
  DebugMsg(kTrace, "FindMyttyDevice--start\n");
  if (ChkDisableRS232() != 0) return 0;
  device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  int result = 0;
  if (const zelkora::ScopedDir directory(opendir(zelkora::paths::kDev)); directory) {
    while (const dirent* node = readdir(directory.get())) {
      if (!is_serial_node(node->d_name) || CheckSerialPortExist(node->d_name) == 0) continue;
      if (examine(node->d_name)) result = 1;
    }
  }
  DebugMsg(kTrace, "FindMyttyDevice--end DeviceNumber:%d\n", DeviceNumber);
  return result;
}
