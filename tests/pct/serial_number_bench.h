// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench whose controller keeps the identity block that is written to it.
#pragma once

#include "data_reply.h"

namespace zelkora::test {

inline constexpr int kPanel = 1;  // the controller's entry

// The block of vendor 2575, product 8753, revision 564; its last bytes are of no meaning.
inline const Bytes kBlock = {0x25, 0x75, 0x87, 0x53, 0x02, 0x34, 0x66, 0x67, 0x68, 0x69, 0x6A,
                             0x6B, 0xA0, 0xA1, 0xA2, 0xA3, 0xA4, 0xA5, 0x0A, 0xA7, 0x20, 0x21,
                             0x22, 0x23, 0x24, 0x25, 0x26, 0x27, 0x28, 0x29, 0x2A, 0x2B};

class SerialNumberBench : public PctWays {
 protected:
  void SetUp() override {
    PctWays::SetUp();
    set_entry(GetParam(), kPanel);
    entry.VID = 0x2575;
    entry.PID = 0x8755;
    entry.FWRev = 0x0234;
    for (size_t i = 0; i < sizeof entry.SN; ++i) entry.SN[i] = static_cast<uint8_t>(0xB0 + i);
    device.on_command = [this](const Bytes& payload) {
      if (payload[0] == 0xA8) keep(payload);
    };
  }

  // What the controller answers when it keeps this plain block.
  Bytes reply_of(const Bytes& plain) const { return data_reply(GetParam(), encoded_block(plain)); }

  Bytes serial_number() const { return {entry.SN, entry.SN + sizeof entry.SN}; }

  // --- the trace ---
  static Lines reading(const Bytes& reply) {
    return joined({sent({0x06, 0xA1, 0x22}), {"usleep 100000"}, received(7, reply)});
  }
  Lines writing(const Bytes& plain) const {
    const Bytes command = joined_bytes({0x08, 0xA8, 0x22}, Bytes(is_8752() ? 1 : 5, 0));
    return sent(padded(joined_bytes(command, head(encoded_block(plain), 32)), 64));
  }

  TouchDeviceEntry& entry = TouchDevice[kPanel];
  std::vector<Bytes> written_blocks;  // plain
  bool loses_blocks = false;          // what was written cannot be read back

 private:
  void keep(const Bytes& payload) {
    const auto begin = payload.begin() + (is_8752() ? 3 : 7);
    Bytes plain(begin, begin + 32);
    for (uint8_t& byte : plain) byte ^= 0x5A;
    written_blocks.push_back(plain);
    device.answers[7] = loses_blocks ? Bytes(63) : reply_of(plain);
  }
};

}  // namespace zelkora::test
