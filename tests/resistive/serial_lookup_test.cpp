// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A serial panel found by its port, and its firmware version recorded in the serial panel list.
#include "record_bench.h"
#include "settings_bench.h"

namespace {

using namespace zelkora::test;

class SerialFirmwareTest : public RecordBench {
 protected:
  std::string after_update(const std::string& list, const char* phys, const char* firmware) {
    write_file(kSerialList, list);
    UpdateSerFw(phys, firmware);
    return read_file(kSerialList);
  }
};

struct FirmwareRow {
  const char* name;
  const char* phys;
  const char* firmware;
  const char* before;
  const char* after;
};

// The keys are counted from 0 by the writer and from 1 by the reader.
const FirmwareRow kFirmwareRows[] = {
    {"FirstPanelIntoAKeyNobodyReads", "ttyS0", "V2.0", "FW0=\nSerialDevice1=ttyS0\nFW1=V1.0\n",
     "FW0=V2.0\nSerialDevice1=ttyS0\nFW1=V1.0\n"},
    {"FirstPanelWithoutThatKey", "ttyS0", "V2.0", "SerialDevice1=ttyS0\nFW1=V1.0\n",
     "SerialDevice1=ttyS0\nFW1=V1.0\n"},
    {"SecondPanelIntoTheFirstOnesKey", "ttyS1", "V2.0",
     "SerialDevice1=ttyS0\nFW1=V1.0\nSerialDevice2=ttyS1\nFW2=V1.0\n",
     "SerialDevice1=ttyS0\nFW1=V2.0\nSerialDevice2=ttyS1\nFW2=V1.0\n"},
    {"FourthPanelIntoTheThirdOnesKey", "ttyS3", "V2.0",
     "SerialDevice1=a\nFW1=1\nSerialDevice2=b\nFW2=1\nSerialDevice3=c\nFW3=1\n"
     "SerialDevice4=ttyS3\nFW4=1\n",
     "SerialDevice1=a\nFW1=1\nSerialDevice2=b\nFW2=1\nSerialDevice3=c\nFW3=V2.0\n"
     "SerialDevice4=ttyS3\nFW4=1\n"},
    {"RecordedAlready", "ttyS1", "V1.0",
     "SerialDevice1=ttyS0\nFW1=\nSerialDevice2=ttyS1\nFW2=V1.0\n",
     "SerialDevice1=ttyS0\nFW1=\nSerialDevice2=ttyS1\nFW2=V1.0\n"},
    {"RecordedAsPartOfAVersion", "ttyS1", "V1",
     "SerialDevice1=ttyS0\nFW1=\nSerialDevice2=ttyS1\nFW2=xV1.0\n",
     "SerialDevice1=ttyS0\nFW1=\nSerialDevice2=ttyS1\nFW2=xV1.0\n"},
    {"LongerThanTheOneRecorded", "ttyS1", "V1.0",
     "SerialDevice1=ttyS0\nFW1=\nSerialDevice2=ttyS1\nFW2=V1\n",
     "SerialDevice1=ttyS0\nFW1=V1.0\nSerialDevice2=ttyS1\nFW2=V1\n"},
    {"EveryPanelWhoseNameIsPartOfThePhys", "ttyS12", "V2.0",
     "FW0=\nSerialDevice1=ttyS1\nFW1=V1.0\nSerialDevice2=ttyS12\nFW2=V1.0\n",
     "FW0=V2.0\nSerialDevice1=ttyS1\nFW1=V2.0\nSerialDevice2=ttyS12\nFW2=V1.0\n"},
    {"NotThePanelWhoseNameIsLonger", "ttyS1", "V2.0", "FW0=\nSerialDevice1=ttyS12\nFW1=V1.0\n",
     "FW0=\nSerialDevice1=ttyS12\nFW1=V1.0\n"},
    {"TextUpToALineFeed", "ttyS0", "V2.0\nSerialDevice4=ttyS9",
     "FW0=\nSerialDevice1=ttyS0\nFW1=V1.0\n", "FW0=V2.0\nSerialDevice1=ttyS0\nFW1=V1.0\n"},
    {"UnlistedPanel", "ttyS5", "V2.0", "FW0=\nSerialDevice1=ttyS0\nFW1=V1.0\n",
     "FW0=\nSerialDevice1=ttyS0\nFW1=V1.0\n"},
    {"EmptyList", "ttyS0", "V2.0", "", ""},
    // Five names are read into four slots.
    {"FifthNameIsOfNoPanel", "ttyS9", "V2.0",
     "SerialDevice1=a\nSerialDevice2=b\nSerialDevice3=c\nSerialDevice4=d\nSerialDevice4=ttyS9\n"
     "FW3=1\nFW4=1\n",
     "SerialDevice1=a\nSerialDevice2=b\nSerialDevice3=c\nSerialDevice4=d\nSerialDevice4=ttyS9\n"
     "FW3=V2.0\nFW4=1\n"},
};

TEST_F(SerialFirmwareTest, AVersionIsWrittenUnderAKeyOneLower) {
  for (const FirmwareRow& row : kFirmwareRows) {
    SCOPED_TRACE(row.name);
    for (SerialPanelSlot& slot : cMySerInfo) slot = {};
    clear_trace();
    EXPECT_EQ(after_update(row.before, row.phys, row.firmware), row.after);
    EXPECT_EQ(messages().front(), "zelkora DD:UpdateSerFw\n");
  }
}

TEST_F(SerialFirmwareTest, WithoutAListNothingIsWritten) {
  UpdateSerFw("ttyS0", "V2.0");
  EXPECT_FALSE(std::filesystem::exists(kSerialList));
  EXPECT_EQ(messages(), (Lines{"zelkora DD:UpdateSerFw\n"}));
}

TEST_F(SerialFirmwareTest, TheRestOfTheListIsKept) {
  const std::string rest = "# " + std::string(5000, 'x') + "\nSerialDeviceDuration1=20\nlast";
  EXPECT_EQ(after_update("FW0=\nSerialDevice1=ttyS0\nFW1=V1.0\n" + rest, "ttyS0", "V2.0"),
            "FW0=V2.0\nSerialDevice1=ttyS0\nFW1=V1.0\n" + rest);
}

class SerialDeviceNumberTest : public RecordBench {
 protected:
  int number_of(const char* name) {
    return quietly([name] { return GetSerDeviceNumber(name); });
  }
  Lines own_messages() const {
    Lines lines;
    for (const std::string& line : messages()) {
      if (line.starts_with("zelkora DD:GetSerDeviceNumber ")) lines.push_back(line.substr(11));
    }
    return lines;
  }
};

TEST_F(SerialDeviceNumberTest, APanelIsFoundByAPhysThatIsPartOfTheName) {
  write_file(kSerialList, "SerialDevice1=ttyS0\nFW1=V1.2\nSerialDevice2=ttyS1\nFW2=V1.2\n");
  EXPECT_EQ(number_of("/dev/ttyS1"), 1);
  EXPECT_EQ(own_messages(),
            (Lines{"GetSerDeviceNumber ret:2\n", "GetSerDeviceNumber /dev/ttyS1 : ttyS0\n",
                   "GetSerDeviceNumber /dev/ttyS1 : ttyS1\n"}));
  EXPECT_EQ(host.config_reads, 1);
}

TEST_F(SerialDeviceNumberTest, TheFirstOfThemIsTaken) {
  write_file(kSerialList, "SerialDevice1=ttyS1\nFW1=V1.2\nSerialDevice2=ttyS12\nFW2=V1.2\n");
  EXPECT_EQ(number_of("ttyS12"), 0);
  EXPECT_EQ(own_messages(),
            (Lines{"GetSerDeviceNumber ret:2\n", "GetSerDeviceNumber ttyS12 : ttyS1\n"}));
}

TEST_F(SerialDeviceNumberTest, PanelsStandBehindThoseThatAreInTheTable) {
  add_usb_panel();
  write_file(kSerialList, "SerialDevice1=ttyS0\nFW1=V1.2\n");
  EXPECT_EQ(number_of("ttyS0"), 1);
  EXPECT_EQ(DeviceNumber, 2);
}

TEST_F(SerialDeviceNumberTest, ANameOfNoPanelHasNoNumber) {
  write_file(kSerialList, "SerialDevice1=ttyS0\nFW1=V1.2\n");
  EXPECT_EQ(number_of("ttyS"), -1);
  EXPECT_EQ(own_messages(),
            (Lines{"GetSerDeviceNumber ret:1\n", "GetSerDeviceNumber ttyS : ttyS0\n"}));
}

TEST_F(SerialDeviceNumberTest, WithoutPanelsTheTableIsNotSearched) {
  EXPECT_EQ(number_of("ttyS0"), -1);
  EXPECT_EQ(own_messages(), (Lines{"GetSerDeviceNumber ret:0\n"}));
}

TEST_F(SerialDeviceNumberTest, WithSerialPanelsSwitchedOffTheTableIsNotSearched) {
  add_serial_entry();
  write_file(data_file(".disable_rs232"), "");
  write_file(kSerialList, "SerialDevice1=ttyS0\nFW1=V1.2\n");
  EXPECT_EQ(number_of("ttyS0"), -1);
  EXPECT_EQ(own_messages(), (Lines{"GetSerDeviceNumber ret:0\n"}));
}

}  // namespace
