// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "pct_set.h"

#include "paths.h"
#include "pct_settings.h"
#include "signals_held.h"

namespace zelkoractl {
namespace {

// The modes of PCTGetAllParams(). Its mode 0 would do for "save, unless there is a saved set", but
// replaces the saved set each time.
constexpr signed char kFetchAndSave = 3;
constexpr signed char kFetch = 4;

// The modes of PCTSetAllParams().
constexpr signed char kSetBoth = 1;
constexpr signed char kRevert = 2;
constexpr signed char kSetCurrent = 6;

const std::string kCheckStore = std::string("check that ") + paths::kData +
                                " can be written and the panel is still plugged in, then try again";

// True when store and controller hold this set.
bool holds(const Panel& panel, const PCTDevInfo& set) {
  PCTDevInfo stored{};
  if (PCTGetAllParams(panel.index, &stored, kFetch) == 0 || !same_settings(stored, set)) {
    return false;
  }
  // What the controller is sent differs from the set in this: its own right click is always off.
  PCTDevInfo sent = stored;
  sent.DisableRight = 1;
  unsigned char config[8];
  if (OpenPCTDevice(panel.index) == 0) return false;
  const bool agrees = ChkPOSConfig(&sent, config) != 0;
  CloseDevice();
  return agrees;
}

bool set_current(int index, PCTDevInfo set) {
  return PCTSetAllParams(index, &set, kSetCurrent) != 0;
}

// It leaves a controller in command mode that knows one; holds() fetches the set, and so leads it
// out of there.
bool set_current_to_defaults(int index, PCTDevInfo) { return SetPCTDefaultFlash(index) != 0; }

void save_unless_saved(const Panel& panel, const PCTDevInfo& current) {
  if (saved_set(current)) return;
  PCTDevInfo set{};
  if (PCTGetAllParams(panel.index, &set, kFetchAndSave) != 0 && saved_set(set)) return;
  throw Failure(ExitCode::kFailed,
                "the settings to go back to cannot be saved; nothing was changed", panel.node,
                kCheckStore);
}

Outcome carry_out(const Panel& panel, const PCTDevInfo& before, const PCTDevInfo& wanted,
                  bool (*set)(int, PCTDevInfo)) {
  const SignalsHeld held;
  save_unless_saved(panel, before);
  if (set(panel.index, wanted) && holds(panel, wanted)) return Outcome::kChanged;
  set_current(panel.index, before);
  return holds(panel, before) ? Outcome::kPutBack : Outcome::kNotPutBack;
}

}  // namespace

PCTDevInfo fetch_set(const Panel& panel) {
  PCTDevInfo set{};
  if (PCTGetAllParams(panel.index, &set, kFetch) != 0) return set;
  throw cannot_open(panel);
}

std::optional<PCTDevInfo> saved_set(const PCTDevInfo& current) {
  PCTDevInfo saved = current;
  if (GetMyHidDeviceTempParames(&saved) == 0) return std::nullopt;
  return saved;
}

Outcome change_set(const Panel& panel, const PCTDevInfo& before, const PCTDevInfo& wanted) {
  return carry_out(panel, before, wanted, set_current);
}

PCTDevInfo default_set(const PCTDevInfo& before) {
  PCTDevInfo defaults = before;
  GetPCTParamDefault(&defaults);
  return defaults;
}

Outcome change_set_to_defaults(const Panel& panel, const PCTDevInfo& before) {
  return carry_out(panel, before, default_set(before), set_current_to_defaults);
}

void keep_set(const Panel& panel, const PCTDevInfo& current) {
  const SignalsHeld held;
  PCTDevInfo set = current;
  const bool done = PCTSetAllParams(panel.index, &set, kSetBoth) != 0;
  const std::optional<PCTDevInfo> saved = saved_set(current);
  if (done && saved && same_settings(*saved, current)) return;
  throw Failure(ExitCode::kFailed, "the settings could not be kept", panel.node, kCheckStore);
}

void revert_set(const Panel& panel, const PCTDevInfo& saved) {
  const SignalsHeld held;
  PCTDevInfo set = saved;
  if (PCTSetAllParams(panel.index, &set, kRevert) != 0 && holds(panel, saved)) return;
  throw Failure(ExitCode::kFailed, "the panel did not go back to its old settings", panel.node,
                kCheckStore);
}

}  // namespace zelkoractl
