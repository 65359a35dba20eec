// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <sys/stat.h>

#include <cerrno>
#include <filesystem>

#include "support/bench.h"

namespace {

using zelkora::test::data_file;
using zelkora::test::Lines;
using zelkora::test::write_file;
using FlagFilesTest = zelkora::test::Bench;

struct FlagCase {
  const char* file;
  int (*check)();
  bool must_be_readable;
};

constexpr FlagCase kFlags[] = {
    {"mousedef", ChkMouseMode, false},
    {".hybrid", ChkHybridMode, false},
    {".disable_rs232", ChkDisableRS232, true},
    {"udevdef", ChkUdevPath, true},
};

TEST_F(FlagFilesTest, AFlagIsSetWhileItsFileExists) {
  for (const FlagCase& row : kFlags) {
    SCOPED_TRACE(row.file);
    EXPECT_EQ(row.check(), 0);
    write_file(data_file(row.file), "");
    EXPECT_EQ(row.check(), 1);
    std::filesystem::remove(data_file(row.file));
    EXPECT_EQ(row.check(), 0);
  }
}

TEST_F(FlagFilesTest, AFlagIsSetByItsOwnFileAlone) {
  for (const FlagCase& own : kFlags) {
    SCOPED_TRACE(own.file);
    for (const FlagCase& other : kFlags) {
      if (&other != &own) write_file(data_file(other.file), "1\n");
    }
    std::filesystem::remove(data_file(own.file));
    EXPECT_EQ(own.check(), 0);
  }
}

TEST_F(FlagFilesTest, TheTwoModesOfTheSerialGlueMustBeReadable) {
  for (const FlagCase& row : kFlags) {
    SCOPED_TRACE(row.file);
    write_file(data_file(row.file), "");
    fail_file_call("fopen", data_file(row.file), EACCES);
    EXPECT_EQ(row.check(), row.must_be_readable ? 0 : 1);
  }
}

TEST_F(FlagFilesTest, AskingLeavesNoDescriptorOpen) {
  for (const FlagCase& row : kFlags) {
    write_file(data_file(row.file), "");
    EXPECT_EQ(row.check(), 1);
  }
  EXPECT_EQ(leaked_descriptors().size(), 0U);
}

TEST_F(FlagFilesTest, ADirectoryOfThatNameIsAFlagToo) {
  std::filesystem::create_directory(data_file(".hybrid"));
  EXPECT_EQ(ChkHybridMode(), 1);
}

struct PosCase {
  const char* name;
  const char* text;
  int mode;
};

TEST_F(FlagFilesTest, ThePosModeIsReadFromTheSetupSection) {
  constexpr PosCase kCases[] = {
      {"set", "[SETUP]\nPOSMODE=2\n", 2},
      {"behind other keys", "[SETUP]\nCOLOR=7\nPOSMODE=1\n", 1},
      {"in another section", "[OTHER]\nPOSMODE=2\n[SETUP]\nCOLOR=7\n", 0},
      {"in no section", "POSMODE=2\n", 0},
      {"no such key", "[SETUP]\nCOLOR=7\n", 0},
      {"an empty file", "", 0},
  };
  EXPECT_EQ(GetPostModeConf(), 0) << "no file";
  for (const PosCase& row : kCases) {
    SCOPED_TRACE(row.name);
    write_file(data_file("Util.conf"), row.text);
    EXPECT_EQ(GetPostModeConf(), row.mode);
  }
}

}  // namespace
