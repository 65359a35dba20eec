// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The records of the parameter store files: storing one and finding it again.
#include <cstring>
#include <optional>

#include "core/log.h"
#include "core/text.h"
#include "record_file.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::store::KeyTexts;
using zelkora::store::RecordFile;

namespace {

// The first key that a record is looked for by.
enum Mode { kByPhys = 1, kBySerialNumber = 2 };

// What a record that the first key does not find is known by.
enum class Likeness { kPhysAndUsbId, kPhys, kUsbId };

struct Fallback {
  Likeness likeness;
  int index;
};

bool is_like(const KeyTexts& record, const KeyTexts& device, Likeness likeness) {
  switch (likeness) {
    case Likeness::kPhysAndUsbId:
      return record.has_phys_of(device) && record.has_usb_id_of(device);
    case Likeness::kPhys:
      return record.has_phys_of(device);
    case Likeness::kUsbId:
      return record.has_usb_id_of(device);
  }
  return false;
}

// The first record of the closest likeness there is.
std::optional<Fallback> find_fallback(const RecordFile& file, const KeyTexts& device) {
  for (const Likeness likeness : {Likeness::kPhysAndUsbId, Likeness::kPhys, Likeness::kUsbId}) {
    int index = 0;
    for (const ParamStoreRecord& record : file.records()) {
      if (is_like(KeyTexts(record), device, likeness)) return Fallback{likeness, index};
      ++index;
    }
  }
  return std::nullopt;
}

void log_device(const char* function, const char* path, const KeyTexts& device) {
  DebugMsg(kTrace, "%s FileName:%s\n", function, path);
  DebugMsg(kTrace, "%s phys:%s\n", function, device.phys);
  if (zelkora::contains(path, "pct")) {
    DebugMsg(kTrace, "%s SN:%s USB_ID:%s\n", function, device.serial_number, device.usb_id);
  }
}

// The first record that the key finds.
std::optional<int> find_first(const RecordFile& file, const KeyTexts& device, int mode) {
  int index = 0;
  for (const ParamStoreRecord& stored : file.records()) {
    const KeyTexts record(stored);
    if (mode == kByPhys && record.has_phys_of(device)) {
      DebugMsg(kTrace, "*** Write_Binary_File MatchCnt:%d phys:%s , SN:%s phys--match***\n", index,
               record.phys, record.serial_number);
      return index;
    }
    if (mode == kBySerialNumber && record.has_serial_number_of(device)) {
      DebugMsg(kTrace, "*** Write_Binary_File MatchCnt:%d phys:%s , SN:%s SN--match ***\n", index,
               record.phys, record.serial_number);
      return index;
    }
    if (mode != kByPhys && mode != kBySerialNumber) {
      DebugMsg(kTrace, "*** Write_Binary_File bin[%d] phys:%s , SN:%s not match***\n", index,
               record.phys, record.serial_number);
    }
    ++index;
  }
  return std::nullopt;
}

// The record to write over when the key finds none.
std::optional<int> find_replaceable(const RecordFile& file, const KeyTexts& device) {
  const std::optional<Fallback> found = find_fallback(file, device);
  if (!found) return std::nullopt;
  const KeyTexts record(file.records()[static_cast<size_t>(found->index)]);
  switch (found->likeness) {
    case Likeness::kPhysAndUsbId:
      DebugMsg(kTrace, "*** Write_Binary_File phys:%s USB_ID:%s match ***\n", record.phys,
               record.usb_id);
      return found->index;
    case Likeness::kPhys:
      DebugMsg(kTrace, "*** Write_Binary_File phys:%s match ***\n", record.phys);
      return found->index;
    case Likeness::kUsbId:
      // The record of another panel of the same kind, which is left alone.
      DebugMsg(kTrace, "*** Write_Binary_File USB_ID:%s match ***\n", record.usb_id);
      return std::nullopt;
  }
  return std::nullopt;
}

// Where the device's record goes; none: behind the last.
std::optional<int> choose_slot(const RecordFile& file, const KeyTexts& device, int mode) {
  std::optional<int> slot = find_first(file, device, mode);
  if (!slot) slot = find_replaceable(file, device);
  DebugMsg(kTrace, "*** Write_Binary_File MatchCnt:%d MemCnt:%d***\n", slot.value_or(-1),
           file.count());
  if (!slot) DebugMsg(kTrace, "write to end line MemCnt:%d\n", file.count());
  return slot;
}

// A record found, and what its finder is told.
struct Found {
  int index;
  unsigned result;
  bool of_another_panel = false;
};

// The last record that the key finds: the writer takes the first, and where a file holds two, its
// users know what they read.
std::optional<Found> find_last(const RecordFile& file, const KeyTexts& device, int mode) {
  std::optional<Found> found;
  int index = 0;
  for (const ParamStoreRecord& stored : file.records()) {
    const KeyTexts record(stored);
    DebugMsg(kTrace, "Read_Binary_File phys[%d]:%s , SN[%d]:%s\n", index, record.phys, index,
             record.serial_number);
    const bool phys = record.has_phys_of(device);
    if (mode == kByPhys && phys) found = {index, 1};
    if (mode == kBySerialNumber && record.has_serial_number_of(device)) {
      found = {index, phys ? 3U : 2U};
    }
    ++index;
  }
  return found;
}

std::optional<Found> find(const RecordFile& file, const KeyTexts& device, int mode) {
  if (const std::optional<Found> found = find_last(file, device, mode)) return found;
  if (const std::optional<Fallback> found = find_fallback(file, device)) {
    return Found{found->index, 1, found->likeness == Likeness::kUsbId};
  }
  return std::nullopt;
}

}  // namespace

unsigned int Write_Binary_File(const char* path, int devnum, const unsigned char* payload,
                               int mode) {
  const KeyTexts device(TouchDevice[devnum]);
  DebugMsg(kTrace, "==================DevNum:%d=================\n", devnum);
  log_device("Write_Binary_File", path, device);
  DebugMsg(kTrace, "====================end=====================\n");
  if (device.phys[0] == '\0') return 0;
  PrintData("Write_Binary_File mem", payload, ZELKORA_STORE_PAYLOAD);

  RecordFile file(path);
  std::optional<int> slot;
  if (file.opened()) {
    slot = choose_slot(file, device, mode);
  } else if (file.missing()) {
    DebugMsg(kTrace, "Write_Binary_File file not found phys:%s\n", device.phys);
  } else {
    return 0;  // what is there cannot be read, and would be lost
  }
  if (!file.put(slot, zelkora::store::make_record(device, payload))) return 0;
  DebugMsg(kTrace, "*** Write_Binary_File MemCnt:%d ***\n", file.count());
  return file.save("Write_Binary_File") ? 1 : 0;
}

unsigned int Read_Binary_File(const char* path, int devnum, unsigned char* payload, int mode) {
  constexpr char kLine[] = "-----------------------------------------\n";
  const KeyTexts device(TouchDevice[devnum]);
  DebugMsg(kTrace, "%s", kLine);
  log_device("Read_Binary_File", path, device);
  DebugMsg(kTrace, "%s", kLine);
  if (device.phys[0] == '\0') return 0;

  const RecordFile file(path);
  if (!file.opened()) {
    DebugMsg(kTrace, "Read_Binary_File open FileName:%s error\n", path);
    return 0;
  }
  const std::optional<Found> found = find(file, device, mode);
  if (found) {
    DebugMsg(kTrace, "Read_Binary_File FileName:%s MatchCnt:%d\n", path, found->index);
    std::memcpy(payload, file.records()[static_cast<size_t>(found->index)].Payload,
                ZELKORA_STORE_PAYLOAD);
    PrintData("Read_Binary_File mem", payload, ZELKORA_STORE_PAYLOAD);
    // A replacement panel inherits the settings in a record of its own.
    if (found->of_another_panel) Write_Binary_File(path, devnum, payload, mode);
  } else {
    DebugMsg(kTrace, "Read_Binary_File not match\n");
  }
  DebugMsg(kTrace, "Read_Binary_File----end\n");
  return found ? found->result : 0;
}
