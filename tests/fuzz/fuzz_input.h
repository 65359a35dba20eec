// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The bytes of one input, taken off from the front. Behind its end there are zeros and empty texts.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace zelkora::fuzz {

class FuzzInput {
 public:
  FuzzInput(const uint8_t* data, size_t size) : rest_(data, size) {}

  bool done() const { return rest_.empty(); }
  uint8_t byte() {
    const std::vector<uint8_t> one = bytes(1);
    return one.empty() ? 0 : one[0];
  }
  // High byte first.
  uint16_t word() {
    const unsigned high = byte();
    return static_cast<uint16_t>(high << 8 | byte());
  }
  // Fewer at the end of the input.
  std::vector<uint8_t> bytes(size_t count) {
    const std::span<const uint8_t> taken = rest_.first(std::min(count, rest_.size()));
    rest_ = rest_.subspan(taken.size());
    return {taken.begin(), taken.end()};
  }
  // A text up to a line feed, which is left out.
  std::string line() {
    const auto end = std::ranges::find(rest_, '\n');
    const std::vector<uint8_t> taken = bytes(static_cast<size_t>(end - rest_.begin()));
    bytes(1);
    return {taken.begin(), taken.end()};
  }
  // A file: everything up to a line "====", or to the end.
  std::string file() {
    constexpr std::string_view kEnd = "====\n";
    const std::string_view text(reinterpret_cast<const char*>(rest_.data()), rest_.size());
    const std::vector<uint8_t> taken = bytes(text.find(kEnd));
    bytes(kEnd.size());
    return {taken.begin(), taken.end()};
  }

 private:
  std::span<const uint8_t> rest_;
};

}  // namespace zelkora::fuzz
