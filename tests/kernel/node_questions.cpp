// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "node_questions.h"

#include <fcntl.h>
#include <linux/hiddev.h>
#include <linux/hidraw.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <string_view>

#include "answers.h"

namespace zelkora::probe {
namespace {

constexpr uint8_t kFirmware[] = {0x01, 0x04, 0x01, 'O', 'I', 0x0D};
constexpr uint8_t kReadValue[] = {0x01, 0x06, 0x01, 'G', 'P', '5', '6', 0x0D};
constexpr uint8_t kUnknown[] = {0x01, 0x04, 0x01, 'X', 'X', 0x0D};
constexpr uint8_t kLongLength[] = {0x01, 0xFF, 0x01, 'O', 'I', 0x0D};
constexpr Exchange kResistive[] = {
    {"firmware", kFirmware, 0x01},
    {"value", kReadValue, 0x01},
    {"silence", kUnknown, 0x01},
    {"too long", kLongLength, 0x01},
};

constexpr uint8_t kMode[] = {0x06, 0x73, 0x0C};
constexpr uint8_t kCommandMode[] = {0x08, 0x91, 0x02, 0x00, 0x82, 0x90};
constexpr uint8_t kNormalMode[] = {0x08, 0x91, 0x02, 0x00, 0x82, 0x01};
constexpr uint8_t kFlash[] = {0x06, 0xA1, 0x22};
constexpr uint8_t kPosConfig[] = {0x06, 0xA2, 0x10};
constexpr uint8_t kUsbId[] = {0xF3, 0x04, 0x00, 0x02};
constexpr uint8_t kUnknownPct[] = {0x06, 0xEE};
constexpr Exchange kPct[] = {
    {"identity", kUnknownPct, 0xF2},    {"mode", kMode, 0x07},
    {"closed flash", kFlash, 0x07},     {"command mode", kCommandMode, 0xF2},
    {"command mode told", kMode, 0x07}, {"flash", kFlash, 0x07},
    {"POS", kPosConfig, 0x07},          {"USB id", kUsbId, 0xF3},
    {"normal mode", kNormalMode, 0xF2}, {"silence", kUnknownPct, 0x07},
    {"command report", kMode, 0x08},    {"query report", kMode, 0x06},
};

}  // namespace

std::span<const Exchange> exchanges(bool is_pct) {
  if (is_pct) return kPct;
  return kResistive;
}

void ask_text(int fd, const char* name, unsigned long request, bool is_phys) {
  for (const unsigned size : {0u, 6u, 256u}) {
    std::array<char, 256> text{};
    const unsigned long sized = _IOC(_IOC_READ, _IOC_TYPE(request), _IOC_NR(request), size);
    const long result = ioctl(fd, sized, text.data());
    if (result >= 0 && is_phys && size == 256) {
      const std::string_view phys(text.data());
      const bool whole = static_cast<size_t>(result) == phys.size() + 1;
      const std::string_view interface = phys.substr(std::min(phys.rfind('/'), phys.size()));
      std::printf("%s 256 -> %s, ends in %s\n", name,
                  whole ? "its length and one" : "another length", interface.data());
      continue;
    }
    if (show(std::string(name) + ' ' + std::to_string(size), result) && !is_phys) {
      std::printf("  \"%.*s\"\n", static_cast<int>(result), text.data());
    }
  }
}

void ask_others(int fd, const char* node) {
  const std::string name = node;
  std::array<uint8_t, 64> bytes{};
  show_poll(name, fd);
  show(name + " read", read(fd, bytes.data(), bytes.size()));
  show(name + " read of 1 byte", read(fd, bytes.data(), 1));
  show(name + " read of nothing", read(fd, bytes.data(), 0));
  show(name + " write", write(fd, bytes.data(), bytes.size()));
  show(name + " write of 1 byte", write(fd, bytes.data(), 1));
  show(name + " write of nothing", write(fd, bytes.data(), 0));
  constexpr std::pair<const char*, unsigned long> kRequests[] = {
      {"unknown request", _IOR('H', 0x7E, int)},
      {"unknown write", _IOW('H', 0x7E, int)},
      {"unknown event request", _IOR('E', 0x0E, int)},
      {"sizeless request", _IO('H', 0x7E)},
      {"terminal request", _IO('T', 1)},
      {"request 0", 0},
  };
  for (const auto& [what, number] : kRequests) {
    show(name + ' ' + what, ioctl(fd, number, bytes.data()));
  }
  show(name + " isatty", isatty(fd));
}

void ask_opens(const char* path, const char* node) {
  constexpr std::pair<const char*, int> kFlags[] = {
      {" O_RDONLY", O_RDONLY},
      {" O_WRONLY", O_WRONLY},
      {" O_RDWR|O_NOCTTY|O_CLOEXEC", O_RDWR | O_NOCTTY | O_CLOEXEC},
      {" O_CREAT", O_RDWR | O_CREAT},
      {" O_CREAT|O_EXCL", O_RDWR | O_CREAT | O_EXCL},
      {" O_TRUNC", O_RDWR | O_TRUNC},
      {" O_APPEND", O_RDWR | O_APPEND},
      {" O_DIRECTORY", O_RDONLY | O_DIRECTORY},
  };
  for (const auto& [name, flags] : kFlags) {
    const std::string label = node + std::string(name);
    const int fd = open(path, flags | O_NONBLOCK, 0600);
    if (fd < 0) {
      show(label, fd);
      continue;
    }
    std::printf("%s -> opened\n", label.c_str());
    std::array<uint8_t, 64> bytes{};
    show(label + " read", read(fd, bytes.data(), bytes.size()));
    show(label + " write", write(fd, bytes.data(), 1));
    // One of these is for the node.
    show(label + " HIDIOCGVERSION", ioctl(fd, HIDIOCGVERSION, bytes.data()));
    show(label + " HIDIOCGRAWINFO", ioctl(fd, HIDIOCGRAWINFO, bytes.data()));
    show(label + " EVIOCGVERSION", ioctl(fd, EVIOCGVERSION, bytes.data()));
    close(fd);
  }
}

}  // namespace zelkora::probe
