// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Bytes of frames and reports: reading and writing them without surprises of sign or order.
#pragma once

#include <cstdint>
#include <span>

namespace zelkora {

// Writes the low bits of `value` as upper-case hex text, the way controllers read numbers.
inline void put_hex(std::span<uint8_t> out, unsigned value) {
  for (size_t i = out.size(); i-- > 0; value >>= 4) {
    out[i] = static_cast<uint8_t>("0123456789ABCDEF"[value & 0xF]);
  }
}

inline unsigned get_le16(const uint8_t* bytes) { return bytes[0] | unsigned{bytes[1]} << 8; }

inline uint32_t get_le32(const uint8_t* bytes) {
  return get_le16(bytes) | uint32_t{get_le16(bytes + 2)} << 16;
}

inline void put_le16(uint8_t* bytes, unsigned value) {
  bytes[0] = static_cast<uint8_t>(value);
  bytes[1] = static_cast<uint8_t>(value >> 8);
}

inline unsigned get_be16(const uint8_t* bytes) { return unsigned{bytes[0]} << 8 | bytes[1]; }

inline void put_be16(uint8_t* bytes, unsigned value) {
  bytes[0] = static_cast<uint8_t>(value >> 8);
  bytes[1] = static_cast<uint8_t>(value);
}

// A byte as a signed number, for the places that print or compare it so.
inline int as_signed(uint8_t byte) { return static_cast<int8_t>(byte); }

}  // namespace zelkora
