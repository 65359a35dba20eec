// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A controller's whole EEPROM as a file: taken out, put back, compared.
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/bytes.h"
#include "core/file_rewrite.h"
#include "core/log.h"
#include "core/scoped.h"
#include "zelkora.h"

using zelkora::kTrace;

namespace {

constexpr int kPages = 4;
constexpr int kPageSize = 32;
constexpr int kImageSize = kPages * kPageSize;

// An image file: the EEPROM and the sum of its bytes, low byte first.
struct Image {
  uint8_t bytes[kImageSize];
  uint8_t stored_sum[2];

  unsigned sum() const { return CheckSum(bytes, kImageSize); }
  unsigned stored() const { return zelkora::get_le16(stored_sum); }
  uint8_t* page(int number) { return bytes + kPageSize * number; }
};
static_assert(sizeof(Image) == 130);

// Bytes that a short file lacks stay 0.
bool read_image(const char* path, Image& image, const char* open_error) {
  const zelkora::ScopedFile file(std::fopen(path, "rb"));
  if (!file) {
    std::fprintf(stderr, open_error, path);
    return false;
  }
  static_cast<void>(!std::fread(image.bytes, 1, sizeof image.bytes, file.get()));
  static_cast<void>(!std::fread(image.stored_sum, 1, sizeof image.stored_sum, file.get()));
  return true;
}

bool open_device(int devnum) {
  if (OpenTouchDevice(devnum) != 0) return true;
  CloseTouchDevice(devnum);
  return false;
}

void log_progress(int page) { DebugMsg(kTrace, "%02d%% \n", 25 * (page + 1)); }

bool load_page(Image& image, int page) {
  uint8_t read[kPageSize]{};
  if (AXI_ReadEEPValue(page, read) == 0) {
    DebugMsg(kTrace, "Load EEPROM fail.\n");
    return false;
  }
  std::memcpy(image.page(page), read, sizeof read);
  for (int i = 0; i < kPageSize; ++i) {
    DebugMsg(kTrace, "RadeEepromData[%d]0x%x tmpEepromData[%d]0x%x\n", kPageSize * page + i,
             image.page(page)[i], i, read[i]);
  }
  log_progress(page);
  return true;
}

// Compares sums, not bytes, so two pages of the same sum pass: what restores images was built on it.
bool verify_page(Image& image, int page) {
  uint8_t read[kPageSize]{};
  const bool done = AXI_ReadEEPValue(page, read) != 0;
  for (int i = 0; i < kPageSize; ++i) {
    DebugMsg(kTrace, "WriteEepromData[%d]0x%x ReadEepromData[%d]0x%x\n", kPageSize * page + i,
             image.page(page)[i], i, read[i]);
  }
  if (!done || CheckSum(image.page(page), kPageSize) != CheckSum(read, kPageSize)) return false;
  log_progress(page);
  return true;
}

bool write_pages(Image& image) {
  for (int page = 0; page < kPages; ++page) {
    if (AXI_WriteEEPValue(page, image.page(page)) == 0 || !verify_page(image, page)) {
      DebugMsg(kTrace, "Write EEPROM fail.\n");
      return false;
    }
  }
  DebugMsg(kTrace, "write complete\n");
  return true;
}

bool read_device(int devnum, Image& image) {
  if (!open_device(devnum)) return false;
  bool done = true;
  for (int page = 0; page < kPages && done; ++page) {
    done = AXI_ReadEEPValue(page, image.page(page)) != 0;
    if (!done) DebugMsg(kTrace, "Load EEPROM fail.");
  }
  CloseTouchDevice(devnum);
  return done;
}

void log_differences(const Image& device, const Image& file) {
  for (int i = 0; i < kImageSize; ++i) {
    DebugMsg(kTrace, "Dev[%d]=0x%02x File[%d]=0x%02x", i, device.bytes[i], i, file.bytes[i]);
    if (device.bytes[i] != file.bytes[i]) DebugMsg(kTrace, "<--error");
    DebugMsg(kTrace, "\n");
  }
}

}  // namespace

int AXI_LoadDevToFile(int devnum, const char* path) {
  if (devnum < 0) return 0;
  Image image{};
  // The name is that of the entry before: the number was once counted from 1.
  DebugMsg(kTrace, "AXI_LoadDevToFile DevNum=%d  DeviceName=%s\n", devnum,
           devnum == 0 ? "" : TouchDevice[devnum - 1].Name);
  if (!open_device(devnum)) return 0;
  bool loaded = true;
  for (int page = 0; page < kPages && loaded; ++page) loaded = load_page(image, page);
  CloseTouchDevice(devnum);
  if (!loaded) return 0;

  zelkora::put_le16(image.stored_sum, image.sum());
  if (!zelkora::replace_file(path, {reinterpret_cast<const char*>(&image), sizeof image})) {
    std::fprintf(stderr, "Unable to open file %s", path);
    return 0;
  }
  DebugMsg(kTrace, "Load complete\n");
  return 1;
}

int AXI_WriteFileToDev(int devnum, const char* path) {
  if (devnum < 0) return 0;
  Image image{};
  if (!read_image(path, image, "Unable to open file %s\n")) return 0;
  if (image.sum() != image.stored()) {
    DebugMsg(kTrace, "Invalid file content.\n");
    return 0;
  }
  if (!open_device(devnum)) return 0;
  DebugMsg(kTrace, "Writing....\n");
  const bool written = write_pages(image);
  CloseTouchDevice(devnum);
  return written ? 1 : 0;
}

int AXI_CompareFileAndDev(int devnum, const char* path) {
  if (devnum < 0) return 0;
  Image file{};
  Image device{};
  if (!read_image(path, file, "Unable to open file %s")) return 0;
  if (!read_device(devnum, device)) return 0;
  log_differences(device, file);
  DebugMsg(kTrace, "EEPROM Checksum:0x%x file Checksum:0x%x\n", device.sum(), file.stored());
  if (device.sum() == file.stored()) return 1;
  DebugMsg(kTrace, "checksum error.\n");
  return 0;
}
