/* SPDX-FileCopyrightText: 2026 The Zelkora authors
 * SPDX-License-Identifier: MIT
 *
 * Loaded into every process of a session by LD_PRELOAD: calls on the virtual nodes become messages
 * to the runner, all others go on to the C library.
 *
 * A node is an empty placeholder file in the session's /dev. It is opened for real first, so that
 * paths, links and permissions mean what they always mean; a connection to the runner then takes
 * the place of the descriptor. close(), dup() and fork() need no help from here.
 */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdbool.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include "interposed.h"

void find_next(void* function, const char* name) {
  void* symbol = dlsym(RTLD_NEXT, name);
  if (symbol == NULL) abort();
  memcpy(function, &symbol, sizeof symbol);
}

/* ---- Which descriptors are virtual ---------------------------------------------------------- */

/* Descriptors seen to be ordinary ones. All others are asked whom they are connected to, so that
 * one inherited over exec() is known without being told. */
enum { REMEMBERED = 4096 };
static _Atomic bool ordinary[REMEMBERED];

static void forget(int fd) {
  if (fd >= 0 && fd < REMEMBERED) ordinary[fd] = false;
}

static const struct sockaddr_un runner_address = {.sun_family = AF_UNIX,
                                                  .sun_path = ZELKORA_SIM_SOCKET_PATH};

static bool leads_to_runner(int fd) {
  struct sockaddr_un peer = {.sun_family = AF_UNSPEC};
  socklen_t size = sizeof peer;
  return getpeername(fd, (struct sockaddr*)&peer, &size) == 0 && peer.sun_family == AF_UNIX &&
         strncmp(peer.sun_path, runner_address.sun_path, sizeof peer.sun_path) == 0;
}

bool is_virtual(int fd) {
  if (fd < 0 || (fd < REMEMBERED && ordinary[fd])) return false;
  const int error = errno;
  const bool result = leads_to_runner(fd);
  errno = error;
  if (!result && fd < REMEMBERED) ordinary[fd] = true;
  return result;
}

/* ---- One request, one reply ----------------------------------------------------------------- */

static pthread_mutex_t exchange_lock = PTHREAD_MUTEX_INITIALIZER;

/* Sends or receives one message. The host may have made the descriptor non-blocking; the exchange
 * with the runner blocks all the same, as a request to a kernel does. */
static ssize_t transfer(int fd, struct msghdr* message, bool sending) {
  for (;;) {
    const ssize_t count =
        sending ? sendmsg(fd, message, MSG_NOSIGNAL) : recvmsg(fd, message, MSG_CMSG_CLOEXEC);
    if (count >= 0 || (errno != EINTR && errno != EAGAIN)) return count;
    struct pollfd ready = {.fd = fd, .events = sending ? POLLOUT : POLLIN};
    if (errno == EAGAIN) ppoll(&ready, 1, NULL, NULL);
  }
}

/* The result of a system call. The caller's own pointers are handed to the kernel, so a bad one
 * fails with EFAULT here as it does there. */
int exchange(int fd, struct SimRequest request, struct Payload payload) {
  struct SimReply reply = {.result = -ENODEV};
  struct iovec sent[] = {{&request, sizeof request}, {(void*)payload.out, payload.out_size}};
  struct iovec received[] = {{&reply, sizeof reply}, {payload.in, payload.in_size}};
  struct msghdr send_message = {.msg_iov = sent, .msg_iovlen = 2};
  struct msghdr receive_message = {.msg_iov = received, .msg_iovlen = 2};

  pthread_mutex_lock(&exchange_lock);
  ssize_t count = transfer(fd, &send_message, true);
  if (count >= 0) count = transfer(fd, &receive_message, false);
  const int error = errno;
  pthread_mutex_unlock(&exchange_lock);

  if (count < 0 && error == EFAULT) {
    reply.result = -EFAULT;
  } else if (count < (ssize_t)sizeof reply) {
    reply.result = -ENODEV; /* the session is over and its devices are gone */
  }
  /* As in the C library: only so many negative results are failures. */
  if (reply.result >= 0 || reply.result < -4095) return reply.result;
  errno = -reply.result;
  return -1;
}

/* ---- Opening -------------------------------------------------------------------------------- */

static bool is_placeholder(int fd) {
  struct stat file;
  struct stat directory;
  return fstat(fd, &file) == 0 && S_ISREG(file.st_mode) && stat("/dev", &directory) == 0 &&
         file.st_dev == directory.st_dev;
}

/* Connects to the runner and opens the node. -1 with ENOENT: the runner knows no such node. */
static int open_node(const char* path, int flags) {
  const int fd = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  if (connect(fd, (const struct sockaddr*)&runner_address, sizeof runner_address) != 0) {
    close(fd);
    errno = ENODEV;
    return -1;
  }
  const struct SimRequest request = {.operation = SIM_OPEN, .flags = flags};
  const struct Payload payload = {.out = path, .out_size = strlen(path)};
  if (exchange(fd, request, payload) == 0) return fd;
  const int error = errno;
  close(fd);
  errno = error;
  return -1;
}

/* Puts the node in the place of its placeholder, under the same descriptor. */
static int replace_placeholder(int placeholder, int flags) {
  char link[32];
  char path[PATH_MAX];
  snprintf(link, sizeof link, "/proc/self/fd/%d", placeholder);
  const ssize_t length = readlink(link, path, sizeof path - 1);
  if (length < 0) return placeholder;
  path[length] = '\0';

  const int node = open_node(path, flags);
  if (node < 0) {
    const int error = errno;
    if (error == ENOENT) return placeholder; /* an ordinary file that somebody put into /dev */
    close(placeholder);
    errno = error;
    return -1;
  }
  if ((flags & O_NONBLOCK) != 0) fcntl(node, F_SETFL, O_NONBLOCK);
  dup3(node, placeholder, flags & O_CLOEXEC);
  close(node);
  return placeholder;
}

static int open_any(int directory, const char* path, int flags, mode_t mode) {
  static int (*next)(int, const char*, int, ...);
  if (next == NULL) find_next(&next, "openat");
  const int fd = next(directory, path, flags, mode);
  if (fd < 0) return fd;
  forget(fd);
  if ((flags & O_PATH) != 0) return fd;
  const int error = errno;
  const int result = is_placeholder(fd) ? replace_placeholder(fd, flags) : fd;
  if (result >= 0) errno = error;
  return result;
}

static bool takes_mode(int flags) {
  return (flags & O_CREAT) != 0 || (flags & O_TMPFILE) == O_TMPFILE;
}

INTERPOSED int open(const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = takes_mode(flags) ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return open_any(AT_FDCWD, path, flags, mode);
}

INTERPOSED int openat(int directory, const char* path, int flags, ...) {
  va_list arguments;
  va_start(arguments, flags);
  const mode_t mode = takes_mode(flags) ? va_arg(arguments, mode_t) : 0;
  va_end(arguments);
  return open_any(directory, path, flags, mode);
}

/* Files are 64 bits wide anyway on the machines this library runs on. */
INTERPOSED int open64(const char* path, int flags, ...) __attribute__((alias("open")));
INTERPOSED int openat64(int directory, const char* path, int flags, ...)
    __attribute__((alias("openat")));

/* What programs built with fortified headers call when they create nothing. */
INTERPOSED int __open_2(const char* path, int flags) { return open_any(AT_FDCWD, path, flags, 0); }
INTERPOSED int __open64_2(const char* path, int flags) __attribute__((alias("__open_2")));
INTERPOSED int __openat_2(int directory, const char* path, int flags) {
  return open_any(directory, path, flags, 0);
}
INTERPOSED int __openat64_2(int directory, const char* path, int flags)
    __attribute__((alias("__openat_2")));

/* ---- Calls on descriptors ------------------------------------------------------------------- */

/* Requests that the kernel itself answers, whatever the descriptor leads to. */
static bool is_about_descriptor(unsigned long request) {
  return request == FIOCLEX || request == FIONCLEX || request == FIONBIO || request == FIOASYNC;
}

INTERPOSED int ioctl(int fd, unsigned long request, ...) {
  static int (*next)(int, unsigned long, ...);
  va_list arguments;
  va_start(arguments, request);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  if (is_about_descriptor(request) || !is_virtual(fd)) {
    if (next == NULL) find_next(&next, "ioctl");
    return next(fd, request, argument);
  }
  const size_t size = sim_request_size(request);
  const struct SimRequest message = {.operation = SIM_IOCTL,
                                     .request = request & UINT32_MAX,
                                     .argument = size == 0 ? (uintptr_t)argument : 0};
  return exchange(fd, message, (struct Payload){argument, size, argument, size});
}

INTERPOSED ssize_t read(int fd, void* room, size_t size) {
  static ssize_t (*next)(int, void*, size_t);
  if (!is_virtual(fd)) {
    if (next == NULL) find_next(&next, "read");
    return next(fd, room, size);
  }
  if (size > SIM_MAX_DATA) size = SIM_MAX_DATA;
  const struct SimRequest message = {.operation = SIM_READ, .argument = size};
  for (;;) {
    const ssize_t count = exchange(fd, message, (struct Payload){.in = room, .in_size = size});
    if (count >= 0 || errno != EAGAIN || (fcntl(fd, F_GETFL) & O_NONBLOCK) != 0) return count;
    const struct timespec pause = {.tv_nsec = INPUT_POLL_MS * 1000000L};
    if (nanosleep(&pause, NULL) < 0) return -1;
  }
}

INTERPOSED ssize_t __read_chk(int fd, void* room, size_t size, size_t room_size) {
  if (size > room_size) abort();
  return read(fd, room, size);
}

INTERPOSED ssize_t write(int fd, const void* bytes, size_t size) {
  static ssize_t (*next)(int, const void*, size_t);
  if (!is_virtual(fd)) {
    if (next == NULL) find_next(&next, "write");
    return next(fd, bytes, size);
  }
  if (size > SIM_MAX_DATA) size = SIM_MAX_DATA;
  const struct SimRequest message = {.operation = SIM_WRITE};
  return exchange(fd, message, (struct Payload){.out = bytes, .out_size = size});
}

INTERPOSED int dup2(int fd, int copy) {
  static int (*next)(int, int);
  if (next == NULL) find_next(&next, "dup2");
  const int result = next(fd, copy);
  forget(result);
  return result;
}

INTERPOSED int dup3(int fd, int copy, int flags) {
  static int (*next)(int, int, int);
  if (next == NULL) find_next(&next, "dup3");
  const int result = next(fd, copy, flags);
  forget(result);
  return result;
}

INTERPOSED int dup(int fd) {
  static int (*next)(int);
  if (next == NULL) find_next(&next, "dup");
  const int result = next(fd);
  forget(result);
  return result;
}

/* Every argument there is, number or pointer, passes through a pointer unharmed. */
INTERPOSED int fcntl(int fd, int command, ...) {
  static int (*next)(int, int, ...);
  if (next == NULL) find_next(&next, "fcntl");
  va_list arguments;
  va_start(arguments, command);
  void* argument = va_arg(arguments, void*);
  va_end(arguments);
  const int result = next(fd, command, argument);
  if (command == F_DUPFD || command == F_DUPFD_CLOEXEC) forget(result);
  return result;
}

INTERPOSED int fcntl64(int fd, int command, ...) __attribute__((alias("fcntl")));

/* ---- Waiting -------------------------------------------------------------------------------- */

INTERPOSED int usleep(useconds_t microseconds) {
  static int (*next)(useconds_t);
  if (getenv(ZELKORA_SIM_NO_WAITS_VARIABLE) != NULL) return 0;
  if (next == NULL) find_next(&next, "usleep");
  return next(microseconds);
}

INTERPOSED unsigned sleep(unsigned seconds) {
  static unsigned (*next)(unsigned);
  if (getenv(ZELKORA_SIM_NO_WAITS_VARIABLE) != NULL) return 0;
  if (next == NULL) find_next(&next, "sleep");
  return next(seconds);
}
