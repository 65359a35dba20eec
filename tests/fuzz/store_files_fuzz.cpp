// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Record files that anybody may have written. Input: the panel's kind, steps on whole sets, and the
// bytes of one file, which all store files get.
#include <cstring>

#include "conversations.h"
#include "fuzz_bench.h"
#include "hostile_devices.h"

using namespace zelkora;
using test::data_file;

namespace {

constexpr char kNode[] = "/dev/usb/hiddev0";
const sim::HidNodes kNodes = {"usb-0000:00:14.0-1/input0", kNode, "", ""};

void write_stores(fuzz::FuzzInput& input) {
  const std::vector<uint8_t> bytes = input.bytes(1 << 20);
  const std::string text(bytes.begin(), bytes.end());
  for (const char* name : {".pctpbin", ".pctpbintmp", ".pctuniq", ".restpbin", ".restpbintmp"}) {
    test::write_file(data_file(name), text);
  }
}

// What was stored is found again.
void check_writing(int mode) {
  const std::string path = data_file(".pctpbin");
  unsigned char payload[ZELKORA_STORE_PAYLOAD];
  std::memset(payload, 0x5C, sizeof payload);
  if (Write_Binary_File(path.c_str(), 0, payload, mode) == 0) return;
  unsigned char read[ZELKORA_STORE_PAYLOAD]{};
  fuzz::require(Read_Binary_File(path.c_str(), 0, read, mode) != 0, "a stored record is lost");
}

void work(unsigned char type, sim::HidDevice& device, fuzz::FuzzInput& input) {
  fuzz::FuzzBench bench;
  bench.attach(device, kNodes);
  fuzz::open_entry(type, kNode, device.identity().vendor, device.identity().product);
  const bool pct = type == ZELKORA_TYPE_PCT;
  const int mode = input.byte() % 4;
  const std::vector<uint8_t> steps = input.bytes(9);
  write_stores(input);
  fuzz::FuzzInput chosen(steps.data(), steps.size());
  if (pct) {
    TouchDevice[0].IsLegacy = IsLegacy = ZELKORA_FAMILY_8753;
    fuzz::work_with_pct_sets(chosen);
  } else {
    fuzz::work_with_resistive_sets(chosen);
  }
  Show_UniqList_SN();
  check_writing(mode);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  if (input.byte() % 2 == 0) {
    sim::PctController controller(sim::PctController::kFirmware8753,
                                  {0x2575, 0x8753, "Zelkora", "Virtual PCT"});
    work(ZELKORA_TYPE_PCT, controller, input);
  } else {
    sim::ResistiveController controller;
    sim::ResistiveUsb usb(controller, {0x3A4C, 0x1688, "Zelkora", "Virtual Resistive"});
    work(ZELKORA_TYPE_RESISTIVE_USB, usb, input);
  }
  return 0;
}
