// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "exchange.h"

#include <unistd.h>

#include "zelkora.h"

namespace zelkora::resistive {
namespace {

constexpr int kAttempts = 4;

void wait_us(unsigned microseconds) {
  if (microseconds != 0) usleep(microseconds);
}

// One attempt. One whose send failed still waits and reads: the reply alone decides. For any other
// kind of device nothing is sent, and the reply stays empty, which no command accepts.
void carry(const Command& command, Frame frame, Reply& reply) {
  reply = {};
  switch (device_type) {
    case ZELKORA_TYPE_RESISTIVE_USB:
      SendData(frame.data(), static_cast<unsigned>(frame.size()));
      wait_us(command.wait_usb_us);
      reply.count = static_cast<int>(ReceiveData(reply.bytes, command.reply_max));
      break;
    case ZELKORA_TYPE_RESISTIVE_SERIAL: {
      static_cast<void>(!write(fd, frame.data(), frame.size()));
      wait_us(command.wait_serial_us);
      const ssize_t count = read(fd, reply.bytes, command.reply_max);
      reply.count = command.signed_count ? static_cast<int>(count) : static_cast<uint8_t>(count);
      break;
    }
    default:
      return;
  }
  wait_us(command.settle_us);
}

}  // namespace

bool exchange(const Command& command, Frame frame, Reply& reply) {
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    carry(command, frame, reply);
    if (command.log_attempt != nullptr) command.log_attempt(reply);
    if (command.accepts(reply, frame)) return true;
  }
  return false;
}

bool exchange(const Command& command, Frame frame) {
  Reply reply;
  return exchange(command, frame, reply);
}

}  // namespace zelkora::resistive
