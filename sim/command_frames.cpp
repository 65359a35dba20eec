// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "command_frames.h"

#include <algorithm>
#include <string_view>

namespace zelkora::sim {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kStart = 0x01;
constexpr uint8_t kEnd = 0x0D;

struct Length {
  std::string_view letters;
  size_t bytes;  // from the start byte to the end byte
};

// The commands that carry numbers as bytes, so that a byte like the end byte may not end them.
constexpr Length kLengths[] = {{"DU", 5}, {"ER", 5}, {"EW", 37}};

// How long the frame that begins here is; 0 while that is open.
size_t frame_length(std::span<const uint8_t> bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  if (text.size() >= 3) {
    const auto* row = std::ranges::find(kLengths, text.substr(1, 2), &Length::letters);
    if (row != std::end(kLengths)) return text.size() >= row->bytes ? row->bytes : 0;
  }
  return text.find(static_cast<char>(kEnd)) + 1;  // none: npos + 1 is 0
}

}  // namespace

std::vector<Bytes> CommandFrames::add(std::span<const uint8_t> bytes) {
  pending_.insert(pending_.end(), bytes.begin(), bytes.end());
  std::vector<Bytes> frames;
  for (;;) {
    pending_.erase(pending_.begin(), std::ranges::find(pending_, kStart));
    const auto end = pending_.begin() + static_cast<ptrdiff_t>(frame_length(pending_));
    if (end == pending_.begin()) return frames;
    frames.emplace_back(pending_.begin(), end);
    pending_.erase(pending_.begin(), end);
  }
}

}  // namespace zelkora::sim
