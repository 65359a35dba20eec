// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A serial port, opened and set up for commands to the controller behind it.
#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

#include <cstdio>

#include "core/log.h"
#include "port_names.h"
#include "resistive/firmware_check.h"
#include "zelkora.h"

using zelkora::kTrace;

int init_rs232touch(const char* path) {
  fd = open(path, O_RDWR | O_NOCTTY | O_NONBLOCK);
  if (fd < 0) return 0;
  tcgetattr(fd, &oldtio);
  tcflush(fd, TCIFLUSH);
  // Raw, 9600 baud, 8 data bits, no parity, one stop bit; modem lines ignored.
  termios settings{};
  settings.c_cflag = B9600 | CS8 | CREAD | CLOCAL;
  settings.c_cc[VMIN] = 1;
  tcsetattr(fd, TCSANOW, &settings);
  return 1;
}

int OpenSerialDevice(const char* name) {
  DebugMsg(kTrace, "OpenSerialDevice %s device_type=%d\n", name, device_type);
  const zelkora::serial::PortName port{std::string_view(name)};
  if (!port.is_safe()) return 0;
  char path[sizeof "/dev/" + sizeof port.text];
  std::snprintf(path, sizeof path, "/dev/%s", port.text);
  if (init_rs232touch(path) == 0 || ChkDevExist() == 0) return 0;
  char firmware[20]{};
  // A controller that does not tell its version is taken for a supported one.
  if (GetFirmware(firmware) == 0) return 1;
  if (firmware[0] != '\0' && !zelkora::resistive::is_unsupported_firmware(firmware)) return 1;
  zelkora::resistive::log_unsupported_device();
  close(fd);
  return 0;
}
