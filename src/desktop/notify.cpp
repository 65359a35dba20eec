// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Requests to the X input driver, delivered by the host over a display opened for each of them.
#include <X11/Xlib.h>

#include "core/log.h"
#include "zelkora.h"

namespace {

struct Notification {
  unsigned request;
  const char* name;
  const char* heading = nullptr;     // printed before the name
  const char* no_display = nullptr;  // the error without a display; most keep silent
};

constexpr Notification kPctReconfigure = {
    .request = 0x80000,
    .name = "EVDEV_PCT_RECONFIG\n",
    .no_display = "** Can't open XDisplay **\n",
};
constexpr Notification kDisableDriver = {
    .request = 0x800,
    .name = "EVDEV_DISABLE_TOUCH_DRIVER\n",
};
constexpr Notification kResistiveReconfigure = {
    .request = 0x1000000,
    .name = "EVDEV_RES_RECONFIG\n",
};
constexpr Notification kRegetScreenNumber = {
    .request = 0x20000,
    .name = "EVDEV_REGET_SCREEN_NUMBER\n",
    .heading = "SendRegetScreenNumber\n",
};

void print(int level, const char* text) {
  if (text != nullptr) DebugMsg(level, "%s", text);
}

int notify(const Notification& notification) {
  Display* display = XOpenDisplay(nullptr);
  if (display == nullptr) {
    print(zelkora::kError, notification.no_display);
    return 0;
  }
  print(zelkora::kTrace, notification.heading);
  print(zelkora::kTrace, notification.name);
  mydoled_all_display(display, notification.request, MyConfig[ZELKORA_CONFIG_NOTIFY_ARGUMENT]);
  return XCloseDisplay(display);
}

}  // namespace

int SendPCTConfigChange(void) { return notify(kPctReconfigure); }

int DisableTouchDriver(void) { return notify(kDisableDriver); }

int SendResConfigChange(void) { return notify(kResistiveReconfigure); }

int SendRegetScreenNumber(void) { return notify(kRegetScreenNumber); }
