// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A panel's EEPROM held against an image file: bytes in the log, sums in the result.
#include "eeprom_bench.h"

namespace {

using namespace zelkora::test;

class EepromCompareTest : public EepromBench {
 protected:
  int compare(int devnum = 0) { return call(AXI_CompareFileAndDev, devnum, path); }

  Lines said() const {
    return told({"Dev[", "<--", "\n", "EEPROM Checksum", "checksum error", "Load EEPROM"});
  }

  // All that is said of these two, the sums but for the file's own.
  static Lines expected_lines(const Bytes& device, const Bytes& file) {
    Lines lines;
    for (size_t i = 0; i < 128; ++i) {
      char line[64];
      const int at = static_cast<int>(i);
      std::snprintf(line, sizeof line, "Dev[%d]=0x%02x File[%d]=0x%02x", at, device[i], at,
                    file[i]);
      lines.emplace_back(line);
      if (device[i] != file[i]) lines.emplace_back("<--error");
      lines.emplace_back("\n");
    }
    return lines;
  }
};

TEST_F(EepromCompareTest, AnImageOfThePanelMatches) {
  write_file(path, image_file(eeprom()));
  EXPECT_EQ(compare(), 1);
  EXPECT_EQ(pages(), (Lines{"open", "ER0", "ER1", "ER2", "ER3", "close"}));
  EXPECT_EQ(said(), joined({expected_lines(eeprom(), eeprom()),
                            {"EEPROM Checksum:0xa226 file Checksum:0xa226\n"}}));
  EXPECT_EQ(said().front(), "Dev[0]=0x03 File[0]=0x03");
  EXPECT_EQ(error_output, "");
}

TEST_F(EepromCompareTest, TwoDifferencesThatCancelAreMarkedAndMatch) {
  Bytes file = eeprom();
  file[10] += 3;
  file[100] -= 3;
  write_file(path, image_file(file));
  EXPECT_EQ(compare(), 1);
  EXPECT_EQ(said(), joined({expected_lines(eeprom(), file),
                            {"EEPROM Checksum:0xa226 file Checksum:0xa226\n"}}));
  EXPECT_EQ(told({"<--error"}).size(), 2U);
}

TEST_F(EepromCompareTest, OneDifferenceIsMarkedAndDoesNotMatch) {
  Bytes file = eeprom();
  file[127] -= 2;
  write_file(path, image_file(file));
  EXPECT_EQ(compare(), 0);
  EXPECT_EQ(said(),
            joined({expected_lines(eeprom(), file),
                    {"EEPROM Checksum:0xa226 file Checksum:0xa224\n", "checksum error.\n"}}));
  EXPECT_EQ(told({"<--error"}).size(), 1U);
}

TEST_F(EepromCompareTest, TheSumInTheFileDecidesWhateverItsBytesAre) {
  const std::string good = image_file(eeprom());
  write_file(path, std::string(128, '\x55') + good.substr(128));
  EXPECT_EQ(compare(), 1);
  EXPECT_EQ(told({"checksum error"}), Lines());
  write_file(path, good.substr(0, 128) + "\x01\x02");
  clear_trace();
  EXPECT_EQ(compare(), 0);
  EXPECT_EQ(said(),
            joined({expected_lines(eeprom(), eeprom()),
                    {"EEPROM Checksum:0xa226 file Checksum:0x201\n", "checksum error.\n"}}));
}

TEST_F(EepromCompareTest, BytesThatAShortFileLacksAre0) {
  write_file(path, std::string("\x03\x0A"));
  EXPECT_EQ(compare(), 0);
  Bytes file{0x03, 0x0A};
  file.resize(128);
  EXPECT_EQ(said(), joined({expected_lines(eeprom(), file),
                            {"EEPROM Checksum:0xa226 file Checksum:0x0\n", "checksum error.\n"}}));
}

TEST_F(EepromCompareTest, HalfASumIsItsLowByte) {
  write_file(path, image_file(eeprom()).substr(0, 129));
  EXPECT_EQ(compare(), 0);
  EXPECT_EQ(told({"EEPROM Checksum"}), (Lines{"EEPROM Checksum:0xa226 file Checksum:0x26\n"}));
}

TEST_F(EepromCompareTest, APageThatFailsEndsIt) {
  write_file(path, image_file(eeprom()));
  for (int page = 0; page < 4; ++page) {
    SCOPED_TRACE(page);
    panel.unreadable_page = page;
    clear_trace();
    EXPECT_EQ(compare(), 0);
    Lines steps{"open"};
    for (int i = 0; i < page; ++i) steps.push_back("ER" + std::to_string(i));
    EXPECT_EQ(pages(), joined({steps, Lines(4, "ER" + std::to_string(page)), {"close"}}));
    EXPECT_EQ(said(), (Lines{"Load EEPROM fail."}));
    EXPECT_EQ(messages().back(), "zelkora DD:CloseTouchDevice\n");
  }
}

TEST_F(EepromCompareTest, AFileThatIsNotThereIsNamedOnStandardError) {
  EXPECT_EQ(call(AXI_CompareFileAndDev, 0, "no%s%n"), 0);
  EXPECT_EQ(error_output, "Unable to open file no%s%n");
  EXPECT_TRUE(untouched());
  EXPECT_EQ(messages(), Lines());
}

TEST_F(EepromCompareTest, ADeviceThatDoesNotOpenIsClosedAllTheSame) {
  write_file(path, image_file(eeprom()));
  TouchDevice[0].Type = ZELKORA_TYPE_NONE;
  EXPECT_EQ(compare(), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:CloseTouchDevice\n");
  EXPECT_EQ(said(), Lines());
}

TEST_F(EepromCompareTest, ANegativeNumberTouchesNothing) {
  for (const int devnum : {-1, INT32_MIN}) EXPECT_EQ(compare(devnum), 0);
  EXPECT_TRUE(untouched());
  EXPECT_EQ(messages(), Lines());
  EXPECT_EQ(error_output, "");
}

TEST_F(EepromCompareTest, TheFileIsLeftAsItIs) {
  const std::string before = image_file(sample_eeprom(90));
  write_file(path, before);
  compare();
  EXPECT_EQ(read_file(path), before);
  EXPECT_EQ(eeprom(), sample_eeprom());
}

TEST_F(EepromCompareTest, AnImageGoesFromOnePanelIntoAnother) {
  WornController other;
  const int attachment = kernel.attach(
      other, {.phys = "usb-2/input0", .hiddev = "/dev/usb/hiddev1", .hidraw = "", .event = ""});
  set_entry(1);
  std::snprintf(TouchDevice[1].Name, sizeof TouchDevice[1].Name, "/dev/usb/hiddev1");
  EXPECT_EQ(call(AXI_LoadDevToFile, 0, path), 1);
  EXPECT_EQ(compare(1), 0);
  EXPECT_EQ(call(AXI_WriteFileToDev, 1, path), 1);
  EXPECT_EQ(compare(1), 1);
  EXPECT_EQ(other.controller.eeprom(), panel.controller.eeprom());
  kernel.unplug(attachment);
}

}  // namespace
