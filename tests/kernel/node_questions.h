// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What all nodes are asked, and the exchanges of the panels.
#pragma once

#include <cstdint>
#include <span>

namespace zelkora::probe {

// A command report with its id in front, and the report that the reply is in.
struct Exchange {
  const char* name;
  std::span<const uint8_t> command;
  uint8_t reply;
};

std::span<const Exchange> exchanges(bool is_pct);

// A panel that left in a request is gone after this time; until then the kernel may take another
// request, and wait once more.
inline constexpr unsigned kNoticedUs = 500'000;

// A request for a text, into less room than it asks for and into enough.
void ask_text(int fd, const char* name, unsigned long request, bool is_phys);

// Reads, writes and requests that are not for this node.
void ask_others(int fd, const char* node);

// Opens of all kinds, and what they are good for.
void ask_opens(const char* path, const char* node);

}  // namespace zelkora::probe
