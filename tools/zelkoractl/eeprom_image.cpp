// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "eeprom_image.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

namespace zelkoractl {
namespace {

using File = std::unique_ptr<FILE, int (*)(FILE*)>;

constexpr size_t kFileSize = sizeof(EepromImage) + 2;

std::array<unsigned char, 2> checksum_of(EepromImage image) {
  const unsigned sum = CheckSum(image.data(), image.size());
  return {static_cast<unsigned char>(sum & 0xFF), static_cast<unsigned char>(sum >> 8 & 0xFF)};
}

unsigned char* page_of(EepromImage& image, int page) {
  return image.data() + static_cast<size_t>(page) * kEepromPageSize;
}

// Pages take their time: on a terminal, how far it is.
class Progress {
 public:
  explicit Progress(std::string doing) : doing_(std::move(doing)), shown_(isatty(STDERR_FILENO)) {}
  ~Progress() {
    if (shown_) std::fputs("\r\033[K", stderr);
  }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  void begin(int page) const {
    if (shown_) std::fprintf(stderr, "\r%s: %3d%%", doing_.c_str(), 100 * page / kEepromPages);
  }

 private:
  std::string doing_;
  bool shown_;
};

[[noreturn]] void no_image(const std::string& path, const std::string& why) {
  throw Failure(ExitCode::kUsage, path + " " + why, "",
                "name a file that zelkoractl eeprom backup wrote");
}

}  // namespace

EepromImage read_image_file(const std::string& path) {
  const File file(std::fopen(path.c_str(), "rbe"), std::fclose);
  if (!file) no_image(path, std::string("cannot be read: ") + std::strerror(errno));
  std::array<unsigned char, kFileSize + 1> bytes{};
  const size_t count = std::fread(bytes.data(), 1, bytes.size(), file.get());
  if (std::ferror(file.get()) != 0) {
    no_image(path, std::string("cannot be read: ") + std::strerror(errno));
  }
  if (count != kFileSize) {
    no_image(path, "is no EEPROM image: it has not " + std::to_string(kFileSize) + " bytes");
  }
  EepromImage image;
  std::copy_n(bytes.begin(), image.size(), image.begin());
  const auto sum = checksum_of(image);
  if (!std::equal(sum.begin(), sum.end(), bytes.begin() + image.size())) {
    no_image(path, "is damaged: its checksum is not that of its bytes");
  }
  return image;
}

void write_image_file(const std::string& path, const EepromImage& image) {
  const auto sum = checksum_of(image);
  const std::string fresh = path + ".new";
  bool done = false;
  int error = 0;
  const int fd = open(fresh.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, 0666);
  if (fd >= 0) {
    std::array<unsigned char, kFileSize> bytes;
    std::copy(sum.begin(), sum.end(), std::copy(image.begin(), image.end(), bytes.begin()));
    done = write(fd, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()) &&
           fsync(fd) == 0;
    error = errno;
    close(fd);
    if (done) {
      done = std::rename(fresh.c_str(), path.c_str()) == 0;
      error = errno;
    }
    if (!done) unlink(fresh.c_str());
  } else {
    error = errno;
  }
  if (done) return;
  throw Failure(ExitCode::kFailed, path + " cannot be written: " + std::strerror(error), "",
                "name a file in a directory that can be written");
}

EepromImage fetch_image(const Panel& panel, const std::string& doing) {
  const OpenPanel open(panel);
  const Progress progress(doing);
  EepromImage image{};
  for (int page = 0; page < kEepromPages; ++page) {
    progress.begin(page);
    if (AXI_ReadEEPValue(page, page_of(image, page)) != 0) continue;
    throw Failure(ExitCode::kFailed,
                  call(panel) + " did not tell page " + std::to_string(page) + " of its EEPROM",
                  panel.node, "check that the panel is still plugged in, then try again");
  }
  return image;
}

std::optional<int> write_image(const Panel& panel, const EepromImage& image,
                               const std::string& doing) {
  const OpenPanel open(panel);
  const Progress progress(doing);
  EepromImage wanted = image;
  EepromImage held{};
  for (int page = 0; page < kEepromPages; ++page) {
    progress.begin(page);
    const unsigned char* const bytes = page_of(wanted, page);
    const bool taken = AXI_WriteEEPValue(page, bytes) != 0 &&
                       AXI_ReadEEPValue(page, page_of(held, page)) != 0 &&
                       std::equal(bytes, bytes + kEepromPageSize, page_of(held, page));
    if (!taken) return page;
  }
  return std::nullopt;
}

std::optional<size_t> first_difference(const EepromImage& one, const EepromImage& other) {
  const auto differs = std::ranges::mismatch(one, other).in1;
  if (differs == one.end()) return std::nullopt;
  return static_cast<size_t>(differs - one.begin());
}

}  // namespace zelkoractl
