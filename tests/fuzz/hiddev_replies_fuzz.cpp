// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Controllers of both kinds on a hiddev node. Input: the kind, a shape for each report, steps, and
// the answers.
#include "conversations.h"
#include "fuzz_bench.h"
#include "hostile_devices.h"

using namespace zelkora;

namespace {

constexpr char kNode[] = "/dev/usb/hiddev0";
const sim::HidNodes kNodes = {"usb-0000:00:14.0-1/input0", kNode, "", ""};

void resistive(fuzz::FuzzInput& input) {
  sim::ResistiveController controller;
  sim::ResistiveUsb usb(controller, {0x3A4C, 0x1688, "Zelkora", "Virtual Resistive"});
  fuzz::HostileHid panel(usb, input);
  panel.reshape(input);
  fuzz::FuzzBench bench;
  bench.attach(panel, kNodes);
  fuzz::open_entry(ZELKORA_TYPE_RESISTIVE_USB, kNode, 0x3A4C, 0x1688);
  fuzz::talk_to_resistive(input);
}

void pct(fuzz::FuzzInput& input, uint32_t firmware) {
  sim::PctController controller(firmware, {0x2575, 0x8753, "Zelkora", "Virtual PCT"});
  fuzz::HostileHid panel(controller, input);
  panel.reshape(input);
  fuzz::FuzzBench bench;
  bench.attach(panel, kNodes);
  fuzz::open_entry(ZELKORA_TYPE_PCT, kNode, 0x2575, 0x8753);
  fuzz::talk_to_pct(input);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  const uint8_t kind = input.byte() % 3;
  if (kind == 0) {
    resistive(input);
  } else {
    pct(input, kind == 1 ? sim::PctController::kFirmware8752 : sim::PctController::kFirmware8753);
  }
  return 0;
}
