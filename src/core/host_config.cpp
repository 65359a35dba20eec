// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "zelkora.h"

int GetTouchConf(int /*x*/) {
  DbgFlag = GetEnableDebug();
  if (Read_Config(MyConfig) != 0) return 1;
  // Bytes 5 to 7 keep what they held: a host may set them without answering Read_Config.
  constexpr int kCleared[] = {ZELKORA_CONFIG_RESISTIVE,       ZELKORA_CONFIG_NEW_PRODUCT_IDS,
                              ZELKORA_CONFIG_ALTERNATIVE_PCT, ZELKORA_CONFIG_IGNORE_LEGACY_PCT,
                              ZELKORA_CONFIG_NOTIFY_ARGUMENT, ZELKORA_CONFIG_NO_RES_HIDE_CURSOR};
  for (const int byte : kCleared) MyConfig[byte] = 0;
  return 0;
}

int InitialZelkora(int x) { return GetTouchConf(x); }
