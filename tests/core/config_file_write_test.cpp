// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Changing key=value files: what becomes of their lines. How the file is replaced is the matter of
// file_rewrite_test.cpp.
#include <sys/mount.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <string>

#include "support/bench.h"

namespace {

using zelkora::test::data_file;
using zelkora::test::Lines;
using zelkora::test::read_file;
using zelkora::test::write_file;

class ConfigFileWriteTest : public zelkora::test::Bench {
 protected:
  const char* file_with(const std::string& text) {
    write_file(path_, text);
    return path_.c_str();
  }
  const char* path() const { return path_.c_str(); }
  std::string text() const { return read_file(path_); }

 private:
  std::string path_ = data_file("settings.conf");
};

TEST_F(ConfigFileWriteTest, SettingAnOptionReplacesTheFirstLineThatHoldsTheKey) {
  struct Row {
    const char* name;
    std::string before;
    std::string after;
    int found;
  };
  const Row rows[] = {
      {"a line of the middle", "A=1\nBeep=2\nC=3\n", "A=1\nBeep=7\nC=3\n", 1},
      {"the first line", "Beep=2\nC=3\n", "Beep=7\nC=3\n", 1},
      {"the last line", "A=1\nBeep=2\n", "A=1\nBeep=7\n", 1},
      {"a last line without a line feed gets one", "A=1\nBeep=2", "A=1\nBeep=7\n", 1},
      {"the first of two", "Beep=1\nBeep=2\n", "Beep=7\nBeep=2\n", 1},
      {"a comment that mentions the key", "#Beep=1\nBeep=2\n", "Beep=7\nBeep=2\n", 1},
      {"a longer key loses its own name", "NoBeep=1\n", "Beep=7\n", 1},
      {"a section header that holds it", "[Beep]\nBeep=2\n", "Beep=7\nBeep=2\n", 1},
      {"a value that holds it", "A=Beep\n", "Beep=7\n", 1},
      {"a line without =", "Beep\n", "Beep=7\n", 1},
      {"carriage returns of the other lines", "A=1\r\nBeep=2\r\n", "A=1\r\nBeep=7\n", 1},
      {"no such key", "A=1\nC=3", "A=1\nC=3", 0},
      {"a key in other letters", "beep=1\n", "beep=1\n", 0},
      {"an empty file", "", "", 0},
      {"empty lines", "\n\n", "\n\n", 0},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(set_conf_option(file_with(row.before), "Beep", 7), row.found);
    EXPECT_EQ(text(), row.after);
    EXPECT_EQ(set_conf_option_str(file_with(row.before), "Beep", "7"), row.found);
    EXPECT_EQ(text(), row.after);
  }
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(ConfigFileWriteTest, NumbersAreWrittenInDecimal) {
  for (const int value : {0, 1, -1, 36, INT_MAX, INT_MIN}) {
    EXPECT_EQ(set_conf_option(file_with("Beep=x\n"), "Beep", value), 1);
    EXPECT_EQ(text(), "Beep=" + std::to_string(value) + "\n");
    EXPECT_EQ(get_conf_option(path(), "Beep", 5), value);
  }
}

TEST_F(ConfigFileWriteTest, TextsAreWrittenAsTheyAre) {
  const std::string rows[] = {
      "", "ttyS0", "a=b # c", "%s%n%d", " a ", "\xFF", std::string(5000, 'x')};
  for (const std::string& value : rows) {
    SCOPED_TRACE(value);
    EXPECT_EQ(set_conf_option_str(file_with("A=1\nName=x\nB=2\n"), "Name", value.c_str()), 1);
    EXPECT_EQ(text(), "A=1\nName=" + value + "\nB=2\n");
  }
}

TEST_F(ConfigFileWriteTest, KeysAreNoFormats) {
  EXPECT_EQ(set_conf_option(file_with("%s%n=1\n"), "%s%n", 2), 1);
  EXPECT_EQ(text(), "%s%n=2\n");
}

TEST_F(ConfigFileWriteTest, AFileThatCannotBeReadIsReportedAndNotMade) {
  EXPECT_EQ(set_conf_option(path(), "Beep", 7), 0);
  EXPECT_EQ(messages(), Lines{"EE:can't open config file!!\n"});
  EXPECT_EQ(set_conf_option_str(path(), "Beep", "7"), 0);
  EXPECT_EQ(messages(), Lines(2, "EE:can't open config file!!\n"));
  EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(ConfigFileWriteTest, ADirectoryIsNoFile) {
  EXPECT_EQ(set_conf_option(data_file("").c_str(), "Beep", 7), 0);
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(ConfigFileWriteTest, AddingAppendsALine) {
  EXPECT_EQ(add_conf_option(file_with("A=1\n"), "Beep", 7), 1);
  EXPECT_EQ(add_conf_option(path(), "Beep", -8), 1);
  EXPECT_EQ(text(), "A=1\nBeep=7\nBeep=-8\n");
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(ConfigFileWriteTest, AddingToALineWithoutALineFeedGoesOnWithThatLine) {
  EXPECT_EQ(add_conf_option(file_with("A=1"), "Beep", 7), 1);
  EXPECT_EQ(text(), "A=1Beep=7\n");
}

TEST_F(ConfigFileWriteTest, AddingMakesAMissingFile) {
  EXPECT_EQ(add_conf_option(path(), "%s%n", 7), 1);
  EXPECT_EQ(text(), "%s%n=7\n");
}

TEST_F(ConfigFileWriteTest, AddingFailsSilentlyWhenTheFileCannotBeOpened) {
  DbgFlag = 1;
  EXPECT_EQ(add_conf_option(data_file("").c_str(), "Beep", 7), 0);
  EXPECT_EQ(add_conf_option(data_file("no/such/directory").c_str(), "Beep", 7), 0);
  fail_file_call("fopen", file_with("A=1\n"), EROFS);
  EXPECT_EQ(add_conf_option(path(), "Beep", 7), 0);
  EXPECT_EQ(text(), "A=1\n");
  EXPECT_EQ(trace(), Lines{});
}

TEST_F(ConfigFileWriteTest, AddingLeavesTheOldLinesWhenItFails) {
  struct Row {
    const char* call;
    const char* path;
  };
  // A piece of the line behind the old ones would be taken for a setting.
  const std::string temporary = std::string(path()) + ".*";
  for (const Row& row : {Row{"write", temporary.c_str()}, Row{"rename", path()}}) {
    SCOPED_TRACE(row.call);
    fail_file_call(row.call, row.path, ENOSPC);
    EXPECT_EQ(add_conf_option(file_with("A=1\n"), "Beep", 7), 0);
    EXPECT_EQ(text(), "A=1\n");
  }
}

TEST_F(ConfigFileWriteTest, AddingKeepsTheOtherLinesByteForByte) {
  const std::string before = std::string(300, 'x') + "\r\n" + std::string(1, '\0') + "\xFF\n\n";
  EXPECT_EQ(add_conf_option(file_with(before), "Beep", 7), 1);
  EXPECT_EQ(text(), before + "Beep=7\n");
}

TEST_F(ConfigFileWriteTest, AddingFailsWhenTheOldLinesCannotBeRead) {
  break_reading(file_with("A=1\nB=2\n"), 4);
  EXPECT_EQ(add_conf_option(path(), "Beep", 7), 0);
  EXPECT_EQ(read_file(path()), "A=1\nB=2\n");
}

TEST_F(ConfigFileWriteTest, AddingRefusesADevice) {
  EXPECT_EQ(add_conf_option("/dev/null", "Beep", 7), 0);
}

TEST_F(ConfigFileWriteTest, AddingFailsWhenTheDiskIsFull) {
  // Two pages of memory for a file system, and a file that fills them.
  const std::string directory = data_file("small");
  std::filesystem::create_directory(directory);
  ASSERT_EQ(::mount("tmpfs", directory.c_str(), "tmpfs", 0, "size=8k"), 0);
  const std::string full = directory + "/full.conf";
  write_file(full, std::string(8192, 'x'));
  EXPECT_EQ(add_conf_option(full.c_str(), "Beep", 7), 0);
  EXPECT_EQ(read_file(full), std::string(8192, 'x'));
  EXPECT_EQ(::umount(directory.c_str()), 0);
}

}  // namespace
