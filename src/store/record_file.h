// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A file of parameter records in memory. The files are world-writable, so what they hold is read
// with bounds: no field is taken to end in a NUL.
#pragma once

#include <cstddef>
#include <cstdio>
#include <optional>
#include <span>

#include "core/scoped.h"
#include "zelkora.h"

namespace zelkora::store {

// The texts by which a device and its record are matched, each of them terminated.
struct KeyTexts {
  explicit KeyTexts(const TouchDeviceEntry& entry);
  explicit KeyTexts(const ParamStoreRecord& record);

  // Of a record: whether its text contains the device's.
  bool has_phys_of(const KeyTexts& device) const;
  bool has_serial_number_of(const KeyTexts& device) const;
  bool has_usb_id_of(const KeyTexts& device) const;

  char phys[sizeof ParamStoreRecord::Phys + 1];
  char serial_number[sizeof ParamStoreRecord::SN + 1];
  char usb_id[sizeof ParamStoreRecord::UsbId + 1];
};

ParamStoreRecord make_record(const KeyTexts& device, const unsigned char* payload);

// Reads the next record; false at the end of the file, or on a failing read.
bool read_record(FILE* file, ParamStoreRecord& record);

// The first records of a file, as many as are ever looked at.
class RecordFile {
 public:
  explicit RecordFile(const char* path);

  bool opened() const { return static_cast<bool>(file_); }
  // Not there at all, as opposed to there and unreadable.
  bool missing() const { return missing_; }

  std::span<const ParamStoreRecord> records() const { return {records_, count_}; }
  int count() const { return static_cast<int>(count_); }

  // Puts a record over number `slot`, or behind the last one where there is none. False: the file
  // is full.
  bool put(std::optional<int> slot, const ParamStoreRecord& record);

  // Rewrites the file for the function of this name; a new file becomes world-writable. What lies
  // behind the records that were read is kept, but for a trailing piece of a record. False, and the
  // file as it was: it could not be read to its end, or not be written.
  bool save(const char* function);

 private:
  const char* path_;
  ScopedFile file_;
  bool missing_;
  size_t count_ = 0;
  ParamStoreRecord records_[ZELKORA_STORE_RECORDS];
};

}  // namespace zelkora::store
