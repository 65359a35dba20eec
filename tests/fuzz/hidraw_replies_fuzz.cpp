// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A PCT controller of either family on a hidraw node. Input: the family, steps, and the answers.
#include "conversations.h"
#include "fuzz_bench.h"
#include "hostile_devices.h"

using namespace zelkora;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  const uint32_t firmware =
      input.byte() % 2 == 0 ? sim::PctController::kFirmware8753 : sim::PctController::kFirmware8752;
  sim::PctController controller(firmware, {0x2575, 0x8753, "Zelkora", "Virtual PCT"});
  fuzz::HostileHid panel(controller, input);
  fuzz::FuzzBench bench;
  bench.attach(panel, {"usb-0000:00:14.0-1/input0", "", "/dev/hidraw0", ""});
  fuzz::open_entry(ZELKORA_TYPE_PCT, "/dev/hidraw0", 0x2575, 0x8753);
  fuzz::talk_to_pct(input);
  fuzz::work_with_pct_sets(input);
  return 0;
}
