// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the tests of the parameter records share: records that can be told apart, the store files to
// the byte, and all that happens to files, controller and driver as one list of short steps.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <functional>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "support/bench.h"
#include "transport/fake_hid.h"
#include "zelkora.h"

namespace zelkora::test {

inline const std::string kSavedFile = data_file(".restpbin");
inline const std::string kWorkingFile = data_file(".restpbintmp");
inline constexpr char kUsbPhys[] = "usb-0000:00:14.0-1/input0";
inline constexpr char kPlaceholder[] = "0102030405060708";

// A record in which every field that is stored differs from those of other seeds.
inline ResDevInfo record_of(unsigned char seed) {
  ResDevInfo record{};
  const auto byte = [seed](int offset) { return static_cast<unsigned char>(seed + offset); };
  record.BeepOn = byte(1);
  record.PlayMethod = byte(2);
  record.Frequency = 1000U + seed;
  record.Duration = byte(3);
  record.ScreenNumber = byte(4);
  record.DisableRight = byte(5);
  record.RightTime = byte(6);
  record.DisableReport = byte(7);
  record.HideCursor = byte(8);
  record.FirstMove = byte(9);
  record.ReportMode = byte(10);
  record.HidMode = byte(11);
  record.EdgeRight = 0x100 + seed;
  record.EdgeLeft = 0x200 + seed;
  record.EdgeDown = 0x300 + seed;
  record.EdgeUp = 0x400 + seed;
  record.SpareByte = byte(12);
  return record;
}

// What panels get where there is no file of defaults.
inline ResDevInfo default_record() {
  ResDevInfo record{};
  record.BeepOn = 1;
  record.PlayMethod = 1;
  record.Frequency = 2000;
  record.Duration = 10;
  record.RightTime = 4;
  record.FirstMove = 1;
  record.ReportMode = 1;
  record.HidMode = 2;
  return record;
}

inline unsigned sum_of(const Bytes& bytes) {
  unsigned sum = 0x6666;
  for (const uint8_t byte : bytes) sum += byte;
  return sum & 0xFFFF;
}

inline void append_word(Bytes& bytes, unsigned word) {
  bytes.push_back(static_cast<uint8_t>(word >> 8));
  bytes.push_back(static_cast<uint8_t>(word));
}

// The 64 bytes under which a record is stored.
inline Bytes payload_of(const ResDevInfo& record) {
  const auto edge = [](int value) { return static_cast<unsigned>(value); };
  Bytes bytes;
  for (const unsigned word :
       {unsigned{record.ReportMode}, unsigned{record.BeepOn}, unsigned{record.PlayMethod},
        record.Frequency, unsigned{record.Duration}, unsigned{record.RightTime},
        unsigned{record.ScreenNumber}, unsigned{record.DisableRight}, unsigned{record.SpareByte},
        unsigned{record.HidMode}, edge(record.EdgeRight), edge(record.EdgeLeft),
        edge(record.EdgeDown), edge(record.EdgeUp), unsigned{record.DisableReport},
        unsigned{record.HideCursor}}) {
    append_word(bytes, word);
  }
  append_word(bytes, sum_of(bytes));
  return padded(bytes, ZELKORA_STORE_PAYLOAD);
}

inline std::string cut_field(std::string text, size_t size) {
  text.resize(size);
  return text;
}

// One record of a store file.
inline std::string stored_record(const std::string& phys, const Bytes& payload,
                                 const std::string& usb_id = "3A4C_1688",
                                 const std::string& serial_number = kPlaceholder) {
  return cut_field(phys, 256) + cut_field(serial_number, 17) + cut_field(usb_id, 10) +
         std::string(payload.begin(), payload.end());
}

inline unsigned flash_checksum(const ResDevInfo& record) {
  Bytes bytes;
  for (const int word : {0, 300, 0, 0, 0, int{record.HidMode}, record.EdgeRight, record.EdgeLeft,
                         record.EdgeDown, record.EdgeUp}) {
    append_word(bytes, static_cast<unsigned>(word));
  }
  return sum_of(bytes);
}

inline std::string write_step(unsigned address, unsigned value) {
  char text[24];
  std::snprintf(text, sizeof text, "SP%02X%04X", address, value & 0xFFFF);
  return text;
}

// The writes of a record into the controller, in order; of one address alone and the checksum
// where one is given.
inline Lines flash_steps(const ResDevInfo& record, unsigned only_address = 0) {
  const auto edge = [](int value) { return static_cast<unsigned>(value); };
  const std::pair<unsigned, unsigned> writes[] = {
      {51, 0},
      {53, 300},
      {56, 0},
      {67, 0},
      {68, 0},
      {69, record.HidMode},
      {70, edge(record.EdgeRight)},
      {71, edge(record.EdgeLeft)},
      {72, edge(record.EdgeDown)},
      {73, edge(record.EdgeUp)},
      {91, flash_checksum(record)},
  };
  Lines steps;
  for (const auto& [address, value] : writes) {
    if (only_address == 0 || address == only_address || address == 91) {
      steps.push_back(write_step(address, value));
    }
  }
  return steps;
}

class RecordBench : public Bench {
 protected:
  void SetUp() override {
    Bench::SetUp();
    allow_any_command();  // new store files are made world-writable
    host.debug = DbgFlag = 1;
  }

  // A panel as entry 0, which nobody opened.
  Panel& add_usb_panel() {
    Panel& panel = attach_resistive();
    set_entry(panel.nodes.hiddev, ZELKORA_TYPE_RESISTIVE_USB, kUsbPhys);
    TouchDevice[0].VID = 0x3A4C;
    TouchDevice[0].PID = 0x1688;
    return panel;
  }

  // Reports that hold nothing, whatever was asked. (Where the request for a report stalls instead,
  // the kernel still has the frame that was sent, and a read of a value takes it for its answer.)
  static void silence(Panel& panel) { panel.usb.set_forged_reply(Bytes(63)); }

  // A port as entry 0, as discovery enters it; there may be none of that name.
  static void add_serial_entry(const std::string& name = "ttyS0") {
    set_entry(name, ZELKORA_TYPE_RESISTIVE_SERIAL, name);
  }

  // Calls it without the library's dumps on the test's own output.
  template <typename Action>
  static int quietly(const Action& action) {
    int result = 0;
    captured_stdout([&] { result = static_cast<int>(action()); });
    return result;
  }

  // What happened: "open", "close", "read saved", "write working", "notify", and the commands
  // without their markers, such as "GP5B".
  Lines steps() const {
    Lines steps;
    for (const std::string& line : trace()) {
      if (const std::string step = step_of(line); !step.empty()) steps.push_back(step);
    }
    return steps;
  }

 private:
  static void set_entry(const std::string& name, unsigned char type, const std::string& phys) {
    TouchDeviceEntry& entry = TouchDevice[0];
    std::snprintf(entry.Name, sizeof entry.Name, "%s", name.c_str());
    std::snprintf(entry.Phys, sizeof entry.Phys, "%s", phys.c_str());
    entry.Type = type;
    for (unsigned char i = 0; i < sizeof entry.SN; ++i) {
      entry.SN[i] = static_cast<unsigned char>(i + 1);
    }
    DeviceNumber = 1;
  }

  static std::string step_of(const std::string& line) {
    if (line.starts_with("open ")) return "open";
    if (line.starts_with("close ")) return "close";
    if (line.starts_with("set_report 1: ")) return command_in(line.substr(17));
    if (line.starts_with("write /dev/")) return command_in(line.substr(line.find(": ") + 2));
    if (line.starts_with("mydoled_all_display ")) {
      return line == "mydoled_all_display 0x1000000 0" ? "notify" : line;
    }
    const std::string file = line.substr(line.find(':') + 1);
    if (file == "Read_Binary_File FileName:" + kSavedFile) return "read saved";
    if (file == "Read_Binary_File FileName:" + kWorkingFile) return "read working";
    if (file == "Write_Binary_File FileName:" + kSavedFile) return "write saved";
    if (file == "Write_Binary_File FileName:" + kWorkingFile) return "write working";
    return "";
  }

  // "01 47 50 35 42 0D" is GP5B.
  static std::string command_in(const std::string& hex) {
    std::istringstream bytes(hex);
    std::string text;
    for (unsigned byte = 0; bytes >> std::hex >> byte;) text += static_cast<char>(byte);
    const bool framed = text.size() > 2 && text.front() == 0x01 && text.back() == 0x0D;
    return framed ? text.substr(1, text.size() - 2) : hex;
  }
};

// The records that a whole-set operation can meet.
enum class Kept {
  kNone,
  kMine,  // the caller's
  kSaved,
  kWorking,
  kDefaults,
  kDefaultsOverMine,  // with the caller's spare byte, for which there is no default
};

inline ResDevInfo record_named(Kept kept) {
  ResDevInfo over_mine = default_record();
  over_mine.SpareByte = record_of(0x10).SpareByte;
  switch (kept) {
    case Kept::kMine:
      return record_of(0x10);
    case Kept::kSaved:
      return record_of(0x30);
    case Kept::kWorking:
      return record_of(0x50);
    case Kept::kDefaultsOverMine:
      return over_mine;
    default:
      return default_record();
  }
}

inline std::string file_with(Kept kept, const std::string& phys, const std::string& usb_id) {
  return stored_record(phys, payload_of(record_named(kept)), usb_id);
}

// One call of a whole-set operation: what is stored before and after it, and each step.
struct SetRow {
  const char* name;
  int mode;
  int only_address;
  Kept saved;    // before
  Kept working;  // before
  Kept flash;    // whose checksum the controller holds
  Lines steps;   // between opening and closing
  Kept saved_after;
  Kept working_after;
  Kept record_after;  // what the caller's record holds
  int result;
};

inline void PrintTo(const SetRow& row, std::ostream* out) { *out << row.name; }

inline std::string set_row_name(const testing::TestParamInfo<SetRow>& info) {
  return info.param.name;
}

class SetBench : public RecordBench, public testing::WithParamInterface<SetRow> {
 protected:
  const SetRow& row = GetParam();

  // The store files as the row has them, for the panel of entry 0.
  void prepare_files() {
    phys_ = TouchDevice[0].Phys;
    usb_id_ = TouchDevice[0].VID == 0 ? "0000_0000" : "3A4C_1688";
    if (row.saved != Kept::kNone) write_file(kSavedFile, content(row.saved));
    if (row.working != Kept::kNone) write_file(kWorkingFile, content(row.working));
  }

  void expect_files_after() const {
    expect_file(kSavedFile, row.saved_after);
    expect_file(kWorkingFile, row.working_after);
  }

  // The first move is in no file, so it stays the caller's until the defaults bring their own.
  void expect_record_after(const ResDevInfo& record) const {
    EXPECT_EQ(payload_of(record), payload_of(record_named(row.record_after)));
    const bool defaults = row.record_after == Kept::kDefaultsOverMine;
    EXPECT_EQ(record.FirstMove, record_named(defaults ? Kept::kDefaults : Kept::kMine).FirstMove);
  }

 private:
  std::string content(Kept kept) const { return file_with(kept, phys_, usb_id_); }

  void expect_file(const std::string& path, Kept kept) const {
    SCOPED_TRACE(path);
    if (kept == Kept::kNone) {
      EXPECT_FALSE(std::filesystem::exists(path));
    } else {
      EXPECT_EQ(read_file(path), content(kept));
    }
  }

  std::string phys_;
  std::string usb_id_;
};

}  // namespace zelkora::test
