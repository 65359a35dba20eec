// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "eeprom_commands.h"

#include <unistd.h>
#include <zelkora.h>

#include <algorithm>
#include <cstdio>

#include "eeprom_image.h"
#include "resistive_settings.h"
#include "signals_held.h"

namespace zelkoractl {
namespace {

// The EEPROM is one of 16-bit words, and the address of a setting counts words. The image ends
// before the words of most settings.
constexpr size_t kWord = 2;

Panel find_resistive_panel(const std::string& name) {
  Panel panel = find_panel(name);
  if (!panel.is_pct()) return panel;
  throw Failure(ExitCode::kFailed,
                call(panel) + " is projected-capacitive: it has no EEPROM to take an image of",
                panel.node, "name a resistive panel");
}

Answer answer_of(const Panel& panel, const std::string& file) {
  Answer answer;
  answer.document = {{"panel", panel.index}, {"node", panel.node}, {"file", file}};
  return answer;
}

std::string bytes_text(const EepromImage& image, size_t first, size_t count) {
  std::string text;
  for (size_t i = first; i < first + count; ++i) {
    char byte[4];
    std::snprintf(byte, sizeof byte, text.empty() ? "%02X" : " %02X", image[i]);
    text += byte;
  }
  return text;
}

std::string setting_at(size_t word) {
  const auto settings = resistive_settings();
  const auto found = std::ranges::find_if(settings, [word](const ResistiveSetting& setting) {
    return setting.address == static_cast<short>(word);
  });
  return found == settings.end() ? "" : std::string(found->name);
}

// A name beside the file for what the panel held. An earlier copy may be the only one of a panel
// that an interrupted restore left half written, so none is ever replaced.
std::string free_name(const std::string& file) {
  std::string name = file + ".before";
  for (int number = 2; access(name.c_str(), F_OK) == 0; ++number) {
    name = file + ".before" + std::to_string(number);
  }
  return name;
}

Failure not_taken(const Panel& panel, int page, bool put_back, const std::string& saved) {
  const std::string message =
      call(panel) + " did not take page " + std::to_string(page) + " of the image";
  if (put_back) {
    return {ExitCode::kFailed, message + "; its EEPROM holds what it held before", panel.node,
            "try again"};
  }
  return {ExitCode::kFailed,
          message + ", nor what it held before: its EEPROM is partly written; " + saved +
              " holds what it held",
          panel.node,
          "unplug the panel, plug it in again, then zelkoractl eeprom restore " +
              std::to_string(panel.index) + " " + saved};
}

bool write_back(const Panel& panel, const EepromImage& before) {
  try {
    return !write_image(panel, before, "putting back");
  } catch (const Failure&) {
    return false;  // it does not even open any more
  }
}

}  // namespace

Answer back_up_eeprom(const std::string& name, const std::string& file) {
  const Panel panel = find_resistive_panel(name);
  write_image_file(file, fetch_image(panel, "reading"));
  Answer answer = answer_of(panel, file);
  answer.text = "the EEPROM of " + call(panel) + " is in " + printable(file) + "\n";
  return answer;
}

Answer verify_eeprom(const std::string& name, const std::string& file) {
  const EepromImage wanted = read_image_file(file);
  const Panel panel = find_resistive_panel(name);
  const EepromImage held = fetch_image(panel, "comparing");
  const std::optional<size_t> address = first_difference(wanted, held);
  Answer answer = answer_of(panel, file);
  answer.document["same"] = !address.has_value();
  answer.document["first_difference"] = address ? Json(*address) : Json(nullptr);
  if (!address) {
    answer.text = call(panel) + " holds what " + printable(file) + " does\n";
    return answer;
  }
  answer.failure.emplace(ExitCode::kFailed,
                         call(panel) + " differs from " + file + " first at address " +
                             std::to_string(*address) + ": it holds " +
                             bytes_text(held, *address, 1) + " instead of " +
                             bytes_text(wanted, *address, 1),
                         panel.node, "zelkoractl eeprom diff shows all differences");
  return answer;
}

Answer diff_eeprom(const std::string& name, const std::string& file) {
  const EepromImage wanted = read_image_file(file);
  const Panel panel = find_resistive_panel(name);
  const EepromImage held = fetch_image(panel, "comparing");
  Answer answer = answer_of(panel, file);
  answer.document["differences"] = Json::array();
  std::vector<std::vector<std::string>> rows = {{"SETTING", "BYTES", "FILE", "PANEL"}};
  for (size_t first = 0; first < held.size(); first += kWord) {
    const std::string in_file = bytes_text(wanted, first, kWord);
    const std::string in_panel = bytes_text(held, first, kWord);
    if (in_file == in_panel) continue;
    const std::string setting = setting_at(first / kWord);
    const std::string bytes = std::to_string(first) + ".." + std::to_string(first + kWord - 1);
    rows.push_back({setting.empty() ? "-" : setting, bytes, in_file, in_panel});
    answer.document["differences"].push_back({{"setting", or_null(setting)},
                                              {"address", first},
                                              {"file", in_file},
                                              {"panel", in_panel}});
  }
  if (rows.size() > 1) answer.text = align(rows);
  return answer;
}

Answer restore_eeprom(const std::string& name, const std::string& file) {
  const EepromImage wanted = read_image_file(file);
  const Panel panel = find_resistive_panel(name);
  const SignalsHeld held;
  const EepromImage before = fetch_image(panel, "saving");
  const std::string saved = free_name(file);
  write_image_file(saved, before);
  Answer answer = answer_of(panel, file);
  answer.document["saved"] = saved;
  const std::optional<int> refused = write_image(panel, wanted, "writing");
  const bool put_back = refused && write_back(panel, before);
  answer.document["outcome"] = !refused ? "changed" : put_back ? "put back" : "not put back";
  if (refused) {
    answer.failure = not_taken(panel, *refused, put_back, saved);
    answer.document["page"] = *refused;
  } else {
    answer.text = call(panel) + " holds what " + printable(file) + " does\n";
  }
  answer.hints.push_back("what the panel held before is in " + saved);
  return answer;
}

}  // namespace zelkoractl
