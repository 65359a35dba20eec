/* SPDX-FileCopyrightText: 2026 The Zelkora authors
 * SPDX-License-Identifier: MIT
 *
 * poll() with virtual nodes among its descriptors: the runner says what is possible on a node, since
 * the socket that leads there does not know.
 */
#define _GNU_SOURCE
#include <errno.h>
#include <poll.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "interposed.h"
#include "protocol.h"

static int (*next_poll)(struct pollfd*, nfds_t, int);

static long milliseconds_now(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return now.tv_sec * 1000L + now.tv_nsec / 1000000;
}

/* Fills in the nodes and hides them from the kernel. Returns how many have something to tell. */
static int poll_nodes(struct pollfd* fds, struct pollfd* others, nfds_t count) {
  int ready = 0;
  for (nfds_t i = 0; i < count; ++i) {
    if (fds[i].fd < 0 || !is_virtual(fds[i].fd)) continue;
    others[i].fd = -1;
    const struct SimRequest request = {.operation = SIM_POLL};
    const int possible = exchange(fds[i].fd, request, (struct Payload){0});
    fds[i].revents =
        (short)(possible < 0 ? POLLERR | POLLHUP : possible & (fds[i].events | POLLERR | POLLHUP));
    ready += fds[i].revents != 0;
  }
  return ready;
}

/* Asks everybody once, and waits on the others for this long unless a node is ready. */
static int poll_once(struct pollfd* fds, struct pollfd* others, nfds_t count, int timeout) {
  memcpy(others, fds, count * sizeof *fds);
  const int nodes = poll_nodes(fds, others, count);
  const int rest = next_poll(others, count, nodes > 0 ? 0 : timeout);
  if (rest < 0) return rest;
  for (nfds_t i = 0; i < count; ++i) {
    if (others[i].fd >= 0 || fds[i].fd < 0) fds[i].revents = others[i].revents;
  }
  return nodes + rest;
}

static bool any_virtual(const struct pollfd* fds, nfds_t count) {
  for (nfds_t i = 0; i < count; ++i) {
    if (fds[i].fd >= 0 && is_virtual(fds[i].fd)) return true;
  }
  return false;
}

INTERPOSED int poll(struct pollfd* fds, nfds_t count, int timeout) {
  if (next_poll == NULL) find_next(&next_poll, "poll");
  if (!any_virtual(fds, count)) return next_poll(fds, count, timeout);
  struct pollfd* others = malloc(count * sizeof *fds);
  if (others == NULL) {
    errno = ENOMEM;
    return -1;
  }
  const long end = milliseconds_now() + timeout + 1; /* a millisecond that has begun is not over */
  int ready = 0;
  for (;;) {
    const long left = timeout < 0 ? INPUT_POLL_MS : end - milliseconds_now();
    ready = poll_once(fds, others, count,
                      left < 0 ? 0 : (int)(left < INPUT_POLL_MS ? left : INPUT_POLL_MS));
    if (ready != 0 || left <= 0) break;
  }
  free(others);
  return ready;
}
