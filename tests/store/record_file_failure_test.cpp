// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Store files that cannot be read or written: the answer is 0, and no record is lost.
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "core/child_process.h"
#include "store_bench.h"

namespace {

namespace fs = std::filesystem;

using zelkora::test::joined;
using zelkora::test::kRecordSize;
using zelkora::test::Lines;
using zelkora::test::other_panels;
using zelkora::test::Records;
using zelkora::test::status_in_child;
using zelkora::test::without_capabilities;
using zelkora::test::write_file;

class RecordFileFailureTest : public zelkora::test::StoreBench {
 protected:
  void SetUp() override {
    StoreBench::SetUp();
    fs::create_directory(directory_);
    write_records(path_, stored_);
  }

  void expect_unchanged() {
    expect_records(path_, stored_);
    expect_alone(path_);
  }
  // No temporary file stayed behind.
  void expect_alone(const std::string& path) {
    for (const fs::directory_entry& entry : fs::directory_iterator(directory_)) {
      EXPECT_EQ(entry.path(), path);
    }
  }
  // A failed rewrite tells of no record written, and no shell runs.
  void expect_no_success_told() {
    for (const std::string& line : told()) EXPECT_EQ(line.find("fwrite"), line.npos) << line;
    EXPECT_EQ(count_of("system"), 0U);
  }
  // By a process that root's privileges do not help. Nobody sees what it prints.
  int store_unprivileged(const std::string& path) {
    DbgFlag = 0;
    return status_in_child(
        [&] { return without_capabilities() ? static_cast<int>(store(path, 2)) : 99; });
  }
  int fetch_unprivileged(const std::string& path) {
    DbgFlag = 0;
    return status_in_child(
        [&] { return without_capabilities() ? static_cast<int>(fetch(path, 2).result) : 99; });
  }

  const std::string directory_ = zelkora::test::data_file("d");
  const std::string path_ = directory_ + "/.pctpbin";
  const Records stored_ = {{kOtherPhys, kOtherSerialNumber, kOtherUsbId, 1}, panel(2)};
};

TEST_F(RecordFileFailureTest, AFailingCallLeavesTheOldRecords) {
  struct Row {
    const char* name;
    const char* call;
    bool on_temporary;
    int error;
  };
  constexpr Row kRows[] = {
      {"the file may not be read", "fopen", false, EACCES},
      {"no more files can be open", "fopen", false, EMFILE},
      {"the file may not be written", "open", false, EACCES},
      {"the file system may not be written", "open", false, EROFS},
      {"the disk has no room for another file", "mkostemp", true, ENOSPC},
      {"the owner cannot be given for want of room", "fchown", true, EDQUOT},
      {"the mode cannot be given for want of room", "fchmod", true, EDQUOT},
      {"the disk is full", "write", true, ENOSPC},
      {"the disk is broken", "write", true, EIO},
      {"the disk takes the bytes and loses them", "fsync", true, EIO},
      {"the new file cannot take the old one's place", "rename", false, EACCES},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    clear_trace();
    fail_file_call(row.call, row.on_temporary ? path_ + ".*" : path_, row.error);
    EXPECT_EQ(store(path_, 2), 0U);
    expect_unchanged();
    expect_no_success_told();
    // The fault was met: the next try goes through.
    EXPECT_EQ(store(path_, 2), 1U);
    expect_records(path_, {stored_[0], panel()});
    write_records(path_, stored_);
  }
}

TEST_F(RecordFileFailureTest, AFailedFirstWriteLeavesNoFile) {
  fs::remove(path_);
  for (const char* call : {"mkostemp", "write", "fsync"}) {
    SCOPED_TRACE(call);
    clear_trace();
    fail_file_call(call, path_ + ".*", ENOSPC);
    EXPECT_EQ(store(path_, 2), 0U);
    EXPECT_TRUE(fs::is_empty(directory_));
    expect_no_success_told();
  }
}

TEST_F(RecordFileFailureTest, AFileThatCannotBeOpenedIsNoMissingFile) {
  fail_file_call("fopen", path_, EACCES);
  EXPECT_EQ(store(path_, 2), 0U);
  EXPECT_EQ(told().back(), "====================end=====================");
  fail_file_call("fopen", path_, EACCES);
  EXPECT_EQ(fetch(path_, 2), (Fetched{0, kUntouched}));
  EXPECT_EQ(told().back(), "Read_Binary_File open FileName:" + path_ + " error");
  expect_unchanged();
}

TEST_F(RecordFileFailureTest, AFullDiskLeavesTheOldRecords) {
  // Four pages of memory for a file system, and a file that fills most of them.
  ASSERT_EQ(::mount("tmpfs", directory_.c_str(), "tmpfs", 0, "size=16k"), 0);
  const Records full = joined(other_panels(30), {panel(2)});
  write_records(path_, full);
  EXPECT_EQ(store(path_, 2), 0U);
  EXPECT_EQ(told().back(), "*** Write_Binary_File MemCnt:31 ***");
  expect_records(path_, full);
  expect_alone(path_);
  EXPECT_EQ(fetch(path_, 2), (Fetched{3, 2}));
  expect_no_success_told();

  // A new file finds no room either, and is not left behind empty.
  write_file(directory_ + "/filler", std::string(4096 - 7, 'x'));
  EXPECT_EQ(store(directory_ + "/.new", 2), 0U);
  EXPECT_FALSE(fs::exists(directory_ + "/.new"));
  EXPECT_EQ(::umount(directory_.c_str()), 0);
}

TEST_F(RecordFileFailureTest, AReadOnlyFileSystemLeavesTheOldRecords) {
  constexpr unsigned long kReadOnly = MS_REMOUNT | MS_BIND | MS_RDONLY;
  const char* directory = directory_.c_str();
  ASSERT_EQ(::mount(directory, directory, "none", MS_BIND, nullptr), 0);
  ASSERT_EQ(::mount(nullptr, directory, "none", kReadOnly, nullptr), 0);
  EXPECT_EQ(store(path_, 2), 0U);
  EXPECT_EQ(store(directory_ + "/.new", 2), 0U);
  expect_unchanged();
  expect_no_success_told();
  EXPECT_EQ(fetch(path_, 2), (Fetched{3, 2}));
  // A replacement panel reads what it cannot keep.
  set_entry(0, {"usb-7/input0", "ff00ff00ff00ff00", kUsbId});
  EXPECT_EQ(fetch(path_, 2), (Fetched{1, 2}));
  expect_unchanged();
  EXPECT_EQ(::umount(directory), 0);
}

TEST_F(RecordFileFailureTest, AFileThatItsUserMayNotWriteStaysAsItIs) {
  ASSERT_EQ(::chmod(path_.c_str(), 0444), 0);
  EXPECT_EQ(store_unprivileged(path_), 0);
  expect_unchanged();
  EXPECT_EQ(fetch_unprivileged(path_), 3);
}

TEST_F(RecordFileFailureTest, AFileThatItsUserMayNotReadStaysAsItIs) {
  ASSERT_EQ(::chmod(path_.c_str(), 0222), 0);
  EXPECT_EQ(store_unprivileged(path_), 0);
  EXPECT_EQ(fetch_unprivileged(path_), 0);
  ASSERT_EQ(::chmod(path_.c_str(), 0666), 0);
  expect_unchanged();
}

TEST_F(RecordFileFailureTest, InADirectoryThatItsUserMayNotWriteFilesAreRewrittenAndNotMade) {
  ASSERT_EQ(::chmod(directory_.c_str(), 0555), 0);
  EXPECT_EQ(store_unprivileged(path_), 1);
  EXPECT_EQ(store_unprivileged(directory_ + "/.new"), 0);
  expect_records(path_, {stored_[0], panel()});
  expect_alone(path_);
}

TEST_F(RecordFileFailureTest, ADirectoryInTheFilesPlaceIsLeftAlone) {
  fs::remove(path_);
  fs::create_directory(path_);
  EXPECT_EQ(store(path_, 2), 0U);
  expect_no_success_told();
  EXPECT_EQ(fetch(path_, 2), (Fetched{0, kUntouched}));
  EXPECT_TRUE(fs::is_directory(path_));
  EXPECT_TRUE(fs::is_empty(path_));
  expect_alone(path_);
}

TEST_F(RecordFileFailureTest, ALinkThatLeadsNowhereIsFollowed) {
  const std::string target = zelkora::test::data_file("target");
  fs::remove(path_);
  fs::create_symlink(target, path_);
  EXPECT_EQ(fetch(path_, 2), (Fetched{0, kUntouched}));
  EXPECT_FALSE(fs::exists(target));

  allow_chmod(path_);
  EXPECT_EQ(store(path_, 2), 1U);
  EXPECT_EQ(trace_of({"system"}), Lines{"system " + chmod_of(path_)});
  EXPECT_EQ(fs::read_symlink(path_), target);
  expect_records(target, {panel()});
  EXPECT_EQ(fetch(path_, 2), (Fetched{3, kNewFill}));
  expect_alone(path_);
}

TEST_F(RecordFileFailureTest, ALinkIntoAMissingDirectoryStaysAsItIs) {
  const std::string target = zelkora::test::data_file("missing/target");
  fs::remove(path_);
  fs::create_symlink(target, path_);
  EXPECT_EQ(store(path_, 2), 0U);
  EXPECT_EQ(fs::read_symlink(path_), target);
  EXPECT_FALSE(fs::exists(target));
  expect_no_success_told();
}

TEST_F(RecordFileFailureTest, ALinkThatLeadsToItselfIsNoMissingFile) {
  fs::remove(path_);
  fs::create_symlink(path_, path_);
  EXPECT_EQ(store(path_, 2), 0U);
  EXPECT_EQ(fetch(path_, 2), (Fetched{0, kUntouched}));
  EXPECT_EQ(fs::read_symlink(path_), path_);
  expect_no_success_told();
}

TEST_F(RecordFileFailureTest, APathThroughNoDirectoryIsNotWritten) {
  const std::string missing = zelkora::test::data_file("missing/.pctpbin");
  EXPECT_EQ(store(missing, 2), 0U);
  EXPECT_FALSE(fs::exists(zelkora::test::data_file("missing")));
  EXPECT_EQ(store(path_ + "/.pctpbin", 2), 0U);
  expect_unchanged();
  expect_no_success_told();
}

TEST_F(RecordFileFailureTest, AFileThatFailsInTheMiddleIsReadUpToThereAndNotRewritten) {
  const struct {
    const char* name;
    size_t bytes;
    size_t records;
  } kRows[] = {
      {"at its start", 0, 0},
      {"within the first record", 100, 0},
      {"behind the first record", kRecordSize, 1},
      {"within a later one", 20 * kRecordSize + 1, 20},
      {"at the limit", 256 * kRecordSize, 256},
      {"behind the limit", 280 * kRecordSize + 5, 256},
  };
  Records records = other_panels(300);
  records[0] = panel(1);
  write_records(path_, records);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    clear_trace();
    break_reading(path_, row.bytes);
    EXPECT_EQ(fetch(path_, 2), row.records > 0 ? (Fetched{3, 1}) : (Fetched{0, kUntouched}));
    EXPECT_EQ(
        trace_of({"log zelkora DD:Read_Binary_File phys[" + std::to_string(row.records) + "]"}),
        Lines{});
    EXPECT_EQ(store(path_, 2), 0U);
    expect_no_success_told();
    expect_records(path_, records);
    expect_alone(path_);
  }
}

TEST_F(RecordFileFailureTest, AListThatFailsInTheMiddleIsNotRewritten) {
  const std::string list = zelkora::test::data_file(".pctuniq");
  const Records records = joined({panel(0)}, other_panels(20));
  write_records(list, records);
  break_reading(list, 5 * kRecordSize);
  EXPECT_EQ(Read_UniqList_Binary_File(0), 1U);
  EXPECT_EQ(Write_UniqList_Binary_File(0), 0U);
  expect_no_success_told();
  expect_records(list, records);
}

}  // namespace
