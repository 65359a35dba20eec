// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "serial_node.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/hiddev.h>
#include <sys/ioctl.h>
#include <termios.h>

#include <algorithm>
#include <array>
#include <bit>
#include <cerrno>
#include <string>
#include <vector>

#include "virtual_kernel.h"

namespace zelkora::sim {
namespace {

using Bytes = std::vector<uint8_t>;
using Lines = std::vector<std::string>;

constexpr char kSerial[] = "/dev/ttyS0";

// A port that keeps what it is sent.
class EchoPort final : public SerialDevice {
 public:
  void receive(std::span<const uint8_t> bytes) override {
    waiting.insert(waiting.end(), bytes.begin(), bytes.end());
  }
  Bytes transmit(size_t limit) override {
    const auto end = waiting.begin() + static_cast<ptrdiff_t>(std::min(limit, waiting.size()));
    Bytes bytes(waiting.begin(), end);
    waiting.erase(waiting.begin(), end);
    return bytes;
  }

  void discard() override { waiting.clear(); }
  bool has_hardware() const override { return fitted; }
  bool opens() override { return working; }
  void configure(const LineSettings& settings) override { heard.push_back(settings); }

  Bytes waiting;
  bool fitted = true;
  bool working = true;
  std::vector<LineSettings> heard;
};

class VirtualSerialTest : public testing::Test {
 protected:
  VirtualSerialTest() {
    attachment_ = kernel_.attach(port_, kSerial);
    handle_ = kernel_.open(kSerial, O_RDWR | O_NOCTTY | O_NONBLOCK);
    kernel_.set_trace([this](std::string line) { trace_.push_back(std::move(line)); });
  }

  int flush(int queue) {
    return kernel_.ioctl(handle_, TCFLSH, std::bit_cast<void*>(static_cast<intptr_t>(queue)));
  }

  EchoPort port_;
  VirtualKernel kernel_;
  int attachment_ = 0;
  int handle_ = 0;
  Lines trace_;
};

TEST_F(VirtualSerialTest, CarriesBytesBothWaysAndSaysWhenNothingWaits) {
  const Bytes bytes = {1, 0x5A, 0x0D};
  EXPECT_EQ(kernel_.write(handle_, bytes), 3);
  std::array<uint8_t, 10> room{};
  EXPECT_EQ(kernel_.read(handle_, std::span(room).first(2)), 2);
  EXPECT_EQ(kernel_.read(handle_, room), 1);
  EXPECT_EQ(room[0], 0x0D);
  EXPECT_EQ(kernel_.read(handle_, room), -EAGAIN);
  EXPECT_EQ(trace_, (Lines{"write /dev/ttyS0: 01 5A 0D", "read /dev/ttyS0 2: 01 5A",
                           "read /dev/ttyS0 10: 0D", "read /dev/ttyS0 10 -> EAGAIN"}));
}

TEST_F(VirtualSerialTest, FailsToOpenWhenTheDeviceDoes) {
  port_.working = false;
  EXPECT_EQ(kernel_.open(kSerial, O_RDWR), -EIO);
  port_.working = true;
  EXPECT_GT(kernel_.open(kSerial, O_RDWR), handle_);
  EXPECT_EQ(trace_, (Lines{"open /dev/ttyS0 O_RDWR -> EIO", "open /dev/ttyS0 O_RDWR"}));
}

TEST_F(VirtualSerialTest, OpensWithoutHardwareAndFailsFromThenOn) {
  port_.fitted = false;
  port_.waiting = {1};
  EXPECT_GT(kernel_.open(kSerial, O_RDWR), handle_);
  std::array<uint8_t, 10> room{};
  KernelTermios settings{};
  EXPECT_EQ(kernel_.ioctl(handle_, TCGETS, &settings), -EIO);
  EXPECT_EQ(kernel_.ioctl(handle_, TCSETS, &settings), -EIO);
  EXPECT_EQ(kernel_.ioctl(handle_, HIDIOCGVERSION, room.data()), -EIO);
  EXPECT_EQ(flush(TCIFLUSH), -EIO);
  EXPECT_EQ(kernel_.read(handle_, room), -EIO);
  EXPECT_EQ(kernel_.read(handle_, {}), -EIO);
  EXPECT_EQ(kernel_.write(handle_, room), -EIO);
  EXPECT_EQ(kernel_.write(handle_, {}), -EIO);
  EXPECT_EQ(kernel_.poll(handle_), 0);
  EXPECT_EQ(port_.waiting, Bytes{1});
  EXPECT_TRUE(port_.heard.empty());
}

TEST_F(VirtualSerialTest, DropsWhatWaitsWhenNobodyHasItOpen) {
  KernelTermios settings{};
  settings.control = B9600 | CS8 | CREAD | CLOCAL;
  kernel_.ioctl(handle_, TCSETS, &settings);
  const int other = kernel_.open(kSerial, O_RDWR);
  port_.waiting = {1, 2};
  kernel_.close(handle_);
  EXPECT_EQ(port_.waiting.size(), 2U);
  kernel_.close(other);
  EXPECT_TRUE(port_.waiting.empty());
  handle_ = kernel_.open(kSerial, O_RDWR);
  KernelTermios kept{};
  kernel_.ioctl(handle_, TCGETS, &kept);
  EXPECT_EQ(kept.control, settings.control);
}

TEST_F(VirtualSerialTest, StartsWithTheSettingsOfTheKernel) {
  KernelTermios settings{};
  EXPECT_EQ(kernel_.ioctl(handle_, TCGETS, &settings), 0);
  EXPECT_EQ(settings.input, 0x500U);
  EXPECT_EQ(settings.output, 0x5U);
  EXPECT_EQ(settings.control, 0xCBDU);
  EXPECT_EQ(settings.local, 0x8A3BU);
  constexpr uint8_t kCharacters[] = {0x03, 0x1C, 0x7F, 0x15, 0x04, 0x00, 0x01, 0x00, 0x11, 0x13,
                                     0x1A, 0x00, 0x12, 0x0F, 0x17, 0x16, 0x00, 0x00, 0x00};
  EXPECT_TRUE(std::ranges::equal(settings.characters, kCharacters));
  EXPECT_TRUE(port_.heard.empty());
  EXPECT_EQ(trace_, Lines{"ioctl TCGETS"});
}

TEST_F(VirtualSerialTest, KeepsTheSettingsAndTellsTheDevice) {
  for (const auto& [request, name] : {std::pair(TCSETS, "TCSETS"), std::pair(TCSETSW, "TCSETSW"),
                                      std::pair(TCSETSF, "TCSETSF")}) {
    SCOPED_TRACE(name);
    trace_.clear();
    KernelTermios settings{};
    settings.control = B9600 | CS8 | CREAD | CLOCAL;
    settings.local = 0xF;
    settings.characters[VMIN] = 1;
    settings.characters[VTIME] = 2;
    settings.characters[18] = 77;
    EXPECT_EQ(kernel_.ioctl(handle_, request, &settings), 0);
    EXPECT_EQ(port_.heard.back(), (LineSettings{0, 0, 0x8BD, 0xF, 1, 2}));
    KernelTermios kept{};
    EXPECT_EQ(kernel_.ioctl(handle_, TCGETS, &kept), 0);
    EXPECT_EQ(kept.characters[18], 77);
    EXPECT_EQ(trace_, (Lines{std::string("ioctl ") + name +
                                 " iflag=0 oflag=0 cflag=8BD lflag=F min=1 time=2",
                             "ioctl TCGETS"}));
  }
  EXPECT_EQ(port_.heard.size(), 3U);
}

TEST_F(VirtualSerialTest, DropsWhatWaitsWhenItsInputIsFlushed) {
  struct Case {
    int queue;
    int result;
    size_t left;
  };
  for (const auto& [queue, result, left] :
       {Case{TCIFLUSH, 0, 0}, Case{TCOFLUSH, 0, 2}, Case{TCIOFLUSH, 0, 0}, Case{3, -EINVAL, 2}}) {
    SCOPED_TRACE(queue);
    port_.waiting = {1, 2};
    EXPECT_EQ(flush(queue), result);
    EXPECT_EQ(port_.waiting.size(), left);
  }
  EXPECT_EQ(trace_, (Lines{"ioctl TCFLSH 0", "ioctl TCFLSH 1", "ioctl TCFLSH 2",
                           "ioctl TCFLSH 3 -> EINVAL"}));
}

TEST_F(VirtualSerialTest, DropsWhatWaitsOnlyWhenSettingsAreToFlush) {
  KernelTermios settings{};
  port_.waiting = {1, 2};
  kernel_.ioctl(handle_, TCSETS, &settings);
  kernel_.ioctl(handle_, TCSETSW, &settings);
  EXPECT_EQ(port_.waiting.size(), 2U);
  kernel_.ioctl(handle_, TCSETSF, &settings);
  EXPECT_TRUE(port_.waiting.empty());
}

TEST_F(VirtualSerialTest, RefusesRequests) {
  int value = 0;
  EXPECT_EQ(kernel_.ioctl(handle_, HIDIOCGVERSION, &value), -ENOTTY);
}

TEST_F(VirtualSerialTest, FailsByScript) {
  std::array<uint8_t, 10> room{};
  kernel_.fail_write(kSerial, EIO, 1);
  kernel_.fail_read(kSerial, EIO, 1);
  EXPECT_EQ(kernel_.write(handle_, room), -EIO);
  EXPECT_TRUE(port_.waiting.empty());
  EXPECT_EQ(kernel_.read(handle_, room), -EIO);
  EXPECT_EQ(kernel_.read(handle_, room), -EAGAIN);
}

TEST_F(VirtualSerialTest, HangsUpWhenUnplugged) {
  std::array<uint8_t, 10> room{};
  kernel_.unplug(attachment_);
  EXPECT_EQ(kernel_.read(handle_, room), 0);
  EXPECT_EQ(kernel_.write(handle_, room), -EIO);
  EXPECT_EQ(kernel_.ioctl(handle_, TCGETS, room.data()), -EIO);
}

}  // namespace
}  // namespace zelkora::sim
