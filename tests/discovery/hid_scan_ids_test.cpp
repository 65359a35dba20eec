// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Which ids make a node a resistive or a PCT panel, by the host's configuration.
#include "discovery_bench.h"

namespace {

using zelkora::sim::UsbIdentity;

struct IdCase {
  const char* name;
  uint16_t vendor;
  uint16_t product;
  bool resistive;        // configuration byte 0
  bool new_products;     // byte 1
  bool alternative_pct;  // byte 2
  bool hidraw;
  int type;  // 0: not taken
};

constexpr bool kOn = true;
constexpr bool kOff = false;

constexpr IdCase kCases[] = {
    // The vendor in both lists.
    {"old_product", 0x3A4C, 0x1688, kOn, kOff, kOff, kOff, 1},
    {"old_product_with_new_products", 0x3A4C, 0x1688, kOn, kOn, kOff, kOff, 3},
    {"new_product", 0x3A4C, 0x2088, kOn, kOn, kOff, kOff, 1},
    {"new_product_with_old_products", 0x3A4C, 0x2088, kOn, kOff, kOff, kOff, 3},
    {"strange_product", 0x3A4C, 0x9999, kOn, kOff, kOff, kOff, 3},
    {"without_resistive_support", 0x3A4C, 0x1688, kOff, kOff, kOff, kOff, 3},
    {"on_hidraw", 0x3A4C, 0x1688, kOn, kOff, kOff, kOn, 3},
    {"new_product_on_hidraw", 0x3A4C, 0x2088, kOn, kOn, kOff, kOn, 3},
    {"strange_product_alternative_list", 0x3A4C, 0x9999, kOn, kOff, kOn, kOff, 0},
    {"old_product_alternative_list", 0x3A4C, 0x1688, kOn, kOff, kOn, kOff, 1},
    {"alternative_list_on_hidraw", 0x3A4C, 0x1688, kOn, kOff, kOn, kOn, 0},
    // Resistive vendors that are no PCT vendors.
    {"resistive_only", 0x3C62, 0x0001, kOn, kOff, kOff, kOff, 1},
    {"resistive_only_on_hidraw", 0x3C62, 0x0001, kOn, kOff, kOff, kOn, 0},
    {"resistive_only_strange_product", 0x3C62, 0x9999, kOn, kOff, kOff, kOff, 0},
    {"resistive_only_without_support", 0x3C62, 0x0001, kOff, kOff, kOff, kOff, 0},
    {"last_resistive_vendor", 0x1234, 0x0005, kOn, kOff, kOff, kOff, 1},
    {"product_8008", 0x1234, 0x8008, kOn, kOff, kOff, kOff, 1},
    {"product_8888", 0x1234, 0x8888, kOn, kOff, kOff, kOff, 1},
    {"last_new_product", 0x1234, 0x2988, kOn, kOn, kOff, kOff, 1},
    // Resistive by default, PCT besides in the alternative list.
    {"second_resistive_vendor", 0x3B17, 0x1368, kOn, kOff, kOff, kOff, 1},
    {"second_resistive_vendor_strange_product", 0x3B17, 0x9999, kOn, kOff, kOff, kOff, 0},
    {"first_alternative_pct_vendor", 0x3B17, 0x9999, kOn, kOff, kOn, kOff, 3},
    {"resistive_before_alternative_pct", 0x3B17, 0x1368, kOn, kOff, kOn, kOff, 1},
    {"first_alternative_on_hidraw", 0x3B17, 0x1368, kOn, kOff, kOn, kOn, 3},
    // PCT vendors, whatever the product.
    {"pct", 0x2575, 0x8753, kOn, kOff, kOff, kOff, 3},
    {"pct_on_hidraw", 0x2575, 0x8753, kOn, kOff, kOff, kOn, 3},
    {"pct_with_a_resistive_product", 0x2575, 0x1688, kOn, kOff, kOff, kOff, 3},
    {"pct_without_resistive_support", 0x2575, 0x0000, kOff, kOff, kOff, kOff, 3},
    {"pct_alternative_list", 0x2575, 0xFFFF, kOff, kOff, kOn, kOff, 3},
    {"third_pct_vendor", 0x3D8E, 0x0001, kOff, kOff, kOff, kOff, 3},
    {"third_pct_vendor_alternative_list", 0x3D8E, 0x0001, kOff, kOff, kOn, kOff, 0},
    {"fourth_pct_vendor", 0x3E05, 0x0001, kOff, kOff, kOff, kOff, 3},
    {"fourth_pct_vendor_alternative_list", 0x3E05, 0x0001, kOff, kOff, kOn, kOff, 0},
    // Strangers.
    {"zero", 0x0000, 0x0000, kOn, kOff, kOff, kOff, 0},
    {"highest", 0xFFFF, 0xFFFF, kOn, kOn, kOff, kOn, 0},
};

class HidScanIdsTest : public zelkora::test::DiscoveryBench,
                       public testing::WithParamInterface<IdCase> {};

TEST_P(HidScanIdsTest, GoByTheConfiguration) {
  const IdCase& row = GetParam();
  host.config = {row.resistive, row.new_products, row.alternative_pct, 0, 0, 1};
  write_resistive_list("Panel\n");
  write_pct_list("Panel\n");
  add(row.hidraw ? "/dev/hidraw0" : "/dev/usb/hiddev0",
      {row.vendor, row.product, "Virtual", "Panel"});
  EXPECT_EQ(GetTouchPanels(0), row.type == 0 ? 0 : 1);
  EXPECT_EQ(TouchDevice[0].Type, row.type);
  EXPECT_EQ(PCTDeviceNumber, row.type == 3 ? 1 : 0);
  // A node of strange ids is left open, every other one is closed.
  expect_leaked_descriptors(row.type == 0 ? 1 : 0);
}

INSTANTIATE_TEST_SUITE_P(All, HidScanIdsTest, testing::ValuesIn(kCases),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
