// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What devices say of themselves, on its way to commands and generated files. Input: lines with a
// HID device's name and phys, the kernel log, a panel's firmware text, the output of pgrep, and the
// names of the table's four ports.
#include "fuzz_bench.h"
#include "hostile_devices.h"
#include "output_rules.h"

using namespace zelkora;
using test::data_file;

namespace {

constexpr char kScript[] = "#!/bin/sh\nmodprobe morlex\nexit 0\n";

void run_the_services() {
  for (int i = 0; i < ZELKORA_MAX_DEVICES; ++i) {
    DisableRS232(i);
    EnableRS232(i, TouchDevice[i].Name);
  }
  int pids[ZELKORA_MAX_PIDS];
  GetTouchServicePid(pids);
  EnableTouchService();
}

void name_the_table(fuzz::FuzzInput& input) {
  for (TouchDeviceEntry& entry : TouchDevice) {
    const std::string name = input.line();
    if (name.empty()) continue;
    std::snprintf(entry.Name, sizeof entry.Name, "%s", name.c_str());
    entry.Type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  }
}

void check_glue() {
  SetSerialDeviceConf();
  const std::string bad = fuzz::bad_list_line(test::read_file(data_file("sertp.conf")));
  if (!bad.empty()) fuzz::fail("the serial panel list holds " + bad);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  sim::UsbIdentity identity{0x3A4C, 0x1688, "Zelkora", "Virtual"};
  identity.forged_name = "Virtual " + input.line();
  sim::ResistiveController usb_controller;
  sim::ResistiveUsb usb(usb_controller, identity);
  sim::ResistiveController serial_controller;
  sim::ResistiveSerial port(serial_controller);
  fuzz::FuzzBench bench;
  for (const char* path : {"/etc/rc.local", "/etc/rc.d/rc.local"}) {
    bench.write_boot_script(path, kScript);
  }
  test::write_file(data_file("rmanuflist.conf"), "Virtual\n");
  bench.attach(usb, {input.line(), "/dev/usb/hiddev0", "", "/dev/input/event0"});
  bench.attach(port, "/dev/ttyS0");
  bench.set_kernel_log(input.line() + "\n");
  serial_controller.set_firmware(input.line());
  bench.set_process_ids(input.line());

  test::g_host.config = {1};
  RefreshSerialDevice();
  check_glue();
  GetTouchPanels(0);
  FindMyEVDevice(0);
  name_the_table(input);
  check_glue();
  run_the_services();
  return 0;
}
