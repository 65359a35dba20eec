// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The store files as they are shown on the debug trace.
#include <algorithm>
#include <filesystem>

#include "store_bench.h"

namespace {

using zelkora::test::captured_stdout;
using zelkora::test::data_file;
using zelkora::test::joined_lines;
using zelkora::test::Lines;
using zelkora::test::other_panels;
using zelkora::test::read_file;
using zelkora::test::Records;
using zelkora::test::Stored;
using zelkora::test::write_file;

using Block = std::vector<unsigned char>;

class ListingTest : public zelkora::test::StoreBench {
 protected:
  static inline const std::string kAsterisks = std::string(59, '*');

  // A plain block with a value of its own in every parameter.
  static Block plain_block() {
    Block plain(32, 0);
    plain[5] = 1;
    for (size_t i = 0; i < 8; ++i) plain[12 + i] = static_cast<unsigned char>(0x0F + 0x11 * i);
    plain[20] = 3;
    plain[21] = 2;
    plain[22] = 0x04;
    plain[23] = 0xD2;
    plain[24] = 25;
    plain[25] = 9;
    plain[27] = 0x0E;
    plain[28] = 0xA5;
    plain[30] = 1;
    return plain;
  }

  // What a controller's host would have stored of a plain block; `sum` gets its checksum.
  static std::string stored_bytes(const Stored& record, const Block& plain, unsigned* sum) {
    std::string bytes = record.bytes();
    *sum = 0x6666;
    for (size_t i = 0; i < plain.size(); ++i) {
      const auto encoded = static_cast<unsigned char>(plain[i] ^ 0x5A);
      bytes[283 + i] = static_cast<char>(encoded);
      *sum += encoded;
    }
    bytes[283 + 32] = static_cast<char>(*sum & 0xFF);
    bytes[283 + 33] = static_cast<char>(*sum >> 8);
    return bytes;
  }

  static std::string hex4(const char* digits, unsigned value) {
    char text[8];
    std::snprintf(text, sizeof text, digits, value);
    return text;
  }
  static std::string upper(unsigned value) { return "0x" + hex4("%04X", value); }
  static std::string lower(unsigned value) { return "0x" + hex4("%04x", value); }

  static Lines decoded(unsigned sum) {
    return {"DecodeParames checksum cSumf=" + lower(sum) + " cSum=" + lower(sum)};
  }

  // What parsing and showing a block tells.
  Lines parsed_and_shown(const Block& plain) {
    clear_trace();
    PCTDevInfo info{};
    PCTParsingParamas(&info, plain.data());
    ShowParams(&info, ZELKORA_TYPE_PCT);
    Lines lines = told();
    clear_trace();
    return lines;
  }

  size_t lines_that_begin(const std::string& beginning) const {
    return static_cast<size_t>(std::ranges::count_if(messages(), [&](const std::string& message) {
      return message.starts_with("zelkora DD:" + beginning);
    }));
  }

  const std::string saved = data_file(".pctpbin");
  const std::string temporary = data_file(".pctpbintmp");
  const std::string unique = data_file(".pctuniq");
};

TEST_F(ListingTest, ARecordIsShownWithItsParametersInWords) {
  unsigned sum = 0;
  write_file(saved, stored_bytes(panel(), plain_block(), &sum));
  const Lines words = parsed_and_shown(plain_block());
  EXPECT_EQ(Show_Binary_File_Mem(saved.c_str()), 1U);
  EXPECT_EQ(told(),
            joined_lines({{kAsterisks, "List_Binary_File----start", "FileName:" + saved},
                          decoded(sum),
                          {"phys[0]:usb-0000:00:14.0-1/input0 SN[0]:a1b2c3d4e5f60708 ID:2575_87AB "
                           "chksum:" +
                           upper(sum)},
                          words,
                          {"List_Binary_File----end", kAsterisks}}));
  for (const char* line : {"PARAMES 0x03 0x02 0x04 0xd2 0x19 0x09", "Frequency : 1234",
                           "Duration : 25", "Screen Number : 10"}) {
    EXPECT_EQ(lines_that_begin(line), 1U) << line;
  }
}

TEST_F(ListingTest, ARecordThatDoesNotDecodeIsShownAsBytesOf0xFF) {
  unsigned sum = 0;
  std::string bytes = stored_bytes(panel(), plain_block(), &sum);
  bytes[283] = static_cast<char>(bytes[283] ^ 1);
  write_file(saved, bytes);
  const Lines words = parsed_and_shown(Block(32, 0xFF));
  EXPECT_EQ(Show_Binary_File_Mem(saved.c_str()), 1U);
  EXPECT_EQ(lines_that_begin("phys[0]:" + kPhys + " SN[0]:" + kSerialNumber + " ID:" + kUsbId +
                             " chksum:0x0000"),
            1U);
  EXPECT_EQ(lines_that_begin("PARAMES 0xff 0xff 0xff 0xff 0xff 0xff"), 1U);
  const Lines lines = told();
  EXPECT_NE(std::search(lines.begin(), lines.end(), words.begin(), words.end()), lines.end());
}

TEST_F(ListingTest, NoRecordShowsWhatAnotherOneHolds) {
  unsigned sum = 0;
  unsigned other_sum = 0;
  Block second = plain_block();
  second[22] = 0x07;
  second[23] = 0xD0;
  write_file(saved, stored_bytes(panel(), plain_block(), &sum) + panel(0xFF).bytes() +
                        stored_bytes({kOtherPhys, kOtherSerialNumber, kOtherUsbId, 0}, second,
                                     &other_sum));
  EXPECT_EQ(Show_Binary_File_Mem(saved.c_str()), 1U);
  Lines shown;
  for (const std::string& line : told()) {
    if (line.starts_with("phys[") || line.starts_with("Freq")) shown.push_back(line);
  }
  EXPECT_EQ(shown, (Lines{"phys[0]:" + kPhys + " SN[0]:" + kSerialNumber + " ID:" + kUsbId +
                              " chksum:" + upper(sum),
                          "Frequency : 1234",
                          "phys[1]:" + kPhys + " SN[1]:" + kSerialNumber + " ID:" + kUsbId +
                              " chksum:0x0000",
                          "Frequency : 1000",
                          "phys[2]:" + kOtherPhys + " SN[2]:" + kOtherSerialNumber +
                              " ID:" + kOtherUsbId + " chksum:" + upper(other_sum),
                          "Frequency : 2000"}));
}

TEST_F(ListingTest, TheListOfSerialNumbersIsShown) {
  write_records(unique, {panel(0), {kOtherPhys, kOtherSerialNumber, kOtherUsbId, 0}});
  EXPECT_EQ(Show_UniqList_SN(), 1U);
  EXPECT_EQ(told(), (Lines{kAsterisks, "Show_UniqList_SN----start", "FileName:" + unique,
                           "phys[0]:" + kPhys + " SN[0]:" + kSerialNumber,
                           "phys[1]:" + kOtherPhys + " SN[1]:" + kOtherSerialNumber,
                           "Show_UniqList_SN----end", kAsterisks}));
}

TEST_F(ListingTest, MissingFilesAreTold) {
  EXPECT_EQ(Show_Binary_File_Mem(saved.c_str()), 0U);
  EXPECT_EQ(told(), (Lines{kAsterisks, "List_Binary_File----start", "FileName:" + saved,
                           "List_Binary_File open FileName:" + saved + " error"}));
  clear_trace();
  EXPECT_EQ(Show_UniqList_SN(), 0U);
  EXPECT_EQ(told(), (Lines{kAsterisks, "Show_UniqList_SN----start", "FileName:" + unique,
                           "Show_UniqList_SN open FileName:" + unique + " error"}));
  clear_trace();
  EXPECT_EQ(PCTEnumAllBin(), 0U);
  EXPECT_EQ(told(), Lines{"Enum_Binary_File open FileName:" + saved + " error"});
}

TEST_F(ListingTest, EmptyFilesAreShownEmpty) {
  for (const std::string& path : {saved, unique}) write_file(path, "");
  EXPECT_EQ(Show_Binary_File_Mem(saved.c_str()), 1U);
  EXPECT_EQ(told(), (Lines{kAsterisks, "List_Binary_File----start", "FileName:" + saved,
                           "List_Binary_File----end", kAsterisks}));
  clear_trace();
  EXPECT_EQ(Show_UniqList_SN(), 1U);
  EXPECT_EQ(told(), (Lines{kAsterisks, "Show_UniqList_SN----start", "FileName:" + unique,
                           "Show_UniqList_SN----end", kAsterisks}));
  clear_trace();
  EXPECT_EQ(PCTEnumAllBin(), 0U);
  EXPECT_EQ(told(), Lines{});
}

TEST_F(ListingTest, AllFilesAreShownInOrderAndTheLastOneCounts) {
  const struct {
    const char* name;
    bool unique, saved, temporary;
    unsigned result;
  } kRows[] = {{"all are there", true, true, true, 1},
               {"the temporary one alone", false, false, true, 1},
               {"all but the temporary one", true, true, false, 0},
               {"none", false, false, false, 0}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    for (const std::string& path : {unique, saved, temporary}) std::filesystem::remove(path);
    if (row.unique) write_file(unique, "");
    if (row.saved) write_file(saved, "");
    if (row.temporary) write_file(temporary, "");
    clear_trace();
    EXPECT_EQ(ListPCTAllBin(), row.result);
    Lines names;
    for (const std::string& line : told()) {
      if (line.starts_with("FileName:")) names.push_back(line);
    }
    EXPECT_EQ(names, (Lines{"FileName:" + unique, "FileName:" + saved, "FileName:" + temporary}));
    EXPECT_EQ(lines_that_begin("Show_UniqList_SN----end"), row.unique ? 1U : 0U);
    EXPECT_EQ(lines_that_begin("List_Binary_File----end"), size_t{row.saved} + row.temporary);
  }
}

TEST_F(ListingTest, EnumeratingTellsThePanelAndItsParameters) {
  unsigned sum = 0;
  write_file(saved, stored_bytes(panel(), plain_block(), &sum));
  EXPECT_EQ(PCTEnumAllBin(), 0U);
  EXPECT_EQ(messages(), (Lines{"zelkora DD:" + decoded(sum)[0] + "\n",
                               "zelkora DD:PARAMES 0x03 0x02 0x04 0xd2 0x19 0x09\n",
                               "zelkora DD:PosConfig 0x00 0x0e 0xa5\n",
                               "zelkora DD:Digitizer:0x00 DisableReport:0x01\n",
                               "zelkora DD:phys:usb-0000:00:14.0-1/input0\n",
                               "zelkora DD:SN:a1b2c3d4e5f60708\n", "zelkora DD:ID:2575_87AB\n",
                               "zelkora DD:***SN:0f20314253647586\n***",
                               "zelkora DD:***beep:3 Play:2 freq:1234 dura:25 scrno:9 click:2"
                               " right:1 time:5 range:10 up:1 DisableReport:1 HideCursor:1\n***"}));
}

TEST_F(ListingTest, EnumeratingARecordThatDoesNotDecodeTellsRepairedBytesOf0xFF) {
  write_records(saved, {panel(0x01)});
  EXPECT_EQ(PCTEnumAllBin(), 0U);
  const Lines lines = messages();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2], "zelkora DD:***SN:ffffffffffffffff\n***");
  EXPECT_EQ(lines.back(),
            "zelkora DD:***beep:0 Play:1 freq:1000 dura:0 scrno:0 click:3"
            " right:0 time:15 range:15 up:1 DisableReport:255 HideCursor:0\n***");
}

TEST_F(ListingTest, ListingsEndAtRecord256AndEnumeratingDoesNot) {
  const Records many = other_panels(300);
  write_records(saved, many);
  write_records(unique, many);
  EXPECT_EQ(Show_Binary_File_Mem(saved.c_str()), 1U);
  EXPECT_EQ(lines_that_begin("phys["), 256U);
  EXPECT_EQ(lines_that_begin("phys[255]:other-255/ SN[255]:00000000000000ff ID:"), 1U);
  clear_trace();
  EXPECT_EQ(Show_UniqList_SN(), 1U);
  EXPECT_EQ(lines_that_begin("phys["), 256U);
  clear_trace();
  EXPECT_EQ(PCTEnumAllBin(), 0U);
  EXPECT_EQ(lines_that_begin("phys:other-"), 300U);
}

TEST_F(ListingTest, ATrailingPieceOfARecordIsNotShown) {
  const std::string bytes = panel(0).bytes() + panel(0).bytes().substr(0, 346);
  for (const std::string& path : {saved, unique}) write_file(path, bytes);
  Show_Binary_File_Mem(saved.c_str());
  EXPECT_EQ(lines_that_begin("phys["), 1U);
  clear_trace();
  Show_UniqList_SN();
  EXPECT_EQ(lines_that_begin("phys["), 1U);
  clear_trace();
  PCTEnumAllBin();
  EXPECT_EQ(lines_that_begin("phys:"), 1U);
  EXPECT_EQ(read_file(saved), bytes);
}

TEST_F(ListingTest, FieldsWithoutATerminatorAreShownToTheirEnds) {
  const Stored hostile = {"%n%s" + std::string(252, 'p'), "%s%n" + std::string(13, 's'),
                          "%d%s%n%c%x", 0};
  for (const std::string& path : {saved, unique}) write_records(path, {hostile});
  Show_Binary_File_Mem(saved.c_str());
  EXPECT_EQ(lines_that_begin("phys[0]:" + hostile.phys + " SN[0]:" + hostile.serial_number +
                             " ID:%d%s%n%c%x chksum:"),
            1U);
  clear_trace();
  Show_UniqList_SN();
  EXPECT_EQ(told()[3], "phys[0]:" + hostile.phys + " SN[0]:" + hostile.serial_number);
  clear_trace();
  PCTEnumAllBin();
  for (const std::string& line :
       {"phys:" + hostile.phys, "SN:" + hostile.serial_number, "ID:" + hostile.usb_id}) {
    const std::string message = "zelkora DD:" + line + "\n";
    EXPECT_EQ(std::count(messages().begin(), messages().end(), message), 1) << line;
  }
}

TEST_F(ListingTest, NothingIsShownWithoutDebugging) {
  write_records(saved, {panel(0)});
  write_records(unique, {panel(0)});
  DbgFlag = 0;
  EXPECT_EQ(captured_stdout([&] {
              ListPCTAllBin();
              PCTEnumAllBin();
            }),
            "");
}

}  // namespace
