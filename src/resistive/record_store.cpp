// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The parameter records of resistive and serial panels in the store files: the saved one, and a
// working copy that an edit begins with and can go back to.
#include <cstring>

#include "core/bytes.h"
#include "core/log.h"
#include "core/paths.h"
#include "record_words.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::paths::kResistiveRecords;
using zelkora::paths::kResistiveTemporaryRecords;

namespace {

constexpr int kByPhys = 1;  // see Read_Binary_File()

bool has_phys(unsigned devnum) { return TouchDevice[devnum].Phys[0] != '\0'; }

}  // namespace

unsigned int ReadResAllDataBin(const char* file, unsigned int devnum, ResDevInfo* rec) {
  DebugMsg(kTrace, "***ReadResAllDataBin ReadRegBinary phys:%s***\n", TouchDevice[devnum].Phys);
  if (!has_phys(devnum)) return 0;
  unsigned char payload[ZELKORA_STORE_PAYLOAD]{};
  const unsigned found = Read_Binary_File(file, static_cast<int>(devnum), payload, kByPhys);
  if (found == 0) return 0;
  unsigned words[ZELKORA_RES_STORED_WORDS];
  for (size_t i = 0; i < ZELKORA_RES_STORED_WORDS; ++i) {
    words[i] = zelkora::get_be16(payload + 2 * i);
  }
  ResParamaDecode(rec, words);
  return found;
}

unsigned int WriteResAllDataBin(const char* file, unsigned int devnum, ResDevInfo* rec) {
  if (!has_phys(devnum)) return 0;
  unsigned words[ZELKORA_RES_STORED_WORDS];
  ResParamaEncode(rec, words);
  unsigned char payload[ZELKORA_STORE_PAYLOAD]{};
  for (size_t i = 0; i < ZELKORA_RES_STORED_WORDS; ++i) {
    zelkora::put_be16(payload + 2 * i, words[i]);
  }
  return Write_Binary_File(file, static_cast<int>(devnum), payload, kByPhys);
}

unsigned int CleanResAllDataBin(const char* file, unsigned int devnum) {
  unsigned char payload[ZELKORA_STORE_PAYLOAD];
  std::memset(payload, 0xFF, sizeof payload);
  // The record read takes the place of what was to erase it, and is written back as it was: the
  // working copy outlives its deletion, and hosts go back to it twice.
  const unsigned found = Read_Binary_File(file, static_cast<int>(devnum), payload, kByPhys);
  if (found == 0) return 0;
  return Write_Binary_File(file, static_cast<int>(devnum), payload, kByPhys);
}

int GetResAllDataBin(int devnum, ResDevInfo* rec) {
  return static_cast<int>(ReadResAllDataBin(kResistiveRecords, static_cast<unsigned>(devnum), rec));
}

int SetResAllDataBin(int devnum, ResDevInfo* rec) {
  const unsigned written =
      WriteResAllDataBin(kResistiveRecords, static_cast<unsigned>(devnum), rec);
  if (written != 0) SendResConfigChange();
  return static_cast<int>(written);
}

int GetResAllDataBinTemp(int devnum, ResDevInfo* rec) {
  std::memcpy(TouchDevice[devnum].SN, zelkora::resistive::kPlaceholderSerialNumber,
              sizeof TouchDevice[devnum].SN);
  return static_cast<int>(
      ReadResAllDataBin(kResistiveTemporaryRecords, static_cast<unsigned>(devnum), rec));
}

int SetResAllDataBinTemp(int devnum, ResDevInfo* rec) {
  return static_cast<int>(
      WriteResAllDataBin(kResistiveTemporaryRecords, static_cast<unsigned>(devnum), rec));
}

int DelResAllDataBinTemp(int devnum) {
  return static_cast<int>(
      CleanResAllDataBin(kResistiveTemporaryRecords, static_cast<unsigned>(devnum)));
}

int MatchResCheckSum(int devnum) {
  ResDevInfo saved{};
  ResDevInfo working{};
  if (GetResAllDataBin(devnum, &saved) == 0 || GetResAllDataBinTemp(devnum, &working) == 0)
    return 0;
  return saved.Chksum == working.Chksum ? 1 : 0;
}
