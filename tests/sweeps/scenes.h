// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The rows of the sweeps: every exported function that does I/O, the scenes it is called in, and
// the call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace zelkora::test {

// What is there when the function is called. Files always are.
enum Scene : unsigned {
  kFiles = 1,          // no panel
  kUsbOpen = 2,        // a resistive panel, listed as entry 0 and open
  kUsbListed = 4,      // listed, not open
  kSerialOpen = 8,     // the same at a serial port
  kSerialListed = 16,  //
  kPctOpen8752 = 32,   // a PCT panel on hiddev,
  kPctOpen8753 = 64,   // and on hidraw
  kPctListed8752 = 128,
  kPctListed8753 = 256,
  kAttached = 512,  // one of each make, none listed
};
inline constexpr unsigned kOpen = kUsbOpen | kSerialOpen;
inline constexpr unsigned kListed = kUsbListed | kSerialListed;
inline constexpr unsigned kPctOpen = kPctOpen8752 | kPctOpen8753;
inline constexpr unsigned kPctListed = kPctListed8752 | kPctListed8753;

struct PctMake {
  uint32_t firmware;
  uint16_t product;
  bool hidraw;
  int family;
};

struct SweepRow {
  const char* function;
  unsigned scenes;
  void (*call)();
  // Descriptors that the interface lets a failing call keep, besides those of a run without fault.
  size_t may_keep = 0;
};

std::span<const SweepRow> sweep_rows();

// Exported functions without a call that can fail.
std::span<const char* const> functions_without_io();

inline constexpr char kOptionsFile[] = "/opt/.touch_panel/sweep.conf";
inline constexpr char kImageFile[] = "/opt/.touch_panel/sweep.img";

}  // namespace zelkora::test
