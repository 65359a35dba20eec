// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cstring>
#include <string>

#include "support/bench.h"

namespace {

using zelkora::test::Lines;
using DeviceTableTest = zelkora::test::Bench;

// A buffer with room behind the field that must stay as it was.
struct Out {
  Out() { std::memset(bytes, '?', sizeof bytes); }
  std::string text(size_t size) const { return {bytes, size}; }
  std::string rest(size_t size) const { return {bytes + size, sizeof bytes - size}; }

  char bytes[80];
};

// A text that fills a field to its last byte, without a terminator.
template <size_t kSize>
std::string fill(char (&field)[kSize], char letter) {
  std::memset(field, letter, kSize);
  return std::string(kSize, letter);
}

TEST_F(DeviceTableTest, TheTypeIsThatOfTheEntry) {
  for (int index = 0; index < ZELKORA_MAX_DEVICES; ++index) {
    TouchDevice[index].Type = static_cast<unsigned char>(index == 3 ? 255 : index + 1);
  }
  EXPECT_EQ(GetTouchDeviceType(0), ZELKORA_TYPE_RESISTIVE_USB);
  EXPECT_EQ(GetTouchDeviceType(1), ZELKORA_TYPE_RESISTIVE_SERIAL);
  EXPECT_EQ(GetTouchDeviceType(2), ZELKORA_TYPE_PCT);
  EXPECT_EQ(GetTouchDeviceType(3), 255);
}

TEST_F(DeviceTableTest, TextsAreCopiedAsWholeFieldsAndNothingBehindThem) {
  struct Row {
    const char* name;
    void (*copy)(int, char*);
    size_t size;
    std::string (*fill)(TouchDeviceEntry&, char);
  };
  const Row rows[] = {
      {"Name", GetTouchDeviceName, 36, [](TouchDeviceEntry& e, char c) { return fill(e.Name, c); }},
      {"ID", GetTouchDeviceID, 36, [](TouchDeviceEntry& e, char c) { return fill(e.ID, c); }},
      {"FWVersion", GetTouchDeviceFw, 64,
       [](TouchDeviceEntry& e, char c) { return fill(e.FWVersion, c); }},
  };
  for (const Row& row : rows) {
    for (int index = 0; index < ZELKORA_MAX_DEVICES; ++index) {
      SCOPED_TRACE(std::string(row.name) + " of entry " + std::to_string(index));
      Out out;
      const std::string text = row.fill(TouchDevice[index], static_cast<char>('a' + index));
      row.copy(index, out.bytes);
      EXPECT_EQ(out.text(row.size), text);
      EXPECT_EQ(out.rest(row.size), std::string(sizeof out.bytes - row.size, '?'));
    }
  }
}

TEST_F(DeviceTableTest, AShortTextComesWithTheRestOfItsField) {
  TouchDeviceEntry& entry = TouchDevice[0];
  std::strcpy(entry.Name, "/dev/hidraw0");
  entry.Name[35] = 'x';
  std::strcpy(entry.ID, "3A4C_1688");
  entry.ID[35] = 'y';
  std::strcpy(entry.FWVersion, "V1.2");
  entry.FWVersion[63] = 'z';

  Out name;
  GetTouchDeviceName(0, name.bytes);
  EXPECT_EQ(name.text(36), "/dev/hidraw0" + std::string(23, '\0') + "x");
  Out id;
  GetTouchDeviceID(0, id.bytes);
  EXPECT_EQ(id.text(36), "3A4C_1688" + std::string(26, '\0') + "y");
  Out firmware;
  GetTouchDeviceFw(0, firmware.bytes);
  EXPECT_EQ(firmware.text(64), "V1.2" + std::string(59, '\0') + "z");
}

TEST_F(DeviceTableTest, ShowDeviceInfoPrintsAnEntryInElevenLinesBetweenSeparators) {
  TouchDeviceEntry& entry = TouchDevice[2];
  std::strcpy(entry.Name, "/dev/hidraw7");
  std::strcpy(entry.Phys, "usb-0000:00:14.0-1/input0");
  std::strcpy(entry.FWVersion, "V1.2");
  entry.Type = 3;
  entry.POSMode = 200;
  entry.HidRaw = 1;
  entry.IsLegacy = -2;
  entry.VID = 0x00ab;
  entry.PID = 0x1F0;
  const unsigned char sn[8] = {0x00, 0x01, 0x0A, 0xAB, 0x7F, 0x80, 0xFF, 0x10};
  std::memcpy(entry.SN, sn, sizeof sn);

  DbgFlag = 1;
  ShowDeviceInfo(2);
  EXPECT_EQ(messages(),
            (Lines{"zelkora DD:---------------------------------------------------------\n",
                   "zelkora DD:Name : /dev/hidraw7\n", "zelkora DD:Type : 3\n",
                   "zelkora DD:Phys : usb-0000:00:14.0-1/input0\n", "zelkora DD:FWVersion : V1.2\n",
                   "zelkora DD:POSMode : 200\n", "zelkora DD:HidRaw : 1\n",
                   "zelkora DD:IsLegacy : -2\n", "zelkora DD:VID : 0x00AB\n",
                   "zelkora DD:PID : 0x01F0\n", "zelkora DD:SN:00010AAB7F80FF10\n",
                   "zelkora DD:---------------------------------------------------------\n"}));
}

TEST_F(DeviceTableTest, ShowDeviceInfoIsSilentWithoutTheDebugSwitch) {
  ShowDeviceInfo(0);
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(DeviceTableTest, ShowDeviceInfoTakesNoTextForAFormat) {
  std::strcpy(TouchDevice[0].Name, "%s%n");
  std::strcpy(TouchDevice[0].Phys, "%s%n%s");
  std::strcpy(TouchDevice[0].FWVersion, "%n");
  DbgFlag = 1;
  ShowDeviceInfo(0);
  ASSERT_EQ(messages().size(), 12U);
  EXPECT_EQ(messages()[1], "zelkora DD:Name : %s%n\n");
  EXPECT_EQ(messages()[3], "zelkora DD:Phys : %s%n%s\n");
  EXPECT_EQ(messages()[4], "zelkora DD:FWVersion : %n\n");
}

}  // namespace
