// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hiddev_questions.h"

#include <fcntl.h>
#include <linux/hiddev.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "answers.h"
#include "node_questions.h"

namespace zelkora::probe {
namespace {

constexpr unsigned kFeature = HID_REPORT_TYPE_FEATURE;
constexpr unsigned kFirstCode = 0xFF000001;
constexpr unsigned kEveryId = 0x100;

struct Request {
  const char* name;
  unsigned long number;
};

void ask_device(int fd) {
  int number = 0;
  show("HIDIOCGVERSION", ioctl(fd, HIDIOCGVERSION, &number));
  std::printf("  %X\n", number);
  hiddev_devinfo info{};
  show("HIDIOCGDEVINFO", ioctl(fd, HIDIOCGDEVINFO, &info));
  std::printf("  bus type %u interface %u vendor %d product %d version %X applications %u\n",
              info.bustype, info.ifnum, info.vendor, info.product, info.version,
              info.num_applications);
  for (const unsigned index : {0u, 1u, 2u, 0xFFFFFFFFu}) {
    const std::string which = ' ' + std::to_string(index);
    show("HIDIOCAPPLICATION" + which, ioctl(fd, HIDIOCAPPLICATION, index));
    hiddev_collection_info collection{index, 7, 7, 7};
    show("HIDIOCGCOLLECTIONINFO" + which, ioctl(fd, HIDIOCGCOLLECTIONINFO, &collection));
    std::printf("  type %u usage %X level %u\n", collection.type, collection.usage,
                collection.level);
  }
  for (const int index : {0, 1, 2, 3, -1}) {
    hiddev_string_descriptor text{index, {}};
    show("HIDIOCGSTRING " + std::to_string(index), ioctl(fd, HIDIOCGSTRING, &text));
    std::printf("  \"%s\"\n", text.value);
  }
}

void ask_flags(int fd) {
  int flags = 0;
  for (const int wanted : {1, 3, 2, 4, -1, 0}) {
    show("HIDIOCSFLAG " + std::to_string(wanted), ioctl(fd, HIDIOCSFLAG, &wanted));
    show("HIDIOCGFLAG", ioctl(fd, HIDIOCGFLAG, &flags));
    std::printf("  %d\n", flags);
  }
}

// The reports of a type, as the kernel lists them.
std::vector<unsigned> list_reports(int fd, unsigned type) {
  std::vector<unsigned> ids;
  hiddev_report_info info{type, HID_REPORT_ID_FIRST, 0};
  while (ioctl(fd, HIDIOCGREPORTINFO, &info) == 0) {
    ids.push_back(info.report_id);
    info.report_id |= HID_REPORT_ID_NEXT;
  }
  return ids;
}

void ask_report_ids(int fd, unsigned type) {
  Answers answers("HIDIOCGREPORTINFO type " + std::to_string(type) + " id");
  for (unsigned id = 0; id <= kEveryId; ++id) {
    hiddev_report_info info{type, id, 77};
    std::string answer = outcome(ioctl(fd, HIDIOCGREPORTINFO, &info));
    answers.add(id, answer + " fields " + std::to_string(info.num_fields));
  }
}

void ask_reports(int fd, unsigned type) {
  std::printf("reports of type %u:", type);
  std::vector<unsigned> ids = list_reports(fd, type);
  for (const unsigned id : ids) std::printf(" %u", id);
  std::puts("");
  ids.insert(ids.end(),
             {0, 9, 0xFF, HID_REPORT_ID_FIRST, HID_REPORT_ID_NEXT, HID_REPORT_ID_NEXT | 0x01,
              HID_REPORT_ID_NEXT | 0x06, HID_REPORT_ID_NEXT | 0xF3,
              HID_REPORT_ID_FIRST | HID_REPORT_ID_NEXT, HID_REPORT_ID_UNKNOWN});
  constexpr Request kRequests[] = {{"HIDIOCGREPORTINFO", HIDIOCGREPORTINFO},
                                   {"HIDIOCGREPORT", HIDIOCGREPORT},
                                   {"HIDIOCSREPORT", HIDIOCSREPORT}};
  for (const unsigned id : ids) {
    for (const auto& [name, number] : kRequests) {
      hiddev_report_info info{type, id, 77};
      show(std::string(name) + ' ' + std::to_string(id), ioctl(fd, number, &info));
      std::printf("  id %u fields %u\n", info.report_id, info.num_fields);
    }
  }
}

void ask_codes(int fd, const hiddev_field_info& field, unsigned number) {
  for (unsigned index = 0; index <= field.maxusage; ++index) {
    // All between the first and the last are numbered alike.
    if (index == 2 && field.maxusage > 4) index = field.maxusage - 1;
    hiddev_usage_ref usage{field.report_type, field.report_id, number, index, 5, 5};
    const std::string which = " usage " + std::to_string(index);
    if (show("  HIDIOCGUCODE" + which, ioctl(fd, HIDIOCGUCODE, &usage))) {
      std::printf("    code %X value %d\n", usage.usage_code, usage.value);
    }
    show("  HIDIOCGCOLLECTIONINDEX" + which, ioctl(fd, HIDIOCGCOLLECTIONINDEX, &usage));
  }
}

// Every field of every report, and one field too many.
void ask_fields(int fd) {
  for (const unsigned type : {1u, 2u, kFeature}) {
    for (const unsigned id : list_reports(fd, type)) {
      for (unsigned index = 0, served = 1; served != 0; ++index) {
        hiddev_field_info field{};
        field.report_type = type;
        field.report_id = id;
        field.field_index = index;
        std::printf("type %u id %u field %u: ", type, id, index);
        served = show("HIDIOCGFIELDINFO", ioctl(fd, HIDIOCGFIELDINFO, &field));
        if (!served) continue;
        std::printf("  index %u\n", field.field_index);
        std::printf("  usages %u flags %X physical %X logical %X application %X\n", field.maxusage,
                    field.flags, field.physical, field.logical, field.application);
        std::printf("  logical %d..%d physical %d..%d unit %X %X\n", field.logical_minimum,
                    field.logical_maximum, field.physical_minimum, field.physical_maximum,
                    field.unit_exponent, field.unit);
        ask_codes(fd, field, index);
      }
    }
  }
}

constexpr Request kUsageRequests[] = {{"HIDIOCGUCODE", HIDIOCGUCODE},
                                      {"HIDIOCGUSAGE", HIDIOCGUSAGE},
                                      {"HIDIOCSUSAGE", HIDIOCSUSAGE},
                                      {"HIDIOCGCOLLECTIONINDEX", HIDIOCGCOLLECTIONINDEX}};

void ask_usage(int fd, const Request& request, const char* what, hiddev_usage_ref usage) {
  const std::string label = std::string(request.name) + ' ' + what;
  if (!show(label, ioctl(fd, request.number, &usage))) return;
  std::printf("  type %u id %u field %u usage %u code %X value %d\n", usage.report_type,
              usage.report_id, usage.field_index, usage.usage_index, usage.usage_code, usage.value);
}

void ask_usages(int fd, unsigned id) {
  const struct {
    const char* what;
    hiddev_usage_ref usage;
  } kUsages[] = {
      {"first", {kFeature, id, 0, 0, kFirstCode, 5}},
      {"last", {kFeature, id, 0, 62, kFirstCode + 62, 5}},
      {"one too many", {kFeature, id, 0, 63, kFirstCode + 63, 5}},
      {"far too many", {kFeature, id, 0, 1000, kFirstCode + 1000, 5}},
      {"of field 1", {kFeature, id, 1, 0, kFirstCode, 5}},
      {"of wrong code", {kFeature, id, 0, 3, 0x12345678, 5}},
      {"of wrong type", {4, id, 0, 0, kFirstCode, 5}},
      {"of wrong report", {kFeature, 0x33, 0, 0, kFirstCode, 5}},
      {"of report 0", {kFeature, 0, 0, 0, kFirstCode, 5}},
      {"of first report", {kFeature, HID_REPORT_ID_FIRST, 0, 1, kFirstCode, 5}},
      {"of next report", {kFeature, HID_REPORT_ID_NEXT | id, 0, 1, kFirstCode, 5}},
      {"by code", {kFeature, HID_REPORT_ID_UNKNOWN, 0, 0, kFirstCode + 4, 5}},
      {"by code of wrong type", {4, HID_REPORT_ID_UNKNOWN, 0, 0, kFirstCode + 4, 5}},
      {"by unknown code", {kFeature, HID_REPORT_ID_UNKNOWN, 0, 0, 0xFF010001, 5}},
      {"by code of a button", {HID_REPORT_TYPE_INPUT, HID_REPORT_ID_UNKNOWN, 0, 0, 0x90001, 5}},
  };
  for (const Request& request : kUsageRequests) {
    for (const auto& [what, usage] : kUsages) ask_usage(fd, request, what, usage);
  }
}

// Many values at once.
void ask_multiple(int fd, unsigned id) {
  struct {
    unsigned first, count;
  } const kRanges[] = {{0, 63}, {60, 3}, {60, 4}, {63, 0}, {0, 0}, {0, 64}, {0, 1025}, {~0U, 2}};
  const auto many = std::make_unique<hiddev_usage_ref_multi>();
  for (const auto& [first, count] : kRanges) {
    const std::string which = ' ' + std::to_string(first) + ' ' + std::to_string(count);
    *many = {{kFeature, id, 0, first, 0, 0}, count, {}};
    for (int i = 0; i < 63; ++i) many->values[i] = 100 + i;
    show("HIDIOCSUSAGES" + which, ioctl(fd, HIDIOCSUSAGES, many.get()));
    std::memset(many->values, 0, sizeof many->values);
    show("HIDIOCGUSAGES" + which, ioctl(fd, HIDIOCGUSAGES, many.get()));
    std::printf("  %d %d .. %d\n", many->values[0], many->values[1], many->values[62]);
  }
  *many = {{kFeature, HID_REPORT_ID_UNKNOWN, 0, 0, kFirstCode + 1, 0}, 2, {}};
  show("HIDIOCGUSAGES by code", ioctl(fd, HIDIOCGUSAGES, many.get()));
  std::printf("  id %u usage %u values %d %d\n", many->uref.report_id, many->uref.usage_index,
              many->values[0], many->values[1]);
}

std::optional<std::array<uint8_t, 63>> field_bytes(int fd, unsigned id) {
  const auto many = std::make_unique<hiddev_usage_ref_multi>();
  *many = {{kFeature, id, 0, 0, 0, 0}, 63, {}};
  if (ioctl(fd, HIDIOCGUSAGES, many.get()) < 0) return std::nullopt;
  std::array<uint8_t, 63> bytes{};
  std::ranges::transform(std::span(many->values).first(bytes.size()), bytes.begin(),
                         [](int value) { return static_cast<uint8_t>(value); });
  return bytes;
}

// One exchange as a host does it; prints the bytes that come back.
void exchange(int fd, const Exchange& wanted, unsigned pause_us = 0) {
  const auto blank = std::make_unique<hiddev_usage_ref_multi>();
  *blank = {{kFeature, wanted.command[0], 0, 0, 0, 0}, 63, {}};
  // The first such request reads every report of the panel.
  ioctl(fd, HIDIOCSUSAGES, blank.get());
  usleep(pause_us);
  for (unsigned i = 0; i + 1 < wanted.command.size(); ++i) {
    hiddev_usage_ref usage{kFeature, wanted.command[0], 0,
                           i,        kFirstCode + i,    static_cast<int8_t>(wanted.command[i + 1])};
    ioctl(fd, HIDIOCSUSAGE, &usage);
  }
  const std::string name = wanted.name;
  hiddev_report_info report{kFeature, wanted.command[0], 1};
  show(name + " HIDIOCSREPORT", ioctl(fd, HIDIOCSREPORT, &report));
  usleep(pause_us);
  report = {kFeature, wanted.reply, 1};
  show(name + " HIDIOCGREPORT", ioctl(fd, HIDIOCGREPORT, &report));
  usleep(pause_us);
  const auto bytes = field_bytes(fd, wanted.reply);
  if (!bytes) return void(show("  HIDIOCGUSAGES", -1));
  std::printf(" %s\n", hex(*bytes).c_str());
}

// What becomes of values that a byte cannot hold: as they are kept, and after they were sent.
void ask_values(int fd, unsigned id) {
  for (const int value : {0x7F, 0x80, 0xFF, 0x100, 0x1FF, -1, -128, -129, -256}) {
    hiddev_usage_ref usage{kFeature, id, 0, 9, kFirstCode + 9, value};
    ioctl(fd, HIDIOCSUSAGE, &usage);
    ioctl(fd, HIDIOCGUSAGE, &usage);
    std::printf("value %d kept as %d", value, usage.value);
    hiddev_report_info report{kFeature, id, 1};
    ioctl(fd, HIDIOCSREPORT, &report);
    ioctl(fd, HIDIOCGUSAGE, &usage);
    std::printf(", after HIDIOCSREPORT %d\n", usage.value);
  }
}

// What one open sees of what another one did.
void ask_twice(int fd, const char* node, unsigned id) {
  const int other = open(node, O_RDWR | O_NONBLOCK);
  hiddev_usage_ref usage{kFeature, id, 0, 7, kFirstCode + 7, 99};
  ioctl(fd, HIDIOCSUSAGE, &usage);
  usage.value = 0;
  show("HIDIOCGUSAGE of another open", ioctl(other, HIDIOCGUSAGE, &usage));
  std::printf("  %d\n", usage.value);
  int flags = HIDDEV_FLAG_UREF;
  ioctl(fd, HIDIOCSFLAG, &flags);
  show("HIDIOCGFLAG of another open", ioctl(other, HIDIOCGFLAG, &flags));
  std::printf("  %d\n", flags);
  close(other);
  ioctl(fd, HIDIOCSFLAG, &(flags = 0));
}

// Hosts that want to hear of reports rather than ask for them.
void ask_events(int fd, unsigned id) {
  for (int flags : {0, HIDDEV_FLAG_UREF, HIDDEV_FLAG_UREF | HIDDEV_FLAG_REPORT}) {
    ioctl(fd, HIDIOCSFLAG, &flags);
    hiddev_report_info report{kFeature, id, 1};
    ioctl(fd, HIDIOCGREPORT, &report);
    const std::string label = "flags " + std::to_string(flags) + " hiddev";
    show_poll(label, fd);
    std::array<hiddev_usage_ref, 2> events{};
    show(label + " read of 7 bytes", read(fd, events.data(), 7));
    if (!show(label + " read", read(fd, events.data(), sizeof events))) continue;
    for (const hiddev_usage_ref& event : events) {
      std::printf("  type %u id %u field %u usage %u code %X value %d\n", event.report_type,
                  event.report_id, event.field_index, event.usage_index, event.usage_code,
                  event.value);
    }
  }
  int flags = 0;
  ioctl(fd, HIDIOCSFLAG, &flags);
}

bool is_pct(int fd) {
  hiddev_report_info info{kFeature, 0xF2, 0};
  return ioctl(fd, HIDIOCGREPORTINFO, &info) == 0;
}

}  // namespace

void ask_hiddev(int fd, const char* node) {
  show_poll("hiddev", fd);
  ask_device(fd);
  ask_text(fd, "HIDIOCGNAME", HIDIOCGNAME(0), false);
  ask_text(fd, "HIDIOCGPHYS", HIDIOCGPHYS(0), true);
  ask_flags(fd);
  const unsigned id = is_pct(fd) ? 0x06 : 0x01;
  // Before any request for one, and before the fields were filled.
  const auto bytes = field_bytes(fd, id);
  std::printf("first field: %s\n", bytes ? hex(*bytes).c_str() : "none");
  show("HIDIOCINITREPORT", ioctl(fd, HIDIOCINITREPORT, 0));
  for (const unsigned type : {unsigned{HID_REPORT_TYPE_INPUT}, kFeature}) ask_report_ids(fd, type);
  for (unsigned type = 0; type <= 4; ++type) ask_reports(fd, type);
  ask_fields(fd);
  ask_usages(fd, id);
  ask_multiple(fd, id);
  ask_values(fd, id);
  for (const Exchange& wanted : exchanges(is_pct(fd))) exchange(fd, wanted);
  ask_twice(fd, node, id);
  ask_events(fd, is_pct(fd) ? 0xF2 : 0x01);
  ask_others(fd, "hiddev");
}

void exchange_over_hiddev(int fd) { exchange(fd, exchanges(is_pct(fd))[0], kNoticedUs); }

void ask_unplugged_hiddev(int fd) {
  constexpr Request kRequests[] = {
      {"HIDIOCGVERSION", HIDIOCGVERSION},      {"HIDIOCGDEVINFO", HIDIOCGDEVINFO},
      {"HIDIOCGNAME", HIDIOCGNAME(64)},        {"HIDIOCGFLAG", HIDIOCGFLAG},
      {"HIDIOCINITREPORT", HIDIOCINITREPORT},  {"HIDIOCGREPORTINFO", HIDIOCGREPORTINFO},
      {"HIDIOCAPPLICATION", HIDIOCAPPLICATION}};
  std::array<uint8_t, 256> memory{};
  for (const auto& [name, number] : kRequests) show(name, ioctl(fd, number, memory.data()));
  for (const Exchange& wanted : exchanges(false)) exchange(fd, wanted);
  ask_others(fd, "hiddev");
}

}  // namespace zelkora::probe
