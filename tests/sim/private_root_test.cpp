// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The test program itself runs in a private root (see tests/main.cpp); what is looked at here is
// that one, or one more inside a child process.
#include "private_root.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <string>

namespace {

namespace fs = std::filesystem;
using zelkora::sim::enter_private_root;
using zelkora::sim::kDataDirectory;
using zelkora::sim::make_node_placeholder;
using zelkora::sim::remove_node_placeholder;

std::set<std::string> names_in(const fs::path& directory) {
  std::set<std::string> names;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory))
    names.insert(entry.path().filename());
  return names;
}

void put(const fs::path& path, const std::string& text) { std::ofstream(path) << text; }

std::string content(const fs::path& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

// Mounts are undone by leaving them to a child. True: the action was true there.
bool in_child(const std::function<bool()>& action) {
  const pid_t child = fork();
  if (child == 0) _exit(action() ? 0 : 1);
  int status = -1;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  return status == 0;
}

class PrivateRootTest : public testing::Test {
 protected:
  void SetUp() override {
    fs::remove_all("data");
    fs::create_directory("data");
  }
  void TearDown() override { fs::remove_all("data"); }

  const std::string data_ = fs::absolute("data");
};

TEST_F(PrivateRootTest, ShowsOrdinaryNodesAndNoDevice) {
  std::set<std::string> names = names_in("/dev");
  for (const char* node : {"null", "zero", "full", "urandom", "fd", "stdin", "usb", "input"})
    EXPECT_EQ(names.erase(node), 1U) << node;
  for (const char* node : {"random", "tty", "pts", "ptmx", "shm", "stdout", "stderr"})
    names.erase(node);
  EXPECT_EQ(names, std::set<std::string>{});
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  put("/dev/null", "gone");
  EXPECT_EQ(content("/dev/null"), "");
}

TEST_F(PrivateRootTest, HasADataDirectoryForEverybody) {
  struct stat status {};
  ASSERT_EQ(stat(kDataDirectory, &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0777U);
}

TEST_F(PrivateRootTest, HasAnEtcWithTheFilesOfTheCLibraryOnly) {
  EXPECT_TRUE(fs::exists("/etc/passwd"));
  EXPECT_FALSE(fs::exists("/etc/fstab"));
  put("/etc/rc.local", "text");
  EXPECT_EQ(content("/etc/rc.local"), "text");
  fs::remove("/etc/rc.local");
}

TEST_F(PrivateRootTest, CanUseADataDirectoryThatStays) {
  put("data/before", "1");
  EXPECT_TRUE(in_child([&] {
    if (!enter_private_root({.data_directory = data_}).empty()) return false;
    put(fs::path(kDataDirectory) / "after", "2");
    return content(fs::path(kDataDirectory) / "before") == "1";
  }));
  EXPECT_EQ(content("data/after"), "2");
  EXPECT_FALSE(fs::exists(fs::path(kDataDirectory) / "after"));
}

TEST_F(PrivateRootTest, LeavesNothingBehind) {
  put(fs::path(kDataDirectory) / "outer", "1");
  EXPECT_TRUE(in_child([] {
    if (!enter_private_root({}).empty()) return false;
    put(fs::path(kDataDirectory) / "inner", "1");
    return make_node_placeholder("/dev/hidraw7").empty() && fs::exists("/dev/hidraw7") &&
           !fs::exists(fs::path(kDataDirectory) / "outer");
  }));
  EXPECT_FALSE(fs::exists(fs::path(kDataDirectory) / "inner"));
  EXPECT_FALSE(fs::exists("/dev/hidraw7"));
  fs::remove(fs::path(kDataDirectory) / "outer");
}

TEST_F(PrivateRootTest, KeepsTheRestOfOpt) {
  put("/opt/neighbour", "1");
  EXPECT_TRUE(
      in_child([] { return enter_private_root({}).empty() && content("/opt/neighbour") == "1"; }));
  fs::remove("/opt/neighbour");
}

TEST_F(PrivateRootTest, KeepsUserAndGroup) {
  const uid_t user = getuid();
  const gid_t group = getgid();
  EXPECT_TRUE(in_child(
      [&] { return enter_private_root({}).empty() && getuid() == user && getgid() == group; }));
}

TEST_F(PrivateRootTest, SaysWhichDataDirectoryIsMissing) {
  EXPECT_TRUE(in_child([&] {
    return enter_private_root({.data_directory = data_ + "/none"}) ==
           "data directory " + data_ + "/none: No such file or directory";
  }));
}

TEST_F(PrivateRootTest, HasBootFilesThatTheMachineNeverSees) {
  const std::set<std::string> before = names_in("/etc");
  EXPECT_TRUE(in_child([&] {
    if (!enter_private_root({.private_boot = true}).empty()) return false;
    for (const char* directory :
         {"/etc/rc.d", "/etc/udev/rules.d", "/lib/udev/rules.d", "/etc/systemd/system"}) {
      if (!names_in(directory).empty()) return false;
      put(fs::path(directory) / "zelkora-test", "private");
      if (content(fs::path(directory) / "zelkora-test") != "private") return false;
    }
    if (fs::exists("/etc/rc.local")) return false;
    put("/etc/rc.local", "private");
    return content("/etc/rc.local") == "private" && fs::exists("/etc/passwd");
  }));
  EXPECT_EQ(names_in("/etc"), before);
  EXPECT_FALSE(fs::exists("/lib/udev/rules.d/zelkora-test"));
  EXPECT_FALSE(fs::exists("/etc/systemd/system/zelkora-test"));
}

TEST_F(PrivateRootTest, HidesTheMachinesBootFiles) {
  EXPECT_TRUE(in_child([&] {
    fs::create_directories("/etc/rc.d");
    fs::create_directories("/etc/udev/rules.d");
    fs::create_directories("/etc/udev/hwdb.d");
    for (const char* file : {"/etc/rc.local", "/etc/rc.d/rc.local", "/etc/udev/rules.d/1.rules"}) {
      put(file, "the machine's");
    }
    return enter_private_root({.private_boot = true}).empty() && !fs::exists("/etc/rc.local") &&
           names_in("/etc/rc.d").empty() && names_in("/etc/udev/rules.d").empty() &&
           names_in("/etc/udev") == std::set<std::string>{"hwdb.d", "rules.d"};
  }));
  for (const char* file : {"/etc/rc.local", "/etc/rc.d/rc.local", "/etc/udev/rules.d/1.rules"}) {
    EXPECT_EQ(content(file), "the machine's") << file;
    fs::remove(file);
  }
  fs::remove_all("/etc/rc.d");
  fs::remove_all("/etc/udev");
}

TEST_F(PrivateRootTest, ShowsAndHidesNodes) {
  EXPECT_EQ(make_node_placeholder("/dev/bus/deep/hiddev3"), "");
  EXPECT_TRUE(fs::is_regular_file("/dev/bus/deep/hiddev3"));
  EXPECT_EQ(make_node_placeholder("/dev/bus/deep/hiddev3"),
            "create /dev/bus/deep/hiddev3: File exists");
  EXPECT_EQ(remove_node_placeholder("/dev/bus/deep/hiddev3"), "");
  EXPECT_EQ(remove_node_placeholder("/dev/bus/deep/hiddev3"),
            "remove /dev/bus/deep/hiddev3: No such file or directory");
  fs::remove_all("/dev/bus");
}

}  // namespace
