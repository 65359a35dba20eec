/* SPDX-FileCopyrightText: 2026 The Zelkora authors
 * SPDX-License-Identifier: MIT
 *
 * What a process inside a session and the runner say to each other. Each open node has one
 * SOCK_SEQPACKET connection of its own; hanging up closes the node. A request is one message: this
 * header, then its data. The reply to it is one message: its header, then its data. Both sides run
 * on one machine, so numbers are in host order.
 */
#ifndef ZELKORA_SIM_PROTOCOL_H
#define ZELKORA_SIM_PROTOCOL_H

#include <assert.h>
#include <stdint.h>
#include <sys/ioctl.h>

/* Everything of a session that is no node lies in one directory of its private /dev, which no
 * process outside can see. */
#define ZELKORA_SIM_DIRECTORY "/dev/zelkora-sim"
#define ZELKORA_SIM_SOCKET_PATH ZELKORA_SIM_DIRECTORY "/socket"
#define ZELKORA_SIM_LIBRARY_PATH ZELKORA_SIM_DIRECTORY "/preload.so"
#define ZELKORA_SIM_COMMANDS_PATH ZELKORA_SIM_DIRECTORY "/bin" /* first in PATH */

/* Set in the environment: sleep() and usleep() return at once. */
#define ZELKORA_SIM_NO_WAITS_VARIABLE "ZELKORA_SIM_NO_WAITS"

enum {
  SIM_OPEN = 1,  /* data: the path of the node */
  SIM_IOCTL = 2, /* data: the memory that the argument points to, sim_request_size() */
  SIM_READ = 3,
  SIM_WRITE = 4, /* data: the bytes to write */
  SIM_QUERY = 5, /* data: words separated by one blank; needs no node */
  SIM_POLL = 7,  /* the result: what poll() would say at once */
  SIM_RUN = 6    /* data: a command, a NUL behind each word; needs no node */
};

/* The terminal settings as the kernel's requests carry them, which are not those of <termios.h>. */
struct SimTermios {
  uint32_t iflag;
  uint32_t oflag;
  uint32_t cflag;
  uint32_t lflag;
  uint8_t line;
  uint8_t cc[19];
};

/* The bytes of memory that a request reads or changes. Requests for terminals are older than the
 * sizes in request numbers. */
static inline uint32_t sim_request_size(unsigned long request) {
  switch (request) {
    case TCGETS:
    case TCSETS:
    case TCSETSW:
    case TCSETSF:
      return sizeof(struct SimTermios);
    default:
      return _IOC_SIZE(request);
  }
}

enum { SIM_MAX_DATA = 16384 }; /* an ioctl number has room for sizes below this one */

struct SimRequest {
  uint32_t operation; /* SIM_... */
  int32_t flags;      /* SIM_OPEN: as given to open() */
  uint64_t request;   /* SIM_IOCTL: the request number */
  uint64_t argument;  /* SIM_IOCTL: the argument of a request without memory; SIM_READ: bytes
                         wanted; SIM_QUERY: first byte of the answer wanted */
};

struct SimReply {
  int32_t result; /* of the system call, -errno for a failure; SIM_QUERY, SIM_RUN: an exit status */
  uint32_t length; /* SIM_QUERY: bytes of the whole answer, of which the data is a part */
};

/* The data of a reply: what SIM_IOCTL changed in the memory (nothing when it changed nothing, so
 * that memory which is only read may be read-only), the bytes that SIM_READ got, a text (of SIM_RUN as much as a
 * message holds). */

static_assert(sizeof(struct SimRequest) == 24, "the request header has no padding");
static_assert(sizeof(struct SimTermios) == 36, "the settings have the kernel's layout");
static_assert(sizeof(struct SimReply) == 8, "the reply header has no padding");

#endif /* ZELKORA_SIM_PROTOCOL_H */
