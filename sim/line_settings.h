// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// How a serial line is set up: flags as in <termios.h>.
#pragma once

#include <cstdint>
#include <string>

namespace zelkora::sim {

struct LineSettings {
  uint32_t input = 0;
  uint32_t output = 0;
  uint32_t control = 0;
  uint32_t local = 0;
  uint8_t minimum = 0;  // VMIN
  uint8_t time = 0;     // VTIME

  bool operator==(const LineSettings&) const = default;
};

// "iflag=0 oflag=0 cflag=8BD lflag=0 min=1 time=0", the flags hexadecimal.
std::string describe(const LineSettings& settings);

}  // namespace zelkora::sim
