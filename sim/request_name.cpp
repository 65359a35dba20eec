// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "request_name.h"

#include <linux/hiddev.h>
#include <linux/hidraw.h>
#include <linux/input.h>
#include <sys/ioctl.h>

#include <array>
#include <cstdarg>
#include <cstdio>
#include <string_view>

namespace zelkora::sim {
namespace {

static_assert(without_size(HIDIOCGNAME(256)) == HIDIOCGNAME(0));

__attribute__((format(printf, 1, 2))) std::string format(const char* pattern, ...) {
  std::array<char, 160> text{};
  va_list arguments;
  va_start(arguments, pattern);
  std::vsnprintf(text.data(), text.size(), pattern, arguments);
  va_end(arguments);
  return text.data();
}

// What the record that goes with a hiddev request names.
enum class Record { kNone, kLength, kReport, kField, kUsage, kUsageValue };

struct RequestName {
  unsigned long request;  // without its size bits when the record is a kLength
  std::string_view name;
  Record record = Record::kNone;
};

constexpr RequestName kHiddev[] = {
    {HIDIOCGVERSION, "HIDIOCGVERSION"},
    {HIDIOCGDEVINFO, "HIDIOCGDEVINFO"},
    {HIDIOCINITREPORT, "HIDIOCINITREPORT"},
    {HIDIOCGFLAG, "HIDIOCGFLAG"},
    {HIDIOCSFLAG, "HIDIOCSFLAG"},
    {HIDIOCGREPORT, "HIDIOCGREPORT", Record::kReport},
    {HIDIOCSREPORT, "HIDIOCSREPORT", Record::kReport},
    {HIDIOCGREPORTINFO, "HIDIOCGREPORTINFO", Record::kReport},
    {HIDIOCGFIELDINFO, "HIDIOCGFIELDINFO", Record::kField},
    {HIDIOCGUCODE, "HIDIOCGUCODE", Record::kUsage},
    {HIDIOCGUSAGE, "HIDIOCGUSAGE", Record::kUsage},
    {HIDIOCSUSAGE, "HIDIOCSUSAGE", Record::kUsageValue},
    {HIDIOCGUSAGES, "HIDIOCGUSAGES", Record::kUsage},
    {HIDIOCSUSAGES, "HIDIOCSUSAGES", Record::kUsage},
    {HIDIOCGCOLLECTIONINDEX, "HIDIOCGCOLLECTIONINDEX", Record::kUsage},
    {HIDIOCAPPLICATION, "HIDIOCAPPLICATION"},
    {HIDIOCGCOLLECTIONINFO, "HIDIOCGCOLLECTIONINFO"},
    {HIDIOCGSTRING, "HIDIOCGSTRING"},
    {HIDIOCGNAME(0), "HIDIOCGNAME", Record::kLength},
    {HIDIOCGPHYS(0), "HIDIOCGPHYS", Record::kLength},
};

constexpr RequestName kHidraw[] = {
    {HIDIOCGRAWINFO, "HIDIOCGRAWINFO"},
    {HIDIOCGRDESCSIZE, "HIDIOCGRDESCSIZE"},
    {HIDIOCGRDESC, "HIDIOCGRDESC"},
    {HIDIOCGRAWNAME(0), "HIDIOCGRAWNAME", Record::kLength},
    {HIDIOCGRAWPHYS(0), "HIDIOCGRAWPHYS", Record::kLength},
    {HIDIOCGRAWUNIQ(0), "HIDIOCGRAWUNIQ", Record::kLength},
    {HIDIOCSFEATURE(0), "HIDIOCSFEATURE", Record::kLength},
    {HIDIOCGFEATURE(0), "HIDIOCGFEATURE", Record::kLength},
};

constexpr RequestName kEvent[] = {
    {EVIOCGVERSION, "EVIOCGVERSION"},
    {EVIOCGID, "EVIOCGID"},
    {EVIOCGNAME(0), "EVIOCGNAME", Record::kLength},
    {EVIOCGPHYS(0), "EVIOCGPHYS", Record::kLength},
    {EVIOCGUNIQ(0), "EVIOCGUNIQ", Record::kLength},
};

std::string report_words(const hiddev_report_info& info) {
  return format(" type=%u id=%u", info.report_type, info.report_id);
}

std::string field_words(const hiddev_field_info& info) {
  return format(" type=%u id=%u field=%u", info.report_type, info.report_id, info.field_index);
}

std::string usage_words(const hiddev_usage_ref& usage) {
  return format(" type=%u id=%u field=%u usage=%u", usage.report_type, usage.report_id,
                usage.field_index, usage.usage_index);
}

std::string value_words(const hiddev_usage_ref& usage) {
  return usage_words(usage) + format(" code=%08X value=%d", usage.usage_code, usage.value);
}

std::string record_words(Record record, unsigned long request, const void* argument) {
  if (record == Record::kLength) return format(" %u", static_cast<unsigned>(_IOC_SIZE(request)));
  if (argument == nullptr) return {};
  switch (record) {
    case Record::kReport:
      return report_words(*static_cast<const hiddev_report_info*>(argument));
    case Record::kField:
      return field_words(*static_cast<const hiddev_field_info*>(argument));
    case Record::kUsage:
      return usage_words(*static_cast<const hiddev_usage_ref*>(argument));
    case Record::kUsageValue:
      return value_words(*static_cast<const hiddev_usage_ref*>(argument));
    default:
      return {};
  }
}

std::string in_words(std::span<const RequestName> names, unsigned long request,
                     const void* argument) {
  for (const RequestName& row : names) {
    const bool sized = row.record == Record::kLength;
    if ((sized ? without_size(request) : request) != row.request) continue;
    return std::string(row.name) + record_words(row.record, request, argument);
  }
  return unknown_request(request);
}

}  // namespace

std::string hiddev_request(unsigned long request, const void* argument) {
  return in_words(kHiddev, request, argument);
}

std::string hidraw_request(unsigned long request) { return in_words(kHidraw, request, nullptr); }

std::string event_request(unsigned long request) { return in_words(kEvent, request, nullptr); }

std::string unknown_request(unsigned long request) { return format("0x%08lX", request); }

std::string hex_bytes(std::span<const uint8_t> bytes) {
  std::string text;
  for (const uint8_t byte : bytes) {
    text += format(text.empty() ? "%02X" : " %02X", byte);
  }
  return text;
}

}  // namespace zelkora::sim
