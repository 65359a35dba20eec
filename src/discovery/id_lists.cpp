// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Which USB devices are touch controllers: the built-in id table and the product-name lists.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <span>

#include "core/file_rewrite.h"
#include "core/log.h"
#include "core/open_file.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "core/text.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

constexpr unsigned kResVendorIds[] = {0x3A4C, 0x3B17, 0x3C62, 0x1234};
constexpr unsigned kResProductIds[] = {
    // old generation
    0x1688, 0x0001, 0x0006, 0x0008, 0x3050, 0x1668, 0x1568, 0x1368, 0x1268, 0x6968, 0x5968, 0x1968,
    0x2968, 0x8008, 0x0005, 0x8888,
    // new generation
    0x2088, 0x2188, 0x2288, 0x2388, 0x2488, 0x2588, 0x2688, 0x2788, 0x2888, 0x2988};
constexpr int kOldProducts = 16;
constexpr unsigned kPctVendorIds[] = {0x2575, 0x3A4C, 0x3D8E, 0x3E05};
constexpr unsigned kAlternativePctVendorIds[] = {0x3B17, 0x2575};

static_assert(std::size(kResVendorIds) == std::size(HidInfoTable{}.ResVendorIds));
static_assert(std::size(kResProductIds) == std::size(HidInfoTable{}.ResProductIds));
static_assert(std::size(kPctVendorIds) == std::size(HidInfoTable{}.PctVendorIds));

// The ids from `first` up to `count`, which the table keeps as a signed byte.
template <size_t kSize>
int holds(const unsigned (&ids)[kSize], int first, int count, unsigned id) {
  const int end = std::min(count, static_cast<int>(kSize));
  for (int i = first; i < end; ++i) {
    if (ids[i] == id) return 1;
  }
  return 0;
}

template <size_t kSize, size_t kRoom>
void put_ids(const unsigned (&ids)[kSize], unsigned (&table)[kRoom], signed char& count) {
  static_assert(kSize <= kRoom);
  std::ranges::copy(ids, table);
  count = static_cast<signed char>(kSize);
}

using NameList = char[ZELKORA_MAX_NAMES][ZELKORA_NAME_LENGTH];

// Reads one entry: up to 63 characters, and the line feed if it follows. The rest of a longer line
// is the next entry. False at the end of the file.
bool read_name(FILE* file, char (&name)[ZELKORA_NAME_LENGTH]) {
  size_t length = 0;
  int c = EOF;
  while (length < sizeof name && (c = std::getc(file)) != EOF && c != '\n') {
    if (length == sizeof name - 1) {
      std::ungetc(c, file);
      return true;
    }
    name[length++] = static_cast<char>(c);
  }
  return length > 0 || c == '\n';
}

// Loads a list and returns the number of names, -1 when there is no such file.
int load_names(const char* path, NameList& names) {
  std::memset(names, 0, sizeof names);
  const zelkora::ScopedFile file(zelkora::open_file(path, "r"));
  if (!file) return -1;
  int count = 0;
  while (count < ZELKORA_MAX_NAMES && read_name(file.get(), names[count])) ++count;
  return count;
}

}  // namespace

void LoadVidPid(void) {
  isPureMouse = ChkMouseMode();
  isHybrid = ChkHybridMode();
  put_ids(kResVendorIds, cMyHidInfo.ResVendorIds, cMyHidInfo.ResVendorCount);
  put_ids(kResProductIds, cMyHidInfo.ResProductIds, cMyHidInfo.ResProductCount);
  if (MyConfig[ZELKORA_CONFIG_ALTERNATIVE_PCT] != 0) {
    // The last two slots keep what they held; the count leaves them out.
    put_ids(kAlternativePctVendorIds, cMyHidInfo.PctVendorIds, cMyHidInfo.PctVendorCount);
  } else {
    put_ids(kPctVendorIds, cMyHidInfo.PctVendorIds, cMyHidInfo.PctVendorCount);
  }
}

int ChkVid(unsigned int vid) {
  return holds(cMyHidInfo.ResVendorIds, 0, cMyHidInfo.ResVendorCount, vid);
}

int ChkOldPid(unsigned int pid) { return holds(cMyHidInfo.ResProductIds, 0, kOldProducts, pid); }

int ChkNewPid(unsigned int pid) {
  return holds(cMyHidInfo.ResProductIds, kOldProducts, cMyHidInfo.ResProductCount, pid);
}

int ChkAllPid(unsigned int pid) {
  return holds(cMyHidInfo.ResProductIds, 0, cMyHidInfo.ResProductCount, pid);
}

int ChkPCTVid(unsigned int vid) {
  return holds(cMyHidInfo.PctVendorIds, 0, cMyHidInfo.PctVendorCount, vid);
}

int get_Manufacturer_list(void) {
  const int count = load_names(zelkora::paths::kPctNames, MatchProduct);
  if (count >= 0) return count;
  DebugMsg(kTrace, "can't open pct manuflist\n");
  return 0;
}

int get_Res_Manufacturer_list(void) {
  const int count = load_names(zelkora::paths::kResistiveNames, rMatchProduct);
  for (int i = 0; i < count; ++i) DebugMsg(kTrace, "Res List:%s", rMatchProduct[i]);
  if (count >= 0) return count;
  DebugMsg(kTrace, "can't open Res manuflist\n");
  return 0;
}

void set_Manufacturer_list(int count) {
  zelkora::NewContent content;
  if (content.stream() != nullptr) {
    for (const auto& name :
         std::span(MatchProduct).first(std::clamp<int>(count, 0, ZELKORA_MAX_NAMES))) {
      content.write(zelkora::field_text(name));
      content.write("\n");
    }
    if (content.commit(zelkora::paths::kPctNames)) return;
  }
  // The message names another file than the one written; hosts know it by this text.
  DebugMsg(zelkora::kError, "can't open idlist.conf!!\n");
}
