// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What comes in on a serial port while a host talks to the panel, and while ports are searched.
// Input: steps, and the answers.
#include "conversations.h"
#include "fuzz_bench.h"
#include "hostile_devices.h"

using namespace zelkora;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  sim::ResistiveController controller;
  sim::ResistiveSerial port(controller);
  fuzz::HostileSerial panel(port, input);
  fuzz::FuzzBench bench;
  bench.set_kernel_log("ttyS0 at I/O 0x3f8 (irq = 4, base_baud = 115200) is a 16550A\n");
  bench.attach(panel, "/dev/ttyS0");
  const bool refreshes = input.byte() % 4 == 0;
  fuzz::open_entry(ZELKORA_TYPE_RESISTIVE_SERIAL, "ttyS0", 0x3B17, 0x0001);
  fuzz::talk_to_resistive(input);
  if (refreshes) {
    RefreshSerialDevice();
  } else {
    DisableRS232Report(1);
    DisableRS232Report(0);
  }
  return 0;
}
