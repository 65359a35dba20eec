// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "serial_node.h"

#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <utility>
#include <vector>

#include "request_name.h"

namespace zelkora::sim {
namespace {

// The numbers that the kernel gives to VTIME and VMIN are those of the C library.
static_assert(VTIME < KernelTermios::kControlCharacters);
static_assert(VMIN < KernelTermios::kControlCharacters);

KernelTermios read_settings(const void* memory) {
  KernelTermios settings;
  std::memcpy(&settings, memory, sizeof settings);
  return settings;
}

LineSettings line_settings(const KernelTermios& settings) {
  return {settings.input, settings.output,           settings.control,
          settings.local, settings.characters[VMIN], settings.characters[VTIME]};
}

}  // namespace

// What the kernel gives a port that nobody has set up: 9600 baud, 8N1, line by line with echo.
KernelTermios SerialNode::initial_settings() {
  KernelTermios settings{};
  settings.input = ICRNL | IXON;
  settings.output = OPOST | ONLCR;
  settings.control = B9600 | CS8 | CREAD | HUPCL | CLOCAL;
  settings.local = ISIG | ICANON | ECHO | ECHOE | ECHOK | ECHOCTL | ECHOKE | IEXTEN;
  constexpr std::pair<int, uint8_t> kCharacters[] = {
      {VINTR, 0x03},   {VQUIT, 0x1C},  {VERASE, 0x7F}, {VKILL, 0x15},    {VEOF, 0x04},
      {VMIN, 1},       {VSTART, 0x11}, {VSTOP, 0x13},  {VREPRINT, 0x12}, {VDISCARD, 0x0F},
      {VWERASE, 0x17}, {VLNEXT, 0x16}, {VSUSP, 0x1A},
  };
  for (const auto& [name, character] : kCharacters) settings.characters[name] = character;
  return settings;
}

int SerialNode::open() {
  if (!device_.opens()) return -EIO;
  ++descriptors_;
  return 0;
}

// A port that nobody has open keeps its settings, and nothing that came.
void SerialNode::close() {
  if (--descriptors_ == 0) device_.discard();
}

int SerialNode::ioctl(unsigned long request, void* argument) {
  if (!works()) return -EIO;
  switch (request) {
    case TCGETS:
      std::memcpy(argument, &settings_, sizeof settings_);
      return 0;
    case TCSETSF:
      device_.discard();
      [[fallthrough]];
    case TCSETSW:
    case TCSETS:
      set_up(argument);
      return 0;
    case TCFLSH:
      return flush(static_cast<int>(std::bit_cast<intptr_t>(argument)));
    default:
      return -ENOTTY;
  }
}

void SerialNode::set_up(const void* settings) {
  settings_ = read_settings(settings);
  device_.configure(line_settings(settings_));
}

// Nothing ever waits to go out.
int SerialNode::flush(int queue) {
  if (queue != TCIFLUSH && queue != TCOFLUSH && queue != TCIOFLUSH) return -EINVAL;
  if (queue != TCOFLUSH) device_.discard();
  return 0;
}

// A port that is gone hangs up: end of file for readers, errors for everything else.
ssize_t SerialNode::read(std::span<uint8_t> room) {
  if (gone()) return 0;
  if (!works()) return -EIO;
  if (room.empty()) return 0;
  const std::vector<uint8_t> bytes = device_.transmit(room.size());
  if (bytes.empty()) return -EAGAIN;
  std::ranges::copy(bytes, room.begin());
  return static_cast<ssize_t>(bytes.size());
}

ssize_t SerialNode::write(std::span<const uint8_t> bytes) {
  if (!works()) return -EIO;
  device_.receive(bytes);
  return static_cast<ssize_t>(bytes.size());
}

int SerialNode::poll() {
  constexpr int kIn = POLLIN | POLLRDNORM, kOut = POLLOUT | POLLWRNORM;
  if (gone()) return kIn | kOut | POLLERR | POLLHUP;
  if (!works()) return 0;
  return device_.has_bytes() ? kIn | kOut : kOut;
}

std::string SerialNode::describe(unsigned long request, const void* argument) const {
  switch (request) {
    case TCGETS:
      return "TCGETS";
    case TCSETS:
      return "TCSETS " + sim::describe(line_settings(read_settings(argument)));
    case TCSETSW:
      return "TCSETSW " + sim::describe(line_settings(read_settings(argument)));
    case TCSETSF:
      return "TCSETSF " + sim::describe(line_settings(read_settings(argument)));
    case TCFLSH:
      return "TCFLSH " + std::to_string(std::bit_cast<intptr_t>(argument));
    default:
      return unknown_request(request);
  }
}

}  // namespace zelkora::sim
