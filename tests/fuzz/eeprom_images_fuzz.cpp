// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// EEPROM image files, written to a controller and compared with it. The input is the file.
#include "conversations.h"
#include "fuzz_bench.h"
#include "hostile_devices.h"

using namespace zelkora;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  sim::ResistiveController controller;
  sim::ResistiveUsb usb(controller, {0x3A4C, 0x1688, "Zelkora", "Virtual Resistive"});
  const char* node = "/dev/usb/hiddev0";
  fuzz::FuzzBench bench;
  bench.attach(usb, {"usb-0000:00:14.0-1/input0", node, "", ""});
  fuzz::open_entry(ZELKORA_TYPE_RESISTIVE_USB, node, 0x3A4C, 0x1688);

  const std::string path = test::data_file("image");
  const std::string image(reinterpret_cast<const char*>(data), size);
  test::write_file(path, image);
  AXI_CompareFileAndDev(0, path.c_str());
  if (AXI_WriteFileToDev(0, path.c_str()) == 0) return 0;
  const std::string copy = test::data_file("copy");
  fuzz::require(AXI_LoadDevToFile(0, copy.c_str()) == 1, "what was written cannot be read");
  fuzz::require(AXI_CompareFileAndDev(0, copy.c_str()) == 1, "an image differs from its source");
  return 0;
}
