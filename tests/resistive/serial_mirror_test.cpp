// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cerrno>
#include <climits>
#include <cstring>

#include "settings_bench.h"

namespace {

using namespace zelkora::test;

class SerialMirrorTest : public Bench {
 protected:
  // Mirrors into this list and returns what became of it.
  std::string mirrored(const std::string& list, const char* stem = "SerialDeviceDuration",
                       unsigned value = 20) {
    write_file(kSerialList, list);
    SetSerConf(stem, value);
    return read_file(kSerialList);
  }
};

TEST_F(SerialMirrorTest, WritesUnderTheStemAndThePanelsNumber) {
  const std::vector<std::string> names = {"ttyS0", "ttyS1", "ttyS2", "ttyUSB0"};
  for (size_t i = 0; i < names.size(); ++i) {
    SCOPED_TRACE(names[i]);
    name_active_device(names[i]);
    const std::string key = "SerialDeviceDuration" + std::to_string(i + 1);
    EXPECT_EQ(mirrored(serial_list(names)), serial_list(names, std::pair(key, 20)));
  }
}

TEST_F(SerialMirrorTest, LooksAtFourNumbersOnly) {
  name_active_device("ttyS9");
  const std::string list = serial_list({"ttyS0", "ttyS1", "ttyS2", "ttyS3", "ttyS9"});
  EXPECT_EQ(mirrored(list), list);
}

TEST_F(SerialMirrorTest, TakesTheEntryOfTheActiveDevice) {
  name_active_device("ttyS0");
  std::strcpy(TouchDevice[3].Name, "ttyS1");
  ActiveDevice = 4;
  const std::vector<std::string> names = {"ttyS0", "ttyS1"};
  EXPECT_EQ(mirrored(serial_list(names)),
            serial_list(names, std::pair("SerialDeviceDuration2", 20)));
}

TEST_F(SerialMirrorTest, PrintsEachStep) {
  name_active_device("ttyS1");
  DbgFlag = 1;
  mirrored(serial_list({"ttyS0", "ttyS1", "ttyS2"}));
  const std::string start =
      "zelkora DD:get_conf_option_str--start /opt/.touch_panel/sertp.conf Option:SerialDevice";
  EXPECT_EQ(messages(),
            (Lines{"zelkora DD:SetSerConf KeyName:SerialDeviceDuration\n", start + "1\n",
                   "zelkora DD:get_conf_option_str--end ret=1 ttyS0\n", start + "2\n",
                   "zelkora DD:get_conf_option_str--end ret=1 ttyS1\n"}));
}

TEST_F(SerialMirrorTest, SaysWhichFileIsMissingInDebugMode) {
  name_active_device("ttyS0");
  DbgFlag = 1;
  SetSerConf("SerialDeviceBeepOn", 1);
  EXPECT_EQ(messages(), (Lines{"zelkora DD:SetSerConf KeyName:SerialDeviceBeepOn\n",
                               "zelkora DD:Open /opt/.touch_panel/sertp.conf\n"}));
  EXPECT_EQ(trace().back(), "perror can't open serial config file:");
}

TEST_F(SerialMirrorTest, KeepsQuietAboutAMissingFileOtherwise) {
  name_active_device("ttyS0");
  SetSerConf("SerialDeviceBeepOn", 1);
  EXPECT_EQ(trace(), Lines{});
  // Only the switch's value 1 brings the system's error text.
  DbgFlag = 2;
  SetSerConf("SerialDeviceBeepOn", 1);
  EXPECT_EQ(count_of("perror"), 0U);
  EXPECT_EQ(messages().size(), 2U);
}

TEST_F(SerialMirrorTest, CreatesNoFile) {
  name_active_device("ttyS0");
  SetSerConf("SerialDeviceBeepOn", 1);
  EXPECT_NE(::access(kSerialList.c_str(), F_OK), 0);
}

TEST_F(SerialMirrorTest, LeavesAListAloneThatItMayNotRead) {
  name_active_device("ttyS0");
  fail_file_call("fopen", kSerialList, EACCES);
  EXPECT_EQ(mirrored(serial_list({"ttyS0"})), serial_list({"ttyS0"}));
}

TEST_F(SerialMirrorTest, LeavesTheListAloneWhenItDoesNotNameTheDevice) {
  name_active_device("ttyS7");
  const std::string list = serial_list({"ttyS0", "ttyS1"}) + "SerialDeviceDuration0=77\n";
  EXPECT_EQ(mirrored(list), list);
}

TEST_F(SerialMirrorTest, TakesACommentedPanelForAListedOne) {
  name_active_device("ttyS0");
  EXPECT_EQ(mirrored("# SerialDevice1=ttyS0\n# SerialScreenNum1=0\n", "SerialScreenNum", 3),
            "# SerialDevice1=ttyS0\nSerialScreenNum1=3\n");
}

TEST_F(SerialMirrorTest, MatchesWhenTheListedTextContainsTheName) {
  name_active_device("ttyS0");
  const std::vector<std::string> longer = {"/dev/ttyS1", "/dev/ttyS0 (left)"};
  EXPECT_EQ(mirrored(serial_list(longer)),
            serial_list(longer, std::pair("SerialDeviceDuration2", 20)));
  // The other way round it is no match.
  name_active_device("/dev/ttyS0");
  EXPECT_EQ(mirrored(serial_list({"ttyS0"})), serial_list({"ttyS0"}));
}

TEST_F(SerialMirrorTest, AnEmptyNameIsContainedInTheFirstListedPort) {
  name_active_device("");
  const std::vector<std::string> names = {"ttyS0", "ttyS1"};
  EXPECT_EQ(mirrored(serial_list(names)),
            serial_list(names, std::pair("SerialDeviceDuration1", 20)));
}

TEST_F(SerialMirrorTest, TheFirstMatchWinsEvenIfItIsAnotherPort) {
  name_active_device("ttyS1");
  const std::vector<std::string> names = {"ttyS2", "ttyS10", "ttyS1"};
  EXPECT_EQ(mirrored(serial_list(names)),
            serial_list(names, std::pair("SerialDeviceDuration2", 20)));
}

TEST_F(SerialMirrorTest, FindsAPanelBehindAGapInTheNumbers) {
  name_active_device("ttyS0");
  EXPECT_EQ(mirrored("SerialDevice4=ttyS0\nSerialScreenNum4=0\n", "SerialScreenNum", 3),
            "SerialDevice4=ttyS0\nSerialScreenNum4=3\n");
}

TEST_F(SerialMirrorTest, AddsNoKeyThatTheListLacks) {
  name_active_device("ttyS0");
  const std::string list = "SerialDevice1=ttyS0\nFW1=V1.2\nSerialDeviceBeepOn2=1\n";
  EXPECT_EQ(mirrored(list, "SerialDeviceBeepOn", 0), list);
}

TEST_F(SerialMirrorTest, WritesTheValueAsASignedNumber) {
  name_active_device("ttyS0");
  struct {
    unsigned value;
    int text;
  } constexpr kRows[] = {{0, 0}, {65535, 65535}, {UINT_MAX, -1}, {0x80000000, INT_MIN}};
  for (const auto& row : kRows) {
    EXPECT_EQ(mirrored(serial_list({"ttyS0"}), "SerialScreenNum", row.value),
              serial_list({"ttyS0"}, std::pair("SerialScreenNum1", row.text)));
  }
}

// --- lists and names that nobody wrote with care ---

TEST_F(SerialMirrorTest, IgnoresNumbersThatAreNoEntry) {
  name_active_device("ttyS0");
  for (const int active : {0, -1, 5, INT_MIN, INT_MAX}) {
    ActiveDevice = active;
    EXPECT_EQ(mirrored(serial_list({"ttyS0"})), serial_list({"ttyS0"})) << active;
  }
}

TEST_F(SerialMirrorTest, TakesANameThatFillsItsField) {
  ActiveDevice = 1;
  std::memset(TouchDevice[0].Name, 'n', sizeof TouchDevice[0].Name);
  TouchDevice[0].Type = 'n';
  // A listed text keeps 35 characters, so it cannot contain such a name.
  const std::string list = serial_list({std::string(40, 'n')});
  EXPECT_EQ(mirrored(list), list);
}

TEST_F(SerialMirrorTest, TakesFormatCharactersForText) {
  name_active_device("%s%n");
  DbgFlag = 1;
  EXPECT_EQ(mirrored("SerialDevice1=/dev/%s%n\n%n%s1=5\n", "%n%s", 6),
            "SerialDevice1=/dev/%s%n\n%n%s1=6\n");
  EXPECT_EQ(messages().front(), "zelkora DD:SetSerConf KeyName:%n%s\n");
}

TEST_F(SerialMirrorTest, SurvivesAnOverlongStem) {
  name_active_device("ttyS0");
  const std::string list = serial_list({"ttyS0"});
  EXPECT_EQ(mirrored(list, std::string(5000, 'k').c_str()), list);
}

TEST_F(SerialMirrorTest, LosesNoLineOfALongList) {
  name_active_device("ttyS0");
  std::string before = "SerialDevice1=ttyS0\n" + std::string(600, 'x') + "=" +
                       std::string(600, 'y') + "\nno value\n" + std::string("\0=\0\n", 4);
  for (int i = 0; i < 10'000; ++i) before += "Line" + std::to_string(i) + "=1\n";
  const std::string after = "last line without a line feed";
  EXPECT_EQ(mirrored(before + "SerialScreenNum1=0\n" + after, "SerialScreenNum", 2),
            before + "SerialScreenNum1=2\n" + after);
}

TEST_F(SerialMirrorTest, PassesOverNumbersWithoutAValue) {
  name_active_device("ttyS0");
  EXPECT_EQ(mirrored("SerialDevice1\nSerialDevice2=\nSerialDevice3=ttyS0\nSerialScreenNum3=0",
                     "SerialScreenNum", 1),
            "SerialDevice1\nSerialDevice2=\nSerialDevice3=ttyS0\nSerialScreenNum3=1\n");
}

}  // namespace
