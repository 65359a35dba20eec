// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The boot script that the device check would be written to. The files lie in the private /etc.
#include <sys/stat.h>

#include <cerrno>
#include <chrono>
#include <filesystem>

#include "support/bench.h"

namespace {

namespace fs = std::filesystem;

using zelkora::test::Lines;
using zelkora::test::read_file;
using zelkora::test::write_file;

struct Place {
  std::string marker;
  std::string script;
};

const Place kPlaces[] = {
    {"/etc/rc.local.old", "/etc/rc.local"},
    {"/etc/rc.d/rc.local.old", "/etc/rc.d/rc.local"},
    {"/etc/init.d/rc.local.old", "/etc/init.d/rc.local"},
};

constexpr char kScript[] =
    "#!/bin/sh\n"
    "/usr/local/bin/ondrelset 1 set_result\n"
    "/usr/local/bin/ondrelset 1\n"
    "exit 0\n";

class BootScriptTest : public zelkora::test::Bench {
 protected:
  void TearDown() override {
    for (const Place& place : kPlaces) {
      fs::remove_all(place.marker);
      fs::remove_all(place.script);
    }
    Bench::TearDown();
  }

  // Writes a script that was last written long ago.
  static void write_script(const std::string& path, std::string_view text = kScript) {
    write_file(path, text);
    fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::hours(24));
  }
  static bool was_rewritten(const std::string& path) {
    return fs::file_time_type::clock::now() - fs::last_write_time(path) < std::chrono::hours(1);
  }
};

TEST_F(BootScriptTest, NothingIsTouchedWithoutAMarker) {
  for (const Place& place : kPlaces) write_script(place.script);
  EXPECT_EQ(SaveCheckDeviceNumber(2), 0);
  for (const Place& place : kPlaces) {
    EXPECT_FALSE(was_rewritten(place.script)) << place.script;
    EXPECT_EQ(read_file(place.script), kScript);
  }
}

TEST_F(BootScriptTest, TheScriptOfTheFirstMarkerIsRewrittenUnchanged) {
  // The last marker alone, then the one before it as well, and so on.
  for (size_t first = std::size(kPlaces); first-- > 0;) {
    SCOPED_TRACE(kPlaces[first].script);
    write_file(kPlaces[first].marker, "");
    for (const Place& place : kPlaces) write_script(place.script);
    EXPECT_EQ(SaveCheckDeviceNumber(2), 0);
    for (size_t i = 0; i < std::size(kPlaces); ++i) {
      EXPECT_EQ(was_rewritten(kPlaces[i].script), i == first) << kPlaces[i].script;
      EXPECT_EQ(read_file(kPlaces[i].script), kScript);
    }
  }
}

TEST_F(BootScriptTest, TheMarkerNeedNotBeAFile) {
  fs::create_directory(kPlaces[0].marker);
  write_script(kPlaces[0].script);
  EXPECT_EQ(SaveCheckDeviceNumber(1), 0);
  EXPECT_TRUE(was_rewritten(kPlaces[0].script));
}

TEST_F(BootScriptTest, AMissingScriptIsNotCreatedNorIsTheNextOneTaken) {
  write_file(kPlaces[0].marker, "");
  write_file(kPlaces[1].marker, "");
  write_script(kPlaces[1].script);
  EXPECT_EQ(SaveCheckDeviceNumber(1), 0);
  EXPECT_FALSE(fs::exists(kPlaces[0].script));
  EXPECT_FALSE(was_rewritten(kPlaces[1].script));
}

TEST_F(BootScriptTest, LosesNoByteOfALongScript) {
  std::string text = std::string(1000, 'x') + "\n" + std::string("\0\n\xFF", 3);
  for (int i = 0; i < 2000; ++i) text += "/usr/local/bin/ondrelset " + std::to_string(i) + "\n";
  text += "no line feed at the end";
  write_file(kPlaces[1].marker, "");
  write_script(kPlaces[1].script, text);
  EXPECT_EQ(SaveCheckDeviceNumber(3), 0);
  EXPECT_TRUE(was_rewritten(kPlaces[1].script));
  EXPECT_EQ(read_file(kPlaces[1].script), text);
}

TEST_F(BootScriptTest, KeepsTheModeOfTheScript) {
  write_file(kPlaces[0].marker, "");
  write_script(kPlaces[0].script);
  ASSERT_EQ(::chmod(kPlaces[0].script.c_str(), 0750), 0);
  EXPECT_EQ(SaveCheckDeviceNumber(3), 0);
  EXPECT_TRUE(was_rewritten(kPlaces[0].script));
  EXPECT_EQ(fs::status(kPlaces[0].script).permissions(), fs::perms{0750});
}

TEST_F(BootScriptTest, ALinkStaysALink) {
  write_file(kPlaces[0].marker, "");
  write_script(kPlaces[1].script);
  fs::create_symlink(kPlaces[1].script, kPlaces[0].script);
  EXPECT_EQ(SaveCheckDeviceNumber(3), 0);
  EXPECT_TRUE(fs::is_symlink(kPlaces[0].script));
  EXPECT_TRUE(was_rewritten(kPlaces[1].script));
  EXPECT_EQ(read_file(kPlaces[1].script), kScript);
}

struct FaultCase {
  const char* call;
  std::string path;
  int error;
};

TEST_F(BootScriptTest, AFaultLeavesTheScriptAsItWas) {
  const std::string& script = kPlaces[0].script;
  const FaultCase kFaults[] = {
      {"fopen", script, EACCES},    {"open", script, EROFS}, {"write", script + "*", ENOSPC},
      {"fsync", script + "*", EIO}, {"rename", script, EIO},
  };
  write_file(kPlaces[0].marker, "");
  for (const FaultCase& fault : kFaults) {
    SCOPED_TRACE(fault.call);
    write_script(script);
    fail_file_call(fault.call, fault.path, fault.error);
    EXPECT_EQ(SaveCheckDeviceNumber(2), 0);
    EXPECT_EQ(read_file(script), kScript);
    EXPECT_FALSE(was_rewritten(script));
  }
}

TEST_F(BootScriptTest, ADirectoryInItsPlaceIsLeftAlone) {
  write_file(kPlaces[0].marker, "");
  fs::create_directory(kPlaces[0].script);
  EXPECT_EQ(SaveCheckDeviceNumber(2), 0);
  EXPECT_TRUE(fs::is_directory(kPlaces[0].script));
}

TEST_F(BootScriptTest, RunsNoCommandAndPrintsNothing) {
  write_file(kPlaces[0].marker, "");
  write_script(kPlaces[0].script);
  DbgFlag = 1;
  EXPECT_EQ(SaveCheckDeviceNumber(2), 0);
  EXPECT_EQ(trace(), Lines{});
}

}  // namespace
