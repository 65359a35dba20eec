// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hidraw_questions.h"

#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <string>

#include "answers.h"
#include "node_questions.h"

namespace zelkora::probe {
namespace {

using Report = std::array<uint8_t, 1024>;

// One exchange as a host does it: sent in the length that the device knows, asked for in any.
void exchange(int fd, const Exchange& wanted, unsigned size, unsigned pause_us = 0) {
  const std::string label = std::string(wanted.name) + ' ' + std::to_string(size);
  Report report{};
  std::ranges::copy(wanted.command, report.begin());
  show(label + " HIDIOCSFEATURE", ioctl(fd, HIDIOCSFEATURE(64), report.data()));
  usleep(pause_us);
  report = {wanted.reply};
  if (show(label + " HIDIOCGFEATURE", ioctl(fd, HIDIOCGFEATURE(size), report.data()))) {
    std::printf(" %s\n", hex(report).c_str());
  }
}

// Commands shorter and longer than the report.
void ask_lengths(int fd, const Exchange& wanted) {
  for (const unsigned size : {0u, 1u, 2u, 5u, 6u, 63u, 65u, 512u}) {
    Report report{};
    std::ranges::copy(wanted.command, report.begin());
    const std::string label = "HIDIOCSFEATURE " + std::to_string(size);
    show(label, ioctl(fd, HIDIOCSFEATURE(size), report.data()));
    report = {wanted.reply};
    if (show(label + " answered", ioctl(fd, HIDIOCGFEATURE(64), report.data()))) {
      std::printf(" %s\n", hex(report).c_str());
    }
  }
}

void ask_ids(int fd, const char* name, unsigned long request) {
  Answers answers(std::string(name) + " of report");
  for (unsigned id = 0; id < 256; id += id == 0x0F ? 0xE1 : 1) {
    Report report{static_cast<uint8_t>(id)};
    std::string answer = outcome(ioctl(fd, request, report.data()));
    answers.add(id, answer + hex(std::span(report).subspan(1)));
  }
}

void ask_description(int fd) {
  int size = 0;
  show("HIDIOCGRDESCSIZE", ioctl(fd, HIDIOCGRDESCSIZE, &size));
  std::printf("  %d\n", size);
  const auto description = std::make_unique<hidraw_report_descriptor>();
  for (const int room : {0, 5, size, HID_MAX_DESCRIPTOR_SIZE, HID_MAX_DESCRIPTOR_SIZE + 1}) {
    *description = {static_cast<unsigned>(room), {}};
    show("HIDIOCGRDESC", ioctl(fd, HIDIOCGRDESC, description.get()));
    std::printf(" %s\n", hex(description->value).c_str());
  }
}

}  // namespace

void ask_hidraw(int fd) {
  // What hiddev asked for is input here.
  ask_others(fd, "hidraw");
  hidraw_devinfo info{};
  show("HIDIOCGRAWINFO", ioctl(fd, HIDIOCGRAWINFO, &info));
  std::printf("  bus type %u vendor %d product %d\n", info.bustype, info.vendor, info.product);
  ask_text(fd, "HIDIOCGRAWNAME", HIDIOCGRAWNAME(0), false);
  ask_text(fd, "HIDIOCGRAWPHYS", HIDIOCGRAWPHYS(0), true);
  ask_text(fd, "HIDIOCGRAWUNIQ", HIDIOCGRAWUNIQ(0), false);
  ask_description(fd);
  ask_ids(fd, "HIDIOCGFEATURE", HIDIOCGFEATURE(64));
  ask_ids(fd, "HIDIOCSFEATURE", HIDIOCSFEATURE(64));
  Report report{0xF2};
  const bool is_pct = ioctl(fd, HIDIOCGFEATURE(64), report.data()) >= 0;
  for (const Exchange& wanted : exchanges(is_pct)) {
    for (const unsigned size : {64u, 65u, 512u, 5u, 2u, 1u, 0u}) exchange(fd, wanted, size);
  }
  ask_lengths(fd, exchanges(is_pct)[1]);
  for (const unsigned id : {0u, 1u, 2u, 6u}) {
    report = {static_cast<uint8_t>(id)};
    const std::string which = " of report " + std::to_string(id);
    show("HIDIOCGINPUT" + which, ioctl(fd, HIDIOCGINPUT(64), report.data()));
    show("HIDIOCSINPUT" + which, ioctl(fd, HIDIOCSINPUT(64), report.data()));
    show("HIDIOCGOUTPUT" + which, ioctl(fd, HIDIOCGOUTPUT(64), report.data()));
    show("HIDIOCSOUTPUT" + which, ioctl(fd, HIDIOCSOUTPUT(64), report.data()));
  }
  ask_others(fd, "hidraw");
}

// Which panel it is, the kernel knows: each request to it counts here.
void exchange_over_hidraw(int fd) {
  constexpr int16_t kPctVendor = 0x2575;
  hidraw_devinfo info{};
  show("HIDIOCGRAWINFO", ioctl(fd, HIDIOCGRAWINFO, &info));
  exchange(fd, exchanges(info.vendor == kPctVendor)[0], 64, kNoticedUs);
}

void ask_unplugged_hidraw(int fd) {
  Report report{1};
  show("HIDIOCSFEATURE", ioctl(fd, HIDIOCSFEATURE(64), report.data()));
  show("HIDIOCGFEATURE", ioctl(fd, HIDIOCGFEATURE(64), report.data()));
  show("HIDIOCGFEATURE 1", ioctl(fd, HIDIOCGFEATURE(1), report.data()));
  show("HIDIOCGRAWINFO", ioctl(fd, HIDIOCGRAWINFO, report.data()));
  show("HIDIOCGRAWNAME", ioctl(fd, HIDIOCGRAWNAME(64), report.data()));
  ask_others(fd, "hidraw");
}

}  // namespace zelkora::probe
