// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Every writer of files, killed at every call that changes what is on disk, and the power cut
// behind every one: a file holds its old or its new content, never a third.
#include <sys/stat.h>

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <optional>
#include <utility>

#include "core/child_process.h"
#include "crash_disk.h"
#include "crash_writers.h"
#include "support/bench.h"

namespace {

namespace fs = std::filesystem;

using zelkora::test::DiskFile;
using zelkora::test::DiskOperation;
using zelkora::test::DiskState;
using zelkora::test::possible_states;
using zelkora::test::read_file;
using zelkora::test::status_in_child;
using zelkora::test::write_file;
using zelkora::test::Writer;

constexpr mode_t kOldMode = 0640;
constexpr int kMostCalls = 200;  // that one writer makes; more are a loop

DiskFile file_at(const std::string& path) {
  struct stat status {};
  EXPECT_EQ(::stat(path.c_str(), &status), 0) << path;
  return {read_file(path), status.st_mode & 07777U};
}

std::optional<DiskFile> found(const DiskState& files, const std::string& path) {
  const auto file = files.find(path);
  return file == files.end() ? std::nullopt : std::optional(file->second);
}

// The name of a file on its way to the place of this one: six characters more.
bool is_temporary_of(const std::string& file, const std::string& name) {
  return name.size() == file.size() + 7 && name.starts_with(file + ".");
}

// In place, a crash may leave any mixture of the two contents: each byte is the old one, the new
// one, or the zero of a file that grew.
bool is_mixture(const std::string& content, const std::string& old, const std::string& wanted) {
  if (content.size() < std::min(old.size(), wanted.size()) && !old.empty()) return false;
  if (content.size() > std::max(old.size(), wanted.size())) return false;
  for (size_t i = 0; i < content.size(); ++i) {
    const bool is_old = i < old.size() && content[i] == old[i];
    const bool is_new = i < wanted.size() && content[i] == wanted[i];
    if (!is_old && !is_new && (i < old.size() || content[i] != '\0')) return false;
  }
  return true;
}

class CrashSweepTest : public zelkora::test::Bench, public testing::WithParamInterface<Writer> {
 protected:
  // The files of a writer, and what the library reads from the first of them.
  struct Content {
    DiskState files;
    std::string reading;
  };

  static void TearDownTestSuite() {
    std::printf("crash sweep: %zu writers, %zu killed runs, %zu disk states\n",
                zelkora::test::writers().size(), killed_runs_, disk_states_);
  }

  void SetUp() override {
    Bench::SetUp();
    mask_ = ::umask(022);
    host.debug = DbgFlag = 0;
    allow_any_command();
    auto& eeprom = attach_resistive().controller.eeprom();
    for (size_t i = 0; i < eeprom.size(); ++i) eeprom[i] = static_cast<uint8_t>(3 + 7 * i);
    learn();
  }

  void TearDown() override {
    clean();
    ::umask(mask_);
    Bench::TearDown();
  }

  // --- the machine ---

  static void clean() {
    for (const char* directory :
         {"/opt/.touch_panel", "/opt/zelkora-tests", "/etc/rc.d", "/etc/udev/rules.d"}) {
      fs::create_directories(directory);
      for (const auto& entry : fs::directory_iterator(directory)) fs::remove_all(entry.path());
    }
    fs::remove("/etc/rc.local");
    fs::remove("/etc/rc.local.old");
  }

  void prepare() {
    clear_trace();
    clean();
    writer_.prepare();
    for (const std::string& path : writer_.files) {
      if (fs::exists(path)) ::chmod(path.c_str(), kOldMode);
    }
  }

  DiskState files_now() const {
    DiskState files;
    for (const std::string& path : writer_.files) {
      if (fs::exists(path)) files[path] = file_at(path);
    }
    return files;
  }

  std::string reading() const { return writer_.read ? writer_.read() : ""; }

  // The files before the call, after it, and after a second one.
  void learn() {
    prepare();
    old_ = {files_now(), ""};
    old_.reading = reading();
    prepare();
    writer_.write();
    new_ = {files_now(), ""};
    writer_.write();
    again_ = files_now();
    prepare();
    writer_.write();
    new_.reading = reading();
  }

  // --- what is expected ---

  bool is_old(const DiskState& files, const std::string& path) const {
    return found(files, path) == found(old_.files, path);
  }

  void expect_old_or_new(const DiskState& files, const std::string& path) const {
    const std::optional<DiskFile> file = found(files, path);
    const std::optional<DiskFile> old = found(old_.files, path);
    const std::optional<DiskFile> wanted = found(new_.files, path);
    if (!writer_.in_place) {
      EXPECT_TRUE(file == old || file == wanted)
          << path << " holds a third content: " << (file ? file->content : "no file");
    } else if (file) {
      EXPECT_TRUE(is_mixture(file->content, old ? old->content : "", wanted->content))
          << path << " holds what nobody wrote: " << file->content;
    } else {
      EXPECT_FALSE(old) << path << " is gone";
    }
  }

  // Files beside the writer's own are on their way to the place of one of these.
  void expect_only_temporaries(const std::string& path) const {
    EXPECT_TRUE(std::ranges::any_of(writer_.files,
                                    [&](const auto& file) { return is_temporary_of(file, path); }))
        << path << " is left behind";
  }

  // Reads the files as a crash left them, and writes once more.
  void expect_usable(const DiskState& files) {
    const std::string seen = reading();
    if (writer_.in_place) {
      writer_.write();
      return;
    }
    EXPECT_EQ(seen, is_old(files, writer_.files[0]) ? old_.reading : new_.reading);
    writer_.write();
    const DiskState after = files_now();
    for (const std::string& path : writer_.files) {
      const DiskState& expected = is_old(files, path) ? new_.files : again_;
      EXPECT_TRUE(found(after, path) == found(expected, path)) << path << " is not written again";
    }
  }

  // --- the reordered disk ---

  std::vector<DiskOperation> recorded_operations() {
    std::vector<DiskOperation> operations;
    prepare();
    record_disk_operations(
        [&](const DiskOperation& operation) { operations.push_back(operation); });
    writer_.write();
    record_disk_operations({});
    return operations;
  }

  void put_on_disk(const DiskState& state) {
    prepare();
    for (const std::string& path : writer_.files) fs::remove(path);
    for (const auto& [path, file] : state) {
      write_file(path, file.content);
      ::chmod(path.c_str(), static_cast<mode_t>(file.mode));
    }
  }

  void expect_survivable(const DiskState& state) {
    for (const std::string& path : writer_.files) expect_old_or_new(state, path);
    for (const auto& [path, file] : state) {
      if (std::ranges::count(writer_.files, path) == 0) expect_only_temporaries(path);
    }
    put_on_disk(state);
    expect_usable(state);
  }

  const Writer& writer_ = GetParam();
  Content old_;
  Content new_;
  DiskState again_;
  mode_t mask_ = 0;
  static inline size_t killed_runs_ = 0;
  static inline size_t disk_states_ = 0;
};

TEST_P(CrashSweepTest, WritesItsFiles) {
  for (const std::string& path : writer_.files) {
    const std::optional<DiskFile> old = found(old_.files, path);
    const std::optional<DiskFile> wanted = found(new_.files, path);
    ASSERT_TRUE(wanted) << path;
    EXPECT_EQ(wanted->mode, old ? kOldMode : writer_.new_mode) << path;
  }
}

TEST_P(CrashSweepTest, KilledAtAnyCallLeavesTheOldOrTheNewContent) {
  int kills = 0;
  for (; kills < kMostCalls; ++kills) {
    SCOPED_TRACE("killed at call " + std::to_string(kills + 1));
    prepare();
    const int status = status_in_child([&] {
      kill_at_write_call(kills + 1);
      writer_.write();
      return 0;
    });
    if (status != -SIGKILL) {
      EXPECT_EQ(status, 0);
      break;
    }
    const DiskState files = files_now();
    for (const std::string& path : writer_.files) expect_old_or_new(files, path);
    expect_usable(files);
    if (HasFailure()) break;
  }
  EXPECT_GT(kills, 2);
  EXPECT_LT(kills, kMostCalls);
  killed_runs_ += static_cast<size_t>(kills);
}

TEST_P(CrashSweepTest, AfterAPowerCutTheDiskHoldsTheOldOrTheNewContent) {
  const std::vector<DiskOperation> operations = recorded_operations();
  EXPECT_GT(operations.size(), 2U);
  std::set<DiskState> states;
  for (size_t count = 0; count <= operations.size(); ++count) {
    states.merge(possible_states(old_.files, std::span(operations).first(count)));
  }
  for (const DiskState& state : states) {
    expect_survivable(state);
    if (HasFailure()) break;
  }
  disk_states_ += states.size();
}

TEST_P(CrashSweepTest, WhatACallHasWrittenSurvivesAPowerCutBehindIt) {
  for (const DiskState& state : possible_states(old_.files, recorded_operations())) {
    for (const std::string& path : writer_.files) {
      EXPECT_TRUE(found(state, path) == found(new_.files, path)) << path << " may be lost";
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Writers, CrashSweepTest, testing::ValuesIn(zelkora::test::writers()),
                         [](const auto& row) { return row.param.name; });

}  // namespace
