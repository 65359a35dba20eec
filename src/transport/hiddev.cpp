// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Reports over hiddev: usage by usage into field 0 of a feature report.
#include <linux/hiddev.h>
#include <sys/ioctl.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/bytes.h"
#include "core/log.h"
#include "zelkora.h"

namespace {

constexpr unsigned kFrameSize = 64;
constexpr unsigned kResistiveReportId = 1;
constexpr unsigned kFirstUsageCode = 0xFF000001;  // vendor-defined page, usages counted from 1
constexpr unsigned kSettleUs = 50'000;            // after every report sent

void select_report(unsigned report_id) {
  report.report_type = HID_REPORT_TYPE_FEATURE;
  report.report_id = report_id;
}

void select_field(unsigned report_id) {
  field.report_type = HID_REPORT_TYPE_FEATURE;
  field.report_id = report_id;
  field.field_index = 0;
}

void select_usages(unsigned report_id) {
  uref.report_type = HID_REPORT_TYPE_FEATURE;
  uref.report_id = report_id;
  uref.field_index = 0;
}

// The report's length as the device states it, but never more than a frame holds.
unsigned usage_count() { return std::min<unsigned>(field.maxusage, kFrameSize); }

void put_usage(unsigned index, int value) {
  uref.usage_index = index;
  uref.usage_code = kFirstUsageCode + index;
  uref.field_index = 0;
  uref.value = value;
  ioctl(fd, HIDIOCSUSAGE, &uref);
}

uint8_t get_usage(unsigned index) {
  uref.usage_index = index;
  uref.field_index = 0;
  ioctl(fd, HIDIOCGUCODE, &uref);
  ioctl(fd, HIDIOCGUSAGE, &uref);
  return static_cast<uint8_t>(uref.value);
}

// Reports of 2.4 kernels begin with the report id.
bool report_id_leads() {
  std::memset(&KernelVersion, 0, sizeof KernelVersion);
  uname(&KernelVersion);
  return std::strncmp(KernelVersion.release, "2.4", 3) == 0;
}

}  // namespace

unsigned int init_Hiddev(void) {
  if (fd < 0) return 0;
  select_report(kResistiveReportId);
  ioctl(fd, HIDIOCGREPORTINFO, &report);
  select_field(kResistiveReportId);
  ioctl(fd, HIDIOCGFIELDINFO, &field);
  ioctl(fd, HIDIOCINITREPORT, 0);
  select_usages(kResistiveReportId);
  return 1;
}

unsigned int SendData(const unsigned char* data, unsigned int length) {
  uint8_t frame[kFrameSize]{};
  size_t head = 0;
  if (report_id_leads()) frame[head++] = kResistiveReportId;
  frame[head++] = static_cast<uint8_t>(length);
  std::memcpy(frame + head, data, std::min<size_t>(length, kFrameSize - head));

  // Bytes from 0x80 go out as negative values, as controllers with signed fields need them.
  for (unsigned i = 0; i < usage_count(); ++i) put_usage(i, zelkora::as_signed(frame[i]));
  if (ioctl(fd, HIDIOCSREPORT, &report) < 0) {
    DebugMsg(zelkora::kTrace, "Error (HIDIOCSREPORT) while talking to the touch controller\n");
    return 0;
  }
  usleep(kSettleUs);
  return 1;
}

unsigned int ReceiveData(unsigned char* out, unsigned int length) {
  uint8_t frame[kFrameSize]{};
  ioctl(fd, HIDIOCGREPORT, &report);
  for (unsigned i = 0; i < usage_count(); ++i) {
    const uint8_t byte = get_usage(i);
    // Bytes from `length` on are read and dropped, so a reply as long as the limit ends in 0.
    if (i < length) frame[i] = byte;
  }
  const int stated = std::max(zelkora::as_signed(frame[0]), 0);
  const unsigned count = std::min({static_cast<unsigned>(stated), length, kFrameSize - 1});
  std::memcpy(out, frame + 1, count);
  return count;
}

unsigned int init_Pct_Hiddev(unsigned int report_id) {
  if (fd < 0) return 0;
  select_report(report_id);
  if (ioctl(fd, HIDIOCGREPORTINFO, &report) < 0) {
    if (DbgFlag != 0) std::perror("init : HIDIOCGREPORTINFO");
    return 0;
  }
  select_field(report_id);
  if (ioctl(fd, HIDIOCGFIELDINFO, &field) < 0) {
    if (DbgFlag != 0) std::perror("init : HIDIOCGFIELDINFO");
    return 0;
  }
  select_usages(report_id);
  return 1;
}

unsigned int SendDataPct(const unsigned char* data) {
  for (unsigned i = 0; i < usage_count(); ++i) put_usage(i, data[i]);
  if (ioctl(fd, HIDIOCSREPORT, &report) < 0) {
    if (DbgFlag != 0) std::perror("Send data to the touch controller\n");
    return 0;
  }
  usleep(kSettleUs);
  return 1;
}

unsigned int ReceiveDataPct(unsigned char* out) {
  ioctl(fd, HIDIOCGREPORT, &report);
  const unsigned count = usage_count();
  for (unsigned i = 0; i < count; ++i) out[i] = get_usage(i);
  return count;
}
