// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The parameter sets of a projected-capacitive panel: the current one, and a saved one to go back
// to. The library keeps both in its store and sends the current one to the controller, now and
// whenever it finds the panel.
//
// The first change saves the set there was; further ones leave the saved set alone, so that going
// back undoes all of them. Every change is verified, in the store and in the controller; one that
// fails is put back.
#pragma once

#include <zelkora.h>

#include <optional>

#include "outcome.h"
#include "panels.h"

namespace zelkoractl {

// The current set. Throws when it cannot be had.
PCTDevInfo fetch_set(const Panel& panel);

// The saved set of the panel that `current` belongs to, or nothing.
std::optional<PCTDevInfo> saved_set(const PCTDevInfo& current);

// Makes `wanted` the current set instead of `before`. Throws, with nothing changed, when there would
// be no way back.
Outcome change_set(const Panel& panel, const PCTDevInfo& before, const PCTDevInfo& wanted);

// What change_set_to_defaults() will make of a set: the values of the defaults file.
PCTDevInfo default_set(const PCTDevInfo& before);

// The same as change_set() to default_set().
Outcome change_set_to_defaults(const Panel& panel, const PCTDevInfo& before);

// Makes the current set the saved one, too. Throws when that fails.
void keep_set(const Panel& panel, const PCTDevInfo& current);

// Makes the saved set the current one; none is saved afterwards. Throws when that fails.
void revert_set(const Panel& panel, const PCTDevInfo& saved);

}  // namespace zelkoractl
