// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "rig.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <map>

namespace zelkora::test {
namespace {

namespace fs = std::filesystem;

constexpr PctMake kMake8752 = {sim::PctController::kFirmware8752, 0x8752, false,
                               ZELKORA_FAMILY_8752};
constexpr PctMake kMake8753 = {sim::PctController::kFirmware8753, 0x8753, true,
                               ZELKORA_FAMILY_8753};
constexpr char kUsbPhys[] = "usb-0000:00:14.0-1/input0";
constexpr char kPctPhys[] = "usb-0000:00:14.0-7/input0";

std::string record(std::string phys, std::string number, std::string usb_id, char fill) {
  phys.resize(256);
  number.resize(17);
  usb_id.resize(10);
  return phys + number + usb_id + std::string(64, fill);
}

// Other panels' records around that of the panel.
std::string records(const std::string& phys, const std::string& usb_id) {
  return record("usb-stranger-1", "00000000000000a1", "0001_0001", '\x11') +
         record(phys, "1021324354657687", usb_id, '\0') +
         record("usb-stranger-2", "00000000000000a2", "0002_0002", '\x22');
}

std::string image() {
  std::string bytes(128, '\x5C');
  const unsigned sum = CheckSum(reinterpret_cast<const unsigned char*>(bytes.data()), 128);
  bytes += static_cast<char>(sum & 0xFF);
  bytes += static_cast<char>(sum >> 8);
  return bytes;
}

const std::map<std::string, std::string>& files() {
  static const std::string rc_local =
      "#!/bin/sh\nstranger one\nmodprobe morlex\n/usr/bin/vastrel9 -morlex\nstranger two\nexit 0\n";
  static const std::map<std::string, std::string> all = {
      {data_file(".pctpbin"), records(kPctPhys, "2575_8752")},
      {data_file(".pctpbintmp"), records(kPctPhys, "2575_8752")},
      {data_file(".pctuniq"), records(kPctPhys, "2575_8752")},
      {data_file(".restpbin"), records(kUsbPhys, "3A4C_1688")},
      {data_file(".restpbintmp"), records("ttyS0", "3B17_0001")},
      {data_file("manuflist.conf"), "Virtual PCT\nStranger PCT\n"},
      {data_file("rmanuflist.conf"), "Virtual Resistive\nStranger Resistive\n"},
      {data_file("Util.conf"), "Stranger=1\nPOSMode=1\n"},
      {data_file("TouchUtil.ini"), "[Stranger]\nA=1\n[RES]\nBeepOn=1\n[PCT]\nBeepOn=1\n"},
      {data_file("sertp.conf"),
       "# stranger\nSerialDevice1=ttyS0\nFW1=V1.2\nFW0=V1.0\nSerialDeviceBeepOn1=0\nStranger=1\n"},
      {data_file("X11/xorg.conf"),
       "Section \"ServerLayout\"\nInputDevice \"HID TOUCH1\"\nEndSection\n"
       "Identifier \"HID TOUCH1\"\nOption \"UniqueID\" \"abc\"\n"},
      {kOptionsFile, "# stranger\n[S]\nFirst=1\nKey=2\nLast=3\n"},
      {kImageFile, image()},
      {"/etc/rc.local", rc_local},
      {"/etc/rc.local.old", rc_local},
      {"/etc/rc.d/rc.local", rc_local},
      {"/etc/udev/rules.d/99-stranger.rules", "stranger\n"},
  };
  return all;
}

// The records of a store file, the lines of any other.
std::vector<std::string> pieces(const std::string& path, const std::string& content) {
  std::vector<std::string> found;
  if (path == kImageFile) return found;
  const bool stored = content.starts_with("usb-stranger");
  for (size_t at = 0; at < content.size();) {
    const size_t length = stored ? 347 : content.find('\n', at) - at + 1;
    // The panel's own record is what the functions are there to change.
    if (!stored || content.compare(at, 12, "usb-stranger") == 0) {
      found.push_back(content.substr(at, length));
    }
    at += length;
  }
  return found;
}

std::string content_of(const std::string& path) { return fs::exists(path) ? read_file(path) : ""; }

}  // namespace

void Rig::write_files() {
  for (const char* path : {"/etc/rc.d", "/etc/udev"}) fs::remove_all(path);
  // A run whose unlink() failed left its temporaries here, where the bench does not clean up.
  std::vector<fs::path> old;
  for (const auto& entry : fs::directory_iterator("/etc")) {
    if (entry.path().filename().string().starts_with("rc.")) old.push_back(entry.path());
  }
  for (const fs::path& path : old) fs::remove_all(path);
  for (const auto& [path, content] : files()) write_file(path, content);
}

void Rig::list_panel(int type, const std::string& node, const std::string& phys) {
  TouchDeviceEntry& entry = TouchDevice[0];
  std::snprintf(entry.Name, sizeof entry.Name, "%s", node.c_str());
  std::snprintf(entry.Phys, sizeof entry.Phys, "%s", phys.c_str());
  entry.Type = static_cast<unsigned char>(type);
  constexpr std::array<unsigned char, 8> kNumber = {0x10, 0x21, 0x32, 0x43, 0x54, 0x65, 0x76, 0x87};
  std::ranges::copy(kNumber, entry.SN);
  DeviceNumber = 1;
  ActiveDevice = 1;
}

void Rig::stage_pct(const PctMake& make, bool listed) {
  pct_ = std::make_unique<sim::PctController>(
      make.firmware, sim::UsbIdentity{0x2575, make.product, "Zelkora", "Virtual PCT"});
  const std::string node = make.hidraw ? "/dev/hidraw7" : "/dev/usb/hiddev7";
  attach(*pct_, {.phys = kPctPhys,
                 .hiddev = make.hidraw ? "" : node,
                 .hidraw = make.hidraw ? node : "",
                 .event = ""});
  if (!listed) return;
  list_panel(ZELKORA_TYPE_PCT, node, kPctPhys);
  TouchDeviceEntry& entry = TouchDevice[0];
  entry.VID = 0x2575;
  entry.PID = make.product;
  entry.HidRaw = HidRaw = make.hidraw ? 1 : 0;
  entry.IsLegacy = IsLegacy = make.family;
}

void Rig::set_stage() {
  fd = -1;  // some paths close it, whatever it is
  if (scene_ == kUsbOpen || scene_ == kUsbListed || scene_ == kAttached) attach_resistive();
  if (scene_ == kSerialOpen || scene_ == kSerialListed || scene_ == kAttached) attach_serial();
  if (scene_ == kUsbOpen || scene_ == kUsbListed) {
    list_panel(ZELKORA_TYPE_RESISTIVE_USB, "/dev/usb/hiddev0", kUsbPhys);
    TouchDevice[0].VID = 0x3A4C;
    TouchDevice[0].PID = 0x1688;
    device_type = ZELKORA_TYPE_RESISTIVE_USB;
  }
  if (scene_ == kSerialOpen || scene_ == kSerialListed) {
    list_panel(ZELKORA_TYPE_RESISTIVE_SERIAL, "ttyS0", "ttyS0");
    std::snprintf(TouchDevice[0].FWVersion, sizeof TouchDevice[0].FWVersion, "V1.2");
    device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  }
  if (scene_ == kPctOpen8752 || scene_ == kPctListed8752) stage_pct(kMake8752, true);
  if (scene_ == kPctOpen8753 || scene_ == kPctListed8753) stage_pct(kMake8753, true);
  if (scene_ == kAttached) stage_pct(kMake8752, false);
  constexpr unsigned kAnyOpen = kOpen | kPctOpen;
  if ((scene_ & kAnyOpen) != 0) {
    EXPECT_NE(OpenTouchDevice(0), 0);
  }
  if (scene_ != kAttached) return;
  answer_command({.command = "dmesg | grep tty > /opt/.touch_panel/tty.log",
                  .effect = [] { write_file(data_file("tty.log"), "ttyS0 is a port\n"); }});
  GetTouchConf(0);
  LoadVidPid();
  ManufCnt = get_Manufacturer_list();
  rManufCnt = get_Res_Manufacturer_list();
}

Aftermath Rig::look_around() const {
  Aftermath found;
  for (const auto& [path, content] : files()) {
    const std::string now = content_of(path);
    for (const std::string& piece : pieces(path, content)) {
      if (now.find(piece) != now.npos) found.kept_pieces.insert(path + ": " + piece);
    }
  }
  for (const char* root : {sim::kDataDirectory, "/etc/rc.d", "/etc/udev", "."}) {
    for (const auto& entry : fs::recursive_directory_iterator(root)) {
      found.files.insert(entry.path().string());
    }
  }
  for (const auto& entry : fs::directory_iterator("/etc")) {
    if (entry.path().filename().string().starts_with("rc.")) found.files.insert(entry.path());
  }
  const std::string bytes = content_of(kImageFile);
  if (bytes.size() != 130) return found;
  const auto* raw = reinterpret_cast<const unsigned char*>(bytes.data());
  found.image_is_whole = CheckSum(raw, 128) == raw[128] + 256U * raw[129];
  return found;
}

Aftermath Rig::run(void (*call)(), const FaultPlan& plan) {
  SetUp();
  host.config = {1, 0, 0, 0, 0, 1};
  host.debug = DbgFlag = 1;
  allow_any_command();
  write_files();
  set_stage();
  const std::vector<int> before = open_descriptors();
  Faults::arm(plan);
  call();
  Faults::disarm();
  Aftermath found = look_around();
  found.calls = Faults::calls();
  found.injected = Faults::injected();
  for (const int descriptor : open_descriptors()) {
    if (std::ranges::count(before, descriptor) == 0) ++found.kept_descriptors;
  }
  expect_leaked_descriptors(leaked_descriptors().size());
  TearDown();
  return found;
}

}  // namespace zelkora::test
