// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "crash_writers.h"

#include <cstdio>
#include <cstring>
#include <filesystem>

#include "support/bench.h"
#include "zelkora.h"

namespace zelkora::test {
namespace {

namespace fs = std::filesystem;

constexpr char kPctRecords[] = "/opt/.touch_panel/.pctpbin";
constexpr char kPctWorking[] = "/opt/.touch_panel/.pctpbintmp";
constexpr char kResRecords[] = "/opt/.touch_panel/.restpbin";
constexpr char kResWorking[] = "/opt/.touch_panel/.restpbintmp";
constexpr char kSerialNumbers[] = "/opt/.touch_panel/.pctuniq";
constexpr char kSettings[] = "/opt/.touch_panel/settings.conf";
constexpr char kTarget[] = "/opt/.touch_panel/target";
constexpr char kNames[] = "/opt/.touch_panel/manuflist.conf";
constexpr char kSerialPanels[] = "/opt/.touch_panel/sertp.conf";
constexpr char kImage[] = "/opt/.touch_panel/panel.img";
constexpr char kRcLocal[] = "/etc/rc.local";
constexpr char kRcLocalInRcD[] = "/etc/rc.d/rc.local";
constexpr char kUdevRule[] = "/etc/udev/rules.d/10-serialtouch.rules";
constexpr mode_t kWorldWritable = 0777;
constexpr int kBySerialNumber = 2;

// --- panels in the table ---

void enter_usb_panel(int index) {
  TouchDeviceEntry& entry = TouchDevice[index];
  entry = {};
  std::snprintf(entry.Name, sizeof entry.Name, "/dev/usb/hiddev0");
  std::snprintf(entry.Phys, sizeof entry.Phys, "usb-0000:00:14.0-%d/input0", index + 1);
  std::memset(entry.SN, 0xA0 + index, sizeof entry.SN);
  entry.VID = 0x3A4C;
  entry.PID = 0x1688U + static_cast<unsigned>(index);
  entry.Type = ZELKORA_TYPE_RESISTIVE_USB;
}

void enter_usb_panels() {
  for (const int index : {0, 1, 2}) enter_usb_panel(index);
}

void enter_serial_panels() {
  std::memset(TouchDevice, 0, sizeof TouchDevice);
  for (const int index : {0, 1}) {
    TouchDeviceEntry& entry = TouchDevice[index];
    std::snprintf(entry.Name, sizeof entry.Name, "ttyS%d", index);
    std::snprintf(entry.FWVersion, sizeof entry.FWVersion, "V1.%d", index);
    entry.Type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  }
  DeviceNumber = 2;
}

// --- records ---

using Payload = std::vector<unsigned char>;

void store(const char* path, int index, unsigned char fill) {
  Write_Binary_File(path, index, Payload(ZELKORA_STORE_PAYLOAD, fill).data(), kBySerialNumber);
}

std::string fetched(const char* path, int index = 0) {
  Payload payload(ZELKORA_STORE_PAYLOAD, 0);
  const unsigned result = Read_Binary_File(path, index, payload.data(), kBySerialNumber);
  return std::to_string(result) + ":" + std::string(payload.begin(), payload.end());
}

// Two records of other panels, and one of the panel.
void prepare_records(const char* path) {
  enter_usb_panels();
  for (const int index : {1, 0, 2}) store(path, index, static_cast<unsigned char>(index + 1));
}

Writer record_writer(std::string name, const char* path, std::function<void()> write) {
  return {.name = std::move(name),
          .files = {path},
          .prepare = [path] { prepare_records(path); },
          .write = std::move(write),
          .read = [path] { return fetched(path); }};
}

Writer first_record_writer(std::string name, const char* path, std::function<void()> write) {
  return {.name = std::move(name),
          .files = {path},
          .prepare = enter_usb_panels,
          .write = std::move(write),
          .read = [path] { return fetched(path); },
          .new_mode = kWorldWritable};
}

void save_resistive(int (*function)(int, ResDevInfo*)) {
  ResDevInfo record{};
  record.Frequency = 1234;
  record.BeepOn = 1;
  function(0, &record);
}

void save_pct(int (*function)(int, const unsigned char*)) {
  unsigned char plain[ZELKORA_PCT_BLOCK];
  std::memset(plain, 0x5A, sizeof plain);
  function(0, plain);
}

std::vector<Writer> store_writers() {
  return {
      record_writer("RecordOverAnother", kPctRecords, [] { store(kPctRecords, 0, 0xC3); }),
      first_record_writer("FirstRecord", kPctRecords, [] { store(kPctRecords, 0, 0xC3); }),
      {.name = "CopyForAReplacementPanel",
       .files = {kPctRecords},
       .prepare =
           [] {
             enter_usb_panels();
             store(kPctRecords, 0, 0xC3);
             TouchDevice[0].Phys[0] = 'x';
             std::memset(TouchDevice[0].SN, 0x11, sizeof TouchDevice[0].SN);
           },
       .write = [] { fetched(kPctRecords); },  // which is why the file is read by other means
       .read = [] { return read_file(kPctRecords); }},
      record_writer("ResistiveSet", kResRecords, [] { save_resistive(SetResAllDataBin); }),
      first_record_writer("FirstResistiveSet", kResRecords,
                          [] { save_resistive(SetResAllDataBin); }),
      record_writer("ResistiveWorkingCopy", kResWorking,
                    [] { save_resistive(SetResAllDataBinTemp); }),
      record_writer("ResistiveWorkingCopyErased", kResWorking, [] { DelResAllDataBinTemp(0); }),
      record_writer("PctSet", kPctRecords, [] { save_pct(SetPCTParamBin); }),
      record_writer("PctWorkingCopy", kPctWorking, [] { save_pct(SetPCTParamTempBin); }),
      record_writer("PctWorkingCopyErased", kPctWorking, [] { DelPCTParamTempBin(0); }),
      {.name = "SerialNumber",
       .files = {kSerialNumbers},
       .prepare =
           [] {
             enter_usb_panels();
             Write_UniqList_Binary_File(1);
           },
       .write = [] { Write_UniqList_Binary_File(0); },
       .read = [] { return std::to_string(Read_UniqList_Binary_File(0)); }},
      {.name = "FirstSerialNumber",
       .files = {kSerialNumbers},
       .prepare = enter_usb_panels,
       .write = [] { Write_UniqList_Binary_File(0); },
       .read = [] { return std::to_string(Read_UniqList_Binary_File(0)); },
       .new_mode = kWorldWritable},
  };
}

// --- key=value files, names, images ---

std::string options_of(const char* path) {
  char text[36];
  const int found = get_conf_option_str(path, "Name", text);
  return std::to_string(get_conf_option(path, "Beep", -1)) + " " +
         std::to_string(get_conf_option(path, "Last", -1)) + " " + std::to_string(found) + text;
}

Writer settings_writer(std::string name, std::function<void(const char*)> write) {
  return {.name = std::move(name),
          .files = {kSettings},
          .prepare = [] { write_file(kSettings, "Beep=1000\nName=ttyS0\nLast=3\n"); },
          .write = [write] { write(kSettings); },
          .read = [] { return options_of(kSettings); }};
}

std::string names_read() {
  std::string text = std::to_string(get_Manufacturer_list());
  for (const auto& name : MatchProduct) text += name;
  // What the writer writes.
  std::strcpy(MatchProduct[0], "First Panel");
  std::strcpy(MatchProduct[1], "Second Panel");
  return text;
}

Writer names_writer(std::string name, const std::string& old) {
  return {.name = std::move(name),
          .files = {kNames},
          .prepare =
              [old] {
                if (!old.empty()) write_file(kNames, old);
                names_read();
              },
          .write = [] { set_Manufacturer_list(2); },
          .read = names_read};
}

std::string image_read() {
  // What is said of a missing file goes to standard error.
  return fs::exists(kImage) ? std::to_string(AXI_CompareFileAndDev(0, kImage)) : "none";
}

Writer image_writer(std::string name, const std::string& old) {
  return {.name = std::move(name),
          .files = {kImage},
          .prepare =
              [old] {
                enter_usb_panels();
                if (!old.empty()) write_file(kImage, old);
              },
          .write = [] { AXI_LoadDevToFile(0, kImage); },
          .read = image_read};
}

std::vector<Writer> text_writers() {
  return {
      settings_writer("Option", [](const char* path) { set_conf_option(path, "Beep", 7); }),
      settings_writer("OptionText",
                      [](const char* path) { set_conf_option_str(path, "Name", "ttyUSB10"); }),
      settings_writer("OptionAdded", [](const char* path) { add_conf_option(path, "Beep2", 7); }),
      {.name = "FirstOptionAdded",
       .files = {kSettings},
       .prepare = [] {},
       .write = [] { add_conf_option(kSettings, "Beep", 7); },
       .read = [] { return options_of(kSettings); }},
      names_writer("NameList", "Old Panel\n"),
      names_writer("FirstNameList", ""),
      image_writer("EepromImage", std::string(130, '\x01')),
      image_writer("FirstEepromImage", ""),
  };
}

// --- serial panels and what attaches them ---

constexpr char kScript[] = "#!/bin/sh\nmodprobe morlex\n/usr/bin/vastrel9 old\nexit 0\n";

std::string unit(int number) {
  return "/opt/zelkora-tests/vastrel" + std::to_string(number) + "@.service";
}

std::string list_read() {
  std::memset(cMySerInfo, 0, sizeof cMySerInfo);
  std::string text = std::to_string(GetSerDevInfo());
  for (const SerialPanelSlot& slot : cMySerInfo) {
    text += std::string(" ") + slot.Name + " " + slot.FWVersion;
  }
  return text;
}

Writer list_writer(std::string name, const std::string& old, std::function<void()> write) {
  return {.name = std::move(name),
          .files = {kSerialPanels},
          .prepare =
              [old] {
                enter_serial_panels();
                ActiveDevice = 2;
                write_file(kSerialPanels, old);
              },
          .write = std::move(write),
          .read = list_read};
}

Writer script_writer(std::string name, const char* path, int (*function)()) {
  return {.name = std::move(name),
          .files = {path},
          .prepare =
              [path] {
                enter_serial_panels();
                write_file(path, kScript);
              },
          .write = [function] { function(); }};
}

Writer whole_refresh() {
  return {.name = "SerialPanelsAndAllThatAttachesThem",
          .files = {kSerialPanels, unit(1), unit(2), kRcLocal, kRcLocalInRcD, kUdevRule},
          .prepare =
              [] {
                enter_serial_panels();
                write_file(kSerialPanels, "SerialDevice1=ttyS7\nFW1=V9\n");
                write_file(kRcLocal, kScript);
                write_file(kRcLocalInRcD, kScript);
              },
          .write = [] { SetSerialDeviceConf(); },
          .read = list_read};
}

std::vector<Writer> serial_writers() {
  const std::string list = "SerialDevice1=ttyS0\nSerialDevice2=ttyS1\nFW1=V1.0\nFW2=V1.1\n";
  return {
      whole_refresh(),
      list_writer("FirmwareInTheList", list, [] { UpdateSerFw("ttyS1", "V2.0"); }),
      list_writer("SettingInTheList", list + "SerialDeviceBeepOn2=0\n",
                  [] { SetSerConf("SerialDeviceBeepOn", 1); }),
      script_writer("BootScript", kRcLocal, SetSerDevBootFile),
      script_writer("BootScriptInRcD", kRcLocalInRcD, SetSerDevBootFile_rcd),
      {.name = "BootScriptWithDefaults",
       .files = {kRcLocal},
       .prepare =
           [] {
             write_file("/etc/rc.local.old", kScript);
             write_file(kRcLocal, kScript);
           },
       .write = [] { SaveCheckDeviceNumber(2); }},
      {.name = "UdevRule",
       .files = {kUdevRule},
       .prepare = enter_serial_panels,
       .write = [] { SetUdevRule(); }},
      {.name = "Units",
       .files = {unit(1), unit(2)},
       .prepare = enter_serial_panels,
       .write = [] { CreateServiceFile(); }},
  };
}

// --- files that no other file can take the place of ---

// A name that leaves no room for that of another file beside it.
std::string long_name() { return data_file(std::string(255, 'n')); }

Writer long_named_writer(std::string name, const std::string& old, int value) {
  return {.name = std::move(name),
          .files = {long_name()},
          .prepare = [old] { write_file(long_name(), old); },
          .write = [value] { set_conf_option(long_name().c_str(), "Beep", value); },
          .in_place = true};
}

std::vector<Writer> in_place_writers() {
  return {
      long_named_writer("LongNameAndShorterText", "A=1\nBeep=1000\nLast=3\n", 7),
      long_named_writer("LongNameAndLongerText", "A=1\nBeep=7\nLast=3\n", 1000),
      {.name = "LinkToRecords",
       .files = {kTarget},
       .prepare =
           [] {
             prepare_records(kTarget);
             fs::create_symlink(kTarget, kPctRecords);
           },
       .write = [] { store(kPctRecords, 0, 0xC3); },
       .in_place = true},
      {.name = "LinkToNothing",
       .files = {kTarget},
       .prepare =
           [] {
             names_read();
             fs::create_symlink(kTarget, kNames);
           },
       .write = [] { set_Manufacturer_list(2); },
       .in_place = true},
  };
}

}  // namespace

std::vector<Writer> writers() {
  std::vector<Writer> all;
  for (const auto& some : {store_writers(), text_writers(), serial_writers(), in_place_writers()}) {
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

}  // namespace zelkora::test
