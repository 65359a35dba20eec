// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The exported variables and records as a host sees them: hosts are compiled against these sizes
// and offsets and must go on running with a later library.
#include <dlfcn.h>
#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <span>

#include "support/bench.h"

namespace {

using GlobalsTest = zelkora::test::Bench;

bool all_zero(std::span<const std::byte> bytes) {
  return std::ranges::all_of(bytes, [](std::byte byte) { return byte == std::byte{0}; });
}

template <typename... Variable>
bool are_zero(const Variable&... variables) {
  return (all_zero(std::as_bytes(std::span(&variables, 1))) && ...);
}

// Looked at before main(), when no call of the library has been made yet.
const bool g_zero_at_load =
    are_zero(TouchDevice, DeviceNumber, PCTDeviceNumber, ActiveDevice, fd, HidRaw, device_type,
             IsLegacy, isPureMouse, isHybrid, DbgFlag, MyConfig) &&
    are_zero(MatchProduct, rMatchProduct, ManufCnt, rManufCnt, cMyHidInfo, cMySerInfo, TempSer,
             oldtio, ReadSerConf, screen_info) &&
    are_zero(KernelVersion, report, field, uref, rinfo, finfo, devinfo, running, shmID);

TEST_F(GlobalsTest, AllAreZeroAtLoad) { EXPECT_TRUE(g_zero_at_load); }

TEST_F(GlobalsTest, HaveTheWidthsThatHostsAreCompiledWith) {
  struct Row {
    const char* name;
    size_t size;
  };
  constexpr Row kRows[] = {
      {"TouchDevice", 4 * 568},
      {"DeviceNumber", 4},
      {"PCTDeviceNumber", 4},
      {"ActiveDevice", 4},
      {"fd", 4},
      {"HidRaw", 1},
      {"device_type", 1},
      {"IsLegacy", 4},
      {"isPureMouse", 4},
      {"isHybrid", 4},
      {"DbgFlag", 4},
      {"MyConfig", 9},
      {"MatchProduct", 36 * 64},
      {"rMatchProduct", 36 * 64},
      {"ManufCnt", 4},
      {"rManufCnt", 4},
      {"cMyHidInfo", 144},
      {"cMySerInfo", 4 * 56},
      {"TempSer", 4 * 40},
      {"oldtio", sizeof(termios)},
      {"ReadSerConf", 1},
      {"screen_info", 4 * 36},
      {"KernelVersion", sizeof(utsname)},
      {"report", 12},
      {"field", sizeof(hiddev_field_info)},
      {"uref", sizeof(hiddev_usage_ref)},
      {"rinfo", 12},
      {"finfo", sizeof(hiddev_field_info)},
      {"devinfo", sizeof(::hiddev_devinfo)},
      {"running", 4},
      {"shmID", 4},
  };
  void* library = dlopen("libzelkora.so.1", RTLD_LAZY | RTLD_NOLOAD);
  ASSERT_NE(library, nullptr);
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    void* variable = dlsym(library, row.name);
    ASSERT_NE(variable, nullptr);
    Dl_info info;
    void* entry = nullptr;
    ASSERT_NE(dladdr1(variable, &info, &entry, RTLD_DL_SYMENT), 0);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(static_cast<const ElfW(Sym)*>(entry)->st_size, row.size);
  }
  dlclose(library);
}

struct FieldRow {
  const char* name;
  size_t offset;
  size_t size;
  size_t expected_offset;
  size_t expected_size;
};

// A field, and where it has to be.
#define FIELD(record, member, expected_offset, expected_size)                               \
  {                                                                                         \
#record "." #member, offsetof(record, member), sizeof(record::member), expected_offset, \
        expected_size                                                                       \
  }

void expect_layout(std::span<const FieldRow> rows) {
  for (const FieldRow& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(row.offset, row.expected_offset);
    EXPECT_EQ(row.size, row.expected_size);
  }
}

TEST_F(GlobalsTest, ATableEntryIsLaidOutAsHostsReadIt) {
  constexpr FieldRow kRows[] = {
      FIELD(TouchDeviceEntry, Name, 0, 36),     FIELD(TouchDeviceEntry, Type, 36, 1),
      FIELD(TouchDeviceEntry, Phys, 37, 256),   FIELD(TouchDeviceEntry, EventName, 293, 36),
      FIELD(TouchDeviceEntry, ID, 329, 36),     FIELD(TouchDeviceEntry, FWVersion, 365, 64),
      FIELD(TouchDeviceEntry, POSMode, 429, 1), FIELD(TouchDeviceEntry, Reserved, 430, 100),
      FIELD(TouchDeviceEntry, HidRaw, 530, 1),  FIELD(TouchDeviceEntry, IsLegacy, 532, 4),
      FIELD(TouchDeviceEntry, VID, 536, 4),     FIELD(TouchDeviceEntry, PID, 540, 4),
      FIELD(TouchDeviceEntry, OldVID, 544, 4),  FIELD(TouchDeviceEntry, OldPID, 548, 4),
      FIELD(TouchDeviceEntry, SN, 552, 8),      FIELD(TouchDeviceEntry, FWRevFlash, 560, 4),
      FIELD(TouchDeviceEntry, FWRev, 564, 4),
  };
  expect_layout(kRows);
  EXPECT_EQ(sizeof(TouchDeviceEntry), 568U);
}

TEST_F(GlobalsTest, AResistiveRecordIsLaidOutAsHostsFillIt) {
  constexpr FieldRow kRows[] = {
      FIELD(ResDevInfo, BeepOn, 2, 1),       FIELD(ResDevInfo, PlayMethod, 3, 1),
      FIELD(ResDevInfo, Frequency, 4, 4),    FIELD(ResDevInfo, Duration, 8, 1),
      FIELD(ResDevInfo, ScreenNumber, 9, 1), FIELD(ResDevInfo, DisableRight, 11, 1),
      FIELD(ResDevInfo, RightTime, 12, 1),   FIELD(ResDevInfo, DisableReport, 26, 1),
      FIELD(ResDevInfo, HideCursor, 28, 1),  FIELD(ResDevInfo, FirstMove, 29, 1),
      FIELD(ResDevInfo, ReportMode, 30, 1),  FIELD(ResDevInfo, HidMode, 31, 1),
      FIELD(ResDevInfo, EdgeRight, 32, 4),   FIELD(ResDevInfo, EdgeLeft, 36, 4),
      FIELD(ResDevInfo, EdgeDown, 40, 4),    FIELD(ResDevInfo, EdgeUp, 44, 4),
      FIELD(ResDevInfo, SpareByte, 48, 1),   FIELD(ResDevInfo, Chksum, 52, 4),
  };
  expect_layout(kRows);
  EXPECT_EQ(sizeof(ResDevInfo), 56U);
}

TEST_F(GlobalsTest, TheOtherRecordsAreLaidOutAsHostsReadThem) {
  constexpr FieldRow kRows[] = {
      FIELD(HidInfoTable, ResVendorCount, 0, 1),
      FIELD(HidInfoTable, ResProductCount, 1, 1),
      FIELD(HidInfoTable, ResVendorIds, 4, 16),
      FIELD(HidInfoTable, ResProductIds, 20, 104),
      FIELD(HidInfoTable, PctVendorCount, 124, 1),
      FIELD(HidInfoTable, PctVendorIds, 128, 16),
      FIELD(SerialPanelSlot, Name, 0, 36),
      FIELD(SerialPanelSlot, FWVersion, 36, 20),
      FIELD(SerialReportSlot, Name, 0, 36),
      FIELD(SerialReportSlot, ReportMode, 36, 4),
      FIELD(ScreenInfoEntry, Width, 0, 4),
      FIELD(ScreenInfoEntry, Height, 4, 4),
      FIELD(ScreenInfoEntry, X, 8, 4),
      FIELD(ScreenInfoEntry, Y, 12, 4),
      FIELD(ScreenInfoEntry, OutputName, 16, 20),
      FIELD(ConfigLine, Text, 0, 512),
  };
  expect_layout(kRows);
  EXPECT_EQ(sizeof(HidInfoTable), 144U);
  EXPECT_EQ(sizeof(SerialPanelSlot), 56U);
  EXPECT_EQ(sizeof(SerialReportSlot), 40U);
  EXPECT_EQ(sizeof(ScreenInfoEntry), 36U);
  EXPECT_EQ(sizeof(ConfigLine), 512U);
}

TEST_F(GlobalsTest, TheLibraryWritesAnEntryWhereTheHostReadsIt) {
  write_resistive_list();
  zelkora::test::PanelOptions options;
  options.phys = "usb-0000:00:1d.0-2/input0";
  attach_resistive(options);
  ASSERT_EQ(GetTouchPanels(0), 1);

  unsigned char bytes[568];
  std::memcpy(bytes, TouchDevice, sizeof bytes);
  EXPECT_STREQ(reinterpret_cast<const char*>(bytes), "/dev/usb/hiddev0");
  EXPECT_EQ(bytes[36], 1);
  EXPECT_STREQ(reinterpret_cast<const char*>(bytes) + 37, "usb-0000:00:1d.0-2/input0");
  EXPECT_STREQ(reinterpret_cast<const char*>(bytes) + 329, "3A4C_1688");
  unsigned ids[2];
  std::memcpy(ids, bytes + 536, sizeof ids);
  EXPECT_EQ(ids[0], 0x3A4CU);
  EXPECT_EQ(ids[1], 0x1688U);
}

}  // namespace
