// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "pct_settings.h"

namespace zelkoractl {
namespace {

// "on" is what a resistive panel calls it.
constexpr Word kBeep[] = {{"off", 0}, {"down", 1}, {"up", 2}, {"both", 3}, {"on", 1}};
constexpr Word kNoBeep[] = {{"none", 0}};
constexpr Word kClicks[] = {{"mouse", 0}, {"touch", 1}, {"release", 2}, {"right-first", 3}};
constexpr Word kMenu[] = {{"down", 1}, {"up", 0}};

constexpr Values kOn{kOnOff};
constexpr Values kOff{kOffOn};
constexpr Values kStep{{}, 0, 15};

using P = PCTDevInfo;

// clang-format off
constexpr PctSetting kSettings[] = {
    {{"beep", {kBeep}, "beep at pen down, pen up or both"}, &P::BeepOn},
    {{"play-method", {{}, 0, 2}, "when the beep plays"}, &P::PlayMethod},
    {{"frequency", {{}, 500, 3000}, "beep frequency, in Hz"}, nullptr},
    {{"duration", {kNoBeep, 5, 50}, "beep length, in the controller's units"}, &P::Duration},
    {{"screen", {{}, 0, 9}, "screen the panel maps to; 0 is the first"}, &P::ScreenNumber},
    {{"click-mode", {kClicks}, "what a touch clicks, and when"},
     &P::ClickMode},
    {{"right-click", kOff, "a long touch is a right click"}, &P::DisableRight},
    {{"right-time", kStep, "touch length that makes a right click: 0.75 s, 0.25 s more a step"},
     &P::RightTime},
    {{"right-range", kStep, "how far such a touch may move"}, &P::RightRange},
    {{"menu", {kMenu}, "menus open when the right button goes down, or up"}, &P::RightUp},
    {{"digitizer", kOn, "the driver takes the panel for a digitizer, not a mouse"}, &P::Digitizer},
    {{"reports", kOff, "touches are reported"}, &P::DisableReport},
    {{"hide-cursor", kOn, "no cursor is shown"}, &P::HideCursor},
};
// clang-format on

}  // namespace

std::span<const PctSetting> pct_settings() { return kSettings; }

int value_in(const PCTDevInfo& set, const PctSetting& setting) {
  return setting.field == nullptr ? static_cast<int>(set.Frequency) : set.*setting.field;
}

void change_value(PCTDevInfo& set, const PctSetting& setting, int value) {
  if (setting.field == nullptr) {
    set.Frequency = static_cast<unsigned>(value);
  } else {
    set.*setting.field = static_cast<unsigned char>(value);
  }
}

bool same_settings(const PCTDevInfo& one, const PCTDevInfo& other) {
  return std::ranges::all_of(kSettings, [&](const PctSetting& setting) {
    return value_in(one, setting) == value_in(other, setting);
  });
}

}  // namespace zelkoractl
