// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench for saving and fetching parameter sets, with the records that both store files may hold.
#pragma once

#include "stored_bench.h"

namespace zelkora::test {

// Both store files, to the byte.
struct Files {
  std::string current = kNoFile;
  std::string temporary = kNoFile;
  friend bool operator==(const Files&, const Files&) = default;
  friend void PrintTo(const Files& files, std::ostream* out) {
    *out << testing::PrintToString(files.current) << " and "
         << testing::PrintToString(files.temporary);
  }
};

class PersistenceBench : public StoredBench {
 protected:
  static void write_files(const Files& files) {
    for (const char* path : {kRecords, kTemporaryRecords}) std::filesystem::remove_all(path);
    if (files.current != kNoFile) write_file(kRecords, files.current);
    if (files.temporary != kNoFile) write_file(kTemporaryRecords, files.temporary);
  }
  static Files files() { return {store_file(kRecords), store_file(kTemporaryRecords)}; }

  static std::string erased_record() { return store_record(own_keys(), erased_payload()); }
  static std::string own_default() { return own_record(default_set()); }
  static std::string own_loud() { return own_record(loud_set()); }
  static std::string own_quiet() { return own_record(quiet_set()); }
  static PCTDevInfo loud_record() { return host_record(loud_set(), kOwnNumber); }

  // What made the files that were not there world-writable.
  static Lines made(const Files& before, const Files& after) {
    Lines lines;
    if (before.temporary == kNoFile && after.temporary != kNoFile) {
      lines = made_world_writable(kTemporaryRecords);
    }
    if (before.current == kNoFile && after.current != kNoFile) {
      lines = joined({lines, made_world_writable(kRecords)});
    }
    return lines;
  }
};

}  // namespace zelkora::test
