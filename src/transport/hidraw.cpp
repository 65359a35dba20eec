// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Reports over hidraw: whole feature reports in one request.
#include <linux/hidraw.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "core/log.h"
#include "zelkora.h"

namespace {

constexpr unsigned kBufferSize = 512;

}  // namespace

unsigned int HidRaw_Set_Feature(const void* data, unsigned int length) {
  uint8_t buffer[kBufferSize]{};
  length = std::min(length, kBufferSize);
  std::memcpy(buffer, data, length);
  if (ioctl(fd, HIDIOCSFEATURE(length), buffer) < 0) {
    zelkora::debug_perror("HIDIOCSFEATURE");
    return 0;
  }
  return 1;
}

unsigned int HidRaw_Get_Feature(unsigned int report_id, void* out, unsigned int length) {
  uint8_t buffer[kBufferSize]{};
  length = std::clamp(length, 1U, kBufferSize);
  buffer[0] = static_cast<uint8_t>(report_id);
  const int count = ioctl(fd, HIDIOCGFEATURE(length), buffer);
  if (count < 0) {
    zelkora::debug_perror("HIDIOCGFEATURE");
    return 0;
  }
  std::memcpy(out, buffer + 1, length - 1);
  return static_cast<unsigned>(count);
}
