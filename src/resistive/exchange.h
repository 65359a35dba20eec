// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One command of a resistive controller: send, wait, read, judge, at most four times.
#pragma once

#include <cstdint>
#include <span>

namespace zelkora::resistive {

inline constexpr uint8_t kFrameStart = 0x01;
inline constexpr uint8_t kFrameEnd = 0x0D;

struct Reply {
  // Larger than any reply: on a serial port a failed read counts as 255 bytes, and the log prints
  // as many.
  uint8_t bytes[256]{};
  int count = 0;
};

using Frame = std::span<const uint8_t>;

// A row of the command table.
struct Command {
  unsigned reply_max;       // bytes read at most
  unsigned wait_usb_us;     // between send and read
  unsigned wait_serial_us;  // the same, on a serial port
  unsigned settle_us;       // after the read
  bool signed_count;        // a failed serial read counts as -1, not as 255
  bool (*accepts)(const Reply& reply, Frame sent);
  void (*log_attempt)(const Reply& reply);  // null: nothing is logged
};

// Carries the frame to the open device until a reply is accepted, and leaves the last reply in
// `reply`. False after the fourth attempt.
bool exchange(const Command& command, Frame frame, Reply& reply);

// The same where the reply itself is of no interest.
bool exchange(const Command& command, Frame frame);

}  // namespace zelkora::resistive
