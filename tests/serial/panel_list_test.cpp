// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <cerrno>

#include "serial_bench.h"

namespace {

using namespace zelkora::test;

class PanelListTest : public SerialBench {
 protected:
  static int read_list(const std::string& text) {
    write_file(kSerialListPath, text);
    return GetSerDevInfo();
  }
};

TEST_F(PanelListTest, AMissingListHasNoPanels) {
  std::strcpy(cMySerInfo[0].Name, "kept");
  EXPECT_EQ(GetSerDevInfo(), 0);
  EXPECT_STREQ(cMySerInfo[0].Name, "kept");
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(PanelListTest, FourPanelsFillTheSlotsAndAreLoggedWithTheirFirmware) {
  EXPECT_EQ(read_list("SerialDevice1=ttyS0\nFW1=V1.2\nSerialDevice2=ttyS1\nFW2=V2.1\n"
                      "SerialDevice3=ttyUSB0\nFW3=V2.2\nSerialDevice4=ttyS10\nFW4=V2.3\n"),
            4);
  const char* const names[] = {"ttyS0", "ttyS1", "ttyUSB0", "ttyS10"};
  const char* const firmware[] = {"V1.2", "V2.1", "V2.2", "V2.3"};
  for (int i = 0; i < 4; ++i) {
    EXPECT_STREQ(cMySerInfo[i].Name, names[i]);
    EXPECT_STREQ(cMySerInfo[i].FWVersion, firmware[i]);
  }
  EXPECT_EQ(messages(), traced({"Device[0]:ttyS0 FW:V1.2", "Device[1]:ttyS1 FW:V2.1",
                                "Device[2]:ttyUSB0 FW:V2.2", "Device[3]:ttyS10 FW:V2.3"}));
}

std::string repeated_line(int count, const std::string& line) {
  std::string text;
  for (int i = 0; i < count; ++i) text += line;
  return text;
}

struct ListRow {
  const char* name;
  std::string text;
  int count;
  std::string port;  // of slot 0
  std::string firmware;
};
const std::vector<ListRow> kLists = {
    {"nothing", "", 0, "", ""},
    {"a firmware alone is no panel", "FW1=V1\n", 0, "", "V1"},
    {"a path stays a path", "SerialDevice1=/dev/ttyS0\nFW1=V2.1\n", 1, "/dev/ttyS0", "V2.1"},
    {"a key is found inside a line", "# my SerialDevice1 = ttyS0\n", 1, " ttyS0", ""},
    {"a fifth panel is ignored", "SerialDevice5=ttyS5\nFW5=V5\n", 0, "", ""},
    {"a twelfth counts as the first", "SerialDevice12=ttyS9\n", 1, "ttyS9", ""},
    {"a number 0 is none", "SerialDevice0=ttyS0\n", 0, "", ""},
    {"a repeated key counts twice, the last value stays", "SerialDevice1=ttyS0\nSerialDevice1=S1\n",
     2, "S1", ""},
    {"eleven repetitions count eleven times", repeated_line(11, "SerialDevice1=ttyS0\n"), 11,
     "ttyS0", ""},
    {"the last line loses a character without a line feed", "SerialDevice1=ttyS0", 1, "ttyS", ""},
    {"a carriage return stays", "SerialDevice1=ttyS0\r\n", 1, "ttyS0\r", ""},
    {"no value", "SerialDevice1=\nFW1=\n", 1, "", ""},
    {"no equals sign", "SerialDevice1\n", 1, "", ""},
    {"a value with an equals sign", "SerialDevice1=a=b\n", 1, "a=b", ""},
    {"capital letters matter", "serialdevice1=ttyS0\nfw1=V1\n", 0, "", ""},
    {"a long name is cut", "SerialDevice1=" + std::string(200, 'n') + "\n", 1, std::string(35, 'n'),
     ""},
    {"a long firmware text is cut", "FW1=" + std::string(200, 'v') + "\n", 0, "",
     std::string(19, 'v')},
    {"format characters are text", "SerialDevice1=%s%n%x\nFW1=%d%s%n\n", 1, "%s%n%x", "%d%s%n"},
};

TEST_F(PanelListTest, KeysAndValuesAreFoundAsTheyAlwaysWere) {
  for (const ListRow& row : kLists) {
    SCOPED_TRACE(row.name);
    std::memset(cMySerInfo, 0, sizeof cMySerInfo);
    EXPECT_EQ(read_list(row.text), row.count);
    EXPECT_EQ(std::string(cMySerInfo[0].Name), row.port);
    EXPECT_EQ(std::string(cMySerInfo[0].FWVersion), row.firmware);
  }
}

TEST_F(PanelListTest, AFieldIsClearedWhenItsKeyIsReadAndNotBefore) {
  std::memset(cMySerInfo, 'x', sizeof cMySerInfo);
  EXPECT_EQ(read_list("SerialDevice2=ttyS1\nFW3=V1\n"), 1);
  const std::string name = "ttyS1" + std::string(31, '\0');
  const std::string firmware = "V1" + std::string(18, '\0');
  EXPECT_EQ(std::string(cMySerInfo[1].Name, 36), name);
  EXPECT_EQ(std::string(cMySerInfo[1].FWVersion, 20), std::string(20, 'x'));
  EXPECT_EQ(std::string(cMySerInfo[2].FWVersion, 20), firmware);
  EXPECT_EQ(std::string(cMySerInfo[2].Name, 36), std::string(36, 'x'));
  EXPECT_EQ(std::string(cMySerInfo[0].Name, 36), std::string(36, 'x'));
  EXPECT_EQ(std::string(cMySerInfo[3].Name, 36), std::string(36, 'x'));
}

TEST_F(PanelListTest, AFirmwareKeyInAValueCountsAsThatKey) {
  EXPECT_EQ(read_list("SerialDevice1=FW2\n"), 1);
  EXPECT_STREQ(cMySerInfo[0].Name, "FW2");
  EXPECT_STREQ(cMySerInfo[1].FWVersion, "FW2");
  EXPECT_EQ(messages(), traced({"Device[1]: FW:FW2"}));
}

TEST_F(PanelListTest, ALineOfAnyLengthIsReadInPiecesOf255) {
  // The second piece begins at the key, whose value is then all there is.
  const std::string head(255, '-');
  EXPECT_EQ(read_list(head + "SerialDevice1=ttyS3\n"), 1);
  EXPECT_STREQ(cMySerInfo[0].Name, "ttyS3");
  // Across the seam it is no key.
  EXPECT_EQ(read_list(head.substr(5) + "SerialDevice1=ttyS4\n"), 0);
  EXPECT_STREQ(cMySerInfo[0].Name, "ttyS3");
}

TEST_F(PanelListTest, ATextBetweenQuotesWithTtyNamesTheNextEntry) {
  struct Row {
    const char* text;
    int result;
    const char* name;
  };
  const Row rows[] = {
      {"Option \"Device\" \"/dev/ttyS0\"\n", 1, "/dev/ttyS0"},
      {"\"ttyS1\" \"ttyS2\"", 1, "ttyS1"},
      {"ttyS3", 1, "ttyS3"},
      {"the tty \"x\"", 1, "the tty "},
      {"\"unfinished ttyS4", 1, "unfinished ttyS4"},
      {"\"\"\"ttyS5\"\"", 1, "ttyS5"},
      {"\"TTYS0\"", 0, ""},
      {"\"t\"\"ty\"", 0, ""},
      {"no port", 0, ""},
      {"\"", 0, ""},
      {"", 0, ""},
      {"\"tty%s%n\"", 1, "tty%s%n"},
  };
  for (const int number : {0, 3}) {
    for (const Row& row : rows) {
      SCOPED_TRACE(row.text);
      std::memset(TouchDevice, 0, sizeof TouchDevice);
      clear_trace();
      DeviceNumber = number;
      EXPECT_EQ(GetSerialDeviceName(row.text), row.result);
      EXPECT_STREQ(TouchDevice[number].Name, row.name);
      EXPECT_EQ(TouchDevice[number].Type, row.result == 1 ? 2 : 0);
      EXPECT_EQ(DeviceNumber, number);
      const std::string text = "Device" + std::to_string(number + 1) + " : " + row.name;
      EXPECT_EQ(messages(), row.result == 1 ? traced({text}) : Lines{});
    }
  }
}

TEST_F(PanelListTest, ATextBetweenTheMarkersNamesTheNextEntry) {
  struct Row {
    const char* text;
    int result;
    const char* name;
  };
  const Row rows[] = {
      {"<merge key=\"input.device\" type=\"string\">/dev/ttyS0</merge>\n", 1, "/dev/ttyS0"},
      {"type=\"string\">ttyS1</merge>type=\"string\">ttyS2</merge>", 1, "ttyS1"},
      {"type=\"string\">one type=\"string\">ttyS3</merge>", 1, "one type=\"string\">ttyS3"},
      {"type=\"string\">event0</merge> tty", 0, ""},
      {"tty type=\"string\"></merge>", 0, ""},
      {"type=\"string\">ttyS4", 0, ""},
      {"ttyS5</merge>", 0, ""},
      {"</merge>type=\"string\">ttyS6</merge>", 0, ""},
      {"", 0, ""},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.text);
    std::memset(TouchDevice, 0, sizeof TouchDevice);
    DeviceNumber = 2;
    EXPECT_EQ(GetSerialDeviceNameFdi(row.text), row.result);
    EXPECT_STREQ(TouchDevice[2].Name, row.name);
    EXPECT_EQ(TouchDevice[2].Type, row.result == 1 ? 2 : 0);
    EXPECT_EQ(DeviceNumber, 2);
  }
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(PanelListTest, NamesLongerThanTheFieldAreCut) {
  const std::string name = "tty" + std::string(300, 'S');
  EXPECT_EQ(GetSerialDeviceName(("\"" + name + "\"").c_str()), 1);
  EXPECT_EQ(std::string(TouchDevice[0].Name), name.substr(0, 35));
  EXPECT_EQ(TouchDevice[0].Type, 2);
  EXPECT_EQ(messages(), traced({"Device1 : " + name.substr(0, 35)}));
  DeviceNumber = 1;
  EXPECT_EQ(GetSerialDeviceNameFdi(("type=\"string\">" + name + "</merge>").c_str()), 1);
  EXPECT_EQ(std::string(TouchDevice[1].Name), name.substr(0, 35));
}

TEST_F(PanelListTest, AFullTableTakesNoName) {
  for (const int number : {4, 5, -1}) {
    DeviceNumber = number;
    EXPECT_EQ(GetSerialDeviceName("\"ttyS0\""), 0);
    EXPECT_EQ(GetSerialDeviceNameFdi("type=\"string\">ttyS0</merge>"), 0);
  }
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(PanelListTest, ANewFirmwareTextGoesUnderANumberOneTooLow) {
  struct Row {
    const char* phys;
    const char* firmware;
    std::string before;
    std::string after;
  };
  const std::string names = "SerialDevice1=ttyS0\nSerialDevice2=ttyS1\n";
  const Row rows[] = {
      {"/dev/ttyS1", "V2.0", names + "FW1=V1.1\nFW2=V1.2\n", names + "FW1=V2.0\nFW2=V1.2\n"},
      {"ttyS0", "V2.0", names + "FW1=V1.1\nFW2=V1.2\n", names + "FW1=V1.1\nFW2=V1.2\n"},
      {"ttyS0", "V2.0", names + "FW0=V1.0\nFW1=V1.1\n", names + "FW0=V2.0\nFW1=V1.1\n"},
      {"ttyS1", "V1", names + "FW1=V1.1\nFW2=V1.2\n", names + "FW1=V1.1\nFW2=V1.2\n"},
      {"ttyS2", "V2.0", names + "FW1=V1.1\nFW2=V1.2\n", names + "FW1=V1.1\nFW2=V1.2\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.phys);
    std::memset(cMySerInfo, 0, sizeof cMySerInfo);
    write_file(kSerialListPath, row.before);
    clear_trace();
    UpdateSerFw(row.phys, row.firmware);
    EXPECT_EQ(read_file(kSerialListPath), row.after);
    EXPECT_EQ(messages().front(), "zelkora DD:UpdateSerFw\n");
  }
}

}  // namespace
