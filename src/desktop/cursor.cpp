// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the host's configuration says about hiding the cursor.
#include "zelkora.h"

int get_en_hide_cursor(int x) {
  GetTouchConf(x);
  return MyConfig[ZELKORA_CONFIG_HIDE_CURSOR];
}

int get_dis_res_hide_cursor(int x) {
  GetTouchConf(x);
  return MyConfig[ZELKORA_CONFIG_NO_RES_HIDE_CURSOR];
}
