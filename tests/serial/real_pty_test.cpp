// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The port functions on a real terminal: a pseudo-terminal pair of the kernel's, with a virtual
// controller at its other end that answers while the library waits.
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <unistd.h>

#include <array>

#include "serial_bench.h"

namespace {

using namespace zelkora::test;

class RealPtyTest : public SerialBench {
 protected:
  void SetUp() override {
    SerialBench::SetUp();
    master_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(master_, 0);
    ASSERT_EQ(::grantpt(master_), 0);
    ASSERT_EQ(::unlockpt(master_), 0);
    std::array<char, 64> path{};
    ASSERT_EQ(::ptsname_r(master_, path.data(), path.size()), 0);
    path_ = path.data();
    // Held open, as long as the test lasts: the settings live while the port is open somewhere.
    slave_ = ::open(path_.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
    ASSERT_GE(slave_, 0);
    set_everything();
    device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
    during_usleep([this] { answer(); });
  }
  void TearDown() override {
    if (fd >= 0) ::close(fd);
    ::close(slave_);
    ::close(master_);
    SerialBench::TearDown();
  }

  // Settings that would spoil every frame: echo, lines, and characters that are changed.
  void set_everything() {
    ASSERT_EQ(::tcgetattr(slave_, &found_), 0);
    found_.c_iflag = ICRNL | IXON | BRKINT | ISTRIP;
    found_.c_oflag = OPOST | ONLCR | OCRNL;
    found_.c_lflag = ICANON | ECHO | ISIG;
    found_.c_cflag = B38400 | CS8 | CREAD | HUPCL;
    found_.c_cc[VMIN] = 9;
    found_.c_cc[VTIME] = 7;
    ASSERT_EQ(::tcsetattr(slave_, TCSANOW, &found_), 0);
    ASSERT_EQ(::tcgetattr(slave_, &found_), 0);
  }

  static bool readable(int descriptor, int milliseconds) {
    pollfd waiting = {descriptor, POLLIN, 0};
    return ::poll(&waiting, 1, milliseconds) == 1 && (waiting.revents & POLLIN) != 0;
  }

  // The controller's turn.
  void answer() {
    if (!readable(master_, 1000)) return;
    std::array<uint8_t, 256> room{};
    const ssize_t count = ::read(master_, room.data(), room.size());
    ASSERT_GT(count, 0);
    port_.receive(std::span(room).first(static_cast<size_t>(count)));
    const std::vector<uint8_t> reply = port_.transmit(room.size());
    if (reply.empty()) return;
    ASSERT_EQ(::write(master_, reply.data(), reply.size()), static_cast<ssize_t>(reply.size()));
    EXPECT_TRUE(readable(fd, 5000));
  }

  std::string name() const { return path_.substr(std::strlen("/dev/")); }

  zelkora::sim::ResistiveController controller_;
  zelkora::sim::ResistiveSerial port_{controller_};
  int master_ = -1;
  int slave_ = -1;
  std::string path_;
  termios found_{};
};

TEST_F(RealPtyTest, InitMakesTheTerminalRawAndKeepsWhatItFound) {
  ASSERT_EQ(init_rs232touch(path_.c_str()), 1);
  EXPECT_EQ(oldtio.c_iflag, found_.c_iflag);
  EXPECT_EQ(oldtio.c_oflag, found_.c_oflag);
  EXPECT_EQ(oldtio.c_lflag, found_.c_lflag);
  EXPECT_EQ(oldtio.c_cflag, found_.c_cflag);
  EXPECT_EQ(oldtio.c_cc[VMIN], 9);
  EXPECT_EQ(oldtio.c_cc[VTIME], 7);

  termios now{};
  ASSERT_EQ(::tcgetattr(slave_, &now), 0);
  EXPECT_EQ(now.c_iflag, 0U);
  EXPECT_EQ(now.c_oflag, 0U);
  EXPECT_EQ(now.c_lflag, 0U);
  EXPECT_EQ(now.c_cflag, static_cast<tcflag_t>(0x8BD));
  EXPECT_EQ(::cfgetospeed(&now), static_cast<speed_t>(B9600));
  EXPECT_EQ(now.c_cc[VMIN], 1);
  EXPECT_EQ(now.c_cc[VTIME], 0);
  EXPECT_EQ(now.c_cc[VINTR], 0);
  EXPECT_EQ(now.c_cc[VEOF], 0);
}

TEST_F(RealPtyTest, InitOpensForReadingAndWritingWithoutBlocking) {
  ASSERT_EQ(init_rs232touch(path_.c_str()), 1);
  EXPECT_EQ(::fcntl(fd, F_GETFL) & (O_ACCMODE | O_NONBLOCK), O_RDWR | O_NONBLOCK);
}

TEST_F(RealPtyTest, InitDropsWhatCameBefore) {
  ASSERT_EQ(::write(master_, "old\n", 4), 4);
  ASSERT_TRUE(readable(slave_, 5000));
  ASSERT_EQ(init_rs232touch(path_.c_str()), 1);
  EXPECT_FALSE(readable(fd, 0));
}

TEST_F(RealPtyTest, FramesArriveAsTheyWereSentAndNothingIsEchoed) {
  ASSERT_EQ(OpenSerialDevice(name().c_str()), 1);
  const std::vector<std::vector<uint8_t>> sent = {{0x01, 'Z', 'Z', 0x0D}, {0x01, 'O', 'I', 0x0D}};
  EXPECT_EQ(controller_.frames(), sent);
  EXPECT_FALSE(readable(master_, 50));
}

TEST_F(RealPtyTest, EveryByteValueGoesThroughInBothDirections) {
  ASSERT_EQ(OpenSerialDevice(name().c_str()), 1);
  // Every other wait is one behind the reply, when nobody has anything to say.
  during_usleep([this, waits = 0]() mutable {
    if (waits++ % 2 == 0) answer();
  });
  for (int page = 0; page < 4; ++page) {
    std::array<unsigned char, 40> data{};
    for (size_t i = 0; i < 32; ++i) data[i] = static_cast<unsigned char>(page * 32 + i);
    EXPECT_EQ(AXI_WriteEEPValue(page, data.data()), 1);
  }
  for (size_t i = 0; i < 128; ++i) EXPECT_EQ(controller_.eeprom()[i], i);
  for (size_t i = 0; i < 128; ++i) controller_.eeprom()[i] = static_cast<uint8_t>(128 + i);
  for (int page = 0; page < 4; ++page) {
    std::array<unsigned char, 40> data{};
    EXPECT_EQ(AXI_ReadEEPValue(page, data.data()), 1);
    for (size_t i = 0; i < 32; ++i) EXPECT_EQ(data[i], 128 + page * 32 + static_cast<int>(i));
  }
}

TEST_F(RealPtyTest, SettingsAreReadAndWritten) {
  ASSERT_EQ(OpenSerialDevice(name().c_str()), 1);
  EXPECT_EQ(SetReportMode(3), 3);
  EXPECT_EQ(controller_.value(51), 3);
  controller_.set_value(51, 0x0D0A);
  EXPECT_EQ(GetReportMode(), 0x0D0A);
}

TEST_F(RealPtyTest, ASilentPortIsGivenUp) {
  controller_.faults.silent = true;
  EXPECT_EQ(OpenSerialDevice(name().c_str()), 0);
  EXPECT_EQ(controller_.frames().size(), 10U);
}

}  // namespace
