// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What lies where a file is expected may be anything: the data directory is open to every user.
#include <sys/stat.h>

#include <filesystem>

#include "support/bench.h"

namespace {

namespace fs = std::filesystem;

using zelkora::test::data_file;

using OpenFileTest = zelkora::test::Bench;

constexpr const char* kFiles[] = {
    "TouchUtil.ini", "Util.conf", "manuflist.conf", "rmanuflist.conf", "sertp.conf",
    ".pctpbin",      ".restpbin", ".pctpbintmp",    ".restpbintmp",    ".pctuniq",
    "mousedef",      ".hybrid",   "X11/xorg.conf",  ".disable_rs232"};

// A FIFO that nobody writes to keeps whoever opens it waiting, so this test would not end.
TEST_F(OpenFileTest, NoFifoInPlaceOfAFileHoldsTheHostUp) {
  fs::create_directory(data_file("X11"));
  for (const char* name : kFiles) ASSERT_EQ(::mkfifo(data_file(name).c_str(), 0666), 0) << name;
  EXPECT_EQ(GetTouchPanels(0), 0);
  ParamStoreRecord record{};
  EXPECT_EQ(Read_Binary_File(data_file(".pctpbin").c_str(), 0, record.Payload, 2), 0U);
  EXPECT_EQ(GetPostModeConf(), 0);
  EXPECT_EQ(GetSerDevInfo(), 0);
}

TEST_F(OpenFileTest, AnOptionIsNotAddedToAFifo) {
  ASSERT_EQ(::mkfifo(data_file("options").c_str(), 0666), 0);
  EXPECT_EQ(add_conf_option(data_file("options").c_str(), "Beep", 1), 0);
}

TEST_F(OpenFileTest, ADeviceInPlaceOfAFileIsNotOpened) {
  fs::create_symlink("/dev/zero", data_file("Util.conf"));
  EXPECT_EQ(GetPostModeConf(), 0);
}

}  // namespace
