// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "line_settings.h"

#include <array>
#include <cstdio>

namespace zelkora::sim {

std::string describe(const LineSettings& settings) {
  std::array<char, 96> text{};
  std::snprintf(text.data(), text.size(), "iflag=%X oflag=%X cflag=%X lflag=%X min=%u time=%u",
                settings.input, settings.output, settings.control, settings.local, settings.minimum,
                settings.time);
  return text.data();
}

}  // namespace zelkora::sim
