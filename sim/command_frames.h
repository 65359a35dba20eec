// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The commands of a host, put together again from the bytes of a serial line.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

namespace zelkora::sim {

class CommandFrames {
 public:
  // The frames that these bytes complete. Bytes between frames are dropped.
  std::vector<std::vector<uint8_t>> add(std::span<const uint8_t> bytes);

 private:
  std::vector<uint8_t> pending_;
};

}  // namespace zelkora::sim
