// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The words of a resistive parameter record: where each stands in the store files, and where it goes
// in the controller.
#pragma once

#include <cstddef>

#include "zelkora.h"

namespace zelkora::resistive {

struct Stored {
  enum : size_t {
    kReportMode,
    kBeepOn,
    kPlayMethod,
    kFrequency,
    kDuration,
    kRightTime,
    kScreenNumber,
    kDisableRight,
    kSpareByte,
    kHidMode,
    kEdgeRight,
    kEdgeLeft,
    kEdgeDown,
    kEdgeUp,
    kDisableReport,
    kHideCursor,
    kChecksum,
  };
};
static_assert(Stored::kChecksum + 1 == ZELKORA_RES_STORED_WORDS);

struct Flash {
  enum : size_t {
    kHidMode = 5,
    kEdgeRight,
    kEdgeLeft,
    kEdgeDown,
    kEdgeUp,
    kChecksum,
  };
};
inline constexpr size_t kFlashWords = ZELKORA_RES_FLASH_WORDS;
static_assert(Flash::kChecksum + 1 == kFlashWords);

struct FlashRow {
  short address;
  unsigned fixed = 0;  // written whatever the record says, but for the words named above
};

// Writing a record also sets report mode, rotation and the automatic HID setting to 0.
inline constexpr FlashRow kFlashTable[kFlashWords] = {
    {ZELKORA_EEP_REPORT_MODE},
    {53, 300},
    {56},
    {ZELKORA_EEP_ROTATION},
    {ZELKORA_EEP_AUTO_HID},
    {ZELKORA_EEP_HID_MODE},
    {ZELKORA_EEP_EDGE_RIGHT},
    {ZELKORA_EEP_EDGE_LEFT},
    {ZELKORA_EEP_EDGE_DOWN},
    {ZELKORA_EEP_EDGE_UP},
    {ZELKORA_EEP_CHECKSUM},
};

// What stands for the serial number of panels that have none.
inline constexpr unsigned char kPlaceholderSerialNumber[] = {1, 2, 3, 4, 5, 6, 7, 8};

}  // namespace zelkora::resistive
