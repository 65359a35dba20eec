// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A whole enumeration of a machine full of hostile controllers. Input: the host's switches and flag
// files, both lists, then for each of four devices its ids, name, phys and shape, then the answers.
#include <deque>

#include "conversations.h"
#include "fuzz_bench.h"
#include "hostile_devices.h"

using namespace zelkora;
using test::data_file;

namespace {

constexpr size_t kDevices = 4;

struct Device {
  Device(fuzz::FuzzInput& input, bool resistive)
      : pct(sim::PctController::kFirmware8753, {0x2575, 0x8753, "Zelkora", "Virtual PCT"}),
        usb(controller, {0x3A4C, 0x1688, "Zelkora", "Virtual Resistive"}),
        hostile(resistive ? static_cast<sim::HidDevice&>(usb) : pct, input) {}

  sim::PctController pct;
  sim::ResistiveController controller;
  sim::ResistiveUsb usb;
  fuzz::HostileHid hostile;
};

void set_switches(fuzz::FuzzInput& input) {
  const uint8_t switches = input.byte();
  for (size_t i = 0; i < 7; ++i) test::g_host.config[i] = switches >> i & 1;
  const uint8_t flags = input.byte();
  constexpr const char* kFlags[] = {"mousedef", ".hybrid", ".disable_rs232"};
  for (size_t i = 0; i < std::size(kFlags); ++i) {
    if ((flags >> i & 1) != 0) test::write_file(data_file(kFlags[i]), "");
  }
}

// A line with the name; an empty one leaves the honest identity.
void disguise(fuzz::HostileHid& device, fuzz::FuzzInput& input) {
  const std::string name = input.line();
  if (name.empty()) return;
  sim::UsbIdentity identity = device.identity();
  identity.forged_name = name;
  if (const uint16_t vendor = input.word(); vendor != 0) identity.vendor = vendor;
  if (const uint16_t product = input.word(); product != 0) identity.product = product;
  device.set_identity(identity);
}

// Bit 0: resistive; bit 1: on hidraw alone; bit 2: shaped and named by the input.
void plug_in(fuzz::FuzzBench& bench, std::deque<Device>& devices, fuzz::FuzzInput& input) {
  const uint8_t kind = input.byte();
  const std::string number = std::to_string(devices.size());
  fuzz::HostileHid& device = devices.emplace_back(input, (kind & 1) != 0).hostile;
  std::string phys = "usb-0000:00:14.0-" + number + "/input0";
  if ((kind & 4) != 0) {
    device.reshape(input);
    disguise(device, input);
    phys = input.line();
  }
  bench.attach(device, {phys, (kind & 2) != 0 ? "" : "/dev/usb/hiddev" + number,
                        "/dev/hidraw" + number, "/dev/input/event" + number});
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  std::deque<Device> devices;
  fuzz::FuzzBench bench;
  set_switches(input);
  test::write_file(data_file("manuflist.conf"), input.file());
  test::write_file(data_file("rmanuflist.conf"), input.file());
  const size_t count = 1 + input.byte() % kDevices;
  for (size_t i = 0; i < count; ++i) plug_in(bench, devices, input);
  if (input.byte() % 2 == 0) {
    GetTouchPanels(0);
  } else {
    GetPCTTouchPanels(0);
  }
  char text[256];
  for (int i = 0; i < DeviceNumber && i < ZELKORA_MAX_DEVICES; ++i) {
    GetEventDeviceName(i, text);
    GetDeviceNode(i + 1, text);
    ShowDeviceInfo(i);
    OpenTouchDevice(i);
    CloseTouchDevice(i);
  }
  return 0;
}
