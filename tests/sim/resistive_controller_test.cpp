// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "resistive_controller.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <numeric>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using zelkora::sim::LineSettings;
using zelkora::sim::ResistiveController;
using zelkora::sim::ResistiveSerial;
using zelkora::sim::ResistiveUsb;
using Bytes = std::vector<uint8_t>;

const Bytes kAcknowledge = {0x01, '0', 0x0D};

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& part : parts) std::ranges::copy(part, std::back_inserter(all));
  return all;
}

Bytes bytes_of(std::string_view text) { return {text.begin(), text.end()}; }

// A frame around a command and its arguments.
Bytes frame(std::string_view body) { return joined({{0x01}, bytes_of(body), {0x0D}}); }

Bytes page_command(std::string_view letters, uint8_t page, const Bytes& data = {}) {
  return joined({{0x01}, bytes_of(letters), {page}, data, {0x0D}});
}

Bytes counting_page() {
  Bytes page(ResistiveController::kPageSize);
  std::iota(page.begin(), page.end(), 0);  // holds 0D among others
  return page;
}

class ResistiveControllerTest : public testing::Test {
 protected:
  ResistiveController controller_;
};

TEST_F(ResistiveControllerTest, TellsItsFirmware) {
  EXPECT_EQ(controller_.answer(frame("OI")), (Bytes{0x01, 0x56, 0x31, 0x2E, 0x32, 0x0D}));
  controller_.set_firmware("V3.0");
  EXPECT_EQ(controller_.answer(frame("OI")), frame("V3.0"));
}

TEST_F(ResistiveControllerTest, StartsCalibration) {
  EXPECT_FALSE(controller_.calibrating());
  EXPECT_EQ(controller_.answer(frame("CR")), kAcknowledge);
  EXPECT_TRUE(controller_.calibrating());
}

TEST_F(ResistiveControllerTest, ReadsValuesInUpperCaseHex) {
  controller_.set_value(84, 0xBEEF);
  EXPECT_EQ(controller_.answer(frame("GP54")), frame("BEEF"));
  controller_.set_value(0x0A, 0x000C);
  EXPECT_EQ(controller_.answer(frame("GP0A")), frame("000C"));
}

TEST_F(ResistiveControllerTest, WritesValues) {
  EXPECT_EQ(controller_.answer(Bytes{0x01, 0x53, 0x50, 0x33, 0x37, 0x30, 0x30, 0x30, 0x32, 0x0D}),
            kAcknowledge);
  EXPECT_EQ(controller_.value(55), 2);
  EXPECT_EQ(controller_.permanent_value(55), 0);
}

TEST_F(ResistiveControllerTest, KeepsValuesOverAResetOnlyOnceCommitted) {
  controller_.answer(frame("SP560000"));
  EXPECT_EQ(controller_.answer(frame("R")), kAcknowledge);
  EXPECT_EQ(controller_.value(86), 1);
  controller_.answer(frame("SP560000"));
  EXPECT_EQ(controller_.answer(frame("PL")), kAcknowledge);
  EXPECT_EQ(controller_.permanent_value(86), 0);
  controller_.answer(frame("R"));
  EXPECT_EQ(controller_.value(86), 0);
  EXPECT_EQ(controller_.commits(), 1U);
  EXPECT_EQ(controller_.resets(), 2U);
}

TEST_F(ResistiveControllerTest, EndsCalibrationOnReset) {
  controller_.answer(frame("CR"));
  controller_.answer(frame("R"));
  EXPECT_FALSE(controller_.calibrating());
}

TEST_F(ResistiveControllerTest, WritesAndReadsPagesOfRawBytes) {
  const Bytes page = counting_page();
  EXPECT_EQ(controller_.answer(page_command("EW", 3, page)), kAcknowledge);
  EXPECT_TRUE(std::ranges::equal(page, std::span(controller_.eeprom()).last(32)));
  EXPECT_EQ(controller_.answer(page_command("ER", 3)), page_command("ER", 3, page));
  EXPECT_EQ(controller_.answer(page_command("ER", 0)), page_command("ER", 0, Bytes(32)));
}

TEST_F(ResistiveControllerTest, SetsTheBacklightDuty) {
  EXPECT_EQ(controller_.answer(Bytes{0x01, 'D', 'U', 0x0D, 0x0D}), kAcknowledge);
  EXPECT_EQ(controller_.backlight_duty(), 13);
}

TEST_F(ResistiveControllerTest, SwitchesAutomaticHidOn) {
  EXPECT_FALSE(controller_.automatic_hid());
  EXPECT_EQ(controller_.answer(frame("AU")), kAcknowledge);
  EXPECT_TRUE(controller_.automatic_hid());
}

TEST_F(ResistiveControllerTest, ShowsItsGenerationInTheAnswerToAProbe) {
  EXPECT_EQ(controller_.answer(frame("ZZ")), frame("1"));
  controller_.set_new_generation(true);
  EXPECT_EQ(controller_.answer(frame("ZZ")), frame("0"));
}

TEST_F(ResistiveControllerTest, KeepsSilentOnWhatItDoesNotKnow) {
  const Bytes kFrames[] = {
      {},
      {0x01},
      {0x01, 0x0D},
      {0x02, 'O', 'I', 0x0D},
      {0x01, 'O', 'I', 0x0A},
      frame("XX"),
      frame("GP5"),
      frame("GP5G"),
      frame("GP123"),
      frame("SP560"),
      frame("SP5600000"),
      frame("SP56-001"),
      frame("SP56 001"),
      frame("DU"),
      page_command("ER", 4),
      page_command("EW", 4, Bytes(32)),
      page_command("EW", 0, Bytes(31)),
      page_command("EW", 0, Bytes(33)),
  };
  for (const Bytes& bytes : kFrames)
    EXPECT_EQ(controller_.answer(bytes), Bytes{}) << testing::PrintToString(bytes);
  EXPECT_EQ(controller_.value(86), 1);
}

TEST_F(ResistiveControllerTest, RecordsEveryFrame) {
  controller_.faults.silent_commands = 1;
  controller_.answer(frame("OI"));
  controller_.answer(frame("R"));
  EXPECT_EQ(controller_.frames(), (std::vector<Bytes>{frame("OI"), frame("R")}));
}

TEST_F(ResistiveControllerTest, KeepsSilentForAsManyCommandsAsAsked) {
  controller_.faults.silent_commands = 2;
  EXPECT_EQ(controller_.answer(frame("OI")), Bytes{});
  EXPECT_EQ(controller_.answer(frame("SP560000")), Bytes{});
  EXPECT_EQ(controller_.value(86), 1) << "a command that is not answered has no effect";
  EXPECT_EQ(controller_.answer(frame("OI")), frame("V1.2"));
  controller_.faults.silent = true;
  for (int i = 0; i < 10; ++i) EXPECT_EQ(controller_.answer(frame("OI")), Bytes{});
}

TEST_F(ResistiveControllerTest, SpoilsAcknowledgesButCarriesTheCommandOut) {
  controller_.faults.bad_acknowledges = 2;
  EXPECT_EQ(controller_.answer(frame("SP560000")), frame("1"));
  EXPECT_EQ(controller_.value(86), 0);
  EXPECT_EQ(controller_.answer(frame("GP56")), frame("0000"));
  EXPECT_EQ(controller_.answer(frame("PL")), frame("1"));
  EXPECT_EQ(controller_.answer(frame("PL")), kAcknowledge);
}

TEST_F(ResistiveControllerTest, EchoesAnotherPage) {
  controller_.faults.wrong_echoes = 1;
  EXPECT_EQ(controller_.answer(page_command("ER", 3)), page_command("ER", 0, Bytes(32)));
  EXPECT_EQ(controller_.answer(page_command("ER", 3)), page_command("ER", 3, Bytes(32)));
}

TEST_F(ResistiveControllerTest, StoresAnotherValueThanItWasSent) {
  controller_.faults.stores = 7;
  EXPECT_EQ(controller_.answer(frame("SP560001")), kAcknowledge);
  EXPECT_EQ(controller_.answer(frame("GP56")), frame("0007"));
}

class ResistiveUsbTest : public testing::Test {
 protected:
  // A report's payload: the length, the frame and what fills the report up.
  static Bytes payload(const Bytes& frame, size_t size = ResistiveUsb::kUsageCount) {
    Bytes bytes = joined({{static_cast<uint8_t>(frame.size())}, frame});
    bytes.resize(size);
    return bytes;
  }

  ResistiveController controller_;
  ResistiveUsb usb_{controller_, {0x3A4C, 0x1688, "Zelkora", "Virtual Resistive"}};
};

TEST_F(ResistiveUsbTest, HasOneReportOf63UnsignedBytes) {
  ASSERT_EQ(usb_.feature_reports().size(), 1U);
  EXPECT_EQ(usb_.feature_reports()[0].id, 1);
  EXPECT_EQ(usb_.feature_reports()[0].usage_count, 63U);
  EXPECT_EQ(usb_.feature_reports()[0].logical_minimum, 0);
  EXPECT_EQ(usb_.identity().kernel_name(), "Zelkora Virtual Resistive");
}

TEST_F(ResistiveUsbTest, TakesAndGivesFramesBehindTheirLengthInWholeReports) {
  ASSERT_TRUE(usb_.set_feature(1, payload(frame("OI"))));
  EXPECT_EQ(controller_.frames().back(), frame("OI"));
  EXPECT_EQ(usb_.get_feature(1), payload(frame("V1.2")));
  EXPECT_EQ(usb_.get_feature(1), payload(frame("V1.2"))) << "a reply stays until the next command";
}

TEST_F(ResistiveUsbTest, CarriesAWholePage) {
  ASSERT_TRUE(usb_.set_feature(1, payload(page_command("EW", 1, counting_page()))));
  EXPECT_EQ(usb_.get_feature(1), payload(kAcknowledge));
  ASSERT_TRUE(usb_.set_feature(1, payload(page_command("ER", 1))));
  EXPECT_EQ(usb_.get_feature(1), payload(page_command("ER", 1, counting_page())));
}

TEST_F(ResistiveUsbTest, StallsWhileThereIsNoReply) {
  EXPECT_EQ(usb_.get_feature(1), std::nullopt);
  controller_.faults.silent_commands = 1;
  EXPECT_TRUE(usb_.set_feature(1, payload(frame("OI"))));
  EXPECT_EQ(usb_.get_feature(1), std::nullopt);
}

TEST_F(ResistiveUsbTest, StallsOnOtherReports) {
  EXPECT_FALSE(usb_.set_feature(2, payload(frame("OI"))));
  EXPECT_FALSE(usb_.set_feature(1, {}));
  EXPECT_EQ(usb_.get_feature(2), std::nullopt);
  EXPECT_TRUE(controller_.frames().empty());
}

TEST_F(ResistiveUsbTest, ReadsNoFurtherThanTheReportWhenItsLengthLies) {
  Bytes report = payload(frame("OI"), 5);
  report[0] = 200;
  ASSERT_TRUE(usb_.set_feature(1, report));
  EXPECT_EQ(controller_.frames().back(), frame("OI"));
}

TEST_F(ResistiveUsbTest, CutsRepliesThatItsReportDoesNotHold) {
  usb_.set_report({1, 3, 0, 255});
  ASSERT_TRUE(usb_.set_feature(1, payload(frame("OI"))));
  EXPECT_EQ(usb_.get_feature(1), (Bytes{6, 0x01, 'V'}));
}

TEST_F(ResistiveUsbTest, SendsAForgedReply) {
  usb_.set_forged_reply(Bytes{0xFF, 0x01});
  EXPECT_EQ(usb_.get_feature(1), (Bytes{0xFF, 0x01}));
  usb_.set_forged_reply(std::nullopt);
  EXPECT_EQ(usb_.get_feature(1), std::nullopt);
}

class ResistiveSerialTest : public testing::Test {
 protected:
  ResistiveController controller_;
  ResistiveSerial port_{controller_};
};

TEST_F(ResistiveSerialTest, AnswersRawFrames) {
  port_.receive(frame("OI"));
  EXPECT_EQ(port_.transmit(20), frame("V1.2"));
  EXPECT_EQ(port_.transmit(20), Bytes{});
}

TEST_F(ResistiveSerialTest, WaitsForTheRestOfAFrame) {
  port_.receive(bytes_of("\x01O"));
  EXPECT_EQ(port_.transmit(20), Bytes{});
  port_.receive(bytes_of("I\r"));
  EXPECT_EQ(port_.transmit(20), frame("V1.2"));
}

TEST_F(ResistiveSerialTest, KeepsWhatWasNotRead) {
  port_.receive(frame("ZZ"));
  EXPECT_EQ(port_.transmit(2), (Bytes{0x01, '1'}));
  EXPECT_EQ(port_.transmit(10), Bytes{0x0D});
}

TEST_F(ResistiveSerialTest, CarriesAPageThatHoldsTheEndByte) {
  port_.receive(page_command("EW", 0, counting_page()));
  EXPECT_EQ(port_.transmit(10), kAcknowledge);
  port_.receive(page_command("ER", 0));
  EXPECT_EQ(port_.transmit(40), page_command("ER", 0, counting_page()));
}

TEST_F(ResistiveSerialTest, KeepsSilentWhenTheControllerDoes) {
  controller_.faults.silent = true;
  port_.receive(frame("OI"));
  EXPECT_EQ(port_.transmit(20), Bytes{});
}

TEST_F(ResistiveSerialTest, StreamsCoordinatesInsteadOfReplies) {
  controller_.faults.streaming = true;
  port_.receive(frame("ZZ"));
  for (int i = 0; i < 3; ++i) {
    const Bytes report = port_.transmit(10);
    ASSERT_EQ(report.size(), 10U);
    EXPECT_EQ(report[1], 0x98);
  }
}

TEST_F(ResistiveSerialTest, StreamsACountOfReportsAndThenAnswers) {
  controller_.faults.streamed_reports = 2;
  for (int i = 0; i < 2; ++i) {
    port_.receive(frame("ZZ"));
    EXPECT_EQ(port_.transmit(10).size(), 10U);
  }
  port_.receive(frame("OI"));
  EXPECT_EQ(port_.transmit(20), frame("V1.2"));
}

TEST_F(ResistiveSerialTest, ForgetsWhatItIsToldToDiscard) {
  port_.receive(frame("OI"));
  port_.discard();
  EXPECT_EQ(port_.transmit(20), Bytes{});
}

TEST_F(ResistiveSerialTest, FailsToOpenACountOfTimes) {
  EXPECT_TRUE(port_.opens());
  controller_.faults.failed_opens = 2;
  EXPECT_FALSE(port_.opens());
  EXPECT_FALSE(port_.opens());
  EXPECT_TRUE(port_.opens());
}

TEST_F(ResistiveSerialTest, KnowsHowItsLineIsSetUp) {
  EXPECT_EQ(port_.settings(), std::nullopt);
  port_.configure({.control = 0x8BD, .minimum = 1});
  EXPECT_EQ(port_.settings(), (LineSettings{0, 0, 0x8BD, 0, 1, 0}));
}

}  // namespace
