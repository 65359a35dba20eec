// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "support/bench.h"

namespace {

using zelkora::test::Lines;
using zelkora::test::SerialPanel;
using Bytes = std::vector<uint8_t>;

const Bytes kOldAnswer = {0x01, '1', 0x0D};
const Bytes kNewAnswer = {0x01, '0', 0x0D};
const Bytes kCoordinates = {0x00, 0x98, 1, 2, 3, 4, 5, 6, 7, 8};

// Answers the n-th write with the n-th script line, the last line again and again.
class ScriptedPort final : public zelkora::sim::SerialDevice {
 public:
  void receive(std::span<const uint8_t> bytes) override {
    writes.emplace_back(bytes.begin(), bytes.end());
    if (!script.empty()) waiting_ = script[std::min(writes.size(), script.size()) - 1];
  }
  Bytes transmit(size_t limit) override {
    const size_t count = std::min(limit, waiting_.size());
    Bytes bytes(waiting_.begin(), waiting_.begin() + static_cast<ptrdiff_t>(count));
    waiting_.clear();
    return bytes;
  }

  std::vector<Bytes> script;
  std::vector<Bytes> writes;

 private:
  Bytes waiting_;
};

class SerialProbeTest : public zelkora::test::Bench {
 protected:
  void SetUp() override {
    Bench::SetUp();
    attachment_ = kernel.attach(port_, kPath);
    fd = open(kPath, O_RDWR);
    DbgFlag = 1;
    clear_trace();
  }
  void TearDown() override {
    close(fd);
    Bench::TearDown();
  }

  // The probe's result on a port that answers like this from the first attempt on.
  int probe(std::vector<Bytes> script) {
    port_.script = std::move(script);
    port_.writes.clear();
    clear_trace();
    return ChkDevExist();
  }

  static constexpr char kPath[] = "/dev/ttyS0";
  ScriptedPort port_;
  int attachment_ = 0;
};

TEST_F(SerialProbeTest, AsksWithZzWaitsAndReadsTenBytes) {
  EXPECT_EQ(probe({kOldAnswer}), 1);
  EXPECT_EQ(trace(),
            (Lines{"write /dev/ttyS0: 01 5A 5A 0D", "usleep 50000", "read /dev/ttyS0 10: 01 31 0D",
                   "log zelkora DD:1:Len=3 0x01  0x31  0x0d"}));
}

TEST_F(SerialProbeTest, PrintsEachAttempt) {
  EXPECT_EQ(probe({{0xFF}, {0x10, 0x20}, kOldAnswer}), 1);
  EXPECT_EQ(messages(),
            (Lines{"zelkora DD:1:Len=1 0xff  0x00  0x00\n", "zelkora DD:2:Len=2 0x10  0x20  0x00\n",
                   "zelkora DD:3:Len=3 0x01  0x31  0x0d\n"}));
}

TEST_F(SerialProbeTest, ASilentPortIsGivenTenAttempts) {
  EXPECT_EQ(probe({}), 0);
  Lines expected;
  for (int attempt = 1; attempt <= 10; ++attempt) {
    expected.insert(
        expected.end(),
        {"write /dev/ttyS0: 01 5A 5A 0D", "usleep 50000", "read /dev/ttyS0 10 -> EAGAIN",
         "log zelkora DD:" + std::to_string(attempt) + ":Len=255 0x00  0x00  0x00"});
  }
  EXPECT_EQ(trace(), expected);
}

TEST_F(SerialProbeTest, TheExpectedAnswerGoesByTheGeneration) {
  for (const int new_generation : {0, 1, 0x80}) {
    SCOPED_TRACE(new_generation);
    MyConfig[1] = static_cast<unsigned char>(new_generation);
    EXPECT_EQ(probe({kOldAnswer}), new_generation == 0 ? 1 : 0);
    EXPECT_EQ(probe({kNewAnswer}), new_generation == 0 ? 0 : 1);
  }
}

TEST_F(SerialProbeTest, EachByteOfAShortAnswerCounts) {
  const Bytes wrong[] = {
      {0x02, '1', 0x0D}, {0x01, '2', 0x0D}, {0x01, 0x01, 0x0D}, {0x01, '1', 0x0A}};
  for (const Bytes& answer : wrong) {
    SCOPED_TRACE(testing::PrintToString(answer));
    EXPECT_EQ(probe({answer}), 0);
    EXPECT_EQ(port_.writes.size(), 10U);
  }
}

TEST_F(SerialProbeTest, AnswersOfOtherLengthsAreNone) {
  for (const size_t length : {1U, 2U, 4U, 5U, 6U, 7U, 8U, 9U}) {
    SCOPED_TRACE(length);
    Bytes answer = {0x01, '1', 0x0D};
    answer.resize(length);
    EXPECT_EQ(probe({answer}), 0);
    EXPECT_EQ(port_.writes.size(), 10U);
  }
}

TEST_F(SerialProbeTest, TheTenthAttemptStillCounts) {
  std::vector<Bytes> script(9);
  script.push_back(kOldAnswer);
  EXPECT_EQ(probe(script), 1);
  EXPECT_EQ(port_.writes.size(), 10U);
}

TEST_F(SerialProbeTest, AnEleventhAttemptIsNotMade) {
  std::vector<Bytes> script(10);
  script.push_back(kOldAnswer);
  EXPECT_EQ(probe(script), 0);
  EXPECT_EQ(port_.writes.size(), 10U);
}

TEST_F(SerialProbeTest, TenBytesThatAreNoCoordinatesAreAnAnswer) {
  Bytes answer = kCoordinates;
  for (const uint8_t second : Bytes{0x00, 0x97, 0x99, 0xD7, 0xD9, 0x18, 0x58}) {
    SCOPED_TRACE(testing::PrintToString(second));
    answer[1] = second;
    EXPECT_EQ(probe({answer}), 1);
    EXPECT_EQ(port_.writes.size(), 1U);
  }
}

TEST_F(SerialProbeTest, OnlyTheSecondByteMarksCoordinates) {
  EXPECT_EQ(probe({{0x98, 0x00, 0x98, 0xD8, 5, 6, 7, 8, 9, 10}}), 1);
  EXPECT_EQ(port_.writes.size(), 1U);
}

TEST_F(SerialProbeTest, AStreamingPortIsGivenFiftyAttempts) {
  Bytes report = kCoordinates;
  for (const uint8_t second : Bytes{0x98, 0xD8}) {
    SCOPED_TRACE(testing::PrintToString(second));
    report[1] = second;
    EXPECT_EQ(probe({report}), 0);
    EXPECT_EQ(port_.writes.size(), 50U);
    EXPECT_EQ(count_of("usleep 50000"), 50U);
  }
  EXPECT_EQ(messages().back(), "zelkora DD:50:Len=10 0x00  0xd8  0x01\n");
}

TEST_F(SerialProbeTest, TheFiftiethAttemptStillCounts) {
  std::vector<Bytes> script(49, kCoordinates);
  script.push_back(kOldAnswer);
  EXPECT_EQ(probe(script), 1);
  EXPECT_EQ(port_.writes.size(), 50U);
}

TEST_F(SerialProbeTest, AStreamThatEndsLateInSilenceIsGivenNoFurtherAttempt) {
  std::vector<Bytes> script(12, kCoordinates);
  script.emplace_back();
  EXPECT_EQ(probe(script), 0);
  EXPECT_EQ(port_.writes.size(), 13U);
}

TEST_F(SerialProbeTest, AStreamThatEndsEarlyLeavesTheRestOfTenAttempts) {
  std::vector<Bytes> script(4, kCoordinates);
  script.emplace_back();
  EXPECT_EQ(probe(script), 0);
  EXPECT_EQ(port_.writes.size(), 10U);
}

TEST_F(SerialProbeTest, SilenceBeforeAStreamCountsAgainstTheFifty) {
  std::vector<Bytes> script(9);
  script.push_back(kCoordinates);
  EXPECT_EQ(probe(script), 0);
  EXPECT_EQ(port_.writes.size(), 50U);
}

TEST_F(SerialProbeTest, AFailedReadIsJudgedByClearedBytes) {
  EXPECT_EQ(probe({{0x05, 0x06, 0x07}, {}}), 0);
  EXPECT_EQ(messages()[0], "zelkora DD:1:Len=3 0x05  0x06  0x07\n");
  EXPECT_EQ(messages()[1], "zelkora DD:2:Len=255 0x00  0x00  0x00\n");
}

TEST_F(SerialProbeTest, AFailedWriteIsFollowedByTheRead) {
  kernel.fail_write(kPath, EIO);
  EXPECT_EQ(ChkDevExist(), 0);
  EXPECT_EQ(count_of("write /dev/ttyS0"), 10U);
  EXPECT_EQ(count_of("read /dev/ttyS0"), 10U);
}

TEST_F(SerialProbeTest, APortThatHangsUpReadsNothing) {
  kernel.unplug(attachment_);
  EXPECT_EQ(ChkDevExist(), 0);
  EXPECT_EQ(messages().size(), 10U);
  EXPECT_EQ(messages().back(), "zelkora DD:10:Len=0 0x00  0x00  0x00\n");
}

TEST_F(SerialProbeTest, TheConfigurationIsNotReadAgain) {
  host.config[1] = 1;
  EXPECT_EQ(probe({kOldAnswer}), 1);
  EXPECT_EQ(host.config_reads, 0);
}

TEST_F(SerialProbeTest, ThePortStaysOpen) {
  probe({kOldAnswer});
  EXPECT_EQ(count_of("close"), 0U);
}

TEST_F(SerialProbeTest, AControllerAnswersByItsGeneration) {
  close(fd);
  SerialPanel& panel = open_serial("/dev/ttyS1");
  EXPECT_EQ(ChkDevExist(), 1);
  panel.controller.set_new_generation(true);
  EXPECT_EQ(ChkDevExist(), 0);
  MyConfig[1] = 1;
  EXPECT_EQ(ChkDevExist(), 1);
}

}  // namespace
