// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Reports of projected-capacitive controllers, over the interface that the variable HidRaw names.
#include <algorithm>
#include <cstdint>
#include <cstring>

#include "zelkora.h"

namespace {

constexpr unsigned kBufferSize = 512;
constexpr unsigned kHidrawReportSize = 64;  // whatever the command's own length

}  // namespace

unsigned char SendDataNew(const unsigned char* data, unsigned int length) {
  uint8_t buffer[kBufferSize]{};
  length = std::min(length, kBufferSize);
  if (HidRaw == 1) {
    std::memcpy(buffer, data, length);
    return static_cast<unsigned char>(HidRaw_Set_Feature(buffer, kHidrawReportSize));
  }
  if (length == 0 || init_Pct_Hiddev(data[0]) == 0) return 0;
  std::memcpy(buffer, data + 1, length - 1);
  return static_cast<unsigned char>(SendDataPct(buffer));
}

unsigned char ReceiveDataNew(unsigned int report_id, unsigned char* out, unsigned int length) {
  // Cut to 8 bits: a count of 256 reads as failure.
  if (HidRaw == 1) {
    return static_cast<unsigned char>(HidRaw_Get_Feature(report_id, out, length));
  }
  if (init_Pct_Hiddev(report_id) == 0) return 0;
  return static_cast<unsigned char>(ReceiveDataPct(out));
}
