// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <cstdint>
#include <cstring>

#include "core/log.h"
#include "zelkora.h"

namespace {

constexpr unsigned kReplyWaitUs = 50'000;
constexpr unsigned kCoordinateReport = 10;  // bytes
constexpr unsigned kAcknowledge = 3;        // bytes
constexpr int kAttempts = 10;
constexpr int kStreamingAttempts = 50;

enum class Verdict { kAnswered, kStreaming, kNothing };

Verdict judge(const uint8_t* reply, unsigned length) {
  if (length == kCoordinateReport) {
    const bool coordinates = reply[1] == 0x98 || reply[1] == 0xD8;
    return coordinates ? Verdict::kStreaming : Verdict::kAnswered;
  }
  const uint8_t expected = MyConfig[ZELKORA_CONFIG_NEW_PRODUCT_IDS] != 0 ? '0' : '1';
  const bool acknowledged =
      length == kAcknowledge && reply[0] == 0x01 && reply[1] == expected && reply[2] == 0x0D;
  return acknowledged ? Verdict::kAnswered : Verdict::kNothing;
}

}  // namespace

int ChkDevExist(void) {
  constexpr uint8_t kProbe[] = {0x01, 'Z', 'Z', 0x0D};
  for (int attempt = 1;; ++attempt) {
    static_cast<void>(!write(fd, kProbe, sizeof kProbe));
    usleep(kReplyWaitUs);
    uint8_t reply[64]{};
    // Kept in 8 bits: a failed read counts as 255.
    const auto length = static_cast<uint8_t>(read(fd, reply, kCoordinateReport));
    DebugMsg(zelkora::kTrace, "%d:Len=%d 0x%02x  0x%02x  0x%02x\n", attempt, length, reply[0],
             reply[1], reply[2]);
    const Verdict verdict = judge(reply, length);
    if (verdict == Verdict::kAnswered) return 1;
    if (attempt >= (verdict == Verdict::kStreaming ? kStreamingAttempts : kAttempts)) return 0;
  }
}
