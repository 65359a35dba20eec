// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Whole-file rewrites, seen through set_conf_option(): whatever goes wrong, the file holds its old
// or its new content, and no temporary file stays behind.
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <filesystem>
#include <string>

#include "child_process.h"
#include "support/bench.h"

namespace {

namespace fs = std::filesystem;

using zelkora::test::data_file;
using zelkora::test::Lines;
using zelkora::test::read_file;
using zelkora::test::status_in_child;
using zelkora::test::without_capabilities;
using zelkora::test::write_file;

struct stat status_of(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
  return status;
}

class FileRewriteTest : public zelkora::test::Bench {
 protected:
  void SetUp() override {
    Bench::SetUp();
    write_file(path_, kOld);
    before_ = status_of(path_);
  }

  static int set_beep(const std::string& path) { return set_conf_option(path.c_str(), "Beep", 7); }

  // The file was replaced by another one, or written over, or left alone.
  void expect_replaced() {
    EXPECT_EQ(read_file(path_), kNew);
    EXPECT_NE(status_of(path_).st_ino, before_.st_ino);
    expect_alone();
  }
  void expect_written_in_place() {
    EXPECT_EQ(read_file(path_), kNew);
    EXPECT_EQ(status_of(path_).st_ino, before_.st_ino);
    expect_alone();
  }
  void expect_unchanged() {
    EXPECT_EQ(read_file(path_), kOld);
    EXPECT_EQ(status_of(path_).st_ino, before_.st_ino);
    expect_alone();
  }
  // No temporary file stayed behind.
  void expect_alone() {
    for (const fs::directory_entry& entry : fs::directory_iterator(directory_)) {
      EXPECT_EQ(entry.path(), path_);
    }
  }

  static inline const std::string kOld = "A=1\nBeep=1000\nC=3\n";
  static inline const std::string kNew = "A=1\nBeep=7\nC=3\n";

  std::string directory_ = data_file("d");
  std::string path_ = directory_ + "/settings.conf";
  std::string temporary_ = path_ + ".*";
  struct stat before_ {};
};

TEST_F(FileRewriteTest, AFileIsReplacedByItsNewContentAsAWhole) {
  EXPECT_EQ(set_beep(path_), 1);
  expect_replaced();
}

TEST_F(FileRewriteTest, AFileWithoutTheKeyIsRewrittenUnchanged) {
  EXPECT_EQ(set_conf_option(path_.c_str(), "Screen", 7), 0);
  EXPECT_EQ(read_file(path_), kOld);
  EXPECT_NE(status_of(path_).st_ino, before_.st_ino);
  expect_alone();
}

TEST_F(FileRewriteTest, AReaderOfTheOldFileGoesOnReadingTheOldContent) {
  const int reader = ::open(path_.c_str(), O_RDONLY);
  EXPECT_EQ(set_beep(path_), 1);
  char text[64];
  const ssize_t length = ::read(reader, text, sizeof text);
  EXPECT_EQ(std::string(text, static_cast<size_t>(std::max<ssize_t>(length, 0))), kOld);
  ::close(reader);
}

TEST_F(FileRewriteTest, ModeAndOwnerStay) {
  // Only root can give a file away.
  const uid_t owner = ::geteuid() == 0 ? 1234 : ::geteuid();
  const gid_t group = ::geteuid() == 0 ? 5678 : ::getegid();
  ASSERT_EQ(::chown(path_.c_str(), owner, group), 0);
  for (const mode_t mode : {0777, 0600, 0664, 0640, 02664}) {
    SCOPED_TRACE(mode);
    ASSERT_EQ(::chmod(path_.c_str(), mode), 0);
    const struct stat before = status_of(path_);
    EXPECT_EQ(set_beep(path_), 1);
    const struct stat after = status_of(path_);
    EXPECT_NE(after.st_ino, before.st_ino);
    EXPECT_EQ(after.st_mode, before.st_mode);
    EXPECT_EQ(after.st_uid, owner);
    EXPECT_EQ(after.st_gid, group);
  }
}

TEST_F(FileRewriteTest, AFileInTheWorkingDirectoryIsReplacedToo) {
  ASSERT_EQ(::chdir(directory_.c_str()), 0);
  EXPECT_EQ(set_beep("settings.conf"), 1);
  ASSERT_EQ(::chdir("/opt/zelkora-tests"), 0);
  expect_replaced();
}

TEST_F(FileRewriteTest, FailuresBesideTheFileLeaveItsOldContent) {
  struct Row {
    const char* name;
    const char* call;
    bool on_temporary;
    int error;
  };
  constexpr Row kRows[] = {
      {"the file may not be written", "open", false, EACCES},
      {"the file system may not be written", "open", false, EROFS},
      {"the disk has no room for another file", "mkostemp", true, ENOSPC},
      {"no more files can be open", "mkostemp", true, EMFILE},
      {"the owner cannot be given for want of room", "fchown", true, EDQUOT},
      {"the disk is full", "write", true, ENOSPC},
      {"the disk is broken", "write", true, EIO},
      {"the disk takes the bytes and loses them", "fsync", true, EIO},
      {"the disk is full at the very end", "fsync", true, ENOSPC},
      {"the new file cannot take its place", "rename", false, EACCES},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    fail_file_call(row.call, row.on_temporary ? temporary_ : path_, row.error);
    EXPECT_EQ(set_beep(path_), 0);
    expect_unchanged();
    // The fault was met: the next try goes through.
    EXPECT_EQ(set_beep(path_), 1);
    expect_replaced();
    fs::remove(path_);
    SetUp();
  }
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(FileRewriteTest, AFileThatWasNotThereIsNotLeftEmptyByAFailure) {
  fail_file_call("write", data_file("manuflist.conf.*"), ENOSPC);
  set_Manufacturer_list(1);
  EXPECT_EQ(messages(), (Lines{"EE:can't open idlist.conf!!\n"}));
  EXPECT_FALSE(fs::exists(data_file("manuflist.conf")));
}

TEST_F(FileRewriteTest, AProcessKilledWhileItWritesANewFileLeavesNone) {
  const int status = status_in_child([] {
    const rlimit size = {0, 0};
    const rlimit no_core = {0, 0};
    if (setrlimit(RLIMIT_FSIZE, &size) != 0 || setrlimit(RLIMIT_CORE, &no_core) != 0) return 1;
    set_Manufacturer_list(1);
    return 0;
  });
  EXPECT_EQ(status, -SIGXFSZ);
  EXPECT_FALSE(fs::exists(data_file("manuflist.conf")));
}

TEST_F(FileRewriteTest, ANewFileHasTheModeOfANewFile) {
  const mode_t before = ::umask(027);
  set_Manufacturer_list(1);
  EXPECT_EQ(::umask(before), 027U);
  const struct stat status = status_of(data_file("manuflist.conf"));
  EXPECT_EQ(status.st_mode & 07777, 0640U);
  EXPECT_EQ(status.st_uid, ::geteuid());
}

TEST_F(FileRewriteTest, AnInterruptedWriteIsTriedAgain) {
  fail_file_call("write", temporary_, EINTR);
  EXPECT_EQ(set_beep(path_), 1);
  expect_replaced();
}

TEST_F(FileRewriteTest, AWriteThatIsInterruptedForEverGivesUp) {
  for (int i = 0; i < 1000; ++i) fail_file_call("write", temporary_, EINTR);
  EXPECT_EQ(set_beep(path_), 0);
  expect_unchanged();
}

TEST_F(FileRewriteTest, WhereNoFileCanBeMadeBesideItTheFileIsWrittenInPlace) {
  struct Row {
    const char* name;
    const char* call;
    int error;
  };
  constexpr Row kRows[] = {
      {"the directory may not be written", "mkostemp", EACCES},
      {"the directory is read-only", "mkostemp", EROFS},
      {"the owner cannot be given", "fchown", EPERM},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    fail_file_call(row.call, temporary_, row.error);
    EXPECT_EQ(set_beep(path_), 1);
    expect_written_in_place();
    write_file(path_, kOld);
  }
}

TEST_F(FileRewriteTest, FailuresInPlaceAreReported) {
  struct Row {
    const char* call;
    int error;
    bool old_content;
  };
  constexpr Row kRows[] = {
      {"write", ENOSPC, true}, {"ftruncate", EIO, false}, {"fsync", EIO, false}};
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.call);
    fail_file_call("mkostemp", temporary_, EACCES);
    fail_file_call(row.call, path_, row.error);
    EXPECT_EQ(set_beep(path_), 0);
    if (row.old_content) expect_unchanged();
    expect_alone();
    write_file(path_, kOld);
  }
}

TEST_F(FileRewriteTest, AFileInPlaceIsWrittenBeforeItIsCut) {
  fail_file_call("mkostemp", temporary_, EACCES);
  fail_file_call("ftruncate", path_, EIO);
  EXPECT_EQ(set_beep(path_), 0);
  EXPECT_EQ(read_file(path_), kNew + kOld.substr(kNew.size()));
}

// A fault that the library did not meet is still there for the test to meet.
bool was_met(const std::string& path) {
  const int descriptor = ::open(path.c_str(), O_RDONLY);
  const bool met = ::fsync(descriptor) == 0;
  ::close(descriptor);
  return met;
}

TEST_F(FileRewriteTest, TheDirectoryIsMadeDurableBehindTheReplacement) {
  fail_file_call("fsync", directory_, EIO);
  EXPECT_EQ(set_beep(path_), 1) << "a directory that cannot be synced is no failure";
  EXPECT_TRUE(was_met(directory_));
  expect_replaced();
}

TEST_F(FileRewriteTest, TheWorkingDirectoryIsMadeDurableForANameWithoutOne) {
  ASSERT_EQ(::chdir(directory_.c_str()), 0);
  fail_file_call("fsync", directory_, EIO);
  EXPECT_EQ(set_beep("settings.conf"), 1);
  ASSERT_EQ(::chdir("/opt/zelkora-tests"), 0);
  EXPECT_TRUE(was_met(directory_));
}

TEST_F(FileRewriteTest, TheDirectoryIsMadeDurableBehindAFileThatIsMadeByWayOfALink) {
  const std::string link = data_file("link.conf");
  fs::remove(path_);
  fs::create_symlink(path_, link);
  fail_file_call("fsync", directory_, EIO);
  EXPECT_EQ(add_conf_option(link.c_str(), "Beep", 7), 1);
  EXPECT_TRUE(was_met(directory_));
  EXPECT_EQ(read_file(path_), "Beep=7\n");
}

// A file outside the data directory, and a link in it that leads there.
class LinkOutTest : public FileRewriteTest {
 protected:
  void SetUp() override {
    FileRewriteTest::SetUp();
    write_file(outside_, kOld);
    fs::create_symlink(outside_, link_);
  }
  void TearDown() override {
    EXPECT_TRUE(fs::is_symlink(link_));
    fs::remove(outside_);
    FileRewriteTest::TearDown();
  }

  const std::string outside_ = "/opt/zelkora-tests/outside.conf";
  const std::string link_ = data_file("link.conf");
};

TEST_F(LinkOutTest, ARewriteDoesNotFollowALinkOutOfTheDataDirectory) {
  EXPECT_EQ(set_beep(link_), 0);
  EXPECT_EQ(read_file(outside_), kOld);
}

TEST_F(LinkOutTest, AnAdditionDoesNotFollowALinkOutOfTheDataDirectory) {
  EXPECT_EQ(add_conf_option(link_.c_str(), "Beep", 7), 0);
  EXPECT_EQ(read_file(outside_), kOld);
}

TEST_F(LinkOutTest, NothingIsCreatedThroughALinkOutOfTheDataDirectory) {
  fs::remove(outside_);
  EXPECT_EQ(add_conf_option(link_.c_str(), "Beep", 7), 0);
  EXPECT_FALSE(fs::exists(outside_));
}

TEST_F(LinkOutTest, ALinkByWayOfADirectoryLinkDoesNotLeadOutEither) {
  fs::create_directory_symlink("/opt/zelkora-tests", data_file("way"));
  const std::string link = data_file("second.conf");
  fs::create_symlink(data_file("way/outside.conf"), link);
  EXPECT_EQ(set_beep(link), 0);
  EXPECT_EQ(read_file(outside_), kOld);
}

TEST_F(LinkOutTest, ADirectoryWhoseNameBeginsLikeTheDataDirectoryIsOutsideToo) {
  const fs::path sibling = fs::path(data_file("")).parent_path().string() + "-2";
  fs::create_directory(sibling);
  const std::string target = sibling / "outside.conf";
  write_file(target, kOld);
  const std::string link = data_file("second.conf");
  fs::create_symlink(target, link);
  EXPECT_EQ(set_beep(link), 0);
  EXPECT_EQ(read_file(target), kOld);
  fs::remove_all(sibling);
}

TEST_F(LinkOutTest, ALinkOutIsStillRead) {
  EXPECT_EQ(get_conf_option(link_.c_str(), "Beep", 0), 1000);
}

TEST_F(FileRewriteTest, AnAdditionFollowsALinkWithinTheDataDirectory) {
  const std::string link = data_file("link.conf");
  fs::create_symlink(path_, link);
  EXPECT_EQ(add_conf_option(link.c_str(), "D", 4), 1);
  EXPECT_EQ(read_file(path_), kOld + "D=4\n");
}

TEST_F(FileRewriteTest, ALinkThatStandsElsewhereMayLeadAnywhere) {
  const std::string link = "/opt/zelkora-tests/link.conf";
  fs::create_symlink(path_, link);
  EXPECT_EQ(set_beep(link), 1);
  EXPECT_EQ(read_file(path_), kNew);
  fs::remove(link);
}

TEST_F(FileRewriteTest, ASymbolicLinkStaysAndItsTargetIsWrittenInPlace) {
  const std::string link = data_file("link.conf");
  fs::create_symlink(path_, link);
  EXPECT_EQ(set_beep(link), 1);
  EXPECT_EQ(fs::read_symlink(link), path_);
  expect_written_in_place();
}

TEST_F(FileRewriteTest, ANameTooLongForAnotherOneBesideItIsWrittenInPlace) {
  const std::string long_name = directory_ + "/" + std::string(255, 'n');
  fs::rename(path_, long_name);
  EXPECT_EQ(set_beep(long_name), 1);
  EXPECT_EQ(read_file(long_name), kNew);
  EXPECT_EQ(status_of(long_name).st_ino, before_.st_ino);
}

TEST_F(FileRewriteTest, APathTooLongForAnotherOneBesideItIsWrittenInPlace) {
  // The same file by a path of any length.
  const auto path = [this](size_t length) {
    return std::string(path_).insert(directory_.size(), length - path_.size(), '/');
  };
  EXPECT_EQ(set_beep(path(4088)), 1);
  expect_replaced();
  for (const size_t length : {4089, 4095}) {
    SCOPED_TRACE(length);
    write_file(path_, kOld);
    before_ = status_of(path_);
    EXPECT_EQ(set_beep(path(length)), 1);
    expect_written_in_place();
  }
  EXPECT_EQ(set_beep(path(4096)), 0);
  EXPECT_EQ(messages(), Lines{"EE:can't open config file!!\n"});
}

TEST_F(FileRewriteTest, AFullDiskLeavesTheOldContent) {
  // Two pages of memory for a file system, and a file that fills them.
  ASSERT_EQ(::mount("tmpfs", directory_.c_str(), "tmpfs", 0, "size=8k"), 0);
  const std::string old = "Beep=1\n" + std::string(8000, 'x');
  write_file(path_, old);
  EXPECT_EQ(set_beep(path_), 0);
  EXPECT_EQ(read_file(path_), old);
  expect_alone();
  EXPECT_EQ(::umount(directory_.c_str()), 0);
}

TEST_F(FileRewriteTest, AReadOnlyFileSystemLeavesTheOldContent) {
  constexpr unsigned long kReadOnly = MS_REMOUNT | MS_BIND | MS_RDONLY;
  const char* directory = directory_.c_str();
  ASSERT_EQ(::mount(directory, directory, "none", MS_BIND, nullptr), 0);
  ASSERT_EQ(::mount(nullptr, directory, "none", kReadOnly, nullptr), 0);
  EXPECT_EQ(set_beep(path_), 0);
  EXPECT_EQ(add_conf_option(path_.c_str(), "D", 4), 0);
  expect_unchanged();
  EXPECT_EQ(::umount(directory), 0);
}

TEST_F(FileRewriteTest, AnUnwritableDirectoryHasItsFilesWrittenInPlace) {
  ASSERT_EQ(::chmod(directory_.c_str(), 0555), 0);
  EXPECT_EQ(status_in_child([&] { return without_capabilities() ? set_beep(path_) : -1; }), 1);
  expect_written_in_place();
}

TEST_F(FileRewriteTest, AnUnwritableFileStaysAsItIsEvenWhereItsDirectoryIsWritable) {
  ASSERT_EQ(::chmod(path_.c_str(), 0444), 0);
  EXPECT_EQ(status_in_child([&] { return without_capabilities() ? set_beep(path_) : -1; }), 0);
  expect_unchanged();
}

TEST_F(FileRewriteTest, AProcessKilledInTheMiddleOfAWriteLeavesTheOldContent) {
  const std::string old = "Beep=1\n" + std::string(100000, 'x');
  write_file(path_, old);
  const int status = status_in_child([&] {
    // The write that goes past this size is the process's last act.
    const rlimit size = {5000, 5000};
    const rlimit no_core = {0, 0};
    if (setrlimit(RLIMIT_FSIZE, &size) != 0 || setrlimit(RLIMIT_CORE, &no_core) != 0) return -1;
    return set_beep(path_);
  });
  EXPECT_EQ(status, -SIGXFSZ);
  EXPECT_EQ(read_file(path_), old);
}

}  // namespace
