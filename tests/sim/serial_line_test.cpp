// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A pseudo-terminal of the kernel's is the line; the test is the host.
#include "serial_line.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <stdlib.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "resistive_controller.h"

namespace zelkora::sim {
namespace {

class SerialLineTest : public testing::Test {
 protected:
  void SetUp() override {
    host_ = ::posix_openpt(O_RDWR | O_NOCTTY);
    ASSERT_GE(host_, 0);
    ASSERT_EQ(::grantpt(host_), 0);
    ASSERT_EQ(::unlockpt(host_), 0);
    std::array<char, 64> path{};
    ASSERT_EQ(::ptsname_r(host_, path.data(), path.size()), 0);
    path_ = path.data();
  }
  void TearDown() override { ::close(host_); }

  static bool readable(int descriptor, int milliseconds) {
    pollfd waiting = {descriptor, POLLIN, 0};
    return ::poll(&waiting, 1, milliseconds) == 1 && (waiting.revents & POLLIN) != 0;
  }

  void send(SerialLine& line, std::string_view bytes) const {
    ASSERT_EQ(::write(host_, bytes.data(), bytes.size()), static_cast<ssize_t>(bytes.size()));
    ASSERT_TRUE(readable(line.descriptor(), 5000));
    line.serve();
  }

  // What came back, or nothing.
  std::string received() const {
    std::array<char, 64> room{};
    if (!readable(host_, 0)) return {};
    const ssize_t count = ::read(host_, room.data(), room.size());
    return {room.data(), static_cast<size_t>(count < 0 ? 0 : count)};
  }

  ResistiveController controller_;
  ResistiveSerial port_{controller_};
  int host_ = -1;
  std::string path_;
};

TEST_F(SerialLineTest, AnswersWhenACommandIsWhole) {
  SerialLine line(port_, path_);
  send(line, "\x01O");
  EXPECT_EQ(received(), "");
  send(line, "I\r");
  EXPECT_EQ(received(), "\x01V1.2\r");
}

TEST_F(SerialLineTest, CarriesEveryByteAsItIs) {
  SerialLine line(port_, path_);
  std::string command(
      "\x01"
      "EW\0",
      4);
  for (int i = 0; i < 32; ++i) command += static_cast<char>(i);
  send(line, command + '\r');
  EXPECT_EQ(received(),
            "\x01"
            "0\r");
  for (size_t i = 0; i < 32; ++i) EXPECT_EQ(controller_.eeprom()[i], i);
}

TEST_F(SerialLineTest, StreamsAReportForEachCommand) {
  controller_.faults.streaming = true;
  SerialLine line(port_, path_);
  for (int i = 0; i < 2; ++i) {
    send(line, "\x01ZZ\r");
    EXPECT_EQ(received().size(), 10U);
  }
}

TEST_F(SerialLineTest, IsSilentWhileItIsUnplugged) {
  SerialLine line(port_, path_);
  line.unplug();
  EXPECT_EQ(line.descriptor(), -1);
  line.plug();
  send(line, "\x01OI\r");
  EXPECT_EQ(received(), "\x01V1.2\r");
}

TEST_F(SerialLineTest, IsUnpluggedWhenTheTerminalIsGone) {
  SerialLine line(port_, path_);
  ::close(host_);
  line.serve();
  EXPECT_EQ(line.descriptor(), -1);
  host_ = -1;
}

TEST_F(SerialLineTest, NamesAPathThatIsNoTerminal) {
  for (const char* path : {"/dev/null", "/nonexistent"}) {
    try {
      SerialLine line(port_, path);
      ADD_FAILURE() << path;
    } catch (const std::runtime_error& error) {
      EXPECT_TRUE(std::string_view(error.what()).starts_with(std::string(path) + ": ")) << path;
    }
  }
}

}  // namespace
}  // namespace zelkora::sim
