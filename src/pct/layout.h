// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Where the two families of PCT controllers keep things in their reports.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "zelkora.h"

namespace zelkora::pct {

// Every command and reply is a feature report of this many bytes, its id included.
inline constexpr unsigned kReportSize = 64;

// Feature reports, by their id, which is byte 0 of what is sent.
enum Report : uint8_t {
  kQueryReport = 0x06,
  kReplyReport = 0x07,
  kCommandReport = 0x08,
  kIdentityReport = 0xF2,
  kUsbIdReport = 0xF3,
};

// The bytes that name a command; its arguments follow.
struct CommandName {
  uint8_t bytes[5];
  size_t size;
};

struct Layout {
  size_t data_reply;     // first byte of flash or POS configuration in a reply, its id not counted
  size_t flash_command;  // first flash byte of the write command
  CommandName reset;
  CommandName pos_config;
  CommandName pos_mode;
  const char* read_log;  // the family, as the trace tells it
  const char* read_send_error;
  const char* read_reply_error;
  const char* write_error;
};

inline constexpr Layout kLayout8752{3,
                                    4,
                                    {{kCommandReport, 0x85, 0x01, 0x00, 0x02}, 5},
                                    {{kCommandReport, 0x91, 0x05, 0x00, 0xC0}, 5},
                                    {{kCommandReport, 0x91, 0x05, 0x00, 0xC9}, 5},
                                    "***ReadPCTParames 8752***\n",
                                    "ReadPCTParames failed err:001\n",
                                    "ReadPCTParames failed err:002\n",
                                    "WritePCTParames failed err:000\n"};
inline constexpr Layout kLayout8753{7,
                                    8,
                                    {{kCommandReport, 0x84, 0x09}, 3},
                                    {{kCommandReport, 0x84, 0xC0, 0x00}, 4},
                                    {{kCommandReport, 0x84, 0xC9, 0x00}, 4},
                                    "***ReadPCTParames 8753***\n",
                                    "ReadPCTParames failed err:003\n",
                                    "ReadPCTParames failed err:004\n",
                                    "WritePCTParames failed err:001\n"};

// One report of a command, zeros behind its arguments.
struct CommandFrame {
  CommandFrame(const CommandName& name, std::initializer_list<uint8_t> arguments) {
    std::ranges::copy(arguments, std::copy_n(name.bytes, name.size, bytes));
  }
  uint8_t bytes[kReportSize] = {};
};

// The 8752 family takes its own layout; every other firmware, known or not, the 8753 one.
inline const Layout& current_layout() {
  return IsLegacy == ZELKORA_FAMILY_8752 ? kLayout8752 : kLayout8753;
}

}  // namespace zelkora::pct
