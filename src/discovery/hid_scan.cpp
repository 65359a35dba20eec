// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The walk over the HID nodes that fills the device table: each node is asked who it is, matched
// by ids and product name, and entered unless its controller is already there.
#include <dirent.h>
#include <fcntl.h>
#include <linux/hiddev.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/log.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "core/text.h"
#include "zelkora.h"

using zelkora::contains;
using zelkora::kTrace;

namespace {

constexpr size_t kTextSize = 256;

// A text of the kernel, which cuts a long one without terminating it.
struct KernelText {
  char text[kTextSize + 1] = "";
};

struct Identity {
  uint16_t vendor;
  uint16_t product;
  KernelText name;
};

enum class Kind { kNone = 0, kResistive = 1, kPct = 3 };

bool read_ids(Identity& identity) {
  if (HidRaw == 1) {
    hidraw_devinfo info{};
    if (ioctl(fd, HIDIOCGRAWINFO, &info) < 0) return false;
    identity.vendor = static_cast<uint16_t>(info.vendor);
    identity.product = static_cast<uint16_t>(info.product);
    return true;
  }
  hiddev_devinfo info{};
  if (ioctl(fd, HIDIOCGDEVINFO, &info) < 0) return false;
  identity.vendor = static_cast<uint16_t>(info.vendor);
  identity.product = static_cast<uint16_t>(info.product);
  return true;
}

bool read_name(KernelText& name) {
  return ioctl(fd, HidRaw == 1 ? HIDIOCGRAWNAME(kTextSize) : HIDIOCGNAME(kTextSize), name.text) >=
         0;
}

KernelText read_phys() {
  KernelText phys;
  ioctl(fd, HidRaw == 1 ? HIDIOCGRAWPHYS(kTextSize) : HIDIOCGPHYS(kTextSize), phys.text);
  return phys;
}

bool identify(Identity& identity) {
  if (!read_ids(identity)) {
    zelkora::debug_perror("Get Device infomation error!!");
    return false;
  }
  if (!read_name(identity.name)) {
    zelkora::debug_perror("Get Device Name error!!");
    return false;
  }
  if (identity.name.text[0] == '\0') return false;
  DebugMsg(kTrace, "MatchMyHidDevice device name:%s\n", identity.name.text);
  DebugMsg(kTrace, "VID:0x%04x PID:0x%04x\n", identity.vendor, identity.product);
  return true;
}

Kind match_ids(const Identity& identity) {
  if (MyConfig[ZELKORA_CONFIG_RESISTIVE] != 0 && HidRaw == 0 && ChkVid(identity.vendor) != 0) {
    const bool new_ids = MyConfig[ZELKORA_CONFIG_NEW_PRODUCT_IDS] != 0;
    if ((new_ids ? ChkNewPid(identity.product) : ChkOldPid(identity.product)) != 0) {
      return Kind::kResistive;
    }
  }
  return ChkPCTVid(identity.vendor) != 0 ? Kind::kPct : Kind::kNone;
}

bool match_resistive_name(const Identity& identity) {
  DebugMsg(kTrace, "===res id_match 0x%04x:0x%04x id_match:%d fd:%d===\n", identity.vendor,
           identity.product, 1, fd);
  for (int i = 0; i < rManufCnt && i < ZELKORA_MAX_NAMES; ++i) {
    DebugMsg(kTrace, "MatchMyHidDevice list[%d]%s", i, rMatchProduct[i]);
    // An empty entry is contained in every name.
    if (contains(identity.name.text, zelkora::field_text(rMatchProduct[i]))) {
      DebugMsg(kTrace, "Res touch device name match\n");
      return true;
    }
  }
  return false;
}

bool match_pct_name(const Identity& identity) {
  DebugMsg(kTrace, "===pct id_match 0x%04x:0x%04x id_match:%d fd:%d===\n", identity.vendor,
           identity.product, 2, fd);
  // The pen interface of a controller is no panel of its own.
  const bool pen = contains(identity.name.text, "Pen");
  for (int i = 0; i < ManufCnt && i < ZELKORA_MAX_NAMES; ++i) {
    if (!pen && contains(identity.name.text, zelkora::field_text(MatchProduct[i]))) {
      DebugMsg(kTrace, "PCT device name match %s\n", MatchProduct[i]);
      return true;
    }
  }
  DebugMsg(kTrace, "PCT device name not match\n");
  return false;
}

// The same controller seen through another node.
bool already_entered(const KernelText& phys) {
  if (phys.text[0] == '\0') return false;
  // What a refused node left behind the last entry does not count.
  for (int i = 0; i < DeviceNumber; ++i) {
    if (contains(zelkora::field_text(TouchDevice[i].Phys), phys.text)) {
      DebugMsg(kTrace, "###exist phys:%s###\n", phys.text);
      return true;
    }
  }
  return false;
}

void fill_entry(TouchDeviceEntry& entry, const char* path, const Identity& identity,
                const KernelText& phys, Kind kind) {
  zelkora::set_text(entry.Phys, phys.text);
  zelkora::set_text(entry.Name, path);
  DebugMsg(kTrace, "Device%d : %s phys:%s MatchFlag:%d\n", DeviceNumber + 1, entry.Name, entry.Phys,
           static_cast<int>(kind));
  entry.Type = static_cast<unsigned char>(kind);
  entry.HidRaw = HidRaw;
  entry.VID = identity.vendor;
  entry.PID = identity.product;
  std::snprintf(entry.ID, sizeof entry.ID, "%04X_%04X", entry.VID, entry.PID);
}

// Whether an examined node is a panel of the table, and what becomes of its descriptor.
enum class Verdict { kEntered, kRefused, kRefusedLeftOpen };

Verdict accept_resistive(int index) {
  device_type = ZELKORA_TYPE_RESISTIVE_USB;
  if (ChkResFW(index) == 0) return Verdict::kRefused;
  ResDevInfo rec{};
  if (GetResAllDataBin(index, &rec) == 0) {
    GetResParamDefault(&rec);
    SetResAllDataBin(index, &rec);
  }
  return Verdict::kEntered;
}

// Brings the serial number in the panel's flash up to date; the 8752 family tells and takes it in
// command mode alone.
Verdict check_serial_number(int index) {
  const bool command_mode = IsLegacy == ZELKORA_FAMILY_8752;
  if (command_mode && enter_cmd_mode() == 0) return Verdict::kRefusedLeftOpen;
  int ok = ChkSNFlash(index);
  if (command_mode && leave_cmd_mode() == 0) ok = 0;
  return ok != 0 ? Verdict::kEntered : Verdict::kRefused;
}

Verdict accept_pct(int index) {
  TouchDeviceEntry& entry = TouchDevice[index];
  DebugMsg(kTrace, "+++check PCT+++\n");
  entry.IsLegacy = GetIsLegacy();
  DebugMsg(kTrace, "[%d] IsLegacy:%d\n", index, entry.IsLegacy);
  IsLegacy = entry.IsLegacy;
  if (MyConfig[ZELKORA_CONFIG_IGNORE_LEGACY_PCT] != 0 && IsLegacy == ZELKORA_FAMILY_8752) {
    return Verdict::kRefusedLeftOpen;
  }
  GetFwID(index);
  if (const Verdict verdict = check_serial_number(index); verdict != Verdict::kEntered) {
    return verdict;
  }
  SetMySNBin(index);
  PCTDevInfo rec{};
  rec.DevNum = static_cast<unsigned>(index);
  if (GetMyHidDeviceParames(&rec) == 0) return Verdict::kRefused;

  entry.POSMode = static_cast<unsigned char>(GetPOSMode());
  PCTDeviceNumber += 1;
  DebugMsg(kTrace, "Device%d : %s phys:%s fw:%s POSMode:%d PCTDeviceNumber:%d\n", index + 1,
           entry.Name, entry.Phys, entry.FWVersion, entry.POSMode, PCTDeviceNumber);
  return Verdict::kEntered;
}

// Enters the node that is open on fd, unless its controller is known, refused or one too many.
Verdict enter(const char* path, const Identity& identity, Kind kind) {
  const KernelText phys = read_phys();
  if (already_entered(phys) || DeviceNumber >= ZELKORA_MAX_DEVICES) return Verdict::kRefused;
  fill_entry(TouchDevice[DeviceNumber], path, identity, phys, kind);
  // A refused controller leaves its fields behind the last entry; the next one overwrites them.
  const Verdict verdict =
      kind == Kind::kResistive ? accept_resistive(DeviceNumber) : accept_pct(DeviceNumber);
  if (verdict == Verdict::kEntered) DeviceNumber += 1;
  return verdict;
}

template <typename Visit>
void for_each_node(const char* directory_path, const char* name_part, Visit visit) {
  const zelkora::ScopedDir directory(opendir(directory_path));
  if (!directory) return;
  while (const dirent* node = readdir(directory.get())) {
    if (!contains(node->d_name, name_part)) continue;
    char path[sizeof node->d_name + sizeof "/dev/usb/"];
    std::snprintf(path, sizeof path, "%s/%s", directory_path, node->d_name);
    visit(path);
  }
}

// What both enumerations begin with. The counters are the caller's to read afterwards.
void start_enumeration(int x) {
  GetTouchConf(x);
  LoadVidPid();
  ManufCnt = get_Manufacturer_list();
  std::memset(TouchDevice, 0, sizeof TouchDevice);
  DeviceNumber = 0;
  PCTDeviceNumber = 0;
}

// Hidraw nodes come last, so that a controller seen through both stays entered as its hiddev node.
void find_hid_devices() {
  FindMyHidDevice();
  if (MyConfig[ZELKORA_CONFIG_HIDRAW] != 0) FindMyHidRawDevice();
}

}  // namespace

void MatchMyHidDevice(const char* path) {
  HidRaw = contains(path, "hidraw") ? 1 : 0;
  fd = open(path, O_RDWR | O_NONBLOCK);
  DebugMsg(kTrace, "MatchMyHidDevice device node:%s HidRaw:%d fd:%d\n", path, HidRaw, fd);
  if (fd < 1) return;

  // A node that is not asked further keeps its descriptor open, and the next open takes over fd:
  // hosts know the descriptors that an enumeration leaves behind.
  Identity identity{};
  if (!identify(identity)) return;
  const Kind kind = match_ids(identity);
  if (kind == Kind::kNone) return;
  const bool named =
      kind == Kind::kResistive ? match_resistive_name(identity) : match_pct_name(identity);
  const Verdict verdict = named ? enter(path, identity, kind) : Verdict::kRefused;
  if (verdict != Verdict::kRefusedLeftOpen) close(fd);
}

int FindMyHidDevice(void) {
  DebugMsg(kTrace, "FindMyHidDevice--start\n");
  for_each_node(zelkora::paths::kDev, "hiddev", [](const char* path) {
    DebugMsg(kTrace, "FindMyHidDevice--%s\n", path);
    MatchMyHidDevice(path);
  });
  for_each_node(zelkora::paths::kDevUsb, "hiddev", [](const char* path) {
    MatchMyHidDevice(path);
    DebugMsg(kTrace, "FindMyHidDevice--%s\n", path);
  });
  DebugMsg(kTrace, "FindMyHidDevice--end\n");
  return 1;
}

int FindMyHidRawDevice(void) {
  DebugMsg(kTrace, "FindMyHidRawDevice--start\n");
  for_each_node(zelkora::paths::kDev, "hidraw", [](const char* path) {
    DebugMsg(kTrace, "++++FindMyHidRawDevice %s+++\n", path);
    MatchMyHidDevice(path);
  });
  DebugMsg(kTrace, "FindMyHidRawDevice--end\n");
  return 1;
}

int GetTouchPanels(int x) {
  start_enumeration(x);
  DebugMsg(kTrace, "GetTouchPanels--start\n");
  if (MyConfig[ZELKORA_CONFIG_RESISTIVE] != 0) {
    rManufCnt = get_Res_Manufacturer_list();
    GetSerialDevceNameConf();
  }
  DebugMsg(kTrace, "GetTouchPanels---FindMyHidDevice\n");
  find_hid_devices();
  DebugMsg(kTrace, "GetTouchPanels DeviceNumber:%d---end\n", DeviceNumber);
  return DeviceNumber;
}

int GetPCTTouchPanels(int x) {
  start_enumeration(x);
  DelFile(zelkora::paths::kPctSerialNumbers);
  find_hid_devices();
  return PCTDeviceNumber;
}
