// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#pragma once

#include "pct_bench.h"

namespace zelkora::test {

// A reply with the data, which are flash or the POS configuration, where the family has them, and
// other bytes around.
inline Bytes data_reply(const Way& way, const Bytes& data) {
  Bytes reply = joined_bytes(Bytes(way.is_8752() ? 3 : 7, 0xEE), data);
  reply.resize(63, 0xDD);
  return reply;
}

}  // namespace zelkora::test
