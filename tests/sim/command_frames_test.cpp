// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "command_frames.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace zelkora::sim {
namespace {

using Bytes = std::vector<uint8_t>;
using Frames = std::vector<Bytes>;

Bytes bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

Bytes frame(std::string_view body) {
  Bytes bytes = bytes_of(body);
  bytes.insert(bytes.begin(), 0x01);
  bytes.push_back(0x0D);
  return bytes;
}

// Where a command carries numbers as bytes, here are end bytes: the frame goes on behind them.
const std::string kPageOfEndBytes = "EW\r" + std::string(32, '\r');
const Frames kCommands = {
    frame("R"),
    frame("ZZ"),
    frame("OI"),
    frame("GP56"),
    frame("SP56000A"),
    frame("DU\r"),
    frame("ER\r"),
    frame(kPageOfEndBytes),
    frame("??unheard of"),
};

TEST(CommandFramesTest, AreWholeWhenTheyArriveAtOnce) {
  CommandFrames frames;
  for (const Bytes& command : kCommands) EXPECT_EQ(frames.add(command), Frames{command});
}

TEST(CommandFramesTest, AreWholeWithTheirLastByteAlone) {
  CommandFrames frames;
  for (const Bytes& command : kCommands) {
    for (size_t i = 0; i + 1 < command.size(); ++i) {
      EXPECT_EQ(frames.add({&command[i], 1}), Frames{}) << i;
    }
    EXPECT_EQ(frames.add({&command.back(), 1}), Frames{command});
  }
}

TEST(CommandFramesTest, AreToldApartWhenTheyArriveTogether) {
  Bytes all;
  for (const Bytes& command : kCommands) all.insert(all.end(), command.begin(), command.end());
  EXPECT_EQ(CommandFrames().add(all), kCommands);
}

TEST(CommandFramesTest, BeginBehindWhateverElseWasOnTheLine) {
  CommandFrames frames;
  EXPECT_EQ(frames.add(bytes_of("noise\r\r")), Frames{});
  EXPECT_EQ(frames.add(bytes_of("\xFF\x01OI\r\n")), Frames{frame("OI")});
  EXPECT_EQ(frames.add(frame("ZZ")), Frames{frame("ZZ")});
}

}  // namespace
}  // namespace zelkora::sim
