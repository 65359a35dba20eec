// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench with a panel in the table, and store files put together and taken apart by hand.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "support/bench.h"

namespace zelkora::test {

// One record of a store file, its payload made of one byte.
struct Stored {
  std::string phys;
  std::string serial_number;
  std::string usb_id;
  unsigned char fill = 0;

  bool operator==(const Stored&) const = default;
  // A text as long as its field leaves no room for a terminator.
  std::string bytes() const {
    return field(phys, 256) + field(serial_number, 17) + field(usb_id, 10) +
           std::string(64, static_cast<char>(fill));
  }

 private:
  static std::string field(std::string text, size_t size) {
    text.resize(size, '\0');
    return text;
  }
};

inline std::ostream& operator<<(std::ostream& out, const Stored& record) {
  return out << "{" << record.phys << " " << record.serial_number << " " << record.usb_id << " "
             << int{record.fill} << "}";
}

using Records = std::vector<Stored>;

inline constexpr size_t kRecordSize = 347;

inline std::string bytes_of(const Records& records) {
  std::string bytes;
  for (const Stored& record : records) bytes += record.bytes();
  return bytes;
}

// So many other panels, none of which is like another one.
inline Records other_panels(size_t count) {
  Records records;
  for (size_t i = 0; i < count; ++i) {
    const auto number = static_cast<uint16_t>(i);
    char serial_number[17];
    char usb_id[10];
    std::snprintf(serial_number, sizeof serial_number, "%016x", number);
    std::snprintf(usb_id, sizeof usb_id, "0001_%04X", number);
    records.push_back(
        {"other-" + std::to_string(i) + "/", serial_number, usb_id, static_cast<unsigned char>(i)});
  }
  return records;
}

inline Records joined(Records first, const Records& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class StoreBench : public Bench {
 protected:
  // The panel of entry 0, by its three keys, and what another panel has instead.
  static inline const std::string kPhys = "usb-0000:00:14.0-1/input0";
  static inline const std::string kSerialNumber = "a1b2c3d4e5f60708";
  static inline const std::string kUsbId = "2575_87AB";
  static inline const std::string kOtherPhys = "usb-0000:00:14.0-2/input0";
  static inline const std::string kOtherSerialNumber = "1122334455667788";
  static inline const std::string kOtherUsbId = "3A4C_8752";
  static constexpr unsigned char kNewFill = 0xC3;

  void SetUp() override {
    Bench::SetUp();
    host.debug = DbgFlag = 1;
    set_entry(0, panel());
  }

  static Stored panel(unsigned char fill = kNewFill) {
    return {kPhys, kSerialNumber, kUsbId, fill};
  }

  static void set_entry(int index, const Stored& panel) {
    TouchDeviceEntry& entry = TouchDevice[index];
    std::snprintf(entry.Phys, sizeof entry.Phys, "%s", panel.phys.c_str());
    for (size_t i = 0; i < sizeof entry.SN; ++i) {
      entry.SN[i] =
          static_cast<unsigned char>(std::stoi(panel.serial_number.substr(2 * i, 2), nullptr, 16));
    }
    entry.VID = static_cast<unsigned>(std::stoi(panel.usb_id.substr(0, 4), nullptr, 16));
    entry.PID = static_cast<unsigned>(std::stoi(panel.usb_id.substr(5, 4), nullptr, 16));
  }

  static unsigned store(const std::string& path, int mode, int devnum = 0) {
    const std::vector<unsigned char> payload(ZELKORA_STORE_PAYLOAD, kNewFill);
    return Write_Binary_File(path.c_str(), devnum, payload.data(), mode);
  }

  // What reading came to. A payload that nobody wrote to is made of this byte.
  static constexpr unsigned char kUntouched = 0xEE;
  struct Fetched {
    unsigned result;
    unsigned char fill;
    bool operator==(const Fetched&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Fetched& fetched) {
      return out << "result " << fetched.result << ", payload of " << int{fetched.fill};
    }
  };
  static Fetched fetch(const std::string& path, int mode, int devnum = 0) {
    // The byte behind the payload is nobody's to write to.
    std::vector<unsigned char> payload(ZELKORA_STORE_PAYLOAD + 1, kUntouched);
    const unsigned result = Read_Binary_File(path.c_str(), devnum, payload.data(), mode);
    EXPECT_EQ(payload.back(), kUntouched);
    payload.pop_back();
    EXPECT_EQ(payload, std::vector<unsigned char>(ZELKORA_STORE_PAYLOAD, payload[0]));
    return {result, payload[0]};
  }

  static void write_records(const std::string& path, const Records& records) {
    write_file(path, bytes_of(records));
  }

  static void expect_records(const std::string& path, const Records& expected) {
    const std::string bytes = read_file(path);
    Records found;
    for (size_t at = 0; at + kRecordSize <= bytes.size(); at += kRecordSize) {
      found.push_back({text_at(bytes, at, 256), text_at(bytes, at + 256, 17),
                       text_at(bytes, at + 273, 10), static_cast<unsigned char>(bytes[at + 283])});
    }
    EXPECT_EQ(found, expected);
    EXPECT_TRUE(bytes == bytes_of(expected)) << path << " differs in the bytes behind its texts";
  }

  static std::string chmod_of(const std::string& path) { return "chmod 777 \"" + path + "\""; }
  void allow_chmod(const std::string& path) { answer_command({.command = chmod_of(path)}); }

  // The messages of debug level 3, without their prefix and line feed.
  Lines told() const {
    Lines lines;
    for (std::string line : messages()) {
      EXPECT_TRUE(line.starts_with("zelkora DD:") && line.ends_with('\n')) << line;
      lines.push_back(line.substr(11, line.size() - 12));
    }
    return lines;
  }

 private:
  static std::string text_at(const std::string& bytes, size_t at, size_t size) {
    return {bytes.data() + at, ::strnlen(bytes.data() + at, size)};
  }
};

// What PrintData() prints of a payload made of one byte.
inline std::string payload_dump(const std::string& label, unsigned char fill) {
  char row[64];
  std::snprintf(row, sizeof row, "0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x\n", fill,
                fill, fill, fill, fill, fill, fill, fill);
  std::string text = label + "---start\n";
  for (int i = 0; i < 8; ++i) text += row;
  return text + label + "---End\n";
}

inline Lines joined_lines(std::initializer_list<Lines> parts) {
  Lines all;
  for (const Lines& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

}  // namespace zelkora::test
