// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The USB product ids that tell the mode of an 8753 controller.
#pragma once

namespace zelkora::pct {

inline constexpr unsigned kHybridProduct = 0x9968;
inline constexpr unsigned kMouseProduct = 0x9969;

// A panel goes by one of these only while it is in the mode.
inline constexpr bool is_mode_product(unsigned pid) {
  return pid == kHybridProduct || pid == kMouseProduct;
}

// The product id of a panel as a digitizer, given one that it is known by.
unsigned digitizer_product(unsigned vid, unsigned pid);

}  // namespace zelkora::pct
