// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "resistive_settings.h"

#include <type_traits>

namespace zelkoractl {
namespace {

// Over USB SetBackLightDuty() reports failure whatever the controller did, so only the value read
// back tells.
int set_backlight(unsigned int duty) {
  SetBackLightDuty(static_cast<int>(duty));
  return ReadEEPValue(ZELKORA_EEP_BACKLIGHT_DUTY);
}

template <auto Field>
int field_of(const ResDevInfo& record) {
  return static_cast<int>(record.*Field);
}

template <auto Field>
void put_field(ResDevInfo& record, int stored) {
  record.*Field = static_cast<std::remove_reference_t<decltype(record.*Field)>>(stored);
}

constexpr short kNone = -1;
constexpr Values kEdge{{}, -32768, 32767, true};
constexpr Values kByte{{}, 0, 255};
constexpr Values kOn{kOnOff};
constexpr Values kOff{kOffOn};

using R = ResDevInfo;

// The range of a mode whose values the controller alone knows is what its field can hold.
// clang-format off
constexpr ResistiveSetting kSettings[] = {
    {{"beep", kOn, "beep when touched"},
     SetBeepOn, ZELKORA_EEP_BEEP_ON, kNone, field_of<&R::BeepOn>,
     put_field<&R::BeepOn>},
    {{"play-method", {{}, 0, 2}, "when the beep plays"},
     SetPlayMethod, ZELKORA_EEP_PLAY_METHOD, kNone, field_of<&R::PlayMethod>,
     put_field<&R::PlayMethod>},
    {{"frequency", {{}, 500, 3000}, "beep frequency, in Hz"},
     SetFrequency, ZELKORA_EEP_FREQUENCY, kNone, field_of<&R::Frequency>,
     put_field<&R::Frequency>},
    {{"duration", {{}, 5, 50}, "beep length, in the controller's units"},
     SetDuration, ZELKORA_EEP_DURATION, kNone, field_of<&R::Duration>,
     put_field<&R::Duration>},
    {{"screen", {{}, 0, 4}, "screen the panel maps to; 0 is the first"},
     SetScreenNo, ZELKORA_EEP_SCREEN_NUMBER, kNone, field_of<&R::ScreenNumber>,
     put_field<&R::ScreenNumber>},
    {{"right-click", kOff, "a long touch is a right click"},
     SetAutoRightClick, ZELKORA_EEP_DISABLE_RIGHT, kNone, field_of<&R::DisableRight>,
     put_field<&R::DisableRight>},
    {{"right-time", {{}, 1, 255}, "touch length that makes a right click"},
     SetRightCount, ZELKORA_EEP_RIGHT_TIME, kNone, field_of<&R::RightTime>,
     put_field<&R::RightTime>},
    {{"rotation", {{}, 0, 65535}, "rotation code"},
     SetRotation, ZELKORA_EEP_ROTATION, kNone, nullptr, nullptr},
    {{"hid-mode", kByte, "2 mouse, 3 digitizer; switches automatic HID off"},
     SetHidMode, ZELKORA_EEP_HID_MODE, ZELKORA_EEP_AUTO_HID, field_of<&R::HidMode>,
     put_field<&R::HidMode>},
    {{"report-mode", kByte, "report mode code"},
     SetReportMode, ZELKORA_EEP_REPORT_MODE, kNone, field_of<&R::ReportMode>,
     put_field<&R::ReportMode>},
    {{"first-move", kByte, "first-move code"},
     SetFirstMove, ZELKORA_EEP_FIRST_MOVE, kNone, field_of<&R::FirstMove>,
     put_field<&R::FirstMove>},
    {{"edge-right", kEdge, "correction at the right edge"},
     SetEdgeRight, ZELKORA_EEP_EDGE_RIGHT, kNone, field_of<&R::EdgeRight>,
     put_field<&R::EdgeRight>},
    {{"edge-left", kEdge, "correction at the left edge"},
     SetEdgeLeft, ZELKORA_EEP_EDGE_LEFT, kNone, field_of<&R::EdgeLeft>,
     put_field<&R::EdgeLeft>},
    {{"edge-down", kEdge, "correction at the lower edge"},
     SetEdgeDown, ZELKORA_EEP_EDGE_DOWN, kNone, field_of<&R::EdgeDown>,
     put_field<&R::EdgeDown>},
    {{"edge-up", kEdge, "correction at the upper edge"},
     SetEdgeUp, ZELKORA_EEP_EDGE_UP, kNone, field_of<&R::EdgeUp>,
     put_field<&R::EdgeUp>},
    {{"backlight", kByte, "backlight duty"},
     set_backlight, ZELKORA_EEP_BACKLIGHT_DUTY, kNone, nullptr, nullptr},
};
// clang-format on

}  // namespace

std::span<const ResistiveSetting> resistive_settings() { return kSettings; }

}  // namespace zelkoractl
