// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench of controller models that are plugged in, moved and enumerated, as a user would.
#pragma once

#include <deque>

#include "pct_controller.h"
#include "stored_sets.h"

namespace zelkora::test {

// A make of panel, and the carrier it is seen through.
struct Make {
  const char* name;
  uint32_t firmware;
  uint16_t product;
  bool hidraw;
};

inline constexpr Make kMakes[] = {
    {"Hidraw8752", sim::PctController::kFirmware8752, 0x8752, true},
    {"Hidraw8753", sim::PctController::kFirmware8753, 0x8753, true},
    {"Hiddev8752", sim::PctController::kFirmware8752, 0x8752, false},
    {"Hiddev8753", sim::PctController::kFirmware8753, 0x8753, false},
};

inline std::string make_name(const testing::TestParamInfo<Make>& info) { return info.param.name; }

inline void PrintTo(const Make& make, std::ostream* out) { *out << make.name; }

inline std::string phys_of(int port) {
  return "usb-0000:00:14.0-" + std::to_string(port) + "/input0";
}

// What the random bytes 00 to 0F and 10 to 1F come to.
inline constexpr SerialNumber kFirstNumber = {0x05, 0x0A, 0x02, 0x07, 0x0B, 0x09, 0x03, 0x08};
inline constexpr SerialNumber kSecondNumber = {0x15, 0x1A, 0x12, 0x17, 0x1B, 0x19, 0x13, 0x18};

class PanelLifeBench : public Bench, public testing::WithParamInterface<Make> {
 protected:
  struct PctPanel {
    sim::PctController controller;
    int port = 0;  // 0: not plugged in
    int attachment = 0;
  };

  void SetUp() override {
    Bench::SetUp();
    allow_any_command();
    host.config = {0, 0, 0, 0, 0, make().hidraw ? uint8_t{1} : uint8_t{0}};
    write_file(data_file("manuflist.conf"), "Virtual PCT\n");
  }

  static const Make& make() { return GetParam(); }
  static bool is_8752() { return make().firmware == sim::PctController::kFirmware8752; }

  // --- what a user does ---
  PctPanel& new_panel() { return panels_.emplace_back(PctPanel{{make().firmware, identity()}}); }
  void plug(PctPanel& panel, int port) {
    const std::string path = node_of(port);
    panel.port = port;
    panel.attachment = attach(panel.controller, {.phys = phys_of(port),
                                                 .hiddev = make().hidraw ? "" : path,
                                                 .hidraw = make().hidraw ? path : "",
                                                 .event = ""});
  }
  void unplug(PctPanel& panel) {
    kernel.unplug(panel.attachment);
    EXPECT_EQ(sim::remove_node_placeholder(node_of(panel.port)), "");
    panel.port = 0;
  }
  void move(PctPanel& panel, int port) {
    unplug(panel);
    plug(panel, port);
  }

  // --- what a utility does ---
  // Enumerates, and expects so many panels.
  void enumerate(int count) {
    clear_trace();
    EXPECT_EQ(GetTouchPanels(0), count);
    EXPECT_EQ(PCTDeviceNumber, count);
  }
  static int index_of(const PctPanel& panel) {
    for (int i = 0; i < DeviceNumber; ++i) {
      if (TouchDevice[i].Phys == phys_of(panel.port)) return i;
    }
    ADD_FAILURE() << "no panel at port " << panel.port;
    return 0;
  }
  static SerialNumber number_of(const PctPanel& panel) {
    SerialNumber number;
    std::ranges::copy(TouchDevice[index_of(panel)].SN, number.begin());
    return number;
  }
  static PCTDevInfo fetched(const PctPanel& panel, signed char mode = 4) {
    PCTDevInfo rec{};
    EXPECT_NE(PCTGetAllParams(index_of(panel), &rec, mode), 0);
    return rec;
  }
  static int save(const PctPanel& panel, const ParameterSet& set, signed char mode) {
    PCTDevInfo rec = host_record(set, number_of(panel));
    return PCTSetAllParams(index_of(panel), &rec, mode);
  }
  static int revert(const PctPanel& panel, signed char mode = 2) {
    PCTDevInfo rec = fetched(panel);
    return PCTSetAllParams(index_of(panel), &rec, mode);
  }

  // The next serial numbers are made of the bytes from this one on.
  void next_random(uint8_t first) {
    for (uint8_t& byte : host.random) byte = first++;
  }

  // --- what is there then ---
  // The set is what a utility fetches and what the controller carries out.
  static void expect_set(const PctPanel& panel, const ParameterSet& set) {
    EXPECT_EQ(settings_of(fetched(panel)), settings_of(host_record(set, number_of(panel))));
    expect_in_force(panel, set);
  }
  static void expect_in_force(const PctPanel& panel, const ParameterSet& set) {
    const sim::PctController::PosConfig& config = panel.controller.pos_config();
    EXPECT_EQ((std::array{config[0], config[2], config[3]}), set.told);
  }

  static Keys keys(int port, const SerialNumber& number) {
    char usb_id[10];
    std::snprintf(usb_id, sizeof usb_id, "2575_%04X", make().product);
    return {phys_of(port), digits(number), usb_id};
  }
  static std::string record(int port, const SerialNumber& number, const ParameterSet& set) {
    return store_record(keys(port, number), payload(set, number));
  }
  static std::string erased(int port, const SerialNumber& number) {
    return store_record(keys(port, number), erased_payload());
  }
  // A record of the list of serial numbers.
  static std::string listed(int port, const SerialNumber& number) {
    return store_record(keys(port, number), std::string(64, '\0'));
  }

  // The identity block as the controller's flash holds it.
  static sim::PctController::Flash identity_block(const SerialNumber& number, unsigned revision) {
    Bytes plain = {0x25,
                   0x75,
                   static_cast<uint8_t>(make().product >> 8),
                   static_cast<uint8_t>(make().product),
                   static_cast<uint8_t>(revision >> 8),
                   static_cast<uint8_t>(revision)};
    plain = joined_bytes(padded(plain, 12), {number.begin(), number.end()});
    sim::PctController::Flash flash;
    std::ranges::copy(encoded_block(padded(plain, 32)), flash.begin());
    return flash;
  }
  static unsigned revision() { return make().firmware & 0xFFF; }

  // How often the flash was written since the controller was made.
  static ptrdiff_t flash_writes(const PctPanel& panel) {
    return std::ranges::count_if(panel.controller.commands(), [](const Bytes& command) {
      return command[0] == 0x08 && command[1] == 0xA8;
    });
  }

 private:
  static sim::UsbIdentity identity() { return {0x2575, make().product, "Zelkora", "Virtual PCT"}; }
  static std::string node_of(int port) {
    return (make().hidraw ? "/dev/hidraw" : "/dev/usb/hiddev") + std::to_string(port);
  }

  std::deque<PctPanel> panels_;
};

}  // namespace zelkora::test
