// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The identity block in a PCT controller's flash: the panel's serial number, and the USB id and
// firmware revision of the day it was written.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "core/bytes.h"
#include "core/log.h"
#include "core/text.h"
#include "product_ids.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::SerialNumberText;

namespace {

constexpr int kReadAttempts = 11;
constexpr unsigned kReadWaitUs = 300'000;

// The plain block as identity. Numbers have their high byte first.
struct IdentityBlock {
  uint8_t vendor[2];
  uint8_t product[2];
  uint8_t firmware_revision[2];
  uint8_t unused6[6];
  uint8_t serial_number[8];
  uint8_t unused20[12];
};
static_assert(sizeof(IdentityBlock) == ZELKORA_PCT_BLOCK);
static_assert(offsetof(IdentityBlock, serial_number) == 12);

bool must_be_written(const TouchDeviceEntry& entry) {
  return entry.FWRev != entry.FWRevFlash || (entry.OldPID == 0 && entry.OldVID == 0) ||
         zelkora::pct::is_mode_product(entry.OldPID);
}

}  // namespace

void GenerateSreialNumber(unsigned char* out) {
  constexpr uint8_t kPicked[] = {5, 10, 2, 7, 11, 9, 3, 8};
  uint8_t random[16]{};
  GenerateRand(random, 1);
  std::ranges::transform(kPicked, out, [&random](uint8_t i) { return random[i]; });
}

int GetMySN(int index) {
  TouchDeviceEntry& entry = TouchDevice[index];
  unsigned char plain[ZELKORA_PCT_BLOCK];
  int read = 0;
  for (int attempt = 0; attempt < kReadAttempts && read == 0; ++attempt) {
    HidRaw = entry.HidRaw;
    read = ReadPCTParames(plain, sizeof plain);
    if (read == 0) usleep(kReadWaitUs);
  }
  if (read == 0) {
    DebugMsg(kTrace, "GetMySN ReadPCTParames ret=0x%04x\n", read);
    return 0;
  }
  IdentityBlock block;
  std::memcpy(&block, plain, sizeof block);
  std::memcpy(entry.SN, block.serial_number, sizeof entry.SN);
  entry.OldVID = zelkora::get_be16(block.vendor);
  entry.OldPID = zelkora::get_be16(block.product);
  entry.FWRevFlash = static_cast<int>(zelkora::get_be16(block.firmware_revision));
  DebugMsg(kTrace, "***GetMySN FLASH SN:%s OLD VID:0x%04X PID:0x%04X***\n",
           SerialNumberText(entry.SN).text, entry.OldVID, entry.OldPID);
  return 1;
}

int SetMySN(int index) {
  const TouchDeviceEntry& entry = TouchDevice[index];
  IdentityBlock block{};
  zelkora::put_be16(block.vendor, entry.VID);
  // Always the id of the digitizer, so that a panel finds the way back to it.
  zelkora::put_be16(block.product, zelkora::pct::digitizer_product(entry.VID, entry.PID));
  zelkora::put_be16(block.firmware_revision, static_cast<unsigned>(entry.FWRev));
  std::memcpy(block.serial_number, entry.SN, sizeof entry.SN);
  unsigned char plain[ZELKORA_PCT_BLOCK];
  std::memcpy(plain, &block, sizeof plain);
  const int written = WritePCTParames(plain);
  DebugMsg(kTrace, "***SetMySN WriteParamas HidRaw:%d status=%d***\n", HidRaw, written);
  return written;
}

int ChkSNFlash(int index) {
  TouchDeviceEntry& entry = TouchDevice[index];
  HidRaw = entry.HidRaw;
  if (GetMySN(index) == 0) {
    GenerateSreialNumber(entry.SN);
  } else {
    DebugMsg(kTrace, "ChkSNFlash FLASH OLD_VID:0x%04X OLD_PID:0x%04X\n", entry.OldVID,
             entry.OldPID);
    DebugMsg(kTrace, "ChkSNFlash FWRev:%d FWRevFlash:%d\n", entry.FWRev, entry.FWRevFlash);
    if (!must_be_written(entry)) return 1;
  }
  const int written = SetMySN(index);
  const int valid = written != 0 ? GetMySN(index) : written;
  DebugMsg(kTrace, "ChkSNFlash WriteFlash New OLD_VID:0x%04X OLD_PID:0x%04X\n", entry.OldVID,
           entry.OldPID);
  return valid;
}

int GetMySNBin(int index) {
  const unsigned found = Read_UniqList_Binary_File(index);
  DebugMsg(kTrace, "GetMySNBin Read_UniqList_Binary_File ret=0x%04x\n", found);
  return found == 1 ? 1 : 0;
}

int SetMySNBin(int index) {
  const unsigned written = Write_UniqList_Binary_File(index);
  DebugMsg(kTrace, "***SetMySNBin Write_UniqList_Binary_File status=%d***\n",
           static_cast<int>(written));
  if (written != 0) GetMySNBin(index);  // for the trace alone
  return static_cast<int>(written);
}
