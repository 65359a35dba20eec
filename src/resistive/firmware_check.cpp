// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "firmware_check.h"

#include <unistd.h>

#include "core/log.h"
#include "core/text.h"
#include "zelkora.h"

namespace zelkora::resistive {

bool is_unsupported_firmware(const char* text) { return contains(text, "V3.0"); }

void log_unsupported_device() {
  DebugMsg(kTrace, "Driver dose not support this device,\nplease contact us via %s\n",
           ZELKORA_SUPPORT_ADDRESS);
}

}  // namespace zelkora::resistive

int ChkResFW(int devnum) {
  init_Hiddev();
  char text[20]{};
  if (GetFirmware(text) != 0 &&
      (text[0] == '\0' || zelkora::resistive::is_unsupported_firmware(text))) {
    zelkora::resistive::log_unsupported_device();
    close(fd);
    return 0;
  }
  // A panel that does not answer is accepted, with an empty text.
  zelkora::set_text(TouchDevice[devnum].FWVersion, text);
  return 1;
}
