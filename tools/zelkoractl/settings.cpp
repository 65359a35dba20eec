// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "settings.h"

#include <zelkora.h>

#include <algorithm>
#include <charconv>

namespace zelkoractl {
namespace {

// Over USB SetBackLightDuty() reports failure whatever the controller did, so only the value read
// back tells.
int set_backlight(unsigned int duty) {
  SetBackLightDuty(static_cast<int>(duty));
  return ReadEEPValue(ZELKORA_EEP_BACKLIGHT_DUTY);
}

using enum ValueKind;

constexpr short kNone = -1;
constexpr int kEdgeLowest = -32768;
constexpr int kEdgeHighest = 32767;

// The range of a mode whose values the controller alone knows is what its field can hold.
// clang-format off
constexpr Setting kSettings[] = {
    {"beep", SetBeepOn, ZELKORA_EEP_BEEP_ON, kNone, kOnOff, 0, 1,
     "beep when touched"},
    {"play-method", SetPlayMethod, ZELKORA_EEP_PLAY_METHOD, kNone, kNumber, 0, 2,
     "when the beep plays"},
    {"frequency", SetFrequency, ZELKORA_EEP_FREQUENCY, kNone, kNumber, 500, 3000,
     "beep frequency, in Hz"},
    {"duration", SetDuration, ZELKORA_EEP_DURATION, kNone, kNumber, 5, 50,
     "beep length, in the controller's units"},
    {"screen", SetScreenNo, ZELKORA_EEP_SCREEN_NUMBER, kNone, kNumber, 0, 4,
     "screen the panel maps to; 0 is the first"},
    {"right-click", SetAutoRightClick, ZELKORA_EEP_DISABLE_RIGHT, kNone, kOffOn, 0, 1,
     "a long touch is a right click"},
    {"right-time", SetRightCount, ZELKORA_EEP_RIGHT_TIME, kNone, kNumber, 1, 255,
     "touch length that makes a right click"},
    {"rotation", SetRotation, ZELKORA_EEP_ROTATION, kNone, kNumber, 0, 65535,
     "rotation code"},
    {"hid-mode", SetHidMode, ZELKORA_EEP_HID_MODE, ZELKORA_EEP_AUTO_HID, kNumber, 0, 255,
     "2 mouse, 3 digitizer; switches automatic HID off"},
    {"report-mode", SetReportMode, ZELKORA_EEP_REPORT_MODE, kNone, kNumber, 0, 255,
     "report mode code"},
    {"first-move", SetFirstMove, ZELKORA_EEP_FIRST_MOVE, kNone, kNumber, 0, 255,
     "first-move code"},
    {"edge-right", SetEdgeRight, ZELKORA_EEP_EDGE_RIGHT, kNone, kSigned, kEdgeLowest, kEdgeHighest,
     "correction at the right edge"},
    {"edge-left", SetEdgeLeft, ZELKORA_EEP_EDGE_LEFT, kNone, kSigned, kEdgeLowest, kEdgeHighest,
     "correction at the left edge"},
    {"edge-down", SetEdgeDown, ZELKORA_EEP_EDGE_DOWN, kNone, kSigned, kEdgeLowest, kEdgeHighest,
     "correction at the lower edge"},
    {"edge-up", SetEdgeUp, ZELKORA_EEP_EDGE_UP, kNone, kSigned, kEdgeLowest, kEdgeHighest,
     "correction at the upper edge"},
    {"backlight", set_backlight, ZELKORA_EEP_BACKLIGHT_DUTY, kNone, kNumber, 0, 255,
     "backlight duty"},
};
// clang-format on

}  // namespace

std::span<const Setting> all_settings() { return kSettings; }

const Setting* find_setting(std::string_view name) {
  const auto* found = std::ranges::find(kSettings, name, &Setting::name);
  return found == std::end(kSettings) ? nullptr : found;
}

std::string setting_names() {
  std::string names;
  for (const Setting& setting : kSettings) {
    names += (names.empty() ? "" : ", ") + std::string(setting.name);
  }
  return names;
}

bool is_switch(const Setting& setting) { return setting.kind == kOnOff || setting.kind == kOffOn; }

int as_number(const Setting& setting, int stored) {
  return setting.kind == kSigned ? static_cast<int16_t>(stored) : stored;
}

std::string range_text(const Setting& setting) {
  if (is_switch(setting)) return "on, off";
  return std::to_string(setting.lowest) + ".." + std::to_string(setting.highest);
}

bool in_range(const Setting& setting, int stored) {
  const int number = as_number(setting, stored);
  return number >= setting.lowest && number <= setting.highest;
}

std::string value_text(const Setting& setting, int stored) {
  if (!is_switch(setting) || !in_range(setting, stored)) {
    return std::to_string(as_number(setting, stored));
  }
  const int on = setting.kind == kOnOff ? 1 : 0;
  return stored == on ? "on" : "off";
}

std::optional<int> parse_value(const Setting& setting, std::string_view text) {
  if (is_switch(setting)) {
    if (text != "on" && text != "off") return std::nullopt;
    return (text == "on") == (setting.kind == kOnOff) ? 1 : 0;
  }
  int value = 0;
  const char* const text_end = text.data() + text.size();
  const auto [end, error] = std::from_chars(text.data(), text_end, value);
  if (error != std::errc() || end != text_end) return std::nullopt;
  if (value < setting.lowest || value > setting.highest) return std::nullopt;
  return static_cast<uint16_t>(value);
}

}  // namespace zelkoractl
