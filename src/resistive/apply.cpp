// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A parameter record into the controller, and whether it is there.
#include "core/log.h"
#include "record_words.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::resistive::FlashRow;
using zelkora::resistive::kFlashTable;

int SetResAllDataFlash(int devnum, ResDevInfo* rec, unsigned int only_address) {
  DebugMsg(kTrace, "***SetResAllDataFlash--start DevNum:%d***\n", devnum);
  unsigned words[ZELKORA_RES_FLASH_WORDS];
  ResParamaEncodeFlash(rec, words);
  const unsigned* word = words;
  for (const FlashRow& row : kFlashTable) {
    const bool wanted = only_address == 0 || only_address == static_cast<unsigned>(row.address) ||
                        row.address == ZELKORA_EEP_CHECKSUM;
    if (wanted) WriteEEPValue(row.address, *word);
    ++word;
  }
  DebugMsg(kTrace, "***SetResAllDataFlash--end DevNum:%d***\n", devnum);
  return 1;
}

int MatchResDevChksum(ResDevInfo* rec) {
  const int stored = GetParamCheckSumDev();
  unsigned words[ZELKORA_RES_FLASH_WORDS];
  ResParamaEncodeFlash(rec, words);
  DebugMsg(kTrace, "***MatchResDevChksum DevChksum:%d chksum:%d***\n", stored,
           static_cast<int>(rec->Chksum));
  return stored == static_cast<int>(rec->Chksum) ? 1 : 0;
}
