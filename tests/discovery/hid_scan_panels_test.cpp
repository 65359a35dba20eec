// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Several panels in one enumeration, and one panel in several: how entries follow each other, and
// what the files know of the panels afterwards.
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "pct_scan_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::bytes_of;
using zelkora::test::data_file;
using zelkora::test::encoded_block;
using zelkora::test::identity_flash;
using zelkora::test::kPctIdentity;
using zelkora::test::kPctKinds;
using zelkora::test::kSerialNumber;
using zelkora::test::Lines;
using zelkora::test::padded;
using zelkora::test::PctKind;
using zelkora::test::PctPanel;
using zelkora::test::read_file;
using zelkora::test::serial_number;
using zelkora::test::SerialNumber;
using zelkora::test::set_flash;
using zelkora::test::trace_messages;
using zelkora::test::write_file;

constexpr PctKind k8753 = kPctKinds[1];
constexpr PctKind k8752 = kPctKinds[3];

constexpr SerialNumber numbered(size_t last) {
  return {1, 2, 3, 4, 5, 6, 7, static_cast<uint8_t>(last)};
}

class HidScanPanelsTest : public zelkora::test::PctScanBench {
 protected:
  PctPanel& plug_known(const PctKind& kind, const std::string& path, const std::string& phys,
                       const SerialNumber& number) {
    PctPanel& panel = plug(path, kPctIdentity, phys, kind.firmware);
    set_flash(panel.controller, identity_flash(0x2575, 0x8753, kind.revision, number));
    return panel;
  }

  struct Record {
    std::string phys, serial_number, usb_id, payload;
  };
  static std::vector<Record> records(const std::string& name) {
    const std::string bytes = read_file(data_file(name));
    std::vector<Record> all;
    for (size_t at = 0; at + 347 <= bytes.size(); at += 347) {
      const char* record = bytes.data() + at;
      all.push_back({record, record + 256, record + 273, std::string(record + 283, 64)});
    }
    EXPECT_EQ(bytes.size() % 347, 0U);
    return all;
  }
  static Lines paths_in(const std::string& name) {
    Lines paths;
    for (const Record& record : records(name)) paths.push_back(record.phys);
    return paths;
  }

  static std::string payload(const SerialNumber& number, const Bytes& parameters) {
    Bytes plain(12, 0);
    plain.insert(plain.end(), number.begin(), number.end());
    plain.insert(plain.end(), parameters.begin(), parameters.end());
    const Bytes bytes = padded(encoded_block(plain), ZELKORA_STORE_PAYLOAD);
    return {bytes.begin(), bytes.end()};
  }
  static std::string default_payload(const SerialNumber& number) {
    return payload(number, {0x01, 0x01, 0x07, 0xD0, 0x0A, 0, 0x21, 0x10, 0xA4, 0, 0, 0});
  }
  // Other than the defaults in frequency, screen number and the last byte.
  static std::string own_payload(const SerialNumber& number) {
    return payload(number, {0x01, 0x01, 0x04, 0xD2, 0x0A, 2, 0x21, 0x10, 0xA4, 0, 0, 2});
  }
  static std::string record_bytes(const Record& record) {
    std::string bytes(347, '\0');
    record.phys.copy(&bytes[0], 255);
    record.serial_number.copy(&bytes[256], 16);
    record.usb_id.copy(&bytes[273], 9);
    record.payload.copy(&bytes[283], 64);
    return bytes;
  }
};

// --- several panels ---

TEST_F(HidScanPanelsTest, AResistiveAndTwoPctPanelsAreOneTable) {
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  plug_resistive(nodes[0], "usb-1/input0").controller.set_firmware("V2.7");
  plug_known(k8753, nodes[1], "usb-2/input0", numbered(2));
  add_known(kPctKinds[2], "/dev/hidraw7", "usb-3/input0", numbered(3));
  EXPECT_EQ(GetTouchPanels(0), 3);
  EXPECT_EQ(DeviceNumber, 3);
  EXPECT_EQ(PCTDeviceNumber, 2);
  const std::string second = "Device2 : " + nodes[1] + " phys:usb-2/input0 ";
  const std::string third = "Device3 : /dev/hidraw7 phys:usb-3/input0 ";
  EXPECT_EQ(messages_of({"Device", "[", "GetTouchPanels DeviceNumber"}),
            trace_messages({"Device1 : " + nodes[0] + " phys:usb-1/input0 MatchFlag:1\n",
                            second + "MatchFlag:3\n", "[1] IsLegacy:3\n",
                            second + "fw:S8.7.53(r400) POSMode:1 PCTDeviceNumber:1\n",
                            third + "MatchFlag:3\n", "[2] IsLegacy:1\n",
                            third + "fw:S3.0.81(r564) POSMode:1 PCTDeviceNumber:2\n",
                            "GetTouchPanels DeviceNumber:3---end\n"}));
  EXPECT_STREQ(TouchDevice[0].FWVersion, "V2.7");
  EXPECT_EQ(TouchDevice[1].IsLegacy, ZELKORA_FAMILY_8753);
  EXPECT_EQ(TouchDevice[2].IsLegacy, ZELKORA_FAMILY_8752);
  EXPECT_EQ(serial_number(TouchDevice[1]), numbered(2));
  EXPECT_EQ(serial_number(TouchDevice[2]), numbered(3));
  EXPECT_EQ(TouchDevice[1].HidRaw, 0);
  EXPECT_EQ(TouchDevice[2].HidRaw, 1);
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_USB) << "as the resistive panel left it";
  EXPECT_EQ(IsLegacy, ZELKORA_FAMILY_8752) << "as the last panel left it";
  EXPECT_EQ(paths_in(".pctuniq"), (Lines{"usb-2/input0", "usb-3/input0"}));
  EXPECT_EQ(paths_in(".pctpbin"), (Lines{"usb-2/input0", "usb-3/input0"}));
}

TEST_F(HidScanPanelsTest, IdenticalPanelsStayApart) {
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  plug_known(k8753, nodes[0], "usb-1/input0", numbered(1));
  plug_known(k8753, nodes[1], "usb-2/input0", numbered(2));
  for (int round = 0; round < 2; ++round) {
    EXPECT_EQ(GetTouchPanels(0), 2);
    const std::vector<Record> stored = records(".pctpbin");
    ASSERT_EQ(stored.size(), 2U);
    EXPECT_EQ(stored[0].serial_number, "0102030405060701");
    EXPECT_EQ(stored[1].serial_number, "0102030405060702");
    EXPECT_EQ(stored[1].phys, "usb-2/input0");
  }
}

TEST_F(HidScanPanelsTest, TheNextPanelOverwritesAllThatADroppedOneLeft) {
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  PctPanel& dropped = plug_known(k8752, nodes[0], "usb-1/input0-with-a-long-tail", numbered(1));
  // The first is dropped at its very last step: its record cannot be written.
  fail_file_call("fopen", data_file(".pctpbin"), EACCES, 2);
  plug_known(k8753, nodes[1], "usb-2/input0", numbered(2));
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_FALSE(dropped.controller.commands().empty());

  const TouchDeviceEntry beside = TouchDevice[0];
  remove(dropped);
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(bytes_of(beside), bytes_of(TouchDevice[0])) << "as if the other were not there";
  EXPECT_STREQ(beside.FWVersion, "S8.7.53(r400)");
  EXPECT_EQ(beside.IsLegacy, ZELKORA_FAMILY_8753);
  EXPECT_EQ(serial_number(beside), numbered(2));
}

TEST_F(HidScanPanelsTest, ADroppedPanelBehindTheLastIsNotCounted) {
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  plug_known(k8753, nodes[0], "usb-1/input0", numbered(1));
  plug_known(k8752, nodes[1], "usb-2/input0", numbered(2));
  host.config[3] = 1;
  expect_leaked_descriptors(1);
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(PCTDeviceNumber, 1);
  EXPECT_EQ(TouchDevice[1].Name, nodes[1]);
  EXPECT_EQ(TouchDevice[1].IsLegacy, ZELKORA_FAMILY_8752);
  EXPECT_EQ(messages_of({"["}), trace_messages({"[0] IsLegacy:3\n", "[1] IsLegacy:1\n"}));
}

TEST_F(HidScanPanelsTest, PanelsBehindADroppedOneAreEntered) {
  const Lines nodes = slots("/dev/usb/hiddev", 3);
  plug_known(k8753, nodes[0], "usb-1/input0", numbered(1));
  plug_known(k8752, nodes[1], "usb-2/input0", numbered(2)).controller.faults.refused_command_modes =
      20;
  plug_known(k8753, nodes[2], "usb-3/input0", numbered(3));
  EXPECT_EQ(GetTouchPanels(0), 2);
  EXPECT_EQ(PCTDeviceNumber, 2);
  EXPECT_EQ(TouchDevice[1].Name, nodes[2]);
  EXPECT_EQ(serial_number(TouchDevice[1]), numbered(3));
  EXPECT_EQ(node_calls(), (Lines{"open " + nodes[0] + " O_RDWR|O_NONBLOCK", "close " + nodes[0],
                                 "open " + nodes[1] + " O_RDWR|O_NONBLOCK",
                                 "open " + nodes[2] + " O_RDWR|O_NONBLOCK", "close " + nodes[2]}));
  EXPECT_EQ(leaked_descriptors().size(), 1U) << "the dropped one's, which the next open replaced";
  expect_leaked_descriptors(1);
}

TEST_F(HidScanPanelsTest, ADroppedPanelGetsAnotherChanceAtItsHidrawNode) {
  PctPanel& panel = add_pct();
  panel.controller.set_firmware(k8752.firmware);
  panel.controller.faults.refused_command_modes = 20;
  expect_leaked_descriptors(1);
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_STREQ(TouchDevice[0].Name, "/dev/hidraw0");
  EXPECT_EQ(TouchDevice[0].HidRaw, 1);
  EXPECT_EQ(messages_of({"###exist"}), Lines());
}

TEST_F(HidScanPanelsTest, AnEnteredPanelIsNotAskedAtItsHidrawNode) {
  PctPanel& panel = add_pct();
  host.config[5] = 0;
  GetTouchPanels(0);
  const size_t asked = panel.controller.commands().size();
  host.config[5] = 1;
  GetTouchPanels(0);
  // The new serial number is written but once, so less is said the second time.
  const size_t asked_again = panel.controller.commands().size() - asked;
  EXPECT_EQ(asked_again, 3U) << "the block, the configuration and the mode, over hiddev";
  EXPECT_EQ(PCTDeviceNumber, 1);
}

TEST_F(HidScanPanelsTest, AFifthPctPanelIsNeitherAskedNorRecorded) {
  const Lines nodes = slots("/dev/usb/hiddev", 6);
  std::vector<PctPanel*> panels;
  for (size_t i = 0; i < nodes.size(); ++i) {
    panels.push_back(&plug_known(i % 2 == 0 ? k8753 : k8752, nodes[i],
                                 "usb-" + std::to_string(i) + "/input0", numbered(i)));
  }
  for (int (*enumerate)(int) : {GetTouchPanels, GetPCTTouchPanels}) {
    EXPECT_EQ(enumerate(0), 4);
    EXPECT_EQ(DeviceNumber, 4);
    EXPECT_EQ(PCTDeviceNumber, 4);
    EXPECT_EQ(node_calls().back(), "close " + nodes[5]);
  }
  for (size_t i = 0; i < nodes.size(); ++i) {
    EXPECT_EQ(panels[i]->controller.commands().empty(), i >= 4) << i;
  }
  EXPECT_EQ(records(".pctuniq").size(), 4U);
  EXPECT_EQ(records(".pctpbin").size(), 4U);
}

TEST_F(HidScanPanelsTest, ADroppedPanelTakesNoneOfTheFourPlaces) {
  const Lines nodes = slots("/dev/usb/hiddev", 5);
  for (size_t i = 0; i < nodes.size(); ++i) {
    plug_known(i == 1 ? k8752 : k8753, nodes[i], "usb-" + std::to_string(i) + "/input0",
               numbered(i));
  }
  host.config[3] = 1;
  expect_leaked_descriptors(1);
  EXPECT_EQ(GetTouchPanels(0), 4);
  EXPECT_EQ(PCTDeviceNumber, 4);
  EXPECT_EQ(TouchDevice[1].Name, nodes[2]);
  EXPECT_EQ(TouchDevice[3].Name, nodes[4]);
}

// --- the list of serial numbers ---

TEST_F(HidScanPanelsTest, GetPctTouchPanelsMakesTheListAnew) {
  write_file(data_file(".pctuniq"), record_bytes({"usb-9/input0", "99", "2575_8753", ""}));
  add_known(k8753);
  EXPECT_EQ(GetPCTTouchPanels(0), 1);
  EXPECT_EQ(paths_in(".pctuniq"), Lines{kPhys});
  EXPECT_EQ(trace_of({"system"}).front(), "system chmod 777 \"/opt/.touch_panel/.pctuniq\"")
      << "it was gone";
}

TEST_F(HidScanPanelsTest, GetTouchPanelsAddsToTheList) {
  write_file(data_file(".pctuniq"), record_bytes({"usb-9/input0", "99", "2575_8753", ""}));
  add_known(k8753);
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(paths_in(".pctuniq"), (Lines{"usb-9/input0", kPhys}));
}

// --- the settings ---

TEST_F(HidScanPanelsTest, APanelAtAnotherPortKeepsItsSettings) {
  write_file(data_file(".pctpbin"), record_bytes({"usb-9/input0", "a1b2c3d4e5f60718", "2575_8753",
                                                  own_payload(kSerialNumber)}));
  add_known(k8753);
  EXPECT_EQ(GetTouchPanels(0), 1);
  const std::vector<Record> stored = records(".pctpbin");
  ASSERT_EQ(stored.size(), 1U);
  EXPECT_EQ(stored[0].phys, kPhys);
  EXPECT_EQ(stored[0].payload, own_payload(kSerialNumber));
  EXPECT_EQ(count_of("mydoled_all_display 0x80000"), 1U);
}

TEST_F(HidScanPanelsTest, AReplacementPanelInheritsTheSettingsOfOneLikeIt) {
  const Record old = {"usb-9/input0", "0102030405060709", "2575_8753", own_payload(numbered(9))};
  write_file(data_file(".pctpbin"), record_bytes(old));
  add_known(k8752);
  EXPECT_EQ(GetTouchPanels(0), 1);
  const std::vector<Record> stored = records(".pctpbin");
  ASSERT_EQ(stored.size(), 2U);
  EXPECT_EQ(stored[0].payload, old.payload) << "the other panel's is left alone";
  EXPECT_EQ(stored[0].phys, "usb-9/input0");
  EXPECT_EQ(stored[1].phys, kPhys);
  EXPECT_EQ(stored[1].serial_number, "a1b2c3d4e5f60718");
  EXPECT_EQ(stored[1].payload, own_payload(kSerialNumber));
}

TEST_F(HidScanPanelsTest, APanelOfAnotherKindStartsWithTheDefaults) {
  write_file(data_file(".pctpbin"), record_bytes({"usb-1/input0", "0102030405060701", "2575_8753",
                                                  own_payload(numbered(1))}));
  const Lines nodes = slots("/dev/usb/hiddev", 2);
  plug_known(k8753, nodes[0], "usb-1/input0", numbered(1));
  PctPanel& other = plug(nodes[1], {0x2575, 0x8752, "Zelkora", "Virtual PCT"}, "usb-2/input0");
  set_flash(other.controller, identity_flash(0x2575, 0x8752, k8753.revision, numbered(2)));
  EXPECT_EQ(GetTouchPanels(0), 2);
  const std::vector<Record> stored = records(".pctpbin");
  ASSERT_EQ(stored.size(), 2U);
  EXPECT_EQ(stored[0].payload, own_payload(numbered(1)));
  EXPECT_EQ(stored[1].usb_id, "2575_8752");
  EXPECT_EQ(stored[1].payload, default_payload(numbered(2)));
}

TEST_F(HidScanPanelsTest, AFirmwareUpdateKeepsSerialNumberAndSettings) {
  write_file(data_file(".pctpbin"),
             record_bytes({kPhys, "a1b2c3d4e5f60718", "2575_8753", own_payload(kSerialNumber)}));
  PctPanel& panel = add_known(k8753);
  panel.controller.set_firmware(k8753.firmware + 1);
  EXPECT_EQ(GetTouchPanels(0), 1);
  const Bytes flash(panel.controller.flash().begin(), panel.controller.flash().end());
  EXPECT_EQ(flash, identity_flash(0x2575, 0x8753, k8753.revision + 1, kSerialNumber));
  EXPECT_STREQ(TouchDevice[0].FWVersion, "S8.7.53(r401)");
  EXPECT_EQ(records(".pctpbin")[0].payload, own_payload(kSerialNumber));
  EXPECT_EQ(panel.controller.pos_config()[2], 0x18) << "sent, with the right click switched off";
}

}  // namespace
