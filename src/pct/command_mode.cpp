// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Device modes: command mode, in which the 8752 family takes commands, and normal mode, in which
// it reports touches.
#include <unistd.h>

#include <cstdint>

#include "core/log.h"
#include "layout.h"
#include "zelkora.h"

using zelkora::kTrace;
using namespace zelkora::pct;

namespace {

constexpr unsigned char kCommandMode = 0x90;
constexpr unsigned char kNormalMode = 0x01;
constexpr int kRepeats = 20;
constexpr unsigned kModeWaitUs = 5'000;
constexpr unsigned kReplyWaitUs = 10'000;
constexpr size_t kModeReply = 3;

// The repeats left: 20 when the first attempt succeeds, 0 when the 21st does, -1 when none does.
// Callers test for 0 alone, so success at the very last counts as failure and none at all as
// success; panels in the field depend on neither, hosts on both.
int switch_mode(unsigned char mode) {
  int left = kRepeats;
  for (;;) {
    set_device_mode(mode);
    usleep(kModeWaitUs);
    if (get_device_mode(mode) != 0) return left;
    if (left-- <= 0) return left;
  }
}

}  // namespace

void set_device_mode(unsigned char mode) {
  const uint8_t frame[11] = {kCommandReport, 0x91, 0x02, 0x00, 0x82, mode};
  // The brace is part of the message.
  if (SendDataNew(frame, sizeof frame) == 0) DebugMsg(kTrace, "{ failed err:000\n");
}

int get_device_mode(unsigned char mode) {
  constexpr uint8_t kFrame[8] = {kQueryReport, 0x73, 0x0C};
  if (SendDataNew(kFrame, sizeof kFrame) == 0) {
    DebugMsg(kTrace, "failed err:000\n");
    return 0;
  }
  usleep(kReplyWaitUs);
  uint8_t reply[kReportSize]{};
  if (ReceiveDataNew(kReplyReport, reply, kReportSize) == 0) return 0;
  const bool match = reply[kModeReply] == mode;
  if (match) {
    DebugMsg(kTrace, "get_device_mode 0x%x:0x%x---match\n", mode, reply[kModeReply]);
  } else {
    DebugMsg(kTrace, "get_device_mode 0x%x:0x%x----not match\n", mode, reply[kModeReply]);
  }
  return match ? 1 : 0;
}

int enter_cmd_mode(void) {
  DebugMsg(kTrace, "enter_cmd_mode\n");
  return switch_mode(kCommandMode);
}

int leave_cmd_mode(void) {
  DebugMsg(kTrace, "leave_cmd_mode\n");
  return switch_mode(kNormalMode);
}
