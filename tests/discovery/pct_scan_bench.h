// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench for what an enumeration does with a PCT panel: panels of both families on both carriers,
// and the exchanges that it has with one, piece by piece.
#pragma once

#include <linux/hiddev.h>
#include <sys/ioctl.h>

#include <array>
#include <initializer_list>
#include <string>

#include "discovery_bench.h"
#include "pct/pct_bench.h"

namespace zelkora::test {

// A family of PCT controllers on one of the carriers.
struct PctKind {
  const char* name;
  bool hidraw;
  uint32_t firmware;
  int family;
  int revision;         // the firmware's, in its lowest 12 bits
  const char* version;  // its text

  bool is_8752() const { return family == ZELKORA_FAMILY_8752; }
  const char* node() const { return hidraw ? "/dev/hidraw4" : "/dev/usb/hiddev4"; }

  // Otherwise printed byte by byte, with the padding.
  friend void PrintTo(const PctKind& kind, std::ostream* out) { *out << kind.name; }
};

inline constexpr PctKind kPctKinds[] = {
    {"Hidraw8753", true, 0x87530190, ZELKORA_FAMILY_8753, 0x190, "S8.7.53(r400)"},
    {"Hiddev8753", false, 0x87530190, ZELKORA_FAMILY_8753, 0x190, "S8.7.53(r400)"},
    {"Hidraw8752", true, 0x30811234, ZELKORA_FAMILY_8752, 0x234, "S3.0.81(r564)"},
    {"Hiddev8752", false, 0x30811234, ZELKORA_FAMILY_8752, 0x234, "S3.0.81(r564)"},
    {"HidrawLegacy", true, 0x12348320, ZELKORA_FAMILY_LEGACY, 0x320, "S1.2.34(r800)"},
};

inline std::string pct_kind_name(const testing::TestParamInfo<PctKind>& info) {
  return info.param.name;
}

using SerialNumber = std::array<uint8_t, sizeof TouchDeviceEntry::SN>;

inline constexpr SerialNumber kSerialNumber = {0xA1, 0xB2, 0xC3, 0xD4, 0xE5, 0xF6, 0x07, 0x18};
// What becomes of the random bytes 00 01 02 ... 0F.
inline constexpr SerialNumber kNewSerialNumber = {0x05, 0x0A, 0x02, 0x07, 0x0B, 0x09, 0x03, 0x08};

inline SerialNumber serial_number(const TouchDeviceEntry& entry) { return std::to_array(entry.SN); }

// The identity block of a panel in its flash, with its checksum.
inline Bytes identity_flash(unsigned vendor, unsigned product, int revision,
                            const SerialNumber& number) {
  Bytes plain;
  for (const unsigned word : {vendor, product, static_cast<unsigned>(revision)}) {
    plain.push_back(static_cast<uint8_t>(word >> 8));
    plain.push_back(static_cast<uint8_t>(word));
  }
  plain.resize(12);
  plain.insert(plain.end(), number.begin(), number.end());
  return encoded_block(padded(plain, ZELKORA_PCT_BLOCK));
}

inline void set_flash(sim::PctController& controller, const Bytes& bytes) {
  sim::PctController::Flash flash{};
  std::ranges::copy(bytes, flash.begin());
  controller.set_flash(flash);
}

class PctScanBench : public DiscoveryBench {
 protected:
  static constexpr char kPhys[] = "usb-4/input0";

  void SetUp() override {
    DiscoveryBench::SetUp();
    host.config = {1, 0, 0, 0, 0, 1};
    write_resistive_list();
    write_pct_list();
  }

  // A panel whose flash holds the block that an enumeration would write.
  PctPanel& add_known(const PctKind& kind, const SerialNumber& number = kSerialNumber) {
    return add_known(kind, kind.node(), kPhys, number);
  }
  PctPanel& add_known(const PctKind& kind, const std::string& path, const std::string& phys,
                      const SerialNumber& number) {
    PctPanel& panel = add(path, kPctIdentity, phys, kind.firmware);
    set_flash(panel.controller, identity_flash(0x2575, 0x8753, kind.revision, number));
    look_at_usages(path);
    return panel;
  }
  // A panel as it is delivered, with an empty flash.
  PctPanel& add_new(const PctKind& kind) {
    PctPanel& panel = add(kind.node(), kPctIdentity, kPhys, kind.firmware);
    look_at_usages(kind.node());
    return panel;
  }

  // The next so many requests for a report fail.
  void fail_replies(const PctKind& kind, int times) {
    kernel.fail_ioctl(kind.node(), kind.hidraw ? HIDIOCGFEATURE(0) : HIDIOCGREPORTINFO, EIO, times);
  }

  // All that went to the panel, the host and its commands, and the messages that tell the steps.
  Lines steps() const {
    return trace_of({"open", "close", "set_report", "get_report", "usleep", "system",
                     "XOpenDisplay", "mydoled_all_display", "XCloseDisplay",
                     "ioctl HIDIOCGRAWPHYS 256", "ioctl HIDIOCGPHYS 256",
                     "log zelkora DD:+++check PCT+++", "log zelkora DD:[0] IsLegacy",
                     "log zelkora DD:enter_cmd_mode", "log zelkora DD:leave_cmd_mode",
                     "log zelkora DD:***SetMySNBin", "log zelkora DD:Device1"});
  }

  // --- pieces of steps() ---
  static Lines log(const std::string& text) { return {"log zelkora DD:" + text}; }

  static Lines sent(const PctKind& kind, unsigned id, const Bytes& payload) {
    Lines lines = {report_line("set_report", id, payload)};
    if (!kind.hidraw) lines.push_back("usleep 50000");
    return lines;
  }
  static Lines answered(unsigned id, const Bytes& payload) {
    return {report_line("get_report", id, payload)};
  }
  // Up to the question for the family.
  static Lines opened(const PctKind& kind) {
    return joined({{std::string("open ") + kind.node() + " O_RDWR|O_NONBLOCK",
                    kind.hidraw ? "ioctl HIDIOCGRAWPHYS 256" : "ioctl HIDIOCGPHYS 256"},
                   log(std::string("Device1 : ") + kind.node() + " phys:" + kPhys + " MatchFlag:3"),
                   log("+++check PCT+++"),
                   firmware_told(kind),
                   log("[0] IsLegacy:" + std::to_string(kind.family))});
  }
  static Lines firmware_told(const PctKind& kind) {
    Bytes word;
    for (unsigned shift = 0; shift < 32; shift += 8) {
      word.push_back(static_cast<uint8_t>(kind.firmware >> shift));
    }
    return answered(0xF2, word);
  }
  static Lines mode_attempt(const PctKind& kind, uint8_t wanted, uint8_t told) {
    return joined({sent(kind, 8, {0x91, 0x02, 0x00, 0x82, wanted}),
                   {"usleep 5000"},
                   sent(kind, 6, {0x73, 0x0C}),
                   {"usleep 10000"},
                   answered(7, {0x73, 0x0C, 0x00, told})});
  }
  // Nothing for the family that takes commands always.
  static Lines mode_entered(const PctKind& kind) {
    if (!kind.is_8752()) return {};
    return joined({log("enter_cmd_mode"), mode_attempt(kind, 0x90, 0x90)});
  }
  static Lines mode_left(const PctKind& kind) {
    if (!kind.is_8752()) return {};
    return joined({log("leave_cmd_mode"), mode_attempt(kind, 0x01, 0x01)});
  }
  // The data of a reply stand behind the beginning of the command, where the family has them.
  static Lines data_told(const PctKind& kind, Bytes head, const Bytes& data) {
    head.resize(kind.is_8752() ? 3 : 7);
    return answered(7, joined_bytes(head, data));
  }
  static Lines flash_read(const PctKind& kind, const Bytes& flash) {
    return joined(
        {sent(kind, 6, {0xA1, 0x22}), {"usleep 100000"}, data_told(kind, {0xA1, 0x22}, flash)});
  }
  static Lines flash_written(const PctKind& kind, Bytes flash) {
    flash.resize(ZELKORA_PCT_BLOCK);  // the checksum is the controller's to add
    return sent(kind, 8, joined_bytes(padded({0xA8, 0x22}, kind.is_8752() ? 3 : 7), flash));
  }
  static Lines made_writable(const std::string& name) {
    return {"system chmod 777 \"" + data_file(name) + "\""};
  }
  static Lines notified() {
    return {"XOpenDisplay", "mydoled_all_display 0x80000 0", "XCloseDisplay"};
  }
  // The POS configuration of the defaults goes out, and the mode comes in.
  static Lines pos_exchanged(const PctKind& kind) {
    const Bytes name = kind.is_8752() ? Bytes{0x91, 0x05, 0x00, 0xC0} : Bytes{0x84, 0xC0, 0x00};
    return joined({sent(kind, 8, joined_bytes(name, {0x21, 0x18, 0xA4})),
                   sent(kind, 6, {0xA2, 0x10}),
                   {"usleep 50000"},
                   data_told(kind, {0xA2, 0x10}, {0x21, 0x00, 0x18, 0xA4})});
  }
  static Lines counted(const PctKind& kind) {
    return log(std::string("Device1 : ") + kind.node() + " phys:" + kPhys + " fw:" + kind.version +
               " POSMode:1 PCTDeviceNumber:1");
  }
  static Lines closed(const PctKind& kind) { return {std::string("close ") + kind.node()}; }

  void expect_dropped() {
    EXPECT_EQ(DeviceNumber, 0);
    EXPECT_EQ(PCTDeviceNumber, 0);
    EXPECT_EQ(messages_of({"Device1"}).size(), 1U) << "of the node, not of the panel";
  }
  // The last thing that happened to the node is not that it was closed.
  void expect_left_open() {
    EXPECT_EQ(leaked_descriptors(), std::vector<int>{fd});
    EXPECT_EQ(count_of("close"), 0U);
    expect_leaked_descriptors(1);
  }

 private:
  // The kernel fetches all reports at the first look at a usage: let it do that now.
  void look_at_usages(const std::string& path) {
    if (path.find("hiddev") == std::string::npos) return;
    const int node = ::open(path.c_str(), O_RDONLY);
    ::ioctl(node, HIDIOCINITREPORT, 0);
    ::close(node);
    clear_trace();
  }
};

}  // namespace zelkora::test
