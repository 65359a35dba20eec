// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Parameter sets of PCT panels in the forms they have on their way: the host's record, the block,
// the record of a store file, and what a controller is told. The bytes are written by hand.
#pragma once

#include <array>
#include <cstring>
#include <filesystem>

#include "pct_bench.h"

namespace zelkora::test {

struct ParameterSet {
  PCTDevInfo record;            // without a serial number
  uint8_t hide_cursor;          // byte 5 of the block,
  Bytes tail;                   // and its bytes 20 to 31
  std::array<uint8_t, 3> told;  // the POS configuration as it is written
};

// Every field at its highest value, or near it.
inline ParameterSet loud_set() {
  PCTDevInfo rec{};
  rec.Digitizer = 1;
  rec.BeepOn = 3;
  rec.PlayMethod = 2;
  rec.Frequency = 3000;
  rec.Duration = 50;
  rec.ScreenNumber = 9;
  rec.ClickMode = 2;
  rec.DisableRight = 1;
  rec.RightTime = 7;
  rec.RightRange = 12;
  rec.RightUp = 1;
  rec.POSEnable = rec.HidEnable = rec.SyncFlag = 1;
  rec.DisableReport = 1;
  rec.FlashByte31 = 3;
  rec.HideCursor = 1;
  return {rec,
          1,
          {0x03, 0x02, 0x0B, 0xB8, 0x32, 0x09, 0x21, 0x1E, 0xC7, 0x01, 0x01, 0x03},
          {0x21, 0x1E, 0xC7}};
}

// Every field at its lowest value, or near it.
inline ParameterSet quiet_set() {
  PCTDevInfo rec{};
  rec.Frequency = 500;
  rec.Duration = 5;
  rec.ClickMode = 1;
  rec.RightTime = 3;
  rec.RightRange = 5;
  rec.POSEnable = rec.HidEnable = rec.SyncFlag = 1;
  return {rec,
          0,
          {0x00, 0x00, 0x01, 0xF4, 0x05, 0x00, 0x21, 0x11, 0x53, 0x00, 0x00, 0x00},
          {0x21, 0x19, 0x53}};
}

// What a panel gets that no file knows.
inline ParameterSet default_set() {
  PCTDevInfo rec{};
  rec.BeepOn = 1;
  rec.PlayMethod = 1;
  rec.Frequency = 2000;
  rec.Duration = 10;
  rec.RightTime = 4;
  rec.RightRange = 10;
  rec.POSEnable = rec.HidEnable = rec.SyncFlag = 1;
  return {rec,
          0,
          {0x01, 0x01, 0x07, 0xD0, 0x0A, 0x00, 0x21, 0x10, 0xA4, 0x00, 0x00, 0x00},
          {0x21, 0x18, 0xA4}};
}

using SerialNumber = std::array<uint8_t, 8>;

inline constexpr SerialNumber kOwnNumber = {0x10, 0x21, 0x32, 0x43, 0x54, 0x65, 0x76, 0x87};
inline constexpr SerialNumber kOtherNumber = {0xF0, 0xE1, 0xD2, 0xC3, 0xB4, 0xA5, 0x96, 0x0F};

inline std::string digits(const SerialNumber& number) {
  std::string text;
  for (const uint8_t byte : number) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02x", byte);
    text += pair;
  }
  return text;
}

inline PCTDevInfo host_record(const ParameterSet& set, const SerialNumber& number) {
  PCTDevInfo rec = set.record;
  std::ranges::copy(number, rec.SN);
  return rec;
}

inline Bytes plain_block(const ParameterSet& set, const SerialNumber& number) {
  Bytes plain(12);
  plain[5] = set.hide_cursor;
  plain.insert(plain.end(), number.begin(), number.end());
  return joined_bytes(plain, set.tail);
}

// The part of a store record behind its keys.
inline std::string payload(const ParameterSet& set, const SerialNumber& number) {
  const Bytes bytes = padded(encoded_block(plain_block(set, number)), 64);
  return {bytes.begin(), bytes.end()};
}

inline std::string erased_payload() { return std::string(64, '\xFF'); }

// A set whose checksum is wrong.
inline std::string spoiled_payload(const ParameterSet& set, const SerialNumber& number) {
  std::string bytes = payload(set, number);
  bytes[32] ^= 1;
  return bytes;
}

// What a record is found by.
struct Keys {
  std::string phys;
  std::string serial_number;
  std::string usb_id;
};

inline std::string store_record(const Keys& keys, const std::string& payload) {
  std::string bytes;
  const auto add = [&bytes](std::string text, size_t size) {
    text.resize(size);
    bytes += text;
  };
  add(keys.phys, 256);
  add(keys.serial_number, 17);
  add(keys.usb_id, 10);
  add(payload, 64);
  return bytes;
}

inline constexpr char kRecords[] = "/opt/.touch_panel/.pctpbin";
inline constexpr char kTemporaryRecords[] = "/opt/.touch_panel/.pctpbintmp";
inline constexpr char kNumberList[] = "/opt/.touch_panel/.pctuniq";

// The whole of a store file; none and an empty one differ.
inline constexpr char kNoFile[] = "(no file)";
inline std::string store_file(const char* path) {
  return std::filesystem::exists(path) ? read_file(path) : kNoFile;
}

// The set of a record without the fields that say whose it is.
inline Bytes settings_of(PCTDevInfo rec) {
  rec.POSMode = 0;
  rec.FWVersion = nullptr;
  rec.DevNum = 0;
  Bytes bytes(sizeof rec);
  std::memcpy(bytes.data(), &rec, sizeof rec);
  return bytes;
}

// What a write of the current set tells the X input driver.
inline Lines notification() {
  return {"XOpenDisplay", "mydoled_all_display 0x80000 0", "XCloseDisplay"};
}

inline Lines made_world_writable(const char* path) {
  return {"system chmod 777 \"" + std::string(path) + "\""};
}

}  // namespace zelkora::test
