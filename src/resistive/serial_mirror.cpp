// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cstdio>

#include "core/log.h"
#include "core/open_file.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "core/text.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::paths::kSerialPanels;

namespace {

// The number under which the list names the active device, 0 when it does not.
int active_panel_number() {
  if (ActiveDevice < 1 || ActiveDevice > ZELKORA_MAX_DEVICES) return 0;
  const std::string_view name = zelkora::field_text(TouchDevice[ActiveDevice - 1].Name);
  for (int number = 1; number <= ZELKORA_MAX_SERIAL; ++number) {
    char key[sizeof "SerialDevice1"];
    std::snprintf(key, sizeof key, "SerialDevice%d", number);
    char port[36];
    if (get_conf_option_str(kSerialPanels, key, port) != 0 && zelkora::contains(port, name)) {
      return number;
    }
  }
  return 0;
}

}  // namespace

void SetSerConf(const char* key_stem, unsigned int value) {
  DebugMsg(kTrace, "SetSerConf KeyName:%s\n", key_stem);
  if (!zelkora::ScopedFile(zelkora::open_file(kSerialPanels, "r"))) {
    DebugMsg(kTrace, "Open %s\n", kSerialPanels);
    zelkora::debug_perror("can't open serial config file:");
    return;
  }
  const int number = active_panel_number();
  if (number == 0) return;
  char key[64];
  std::snprintf(key, sizeof key, "%s%d", key_stem, number);
  set_conf_option(kSerialPanels, key, static_cast<int>(value));
}
