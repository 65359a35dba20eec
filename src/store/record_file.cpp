// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "record_file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "core/file_rewrite.h"
#include "core/log.h"
#include "core/open_file.h"
#include "core/text.h"

namespace zelkora::store {
namespace {

// The files are read as they lie on disk.
static_assert(sizeof(ParamStoreRecord) == 347);
static_assert(alignof(ParamStoreRecord) == 1);
static_assert(offsetof(ParamStoreRecord, SN) == 256);
static_assert(offsetof(ParamStoreRecord, UsbId) == 273);
static_assert(offsetof(ParamStoreRecord, Payload) == 283);
static_assert(sizeof(ParamStoreRecord::Payload) == ZELKORA_STORE_PAYLOAD);

constexpr mode_t kWorldWritable = 0777;

// The interface has the shell do it; a new file has that mode already, lest a crash in between cost
// it.
void make_world_writable(const char* path) {
  char command[4096];
  std::snprintf(command, sizeof command, "chmod 777 \"%s\"", path);
  std::system(command);
}

}  // namespace

bool read_record(FILE* file, ParamStoreRecord& record) {
  return std::fread(&record, sizeof record, 1, file) == 1;
}

KeyTexts::KeyTexts(const TouchDeviceEntry& entry) {
  // As much as a record holds, or the device would not be found in its own.
  set_text(phys, field_text(entry.Phys, sizeof entry.Phys - 1));
  set_text(serial_number, SerialNumberText(entry.SN).text);
  std::snprintf(usb_id, sizeof usb_id, "%04X_%04X", entry.VID & 0xFFFF, entry.PID & 0xFFFF);
}

KeyTexts::KeyTexts(const ParamStoreRecord& record) {
  set_text(phys, field_text(record.Phys));
  set_text(serial_number, field_text(record.SN));
  set_text(usb_id, field_text(record.UsbId));
}

bool KeyTexts::has_phys_of(const KeyTexts& device) const { return contains(phys, device.phys); }

bool KeyTexts::has_serial_number_of(const KeyTexts& device) const {
  return contains(serial_number, device.serial_number);
}

bool KeyTexts::has_usb_id_of(const KeyTexts& device) const {
  return contains(usb_id, device.usb_id);
}

ParamStoreRecord make_record(const KeyTexts& device, const unsigned char* payload) {
  ParamStoreRecord record;
  set_text(record.Phys, device.phys);
  set_text(record.SN, device.serial_number);
  set_text(record.UsbId, device.usb_id);
  std::memcpy(record.Payload, payload, sizeof record.Payload);
  return record;
}

RecordFile::RecordFile(const char* path)
    : path_(path), file_(open_file(path, "rb")), missing_(!file_ && errno == ENOENT) {
  if (!file_) return;
  while (count_ < ZELKORA_STORE_RECORDS && read_record(file_.get(), records_[count_])) ++count_;
}

bool RecordFile::put(std::optional<int> slot, const ParamStoreRecord& record) {
  const size_t at = slot ? static_cast<size_t>(*slot) : count_;
  if (at == ZELKORA_STORE_RECORDS) return false;
  records_[at] = record;
  if (at == count_) ++count_;
  return true;
}

bool RecordFile::save(const char* function) {
  NewContent content;
  if (content.stream() == nullptr) return false;
  std::fwrite(records_, sizeof records_[0], count_, content.stream());
  if (file_) {
    ParamStoreRecord record;
    while (read_record(file_.get(), record)) {
      std::fwrite(&record, sizeof record, 1, content.stream());
    }
    // What could not be read would be lost.
    if (std::ferror(file_.get()) != 0) return false;
  }
  if (!content.commit(path_, kWorldWritable)) return false;
  for (int i = 0; i < count(); ++i) {
    DebugMsg(kTrace, "%s fwrite x[%d].phys:%s\n", function, i, KeyTexts(records_[i]).phys);
  }
  if (missing_) make_world_writable(path_);
  return true;
}

}  // namespace zelkora::store
