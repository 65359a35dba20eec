// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A resistive parameter record as the words that are stored, and as those that are written to the
// controller, each with its checksum.
#include <cstddef>

#include "core/bytes.h"
#include "core/log.h"
#include "record_words.h"
#include "zelkora.h"

using namespace zelkora::resistive;

namespace {

template <size_t kWords, typename Word>
unsigned checksum(const Word* words) {
  // Low bytes first, although the stored form has its high bytes first: files in the field carry
  // this sum.
  unsigned char bytes[2 * kWords];
  for (size_t i = 0; i < kWords; ++i) {
    zelkora::put_le16(bytes + 2 * i, static_cast<unsigned>(words[i]));
  }
  return CheckSum(bytes, sizeof bytes);
}

unsigned char low_byte(unsigned word) { return static_cast<unsigned char>(word); }

}  // namespace

unsigned int GetCheckSumBin(const unsigned int* words) {
  return checksum<Stored::kChecksum>(words);
}

unsigned int GetCheckSumFlash(const int* words) { return checksum<Flash::kChecksum>(words); }

void ResParamaEncode(ResDevInfo* rec, unsigned int* words) {
  words[Stored::kReportMode] = rec->ReportMode;
  words[Stored::kBeepOn] = rec->BeepOn;
  words[Stored::kPlayMethod] = rec->PlayMethod;
  words[Stored::kFrequency] = rec->Frequency;
  words[Stored::kDuration] = rec->Duration;
  words[Stored::kRightTime] = rec->RightTime;
  words[Stored::kScreenNumber] = rec->ScreenNumber;
  words[Stored::kDisableRight] = rec->DisableRight;
  words[Stored::kSpareByte] = rec->SpareByte;
  words[Stored::kHidMode] = rec->HidMode;
  words[Stored::kEdgeRight] = static_cast<unsigned>(rec->EdgeRight);
  words[Stored::kEdgeLeft] = static_cast<unsigned>(rec->EdgeLeft);
  words[Stored::kEdgeDown] = static_cast<unsigned>(rec->EdgeDown);
  words[Stored::kEdgeUp] = static_cast<unsigned>(rec->EdgeUp);
  words[Stored::kDisableReport] = rec->DisableReport;
  words[Stored::kHideCursor] = rec->HideCursor;
  rec->Chksum = GetCheckSumBin(words);
  words[Stored::kChecksum] = rec->Chksum;
}

void ResParamaDecode(ResDevInfo* rec, const unsigned int* words) {
  rec->ReportMode = low_byte(words[Stored::kReportMode]);
  rec->BeepOn = low_byte(words[Stored::kBeepOn]);
  rec->PlayMethod = low_byte(words[Stored::kPlayMethod]);
  rec->Frequency = words[Stored::kFrequency];
  rec->Duration = low_byte(words[Stored::kDuration]);
  rec->RightTime = low_byte(words[Stored::kRightTime]);
  rec->ScreenNumber = low_byte(words[Stored::kScreenNumber]);
  rec->DisableRight = low_byte(words[Stored::kDisableRight]);
  rec->SpareByte = low_byte(words[Stored::kSpareByte]);
  rec->HidMode = low_byte(words[Stored::kHidMode]);
  // Words have no sign, so a negative edge comes back as its low 16 bits.
  rec->EdgeRight = static_cast<int>(words[Stored::kEdgeRight]);
  rec->EdgeLeft = static_cast<int>(words[Stored::kEdgeLeft]);
  rec->EdgeDown = static_cast<int>(words[Stored::kEdgeDown]);
  rec->EdgeUp = static_cast<int>(words[Stored::kEdgeUp]);
  rec->DisableReport = low_byte(words[Stored::kDisableReport]);
  rec->HideCursor = low_byte(words[Stored::kHideCursor]);
  rec->Chksum = words[Stored::kChecksum];
}

void ResParamaEncodeFlash(ResDevInfo* rec, unsigned int* words) {
  for (size_t i = 0; i < kFlashWords; ++i) words[i] = kFlashTable[i].fixed;
  words[Flash::kHidMode] = rec->HidMode;
  words[Flash::kEdgeRight] = static_cast<unsigned>(rec->EdgeRight);
  words[Flash::kEdgeLeft] = static_cast<unsigned>(rec->EdgeLeft);
  words[Flash::kEdgeDown] = static_cast<unsigned>(rec->EdgeDown);
  words[Flash::kEdgeUp] = static_cast<unsigned>(rec->EdgeUp);
  rec->Chksum = checksum<Flash::kChecksum>(words);
  words[Flash::kChecksum] = rec->Chksum;
  const auto shown = [words](size_t i) { return static_cast<int>(words[i]); };
  DebugMsg(zelkora::kTrace, "***ResParamaEncodeFlash [%d] [%d] [%d] [%d] [%d] [%d]***\n", shown(5),
           shown(6), shown(7), shown(8), shown(9), shown(10));
}
