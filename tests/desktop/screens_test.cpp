// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <algorithm>
#include <climits>
#include <cstring>
#include <span>

#include "support/bench.h"

namespace {

using zelkora::test::FakeCrtc;
using zelkora::test::Lines;

const std::string kBlanks(24, ' ');

class ScreensTest : public zelkora::test::Bench {
 protected:
  // Lit CRTCs side by side, each with its output.
  void light(int count) {
    for (int i = 0; i < count; ++i) {
      x.crtcs.push_back(FakeCrtc{.width = 640, .height = 480, .x = 640 * i, .y = 0});
      x.outputs.push_back("OUT-" + std::to_string(i));
    }
  }
  void light_two() {
    x.crtcs = {FakeCrtc{1920, 1080, 0, 0}, FakeCrtc{1280, 1024, 1920, 0}};
    x.outputs = {"HDMI-1", "DP-2"};
  }
};

std::vector<std::string> names() {
  std::vector<std::string> list;
  for (const ScreenInfoEntry& screen : screen_info) list.emplace_back(screen.OutputName);
  return list;
}

bool all_clear(const ScreenInfoEntry& screen) {
  constexpr ScreenInfoEntry kNone{};
  return std::memcmp(&screen, &kNone, sizeof screen) == 0;
}

TEST_F(ScreensTest, AScreenIsALitCrtcUnderTheNameOfTheOutputAtItsPosition) {
  light_two();
  EXPECT_EQ(get_screen(), 2);
  EXPECT_EQ(screen_info[0].Width, 1920U);
  EXPECT_EQ(screen_info[0].Height, 1080U);
  EXPECT_EQ(screen_info[0].X, 0);
  EXPECT_EQ(screen_info[0].Y, 0);
  EXPECT_STREQ(screen_info[0].OutputName, "HDMI-1");
  EXPECT_EQ(screen_info[1].Width, 1280U);
  EXPECT_EQ(screen_info[1].Height, 1024U);
  EXPECT_EQ(screen_info[1].X, 1920);
  EXPECT_EQ(screen_info[1].Y, 0);
  EXPECT_STREQ(screen_info[1].OutputName, "DP-2");
  EXPECT_TRUE(all_clear(screen_info[2]));
  EXPECT_TRUE(all_clear(screen_info[3]));
}

TEST_F(ScreensTest, AsksTheRootWindowOfTheDefaultScreenAndGivesEverythingBack) {
  light_two();
  x.root = 0x2A7;
  x.crtcs.insert(x.crtcs.begin() + 1, FakeCrtc{});
  x.outputs.insert(x.outputs.begin() + 1, "DP-1");
  EXPECT_EQ(get_screen(), 2);
  EXPECT_EQ(trace(), (Lines{"XOpenDisplay", "XRRGetScreenResources 0x2A7",  //
                            "XRRGetCrtcInfo 0", "XRRGetOutputInfo 0", "XRRFreeOutputInfo",
                            "XRRFreeCrtcInfo",                      //
                            "XRRGetCrtcInfo 1", "XRRFreeCrtcInfo",  // dark: its output is not asked
                            "XRRGetCrtcInfo 2", "XRRGetOutputInfo 2", "XRRFreeOutputInfo",
                            "XRRFreeCrtcInfo",  //
                            "XRRFreeScreenResources", "XCloseDisplay"}));
}

struct CountCase {
  int lit;
  int screens;
};

TEST_F(ScreensTest, FourScreensAreKept) {
  constexpr CountCase kCases[] = {{0, 0}, {1, 1}, {3, 3}, {4, 4}, {5, 4}, {16, 4}};
  for (const CountCase& row : kCases) {
    SCOPED_TRACE(row.lit);
    x.crtcs.clear();
    x.outputs.clear();
    light(row.lit);
    EXPECT_EQ(get_screen(), row.screens);
    EXPECT_EQ(GetSysScreenNumber(), row.screens);
    EXPECT_EQ(std::ranges::count_if(screen_info, all_clear), 4 - row.screens);
  }
  EXPECT_EQ(names(), (Lines{"OUT-0", "OUT-1", "OUT-2", "OUT-3"}));
}

TEST_F(ScreensTest, TheWalkStopsAtTheFifthLitCrtc) {
  light(16);
  EXPECT_EQ(get_screen(), 4);
  EXPECT_EQ(count_of("XRRGetOutputInfo"), 4U);
  EXPECT_EQ(count_of("XRRGetCrtcInfo"), 5U);
  EXPECT_EQ(count_of("XRRFreeCrtcInfo"), 5U);
}

TEST_F(ScreensTest, DarkCrtcsBehindTheFourthScreenAreNoReasonToStop) {
  light(4);
  x.crtcs.insert(x.crtcs.end(), 12, FakeCrtc{});
  EXPECT_EQ(get_screen(), 4);
  EXPECT_EQ(count_of("XRRGetCrtcInfo"), 16U);
}

TEST_F(ScreensTest, ACrtcWithoutWidthOrHeightUsesNoScreenNumber) {
  light(4);
  x.crtcs[0]->width = 0;
  x.crtcs[2]->height = 0;
  EXPECT_EQ(get_screen(), 2);
  EXPECT_EQ(names(), (Lines{"OUT-1", "OUT-3", "", ""}));
  EXPECT_EQ(screen_info[0].X, 640);
  EXPECT_EQ(screen_info[1].X, 3 * 640);
}

TEST_F(ScreensTest, ScreensReachLeftOfAndAboveTheFirst) {
  x.crtcs = {FakeCrtc{UINT_MAX, 1, INT_MIN, -1024}};
  x.outputs = {"DP-1"};
  char line[ZELKORA_SCREEN_LINE];
  char* lines[] = {line, nullptr, nullptr, nullptr};
  EXPECT_EQ(get_screen_list(lines), 1);
  EXPECT_EQ(screen_info[0].Width, UINT_MAX);
  EXPECT_EQ(screen_info[0].X, INT_MIN);
  EXPECT_EQ(screen_info[0].Y, -1024);
  EXPECT_EQ(line, "DP-1 [-1x1+-2147483648+-1024]" + kBlanks + "\n");
}

// --- displays that answer less, or worse ---

TEST_F(ScreensTest, NoScreensWithoutADisplay) {
  light_two();
  EXPECT_EQ(get_screen(), 2);
  x.reachable = false;
  clear_trace();
  EXPECT_EQ(get_screen(), 0);
  EXPECT_TRUE(std::ranges::all_of(screen_info, all_clear));
  EXPECT_EQ(trace(), Lines{"XOpenDisplay"});
}

TEST_F(ScreensTest, NoListingHasALineWithoutADisplay) {
  x.reachable = false;
  DbgFlag = 1;
  EXPECT_EQ(GetSysScreenNumber(), 0);
  EXPECT_EQ(show_screen_list(0), 0);
  EXPECT_EQ(get_screen_list(nullptr), 0);
  EXPECT_EQ(show_screen(0), 0);
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(ScreensTest, NoScreensWithoutTheExtension) {
  light_two();
  x.extension = false;
  EXPECT_EQ(get_screen(), 0);
  EXPECT_EQ(trace(), (Lines{"XOpenDisplay", "XRRGetScreenResources 0x123", "XCloseDisplay"}));
}

TEST_F(ScreensTest, ACrtcThatIsGoneIsPassedOver) {
  light(3);
  x.crtcs[1].reset();
  EXPECT_EQ(get_screen(), 2);
  EXPECT_EQ(names(), (Lines{"OUT-0", "OUT-2", "", ""}));
}

TEST_F(ScreensTest, AScreenWhoseOutputCannotBeAskedForHasNoName) {
  light(3);
  x.outputs[1].reset();
  x.outputs.pop_back();
  EXPECT_EQ(get_screen(), 3);
  EXPECT_EQ(names(), (Lines{"OUT-0", "", "", ""}));
  EXPECT_EQ(screen_info[1].X, 640);
  EXPECT_EQ(screen_info[2].X, 2 * 640);
}

struct NameCase {
  const char* what;
  std::string name;
  std::string kept;
};

TEST_F(ScreensTest, OutputNamesAreCutAndNeverTakenForAFormat) {
  const NameCase kCases[] = {
      {"empty", "", ""},
      {"19 characters", std::string(19, 'n'), std::string(19, 'n')},
      {"20 characters", std::string(20, 'n'), std::string(19, 'n')},
      {"far too long", std::string(70'000, 'n'), std::string(19, 'n')},
      {"a format", "%s%n%s%n", "%s%n%s%n"},
      {"bytes of any value", "\x01\x7F\x80\xFF", "\x01\x7F\x80\xFF"},
      {"a NUL inside", std::string("DP\0-1", 5), "DP"},
  };
  light(1);
  DbgFlag = 1;
  for (const NameCase& row : kCases) {
    SCOPED_TRACE(row.what);
    x.outputs[0] = row.name;
    std::memset(screen_info, 0x5A, sizeof screen_info);
    clear_trace();
    EXPECT_EQ(show_screen(0), 1);
    const auto& name = screen_info[0].OutputName;
    EXPECT_STREQ(name, row.kept.c_str());
    EXPECT_TRUE(std::all_of(name + row.kept.size(), std::end(name), [](char c) { return !c; }));
    EXPECT_EQ(messages(),
              Lines{"zelkora DD:Screen : " + row.kept + " [640x480+0+0]" + kBlanks + "\n"});
  }
}

// --- the three listings ---

TEST_F(ScreensTest, ShowScreenListMarksTheCurrentScreen) {
  light_two();
  DbgFlag = 1;
  EXPECT_EQ(show_screen_list(1), 2);
  EXPECT_EQ(messages(),
            (Lines{"zelkora DD:(1) ", "zelkora DD:[ ]",
                   "zelkora DD:HDMI-1 [1920x1080+0+0]" + kBlanks + "\n", "zelkora DD:(2) ",
                   "zelkora DD:[*]", "zelkora DD:DP-2 [1280x1024+1920+0]" + kBlanks + "\n"}));
}

TEST_F(ScreensTest, ShowScreenListMarksNoScreenThatIsNotThere) {
  light_two();
  DbgFlag = 1;
  for (const int current : {-1, 2, INT_MAX}) {
    EXPECT_EQ(show_screen_list(current), 2);
  }
  EXPECT_EQ(std::ranges::count(messages(), "zelkora DD:[ ]"), 6);
  EXPECT_EQ(std::ranges::count(messages(), "zelkora DD:[*]"), 0);
}

TEST_F(ScreensTest, GetScreenListWritesALineForEachScreen) {
  light_two();
  DbgFlag = 1;
  char buffers[4][ZELKORA_SCREEN_LINE];
  std::memset(buffers, '~', sizeof buffers);
  char* lines[] = {buffers[0], buffers[1], buffers[2], buffers[3]};
  EXPECT_EQ(get_screen_list(lines), 2);
  const std::string first = "HDMI-1 [1920x1080+0+0]" + kBlanks + "\n";
  const std::string second = "DP-2 [1280x1024+1920+0]" + kBlanks + "\n";
  EXPECT_EQ(lines[0], first);
  EXPECT_EQ(lines[1], second);
  // The line brings a line feed, and the message adds one.
  EXPECT_EQ(messages(), (Lines{"zelkora DD:" + first + "\n", "zelkora DD:" + second + "\n"}));
  for (const char* rest : {lines[2], lines[3]}) {
    EXPECT_EQ(std::count(rest, rest + ZELKORA_SCREEN_LINE, '~'), ZELKORA_SCREEN_LINE);
  }
}

TEST_F(ScreensTest, TheLongestLineFitsItsBuffer) {
  x.crtcs.assign(4, FakeCrtc{0x80000000U, 0x80000000U, INT_MIN, INT_MIN});
  x.outputs.assign(4, std::string(64, 'n'));
  char buffers[4][ZELKORA_SCREEN_LINE];
  char* lines[] = {buffers[0], buffers[1], buffers[2], buffers[3]};
  EXPECT_EQ(get_screen_list(lines), 4);
  for (const char* line : lines) {
    EXPECT_EQ(line, std::string(19, 'n') + " [-2147483648x-2147483648+-2147483648+-2147483648]" +
                        kBlanks + "\n");
  }
}

TEST_F(ScreensTest, ShowScreenPrintsTheScreenOfThatIndex) {
  light_two();
  DbgFlag = 1;
  EXPECT_EQ(show_screen(0), 2);
  EXPECT_EQ(show_screen(1), 2);
  EXPECT_EQ(messages(), (Lines{"zelkora DD:Screen : HDMI-1 [1920x1080+0+0]" + kBlanks + "\n",
                               "zelkora DD:Screen : DP-2 [1280x1024+1920+0]" + kBlanks + "\n"}));
}

TEST_F(ScreensTest, ShowScreenPrintsNothingForAnIndexWithoutAScreen) {
  light_two();
  DbgFlag = 1;
  for (const int index : {2, 3, 4, INT_MAX, -1, INT_MIN}) {
    SCOPED_TRACE(index);
    EXPECT_EQ(show_screen(index), 2);
  }
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(ScreensTest, EveryListingAsksTheDisplayAgain) {
  char buffers[4][ZELKORA_SCREEN_LINE];
  char* lines[] = {buffers[0], buffers[1], buffers[2], buffers[3]};
  light(3);
  EXPECT_EQ(GetSysScreenNumber(), 3);
  x.crtcs.pop_back();
  EXPECT_EQ(get_screen_list(lines), 2);
  x.crtcs.pop_back();
  EXPECT_EQ(show_screen(0), 1);
  x.crtcs.pop_back();
  EXPECT_EQ(show_screen_list(0), 0);
  EXPECT_EQ(count_of("XOpenDisplay"), 4U);
  EXPECT_EQ(count_of("XCloseDisplay"), 4U);
}

TEST_F(ScreensTest, PrintsOnlyInDebugMode) {
  light_two();
  char buffers[4][ZELKORA_SCREEN_LINE];
  char* lines[] = {buffers[0], buffers[1], buffers[2], buffers[3]};
  EXPECT_EQ(show_screen_list(0), 2);
  EXPECT_EQ(get_screen_list(lines), 2);
  EXPECT_EQ(show_screen(0), 2);
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(ScreensTest, DoesNotReadTheHostsConfiguration) {
  light_two();
  show_screen_list(0);
  EXPECT_EQ(host.config_reads, 0);
}

}  // namespace
