// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Panels that move, are replaced, multiply, are updated and lose their identity: what becomes of
// their settings, their serial numbers and the store files.
#include "panel_life_bench.h"

namespace {

using namespace zelkora::test;

using PanelLifeTest = PanelLifeBench;
INSTANTIATE_TEST_SUITE_P(Pct, PanelLifeTest, testing::ValuesIn(kMakes), make_name);

TEST_P(PanelLifeTest, ANewPanelGetsANumberARecordAndTheDefaults) {
  PctPanel& panel = new_panel();
  plug(panel, 1);
  enumerate(1);
  EXPECT_EQ(number_of(panel), kFirstNumber);
  EXPECT_EQ(panel.controller.flash(), identity_block(kFirstNumber, revision()));
  EXPECT_EQ(flash_writes(panel), 1);
  EXPECT_EQ(store_file(kNumberList), listed(1, kFirstNumber));
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, default_set()));
  EXPECT_EQ(store_file(kTemporaryRecords), kNoFile);
  expect_set(panel, default_set());
}

TEST_P(PanelLifeTest, AKnownPanelIsFoundAsItWas) {
  PctPanel& panel = new_panel();
  plug(panel, 1);
  enumerate(1);
  ASSERT_EQ(save(panel, loud_set(), 6), 1);
  next_random(0x10);
  enumerate(1);
  EXPECT_EQ(number_of(panel), kFirstNumber);
  EXPECT_EQ(flash_writes(panel), 1);
  EXPECT_EQ(store_file(kNumberList), listed(1, kFirstNumber));
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, loud_set()));
  EXPECT_EQ(count_of("mydoled_all_display"), 0U);
  expect_set(panel, loud_set());
}

TEST_P(PanelLifeTest, APanelThatForgetsItsConfigurationIsToldAgain) {
  PctPanel& panel = new_panel();
  plug(panel, 1);
  enumerate(1);
  ASSERT_EQ(save(panel, loud_set(), 6), 1);
  panel.controller.set_pos_config({0x21, 0x00, 0x10, 0xA4});
  enumerate(1);
  expect_in_force(panel, loud_set());
}

// --- moving ---

TEST_P(PanelLifeTest, APanelMovedToAnotherPortKeepsItsSettings) {
  PctPanel& panel = new_panel();
  plug(panel, 1);
  enumerate(1);
  ASSERT_EQ(save(panel, loud_set(), 6), 1);
  move(panel, 3);
  enumerate(1);
  EXPECT_EQ(number_of(panel), kFirstNumber);
  EXPECT_EQ(store_file(kNumberList), listed(3, kFirstNumber));
  EXPECT_EQ(store_file(kRecords), record(3, kFirstNumber, loud_set()));
  EXPECT_EQ(count_of("mydoled_all_display 0x80000"), 1U) << "its record has another path";
  expect_set(panel, loud_set());
}

TEST_P(PanelLifeTest, APanelMovedThereAndBackKeepsItsSettings) {
  PctPanel& panel = new_panel();
  plug(panel, 1);
  enumerate(1);
  ASSERT_EQ(save(panel, loud_set(), 6), 1);
  for (const int port : {12, 2, 1}) {
    move(panel, port);
    enumerate(1);
    EXPECT_EQ(store_file(kRecords), record(port, kFirstNumber, loud_set()));
    expect_set(panel, loud_set());
  }
  EXPECT_EQ(flash_writes(panel), 1);
}

// --- replacing ---

TEST_P(PanelLifeTest, AReplacementAtTheSamePortInheritsAndTakesTheRecordOver) {
  PctPanel& old_panel = new_panel();
  plug(old_panel, 1);
  enumerate(1);
  ASSERT_EQ(save(old_panel, loud_set(), 6), 1);
  unplug(old_panel);
  next_random(0x10);
  PctPanel& panel = new_panel();
  plug(panel, 1);
  enumerate(1);
  EXPECT_EQ(number_of(panel), kSecondNumber);
  EXPECT_EQ(panel.controller.flash(), identity_block(kSecondNumber, revision()));
  EXPECT_EQ(store_file(kNumberList), listed(1, kSecondNumber));
  EXPECT_EQ(store_file(kRecords), record(1, kSecondNumber, loud_set()));
  expect_set(panel, loud_set());
}

TEST_P(PanelLifeTest, AReplacementAtAnotherPortInheritsIntoARecordOfItsOwn) {
  PctPanel& old_panel = new_panel();
  plug(old_panel, 1);
  enumerate(1);
  ASSERT_EQ(save(old_panel, loud_set(), 6), 1);
  unplug(old_panel);
  next_random(0x10);
  PctPanel& panel = new_panel();
  plug(panel, 2);
  enumerate(1);
  EXPECT_EQ(number_of(panel), kSecondNumber);
  EXPECT_EQ(store_file(kNumberList), listed(1, kFirstNumber) + listed(2, kSecondNumber));
  EXPECT_EQ(store_file(kRecords),
            record(1, kFirstNumber, loud_set()) + record(2, kSecondNumber, loud_set()));
  expect_set(panel, loud_set());

  // What is changed there is not changed for the panel that it came from.
  ASSERT_EQ(save(panel, quiet_set(), 6), 1);
  plug(old_panel, 1);
  enumerate(2);
  EXPECT_EQ(store_file(kRecords),
            record(1, kFirstNumber, loud_set()) + record(2, kSecondNumber, quiet_set()));
  expect_set(old_panel, loud_set());
  expect_set(panel, quiet_set());
}

TEST_P(PanelLifeTest, APanelOfAnotherUsbIdAtAnotherPortInheritsNothing) {
  PctPanel& old_panel = new_panel();
  plug(old_panel, 1);
  enumerate(1);
  ASSERT_EQ(save(old_panel, loud_set(), 6), 1);
  unplug(old_panel);
  const Keys other{phys_of(1), digits(kFirstNumber), "3A4C_0040"};
  write_file(kRecords, store_record(other, payload(loud_set(), kFirstNumber)));
  next_random(0x10);
  PctPanel& panel = new_panel();
  plug(panel, 2);
  enumerate(1);
  EXPECT_EQ(store_file(kRecords), store_record(other, payload(loud_set(), kFirstNumber)) +
                                      record(2, kSecondNumber, default_set()));
  expect_set(panel, default_set());
}

// --- two of a kind ---

class TwoPanelsTest : public PanelLifeBench {
 protected:
  // Each with its own number and settings.
  void SetUp() override {
    PanelLifeBench::SetUp();
    plug(loud, 1);
    enumerate(1);
    next_random(0x10);
    plug(quiet, 2);
    enumerate(2);
    ASSERT_EQ(save(loud, loud_set(), 6), 1);
    ASSERT_EQ(save(quiet, quiet_set(), 6), 1);
  }

  void expect_each_its_own() {
    enumerate(2);
    EXPECT_EQ(number_of(loud), kFirstNumber);
    EXPECT_EQ(number_of(quiet), kSecondNumber);
    expect_set(loud, loud_set());
    expect_set(quiet, quiet_set());
  }

  PctPanel& loud = new_panel();
  PctPanel& quiet = new_panel();
};
INSTANTIATE_TEST_SUITE_P(Pct, TwoPanelsTest, testing::ValuesIn(kMakes), make_name);

TEST_P(TwoPanelsTest, IdenticalPanelsStayApart) {
  expect_each_its_own();
  EXPECT_EQ(store_file(kRecords),
            record(1, kFirstNumber, loud_set()) + record(2, kSecondNumber, quiet_set()));
  EXPECT_EQ(store_file(kNumberList), listed(1, kFirstNumber) + listed(2, kSecondNumber));
}

TEST_P(TwoPanelsTest, PanelsThatSwapPortsTakeTheirSettingsAlong) {
  unplug(loud);
  unplug(quiet);
  plug(loud, 2);
  plug(quiet, 1);
  expect_each_its_own();
  EXPECT_EQ(store_file(kRecords),
            record(2, kFirstNumber, loud_set()) + record(1, kSecondNumber, quiet_set()));
}

TEST_P(TwoPanelsTest, OneThatIsGoneKeepsItsRecord) {
  unplug(quiet);
  enumerate(1);
  ASSERT_EQ(save(loud, default_set(), 6), 1);
  EXPECT_EQ(store_file(kRecords),
            record(1, kFirstNumber, default_set()) + record(2, kSecondNumber, quiet_set()));
  ASSERT_EQ(save(loud, loud_set(), 6), 1);
  plug(quiet, 7);
  expect_each_its_own();
  EXPECT_EQ(store_file(kRecords),
            record(1, kFirstNumber, loud_set()) + record(7, kSecondNumber, quiet_set()));
}

TEST_P(TwoPanelsTest, EachIsRevertedAlone) {
  fetched(loud, 3);
  fetched(quiet, 3);
  ASSERT_EQ(save(loud, default_set(), 6), 1);
  ASSERT_EQ(save(quiet, default_set(), 6), 1);
  ASSERT_EQ(revert(quiet), 1);
  EXPECT_EQ(store_file(kRecords),
            record(1, kFirstNumber, default_set()) + record(2, kSecondNumber, quiet_set()));
  EXPECT_EQ(store_file(kTemporaryRecords),
            record(1, kFirstNumber, loud_set()) + erased(2, kSecondNumber));
  ASSERT_EQ(revert(loud, 5), 1);
  expect_each_its_own();
}

}  // namespace
