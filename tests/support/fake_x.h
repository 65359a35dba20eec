// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// An X server as far as the library asks it: the executable defines the eight functions of Xlib
// and XRandR itself. Each call is a line of the trace: "XOpenDisplay", "XRRGetScreenResources" with
// the window in hex, "XRRGetCrtcInfo" and "XRRGetOutputInfo" with a position, "XRRFreeCrtcInfo",
// "XRRFreeOutputInfo", "XRRFreeScreenResources", "XCloseDisplay". A call with anything but what
// the server handed out before fails the test, and so does what is not given back at its end.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace zelkora::test {

// Where a CRTC shows the root window; one without a width or height is switched off.
struct FakeCrtc {
  unsigned width = 0;
  unsigned height = 0;
  int x = 0;
  int y = 0;
};

struct FakeX {
  bool reachable = true;                            // XOpenDisplay() succeeds
  bool extension = true;                            // the server has XRandR
  unsigned long root = 0x123;                       // the root window of the default screen
  std::vector<std::optional<FakeCrtc>> crtcs;       // none: asking fails
  std::vector<std::optional<std::string>> outputs;  // their names, by position; none: asking fails
  int close_result = 0;                             // what XCloseDisplay() returns
  void* last_display = nullptr;                     // the one opened last
  int held = 0;                                     // displays and answers not given back
};

// Every test of a Bench starts with a fresh one.
extern FakeX g_x;

}  // namespace zelkora::test
