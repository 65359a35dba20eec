// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <dirent.h>
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>

#include "core/log.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "core/text.h"
#include "zelkora.h"

using zelkora::contains;
using zelkora::kTrace;

namespace {

// What the last event node that answered said of itself.
struct EventIdentity {
  // A byte more than the kernel may fill: it cuts a long text without terminating it.
  char phys[257] = "";
  char name[257] = "Unknown";
};

constexpr size_t kRequestSize = 256;

// Asks one event node. What it does not answer keeps the value of the node before.
bool identify(const char* path, EventIdentity& identity) {
  DebugMsg(kTrace, "open %s\n", path);
  const int event = open(path, O_RDONLY);
  if (event <= 0) {
    DebugMsg(kTrace, "open %s fail.\n", path);
    return false;
  }
  ioctl(event, EVIOCGPHYS(kRequestSize), identity.phys);
  ioctl(event, EVIOCGNAME(kRequestSize), identity.name);
  close(event);
  DebugMsg(kTrace, "%s phys:%s name:%s\n", path, identity.phys, identity.name);
  return true;
}

bool belongs_to(const EventIdentity& identity, const TouchDeviceEntry& entry) {
  return identity.phys[0] != '\0' && contains(identity.phys, zelkora::field_text(entry.Phys)) &&
         !contains(identity.name, "Pen");
}

}  // namespace

int FindMyEVDevice(int index) {
  TouchDeviceEntry& entry = TouchDevice[index];
  EventIdentity identity;
  DebugMsg(kTrace, "FindMyEVDevice--start\n");
  if (const zelkora::ScopedDir directory(opendir(zelkora::paths::kDevInput)); directory) {
    while (const dirent* node = readdir(directory.get())) {
      if (!contains(node->d_name, "event")) continue;
      char path[sizeof node->d_name + sizeof "/dev/input/"];
      std::snprintf(path, sizeof path, "%s/%s", zelkora::paths::kDevInput, node->d_name);
      if (!identify(path, identity) || !belongs_to(identity, entry)) continue;
      DebugMsg(kTrace, "Device Name:%s\n", identity.name);
      zelkora::set_text(entry.EventName, path);
      DebugMsg(kTrace, "ev_path : %s\n", path);
      break;
    }
  }
  DebugMsg(kTrace, "FindMyEVDevice--end\n");
  return 1;
}
