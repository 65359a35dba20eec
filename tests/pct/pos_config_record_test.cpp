// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The POS configuration against a parameter record.
#include <cstring>

#include "data_reply.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::data_reply;
using zelkora::test::debug_messages;
using zelkora::test::joined;
using zelkora::test::joined_bytes;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::padded;
using zelkora::test::way_name;

struct Change {
  const char* name;
  unsigned char PCTDevInfo::*field;
  unsigned char value;
};

std::string write_message(const PCTDevInfo& rec) {
  char text[128];
  std::snprintf(
      text, sizeof text,
      "SetPOSConfig write enable:1 hid:1 sync:1 click:%d right:%d time:%d range:%d up:%d\n",
      rec.ClickMode, rec.DisableRight, rec.RightTime, rec.RightRange, rec.RightUp);
  return text;
}

class PosConfigRecordTest : public zelkora::test::PctWays {
 protected:
  Lines config_sent(uint8_t c0, uint8_t c1, uint8_t c2) const {
    return sent(is_8752() ? Bytes{0x08, 0x91, 0x05, 0x00, 0xC0, c0, c1, c2}
                          : Bytes{0x08, 0x84, 0xC0, 0x00, c0, c1, c2});
  }
  std::string sent_message() const {
    return "***WritePOSConfig IsLegacy:" + std::to_string(GetParam().family) + "***\n";
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, PosConfigRecordTest, testing::ValuesIn(kWays), way_name);

TEST_P(PosConfigRecordTest, EachFieldHasItsBitsInWhatIsWritten) {
  const struct {
    Change change;
    uint8_t c1, c2;
  } kRows[] = {
      {{"nothing", &PCTDevInfo::Digitizer, 1}, 0x18, 0x00},
      {{"right click off", &PCTDevInfo::DisableRight, 1}, 0x18, 0x00},
      {{"click on touch", &PCTDevInfo::ClickMode, 1}, 0x19, 0x00},
      {{"click on release", &PCTDevInfo::ClickMode, 2}, 0x1A, 0x00},
      {{"right button first", &PCTDevInfo::ClickMode, 3}, 0x1B, 0x00},
      {{"menu on right down", &PCTDevInfo::RightUp, 1}, 0x1C, 0x00},
      {{"right time", &PCTDevInfo::RightTime, 15}, 0x18, 0x0F},
      {{"right range", &PCTDevInfo::RightRange, 10}, 0x18, 0xA0},
      {{"a mode", &PCTDevInfo::POSMode, 3}, 0x18, 0x00},
      {{"not enabled", &PCTDevInfo::POSEnable, 0}, 0x18, 0x00},
      {{"enabled oddly", &PCTDevInfo::POSEnable, 0x40}, 0x18, 0x00},
      {{"HID oddly", &PCTDevInfo::HidEnable, 2}, 0x18, 0x00},
      {{"sync oddly", &PCTDevInfo::SyncFlag, 0xFF}, 0x18, 0x00},
      {{"a range too large", &PCTDevInfo::RightRange, 0xFF}, 0x18, 0xF0},
  };
  open_way();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.change.name);
    PCTDevInfo rec{};
    rec.*row.change.field = row.change.value;
    PCTDevInfo expected = rec;
    expected.POSEnable = expected.HidEnable = expected.SyncFlag = 1;
    clear_trace();
    EXPECT_EQ(SetPOSConfig(&rec, 0), 1);
    EXPECT_EQ(wire(), config_sent(0x21, row.c1, row.c2));
    EXPECT_EQ(messages(), debug_messages({write_message(rec), sent_message()}));
    EXPECT_EQ(std::memcmp(&rec, &expected, sizeof rec), 0);
  }
}

TEST_P(PosConfigRecordTest, AFlagAddsABit) {
  PCTDevInfo rec{};
  rec.ClickMode = 2;
  rec.RightUp = 1;
  rec.RightTime = 4;
  rec.RightRange = 10;
  open_way();
  for (const int flag : {0, 1, 2, -1, 256}) {
    SCOPED_TRACE(flag);
    clear_trace();
    EXPECT_EQ(SetPOSConfig(&rec, flag), 1);
    EXPECT_EQ(wire(), config_sent(0x21, flag != 0 ? 0x3E : 0x1E, 0xA4));
  }
}

TEST_P(PosConfigRecordTest, TheMessageShowsTheRecordAndNotTheBytes) {
  PCTDevInfo rec{};
  rec.ClickMode = 3;
  rec.DisableRight = 0;
  rec.RightTime = 4;
  rec.RightRange = 10;
  rec.RightUp = 1;
  open_way();
  SetPOSConfig(&rec, 0);
  EXPECT_EQ(messages().front(),
            "zelkora DD:SetPOSConfig write enable:1 hid:1 sync:1 click:3 right:0 time:4 range:10 "
            "up:1\n");
}

TEST_P(PosConfigRecordTest, AConfigurationThatCannotBeSentHasFailed) {
  PCTDevInfo rec{};
  open_way();
  fail_sends(1);
  EXPECT_EQ(SetPOSConfig(&rec, 0), 0);
  EXPECT_EQ(exchanges(), Lines());
  EXPECT_EQ(rec.POSEnable + rec.HidEnable + rec.SyncFlag, 3);
}

// ------------------------------------------------------------------------------------------------

// The record that agrees with kConfig.
PCTDevInfo agreeing_record() {
  PCTDevInfo rec{};
  rec.HidEnable = rec.POSEnable = rec.DisableRight = rec.RightUp = 1;
  rec.ClickMode = 2;
  rec.RightTime = 4;
  rec.RightRange = 10;
  return rec;
}
const Bytes kConfig = padded({0x21, 0x02, 0x0E, 0xA4}, 16);

TEST_P(PosConfigRecordTest, CheckingReadsOnceAndTakesTheConfigurationApart) {
  PCTDevInfo rec = agreeing_record();
  Bytes out(9, 0xEE);
  open_way();
  device.answers[7] = data_reply(GetParam(), kConfig);
  EXPECT_EQ(ChkPOSConfig(&rec, out.data()), 1);
  EXPECT_EQ(out, (Bytes{1, 1, 1, 2, 4, 10, 1, 3, 0xEE}));
  EXPECT_EQ(rec.POSMode, 3);
  EXPECT_EQ(wire(),
            joined({sent({0x06, 0xA2, 0x10}), {"usleep 50000"}, received(7, device.answers[7])}));
}

TEST_P(PosConfigRecordTest, CheckingTellsWhatItFound) {
  PCTDevInfo rec = agreeing_record();
  rec.DisableRight = 0;
  rec.ClickMode = 3;
  rec.RightUp = 7;
  Bytes out(8);
  open_way();
  device.answers[7] = data_reply(GetParam(), kConfig);
  EXPECT_EQ(ChkPOSConfig(&rec, out.data()), 0);
  EXPECT_EQ(messages(),
            debug_messages({"***ReadPOSConfig***\n", "ChkPOSConfig FlashData 0x21 0x02 0x0e\n",
                            "disable right:0->1\n", "click mode:3->2\n", "right up:7->1\n",
                            "ChkPOSConfig CurrConfig hid:0x01 enable:0x01 right:0x01"
                            " click:0x02 time:0x04 range:0x0a up:0x01 POSMode:0x03\n"}));
}

TEST_P(PosConfigRecordTest, EachBitOfTheConfigurationHasItsByteOfTheAnswer) {
  const struct {
    const char* name;
    Bytes config;
    Bytes out;  // hid, enable, right, click, time, range, up, mode
  } kRows[] = {
      {"enable", {0x01, 0, 0, 0}, {0, 1, 0, 0, 0, 0, 0, 1}},
      {"hid", {0x20, 0, 0, 0}, {1, 0, 0, 0, 0, 0, 0, 1}},
      {"bits of no meaning", {0xDE, 0, 0xE0, 0}, {0, 0, 0, 0, 0, 0, 0, 1}},
      {"mouse", {0, 1, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 2}},
      {"a mode at the end", {0, 0xFF, 0, 0}, {0, 0, 0, 0, 0, 0, 0, 0}},
      {"click 1", {0, 0, 0x01, 0}, {0, 0, 0, 1, 0, 0, 0, 1}},
      {"click 3", {0, 0, 0x03, 0}, {0, 0, 0, 3, 0, 0, 0, 1}},
      {"up", {0, 0, 0x04, 0}, {0, 0, 0, 0, 0, 0, 1, 1}},
      {"right", {0, 0, 0x08, 0}, {0, 0, 1, 0, 0, 0, 0, 1}},
      {"sync", {0, 0, 0x10, 0}, {0, 0, 0, 0, 0, 0, 0, 1}},
      {"time", {0, 0, 0, 0x0F}, {0, 0, 0, 0, 15, 0, 0, 1}},
      {"range", {0, 0, 0, 0xF0}, {0, 0, 0, 0, 0, 15, 0, 1}},
  };
  open_way();
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    device.answers[7] = data_reply(GetParam(), padded(row.config, 16));
    PCTDevInfo rec{};
    rec.POSMode = 0xEE;
    Bytes out(9, 0xEE);
    ChkPOSConfig(&rec, out.data());
    EXPECT_EQ(out, joined_bytes(row.out, {0xEE}));
    EXPECT_EQ(rec.POSMode, row.out[7]);
  }
}

TEST_P(PosConfigRecordTest, AnyDifferenceInSevenFieldsCounts) {
  const struct {
    Change change;
    int result;
  } kRows[] = {
      {{"HidEnable", &PCTDevInfo::HidEnable, 0}, 0},
      {{"POSEnable", &PCTDevInfo::POSEnable, 0}, 0},
      {{"DisableRight", &PCTDevInfo::DisableRight, 0}, 0},
      {{"ClickMode", &PCTDevInfo::ClickMode, 1}, 0},
      {{"RightTime", &PCTDevInfo::RightTime, 5}, 0},
      {{"RightRange", &PCTDevInfo::RightRange, 0}, 0},
      {{"RightUp", &PCTDevInfo::RightUp, 0}, 0},
      {{"a flag other than one", &PCTDevInfo::HidEnable, 0x20}, 0},
      {{"POSMode", &PCTDevInfo::POSMode, 1}, 1},
      {{"SyncFlag", &PCTDevInfo::SyncFlag, 1}, 1},
      {{"Digitizer", &PCTDevInfo::Digitizer, 1}, 1},
  };
  open_way();
  device.answers[7] = data_reply(GetParam(), kConfig);
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.change.name);
    PCTDevInfo rec = agreeing_record();
    rec.*row.change.field = row.change.value;
    PCTDevInfo expected = rec;
    expected.POSMode = 3;
    Bytes out(8);
    EXPECT_EQ(ChkPOSConfig(&rec, out.data()), row.result);
    EXPECT_EQ(std::memcmp(&rec, &expected, sizeof rec), 0);
  }
}

TEST_P(PosConfigRecordTest, AConfigurationThatCannotBeReadDiffers) {
  forget_report(7);
  PCTDevInfo rec = agreeing_record();
  rec.POSMode = 2;
  const PCTDevInfo before = rec;
  Bytes out(8, 0xEE);
  open_way();
  EXPECT_EQ(ChkPOSConfig(&rec, out.data()), 0);
  EXPECT_EQ(out, Bytes(8, 0xEE));
  EXPECT_EQ(std::memcmp(&rec, &before, sizeof rec), 0);
  EXPECT_EQ(messages(),
            debug_messages({"***ReadPOSConfig***\n", "ReadPOSConfig ReceiveDataPct failed\n "}));
}

}  // namespace
