/* SPDX-FileCopyrightText: 2026 The Zelkora authors
 * SPDX-License-Identifier: MIT
 *
 * What the sources of the preload library share.
 */
#ifndef ZELKORA_SIM_INTERPOSED_H
#define ZELKORA_SIM_INTERPOSED_H

#include <stdbool.h>
#include <stddef.h>

#include "protocol.h"

#define INTERPOSED __attribute__((visibility("default")))

/* Stores the function that would have been called without this library. */
void find_next(void* function, const char* name);

/* Whether the descriptor is an open virtual node. Leaves errno alone. */
bool is_virtual(int fd);

/* The runner never waits, so waiting for input is done here: it is asked again this often. */
enum { INPUT_POLL_MS = 20 };

/* The memory to send and the memory for the answer; they may be the same. */
struct Payload {
  const void* out;
  size_t out_size;
  void* in;
  size_t in_size;
};

/* One request to the runner about an open node: its result, as that of a system call. */
int exchange(int fd, struct SimRequest request, struct Payload payload);

#endif /* ZELKORA_SIM_INTERPOSED_H */
