// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "fake_x.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "seams.h"

// Behind all others: its macros take names such as None and Status.
#include <X11/extensions/Xrandr.h>

namespace zelkora::test {

FakeX g_x;

namespace {

// Numbers that a position cannot be taken for.
constexpr RRCrtc kFirstCrtc = 0x40;
constexpr RROutput kFirstOutput = 0x80;

// The part of a display that the macros of Xlib look into. Its default screen is not the first.
struct OpenDisplay {
  std::remove_pointer_t<_XPrivDisplay> open{};
  Screen screens[2]{};
};

struct Resources : XRRScreenResources {
  std::vector<RRCrtc> crtc_ids;
  std::vector<RROutput> output_ids;
};

struct Output : XRROutputInfo {
  std::vector<char> text;  // its length is known, and nothing terminates it
};

void record(const std::string& line) {
  if (Seams* seams = Seams::active()) seams->trace.push_back(line);
}

template <typename T>
T* hand_out(T* object) {
  ++g_x.held;
  return object;
}

template <typename T>
void take_back(T* object) {
  --g_x.held;
  delete object;
}

void expect_open(Display* display) {
  EXPECT_EQ(static_cast<void*>(display), g_x.last_display) << "not the display that was opened";
}

// The place of an answer in the fake's list; a number that was not handed out fails the test.
template <typename T>
const std::optional<T>& at(const std::vector<std::optional<T>>& list, XID id, XID first) {
  static const std::optional<T> nothing;
  if (id >= first && id - first < list.size()) return list[id - first];
  ADD_FAILURE() << "a number that the X server did not hand out: " << id;
  return nothing;
}

template <typename Id, typename T>
std::vector<Id> numbered(const std::vector<T>& list, Id first) {
  std::vector<Id> ids;
  for (size_t i = 0; i < list.size(); ++i) ids.push_back(first + i);
  return ids;
}

}  // namespace
}  // namespace zelkora::test

extern "C" {

Display* XOpenDisplay(const char* name) {
  using namespace zelkora::test;
  record("XOpenDisplay");
  EXPECT_EQ(name, nullptr) << "the default display has no name";
  if (!g_x.reachable) return nullptr;
  OpenDisplay* display = hand_out(new OpenDisplay);
  display->screens[1].root = g_x.root;
  display->open.screens = display->screens;
  display->open.nscreens = 2;
  display->open.default_screen = 1;
  g_x.last_display = display;
  return reinterpret_cast<Display*>(display);
}

int XCloseDisplay(Display* display) {
  using namespace zelkora::test;
  record("XCloseDisplay");
  expect_open(display);
  take_back(reinterpret_cast<OpenDisplay*>(display));
  g_x.last_display = nullptr;
  return g_x.close_result;
}

XRRScreenResources* XRRGetScreenResources(Display* display, Window window) {
  using namespace zelkora::test;
  char line[64];
  std::snprintf(line, sizeof line, "XRRGetScreenResources 0x%lX", window);
  record(line);
  expect_open(display);
  if (!g_x.extension) return nullptr;
  Resources* resources = hand_out(new Resources{});
  resources->crtc_ids = numbered(g_x.crtcs, kFirstCrtc);
  resources->ncrtc = static_cast<int>(resources->crtc_ids.size());
  resources->crtcs = resources->crtc_ids.data();
  resources->output_ids = numbered(g_x.outputs, kFirstOutput);
  resources->noutput = static_cast<int>(resources->output_ids.size());
  resources->outputs = resources->output_ids.data();
  return resources;
}

void XRRFreeScreenResources(XRRScreenResources* resources) {
  using namespace zelkora::test;
  record("XRRFreeScreenResources");
  take_back(static_cast<Resources*>(resources));
}

XRRCrtcInfo* XRRGetCrtcInfo(Display* display, XRRScreenResources*, RRCrtc id) {
  using namespace zelkora::test;
  record("XRRGetCrtcInfo " + std::to_string(id - kFirstCrtc));
  expect_open(display);
  const std::optional<FakeCrtc>& crtc = at(g_x.crtcs, id, kFirstCrtc);
  if (!crtc) return nullptr;
  XRRCrtcInfo* info = hand_out(new XRRCrtcInfo{});
  info->width = crtc->width;
  info->height = crtc->height;
  info->x = crtc->x;
  info->y = crtc->y;
  return info;
}

void XRRFreeCrtcInfo(XRRCrtcInfo* info) {
  using namespace zelkora::test;
  record("XRRFreeCrtcInfo");
  take_back(info);
}

XRROutputInfo* XRRGetOutputInfo(Display* display, XRRScreenResources*, RROutput id) {
  using namespace zelkora::test;
  record("XRRGetOutputInfo " + std::to_string(id - kFirstOutput));
  expect_open(display);
  const std::optional<std::string>& name = at(g_x.outputs, id, kFirstOutput);
  if (!name) return nullptr;
  Output* info = hand_out(new Output{});
  info->text.assign(name->begin(), name->end());
  info->name = info->text.data();
  info->nameLen = static_cast<int>(info->text.size());
  return info;
}

void XRRFreeOutputInfo(XRROutputInfo* info) {
  using namespace zelkora::test;
  record("XRRFreeOutputInfo");
  take_back(static_cast<Output*>(info));
}

}  // extern "C"
