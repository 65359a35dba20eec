// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// When the identity block is written anew, and the list of serial numbers.
#include <filesystem>

#include "serial_number_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::data_file;
using zelkora::test::debug_messages;
using zelkora::test::joined;
using zelkora::test::joined_bytes;
using zelkora::test::kBlock;
using zelkora::test::kPanel;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::read_file;
using zelkora::test::repeated;
using zelkora::test::way_name;

class SerialNumberCheckTest : public zelkora::test::SerialNumberBench {
 protected:
  void SetUp() override {
    SerialNumberBench::SetUp();
    open_way();
    HidRaw = 77;
  }

  // The lines of ChkSNFlash() itself.
  Lines check_messages() const {
    Lines lines;
    for (const std::string& text : messages()) {
      if (text.starts_with("zelkora DD:ChkSNFlash")) lines.push_back(text);
    }
    return lines;
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, SerialNumberCheckTest, testing::ValuesIn(kWays), way_name);

// A block as it is written: nothing between and behind its fields.
Bytes plain_block(unsigned vid, unsigned pid, unsigned revision, const Bytes& serial_number) {
  Bytes block;
  for (const unsigned word : {vid, pid, revision}) {
    block.push_back(static_cast<uint8_t>(word >> 8));
    block.push_back(static_cast<uint8_t>(word));
  }
  block = joined_bytes(zelkora::test::padded(block, 12), serial_number);
  return zelkora::test::padded(block, 32);
}

TEST_P(SerialNumberCheckTest, ABlockThatIsRightIsOnlyRead) {
  device.answers[7] = reply_of(kBlock);
  EXPECT_EQ(ChkSNFlash(kPanel), 1);
  EXPECT_EQ(HidRaw, GetParam().hidraw ? 1 : 0);
  EXPECT_EQ(wire(), reading(device.answers[7]));
  EXPECT_EQ(serial_number(), Bytes(kBlock.begin() + 12, kBlock.begin() + 20));
  EXPECT_EQ(check_messages(), debug_messages({"ChkSNFlash FLASH OLD_VID:0x2575 OLD_PID:0x8753\n",
                                              "ChkSNFlash FWRev:564 FWRevFlash:564\n"}));
}

TEST_P(SerialNumberCheckTest, OtherFirmwareHasTheBlockWrittenAndReadBack) {
  entry.FWRev = 565;
  const Bytes reply = device.answers[7] = reply_of(kBlock);
  const Bytes kept(kBlock.begin() + 12, kBlock.begin() + 20);
  const Bytes written = plain_block(0x2575, 0x8755, 565, kept);
  EXPECT_EQ(ChkSNFlash(kPanel), 1);
  EXPECT_EQ(HidRaw, GetParam().hidraw ? 1 : 0);
  EXPECT_EQ(wire(), joined({reading(reply), writing(written), reading(device.answers[7])}));
  EXPECT_EQ(serial_number(), kept);
  EXPECT_EQ(entry.OldPID, 0x8755U);
  EXPECT_EQ(entry.FWRevFlash, 565);
  EXPECT_EQ(check_messages(),
            debug_messages({"ChkSNFlash FLASH OLD_VID:0x2575 OLD_PID:0x8753\n",
                            "ChkSNFlash FWRev:565 FWRevFlash:564\n",
                            "ChkSNFlash WriteFlash New OLD_VID:0x2575 OLD_PID:0x8755\n"}));
}

TEST_P(SerialNumberCheckTest, EachReasonAndEachThatIsNone) {
  const struct {
    const char* name;
    unsigned old_vid, old_pid, revision;
    bool written;
  } kRows[] = {
      {"the same firmware", 0x2575, 0x8755, 0x234, false},
      {"newer firmware than the block", 0x2575, 0x8755, 0x233, true},
      {"older firmware than the block", 0x2575, 0x8755, 0x235, true},
      {"firmware that differs in the high byte", 0x2575, 0x8755, 0x134, true},
      {"a block without ids", 0, 0, 0x234, true},
      {"a block without a product", 0x2575, 0, 0x234, false},
      {"a block without a vendor", 0, 0x8755, 0x234, false},
      {"the hybrid's product", 0x2575, 0x9968, 0x234, true},
      {"the mouse's product", 0x2575, 0x9969, 0x234, true},
      {"nearly the hybrid's", 0x2575, 0x9967, 0x234, false},
      {"nearly the mouse's", 0x2575, 0x996A, 0x234, false},
      {"another vendor", 0x3A4C, 0x8755, 0x234, false},
      {"the product of the mouse as vendor", 0x9969, 0x8755, 0x234, false},
      {"all of them", 0, 0x9969, 0, true},
  };
  const Bytes kept = {9, 8, 7, 6, 5, 4, 3, 2};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    written_blocks.clear();
    device.answers[7] = reply_of(plain_block(row.old_vid, row.old_pid, row.revision, kept));
    EXPECT_EQ(ChkSNFlash(kPanel), 1);
    EXPECT_EQ(written_blocks, row.written
                                  ? std::vector<Bytes>{plain_block(0x2575, 0x8755, 0x234, kept)}
                                  : std::vector<Bytes>());
    EXPECT_EQ(serial_number(), kept);
    EXPECT_EQ(entry.OldVID, row.written ? 0x2575 : row.old_vid);
    EXPECT_EQ(entry.OldPID, row.written ? 0x8755 : row.old_pid);
  }
}

TEST_P(SerialNumberCheckTest, AMouseGetsTheDefaultProductAndKeepsItsSerialNumber) {
  entry.PID = 0x9969;
  const Bytes kept = {9, 8, 7, 6, 5, 4, 3, 2};
  device.answers[7] = reply_of(plain_block(0x2575, 0x9969, 0x234, kept));
  EXPECT_EQ(ChkSNFlash(kPanel), 1);
  EXPECT_EQ(written_blocks, (std::vector<Bytes>{plain_block(0x2575, 0x8753, 0x234, kept)}));
  EXPECT_EQ(entry.PID, 0x9969U);
}

TEST_P(SerialNumberCheckTest, APanelWithoutAGoodBlockGetsANewSerialNumber) {
  device.answers[7] = Bytes(63, 0xFF);
  const Bytes fresh = {0x05, 0x0A, 0x02, 0x07, 0x0B, 0x09, 0x03, 0x08};
  const Bytes written = plain_block(0x2575, 0x8755, 0x234, fresh);
  EXPECT_EQ(ChkSNFlash(kPanel), 1);
  EXPECT_EQ(wire(), joined({repeated(11, joined({reading(Bytes(63, 0xFF)), {"usleep 300000"}})),
                            writing(written), reading(device.answers[7])}));
  EXPECT_EQ(serial_number(), fresh);
  EXPECT_EQ(check_messages(),
            debug_messages({"ChkSNFlash WriteFlash New OLD_VID:0x2575 OLD_PID:0x8755\n"}));
}

TEST_P(SerialNumberCheckTest, APanelThatCannotBeWrittenKeepsItsNewNumberInMemory) {
  device.answers[7] = Bytes(63);
  entry.OldVID = 0x1111;
  device.on_command = [this, asked = 0](const Bytes& payload) mutable {
    if (payload[0] == 0xA1 && ++asked == 11) fail_sends(1);
  };
  EXPECT_EQ(ChkSNFlash(kPanel), 0);
  EXPECT_EQ(serial_number(), (Bytes{0x05, 0x0A, 0x02, 0x07, 0x0B, 0x09, 0x03, 0x08}));
  EXPECT_EQ(device.received.size(), 11U);
  EXPECT_EQ(check_messages(),
            debug_messages({"ChkSNFlash WriteFlash New OLD_VID:0x1111 OLD_PID:0x0000\n"}));
}

TEST_P(SerialNumberCheckTest, AGoodBlockThatCannotBeReplacedFailsThePanel) {
  entry.FWRev = 1;
  device.answers[7] = reply_of(kBlock);
  device.on_command = [this](const Bytes&) { fail_sends(1); };
  EXPECT_EQ(ChkSNFlash(kPanel), 0);
  EXPECT_EQ(device.received.size(), 1U);
}

TEST_P(SerialNumberCheckTest, ABlockThatCannotBeReadBackFailsThePanel) {
  entry.FWRev = 1;
  loses_blocks = true;
  const Bytes reply = device.answers[7] = reply_of(kBlock);
  const Bytes kept(kBlock.begin() + 12, kBlock.begin() + 20);
  EXPECT_EQ(ChkSNFlash(kPanel), 0);
  EXPECT_EQ(wire(), joined({reading(reply), writing(plain_block(0x2575, 0x8755, 1, kept)),
                            repeated(11, joined({reading({}), {"usleep 300000"}}))}));
  EXPECT_EQ(check_messages().size(), 3U);
}

// ------------------------------------------------------------------------------------------------

class SerialNumberListTest : public zelkora::test::Bench {
 protected:
  static constexpr char kFile[] = ".pctuniq";

  void SetUp() override {
    Bench::SetUp();
    host.debug = DbgFlag = 1;
    allow_any_command();
    TouchDeviceEntry& entry = TouchDevice[kPanel];
    std::snprintf(entry.Phys, sizeof entry.Phys, "usb-1/input0");
    for (size_t i = 0; i < sizeof entry.SN; ++i) entry.SN[i] = static_cast<uint8_t>(0xB0 + i);
  }

  // The lines of the two functions themselves.
  Lines own_messages() const {
    Lines lines;
    for (const std::string& text : messages()) {
      if (text.find("MySNBin") != std::string::npos) lines.push_back(text);
    }
    return lines;
  }
};

TEST_F(SerialNumberListTest, ANumberIsEnteredAndLookedUp) {
  EXPECT_EQ(SetMySNBin(kPanel), 1);
  EXPECT_EQ(own_messages(),
            debug_messages({"***SetMySNBin Write_UniqList_Binary_File status=1***\n",
                            "GetMySNBin Read_UniqList_Binary_File ret=0x0001\n"}));
  const std::string file = read_file(data_file(kFile));
  EXPECT_EQ(file.size(), sizeof(ParamStoreRecord));
  EXPECT_NE(file.find("b0b1b2b3b4b5b6b7"), std::string::npos);
}

TEST_F(SerialNumberListTest, ANumberThatCannotBeEnteredIsNotLookedUp) {
  TouchDevice[kPanel].Phys[0] = '\0';
  EXPECT_EQ(SetMySNBin(kPanel), 0);
  EXPECT_EQ(own_messages(),
            debug_messages({"***SetMySNBin Write_UniqList_Binary_File status=0***\n"}));
  EXPECT_FALSE(std::filesystem::exists(data_file(kFile)));
}

TEST_F(SerialNumberListTest, APanelOfTheListIsFound) {
  SetMySNBin(kPanel);
  clear_trace();
  EXPECT_EQ(GetMySNBin(kPanel), 1);
  EXPECT_EQ(own_messages(), debug_messages({"GetMySNBin Read_UniqList_Binary_File ret=0x0001\n"}));

  clear_trace();
  TouchDevice[kPanel].Phys[4] = '2';
  EXPECT_EQ(GetMySNBin(kPanel), 0);
  EXPECT_EQ(own_messages(), debug_messages({"GetMySNBin Read_UniqList_Binary_File ret=0x0000\n"}));
}

// The lookup behind the entry is for the trace alone.
TEST_F(SerialNumberListTest, TheLookupDoesNotDecide) {
  fail_file_call("fopen", data_file(kFile), EACCES, 1);
  EXPECT_EQ(SetMySNBin(kPanel), 1);
  EXPECT_EQ(own_messages(),
            debug_messages({"***SetMySNBin Write_UniqList_Binary_File status=1***\n",
                            "GetMySNBin Read_UniqList_Binary_File ret=0x0000\n"}));
}

}  // namespace
