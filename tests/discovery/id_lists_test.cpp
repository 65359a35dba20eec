// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The built-in id table.
#include <algorithm>
#include <iterator>
#include <vector>

#include "support/bench.h"

namespace {

using zelkora::test::data_file;
using zelkora::test::write_file;
using IdListsTest = zelkora::test::Bench;

using Ids = std::vector<unsigned>;
using Check = int (*)(unsigned);

const Ids kResistiveVendors = {0x3A4C, 0x3B17, 0x3C62, 0x1234};
const Ids kOldProducts = {0x1688, 0x0001, 0x0006, 0x0008, 0x3050, 0x1668, 0x1568, 0x1368,
                          0x1268, 0x6968, 0x5968, 0x1968, 0x2968, 0x8008, 0x0005, 0x8888};
const Ids kNewProducts = {0x2088, 0x2188, 0x2288, 0x2388, 0x2488,
                          0x2588, 0x2688, 0x2788, 0x2888, 0x2988};

Ids joined(Ids first, const Ids& second) {
  std::ranges::copy(second, std::back_inserter(first));
  return first;
}

// All 16-bit ids that a check accepts, in ascending order.
Ids accepted(Check check) {
  Ids ids;
  for (unsigned id = 0; id <= 0xFFFF; ++id) {
    const int result = check(id);
    EXPECT_TRUE(result == 0 || result == 1) << id;
    if (result != 0) ids.push_back(id);
  }
  return ids;
}

Ids sorted(Ids ids) {
  std::ranges::sort(ids);
  return ids;
}

TEST_F(IdListsTest, LoadVidPidFillsTheTableInOrder) {
  LoadVidPid();
  EXPECT_EQ(cMyHidInfo.ResVendorCount, 4);
  EXPECT_EQ(cMyHidInfo.ResProductCount, 26);
  EXPECT_EQ(cMyHidInfo.PctVendorCount, 4);
  EXPECT_TRUE(std::ranges::equal(cMyHidInfo.ResVendorIds, kResistiveVendors));
  EXPECT_TRUE(std::ranges::equal(cMyHidInfo.ResProductIds, joined(kOldProducts, kNewProducts)));
  EXPECT_TRUE(std::ranges::equal(cMyHidInfo.PctVendorIds, Ids{0x2575, 0x3A4C, 0x3D8E, 0x3E05}));
}

TEST_F(IdListsTest, TheAlternativePctVendorsAreTwoAndKeepTheLastTwoSlots) {
  LoadVidPid();
  MyConfig[2] = 1;
  LoadVidPid();
  EXPECT_EQ(cMyHidInfo.PctVendorCount, 2);
  EXPECT_TRUE(std::ranges::equal(cMyHidInfo.PctVendorIds, Ids{0x3B17, 0x2575, 0x3D8E, 0x3E05}));
  EXPECT_EQ(ChkPCTVid(0x3E05), 0);
  EXPECT_EQ(ChkPCTVid(0x3D8E), 0);
}

TEST_F(IdListsTest, AnyNonZeroByteChoosesTheAlternativePctVendors) {
  MyConfig[2] = 0x80;
  LoadVidPid();
  EXPECT_EQ(accepted(ChkPCTVid), sorted({0x3B17, 0x2575}));
  EXPECT_TRUE(std::ranges::equal(cMyHidInfo.PctVendorIds, Ids{0x3B17, 0x2575, 0, 0}));
}

TEST_F(IdListsTest, LoadVidPidRestoresATableThatAHostChanged) {
  LoadVidPid();
  cMyHidInfo = {};
  LoadVidPid();
  EXPECT_EQ(ChkVid(0x1234), 1);
  EXPECT_EQ(ChkAllPid(0x2988), 1);
  EXPECT_EQ(ChkPCTVid(0x3E05), 1);
}

TEST_F(IdListsTest, LoadVidPidReadsTheModeFlags) {
  write_file(data_file("mousedef"), "");
  LoadVidPid();
  EXPECT_EQ(isPureMouse, 1);
  EXPECT_EQ(isHybrid, 0);

  ASSERT_EQ(DelFile(data_file("mousedef").c_str()), 1);
  write_file(data_file(".hybrid"), "");
  LoadVidPid();
  EXPECT_EQ(isPureMouse, 0);
  EXPECT_EQ(isHybrid, 1);
}

TEST_F(IdListsTest, EachCheckAcceptsItsOwnIdsAndNoOther) {
  LoadVidPid();
  EXPECT_EQ(accepted(ChkVid), sorted(kResistiveVendors));
  EXPECT_EQ(accepted(ChkOldPid), sorted(kOldProducts));
  EXPECT_EQ(accepted(ChkNewPid), sorted(kNewProducts));
  EXPECT_EQ(accepted(ChkAllPid), sorted(joined(kOldProducts, kNewProducts)));
  EXPECT_EQ(accepted(ChkPCTVid), sorted({0x2575, 0x3A4C, 0x3D8E, 0x3E05}));
}

TEST_F(IdListsTest, NoIdIsAcceptedBeforeTheTableIsLoaded) {
  EXPECT_EQ(ChkVid(0x3A4C), 0);
  EXPECT_EQ(ChkOldPid(0x1688), 0);
  EXPECT_EQ(ChkNewPid(0x2088), 0);
  EXPECT_EQ(ChkAllPid(0x1688), 0);
  EXPECT_EQ(ChkPCTVid(0x2575), 0);
}

TEST_F(IdListsTest, IdsAreComparedInFullWidth) {
  LoadVidPid();
  EXPECT_EQ(ChkVid(0x13A4C), 0);
  EXPECT_EQ(ChkOldPid(0xFFFF8008), 0);
  EXPECT_EQ(ChkNewPid(0x12088), 0);
  EXPECT_EQ(ChkAllPid(0xFFFF8888), 0);
  EXPECT_EQ(ChkPCTVid(0x12575), 0);
}

TEST_F(IdListsTest, TheChecksUseTheCountsOfTheTable) {
  LoadVidPid();
  cMyHidInfo.ResVendorCount = 2;
  cMyHidInfo.ResProductCount = 18;
  cMyHidInfo.PctVendorCount = 1;
  EXPECT_EQ(accepted(ChkVid), sorted({0x3A4C, 0x3B17}));
  EXPECT_EQ(accepted(ChkNewPid), sorted({0x2088, 0x2188}));
  EXPECT_EQ(accepted(ChkAllPid), sorted(joined(kOldProducts, {0x2088, 0x2188})));
  EXPECT_EQ(accepted(ChkPCTVid), Ids{0x2575});
}

TEST_F(IdListsTest, TheOldGenerationIsTheFirstSixteenWhateverTheCount) {
  LoadVidPid();
  cMyHidInfo.ResProductCount = 0;
  EXPECT_EQ(accepted(ChkOldPid), sorted(kOldProducts));
  EXPECT_EQ(accepted(ChkNewPid), Ids{});
}

TEST_F(IdListsTest, ACountAbove127IsNegativeAndHoldsNothing) {
  LoadVidPid();
  cMyHidInfo.ResVendorCount = -1;
  cMyHidInfo.ResProductCount = -128;
  cMyHidInfo.PctVendorCount = -2;
  EXPECT_EQ(ChkVid(0x3A4C), 0);
  EXPECT_EQ(ChkNewPid(0x2088), 0);
  EXPECT_EQ(ChkAllPid(0x1688), 0);
  EXPECT_EQ(ChkPCTVid(0x2575), 0);
}

TEST_F(IdListsTest, ACountBeyondTheTableEndsWithTheTable) {
  LoadVidPid();
  cMyHidInfo.ResVendorCount = 127;
  cMyHidInfo.ResProductCount = 127;
  cMyHidInfo.PctVendorCount = 127;
  EXPECT_EQ(accepted(ChkVid), sorted(kResistiveVendors));
  EXPECT_EQ(accepted(ChkNewPid), sorted(kNewProducts));
  EXPECT_EQ(accepted(ChkPCTVid), sorted({0x2575, 0x3A4C, 0x3D8E, 0x3E05}));
}

}  // namespace
