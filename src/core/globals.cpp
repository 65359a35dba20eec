// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Every exported variable, and nothing else: data only, zero at load, so that the library needs no
// static constructor.
#include <cstddef>

#include "zelkora.h"

constinit TouchDeviceEntry TouchDevice[ZELKORA_MAX_DEVICES]{};
constinit int DeviceNumber = 0;
constinit int PCTDeviceNumber = 0;
constinit int ActiveDevice = 0;
constinit int fd = 0;
constinit unsigned char HidRaw = 0;
constinit unsigned char device_type = 0;
constinit int IsLegacy = 0;
constinit int isPureMouse = 0;
constinit int isHybrid = 0;
constinit int DbgFlag = 0;
constinit unsigned char MyConfig[ZELKORA_CONFIG_BYTES]{};

constinit char MatchProduct[ZELKORA_MAX_NAMES][ZELKORA_NAME_LENGTH]{};
constinit char rMatchProduct[ZELKORA_MAX_NAMES][ZELKORA_NAME_LENGTH]{};
constinit int ManufCnt = 0;
constinit int rManufCnt = 0;
constinit HidInfoTable cMyHidInfo{};

constinit SerialPanelSlot cMySerInfo[ZELKORA_MAX_SERIAL]{};
constinit SerialReportSlot TempSer[ZELKORA_MAX_SERIAL]{};
constinit termios oldtio{};
constinit unsigned char ReadSerConf = 0;

constinit ScreenInfoEntry screen_info[ZELKORA_MAX_SCREENS]{};

constinit utsname KernelVersion{};
constinit hiddev_report_info report{};
constinit hiddev_field_info field{};
constinit hiddev_usage_ref uref{};
constinit hiddev_report_info rinfo{};
constinit hiddev_field_info finfo{};
constinit hiddev_devinfo devinfo{};
constinit int running = 0;
constinit int shmID = 0;

// Hosts are compiled against these layouts.
static_assert(sizeof(TouchDeviceEntry) == 568);
static_assert(offsetof(TouchDeviceEntry, Type) == 36);
static_assert(offsetof(TouchDeviceEntry, Phys) == 37);
static_assert(offsetof(TouchDeviceEntry, EventName) == 293);
static_assert(offsetof(TouchDeviceEntry, ID) == 329);
static_assert(offsetof(TouchDeviceEntry, FWVersion) == 365);
static_assert(offsetof(TouchDeviceEntry, POSMode) == 429);
static_assert(offsetof(TouchDeviceEntry, Reserved) == 430);
static_assert(offsetof(TouchDeviceEntry, HidRaw) == 530);
static_assert(offsetof(TouchDeviceEntry, IsLegacy) == 532);
static_assert(offsetof(TouchDeviceEntry, VID) == 536);
static_assert(offsetof(TouchDeviceEntry, SN) == 552);
static_assert(offsetof(TouchDeviceEntry, FWRevFlash) == 560);
static_assert(offsetof(TouchDeviceEntry, FWRev) == 564);
static_assert(sizeof(HidInfoTable) == 144);
static_assert(offsetof(HidInfoTable, ResProductIds) == 20);
static_assert(offsetof(HidInfoTable, PctVendorIds) == 128);
static_assert(sizeof(ResDevInfo) == 56);
static_assert(offsetof(ResDevInfo, BeepOn) == 2);
static_assert(offsetof(ResDevInfo, Frequency) == 4);
static_assert(offsetof(ResDevInfo, DisableRight) == 11);
static_assert(offsetof(ResDevInfo, DisableReport) == 26);
static_assert(offsetof(ResDevInfo, HideCursor) == 28);
static_assert(offsetof(ResDevInfo, HidMode) == 31);
static_assert(offsetof(ResDevInfo, EdgeRight) == 32);
static_assert(offsetof(ResDevInfo, SpareByte) == 48);
static_assert(offsetof(ResDevInfo, Chksum) == 52);
static_assert(sizeof(PCTDevInfo) == 68);
static_assert(offsetof(PCTDevInfo, Frequency) == 4);
static_assert(offsetof(PCTDevInfo, SN) == 18);
static_assert(offsetof(PCTDevInfo, HideCursor) == 28);
static_assert(offsetof(PCTDevInfo, FWVersion) == 56);
static_assert(offsetof(PCTDevInfo, DevNum) == 64);
static_assert(sizeof(SerialPanelSlot) == 56);
static_assert(sizeof(SerialReportSlot) == 40);
static_assert(sizeof(ScreenInfoEntry) == 36);
static_assert(sizeof(ConfigLine) == 512);
