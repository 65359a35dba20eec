// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What the model of a disk lets a power cut do: of each way to write a file wrongly, the loss.
#include "crash_disk.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using zelkora::test::DiskFile;
using zelkora::test::DiskOperation;
using zelkora::test::DiskState;
using zelkora::test::possible_states;

using Kind = DiskOperation::Kind;
using Operations = std::vector<DiskOperation>;
using Contents = std::set<std::string>;

constexpr char kOld[] = "12345678";
constexpr char kNew[] = "abcdefghijklmnop";

const DiskOperation kCreate{.kind = Kind::kCreate, .path = "/d/f.new", .number = 0644};
const DiskOperation kWrite{.kind = Kind::kWrite, .path = "/d/f.new", .bytes = kNew};
const DiskOperation kSyncFile{.kind = Kind::kSync, .path = "/d/f.new"};
const DiskOperation kRename{.kind = Kind::kRename, .path = "/d/f.new", .target = "/d/f"};
const DiskOperation kSyncDirectory{.kind = Kind::kSync, .path = "/d"};
const DiskOperation kOverwrite{.kind = Kind::kWrite, .path = "/d/f", .bytes = kNew};
const DiskOperation kCut{.kind = Kind::kResize, .path = "/d/f", .number = 3};
const DiskOperation kMode{.kind = Kind::kMode, .path = "/d/f", .number = 0777};

// What the file may hold in the end; "none" where it is gone.
Contents contents_after(const Operations& operations) {
  Contents contents;
  for (const DiskState& state : possible_states({{"/d/f", {kOld, 0600}}}, operations)) {
    const auto file = state.find("/d/f");
    contents.insert(file == state.end() ? "none" : file->second.content);
  }
  return contents;
}

TEST(CrashDiskTest, AReplacementWithBothSyncsIsSure) {
  EXPECT_EQ(contents_after({kCreate, kWrite, kSyncFile, kRename, kSyncDirectory}), Contents{kNew});
}

TEST(CrashDiskTest, ARenameWithoutASyncOfTheDirectoryMayBeLost) {
  EXPECT_EQ(contents_after({kCreate, kWrite, kSyncFile, kRename}), (Contents{kOld, kNew}));
}

TEST(CrashDiskTest, ARenameMayBeThereBeforeTheBytesOfItsFile) {
  const Contents contents = contents_after({kCreate, kWrite, kRename});
  for (const std::string& content :
       {std::string(kOld), std::string(kNew), std::string(), std::string("abcdefgh"),
        std::string(16, '\0'), "abcdefgh" + std::string(8, '\0')}) {
    EXPECT_TRUE(contents.contains(content)) << content;
  }
  EXPECT_EQ(contents_after({kCreate, kWrite, kRename, kSyncDirectory}).count(""), 1U);
}

TEST(CrashDiskTest, ASyncOfTheFileDoesNotMakeUpForOneThatCameTooEarly) {
  EXPECT_EQ(contents_after({kCreate, kSyncFile, kWrite, kRename, kSyncDirectory}).count(""), 1U);
}

TEST(CrashDiskTest, AFileWrittenInPlaceMayBeMixed) {
  const Contents contents = contents_after({kOverwrite});
  EXPECT_TRUE(contents.contains("ab345678"));
  EXPECT_TRUE(contents.contains(std::string(kOld) + std::string(8, '\0')));
  EXPECT_EQ(contents_after({kOverwrite, {.kind = Kind::kSync, .path = "/d/f"}}), Contents{kNew});
}

TEST(CrashDiskTest, AFileMayBeCutBeforeItIsOverwritten) {
  EXPECT_TRUE(contents_after({kOverwrite, kCut}).contains("123"));
  EXPECT_TRUE(contents_after({kOverwrite, kCut}).contains(kNew));
}

TEST(CrashDiskTest, ARemovedFileMayStayUntilItsDirectoryIsSynced) {
  const DiskOperation remove{.kind = Kind::kRemove, .path = "/d/f"};
  EXPECT_EQ(contents_after({remove}), (Contents{kOld, "none"}));
  EXPECT_EQ(contents_after({remove, {.kind = Kind::kSync, .path = "/e"}}),
            (Contents{kOld, "none"}));
  EXPECT_EQ(contents_after({remove, kSyncDirectory}), Contents{"none"});
}

TEST(CrashDiskTest, AModeMayBeLostUntilTheFileIsSynced) {
  const DiskState before = {{"/d/f", {kOld, 0600}}};
  const DiskState after = {{"/d/f", {kOld, 0777}}};
  EXPECT_EQ(possible_states(before, Operations{kMode}), (std::set<DiskState>{before, after}));
  const Operations synced = {kMode, {.kind = Kind::kSync, .path = "/d/f"}};
  EXPECT_EQ(possible_states(before, synced), std::set<DiskState>{after});
}

}  // namespace
