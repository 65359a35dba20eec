/* SPDX-FileCopyrightText: 2026 The Zelkora authors
 * SPDX-License-Identifier: MIT
 *
 * A host with X: prints the screens, then sends one notification and prints what came of it. */
#include <X11/Xlib.h>
#include <stdio.h>
#include <zelkora.h>

unsigned char Read_Config(unsigned char* config) {
  config[ZELKORA_CONFIG_NOTIFY_ARGUMENT] = 200;
  return 1;
}

int GetEnableDebug(void) { return 0; }

void mydoled_all_display(void* display, unsigned int request, int config) {
  XSync(display, False); /* the connection works */
  printf("request 0x%X %d %s\n", request, config, DisplayString((Display*)display));
}

int main(void) {
  char buffers[ZELKORA_MAX_SCREENS][ZELKORA_SCREEN_LINE];
  char* lines[ZELKORA_MAX_SCREENS];
  for (int i = 0; i < ZELKORA_MAX_SCREENS; ++i) lines[i] = buffers[i];
  const int count = get_screen_list(lines);
  printf("%d screens\n", count);
  for (int i = 0; i < count; ++i) printf("%s", lines[i]);
  InitialZelkora(0);
  printf("result %d\n", SendPCTConfigChange());
  return 0;
}
