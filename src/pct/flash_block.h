// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The plain 32-byte parameter block, as it lies in a controller's flash and in the store files once
// decoded.
#pragma once

#include <cstddef>
#include <cstdint>

#include "zelkora.h"

namespace zelkora::pct {

struct FlashBlock {
  uint8_t unused0[5];  // the identity block keeps ids and firmware revision in bytes 0 to 5
  uint8_t hide_cursor;
  uint8_t unused6[6];
  uint8_t serial_number[8];
  uint8_t beep_on;
  uint8_t play_method;
  uint8_t frequency_high;
  uint8_t frequency_low;
  uint8_t duration;
  uint8_t screen_number;
  uint8_t pos_config;  // bit 0 POSEnable, bit 5 HidEnable
  uint8_t click;       // bits 0-1 ClickMode, 2 RightUp, 3 DisableRight, 4 SyncFlag
  uint8_t right;       // bits 0-3 RightTime, 4-7 RightRange
  uint8_t digitizer;
  uint8_t disable_report;
  uint8_t flash_byte31;
};
static_assert(sizeof(FlashBlock) == ZELKORA_PCT_BLOCK);
static_assert(offsetof(FlashBlock, hide_cursor) == 5);
static_assert(offsetof(FlashBlock, serial_number) == 12);
static_assert(offsetof(FlashBlock, beep_on) == 20);
static_assert(offsetof(FlashBlock, pos_config) == 26);
static_assert(offsetof(FlashBlock, flash_byte31) == 31);

}  // namespace zelkora::pct
