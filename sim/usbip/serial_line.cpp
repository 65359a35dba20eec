// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "serial_line.h"

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <utility>
#include <vector>

namespace zelkora::sim {
namespace {

std::runtime_error failure(const std::string& what) {
  return std::runtime_error(what + ": " + std::strerror(errno));
}

}  // namespace

SerialLine::SerialLine(SerialDevice& device, std::string path)
    : device_(device), path_(std::move(path)) {
  plug();
}

void SerialLine::plug() {
  descriptor_ = open(path_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor_ < 0) throw failure(path_);
  try {
    set_up();
  } catch (...) {
    unplug();
    throw;
  }
}

void SerialLine::set_up() const {
  termios settings{};
  if (tcgetattr(descriptor_, &settings) != 0) throw failure(path_);
  cfmakeraw(&settings);
  cfsetspeed(&settings, B9600);
  settings.c_cflag |= CREAD | CLOCAL;
  settings.c_cflag &= ~static_cast<tcflag_t>(CSTOPB | HUPCL | CRTSCTS);
  if (tcsetattr(descriptor_, TCSAFLUSH, &settings) != 0) throw failure(path_);
}

void SerialLine::serve() {
  std::array<uint8_t, 256> room;
  const ssize_t count = read(descriptor_, room.data(), room.size());
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return;
  if (count <= 0) return unplug();  // the terminal is gone
  device_.receive({room.data(), static_cast<size_t>(count)});
  const std::vector<uint8_t> answer = device_.transmit(room.size());
  const auto size = static_cast<ssize_t>(answer.size());
  if (write(descriptor_, answer.data(), answer.size()) != size) throw failure(path_);
}

void SerialLine::unplug() {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
}

}  // namespace zelkora::sim
