// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The screens that a panel can map to.
#include <zelkora.h>

#include <cstdlib>

#include "commands.h"

namespace zelkoractl {
namespace {

std::string area_text(const ScreenInfoEntry& screen) {
  return std::to_string(screen.Width) + "x" + std::to_string(screen.Height) + "+" +
         std::to_string(screen.X) + "+" + std::to_string(screen.Y);
}

std::string why_there_are_none() {
  const char* display = std::getenv("DISPLAY");
  if (display == nullptr || *display == '\0') {
    return "no screens: DISPLAY is not set, so there is no X display to ask";
  }
  return "no screens: the X display " + std::string(display) +
         " does not let itself be opened, or none of its screens is lit";
}

}  // namespace

Answer list_screens() {
  const int count = get_screen();
  Answer answer;
  answer.document["screens"] = Json::array();
  // Numbers are those of the setting "screen".
  std::vector<std::vector<std::string>> rows = {{"SCREEN", "OUTPUT", "AREA"}};
  for (int number = 0; number < count; ++number) {
    const ScreenInfoEntry& screen = screen_info[number];
    rows.push_back({std::to_string(number), printable(screen.OutputName), area_text(screen)});
    answer.document["screens"].push_back({{"number", number},
                                          {"output", screen.OutputName},
                                          {"width", screen.Width},
                                          {"height", screen.Height},
                                          {"x", screen.X},
                                          {"y", screen.Y}});
  }
  if (count == 0) {
    answer.hints.push_back(why_there_are_none());
  } else {
    answer.text = align(rows);
  }
  return answer;
}

}  // namespace zelkoractl
