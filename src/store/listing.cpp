// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The record files as people read them, on the debug trace.
#include <cstdio>
#include <cstring>

#include "core/log.h"
#include "core/open_file.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "pct/show_params.h"
#include "record_file.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::store::KeyTexts;
using zelkora::store::RecordFile;

namespace {

constexpr char kLine[] = "***********************************************************\n";

// Decodes a record's parameters; what does not decode is taken as bytes of 0xFF. Returns the
// checksum, or 0.
int decode(const ParamStoreRecord& record, unsigned char (&plain)[ZELKORA_PCT_BLOCK]) {
  std::memset(plain, 0xFF, sizeof plain);
  return DecodeParames(plain, record.Payload, ZELKORA_PCT_BLOCK);
}

void show_parameters(const ParamStoreRecord& record) {
  const KeyTexts texts(record);
  unsigned char plain[ZELKORA_PCT_BLOCK];
  decode(record, plain);
  PCTDevInfo info{};
  PCTParsingParamas(&info, plain);
  DebugMsg(kTrace, "phys:%s\n", texts.phys);
  DebugMsg(kTrace, "SN:%s\n", texts.serial_number);
  DebugMsg(kTrace, "ID:%s\n", texts.usb_id);
  zelkora::pct::log_parameters("", info);
}

}  // namespace

unsigned int Show_Binary_File_Mem(const char* path) {
  DebugMsg(kTrace, "%s", kLine);
  DebugMsg(kTrace, "List_Binary_File----start\n");
  DebugMsg(kTrace, "FileName:%s\n", path);
  const RecordFile file(path);
  if (!file.opened()) {
    DebugMsg(kTrace, "List_Binary_File open FileName:%s error\n", path);
    return 0;
  }
  int index = 0;
  for (const ParamStoreRecord& record : file.records()) {
    const KeyTexts texts(record);
    unsigned char plain[ZELKORA_PCT_BLOCK];
    const int checksum = decode(record, plain);
    DebugMsg(kTrace, "phys[%d]:%s SN[%d]:%s ID:%s chksum:0x%04X\n", index, texts.phys, index,
             texts.serial_number, texts.usb_id, checksum);
    PCTDevInfo info{};
    PCTParsingParamas(&info, plain);
    ShowParams(&info, ZELKORA_TYPE_PCT);
    ++index;
  }
  DebugMsg(kTrace, "List_Binary_File----end\n");
  DebugMsg(kTrace, "%s", kLine);
  return 1;
}

unsigned int Show_UniqList_SN(void) {
  const char* path = zelkora::paths::kPctSerialNumbers;
  DebugMsg(kTrace, "%s", kLine);
  DebugMsg(kTrace, "Show_UniqList_SN----start\n");
  DebugMsg(kTrace, "FileName:%s\n", path);
  const RecordFile file(path);
  if (!file.opened()) {
    DebugMsg(kTrace, "Show_UniqList_SN open FileName:%s error\n", path);
    return 0;
  }
  int index = 0;
  for (const ParamStoreRecord& record : file.records()) {
    const KeyTexts texts(record);
    DebugMsg(kTrace, "phys[%d]:%s SN[%d]:%s\n", index, texts.phys, index, texts.serial_number);
    ++index;
  }
  DebugMsg(kTrace, "Show_UniqList_SN----end\n");
  DebugMsg(kTrace, "%s", kLine);
  return 1;
}

unsigned int ListPCTAllBin(void) {
  Show_UniqList_SN();
  Show_Binary_File_Mem(zelkora::paths::kPctRecords);
  return Show_Binary_File_Mem(zelkora::paths::kPctTemporaryRecords);
}

unsigned int PCTEnumAllBin(void) {
  const char* path = zelkora::paths::kPctRecords;
  const zelkora::ScopedFile file(zelkora::open_file(path, "rb"));
  if (!file) {
    DebugMsg(kTrace, "Enum_Binary_File open FileName:%s error\n", path);
    return 0;
  }
  // To the end of the file: the limit of the others does not hold here.
  ParamStoreRecord record;
  while (zelkora::store::read_record(file.get(), record)) show_parameters(record);
  return 0;  // always: callers know no other answer
}
