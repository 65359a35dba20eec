// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "zelkora.h"

namespace {

TEST(ProductIdsTest, EachVendorHasItsDefaultProduct) {
  const struct {
    unsigned vendor, product;
  } kRows[] = {{0x3A4C, 0x0040}, {0x2575, 0x8753}, {0x3D8E, 0x3D28}, {0x0000, 0x8753},
               {0x2576, 0x8753}, {0xFFFF, 0x8753}, {0x4C3A, 0x8753}, {0x13A4C, 0x8753}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.vendor);
    EXPECT_EQ(GetDefaultPID(row.vendor), row.product);
  }
}

}  // namespace
