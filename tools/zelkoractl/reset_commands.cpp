// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands that reset a panel. A projected-capacitive one leaves the bus then and comes back,
// maybe under another node, number and product id.
#include <unistd.h>
#include <zelkora.h>

#include <algorithm>

#include "commands.h"
#include "panels.h"
#include "signals_held.h"

namespace zelkoractl {
namespace {

constexpr unsigned kLeaveUs = 1'000'000;  // until it has left, so that it is not found once more
constexpr unsigned kLookAgainUs = 500'000;
constexpr int kLooks = 20;

enum PosMode { kDigitizer = 1, kMouse = 2, kHybrid = 3, kOtherHybrid = 4 };

int parse_mode(const std::string& name) {
  for (const int mode : {kDigitizer, kMouse, kHybrid}) {
    if (name == pos_mode_name(mode)) return mode;
  }
  throw Failure(ExitCode::kUsage, "there is no mode \"" + name + "\"", "",
                "the modes are digitizer, mouse, hybrid");
}

// The panel as it is now.
Panel find_again(const Panel& panel, bool was_reset) {
  if (was_reset) usleep(kLeaveUs);
  for (int look = 0; look < kLooks; ++look) {
    const std::vector<Panel> panels = find_panels();
    const auto found = std::ranges::find(panels, panel.serial_number, &Panel::serial_number);
    if (found != panels.end()) return *found;
    usleep(kLookAgainUs);
  }
  throw Failure(ExitCode::kFailed, call(panel) + " is gone and has not come back", panel.node,
                "give it a moment, then look for it with zelkoractl list");
}

Answer reset_answer(const Panel& before, const Panel& now, bool was_reset) {
  const std::string mode(pos_mode_name(now.pos_mode));
  Answer answer;
  answer.document = {{"panel", now.index},
                     {"node", now.node},
                     {"mode", or_null(mode)},
                     {"was_reset", was_reset},
                     {"usb_id", or_null(now.usb_id)},
                     {"usb_id_before", or_null(before.usb_id)}};
  std::vector<std::vector<std::string>> rows = {{"panel", std::to_string(now.index)},
                                                {"node", printable(now.node)}};
  if (!mode.empty()) rows.push_back({"mode", mode});
  rows.push_back({"reset", was_reset ? "yes" : "no"});
  const std::string former = now.usb_id == before.usb_id ? "" : ", was " + before.usb_id;
  if (!now.usb_id.empty()) rows.push_back({"usb id", now.usb_id + former});
  answer.text = align(rows);
  return answer;
}

struct ModeChange {
  int wanted;
  bool needs_reset;
};

// As SetDevtoDigitizer() and its kin do, which do not tell whether they reset the panel.
ModeChange change_mode(const Panel& panel, int mode) {
  const SignalsHeld held;
  if (OpenPCTDevice(panel.index) == 0) throw cannot_open(panel);
  const int wanted = mode == kDigitizer && isHybrid != 0 ? kHybrid : mode;
  const bool needs_reset = SetCurrPOSMode(panel.index, wanted) != 0;
  if (needs_reset) ResetPCTController();
  CloseDevice();
  return {wanted, needs_reset};
}

bool is_mode(int pos_mode, int wanted) {
  return pos_mode == wanted || (wanted == kHybrid && pos_mode == kOtherHybrid);
}

void reset_resistive(const Panel& panel) {
  const OpenPanel open(panel);
  if (ResetController() != 0) return;
  throw Failure(ExitCode::kFailed, call(panel) + " did not confirm the reset", panel.node,
                "try again, or unplug the panel and plug it in again");
}

}  // namespace

Answer set_mode(const std::string& name, const std::string& mode_name) {
  const int mode = parse_mode(mode_name);
  const Panel panel = find_panel(name);
  if (!panel.is_pct()) {
    throw Failure(ExitCode::kFailed, call(panel) + " is resistive: it has no modes", panel.node,
                  "see its setting hid-mode");
  }
  const auto [wanted, needs_reset] = change_mode(panel, mode);
  const Panel now = find_again(panel, needs_reset);
  Answer answer = reset_answer(panel, now, needs_reset);
  if (!is_mode(now.pos_mode, wanted)) {
    answer.failure.emplace(ExitCode::kFailed, call(now) + " did not take the mode", now.node,
                           "try again, or unplug the panel and plug it in again first");
  } else if (wanted != mode) {
    answer.hints.emplace_back(
        "in hybrid mode, which its flag file switches on, a digitizer becomes a hybrid");
  }
  return answer;
}

Answer reset_panel(const std::string& name) {
  const Panel panel = find_panel(name);
  if (!panel.is_pct()) {
    reset_resistive(panel);
    return reset_answer(panel, panel, true);
  }
  if (PCT_ResetDevice(panel.index) == 0) throw cannot_open(panel);
  return reset_answer(panel, find_again(panel, true), true);
}

}  // namespace zelkoractl
