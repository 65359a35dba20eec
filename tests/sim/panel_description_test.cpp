// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panel_description.h"

#include <gtest/gtest.h>

#include <array>
#include <iterator>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace zelkora::sim {
namespace {

PanelDescription parsed(std::string_view text) {
  PanelDescription panel;
  EXPECT_EQ(parse_panel(text, panel), "");
  return panel;
}

const ResistiveDescription& resistive(const PanelDescription& panel) {
  return std::get<ResistiveDescription>(panel.controller);
}

const PctDescription& pct(const PanelDescription& panel) {
  return std::get<PctDescription>(panel.controller);
}

std::string id_of(const PanelDescription& panel) {
  return std::to_string(panel.identity.vendor) + ":" + std::to_string(panel.identity.product);
}

TEST(PanelDescriptionTest, AKindAloneIsAPanelAsDelivered) {
  const PanelDescription old = parsed("resistive");
  EXPECT_EQ(id_of(old), "14924:5768");  // 3A4C:1688
  EXPECT_EQ(old.identity.kernel_name(), "Zelkora Virtual Resistive");
  EXPECT_EQ(resistive(old).firmware, "V1.2");
  EXPECT_TRUE(resistive(old).words.empty());

  for (const auto& [kind, id, firmware] :
       {std::tuple("pct8752", "9589:34642", 0x30811234U),     // 2575:8752
        std::tuple("pct8753", "9589:34643", 0x87530190U)}) {  // 2575:8753
    SCOPED_TRACE(kind);
    const PanelDescription panel = parsed(kind);
    EXPECT_EQ(id_of(panel), id);
    EXPECT_EQ(panel.identity.kernel_name(), "Zelkora Virtual PCT");
    EXPECT_EQ(pct(panel).firmware, firmware);
    EXPECT_EQ(pct(panel).pos_mode, 1U);
    EXPECT_FALSE(pct(panel).serial_number);
    EXPECT_TRUE(panel.on_hiddev && panel.on_hidraw);
    EXPECT_EQ(panel.mode, 0600U);
    EXPECT_EQ(panel.hiddev_mode, 0600U);
  }
}

TEST(PanelDescriptionTest, EveryKindTakesIdsTextsAndPermissions) {
  for (const std::string kind : {"resistive", "pct8752", "pct8753"}) {
    SCOPED_TRACE(kind);
    const PanelDescription panel =
        parsed(kind + ",id=3e05:00aF,maker=Acme,name=\"Touch, small\",mode=640,hiddev-mode=0");
    EXPECT_EQ(panel.identity.vendor, 0x3E05);
    EXPECT_EQ(panel.identity.product, 0x00AF);
    EXPECT_EQ(panel.identity.kernel_name(), "Acme Touch, small");
    EXPECT_EQ(panel.mode, 0640U);
    EXPECT_EQ(panel.hiddev_mode, 0U);
  }
}

TEST(PanelDescriptionTest, APanelHasTheNodesItIsGiven) {
  struct Case {
    const char* text;
    bool hiddev, hidraw;
  };
  for (const auto& [text, hiddev, hidraw] :
       {Case{"pct8752,nodes=hiddev", true, false}, Case{"pct8753,nodes=hidraw", false, true},
        Case{"pct8753,nodes=hidraw,nodes=both", true, true},
        Case{"resistive,nodes=hiddev", true, false}}) {
    SCOPED_TRACE(text);
    const PanelDescription panel = parsed(text);
    EXPECT_EQ(panel.on_hiddev, hiddev);
    EXPECT_EQ(panel.on_hidraw, hidraw);
  }
}

TEST(PanelDescriptionTest, AResistivePanelTakesFirmwareAndStoredValues) {
  const PanelDescription panel = parsed("resistive,firmware=,beep=0,word16=0xABCD,word255=65535");
  EXPECT_EQ(resistive(panel).firmware, "");
  EXPECT_EQ(resistive(panel).words,
            (std::vector<std::pair<uint8_t, uint16_t>>{{86, 0}, {16, 0xABCD}, {255, 0xFFFF}}));
}

TEST(PanelDescriptionTest, AResistivePanelTakesItsFaults) {
  const PanelDescription panel =
      parsed("resistive,silent,silent-commands=1,bad-acknowledges=2,wrong-echoes=0x3,stores=77");
  const ResistiveFaults& faults = resistive(panel).faults;
  EXPECT_TRUE(faults.silent);
  EXPECT_EQ(faults.silent_commands, 1U);
  EXPECT_EQ(faults.bad_acknowledges, 2U);
  EXPECT_EQ(faults.wrong_echoes, 3U);
  EXPECT_EQ(faults.stores, 77);
}

const SerialDescription& serial(const PanelDescription& panel) {
  return std::get<SerialDescription>(panel.controller);
}

TEST(PanelDescriptionTest, ASerialPanelIsAResistiveOneWithAPort) {
  const PanelDescription plain = parsed("serial");
  EXPECT_TRUE(is_serial(plain));
  EXPECT_FALSE(is_serial(parsed("resistive")));
  EXPECT_EQ(serial(plain).port, "");
  EXPECT_EQ(serial(plain).firmware, "V1.2");
  EXPECT_FALSE(serial(plain).new_generation);

  const PanelDescription panel =
      parsed("serial,port=ttyUSB12,firmware=V3.0,new-generation,mode=666,beep=0,word67=3");
  EXPECT_EQ(serial(panel).port, "ttyUSB12");
  EXPECT_EQ(serial(panel).firmware, "V3.0");
  EXPECT_TRUE(serial(panel).new_generation);
  EXPECT_EQ(panel.mode, 0666U);
  EXPECT_EQ(serial(panel).words, (std::vector<std::pair<uint8_t, uint16_t>>{{86, 0}, {67, 3}}));
}

TEST(PanelDescriptionTest, ASerialPanelTakesTheFaultsOfItsControllerAndOfItsLine) {
  const ResistiveFaults faults =
      serial(parsed("serial,silent,stores=5,streamed-reports=50,failed-opens=2,no-hardware"))
          .faults;
  EXPECT_TRUE(faults.silent);
  EXPECT_EQ(faults.stores, 5);
  EXPECT_EQ(faults.streamed_reports, 50U);
  EXPECT_EQ(faults.failed_opens, 2U);
  EXPECT_TRUE(faults.no_hardware);
  EXPECT_FALSE(faults.streaming);
  EXPECT_TRUE(serial(parsed("serial,streaming")).faults.streaming);
}

TEST(PanelDescriptionTest, APctPanelTakesFirmwareSerialNumberAndMode) {
  const PanelDescription panel = parsed("pct8753,firmware=00020168,sn=01a2030405060708,pos=4");
  EXPECT_EQ(pct(panel).firmware, 0x00020168U);
  EXPECT_EQ(pct(panel).serial_number, (std::array<uint8_t, 8>{1, 0xA2, 3, 4, 5, 6, 7, 8}));
  EXPECT_EQ(pct(panel).pos_mode, 4U);
  EXPECT_EQ(pct(parsed("pct8752,firmware=3FFFFFFF")).firmware, 0x3FFFFFFFU);
}

TEST(PanelDescriptionTest, APctPanelTakesEachOfItsFaults) {
  const std::pair<const char*, unsigned PctFaults::*> kCounters[] = {
      {"silent-commands", &PctFaults::silent_commands},
      {"stalled-commands", &PctFaults::stalled_commands},
      {"refused-command-modes", &PctFaults::refused_command_modes},
      {"refused-normal-modes", &PctFaults::refused_normal_modes},
      {"wrong-device-modes", &PctFaults::wrong_device_modes},
      {"bad-checksums", &PctFaults::bad_checksums},
      {"blank-pos-replies", &PctFaults::blank_pos_replies},
      {"refused-pos-modes", &PctFaults::refused_pos_modes},
      {"wrong-usb-ids", &PctFaults::wrong_usb_ids},
  };
  for (const auto& [key, counter] : kCounters) {
    SCOPED_TRACE(key);
    const PanelDescription panel = parsed(std::string("pct8752,") + key + "=1000000");
    EXPECT_EQ(pct(panel).faults.*counter, 1'000'000U);
    unsigned others = 0;
    for (const auto& row : kCounters) others += pct(panel).faults.*row.second;
    EXPECT_EQ(others, 1'000'000U);
    EXPECT_FALSE(pct(panel).faults.silent);
  }
  EXPECT_TRUE(pct(parsed("pct8753,silent")).faults.silent);
}

struct Mistake {
  const char* text;
  const char* problem;
};

constexpr Mistake kMistakes[] = {
    {"", "'' is no kind of panel; known: resistive, pct8752, pct8753, serial"},
    {"projected", "'projected' is no kind of panel; known: resistive, pct8752, pct8753, serial"},
    {"resistive,colour=red",
     "unknown key 'colour' of a panel of kind resistive; zelkora-sim --help lists them"},
    {"resistive,", "unknown key '' of a panel of kind resistive; zelkora-sim --help lists them"},
    {"resistive,sn=0102030405060708",
     "unknown key 'sn' of a panel of kind resistive; zelkora-sim --help lists them"},
    {"pct8753,beep=1",
     "unknown key 'beep' of a panel of kind pct8753; zelkora-sim --help lists them"},
    {"pct8752,word1=1",
     "unknown key 'word1' of a panel of kind pct8752; zelkora-sim --help lists them"},
    {"resistive,name=\"open", "a double quote is not closed"},
    {"resistive,id=3A4C", "'3A4C' is no value for 'id': expected VVVV:PPPP, hexadecimal"},
    {"resistive,id=3A4C:1688:1",
     "'3A4C:1688:1' is no value for 'id': expected VVVV:PPPP, hexadecimal"},
    {"pct8752,id=13A4C:1688", "'13A4C:1688' is no value for 'id': expected VVVV:PPPP, hexadecimal"},
    {"pct8752,pen=1", "'pen' takes no value"},
    {"serial,pen", "unknown key 'pen' of a panel of kind serial; zelkora-sim --help lists them"},
    {"pct8752,nodes=usb",
     "'usb' is no value for 'nodes': expected NODES, one of hiddev, hidraw and both"},
    {"resistive,mode=0800", "'0800' is no value for 'mode': expected MODE, octal, 000..777"},
    {"serial,new-generation=1", "'new-generation' takes no value"},
    {"resistive,silent=1", "'1' is no value for 'silent': expected on or off"},
    {"pct8753,silent=", "'' is no value for 'silent': expected on or off"},
    {"resistive,hangs=1", "'1' is no value for 'hangs': expected on or off"},
    {"pct8752,unplugs-after=-1",
     "'-1' is no value for 'unplugs-after': expected COUNT, 0..1000000"},
    {"pct8752,unplugs-after", "'unplugs-after' needs a value"},
    {"serial,hangs",
     "unknown key 'hangs' of a panel of kind serial; zelkora-sim --help lists them"},
    {"resistive,firmware", "'firmware' needs a value"},
    {"resistive,beep=65536", "'65536' is no value for 'beep': expected VALUE, 0..65535"},
    {"resistive,stores=-1", "'-1' is no value for 'stores': expected VALUE, 0..65535"},
    {"resistive,word256=1", "'word256=1': expected word0=0 to word255=65535"},
    {"resistive,word1=65536", "'word1=65536': expected word0=0 to word255=65535"},
    {"resistive,word1", "'word1': expected word0=0 to word255=65535"},
    {"resistive,streaming",
     "unknown key 'streaming' of a panel of kind resistive; zelkora-sim --help lists them"},
    {"resistive,port=ttyS0",
     "unknown key 'port' of a panel of kind resistive; zelkora-sim --help lists them"},
    {"serial,id=3A4C:1688",
     "unknown key 'id' of a panel of kind serial; zelkora-sim --help lists them"},
    {"serial,port=ttyS256",
     "'ttyS256' is no value for 'port': expected NAME, ttyS0..ttyS255 or ttyUSB0..ttyUSB255"},
    {"serial,port=ttyS01",
     "'ttyS01' is no value for 'port': expected NAME, ttyS0..ttyS255 or ttyUSB0..ttyUSB255"},
    {"serial,port=/dev/ttyS0",
     "'/dev/ttyS0' is no value for 'port': expected NAME, ttyS0..ttyS255 or ttyUSB0..ttyUSB255"},
    {"serial,port=ttyUSB",
     "'ttyUSB' is no value for 'port': expected NAME, ttyS0..ttyS255 or ttyUSB0..ttyUSB255"},
    {"pct8753,pos=0", "'0' is no value for 'pos': expected MODE, 1..4"},
    {"pct8753,pos=5", "'5' is no value for 'pos': expected MODE, 1..4"},
    {"pct8753,sn=01020304050607",
     "'01020304050607' is no value for 'sn': expected HHHHHHHHHHHHHHHH, sixteen hexadecimal "
     "digits"},
    {"pct8753,sn=010203040506070X",
     "'010203040506070X' is no value for 'sn': expected HHHHHHHHHHHHHHHH, sixteen hexadecimal "
     "digits"},
    {"pct8753,firmware=30811234",
     "'30811234' is no value for 'firmware': expected HHHHHHHH, eight hexadecimal digits, the "
     "first one 3 for pct8752 alone"},
    {"pct8752,firmware=87530190",
     "'87530190' is no value for 'firmware': expected HHHHHHHH, eight hexadecimal digits, the "
     "first one 3 for pct8752 alone"},
    {"pct8752,firmware=3081123",
     "'3081123' is no value for 'firmware': expected HHHHHHHH, eight hexadecimal digits, the "
     "first one 3 for pct8752 alone"},
    {"pct8752,bad-checksums=1000001",
     "'1000001' is no value for 'bad-checksums': expected COUNT, 0..1000000"},
};

class WrongPanelDescriptionTest : public testing::TestWithParam<Mistake> {};

TEST_P(WrongPanelDescriptionTest, IsToldFromARightOne) {
  PanelDescription panel;
  EXPECT_EQ(parse_panel(GetParam().text, panel), GetParam().problem);
}

INSTANTIATE_TEST_SUITE_P(Mistakes, WrongPanelDescriptionTest, testing::ValuesIn(kMistakes),
                         [](const auto& suite) { return "Row" + std::to_string(suite.index); });

TEST(PanelDescriptionTest, TheHelpHasALineForEachKey) {
  const std::string help = panel_help();
  for (const char* line :
       {"  resistive  ", "  serial  ", "  port=NAME  ", "  new-generation  ",
        "  streamed-reports=COUNT  ", "  failed-opens=COUNT  ", "  pct8752  ", "  pct8753  ",
        "  id=VVVV:PPPP  ", "  nodes=NODES  ", "  wordADDRESS=VALUE  ", "  stores=VALUE  ",
        "  sn=HHHHHHHHHHHHHHHH  ", "  pos=MODE  ", "  refused-command-modes=COUNT ",
        "  wrong-usb-ids=COUNT  "}) {
    EXPECT_NE(help.find(line), std::string::npos) << line;
  }
}

}  // namespace
}  // namespace zelkora::sim
