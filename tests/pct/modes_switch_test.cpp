// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The mode switches, which open a panel of the table, change its mode, reset it and close it.
#include <utility>

#include "modes_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::data_file;
using zelkora::test::joined;
using zelkora::test::kWays;
using zelkora::test::Lines;
using zelkora::test::Way;
using zelkora::test::way_name;
using zelkora::test::write_file;

class ModesSwitchTest : public zelkora::test::ModesBench {
 protected:
  void SetUp() override {
    ModesBench::SetUp();
    // The kernel fetches all reports at the first look at a usage: let it do that now.
    open_way();
    HidRaw = 77;
  }

  // A panel in this mode, with the product id that goes with it.
  void put_in(int mode) {
    entry.PID = product_of(mode);
    report(mode);
    take_modes();
  }

  static constexpr unsigned product_of(int mode) {
    return mode == 1 ? 0x8753 : mode == 2 ? 0x9969 : 0x9968;
  }

  // A change from one mode to another and the reset behind it.
  Lines changing(int from, int to) const {
    const bool other_id = !is_8752() && entry.PID != product_of(to);
    return joined({other_id ? writing_id(product_of(to)) : Lines(),
                   reading(from),
                   writing(to),
                   reading(to),
                   {"usleep 200000"},
                   resetting()});
  }
  Lines finding(int mode) const { return joined({reading(mode), {"usleep 200000"}}); }

  // What opening and closing put around a change.
  Lines opened(const Lines& middle) const {
    const std::string path = node();
    return joined({{"open " + path + " O_RDONLY"},
                   switching(0x90),
                   middle,
                   switching(0x01),
                   {"close " + path}});
  }

  // The open fails; the descriptor is one that is none.
  void refuse_open() { kernel.fail_open(GetParam().hidraw ? kHidraw : kHiddev, EACCES, 1); }

  static void set_hybrid_flag(bool set) {
    std::remove(data_file(".hybrid").c_str());
    if (set) write_file(data_file(".hybrid"), "");
    isHybrid = set ? 0 : 1;  // read anew
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, ModesSwitchTest, testing::ValuesIn(kWays), way_name);

TEST_P(ModesSwitchTest, CheckingTheModeOpensChangesResetsAndCloses) {
  put_in(1);
  EXPECT_EQ(ChkPosMode(kPanel, 2), 1);
  EXPECT_EQ(HidRaw, GetParam().hidraw ? 1 : 0);
  EXPECT_EQ(wire(), opened(changing(1, 2)));
}

TEST_P(ModesSwitchTest, AModeThatIsThereWantsNoReset) {
  put_in(2);
  EXPECT_EQ(ChkPosMode(kPanel, 2), 0);
  EXPECT_EQ(wire(), opened(finding(2)));
}

TEST_P(ModesSwitchTest, CheckingTellsWhatItIsAbout) {
  put_in(2);
  entry.POSMode = 4;
  EXPECT_EQ(ChkPosMode(kPanel, 7), 0);
  const std::string said = "zelkora DD:ChkPosMode HidRaw:" + std::to_string(HidRaw) +
                           " , set to mode:7 , PosModeDev:4\n";
  EXPECT_EQ(std::count(messages().begin(), messages().end(), said), 1);
}

TEST_P(ModesSwitchTest, OneIsTheDigitizerOrTheHybridAndAllElseTheMouse) {
  const struct {
    int requested;
    bool hybrid;
    int mode;
  } kRows[] = {{1, false, 1}, {1, true, 3},  {2, false, 2}, {2, true, 2},   {0, false, 2},
               {0, true, 2},  {3, false, 2}, {3, true, 2},  {-1, false, 2}, {257, false, 2}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.requested);
    SCOPED_TRACE(row.hybrid);
    set_hybrid_flag(row.hybrid);
    put_in(row.mode == 2 ? 1 : 2);
    clear_trace();
    EXPECT_EQ(ChkPosMode(kPanel, row.requested), 1);
    EXPECT_EQ(wire(), opened(changing(row.mode == 2 ? 1 : 2, row.mode)));
  }
}

TEST_P(ModesSwitchTest, ThePanelThatDoesNotOpenIsClosedAllTheSame) {
  refuse_open();
  IsLegacy = 3;  // of the panel before
  EXPECT_EQ(ChkPosMode(kPanel, 1), 0);
  EXPECT_EQ(messages(), (Lines{"EE:unable to open device\n", "zelkora DD:CloseDevice\n"}));
  EXPECT_EQ(count_of("ioctl"), 0U);
}

struct Switch {
  const char* name;
  int (*call)(int index);
  bool hybrid;
  int mode;
};

constexpr Switch kSwitches[] = {
    {"hybrid", SetDevtoHybrid, false, 3},       {"hybrid, flag set", SetDevtoHybrid, true, 3},
    {"digitizer", SetDevtoDigitizer, false, 1}, {"digitizer, flag set", SetDevtoDigitizer, true, 3},
    {"mouse", SetDevtoMouse, false, 2},         {"mouse, flag set", SetDevtoMouse, true, 2},
};

TEST_P(ModesSwitchTest, EachSwitchChangesToItsModeAndResets) {
  for (const Switch& row : kSwitches) {
    SCOPED_TRACE(row.name);
    set_hybrid_flag(row.hybrid);
    const int before = row.mode == 2 ? 1 : 2;
    put_in(before);
    clear_trace();
    EXPECT_EQ(row.call(kPanel), 0);
    EXPECT_EQ(wire(), opened(changing(before, row.mode)));
  }
}

TEST_P(ModesSwitchTest, NoSwitchResetsAPanelThatIsInItsMode) {
  for (const Switch& row : kSwitches) {
    SCOPED_TRACE(row.name);
    set_hybrid_flag(row.hybrid);
    put_in(row.mode);
    clear_trace();
    EXPECT_EQ(row.call(kPanel), 0);
    EXPECT_EQ(wire(), opened(finding(row.mode)));
  }
}

TEST_P(ModesSwitchTest, APanelThatDoesNotOpenIsLeftAlone) {
  for (const Switch& row : kSwitches) {
    SCOPED_TRACE(row.name);
    refuse_open();
    clear_trace();
    EXPECT_EQ(row.call(kPanel), 0);
    EXPECT_EQ(messages(), Lines{"EE:unable to open device\n"});
    EXPECT_EQ(count_of("ioctl"), 0U);
  }
}

// The result of a switch is that of closing, even where the mode was changed.
TEST_P(ModesSwitchTest, ASwitchAnswersWithTheResultOfClosing) {
  static constexpr int kNotOpen = 1000;
  int opened_as = -1;
  device.on_command = [&opened_as, obey = device.on_command](const Bytes& payload) {
    obey(payload);
    const bool reset = (payload[0] == 0x84 && payload[1] == 0x09) || payload[0] == 0x85;
    if (reset) opened_as = std::exchange(fd, kNotOpen);
  };
  for (const Switch& row : kSwitches) {
    SCOPED_TRACE(row.name);
    set_hybrid_flag(row.hybrid);
    put_in(row.mode == 2 ? 1 : 2);
    EXPECT_EQ(row.call(kPanel), -1);
    EXPECT_EQ(::close(opened_as), 0);
  }
  put_in(1);
  EXPECT_EQ(ChkPosMode(kPanel, 2), 1);  // not so there
  EXPECT_EQ(::close(opened_as), 0);
}

// ------------------------------------------------------------------------------------------------

// A panel that takes command mode at the last attempt only, which counts as one that does not open.
class ModesLateTest : public ModesSwitchTest {
 protected:
  void SetUp() override {
    ModesSwitchTest::SetUp();
    device.on_command = [left = 20, obey = device.on_command](const Bytes& payload) mutable {
      const bool into_command_mode = payload[0] == 0x91 && payload[4] == 0x90;
      if (into_command_mode && left-- > 0) return;
      obey(payload);
    };
    clear_trace();
  }
};
constexpr Way k8752Ways[] = {{true, 1}, {false, 1}};
INSTANTIATE_TEST_SUITE_P(Pct, ModesLateTest, testing::ValuesIn(k8752Ways), way_name);

TEST_P(ModesLateTest, CheckingTheModeLeavesCommandModeAndCloses) {
  EXPECT_EQ(ChkPosMode(kPanel, 1), 0);
  Lines tail = switching(0x01);
  tail.push_back(std::string("close ") + node());
  const Lines all = wire();
  EXPECT_EQ(Lines(all.end() - static_cast<ptrdiff_t>(tail.size()), all.end()), tail);
  EXPECT_EQ(count_of("usleep 5000"), 22U);
  EXPECT_EQ(count_of("usleep 200000"), 0U);
}

TEST_P(ModesLateTest, ASwitchLeavesItOpen) {
  EXPECT_EQ(SetDevtoMouse(kPanel), 0);
  EXPECT_EQ(count_of("usleep 5000"), 21U);
  EXPECT_EQ(count_of("close"), 0U);
  EXPECT_EQ(messages().back(), "EE:unable to open device\n");
  EXPECT_EQ(::close(fd), 0);
}

}  // namespace
