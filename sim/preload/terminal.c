/* SPDX-FileCopyrightText: 2026 The Zelkora authors
 * SPDX-License-Identifier: MIT
 *
 * Terminal settings of the virtual serial ports. The C library turns these calls into requests
 * without passing through ioctl(), and so does this file, in its place.
 */
#define _GNU_SOURCE
#include <errno.h>
#include <stddef.h>
#include <string.h>
#include <sys/ioctl.h>
#include <termios.h>

#include "interposed.h"
#include "protocol.h"

INTERPOSED int tcgetattr(int fd, struct termios* settings) {
  static int (*next)(int, struct termios*);
  if (!is_virtual(fd)) {
    if (next == NULL) find_next(&next, "tcgetattr");
    return next(fd, settings);
  }
  struct SimTermios kernel;
  if (ioctl(fd, TCGETS, &kernel) != 0) return -1;
  *settings = (struct termios){.c_iflag = kernel.iflag,
                               .c_oflag = kernel.oflag,
                               .c_cflag = kernel.cflag,
                               .c_lflag = kernel.lflag,
                               .c_line = kernel.line};
  memcpy(settings->c_cc, kernel.cc, sizeof kernel.cc);
  settings->c_ispeed = settings->c_ospeed = kernel.cflag & CBAUD;
  return 0;
}

static unsigned long set_request(int when) {
  if (when == TCSANOW) return TCSETS;
  if (when == TCSADRAIN) return TCSETSW;
  return when == TCSAFLUSH ? TCSETSF : 0;
}

INTERPOSED int tcsetattr(int fd, int when, const struct termios* settings) {
  static int (*next)(int, int, const struct termios*);
  if (!is_virtual(fd)) {
    if (next == NULL) find_next(&next, "tcsetattr");
    return next(fd, when, settings);
  }
  const unsigned long request = set_request(when);
  if (request == 0) {
    errno = EINVAL;
    return -1;
  }
  struct SimTermios kernel = {.iflag = settings->c_iflag,
                              .oflag = settings->c_oflag,
                              .cflag = settings->c_cflag,
                              .lflag = settings->c_lflag,
                              .line = settings->c_line};
  memcpy(kernel.cc, settings->c_cc, sizeof kernel.cc);
  return ioctl(fd, request, &kernel);
}

INTERPOSED int tcflush(int fd, int queue) {
  static int (*next)(int, int);
  if (is_virtual(fd)) return ioctl(fd, TCFLSH, queue);
  if (next == NULL) find_next(&next, "tcflush");
  return next(fd, queue);
}

INTERPOSED int isatty(int fd) {
  static int (*next)(int);
  struct termios settings;
  if (is_virtual(fd)) return tcgetattr(fd, &settings) == 0;
  if (next == NULL) find_next(&next, "isatty");
  return next(fd);
}
