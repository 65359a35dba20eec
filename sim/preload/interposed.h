/* SPDX-FileCopyrightText: 2026 The Zelkora authors
 * SPDX-License-Identifier: MIT
 *
 * What the sources of the preload library share.
 */
#ifndef ZELKORA_SIM_INTERPOSED_H
#define ZELKORA_SIM_INTERPOSED_H

#include <stdbool.h>

#define INTERPOSED __attribute__((visibility("default")))

/* Stores the function that would have been called without this library. */
void find_next(void* function, const char* name);

/* Whether the descriptor is an open virtual node. Leaves errno alone. */
bool is_virtual(int fd);

#endif /* ZELKORA_SIM_INTERPOSED_H */
