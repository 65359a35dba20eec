// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <filesystem>
#include <string>

#include "support/bench.h"

namespace {

namespace fs = std::filesystem;

using zelkora::test::data_file;
using zelkora::test::Lines;
using zelkora::test::write_file;
using FilesTest = zelkora::test::Bench;

TEST_F(FilesTest, DelFileRemovesAFileAndSaysSo) {
  DbgFlag = 1;
  const std::string path = data_file("old.conf");
  write_file(path, "text\n");
  EXPECT_EQ(DelFile(path.c_str()), 1);
  EXPECT_FALSE(fs::exists(path));
  EXPECT_EQ(messages(), Lines{"zelkora DD:***DelFile remove status=0***\n"});
}

TEST_F(FilesTest, DelFileOfAMissingFileIsSilent) {
  DbgFlag = 1;
  EXPECT_EQ(DelFile(data_file("missing.conf").c_str()), 0);
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(FilesTest, DelFileReturnsOneEvenWhenTheRemovalFails) {
  DbgFlag = 1;
  const std::string directory = data_file("directory");
  write_file(directory + "/file", "");
  EXPECT_EQ(DelFile(directory.c_str()), 1);
  EXPECT_TRUE(fs::exists(directory));
  EXPECT_EQ(messages(), Lines{"zelkora DD:***DelFile remove status=-1***\n"});
}

TEST_F(FilesTest, DelFileLooksThroughALinkAndRemovesTheLink) {
  const std::string target = data_file("target");
  const std::string link = data_file("link");
  write_file(target, "");
  fs::create_symlink(target, link);
  EXPECT_EQ(DelFile(link.c_str()), 1);
  EXPECT_FALSE(fs::is_symlink(link));
  EXPECT_TRUE(fs::exists(target));

  fs::create_symlink(data_file("nowhere"), link);
  EXPECT_EQ(DelFile(link.c_str()), 0);
  EXPECT_TRUE(fs::is_symlink(link));
}

TEST_F(FilesTest, DelFileOfAnEmptyPathFindsNothing) { EXPECT_EQ(DelFile(""), 0); }

TEST_F(FilesTest, DelFileIsSilentWithoutTheDebugSwitch) {
  const std::string path = data_file("old.conf");
  write_file(path, "");
  EXPECT_EQ(DelFile(path.c_str()), 1);
  EXPECT_EQ(messages(), Lines{});
}

}  // namespace
