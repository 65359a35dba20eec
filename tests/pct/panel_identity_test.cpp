// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A panel whose identity changes under its settings, and settings that are changed, kept and
// reverted while the panel comes and goes.
#include "panel_life_bench.h"

namespace {

using namespace zelkora::test;

// One panel at port 1 that was seen before, with settings of its own.
class PanelIdentityTest : public PanelLifeBench {
 protected:
  void SetUp() override {
    PanelLifeBench::SetUp();
    plug(panel, 1);
    enumerate(1);
    ASSERT_EQ(save(panel, loud_set(), 6), 1);
    next_random(0x10);
  }

  // After a reset: a controller forgets nothing but is read again as another.
  void come_back() {
    move(panel, 1);
    enumerate(1);
  }

  PctPanel& panel = new_panel();
};
INSTANTIATE_TEST_SUITE_P(Pct, PanelIdentityTest, testing::ValuesIn(kMakes), make_name);

TEST_P(PanelIdentityTest, AFirmwareUpdateRewritesTheIdentityAndKeepsTheNumber) {
  panel.controller.set_firmware(make().firmware + 1);
  enumerate(1);
  EXPECT_EQ(number_of(panel), kFirstNumber);
  EXPECT_EQ(panel.controller.flash(), identity_block(kFirstNumber, revision() + 1));
  EXPECT_EQ(flash_writes(panel), 2);
  EXPECT_EQ(TouchDevice[0].FWRev, static_cast<int>(revision() + 1));
  EXPECT_EQ(TouchDevice[0].FWRevFlash, static_cast<int>(revision() + 1));
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, loud_set()));
  EXPECT_EQ(store_file(kNumberList), listed(1, kFirstNumber));
  expect_set(panel, loud_set());
  enumerate(1);
  EXPECT_EQ(flash_writes(panel), 2) << "once is enough";
}

TEST_P(PanelIdentityTest, AnUpdatedPanelAtAnotherPortKeepsItsSettings) {
  panel.controller.set_firmware(make().firmware + 1);
  move(panel, 5);
  enumerate(1);
  EXPECT_EQ(panel.controller.flash(), identity_block(kFirstNumber, revision() + 1));
  EXPECT_EQ(store_file(kRecords), record(5, kFirstNumber, loud_set()));
  expect_set(panel, loud_set());
}

TEST_P(PanelIdentityTest, AnIdentityWithABadChecksumGetsANewNumber) {
  zelkora::sim::PctController::Flash flash = panel.controller.flash();
  flash[32] ^= 1;
  panel.controller.set_flash(flash);
  enumerate(1);
  EXPECT_EQ(count_of("usleep 300000"), 11U) << "a wait behind each attempt to read it";
  EXPECT_EQ(number_of(panel), kSecondNumber);
  EXPECT_EQ(panel.controller.flash(), identity_block(kSecondNumber, revision()));
  EXPECT_EQ(flash_writes(panel), 2);
  EXPECT_EQ(store_file(kNumberList), listed(1, kSecondNumber));
  EXPECT_EQ(store_file(kRecords), record(1, kSecondNumber, loud_set()));
  expect_set(panel, loud_set());
}

TEST_P(PanelIdentityTest, AChecksumThatIsReadWellInTheEndCostsNoNumber) {
  panel.controller.faults.bad_checksums = 10;
  enumerate(1);
  EXPECT_EQ(count_of("usleep 300000"), 10U);
  EXPECT_EQ(number_of(panel), kFirstNumber);
  EXPECT_EQ(flash_writes(panel), 1);
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, loud_set()));
}

TEST_P(PanelIdentityTest, APanelClearedByItsUserIsANewOneWithTheSettingsOfItsPort) {
  expect_leaked_descriptors(1);
  ASSERT_EQ(EmptyFlash(0), 1);
  come_back();
  EXPECT_EQ(number_of(panel), kSecondNumber);
  EXPECT_EQ(store_file(kRecords), record(1, kSecondNumber, loud_set()));
  expect_set(panel, loud_set());
}

TEST_P(PanelIdentityTest, APanelThatBecomesAMouseKeepsItsIdentityAndSettings) {
  SetDevtoMouse(0);
  EXPECT_EQ(panel.controller.resets(), 1U);
  come_back();
  EXPECT_EQ(TouchDevice[0].PID, is_8752() ? 0x8752U : 0x9969U);
  EXPECT_EQ(TouchDevice[0].OldPID, make().product);
  EXPECT_EQ(TouchDevice[0].POSMode, 2);
  EXPECT_EQ(flash_writes(panel), 1);
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, loud_set())) << "found by its number";
  expect_set(panel, loud_set());
}

// --- change, keep, revert ---

TEST_P(PanelIdentityTest, AChangeIsRevertedAfterThePanelCameBack) {
  fetched(panel, 0);
  EXPECT_EQ(store_file(kTemporaryRecords), record(1, kFirstNumber, loud_set()));
  ASSERT_EQ(save(panel, quiet_set(), 6), 1);
  come_back();
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, quiet_set()));
  EXPECT_EQ(store_file(kTemporaryRecords), record(1, kFirstNumber, loud_set()));
  expect_set(panel, quiet_set());

  ASSERT_EQ(revert(panel), 1);
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, loud_set()));
  EXPECT_EQ(store_file(kTemporaryRecords), erased(1, kFirstNumber));
  expect_in_force(panel, loud_set());
  come_back();
  expect_set(panel, loud_set());
}

TEST_P(PanelIdentityTest, AChangeThatIsKeptIsWhatARevertGoesBackTo) {
  fetched(panel, 0);
  ASSERT_EQ(save(panel, quiet_set(), 1), 1);
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, quiet_set()));
  EXPECT_EQ(store_file(kTemporaryRecords), record(1, kFirstNumber, quiet_set()));
  come_back();
  ASSERT_EQ(revert(panel, 5), 1);
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, quiet_set()));
  expect_set(panel, quiet_set());
  EXPECT_EQ(revert(panel, 5), 0) << "once only";
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, quiet_set()));
}

TEST_P(PanelIdentityTest, AChangeIsRevertedAtAnotherPort) {
  fetched(panel, 3);
  ASSERT_EQ(save(panel, quiet_set(), 6), 1);
  move(panel, 4);
  enumerate(1);
  EXPECT_EQ(store_file(kTemporaryRecords), record(1, kFirstNumber, loud_set()));
  ASSERT_EQ(revert(panel), 1);
  EXPECT_EQ(store_file(kRecords), record(4, kFirstNumber, loud_set()));
  EXPECT_EQ(store_file(kTemporaryRecords), erased(4, kFirstNumber));
  expect_set(panel, loud_set());
}

TEST_P(PanelIdentityTest, AChangeOfThePanelBeforeIsNotRevertedOntoItsReplacement) {
  fetched(panel, 3);
  ASSERT_EQ(save(panel, quiet_set(), 6), 1);
  unplug(panel);
  PctPanel& replacement = new_panel();
  plug(replacement, 1);
  enumerate(1);
  EXPECT_EQ(revert(replacement), 0);
  EXPECT_EQ(store_file(kRecords), record(1, kSecondNumber, quiet_set()));
  EXPECT_EQ(store_file(kTemporaryRecords), record(1, kFirstNumber, loud_set()));
  expect_set(replacement, quiet_set());
}

TEST_P(PanelIdentityTest, ThePanelsParametersComeByItsIndex) {
  PCTDevInfo rec{};
  EXPECT_EQ(GetPCTParam(0, &rec), -1);
  EXPECT_EQ(settings_of(rec), settings_of(host_record(loud_set(), kFirstNumber)));
  EXPECT_STREQ(rec.FWVersion, is_8752() ? "S3.0.81(r564)" : "S8.7.53(r400)");
  EXPECT_EQ(rec.POSMode, 1);
}

TEST_P(PanelIdentityTest, TheDefaultsAreInForceOnceThePanelIsEnumerated) {
  // Command mode is not left by this one.
  ASSERT_EQ(SetPCTDefaultFlash(0), 1);
  EXPECT_EQ(store_file(kRecords), record(1, kFirstNumber, default_set()));
  expect_in_force(panel, loud_set());
  enumerate(1);
  expect_set(panel, default_set());
}

}  // namespace
