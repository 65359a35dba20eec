// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A panel's EEPROM taken out into a file, and put back from one.
#include <cerrno>

#include "eeprom_bench.h"

namespace {

using namespace zelkora::test;

constexpr const char* kProgress[] = {"25% \n", "50% \n", "75% \n", "100% \n"};
constexpr char kLoadLine[] = "RadeEepromData[%d]0x%x tmpEepromData[%d]0x%x\n";
constexpr char kWriteLine[] = "WriteEepromData[%d]0x%x ReadEepromData[%d]0x%x\n";

class EepromLoadTest : public EepromBench {
 protected:
  int load(int devnum = 0) { return call(AXI_LoadDevToFile, devnum, path); }
  Lines said() const {
    return told({"AXI_LoadDevToFile", "RadeEepromData", "25%", "50%", "75%", "100%", "Load "});
  }
};

TEST_F(EepromLoadTest, AnImageIsTheEepromAndItsSumLowByteFirst) {
  EXPECT_EQ(load(), 1);
  const std::string file = read_file(path);
  ASSERT_EQ(file.size(), 130U);
  EXPECT_EQ(file.substr(0, 4), "\x03\x0A\x11\x18");
  EXPECT_EQ(file.substr(0, 128),
            std::string(panel.controller.eeprom().begin(), panel.controller.eeprom().end()));
  // The 128 bytes add up to 3BC0.
  EXPECT_EQ(file.substr(128), "\x26\xA2");
  EXPECT_EQ(error_output, "");
}

TEST_F(EepromLoadTest, AnEepromOfZerosHasTheSum6666) {
  put_eeprom(Bytes(128));
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(read_file(path), std::string(128, '\0') + "\x66\x66");
}

TEST_F(EepromLoadTest, AnErasedEepromHasTheSumE5E6) {
  put_eeprom(Bytes(128, 0xFF));
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(read_file(path), std::string(128, '\xFF') + "\xE6\xE5");
}

TEST_F(EepromLoadTest, FourPagesAreReadInOrder) {
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(pages(), (Lines{"open", "ER0", "ER1", "ER2", "ER3", "close"}));
  const Lines waits = {"usleep 50000", "usleep 200000", "usleep 200000"};
  EXPECT_EQ(trace_of({"usleep"}), joined({waits, waits, waits, waits}));
}

TEST_F(EepromLoadTest, EachByteAndTheProgressAreLogged) {
  EXPECT_EQ(load(), 1);
  Lines expected{"AXI_LoadDevToFile DevNum=0  DeviceName=\n"};
  for (int page = 0; page < 4; ++page) {
    expected =
        joined({expected, page_lines(kLoadLine, eeprom(), eeprom(), page), {kProgress[page]}});
  }
  expected.emplace_back("Load complete\n");
  EXPECT_EQ(said(), expected);
  EXPECT_EQ(expected[2], "RadeEepromData[1]0xa tmpEepromData[1]0xa\n");
}

TEST_F(EepromLoadTest, TheNameLoggedIsThatOfTheEntryBefore) {
  for (const int devnum : {1, 3}) {
    set_entry(devnum);
    std::snprintf(TouchDevice[devnum - 1].Name, sizeof TouchDevice[0].Name, "before%%s%d", devnum);
    clear_trace();
    EXPECT_EQ(load(devnum), 1);
    const std::string number = std::to_string(devnum);
    EXPECT_EQ(said().front(),
              "AXI_LoadDevToFile DevNum=" + number + "  DeviceName=before%s" + number + "\n");
  }
}

TEST_F(EepromLoadTest, APageThatFailsEndsItAndKeepsTheOldFile) {
  write_file(path, "old");
  for (int page = 0; page < 4; ++page) {
    SCOPED_TRACE(page);
    panel.unreadable_page = page;
    clear_trace();
    EXPECT_EQ(load(), 0);
    Lines steps{"open"};
    Lines expected{"AXI_LoadDevToFile DevNum=0  DeviceName=\n"};
    for (int i = 0; i < page; ++i) {
      steps.push_back("ER" + std::to_string(i));
      expected = joined({expected, page_lines(kLoadLine, eeprom(), eeprom(), i), {kProgress[i]}});
    }
    EXPECT_EQ(pages(), joined({steps, Lines(4, "ER" + std::to_string(page)), {"close"}}));
    expected.emplace_back("Load EEPROM fail.\n");
    EXPECT_EQ(said(), expected);
    EXPECT_EQ(read_file(path), "old");
  }
}

TEST_F(EepromLoadTest, ADeviceThatDoesNotOpenIsClosedAllTheSame) {
  TouchDevice[0].Type = ZELKORA_TYPE_NONE;
  EXPECT_EQ(load(), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:CloseTouchDevice\n");
  EXPECT_FALSE(std::filesystem::exists(path));
  EXPECT_EQ(error_output, "");
}

TEST_F(EepromLoadTest, ANegativeNumberTouchesNothing) {
  for (const int devnum : {-1, INT32_MIN}) EXPECT_EQ(load(devnum), 0);
  EXPECT_TRUE(untouched());
  EXPECT_EQ(messages(), Lines());
  EXPECT_FALSE(std::filesystem::exists(path));
}

TEST_F(EepromLoadTest, AFileThatCannotBeWrittenIsNamedOnStandardError) {
  EXPECT_EQ(call(AXI_LoadDevToFile, 0, "no%s%n/such"), 0);
  EXPECT_EQ(error_output, "Unable to open file no%s%n/such");
  // The panel was read and closed before.
  EXPECT_EQ(pages(), (Lines{"open", "ER0", "ER1", "ER2", "ER3", "close"}));
  EXPECT_EQ(told({"Load "}), Lines());
}

TEST_F(EepromLoadTest, ALongerFileIsReplacedWhole) {
  write_file(path, std::string(500, 'x'));
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(read_file(path), image_file(eeprom()));
}

TEST_F(EepromLoadTest, AFullDiskKeepsTheOldImage) {
  const std::string image = data_file("panel.img");
  const std::string old = image_file(sample_eeprom(90));
  for (const char* failing : {"mkostemp", "write", "fsync", "rename"}) {
    SCOPED_TRACE(failing);
    write_file(image, old);
    // The rename is known by its target.
    fail_file_call(failing, image + (failing == std::string("rename") ? "" : ".*"), ENOSPC);
    EXPECT_EQ(call(AXI_LoadDevToFile, 0, image), 0);
    EXPECT_EQ(error_output, "Unable to open file " + image);
    EXPECT_EQ(read_file(image), old);
    const std::filesystem::directory_iterator files(zelkora::sim::kDataDirectory);
    EXPECT_EQ(std::distance(files, {}), 1);
  }
}

TEST_F(EepromLoadTest, ASerialPanelGivesTheSameImage) {
  SerialPanel& serial = attach_serial();
  const Bytes bytes = sample_eeprom(0x0D);  // frames end in that byte
  std::copy(bytes.begin(), bytes.end(), serial.controller.eeprom().begin());
  std::snprintf(TouchDevice[0].Name, sizeof TouchDevice[0].Name, "ttyS0");
  TouchDevice[0].Type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  EXPECT_EQ(load(), 1);
  EXPECT_EQ(read_file(path), image_file(bytes));
}

class EepromWriteTest : public EepromBench {
 protected:
  int write(int devnum = 0) { return call(AXI_WriteFileToDev, devnum, path); }
  Lines said() const {
    return told({"Writ", "25%", "50%", "75%", "100%", "write ", "Invalid file"});
  }

  const Bytes wanted = sample_eeprom(90);
};

TEST_F(EepromWriteTest, EachPageIsWrittenAndReadBack) {
  write_file(path, image_file(wanted));
  EXPECT_EQ(write(), 1);
  EXPECT_EQ(eeprom(), wanted);
  EXPECT_EQ(pages(),
            (Lines{"open", "EW0", "ER0", "EW1", "ER1", "EW2", "ER2", "EW3", "ER3", "close"}));
  Lines waits;
  for (int i = 0; i < 8; ++i) {
    waits = joined({waits, {"usleep 50000", "usleep 200000", "usleep 200000"}});
  }
  EXPECT_EQ(trace_of({"usleep"}), waits);
  EXPECT_EQ(error_output, "");
}

TEST_F(EepromWriteTest, EachByteAndTheProgressAreLogged) {
  write_file(path, image_file(wanted));
  write();
  Lines expected{"Writing....\n"};
  for (int page = 0; page < 4; ++page) {
    expected = joined({expected, page_lines(kWriteLine, wanted, wanted, page), {kProgress[page]}});
  }
  expected.emplace_back("write complete\n");
  EXPECT_EQ(said(), expected);
}

TEST_F(EepromWriteTest, ALongerFileIsReadAsFarAsAnImageGoes) {
  write_file(path, image_file(wanted) + "more");
  EXPECT_EQ(write(), 1);
  EXPECT_EQ(eeprom(), wanted);
}

TEST_F(EepromWriteTest, AFileThatIsNotThereIsNamedOnStandardError) {
  EXPECT_EQ(call(AXI_WriteFileToDev, 0, "no%s%n"), 0);
  EXPECT_EQ(error_output, "Unable to open file no%s%n\n");
  EXPECT_TRUE(untouched());
  EXPECT_EQ(messages(), Lines());
}

struct ContentRow {
  const char* name;
  std::string content;
};

TEST_F(EepromWriteTest, AContentThatDoesNotAddUpIsRefusedBeforeThePanelIsTouched) {
  const std::string good = image_file(wanted);
  std::string low = good;
  low[128] = static_cast<char>(low[128] + 1);
  std::string high = good;
  high[129] = static_cast<char>(high[129] + 1);
  std::string swapped = good;
  std::swap(swapped[128], swapped[129]);
  std::string data = good;
  data[127] = static_cast<char>(data[127] + 1);
  const ContentRow rows[] = {
      {"LowByteOfTheSum", low},
      {"HighByteOfTheSum", high},
      {"SumHighByteFirst", swapped},
      {"LastByte", data},
      {"Empty", ""},
      {"ZerosWithoutASum", std::string(130, '\0')},
      {"SumIsMissing", good.substr(0, 128)},
      {"ZerosWhoseSumIsMissing", std::string(128, '\0')},
      {"HalfOfTheSumIsMissing", good.substr(0, 129)},
      {"OneByteShort", good.substr(1)},
  };
  for (const ContentRow& row : rows) {
    SCOPED_TRACE(row.name);
    write_file(path, row.content);
    clear_trace();
    EXPECT_EQ(write(), 0);
    EXPECT_EQ(messages(), (Lines{"zelkora DD:Invalid file content.\n"}));
    EXPECT_TRUE(untouched());
    EXPECT_EQ(error_output, "");
  }
  EXPECT_EQ(eeprom(), sample_eeprom());
}

TEST_F(EepromWriteTest, ADirectoryIsNoImage) {
  std::filesystem::create_directory(path);
  EXPECT_EQ(write(), 0);
  EXPECT_EQ(messages(), (Lines{"zelkora DD:Invalid file content.\n"}));
}

TEST_F(EepromWriteTest, ADeviceThatDoesNotOpenIsClosedAllTheSame) {
  write_file(path, image_file(wanted));
  TouchDevice[0].Type = ZELKORA_TYPE_NONE;
  EXPECT_EQ(write(), 0);
  EXPECT_EQ(messages().back(), "zelkora DD:CloseTouchDevice\n");
  EXPECT_EQ(said(), Lines());
}

TEST_F(EepromWriteTest, ANegativeNumberTouchesNothing) {
  for (const int devnum : {-1, INT32_MIN}) EXPECT_EQ(write(devnum), 0);
  EXPECT_TRUE(untouched());
  EXPECT_EQ(messages(), Lines());
  EXPECT_EQ(error_output, "");  // the file is not looked for
}

enum class Failure { kWrite, kReadBack, kOtherSum };

class EepromWriteFailureTest : public EepromWriteTest,
                               public testing::WithParamInterface<std::tuple<Failure, int>> {
 protected:
  const Failure failure = std::get<0>(GetParam());
  const int page = std::get<1>(GetParam());

  void make_it_fail() {
    if (failure == Failure::kWrite) panel.unwritable_page = page;
    if (failure == Failure::kReadBack) panel.unreadable_page = page;
    if (failure != Failure::kOtherSum) return;
    panel.on_written = [this](std::array<uint8_t, 128>& bytes) {
      const size_t last = static_cast<size_t>(32 * page + 31);
      if (bytes[last] == wanted[last]) bytes[last] ^= 0x01;
    };
  }

  Lines attempts() const {
    const std::string number = std::to_string(page);
    switch (failure) {
      case Failure::kWrite:
        return Lines(4, "EW" + number);
      case Failure::kReadBack:
        return joined({{"EW" + number}, Lines(4, "ER" + number)});
      default:
        return {"EW" + number, "ER" + number};
    }
  }

  // Nothing for a page that was not written, zeros for one that was not read.
  Lines comparison() const {
    if (failure == Failure::kWrite) return {};
    Bytes read = failure == Failure::kReadBack ? Bytes(128) : wanted;
    if (failure == Failure::kOtherSum) read[static_cast<size_t>(32 * page + 31)] ^= 0x01;
    return page_lines(kWriteLine, wanted, read, page);
  }
};

std::string failure_name(const testing::TestParamInfo<std::tuple<Failure, int>>& info) {
  const char* const names[] = {"Write", "ReadBack", "OtherSum"};
  return std::string(names[static_cast<int>(std::get<0>(info.param))]) + "OfPage" +
         std::to_string(std::get<1>(info.param));
}

INSTANTIATE_TEST_SUITE_P(Pages, EepromWriteFailureTest,
                         testing::Combine(testing::Values(Failure::kWrite, Failure::kReadBack,
                                                          Failure::kOtherSum),
                                          testing::Range(0, 4)),
                         failure_name);

TEST_P(EepromWriteFailureTest, EndsItWithThePagesWrittenSoFar) {
  write_file(path, image_file(wanted));
  make_it_fail();
  EXPECT_EQ(write(), 0);
  Lines steps{"open"};
  Lines expected{"Writing....\n"};
  for (int i = 0; i < page; ++i) {
    steps = joined({steps, {"EW" + std::to_string(i), "ER" + std::to_string(i)}});
    expected = joined({expected, page_lines(kWriteLine, wanted, wanted, i), {kProgress[i]}});
  }
  EXPECT_EQ(pages(), joined({steps, attempts(), {"close"}}));
  EXPECT_EQ(said(), joined({expected, comparison(), {"Write EEPROM fail.\n"}}));
  const size_t done = static_cast<size_t>(32 * page);
  EXPECT_EQ(padded(eeprom(), done), padded(wanted, done));
  const auto behind = [done](const Bytes& bytes) {
    return Bytes(bytes.begin() + static_cast<ptrdiff_t>(done) + 32, bytes.end());
  };
  EXPECT_EQ(behind(eeprom()), behind(sample_eeprom()));
}

TEST_F(EepromWriteTest, APageOfZerosThatCannotBeReadBackDoesNotPass) {
  write_file(path, image_file(Bytes(128)));
  panel.unreadable_page = 2;
  EXPECT_EQ(write(), 0);
  EXPECT_EQ(said().back(), "Write EEPROM fail.\n");
}

TEST_F(EepromWriteTest, APageOfTheSameSumPasses) {
  write_file(path, image_file(wanted));
  panel.on_written = [this](std::array<uint8_t, 128>& bytes) {
    if (bytes[64] != wanted[64]) return;
    bytes[64] += 5;
    bytes[65] -= 5;
  };
  EXPECT_EQ(write(), 1);
  EXPECT_NE(eeprom(), wanted);
  EXPECT_EQ(said().back(), "write complete\n");
}

TEST_F(EepromWriteTest, DifferencesThatCancelAcrossPagesDoNotPass) {
  write_file(path, image_file(wanted));
  panel.on_written = [this](std::array<uint8_t, 128>& bytes) {
    if (bytes[0] != wanted[0]) return;
    bytes[0] += 5;
    bytes[32] -= 5;
  };
  EXPECT_EQ(write(), 0);
}

}  // namespace
