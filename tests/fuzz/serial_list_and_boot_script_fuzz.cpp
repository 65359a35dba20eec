// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The world-writable list of serial panels, and the boot scripts that it ends up in. Input: the
// list, rc.local, the one in rc.d.
#include <filesystem>

#include "fuzz_bench.h"
#include "hostile_devices.h"
#include "output_rules.h"

using namespace zelkora;

namespace {

// Everything that a host may do with what the list made of the table.
void use_the_table() {
  for (int i = 0; i < ZELKORA_MAX_DEVICES; ++i) {
    EnableRS232(i, TouchDevice[i].Name);
    OpenTouchDevice(i);
    CloseTouchDevice(i);
    SetSerConf("SerialDeviceRightTime", 2);
  }
  DisableRS232Report(1);
  GetSerDeviceNumber("ttyS0");
  UpdateSerFw(TouchDevice[0].Phys, TouchDevice[1].FWVersion);
}

void check_new_list() {
  SetSerialDeviceConf();
  const std::string list = test::read_file(test::data_file("sertp.conf"));
  const std::string bad = fuzz::bad_list_line(list);
  if (!bad.empty()) fuzz::fail("the serial panel list holds " + bad);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  sim::ResistiveController controller;
  sim::ResistiveSerial port(controller);
  fuzz::FuzzBench bench;
  bench.attach(port, "/dev/ttyS0");
  test::write_file(test::data_file("sertp.conf"), input.file());
  bench.write_boot_script("/etc/rc.local", input.file());
  bench.write_boot_script("/etc/rc.d/rc.local", input.file());
  test::g_host.config = {1};
  GetSerialDevceNameConf();
  use_the_table();
  check_new_list();
  return 0;
}
