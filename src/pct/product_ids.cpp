// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "product_ids.h"

#include "zelkora.h"

namespace {

struct DefaultProduct {
  unsigned vendor;
  unsigned product;
};

constexpr DefaultProduct kDefaultProducts[] = {
    {0x3A4C, 0x0040}, {0x2575, 0x8753}, {0x3D8E, 0x3D28}};
constexpr unsigned kOtherProduct = 0x8753;

}  // namespace

unsigned int GetDefaultPID(unsigned int vid) {
  for (const DefaultProduct& row : kDefaultProducts) {
    if (row.vendor == vid) return row.product;
  }
  return kOtherProduct;
}

unsigned zelkora::pct::digitizer_product(unsigned vid, unsigned pid) {
  return is_mode_product(pid) ? GetDefaultPID(vid) : pid;
}
