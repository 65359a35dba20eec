// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <vector>

#include "pct_bench.h"

namespace {

using zelkora::test::debug_messages;
using zelkora::test::FakeCrtc;
using zelkora::test::Lines;

class ShowParamsTest : public zelkora::test::Bench {
 protected:
  void SetUp() override {
    Bench::SetUp();
    host.debug = DbgFlag = 1;
    x.crtcs = {FakeCrtc{1920, 1080, 0, 0}, FakeCrtc{1280, 1024, 1920, 0}};
    x.outputs = {"DP-1", "HDMI-1"};
    pct.FWVersion = firmware_;
    std::snprintf(TouchDevice[1].FWVersion, sizeof TouchDevice[1].FWVersion, "V1.2 active");
    ActiveDevice = 2;
  }

  Lines shown(const PCTDevInfo& rec) {
    clear_trace();
    ShowParams(&rec, 3);
    return messages();
  }
  Lines shown(const ResDevInfo& rec, int type = 1) {
    clear_trace();
    ShowParams(&rec, type);
    return messages();
  }

  // The lines of a record that show this text first, or none.
  static Lines with(const Lines& lines, const std::string& beginning) {
    Lines found;
    for (const std::string& line : lines) {
      if (line.starts_with("zelkora DD:" + beginning)) found.push_back(line);
    }
    return found;
  }

  PCTDevInfo pct{};
  ResDevInfo resistive{};

 private:
  char firmware_[64] = "S3.0.81(r564)";
};

TEST_F(ShowParamsTest, APctRecordInItsOrder) {
  pct.BeepOn = 3;
  pct.Frequency = 2000;
  pct.Duration = 10;
  pct.ScreenNumber = 1;
  pct.Digitizer = 1;
  pct.ClickMode = 2;
  pct.DisableRight = 1;
  pct.RightTime = 4;
  pct.RightUp = 1;
  pct.DisableReport = 1;
  EXPECT_EQ(shown(pct),
            debug_messages({"Version:1.3.6\n", "Firmware Version : S3.0.81(r564)\n",
                            "Beep : Pen Up And Pen down Beep\n", "Frequency : 2000\n",
                            "Duration : 10\n", "Screen Number : 2\n",
                            "Screen : HDMI-1 [1280x1024+1920+0]                        \n",
                            "HidMode : Digitizer Mode\n", "mouse click mode : Click on release\n",
                            "auto right-click : OFF\n", "auto right-click count: 1.75sec\n",
                            "Pop up menu on right down\n", "Disable Report : ON\n"}));
}

TEST_F(ShowParamsTest, AResistiveRecordInItsOrder) {
  resistive.BeepOn = 1;
  resistive.Frequency = 1000;
  resistive.Duration = 50;
  resistive.ScreenNumber = 0;
  resistive.HidMode = 3;
  resistive.ReportMode = 1;
  resistive.FirstMove = 1;
  resistive.DisableRight = 1;
  resistive.RightTime = 3;
  EXPECT_EQ(shown(resistive),
            debug_messages(
                {"Version:1.3.6\n", "Firmware Version : V1.2 active\n", "Beep : Pen Down Beep\n",
                 "Frequency : 1000\n", "Duration : 50\n", "Screen Number : 1\n",
                 "Screen : DP-1 [1920x1080+0+0]                        \n",
                 "HidMode : Digitizer Mode\n", "Report Mode : Button Mode\n", "First Move : ON\n",
                 "auto right-click : OFF\n", "auto right-click count: 1.25sec\n"}));
}

// A value and the lines that it has among those that begin so.
struct Row {
  unsigned char value;
  const char* line;  // null: none
};

template <typename Record>
struct Table {
  unsigned char Record::*field;
  const char* beginning;
  std::vector<Row> rows;
};

const Table<PCTDevInfo> kPctTables[] = {
    {&PCTDevInfo::BeepOn,
     "Beep",
     {{0, nullptr},
      {1, "Beep : Pen Down Beep\n"},
      {2, "Beep : Pen Up Beep\n"},
      {3, "Beep : Pen Up And Pen down Beep\n"},
      {4, "Beep : OFF\n"},
      {5, nullptr},
      {255, nullptr}}},
    {&PCTDevInfo::Duration,
     "Duration",
     {{0, "Duration : 0\n"}, {5, "Duration : 5\n"}, {255, "Duration : 255\n"}}},
    {&PCTDevInfo::ScreenNumber,
     "Screen Number",
     {{0, "Screen Number : 1\n"}, {9, "Screen Number : 10\n"}, {255, "Screen Number : 256\n"}}},
    {&PCTDevInfo::ScreenNumber,
     "Screen :",
     {{0, "Screen : DP-1 [1920x1080+0+0]                        \n"},
      {1, "Screen : HDMI-1 [1280x1024+1920+0]                        \n"},
      {2, nullptr},
      {255, nullptr}}},
    {&PCTDevInfo::Digitizer,
     "HidMode",
     {{0, "HidMode : Mouse Mode\n"},
      {1, "HidMode : Digitizer Mode\n"},
      {2, nullptr},
      {3, nullptr},
      {255, nullptr}}},
    {&PCTDevInfo::ClickMode,
     "mouse click mode",
     {{0, "mouse click mode : MouseEmu\n"},
      {1, "mouse click mode : Click on touch\n"},
      {2, "mouse click mode : Click on release\n"},
      {3, "mouse click mode : Right button prior for the delay\n"},
      {4, nullptr},
      {255, nullptr}}},
    {&PCTDevInfo::DisableRight,
     "auto right-click :",
     {{0, "auto right-click : ON\n"},
      {1, "auto right-click : OFF\n"},
      {2, "auto right-click : ON\n"}}},
    {&PCTDevInfo::RightTime,
     "auto right-click count",
     {{0, "auto right-click count: 0.75sec\n"},
      {1, "auto right-click count: 1.00sec\n"},
      {15, "auto right-click count: 4.50sec\n"},
      {255, "auto right-click count: 64.50sec\n"}}},
    {&PCTDevInfo::RightUp,
     "Pop up",
     {{0, "Pop up menu on right up\n"},
      {1, "Pop up menu on right down\n"},
      {2, "Pop up menu on right up\n"}}},
    {&PCTDevInfo::DisableReport,
     "Disable Report",
     {{0, "Disable Report : OFF\n"},
      {1, "Disable Report : ON\n"},
      {255, "Disable Report : OFF\n"}}},
    {&PCTDevInfo::PlayMethod, "Play", {{2, nullptr}}},
};

const Table<ResDevInfo> kResistiveTables[] = {
    {&ResDevInfo::BeepOn,
     "Beep",
     {{0, nullptr},
      {1, "Beep : Pen Down Beep\n"},
      {2, "Beep : Pen Up Beep\n"},
      {3, "Beep : Pen Up And Pen down Beep\n"},
      {4, "Beep : OFF\n"},
      {5, nullptr}}},
    {&ResDevInfo::ScreenNumber,
     "Screen",
     {{2, "Screen Number : 3\n"}, {255, "Screen Number : 256\n"}}},
    {&ResDevInfo::HidMode,
     "HidMode",
     {{0, nullptr},
      {1, nullptr},
      {2, "HidMode : Mouse Mode\n"},
      {3, "HidMode : Digitizer Mode\n"},
      {4, nullptr}}},
    {&ResDevInfo::ReportMode,
     "Report Mode",
     {{0, "Report Mode : Drawing Mode\n"},
      {1, "Report Mode : Button Mode\n"},
      {2, nullptr},
      {3, "Report Mode : Disable Touch\n"},
      {4, nullptr}}},
    {&ResDevInfo::FirstMove,
     "First Move",
     {{0, "First Move : OFF\n"}, {1, "First Move : ON\n"}, {2, "First Move : OFF\n"}}},
    {&ResDevInfo::DisableRight,
     "auto right-click :",
     {{0, "auto right-click : ON\n"},
      {1, "auto right-click : OFF\n"},
      {2, "auto right-click : ON\n"}}},
    {&ResDevInfo::RightTime,
     "auto right-click count",
     {{0, "auto right-click count: 0.50sec\n"},
      {1, "auto right-click count: 0.75sec\n"},
      {15, "auto right-click count: 4.25sec\n"},
      {255, "auto right-click count: 64.25sec\n"}}},
};

template <typename Record>
void check_tables(const auto& tables, Record record, const auto& shown) {
  for (const Table<Record>& table : tables) {
    for (const Row& row : table.rows) {
      SCOPED_TRACE(table.beginning);
      SCOPED_TRACE(int{row.value});
      Record changed = record;
      changed.*table.field = row.value;
      EXPECT_EQ(shown(changed, table.beginning),
                row.line != nullptr ? debug_messages({row.line}) : Lines());
    }
  }
}

TEST_F(ShowParamsTest, EachValueOfAPctRecord) {
  check_tables(kPctTables, pct, [this](const PCTDevInfo& rec, const char* beginning) {
    return with(shown(rec), beginning);
  });
}

TEST_F(ShowParamsTest, EachValueOfAResistiveRecord) {
  check_tables(kResistiveTables, resistive, [this](const ResDevInfo& rec, const char* beginning) {
    return with(shown(rec), beginning);
  });
}

TEST_F(ShowParamsTest, FrequenciesAreSignedNumbers) {
  pct.Frequency = resistive.Frequency = 0xFFFFFFFF;
  EXPECT_EQ(with(shown(pct), "Frequency"), debug_messages({"Frequency : -1\n"}));
  EXPECT_EQ(with(shown(resistive), "Frequency"), debug_messages({"Frequency : -1\n"}));
}

TEST_F(ShowParamsTest, EveryTypeButThreeIsAResistiveRecord) {
  const Lines expected = shown(resistive, 1);
  EXPECT_EQ(expected.size(), 10U);
  for (const int type : {0, 2, 4, -1, 259}) {
    SCOPED_TRACE(type);
    EXPECT_EQ(shown(resistive, type), expected);
  }
}

TEST_F(ShowParamsTest, TheFirmwareTextIsThatOfTheRecordOrOfTheActiveEntry) {
  const Lines none = debug_messages({"Firmware Version : \n"});
  EXPECT_EQ(with(shown(pct), "Firmware"), debug_messages({"Firmware Version : S3.0.81(r564)\n"}));
  pct.FWVersion = nullptr;
  EXPECT_EQ(with(shown(pct), "Firmware"), none);

  for (int i = 0; i < ZELKORA_MAX_DEVICES; ++i) {
    std::snprintf(TouchDevice[i].FWVersion, sizeof TouchDevice[i].FWVersion, "text %d", i);
    ActiveDevice = i + 1;
    EXPECT_EQ(with(shown(resistive), "Firmware"),
              debug_messages({"Firmware Version : text " + std::to_string(i) + "\n"}));
  }
  for (const int active : {0, -1, ZELKORA_MAX_DEVICES + 1, 1000}) {
    SCOPED_TRACE(active);
    ActiveDevice = active;
    EXPECT_EQ(with(shown(resistive), "Firmware"), none);
  }
}

TEST_F(ShowParamsTest, TextsAreNotFormats) {
  char text[] = "%s%n%d";
  pct.FWVersion = text;
  x.outputs[0] = "%s%n";
  const Lines lines = shown(pct);
  EXPECT_EQ(with(lines, "Firmware"), debug_messages({"Firmware Version : %s%n%d\n"}));
  EXPECT_EQ(with(lines, "Screen :"),
            debug_messages({"Screen : %s%n [1920x1080+0+0]                        \n"}));
}

TEST_F(ShowParamsTest, WithoutADisplayThereIsNoScreenInWords) {
  x.reachable = false;
  EXPECT_EQ(with(shown(pct), "Screen"), debug_messages({"Screen Number : 1\n"}));
  EXPECT_EQ(count_of("XOpenDisplay"), 1U);
}

TEST_F(ShowParamsTest, NothingIsSaidUnlessDebugging) {
  DbgFlag = 0;
  EXPECT_EQ(shown(pct), Lines());
  EXPECT_EQ(shown(resistive), Lines());
}

}  // namespace
