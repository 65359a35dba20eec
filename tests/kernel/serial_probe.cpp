// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Asks a serial port, with a panel behind it or with nothing at all, what a host may ask, right and
// wrong, and prints what came back. Ports of the real kernel and of the virtual one must give the same text.
#include <fcntl.h>
#include <linux/hiddev.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

#include "answers.h"

namespace zelkora::probe {
namespace {

constexpr unsigned kReplyUs = 100'000;
constexpr std::string_view kWhoIsThere = "\x01ZZ\r";

void show_settings(const char* what, int fd) {
  termios settings{};
  show(what, tcgetattr(fd, &settings));
  std::printf("  iflag=%X oflag=%X cflag=%X lflag=%X line=%u characters", settings.c_iflag,
              settings.c_oflag, settings.c_cflag, settings.c_lflag, settings.c_line);
  for (size_t i = 0; i < 17; ++i) std::printf(" %X", settings.c_cc[i]);
  std::puts("");
}

void read_bytes(const char* what, int fd, size_t count) {
  std::array<uint8_t, 32> bytes{};
  const ssize_t result = read(fd, bytes.data(), count);
  show(what, result);
  for (ssize_t i = 0; i < result; ++i) {
    std::printf(i + 1 < result ? " %02X" : " %02X\n", bytes[static_cast<size_t>(i)]);
  }
}

void ask_panel(int fd) {
  show("write a question", write(fd, kWhoIsThere.data(), kWhoIsThere.size()));
  usleep(kReplyUs);
}

termios raw() {
  termios settings{};
  settings.c_cflag = B9600 | CS8 | CREAD | CLOCAL;
  settings.c_cc[VMIN] = 1;
  return settings;
}

void exchange(int fd) {
  show_poll("idle", fd);
  read_bytes("read nothing", fd, 10);
  ask_panel(fd);
  show_poll("with a reply", fd);
  read_bytes("read the reply", fd, 10);
  read_bytes("read more", fd, 10);
  ask_panel(fd);
  read_bytes("read two bytes", fd, 2);
  read_bytes("read no bytes", fd, 0);
  read_bytes("read the rest", fd, 10);
  show("write no bytes", write(fd, kWhoIsThere.data(), 0));
}

// What is left of a reply that waits.
void drop(int fd) {
  for (const int queue : {TCOFLUSH, TCIFLUSH, TCIOFLUSH, 7}) {
    ask_panel(fd);
    std::printf("%d: ", queue);
    show("tcflush", tcflush(fd, queue));
    read_bytes("read", fd, 10);
  }
  for (const int when : {TCSANOW, TCSADRAIN, TCSAFLUSH}) {
    ask_panel(fd);
    const termios settings = raw();
    std::printf("%d: ", when);
    show("tcsetattr", tcsetattr(fd, when, &settings));
    read_bytes("read", fd, 10);
  }
}

void set_up(int fd) {
  termios settings = raw();
  settings.c_iflag = INPCK | ISTRIP;
  settings.c_cflag = B38400 | CS7 | CSTOPB | PARENB | CREAD | HUPCL | CLOCAL;
  settings.c_cc[VMIN] = 0;
  settings.c_cc[VTIME] = 5;
  show("tcsetattr", tcsetattr(fd, TCSANOW, &settings));
  show_settings("tcgetattr", fd);
  settings = raw();
  show("tcsetattr", tcsetattr(fd, TCSANOW, &settings));
  show_settings("tcgetattr", fd);
}

void ask_wrong(int fd, const char* path) {
  hiddev_devinfo info{};
  show("a hiddev request", ioctl(fd, HIDIOCGDEVINFO, &info));
  show("seek", lseek(fd, 0, SEEK_SET));
  show("isatty", isatty(fd));
  const int reader = open(path, O_RDONLY | O_NOCTTY | O_NONBLOCK);
  show("write through a reader", write(reader, "x", 1));
  show_settings("its settings", reader);
  close(reader);
  const int writer = open(path, O_WRONLY | O_NOCTTY | O_NONBLOCK);
  read_bytes("read through a writer", writer, 1);
  close(writer);
}

// What is left of settings and replies when nobody has the port open.
int reopen(int fd, const char* path) {
  ask_panel(fd);
  const int other = open(path, O_RDWR | O_NOCTTY | O_NONBLOCK);
  close(fd);
  read_bytes("read behind the first close", other, 10);
  ask_panel(other);
  close(other);
  fd = open(path, O_RDWR | O_NOCTTY | O_NONBLOCK);
  read_bytes("read behind the last close", fd, 10);
  show_settings("tcgetattr", fd);
  return fd;
}

int run(const char* path) {
  int fd = open(path, O_RDWR | O_NOCTTY | O_NONBLOCK);
  if (fd < 0) {
    std::perror(path);
    return 1;
  }
  show_settings("as found", fd);
  const termios settings = raw();
  show("tcsetattr", tcsetattr(fd, TCSANOW, &settings));
  show_settings("tcgetattr", fd);
  exchange(fd);
  drop(fd);
  set_up(fd);
  exchange(fd);
  ask_wrong(fd, path);
  fd = reopen(fd, path);
  exchange(fd);
  return 0;
}

}  // namespace
}  // namespace zelkora::probe

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fputs("Usage: serial-probe PORT\n", stderr);
    return 2;
  }
  return zelkora::probe::run(argv[1]);
}
