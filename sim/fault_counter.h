// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Faults of a controller that strike a given number of times.
#pragma once

namespace zelkora::sim {

// Spoils one more command while the counter lasts.
inline bool strikes(unsigned& counter) {
  if (counter == 0) return false;
  --counter;
  return true;
}

}  // namespace zelkora::sim
