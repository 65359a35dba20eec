// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// USB/IP messages as they cross the connection to the kernel: a 48-byte header, then the data of
// the transfer. All numbers are big-endian but those inside the setup packet.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "usb_device.h"

namespace zelkora::sim::usbip {

class BigEndian32 {
 public:
  BigEndian32() = default;
  BigEndian32(uint32_t value)
      : bytes_{static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
               static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)} {}
  operator uint32_t() const {
    return uint32_t{bytes_[0]} << 24 | uint32_t{bytes_[1]} << 16 | uint32_t{bytes_[2]} << 8 |
           bytes_[3];
  }

 private:
  std::array<uint8_t, 4> bytes_{};
};

inline constexpr uint32_t kSubmit = 1;
inline constexpr uint32_t kUnlink = 2;
inline constexpr uint32_t kSubmitReply = 3;
inline constexpr uint32_t kUnlinkReply = 4;

inline constexpr uint32_t kDirectionOut = 0;
inline constexpr uint32_t kDirectionIn = 1;

// Opens every message.
struct BasicHeader {
  BigEndian32 command;
  BigEndian32 sequence;
  BigEndian32 device;
  BigEndian32 direction;
  BigEndian32 endpoint;
};
static_assert(sizeof(BasicHeader) == 20);

// A transfer the kernel asks for; an outgoing one is followed by its data.
struct Submit {
  BasicHeader basic;
  BigEndian32 transfer_flags;
  BigEndian32 length;
  BigEndian32 start_frame;
  BigEndian32 packets;
  BigEndian32 interval;
  SetupPacket setup;
};
static_assert(sizeof(Submit) == 48);
static_assert(offsetof(Submit, length) == 24);
static_assert(offsetof(Submit, setup) == 40);

// How it ended: status 0 or -errno; an incoming one is followed by its data.
struct SubmitReply {
  BasicHeader basic;
  BigEndian32 status;
  BigEndian32 actual_length;
  BigEndian32 start_frame;
  BigEndian32 packets;
  BigEndian32 errors;
  std::array<uint8_t, 8> padding{};
};
static_assert(sizeof(SubmitReply) == 48);
static_assert(offsetof(SubmitReply, status) == 20);

// The kernel no longer wants the transfer of that sequence number.
struct Unlink {
  BasicHeader basic;
  BigEndian32 sequence;
  std::array<uint8_t, 24> padding{};
};
static_assert(sizeof(Unlink) == 48);

struct UnlinkReply {
  BasicHeader basic;
  BigEndian32 status;
  std::array<uint8_t, 24> padding{};
};
static_assert(sizeof(UnlinkReply) == 48);

}  // namespace zelkora::sim::usbip
