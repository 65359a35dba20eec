// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The list of known serial numbers: a record file without parameters.
#include <optional>

#include "core/log.h"
#include "core/paths.h"
#include "record_file.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::paths::kPctSerialNumbers;
using zelkora::store::KeyTexts;
using zelkora::store::RecordFile;

namespace {

std::optional<int> find(const RecordFile& file, const KeyTexts& device) {
  std::optional<int> slot;
  int index = 0;
  for (const ParamStoreRecord& stored : file.records()) {
    const KeyTexts record(stored);
    DebugMsg(kTrace, "*** Write_UniqList_Binary_File phys:%s , SN:%s ***\n", record.phys,
             record.serial_number);
    if (!slot && (record.has_serial_number_of(device) || record.has_phys_of(device))) slot = index;
    ++index;
  }
  return slot;
}

}  // namespace

unsigned int Write_UniqList_Binary_File(int devnum) {
  const KeyTexts device(TouchDevice[devnum]);
  if (device.phys[0] == '\0') return 0;
  RecordFile file(kPctSerialNumbers);
  std::optional<int> slot;
  if (file.opened()) {
    slot = find(file, device);
    DebugMsg(kTrace, "*** Write_UniqList_Binary_File MatchCnt:%d MemCnt:%d***\n", slot.value_or(-1),
             file.count());
    if (!slot) DebugMsg(kTrace, "write to end line MemCnt:%d\n", file.count());
  } else if (file.missing()) {
    DebugMsg(kTrace, "Write_UniqList_Binary_File file not found phys:%s\n", device.phys);
  } else {
    return 0;
  }
  constexpr unsigned char kNoParameters[ZELKORA_STORE_PAYLOAD]{};
  if (!file.put(slot, zelkora::store::make_record(device, kNoParameters))) return 0;
  DebugMsg(kTrace, "*** Write_UniqList_Binary_File MemCnt:%d ***\n", file.count());
  return file.save("Write_UniqList_Binary_File") ? 1 : 0;
}

unsigned int Read_UniqList_Binary_File(int devnum) {
  const KeyTexts device(TouchDevice[devnum]);
  DebugMsg(kTrace, "-----------------------------------------\n");
  if (device.phys[0] == '\0') return 0;
  const RecordFile file(kPctSerialNumbers);
  if (!file.opened()) {
    DebugMsg(kTrace, "Read_UniqList_Binary_File open FileName:%s error\n", kPctSerialNumbers);
    return 0;
  }
  int index = 0;
  for (const ParamStoreRecord& stored : file.records()) {
    const KeyTexts record(stored);
    DebugMsg(kTrace, "Read_UniqList_Binary_File phys[%d]:%s , SN[%d]:%s\n", index, record.phys,
             index, record.serial_number);
    if (record.has_phys_of(device)) {
      DebugMsg(kTrace, "Read_UniqList_Binary_File FileName:%s MatchCnt:%d SN:%s\n",
               kPctSerialNumbers, index, record.serial_number);
      return 1;
    }
    ++index;
  }
  DebugMsg(kTrace, "Read_UniqList_Binary_File not match\n");
  return 0;
}
