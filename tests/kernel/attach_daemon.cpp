// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Stands in for the attach daemon of a serial panel: holds the port and takes whatever the
// controller sends, so that nobody else hears it. Installed as vastrel1, vastrel2 and so on.
//
// Usage: vastrelN -morlex [--daemon] PORT
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>

namespace {

int fail(const char* what) {
  std::perror(what);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  const bool background = argc == 4 && std::strcmp(argv[2], "--daemon") == 0;
  if ((argc != 3 && !background) || std::strcmp(argv[1], "-morlex") != 0) {
    std::fputs("Usage: vastrelN -morlex [--daemon] PORT\n", stderr);
    return 2;
  }
  const char* path = argv[argc - 1];
  const int port = open(path, O_RDWR | O_NOCTTY);
  if (port < 0) return fail(path);
  // Without an echo: the controller would hear itself.
  termios settings{};
  if (tcgetattr(port, &settings) != 0) return fail(path);
  cfmakeraw(&settings);
  if (tcsetattr(port, TCSANOW, &settings) != 0) return fail(path);
  if (background && daemon(0, 0) != 0) return fail("daemon");
  std::array<char, 64> bytes;
  while (read(port, bytes.data(), bytes.size()) > 0) {
  }
  return fail(path);
}
