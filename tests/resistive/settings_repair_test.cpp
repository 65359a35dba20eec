// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What getters do about stored values out of range.
#include "settings_bench.h"

namespace {

using namespace zelkora::test;

struct RepairRow {
  const char* name;
  int (*get)();
  uint8_t address;
  uint16_t stored;
  int returned;
  std::optional<uint8_t> repaired_address = {};  // nothing: the value is as it should be
};

constexpr RepairRow kRepairs[] = {
    {"right click on", GetAutoRightClick, 84, 0, 0},
    {"right click off", GetAutoRightClick, 84, 1, 1},
    {"right click above", GetAutoRightClick, 84, 2, 1, 84},
    {"right click largest", GetAutoRightClick, 84, 65535, 1, 84},
    {"beep off", GetBeepOn, 86, 0, 0},
    {"beep on", GetBeepOn, 86, 1, 1},
    {"beep above", GetBeepOn, 86, 2, 1, 86},
    {"beep largest", GetBeepOn, 86, 65535, 1, 86},
    {"play method lowest", GetPlayMethod, 87, 0, 0},
    {"play method middle", GetPlayMethod, 87, 1, 1},
    {"play method highest", GetPlayMethod, 87, 2, 2},
    {"play method above", GetPlayMethod, 87, 3, 1, 88},
    {"play method far above", GetPlayMethod, 87, 7, 1, 88},
    {"play method largest", GetPlayMethod, 87, 65535, 1, 88},
    {"frequency none", GetFrequency, 88, 0, 2000, 88},
    {"frequency one", GetFrequency, 88, 1, 500, 88},
    {"frequency low", GetFrequency, 88, 250, 500, 88},
    {"frequency just below", GetFrequency, 88, 499, 500, 88},
    {"frequency lowest", GetFrequency, 88, 500, 500},
    {"frequency usual", GetFrequency, 88, 2000, 2000},
    {"frequency highest", GetFrequency, 88, 3000, 3000},
    {"frequency just above", GetFrequency, 88, 3001, 3000, 88},
    {"frequency high", GetFrequency, 88, 3500, 3000, 88},
    {"frequency half range", GetFrequency, 88, 32768, 3000, 88},
    {"frequency largest", GetFrequency, 88, 65535, 3000, 88},
    {"duration none", GetDuration, 89, 0, 10, 89},
    {"duration one", GetDuration, 89, 1, 5, 89},
    {"duration just below", GetDuration, 89, 4, 5, 89},
    {"duration lowest", GetDuration, 89, 5, 5},
    {"duration highest", GetDuration, 89, 50, 50},
    {"duration just above", GetDuration, 89, 51, 50, 89},
    {"duration largest", GetDuration, 89, 65535, 50, 89},
    {"screen first", GetScreenNo, 55, 0, 0},
    {"screen last", GetScreenNo, 55, 4, 4},
    {"screen above", GetScreenNo, 55, 5, 0, 55},
    {"screen largest", GetScreenNo, 55, 65535, 0, 55},
    // Settings that are never repaired.
    {"right count none", GetRightCount, 85, 0, 0},
    {"right count highest", GetRightCount, 85, 15, 15},
    {"right count above", GetRightCount, 85, 16, 16},
    {"right count far above", GetRightCount, 85, 200, 200},
    {"right count largest", GetRightCount, 85, 65535, 65535},
    {"rotation", GetRotation, 67, 65535, 65535},
    {"HID mode", GetHidMode, 69, 65535, 65535},
    {"report mode", GetReportMode, 51, 65535, 65535},
    {"first move", GetFirstMove, 66, 65535, 65535},
    {"right edge", GetEdgeRight, 70, 65535, 65535},
    {"left edge", GetEdgeLeft, 71, 65535, 65535},
    {"lower edge", GetEdgeDown, 72, 65535, 65535},
    {"upper edge", GetEdgeUp, 73, 65535, 65535},
};

void PrintTo(const RepairRow& row, std::ostream* out) { *out << row.name; }

class SettingsRepairTest : public Bench, public testing::WithParamInterface<RepairRow> {
 protected:
  const RepairRow& row = GetParam();

  Lines expected_frames(size_t writes) const {
    Lines frames{read_frame(row.address)};
    if (row.repaired_address) {
      const auto value = static_cast<unsigned>(row.returned);
      frames.insert(frames.end(), writes, write_frame(*row.repaired_address, value));
    }
    return frames;
  }
};

TEST_P(SettingsRepairTest, ReturnsAValueInRangeAndWritesOnlyWhatItReplaced) {
  Panel& panel = open_resistive();
  panel.controller.set_value(row.address, row.stored);
  EXPECT_EQ(row.get(), row.returned);
  EXPECT_EQ(frames_of(panel.controller), expected_frames(1));
  if (row.repaired_address) {
    EXPECT_EQ(panel.controller.value(*row.repaired_address), row.returned);
  }
  if (row.repaired_address != row.address) {
    EXPECT_EQ(panel.controller.value(row.address), row.stored);
  }
}

TEST_P(SettingsRepairTest, ReturnsTheReplacementEvenIfItCannotBeWritten) {
  Panel& panel = open_resistive();
  DbgFlag = 1;
  panel.controller.set_value(row.address, row.stored);
  panel.controller.faults.bad_acknowledges = 4;
  EXPECT_EQ(row.get(), row.returned);
  EXPECT_EQ(frames_of(panel.controller), expected_frames(4));
  for (const std::string& message : messages()) EXPECT_EQ(message.find("error"), message.npos);
}

INSTANTIATE_TEST_SUITE_P(Row, SettingsRepairTest, testing::ValuesIn(kRepairs));

using PlayMethodRepairTest = Bench;

TEST_F(PlayMethodRepairTest, OverwritesTheFrequencyAndLeavesThePlayMethodAsItWas) {
  Panel& panel = open_resistive();
  panel.controller.set_value(87, 7);
  panel.controller.set_value(88, 2000);
  EXPECT_EQ(GetPlayMethod(), 1);
  EXPECT_EQ(panel.controller.value(87), 7);
  EXPECT_EQ(panel.controller.value(88), 1);
  // So the next look at the frequency repairs that one in turn.
  EXPECT_EQ(GetFrequency(), 500);
}

}  // namespace
