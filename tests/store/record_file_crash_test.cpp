// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Rewrites that the end of the process cuts short, at every call that changes what is on disk: the
// file holds the old records or the new ones.
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <functional>

#include "core/child_process.h"
#include "store_bench.h"

namespace {

namespace fs = std::filesystem;

using zelkora::test::bytes_of;
using zelkora::test::data_file;
using zelkora::test::joined;
using zelkora::test::kRecordSize;
using zelkora::test::other_panels;
using zelkora::test::read_file;
using zelkora::test::Records;
using zelkora::test::status_in_child;

class RecordFileCrashTest : public zelkora::test::StoreBench {
 protected:
  // A rewrite of a file; `prepare` puts the old records there.
  struct Rewrite {
    std::string path;
    std::function<void()> prepare;
    std::function<unsigned()> rewrite;
    Records old_records;
    Records new_records;
  };

  void SetUp() override {
    StoreBench::SetUp();
    DbgFlag = 0;
  }

  // The records of a file that may be missing, or end in a piece of one.
  static std::string records_of(const std::string& path) {
    if (!fs::exists(path)) return "";
    const std::string bytes = read_file(path);
    return bytes.substr(0, bytes.size() / kRecordSize * kRecordSize);
  }

  void expect_old_or_new(const Rewrite& row) {
    int kills = 0;
    int old_kept = 0;
    int status = -SIGKILL;
    while (status == -SIGKILL && kills < 100) {
      SCOPED_TRACE(kills);
      row.prepare();
      status = status_in_child([&] {
        kill_at_write_call(kills + 1);
        return static_cast<int>(row.rewrite());
      });
      if (status != -SIGKILL) break;
      ++kills;
      const std::string found = records_of(row.path);
      const bool is_old = found == bytes_of(row.old_records);
      EXPECT_TRUE(is_old || found == bytes_of(row.new_records)) << found.size() << " bytes";
      if (is_old) ++old_kept;
      // What the killed one left behind stands in nobody's way.
      EXPECT_EQ(row.rewrite(), 1U);
      EXPECT_TRUE(records_of(row.path) == bytes_of(row.new_records));
    }
    EXPECT_EQ(status, 1);
    EXPECT_TRUE(records_of(row.path) == bytes_of(row.new_records));
    EXPECT_GT(old_kept, 0);
    EXPECT_GT(kills, old_kept) << "no kill came behind the point of no return";
  }

  // Rewrites of the file at `path`, which is another name of the one at `target`.
  std::vector<std::pair<const char*, Rewrite>> rewrites(const std::string& path,
                                                        const std::string& target) {
    const auto row = [&](Records old_records, const std::string& tail, Records new_records) {
      return Rewrite{path, [=] { write_file(target, bytes_of(old_records) + tail); },
                     [=] { return store(path, 2); }, old_records, new_records};
    };
    const Records others = other_panels(255);
    return {
        {"the first record", row({}, "", {panel()})},
        {"another record", row(other_panels(3), "", joined(other_panels(3), {panel()}))},
        {"one record instead of another",
         row(joined(joined(other_panels(2), {panel(1)}), others), "",
             joined(joined(other_panels(2), {panel()}), others))},
        {"a piece of a record dropped",
         row(joined({panel(1)}, other_panels(2)), std::string(100, 'x'),
             joined({panel()}, other_panels(2)))},
    };
  }

  static void write_file(const std::string& path, const std::string& bytes) {
    zelkora::test::write_file(path, bytes);
  }

  const std::string path_ = data_file(".pctpbin");
};

TEST_F(RecordFileCrashTest, AReplacedFileHoldsTheOldOrTheNewRecords) {
  for (const auto& [name, row] : rewrites(path_, path_)) {
    SCOPED_TRACE(name);
    expect_old_or_new(row);
  }
}

TEST_F(RecordFileCrashTest, AFileWrittenInPlaceHoldsTheOldOrTheNewRecords) {
  const std::string target = data_file("target");
  fs::create_symlink(target, path_);
  for (const auto& [name, row] : rewrites(path_, target)) {
    SCOPED_TRACE(name);
    expect_old_or_new(row);
    EXPECT_TRUE(fs::is_symlink(path_));
  }
}

TEST_F(RecordFileCrashTest, AFileThatWasMissingHoldsNoRecordOrTheNewOne) {
  allow_chmod(path_);
  expect_old_or_new(
      {path_, [&] { fs::remove(path_); }, [&] { return store(path_, 2); }, {}, {panel()}});
}

TEST_F(RecordFileCrashTest, TheListOfSerialNumbersHoldsTheOldOrTheNewRecords) {
  const std::string list = data_file(".pctuniq");
  const Records old_records = {{kOtherPhys, kSerialNumber, kUsbId, 0}, other_panels(1)[0]};
  expect_old_or_new({list,
                     [&] { write_records(list, old_records); },
                     [] { return Write_UniqList_Binary_File(0); },
                     old_records,
                     {panel(0), other_panels(1)[0]}});
}

TEST_F(RecordFileCrashTest, ACopyForAReplacementPanelHoldsTheOldOrTheNewRecords) {
  const Records old_records = {{kOtherPhys, kOtherSerialNumber, kUsbId, 7}};
  expect_old_or_new({path_, [&] { write_records(path_, old_records); },
                     // The second read finds the copy by its number.
                     [&] { return fetch(path_, 2).result > 0 ? 1U : 0U; }, old_records,
                     joined(old_records, {panel(7)})});
}

TEST_F(RecordFileCrashTest, AWriteCutShortAnywhereLeavesTheOldRecords) {
  const Records old_records = joined(other_panels(3), {panel(1)});
  int kills = 0;
  for (rlim_t bytes = 0; bytes < 4 * kRecordSize; bytes += 60) {
    SCOPED_TRACE(bytes);
    write_records(path_, old_records);
    const int status = status_in_child([&] {
      // The write that goes past this size is the process's last act.
      const rlimit size = {bytes, bytes};
      const rlimit no_core = {0, 0};
      if (setrlimit(RLIMIT_FSIZE, &size) != 0 || setrlimit(RLIMIT_CORE, &no_core) != 0) return 99;
      return static_cast<int>(store(path_, 2));
    });
    EXPECT_EQ(status, -SIGXFSZ);
    if (status == -SIGXFSZ) ++kills;
    expect_records(path_, old_records);
  }
  EXPECT_GT(kills, 20);
}

}  // namespace
