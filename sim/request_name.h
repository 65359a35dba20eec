// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Requests in words. hiddev and hidraw use the same numbers for different requests, so the kind of
// node is part of the question.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace zelkora::sim {

// Requests with a length in their number are told apart by what is left without it.
constexpr unsigned long without_size(unsigned long request) {
  constexpr unsigned long kSizeBits = 0x3FFF0000UL;
  return request & ~kSizeBits;
}

std::string hiddev_request(unsigned long request, const void* argument);
std::string hidraw_request(unsigned long request);
std::string event_request(unsigned long request);
std::string unknown_request(unsigned long request);

// "04 01 4F"
std::string hex_bytes(std::span<const uint8_t> bytes);

}  // namespace zelkora::sim
