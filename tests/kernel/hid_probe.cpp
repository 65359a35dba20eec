// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Asks the nodes of one resistive panel everything that a host may ask, right and wrong, and prints
// what came back. Nodes of the real kernel and of the virtual one must give the same text, so what
// may differ between two machines (node numbers, bus numbers, ports) is not printed.
#include <fcntl.h>
#include <linux/hiddev.h>
#include <linux/hidraw.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr unsigned kFeature = HID_REPORT_TYPE_FEATURE;
constexpr unsigned kFirstCode = 0xFF000001;
constexpr char kUnknownCommand[] = "\x01XX\x0D";
constexpr char kFirmwareQuery[] = "\x01OI\x0D";

// Prints the result of a request, or the name of its error; true when it was served.
bool show(const std::string& what, long result) {
  const int error = errno;
  if (result < 0) {
    std::printf("%s -> %s\n", what.c_str(), strerrorname_np(error));
  } else {
    std::printf("%s -> %ld\n", what.c_str(), result);
  }
  return result >= 0;
}

void show_bytes(const uint8_t* bytes, size_t count) {
  while (count > 0 && bytes[count - 1] == 0) --count;
  std::printf("  ");
  for (size_t i = 0; i < count; ++i) std::printf("%02X ", bytes[i]);
  std::printf("then zeros\n");
}

// A request for a text, into less room than it asks for and into enough.
void ask_text(int fd, const char* name, unsigned long request, bool is_phys) {
  for (const unsigned size : {6u, 256u}) {
    std::array<char, 256> text{};
    const unsigned long sized = _IOC(_IOC_READ, _IOC_TYPE(request), _IOC_NR(request), size);
    const long result = ioctl(fd, sized, text.data());
    if (result >= 0 && is_phys && size == 256) {
      const std::string_view phys(text.data());
      const bool whole = static_cast<size_t>(result) == phys.size() + 1;
      std::printf("%s 256 -> %s, %s\n", name, whole ? "its length and one" : "another length",
                  phys.ends_with("/input0") ? "ends in /input0" : "ends otherwise");
      continue;
    }
    if (show(std::string(name) + ' ' + std::to_string(size), result) && !is_phys) {
      std::printf("  \"%.*s\"\n", static_cast<int>(result), text.data());
    }
  }
}

void ask_reports(int fd) {
  struct {
    const char* name;
    unsigned type, id;
  } const kReports[] = {
      {"feature 1", kFeature, 1},
      {"feature 9", kFeature, 9},
      {"first feature", kFeature, HID_REPORT_ID_FIRST},
      {"feature after 1", kFeature, HID_REPORT_ID_NEXT | 1},
      {"output 1", HID_REPORT_TYPE_OUTPUT, 1},
      {"type 0", 0, 1},
      {"type 4", 4, 1},
  };
  for (const auto& [name, type, id] : kReports) {
    hiddev_report_info info{type, id, 77};
    show(std::string("HIDIOCGREPORTINFO ") + name, ioctl(fd, HIDIOCGREPORTINFO, &info));
    std::printf("  id %u fields %u\n", info.report_id, info.num_fields);
    info = {type, id, 0};
    show(std::string("HIDIOCGREPORT ") + name, ioctl(fd, HIDIOCGREPORT, &info));
    info = {type, id, 0};
    show(std::string("HIDIOCSREPORT ") + name, ioctl(fd, HIDIOCSREPORT, &info));
  }
}

void ask_fields(int fd) {
  for (const unsigned index : {0u, 1u}) {
    hiddev_field_info field{};
    field.report_type = kFeature;
    field.report_id = 1;
    field.field_index = index;
    if (!show("HIDIOCGFIELDINFO " + std::to_string(index), ioctl(fd, HIDIOCGFIELDINFO, &field))) {
      continue;
    }
    std::printf("  usages %u flags %X physical %X logical %X application %X\n", field.maxusage,
                field.flags, field.physical, field.logical, field.application);
    std::printf("  logical %d..%d physical %d..%d unit %X %X\n", field.logical_minimum,
                field.logical_maximum, field.physical_minimum, field.physical_maximum,
                field.unit_exponent, field.unit);
  }
}

hiddev_usage_ref usage_of(unsigned field, unsigned index, unsigned code, int value) {
  return {kFeature, 1, field, index, code, value};
}

void show_usage(const std::string& what, long result, const hiddev_usage_ref& usage) {
  if (!show(what, result)) return;
  std::printf("  id %u field %u usage %u code %X value %d\n", usage.report_id, usage.field_index,
              usage.usage_index, usage.usage_code, usage.value);
}

void ask_usages(int fd) {
  constexpr struct {
    const char* name;
    unsigned long request;
  } kRequests[] = {{"HIDIOCGUCODE", HIDIOCGUCODE},
                   {"HIDIOCGUSAGE", HIDIOCGUSAGE},
                   {"HIDIOCSUSAGE", HIDIOCSUSAGE}};
  for (const auto& [name, request] : kRequests) {
    for (const unsigned index : {0u, 62u, 63u, 1000u}) {
      hiddev_usage_ref usage = usage_of(0, index, kFirstCode + index, 5);
      const long result = ioctl(fd, request, &usage);
      show_usage(std::string(name) + " usage " + std::to_string(index), result, usage);
    }
    hiddev_usage_ref usage = usage_of(1, 0, kFirstCode, 5);
    show_usage(std::string(name) + " field 1", ioctl(fd, request, &usage), usage);
    usage = usage_of(0, 3, 0x12345678, 5);
    show_usage(std::string(name) + " wrong code", ioctl(fd, request, &usage), usage);
    usage = usage_of(0, 0, kFirstCode + 4, 5);
    usage.report_id = HID_REPORT_ID_UNKNOWN;
    show_usage(std::string(name) + " by code", ioctl(fd, request, &usage), usage);
    usage.usage_code = 0xFF010001;
    usage.report_id = HID_REPORT_ID_UNKNOWN;
    show_usage(std::string(name) + " by unknown code", ioctl(fd, request, &usage), usage);
  }
}

// One exchange as a host does it; prints the bytes that come back.
void exchange(int fd, const char* what, std::string_view command) {
  std::array<uint8_t, 63> frame{};
  frame[0] = static_cast<uint8_t>(command.size());
  std::memcpy(frame.data() + 1, command.data(), command.size());
  for (unsigned i = 0; i < frame.size(); ++i) {
    hiddev_usage_ref usage = usage_of(0, i, kFirstCode + i, static_cast<int8_t>(frame[i]));
    ioctl(fd, HIDIOCSUSAGE, &usage);
  }
  hiddev_report_info report{kFeature, 1, 1};
  show(std::string(what) + " HIDIOCSREPORT", ioctl(fd, HIDIOCSREPORT, &report));
  show(std::string(what) + " HIDIOCGREPORT", ioctl(fd, HIDIOCGREPORT, &report));
  for (unsigned i = 0; i < frame.size(); ++i) {
    hiddev_usage_ref usage = usage_of(0, i, 0, 0);
    if (ioctl(fd, HIDIOCGUSAGE, &usage) < 0) return void(show("  HIDIOCGUSAGE", -1));
    frame[i] = static_cast<uint8_t>(usage.value);
  }
  show_bytes(frame.data(), frame.size());
}

// What becomes of values that a byte cannot hold: as they are kept, and after they were sent.
void ask_values(int fd) {
  for (const int value : {0x7F, 0x80, 0xFF, 0x100, 0x1FF, -1, -128, -129, -256}) {
    hiddev_usage_ref usage = usage_of(0, 9, kFirstCode + 9, value);
    ioctl(fd, HIDIOCSUSAGE, &usage);
    ioctl(fd, HIDIOCGUSAGE, &usage);
    std::printf("value %d kept as %d", value, usage.value);
    hiddev_report_info report{kFeature, 1, 1};
    ioctl(fd, HIDIOCSREPORT, &report);
    ioctl(fd, HIDIOCGUSAGE, &usage);
    std::printf(", after HIDIOCSREPORT %d\n", usage.value);
  }
}

void ask_others(int fd, const char* node) {
  std::array<uint8_t, 64> bytes{};
  show(std::string(node) + " read", read(fd, bytes.data(), bytes.size()));
  show(std::string(node) + " read of 1 byte", read(fd, bytes.data(), 1));
  show(std::string(node) + " write", write(fd, bytes.data(), bytes.size()));
  show(std::string(node) + " unknown request", ioctl(fd, _IOR('H', 0x7E, int), bytes.data()));
  show(std::string(node) + " terminal request", ioctl(fd, _IO('T', 1), bytes.data()));
}

void ask_hiddev(int fd) {
  int number = 0;
  show("HIDIOCGVERSION", ioctl(fd, HIDIOCGVERSION, &number));
  std::printf("  %X\n", number);
  hiddev_devinfo info{};
  show("HIDIOCGDEVINFO", ioctl(fd, HIDIOCGDEVINFO, &info));
  std::printf("  bus type %u interface %u vendor %d product %d version %X applications %u\n",
              info.bustype, info.ifnum, info.vendor, info.product, info.version,
              info.num_applications);
  ask_text(fd, "HIDIOCGNAME", HIDIOCGNAME(0), false);
  ask_text(fd, "HIDIOCGPHYS", HIDIOCGPHYS(0), true);
  show("HIDIOCINITREPORT", ioctl(fd, HIDIOCINITREPORT, 0));
  show("HIDIOCGFLAG", ioctl(fd, HIDIOCGFLAG, &number));
  ask_reports(fd);
  ask_fields(fd);
  ask_usages(fd);
  ask_values(fd);
  exchange(fd, "firmware", kFirmwareQuery);
  exchange(fd, "silence", kUnknownCommand);
  ask_others(fd, "hiddev");
}

void exchange_raw(int fd, const char* what, std::string_view command) {
  for (const unsigned size : {64u, 512u, 2u, 1u}) {
    std::array<uint8_t, 512> report{1, static_cast<uint8_t>(command.size())};
    std::memcpy(report.data() + 2, command.data(), command.size());
    const std::string label = std::string(what) + ' ' + std::to_string(size);
    // Sent in the length that the device knows; asked for in any.
    show(label + " HIDIOCSFEATURE", ioctl(fd, HIDIOCSFEATURE(64), report.data()));
    report = {1};
    if (show(label + " HIDIOCGFEATURE", ioctl(fd, HIDIOCGFEATURE(size), report.data()))) {
      show_bytes(report.data(), report.size());
    }
  }
}

void ask_hidraw(int fd) {
  hidraw_devinfo info{};
  show("HIDIOCGRAWINFO", ioctl(fd, HIDIOCGRAWINFO, &info));
  std::printf("  bus type %u vendor %d product %d\n", info.bustype, info.vendor, info.product);
  ask_text(fd, "HIDIOCGRAWNAME", HIDIOCGRAWNAME(0), false);
  ask_text(fd, "HIDIOCGRAWPHYS", HIDIOCGRAWPHYS(0), true);
  exchange_raw(fd, "firmware", kFirmwareQuery);
  exchange_raw(fd, "silence", kUnknownCommand);
  std::array<uint8_t, 64> report{9};
  show("HIDIOCGFEATURE of report 9", ioctl(fd, HIDIOCGFEATURE(64), report.data()));
  show("HIDIOCSFEATURE of report 9", ioctl(fd, HIDIOCSFEATURE(64), report.data()));
  ask_others(fd, "hidraw");
}

void ask_event(int fd) {
  int number = 0;
  show("EVIOCGVERSION", ioctl(fd, EVIOCGVERSION, &number));
  std::printf("  %X\n", number);
  input_id id{};
  show("EVIOCGID", ioctl(fd, EVIOCGID, &id));
  std::printf("  bus type %u vendor %04X product %04X version %04X\n", id.bustype, id.vendor,
              id.product, id.version);
  ask_text(fd, "EVIOCGNAME", EVIOCGNAME(0), false);
  ask_text(fd, "EVIOCGPHYS", EVIOCGPHYS(0), true);
  ask_others(fd, "event");
}

void ask_after_unplug(int hiddev, int hidraw, int event) {
  hiddev_devinfo info{};
  show("HIDIOCGDEVINFO", ioctl(hiddev, HIDIOCGDEVINFO, &info));
  exchange(hiddev, "firmware", kFirmwareQuery);
  ask_others(hiddev, "hiddev");
  std::array<uint8_t, 64> report{1};
  show("HIDIOCSFEATURE", ioctl(hidraw, HIDIOCSFEATURE(64), report.data()));
  show("HIDIOCGFEATURE", ioctl(hidraw, HIDIOCGFEATURE(64), report.data()));
  ask_others(hidraw, "hidraw");
  std::array<char, 64> name{};
  show("EVIOCGNAME", ioctl(event, EVIOCGNAME(64), name.data()));
  ask_others(event, "event");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("Usage: hid-probe HIDDEV HIDRAW EVENT; asks again, unplugged, when its input ends\n",
               stderr);
    return 2;
  }
  const int hiddev = open(argv[1], O_RDWR | O_NONBLOCK);
  const int hidraw = open(argv[2], O_RDWR | O_NONBLOCK);
  const int event = open(argv[3], O_RDWR | O_NONBLOCK);
  if (hiddev < 0 || hidraw < 0 || event < 0) {
    std::perror("hid-probe");
    return 1;
  }
  ask_hiddev(hiddev);
  ask_hidraw(hidraw);
  ask_event(event);
  std::puts("now unplug");
  std::fflush(stdout);
  while (getchar() != EOF) {
  }
  ask_after_unplug(hiddev, hidraw, event);
  return 0;
}
