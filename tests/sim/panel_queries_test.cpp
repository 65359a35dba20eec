// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panel_queries.h"

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "panel_description.h"

namespace zelkora::sim {
namespace {

class Rack final : public PluggedPanels {
 public:
  explicit Rack(const std::vector<std::string>& texts) {
    for (const std::string& text : texts) {
      PanelDescription description;
      EXPECT_EQ(parse_panel(text, description), "");
      panels_.push_back(std::make_unique<VirtualPanel>(description));
    }
  }
  size_t size() const override { return panels_.size(); }
  VirtualPanel& panel(size_t number) override { return *panels_[number]; }
  bool unplug(size_t number) override { return unplugged.insert(number).second; }
  std::optional<std::vector<std::string>> plug(size_t number) override {
    if (plug_fails) throw std::runtime_error("every port is taken");
    if (unplugged.erase(number) == 0) return std::nullopt;
    return {{"", "/dev/hidraw7", "/dev/input/event9"}};
  }
  HostCommands* commands() override { return has_stand_ins ? &stand_ins : nullptr; }

  HostCommands stand_ins{{}};
  bool has_stand_ins = true;
  bool plug_fails = false;

  std::set<size_t> unplugged;

 private:
  std::vector<std::unique_ptr<VirtualPanel>> panels_;
};

class PanelQueriesTest : public testing::Test {
 protected:
  // The answer to a query that is a good one.
  std::string ask(const std::string& line) {
    const Answer answer = answer_query(rack_, line);
    EXPECT_EQ(answer.status, kExitDone) << line << ": " << answer.text;
    return answer.text;
  }
  void send(size_t panel, std::vector<uint8_t> report) {
    const uint8_t id = report[0];
    report.erase(report.begin());
    report.resize(63);
    EXPECT_TRUE(rack_.panel(panel).usb()->set_feature(id, report));
  }

  Rack rack_{
      {"resistive", "pct8752,pos=2,sn=A102030405060708", "pct8753,firmware=87530190,id=2575:8753"}};
};

TEST_F(PanelQueriesTest, ReadAndChangeTheValuesOfAResistivePanel) {
  EXPECT_EQ(ask("value 0 86"), "1\n");
  EXPECT_EQ(ask("set 0 0x56 65535"), "");
  EXPECT_EQ(ask("value 0 86"), "65535\n");
  EXPECT_EQ(ask("permanent 0 86"), "1\n");
}

TEST_F(PanelQueriesTest, ReadAndChangeThePosModeOfAPctPanel) {
  EXPECT_EQ(ask("pos-mode 1"), "2\n");
  EXPECT_EQ(ask("set-pos-mode 1 4"), "");
  EXPECT_EQ(ask("pos-mode 1"), "4\n");
  EXPECT_EQ(ask("pos-config 1"), "21 03 10 A4\n");
  EXPECT_EQ(ask("set-pos-config 1 0100ffAB"), "");
  EXPECT_EQ(ask("pos-config 1"), "01 00 FF AB\n");
  EXPECT_EQ(ask("pos-mode 1"), "1\n");
}

TEST_F(PanelQueriesTest, ReadAndChangeTheFlashOfAPctPanel) {
  // 6666 and the sum of the block, low byte first.
  EXPECT_EQ(ask("flash 1"),
            "25 75 87 52 02 34 00 00 00 00 00 00 A1 02 03 04 05 06 07 08 "
            "00 00 00 00 00 00 00 00 00 00 00 00 D3 68\n");
  std::string blank;
  for (int i = 0; i < 34; ++i) blank += "00 ";
  blank.back() = '\n';
  EXPECT_EQ(ask("flash 2"), blank);
  const std::string bytes(66, '7');
  EXPECT_EQ(ask("set-flash 2 " + bytes + "aB"), "");
  EXPECT_EQ(ask("flash 2").substr(93), "77 77 AB\n");
}

TEST_F(PanelQueriesTest, TellTheUsbIdsAndResetsOfAPctPanel) {
  send(2, {0xF3, 0x08, 0x00, 0x02, 0x00, 0x00, 0x4C, 0x3A, 0x69, 0x99});
  EXPECT_EQ(ask("usb-id 2"), "2575:8753\n");
  EXPECT_EQ(ask("stored-usb-id 2"), "3A4C:9969\n");
  EXPECT_EQ(ask("resets 2"), "0\n");
  send(2, {0x08, 0x84, 0x09});
  EXPECT_EQ(ask("usb-id 2"), "3A4C:9969\n");
  EXPECT_EQ(ask("resets 2"), "1\n");
}

TEST_F(PanelQueriesTest, TellTheUsbIdAndResetsOfAResistivePanel) {
  EXPECT_EQ(ask("usb-id 0"), "3A4C:1688\n");
  send(0, {0x01, 3, 0x01, 'R', 0x0D});
  EXPECT_EQ(ask("resets 0"), "1\n");
}

TEST_F(PanelQueriesTest, TellTheDeviceModeOfAPctPanel) {
  EXPECT_EQ(ask("device-mode 1"), "normal\n");
  send(1, {0x08, 0x91, 0x02, 0x00, 0x82, 0x90});
  EXPECT_EQ(ask("device-mode 1"), "command\n");
}

TEST_F(PanelQueriesTest, ReadTheFirmwareOfAPctPanelAndUpdateIt) {
  EXPECT_EQ(ask("firmware 2"), "87530190\n");
  EXPECT_EQ(ask("set-firmware 2 00020168"), "");
  EXPECT_EQ(ask("firmware 2"), "00020168\n");
}

TEST_F(PanelQueriesTest, ListTheFramesWithoutTheZerosThatFillAReportUp) {
  EXPECT_TRUE(answer_query(rack_, "frames 2").is_list);
  EXPECT_EQ(ask("frames 2"), "");
  send(2, {0x06, 0xA1, 0x22});
  send(2, {0x08});
  EXPECT_EQ(ask("frames 2"), "06 A1 22\n08\n");
  send(0, {0x01, 4, 0x01, 'O', 'I', 0x0D});
  EXPECT_EQ(ask("frames 0"), "01 4F 49 0D\n");
}

TEST_F(PanelQueriesTest, SilenceAPanelOfAnyKindAndGiveItItsVoiceBack) {
  for (const std::string panel : {"0", "1", "2"}) {
    VirtualPanel& model = rack_.panel(std::stoul(panel));
    const auto silent = [&] {
      return model.pct() ? model.pct()->faults.silent : model.resistive()->faults.silent;
    };
    EXPECT_EQ(ask("silent " + panel + " on"), "");
    EXPECT_TRUE(silent());
    EXPECT_EQ(ask("silent " + panel + " off"), "");
    EXPECT_FALSE(silent());
  }
}

TEST_F(PanelQueriesTest, AreThoseOfAResistivePanelOnASerialPortToo) {
  Rack ports({"serial,beep=0"});
  EXPECT_EQ(answer_query(ports, "value 0 86").text, "0\n");
  ports.panel(0).serial()->receive(std::vector<uint8_t>{0x01, 'O', 'I', 0x0D});
  EXPECT_EQ(answer_query(ports, "frames 0").text, "01 4F 49 0D\n");
  EXPECT_EQ(answer_query(ports, "resets 0").text, "0\n");
  EXPECT_EQ(answer_query(ports, "fault 0 stores=4").status, kExitDone);
  EXPECT_EQ(answer_query(ports, "fault 0 failed-opens=3").status, kExitDone);
  EXPECT_EQ(ports.panel(0).resistive()->faults.stores, 4);
  EXPECT_EQ(ports.panel(0).resistive()->faults.failed_opens, 3U);
  EXPECT_EQ(answer_query(ports, "usb-id 0").text,
            "'usb-id' is a query to USB panels, and this one is of kind serial");
}

TEST_F(PanelQueriesTest, TellHowALineIsSetUp) {
  Rack ports({"serial"});
  EXPECT_EQ(answer_query(ports, "line-settings 0").text, "untouched\n");
  ports.panel(0).serial()->configure({1, 0x20, 0x8BD, 0xA, 1, 5});
  EXPECT_EQ(answer_query(ports, "line-settings 0").text,
            "iflag=1 oflag=20 cflag=8BD lflag=A min=1 time=5\n");
}

TEST_F(PanelQueriesTest, GiveAPanelAnyFaultOfItsKind) {
  EXPECT_EQ(ask("fault 0 bad-acknowledges=2"), "");
  EXPECT_EQ(rack_.panel(0).resistive()->faults.bad_acknowledges, 2U);
  EXPECT_EQ(ask("fault 2 wrong-usb-ids=7"), "");
  EXPECT_EQ(rack_.panel(2).pct()->faults.wrong_usb_ids, 7U);
  EXPECT_EQ(ask("fault 2 silent"), "");
  EXPECT_TRUE(rack_.panel(2).pct()->faults.silent);
}

TEST_F(PanelQueriesTest, GiveAnyPanelOnUsbTheFaultsOfItsConnection) {
  for (const std::string panel : {"0", "1", "2"}) {
    const UsbFaults& faults = rack_.panel(std::stoul(panel)).usb()->usb_faults;
    EXPECT_EQ(ask("fault " + panel + " hangs"), "");
    EXPECT_TRUE(faults.hangs);
    EXPECT_EQ(ask("fault " + panel + " unplugs-after=3"), "");
    EXPECT_EQ(faults.unplugs_after, 3U);
  }
  Rack ports({"serial"});
  EXPECT_EQ(answer_query(ports, "fault 0 hangs").text,
            "'hangs' is no fault of a panel of this kind");
}

TEST_F(PanelQueriesTest, PutFaultsThatAreSwitchesOffAgain) {
  rack_.panel(0).usb()->usb_faults.hangs = true;
  EXPECT_EQ(ask("fault 0 hangs=off"), "");
  EXPECT_FALSE(rack_.panel(0).usb()->usb_faults.hangs);
  rack_.panel(2).pct()->faults.silent = true;
  EXPECT_EQ(ask("fault 2 silent=off"), "");
  EXPECT_FALSE(rack_.panel(2).pct()->faults.silent);
}

TEST_F(PanelQueriesTest, UnplugAPanelOnce) {
  EXPECT_EQ(ask("unplug 1"), "");
  EXPECT_EQ(rack_.unplugged, (std::set<size_t>{1}));
  const Answer again = answer_query(rack_, "unplug 1");
  EXPECT_EQ(again.status, kExitFailed);
  EXPECT_EQ(again.text, "panel 1 is unplugged already");
}

TEST_F(PanelQueriesTest, PlugAnUnpluggedPanelInOnceAndTellItsNodes) {
  ask("unplug 1");
  EXPECT_EQ(ask("plug 1"), "plugged 1 - /dev/hidraw7 /dev/input/event9\n");
  EXPECT_FALSE(answer_query(rack_, "plug 1").is_list) << "it is one line";
  const Answer again = answer_query(rack_, "plug 1");
  EXPECT_EQ(again.status, kExitFailed);
  EXPECT_EQ(again.text, "panel 1 is plugged in already");
}

TEST_F(PanelQueriesTest, TellWhyAPanelCannotBePluggedIn) {
  rack_.plug_fails = true;
  const Answer answer = answer_query(rack_, "plug 1");
  EXPECT_EQ(answer.status, kExitFailed);
  EXPECT_EQ(answer.text, "every port is taken");
}

TEST_F(PanelQueriesTest, ListTheCommandsRun) {
  EXPECT_TRUE(answer_query(rack_, "commands").is_list);
  EXPECT_EQ(ask("commands"), "");
  rack_.stand_ins.run(std::vector<std::string>{"dmesg"});
  rack_.stand_ins.run(std::vector<std::string>{"pgrep", "vastrel1"});
  EXPECT_EQ(ask("commands"), "dmesg\npgrep vastrel1 -> 1\n");
}

TEST_F(PanelQueriesTest, HaveCommandsFail) {
  EXPECT_EQ(ask("command-fails dmesg 3"), "");
  EXPECT_EQ(rack_.stand_ins.run(std::vector<std::string>{"dmesg"}).status, 3);
  EXPECT_EQ(ask("command-fails dmesg 0"), "");
  EXPECT_EQ(rack_.stand_ins.run(std::vector<std::string>{"dmesg"}).status, 0);
}

TEST_F(PanelQueriesTest, LeaveTheMachinesOwnCommandsAlone) {
  rack_.has_stand_ins = false;
  const Answer answer = answer_query(rack_, "commands");
  EXPECT_EQ(answer.status, kExitUsage);
  EXPECT_EQ(answer.text, "the commands here are the machine's own");
}

TEST_F(PanelQueriesTest, RefuseWhatIsWrongWithTheReason) {
  struct Case {
    const char* line;
    int status;
    const char* text;
  };
  constexpr Case kCases[] = {
      {"beep 0", kExitUsage, "unknown query 'beep'"},
      {"value 0", kExitUsage, "value is followed by PANEL ADDRESS"},
      {"value 0 86 1", kExitUsage, "value is followed by PANEL ADDRESS"},
      {"unplug", kExitUsage, "unplug is followed by PANEL"},
      {"value x 86", kExitUsage, "PANEL is a number, counted from 0"},
      {"value 3 86", kExitNotFound, "there is no panel 3; the session has 3, counted from 0"},
      {"value 0 256", kExitUsage, "ADDRESS lies in 0..255"},
      {"permanent 0 256", kExitUsage, "ADDRESS lies in 0..255"},
      {"set 0 86 65536", kExitUsage, "ADDRESS lies in 0..255, VALUE in 0..65535"},
      {"set 0 256 1", kExitUsage, "ADDRESS lies in 0..255, VALUE in 0..65535"},
      {"silent 0 maybe", kExitUsage, "silent PANEL is followed by on or off"},
      {"set-pos-mode 1 0", kExitUsage, "MODE lies in 1..4"},
      {"set-pos-mode 1 5", kExitUsage, "MODE lies in 1..4"},
      {"set-pos-config 1 0102030", kExitUsage,
       "BYTES are 4 bytes in hexadecimal, without blanks: 00000000..FFFFFFFF"},
      {"set-flash 1 01", kExitUsage,
       "BYTES are 34 bytes in hexadecimal, without blanks: the block and its checksum"},
      {"set-firmware 1 87530190", kExitUsage,
       "WORD is eight hexadecimal digits, the first one 3 for pct8752 alone"},
      {"set-firmware 2 8753019", kExitUsage,
       "WORD is eight hexadecimal digits, the first one 3 for pct8752 alone"},
      {"fault 1 bad-acknowledges=1", kExitUsage,
       "'bad-acknowledges=1' is no fault of a panel of this kind"},
      {"fault 1 bad-checksums=x", kExitUsage,
       "'x' is no value for 'bad-checksums': expected COUNT, 0..1000000"},
      {"value 1 86", kExitUsage,
       "'value' is a query to resistive panels, and this one is of kind pct8752"},
      {"commands 0", kExitUsage, "commands is followed by nothing"},
      {"command-fails dmesg", kExitUsage, "command-fails is followed by NAME STATUS"},
      {"command-fails dmesg 256", kExitUsage, "STATUS lies in 0..255"},
      {"command-fails rm 1", kExitUsage, "NAME is one of dmesg killall pgrep pidof systemctl"},
      {"fault 0 streaming", kExitUsage, "'streaming' is no fault of a panel of this kind"},
      {"line-settings 0", kExitUsage,
       "'line-settings' is a query to serial panels, and this one is of kind resistive"},
      {"pos-mode 0", kExitUsage,
       "'pos-mode' is a query to PCT panels, and this one is of kind resistive"},
  };
  for (const auto& [line, status, text] : kCases) {
    const Answer answer = answer_query(rack_, line);
    EXPECT_EQ(answer.status, status) << line;
    EXPECT_EQ(answer.text, text) << line;
  }
}

TEST_F(PanelQueriesTest, AreAllInTheHelpWithTheirArguments) {
  const std::string help = query_help();
  for (const auto& [name, arguments, text] : query_usages()) {
    const std::string usage = "  " + std::string(name) + " " + std::string(arguments) + " ";
    EXPECT_NE(help.find(usage), std::string::npos) << usage;
    EXPECT_NE(help.find(std::string(text) + "\n"), std::string::npos) << text;
  }
}

}  // namespace
}  // namespace zelkora::sim
