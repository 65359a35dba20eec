// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The lit screens of the X display. The X functions stay undefined in the library and are bound at
// their first call; taking the address of one would bind it at load.
#include <X11/extensions/Xrandr.h>

#include <cstdio>
#include <cstring>

#include "core/log.h"
#include "core/scoped.h"
#include "core/text.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

using ScopedDisplay =
    zelkora::ScopedPointer<Display, [](Display* display) { XCloseDisplay(display); }>;
using ScopedResources =
    zelkora::ScopedPointer<XRRScreenResources, [](XRRScreenResources* resources) {
      XRRFreeScreenResources(resources);
    }>;
using ScopedCrtc =
    zelkora::ScopedPointer<XRRCrtcInfo, [](XRRCrtcInfo* crtc) { XRRFreeCrtcInfo(crtc); }>;
using ScopedOutput =
    zelkora::ScopedPointer<XRROutputInfo, [](XRROutputInfo* output) { XRRFreeOutputInfo(output); }>;

// Copies the name of the output at this position; one that cannot be asked for has no name.
void copy_output_name(Display* display, XRRScreenResources* resources, int position,
                      ScreenInfoEntry& screen) {
  if (position >= resources->noutput) return;
  const ScopedOutput output(XRRGetOutputInfo(display, resources, resources->outputs[position]));
  if (!output || output.get()->nameLen <= 0) return;
  const auto length = static_cast<size_t>(output.get()->nameLen);
  zelkora::set_text(screen.OutputName, zelkora::field_text(output.get()->name, length));
}

// Enters the lit CRTCs in their order and returns their number.
int enter_lit_screens(Display* display, XRRScreenResources* resources) {
  int count = 0;
  for (int i = 0; i < resources->ncrtc; ++i) {
    const ScopedCrtc crtc(XRRGetCrtcInfo(display, resources, resources->crtcs[i]));
    if (!crtc || crtc.get()->width == 0 || crtc.get()->height == 0) continue;
    if (count == ZELKORA_MAX_SCREENS) break;
    ScreenInfoEntry& screen = screen_info[count++];
    // Named by position, not by the CRTC's own outputs: hosts show and store screens by this name.
    copy_output_name(display, resources, i, screen);
    screen.Width = crtc.get()->width;
    screen.Height = crtc.get()->height;
    screen.X = crtc.get()->x;
    screen.Y = crtc.get()->y;
  }
  return count;
}

// One screen in words. The blanks overwrite a longer line that a terminal showed before.
void write_line(const ScreenInfoEntry& screen, char* out) {
  std::snprintf(out, ZELKORA_SCREEN_LINE, "%s [%dx%d+%d+%d]                        \n",
                screen.OutputName, static_cast<int>(screen.Width), static_cast<int>(screen.Height),
                screen.X, screen.Y);
}

}  // namespace

int get_screen(void) {
  std::memset(screen_info, 0, sizeof screen_info);
  const ScopedDisplay display(XOpenDisplay(nullptr));
  if (!display) return 0;
  const ScopedResources resources(
      XRRGetScreenResources(display.get(), DefaultRootWindow(display.get())));
  return resources ? enter_lit_screens(display.get(), resources.get()) : 0;
}

int GetSysScreenNumber(void) { return get_screen(); }

int show_screen_list(int current) {
  const int count = GetSysScreenNumber();
  for (int i = 0; i < count; ++i) {
    char line[ZELKORA_SCREEN_LINE];
    write_line(screen_info[i], line);
    DebugMsg(kTrace, "(%d) ", i + 1);
    DebugMsg(kTrace, i == current ? "[*]" : "[ ]");
    DebugMsg(kTrace, "%s", line);
  }
  return count;
}

int get_screen_list(char** lines) {
  const int count = GetSysScreenNumber();
  for (int i = 0; i < count; ++i) {
    write_line(screen_info[i], lines[i]);
    DebugMsg(kTrace, "%s\n", lines[i]);
  }
  return count;
}

int show_screen(int index) {
  const int count = GetSysScreenNumber();
  if (index >= 0 && index < count) {
    char line[ZELKORA_SCREEN_LINE];
    write_line(screen_info[index], line);
    DebugMsg(kTrace, "Screen : %s", line);
  }
  return count;
}
