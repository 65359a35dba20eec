// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "usb_device.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>

#include "usb_descriptors.h"
#include "usbip_session.h"

namespace zelkora::sim {
namespace {

using Bytes = std::vector<uint8_t>;

// Answers every get with what was last set, unless it is told to stall.
class EchoDevice final : public HidDevice {
 public:
  const UsbIdentity& identity() const override { return identity_; }
  std::span<const FeatureReport> feature_reports() const override { return reports; }
  bool set_feature(uint8_t id, std::span<const uint8_t> payload) override {
    last_id = id;
    last_payload.assign(payload.begin(), payload.end());
    return !stalls;
  }
  std::optional<Bytes> get_feature(uint8_t id) override {
    last_id = id;
    if (stalls) return std::nullopt;
    return last_payload;
  }

  std::vector<FeatureReport> reports{{1, 4, 0, 255}};
  bool stalls = false;
  uint8_t last_id = 0;
  Bytes last_payload;

 private:
  UsbIdentity identity_{0x3A4C, 0x8888, "Zelkora", "Panel"};
};

SetupPacket setup(uint8_t type, uint8_t request, uint16_t value, uint16_t length) {
  return {type, request, value, 0, length};
}

Bytes joined(std::initializer_list<Bytes> pieces) {
  Bytes all;
  for (const Bytes& piece : pieces) all.insert(all.end(), piece.begin(), piece.end());
  return all;
}

const Bytes kMouse = {0x05, 0x01, 0x09, 0x02, 0xA1, 0x01, 0x85, 0x02, 0x09, 0x01, 0xA1, 0x00, 0x05,
                      0x09, 0x19, 0x01, 0x29, 0x03, 0x15, 0x00, 0x25, 0x01, 0x95, 0x03, 0x75, 0x01,
                      0x81, 0x02, 0x95, 0x01, 0x75, 0x05, 0x81, 0x01, 0x05, 0x01, 0x09, 0x30, 0x09,
                      0x31, 0x15, 0x81, 0x25, 0x7F, 0x95, 0x02, 0x75, 0x08, 0x81, 0x06, 0xC0, 0xC0};

// Nothing: the device stalled.
std::optional<Bytes> answered(const Response& response) {
  EXPECT_TRUE(response.outcome == Outcome::kDone || response.outcome == Outcome::kStall);
  if (response.outcome != Outcome::kDone) return std::nullopt;
  return response.data;
}

class UsbDeviceTest : public testing::Test {
 protected:
  std::optional<Bytes> ask(uint8_t type, uint8_t request, uint16_t value, uint16_t length = 255) {
    return answered(usb_.control(setup(type, request, value, length), {}));
  }
  std::optional<Bytes> tell(uint16_t value, const Bytes& data) {
    return answered(
        usb_.control(setup(0x21, 0x09, value, static_cast<uint16_t>(data.size())), data));
  }

  EchoDevice device_;
  UsbDevice usb_{{device_}};
};

TEST_F(UsbDeviceTest, DeviceDescriptorNamesTheIdsLowByteFirst) {
  EXPECT_EQ(ask(0x80, 0x06, 0x0100), (Bytes{0x12, 0x01, 0x10, 0x01, 0x00, 0x00, 0x00, 0x40, 0x4C,
                                            0x3A, 0x88, 0x88, 0x00, 0x01, 0x01, 0x02, 0x00, 0x01}));
}

TEST_F(UsbDeviceTest, DeviceDescriptorNamesOnlyTheStringsThatExist) {
  const auto strings = [](const char* maker, const char* name) {
    const Bytes descriptor = device_descriptor({1, 2, maker, name});
    return Bytes(descriptor.begin() + 14, descriptor.begin() + 17);
  };
  EXPECT_EQ(strings("Zelkora", "Panel"), (Bytes{1, 2, 0}));
  EXPECT_EQ(strings("", "Panel"), (Bytes{0, 2, 0}));
  EXPECT_EQ(strings("Zelkora", ""), (Bytes{1, 0, 0}));
  EXPECT_EQ(strings("", ""), (Bytes{0, 0, 0}));
}

TEST_F(UsbDeviceTest, ConfigurationHoldsOneHidInterfaceWithAnInterruptEndpoint) {
  const auto report_length = static_cast<uint8_t>(report_descriptor({device_}).size());
  EXPECT_EQ(ask(0x80, 0x06, 0x0200),
            joined({{0x09, 0x02, 0x22, 0x00, 0x01, 0x01, 0x00, 0x80, 0x32},
                    {0x09, 0x04, 0x00, 0x00, 0x01, 0x03, 0x00, 0x00, 0x00},
                    {0x09, 0x21, 0x11, 0x01, 0x00, 0x01, 0x22, report_length, 0x00},
                    {0x07, 0x05, 0x81, 0x03, 0x40, 0x00, 0x0A}}));
  EXPECT_EQ(ask(0x80, 0x06, 0x0201), std::nullopt) << "there is no second configuration";
}

TEST_F(UsbDeviceTest, AnswerIsCutToTheLengthAskedFor) {
  EXPECT_EQ(ask(0x80, 0x06, 0x0200, 4), (Bytes{0x09, 0x02, 0x22, 0x00}));
}

TEST_F(UsbDeviceTest, StringsAreSentInSixteenBitCharacters) {
  EXPECT_EQ(ask(0x80, 0x06, 0x0300), (Bytes{0x04, 0x03, 0x09, 0x04}));
  EXPECT_EQ(ask(0x80, 0x06, 0x0301),
            (Bytes{0x10, 0x03, 'Z', 0, 'e', 0, 'l', 0, 'k', 0, 'o', 0, 'r', 0, 'a', 0}));
  EXPECT_EQ(ask(0x80, 0x06, 0x0302), (Bytes{0x0C, 0x03, 'P', 0, 'a', 0, 'n', 0, 'e', 0, 'l', 0}));
  EXPECT_EQ(ask(0x80, 0x06, 0x0303), std::nullopt);
}

TEST_F(UsbDeviceTest, StringThatDoesNotFitIsCut) {
  const Bytes descriptor = string_descriptor(std::string(300, 'x'));
  EXPECT_EQ(descriptor.size(), 254u);
  EXPECT_EQ(descriptor[0], 254);
}

TEST_F(UsbDeviceTest, ReportDescriptorDescribesEachFeatureReportAndAMouse) {
  EXPECT_EQ(ask(0x81, 0x06, 0x2200), joined({{0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01},
                                             {0x85, 0x01, 0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08,
                                              0x95, 0x04, 0x19, 0x01, 0x29, 0x04, 0xB1, 0x02},
                                             {0xC0},
                                             kMouse}));
}

TEST_F(UsbDeviceTest, SignedRangesAndLongReportsAreWrittenAsTheyAre) {
  device_.reports = {{7, 300, -128, 127}};
  const Bytes whole = report_descriptor({device_});
  const Bytes report(whole.begin() + 7, whole.begin() + 25);
  EXPECT_EQ(report, (Bytes{0x85, 0x07, 0x15, 0x80, 0x25, 0x7F, 0x75, 0x08, 0x96, 0x2C, 0x01, 0x19,
                           0x01, 0x2A, 0x2C, 0x01, 0xB1, 0x02}));
}

TEST_F(UsbDeviceTest, MouseTakesTheFirstReportIdThatIsFree) {
  EXPECT_EQ(input_report_id({}), 1);
  device_.reports = {{1, 4, 0, 255}, {3, 4, 0, 255}};
  EXPECT_EQ(input_report_id(device_.reports), 2);
  device_.reports = {{2, 4, 0, 255}, {1, 4, 0, 255}};
  EXPECT_EQ(input_report_id(device_.reports), 3);
}

TEST_F(UsbDeviceTest, HidDescriptorTellsTheLengthOfTheReportDescriptor) {
  const auto length = static_cast<uint8_t>(report_descriptor({device_}).size());
  EXPECT_EQ(ask(0x81, 0x06, 0x2100),
            (Bytes{0x09, 0x21, 0x11, 0x01, 0x00, 0x01, 0x22, length, 0x00}));
  EXPECT_EQ(ask(0x81, 0x06, 0x2300), std::nullopt) << "there are no physical descriptors";
}

TEST_F(UsbDeviceTest, ConfigurationCanBeSetAndAskedFor) {
  EXPECT_EQ(ask(0x80, 0x08, 0, 1), Bytes{0});
  EXPECT_EQ(ask(0x00, 0x09, 1, 0), Bytes{});
  EXPECT_EQ(ask(0x80, 0x08, 0, 1), Bytes{1});
  EXPECT_EQ(ask(0x00, 0x09, 2, 0), std::nullopt);
  EXPECT_EQ(ask(0x80, 0x08, 0, 1), Bytes{1});
}

TEST_F(UsbDeviceTest, StatusAndIdleAreAnswered) {
  EXPECT_EQ(ask(0x80, 0x00, 0, 2), (Bytes{0, 0}));
  EXPECT_EQ(ask(0x81, 0x00, 0, 2), (Bytes{0, 0}));
  EXPECT_EQ(ask(0x21, 0x0A, 0, 0), Bytes{});
}

TEST_F(UsbDeviceTest, FeatureReportReachesTheDeviceWithoutItsId) {
  EXPECT_EQ(tell(0x0301, {1, 0xAA, 0xBB}), Bytes{});
  EXPECT_EQ(device_.last_id, 1);
  EXPECT_EQ(device_.last_payload, (Bytes{0xAA, 0xBB}));
}

TEST_F(UsbDeviceTest, FeatureReportComesBackWithItsIdInFullLength) {
  device_.last_payload = {0xAA, 0xBB};
  EXPECT_EQ(ask(0xA1, 0x01, 0x0301), (Bytes{1, 0xAA, 0xBB, 0, 0}));
}

TEST_F(UsbDeviceTest, DeviceThatStallsStallsTheRequest) {
  device_.stalls = true;
  EXPECT_EQ(tell(0x0301, {1, 0xAA}), std::nullopt);
  EXPECT_EQ(device_.last_payload, Bytes{0xAA}) << "the device saw the report";
  EXPECT_EQ(ask(0xA1, 0x01, 0x0301), std::nullopt);
}

TEST_F(UsbDeviceTest, ReportsThatDoNotExistNeverReachTheDevice) {
  EXPECT_EQ(ask(0xA1, 0x01, 0x0302), std::nullopt) << "no feature report 2";
  EXPECT_EQ(ask(0xA1, 0x01, 0x0101), std::nullopt) << "an input report";
  EXPECT_EQ(tell(0x0201, {1, 2}), std::nullopt) << "an output report";
  EXPECT_EQ(tell(0x0301, {2, 2}), std::nullopt) << "another report's data";
  EXPECT_EQ(tell(0x0301, {}), std::nullopt) << "no data";
  EXPECT_EQ(device_.last_id, 0);
}

TEST_F(UsbDeviceTest, UnknownRequestsAreStalled) {
  EXPECT_EQ(ask(0x80, 0x06, 0x0600), std::nullopt) << "device qualifier";
  EXPECT_EQ(ask(0xA1, 0x03, 0), std::nullopt) << "get protocol";
  EXPECT_EQ(ask(0xC0, 0x06, 0x0100), std::nullopt) << "vendor request";
}

// A feature report that is the mouse's own leaves no application that is not input.
TEST_F(UsbDeviceTest, ReportDescriptorWithoutAHiddevNodeHasTheFeatureReportsInTheMouse) {
  EXPECT_EQ(report_descriptor({device_, Applications::kMouse}),
            joined({Bytes(kMouse.begin(), kMouse.begin() + 6),
                    {0x06, 0x00, 0xFF},
                    {0x85, 0x01, 0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08, 0x95, 0x04, 0x19, 0x01,
                     0x29, 0x04, 0xB1, 0x02},
                    {0x05, 0x01},
                    Bytes(kMouse.begin() + 6, kMouse.end())}));
}

// A panel on interface 0 and its pen on interface 1.
class UsbPenTest : public testing::Test {
 protected:
  std::optional<Bytes> ask(uint8_t type, uint8_t request, uint16_t value, uint16_t interface) {
    return answered(usb_.control({type, request, value, interface, 255}, {}));
  }

  EchoDevice device_;
  PenInterface pen_{device_};
  UsbDevice usb_{{device_, {pen_, Applications::kPen}}};
};

TEST_F(UsbPenTest, ConfigurationHoldsAnInterfaceAndAnEndpointForEach) {
  const auto panel = static_cast<uint8_t>(report_descriptor({device_}).size());
  const auto pen = static_cast<uint8_t>(report_descriptor({pen_, Applications::kPen}).size());
  EXPECT_EQ(ask(0x80, 0x06, 0x0200, 0),
            joined({{0x09, 0x02, 0x3B, 0x00, 0x02, 0x01, 0x00, 0x80, 0x32},
                    {0x09, 0x04, 0x00, 0x00, 0x01, 0x03, 0x00, 0x00, 0x00},
                    {0x09, 0x21, 0x11, 0x01, 0x00, 0x01, 0x22, panel, 0x00},
                    {0x07, 0x05, 0x81, 0x03, 0x40, 0x00, 0x0A},
                    {0x09, 0x04, 0x01, 0x00, 0x01, 0x03, 0x00, 0x00, 0x00},
                    {0x09, 0x21, 0x11, 0x01, 0x00, 0x01, 0x22, pen, 0x00},
                    {0x07, 0x05, 0x82, 0x03, 0x40, 0x00, 0x0A}}));
}

TEST_F(UsbPenTest, EachInterfaceHasItsOwnReportDescriptor) {
  EXPECT_EQ(ask(0x81, 0x06, 0x2200, 0), report_descriptor({device_}));
  EXPECT_EQ(ask(0x81, 0x06, 0x2200, 1), report_descriptor({pen_, Applications::kPen}));
  EXPECT_EQ(ask(0x81, 0x06, 0x2200, 2), std::nullopt) << "there is no third interface";
}

TEST_F(UsbPenTest, PenHasTwoEndsThatAreInputAndNothingElse) {
  const Bytes end = {0x05, 0x0D, 0x09, 0x02, 0xA1, 0x01, 0x85, 0x01, 0x09, 0x20, 0xA1, 0x00, 0x09,
                     0x42, 0x09, 0x32, 0x15, 0x00, 0x25, 0x01, 0x95, 0x02, 0x75, 0x01, 0x81, 0x02,
                     0x95, 0x01, 0x75, 0x06, 0x81, 0x01, 0x05, 0x01, 0x09, 0x30, 0x09, 0x31, 0x26,
                     0xFF, 0x0F, 0x95, 0x02, 0x75, 0x10, 0x81, 0x02, 0xC0, 0xC0};
  Bytes other_end = end;
  other_end[7] = 0x02;   // its report
  other_end[13] = 0x45;  // the eraser in place of the tip
  EXPECT_EQ(report_descriptor({pen_, Applications::kPen}), joined({end, other_end}));
}

TEST_F(UsbPenTest, FeatureReportsOfThePenStallAndNeverReachThePanel) {
  const Bytes report = {1, 0xAA};
  EXPECT_EQ(ask(0xA1, 0x01, 0x0301, 1), std::nullopt);
  EXPECT_EQ(answered(usb_.control({0x21, 0x09, 0x0301, 1, 2}, report)), std::nullopt);
  EXPECT_EQ(answered(usb_.control({0x21, 0x09, 0x0301, 2, 2}, report)), std::nullopt)
      << "no such interface";
  EXPECT_EQ(device_.last_id, 0);
  EXPECT_EQ(answered(usb_.control({0x21, 0x09, 0x0301, 0, 2}, report)), Bytes{});
  EXPECT_EQ(device_.last_id, 1);
}

// Messages as they cross the connection.
class UsbipSessionTest : public testing::Test {
 protected:
  template <typename Message>
  static Bytes bytes(const Message& message) {
    Bytes out(sizeof message);
    std::memcpy(out.data(), &message, sizeof message);
    return out;
  }

  static Bytes submit(uint32_t sequence, uint32_t direction, uint32_t endpoint, uint32_t length,
                      const SetupPacket& packet = {}) {
    usbip::Submit message;
    message.basic = {usbip::kSubmit, sequence, 0x00010002, direction, endpoint};
    message.length = length;
    message.setup = packet;
    return bytes(message);
  }

  static Bytes unlink(uint32_t sequence, uint32_t wanted) {
    usbip::Unlink message;
    message.basic = {usbip::kUnlink, sequence, 0x00010002, 0, 0};
    message.sequence = wanted;
    return bytes(message);
  }

  // The header of a reply: everything that is not named is zero.
  static Bytes reply(uint8_t command, uint8_t sequence, int status, uint8_t length = 0) {
    Bytes out(48);
    out[3] = command;
    out[7] = sequence;
    for (int i = 0; i < 4; ++i) out[23 - i] = static_cast<uint8_t>(status >> (8 * i));
    out[27] = length;
    return out;
  }

  EchoDevice device_;
  UsbipSession session_{{device_}};
};

const SetupPacket kAskLanguages = {0x80, 0x06, 0x0300, 0, 255};
const SetupPacket kSetReport = {0x21, 0x09, 0x0301, 0, 3};

TEST_F(UsbipSessionTest, HeaderIsBigEndianAndTheSetupPacketIsNot) {
  EXPECT_EQ(submit(0x01020304, 1, 0, 255, kAskLanguages),
            (Bytes{0, 0, 0, 1, 1, 2, 3, 4, 0,    1,    0,    2,    0, 0, 0,    1,
                   0, 0, 0, 0, 0, 0, 0, 0, 0,    0,    0,    255,  0, 0, 0,    0,
                   0, 0, 0, 0, 0, 0, 0, 0, 0x80, 0x06, 0x00, 0x03, 0, 0, 0xFF, 0}));
}

TEST_F(UsbipSessionTest, IncomingTransferReturnsItsData) {
  EXPECT_EQ(session_.receive(submit(9, usbip::kDirectionIn, 0, 255, kAskLanguages)),
            joined({reply(3, 9, 0, 4), {0x04, 0x03, 0x09, 0x04}}));
}

TEST_F(UsbipSessionTest, OutgoingTransferReturnsTheLengthItTook) {
  const Bytes message = joined({submit(5, usbip::kDirectionOut, 0, 3, kSetReport), {1, 7, 8}});
  EXPECT_EQ(session_.receive(message), reply(3, 5, 0, 3));
  EXPECT_EQ(device_.last_payload, (Bytes{7, 8}));
}

TEST_F(UsbipSessionTest, StallEndsTheTransferWithBrokenPipe) {
  device_.stalls = true;
  const Bytes message = joined({submit(5, usbip::kDirectionOut, 0, 3, kSetReport), {1, 7, 8}});
  EXPECT_EQ(session_.receive(message), reply(3, 5, -EPIPE));
}

TEST_F(UsbipSessionTest, MessagesMayComeInAnyPieces) {
  const Bytes messages = joined({submit(5, usbip::kDirectionOut, 0, 3, kSetReport),
                                 {1, 7, 8},
                                 submit(6, usbip::kDirectionIn, 0, 255, kAskLanguages)});
  Bytes answers;
  for (const uint8_t byte : messages) {
    const Bytes some = session_.receive({&byte, 1});
    answers.insert(answers.end(), some.begin(), some.end());
  }
  const Bytes expected = joined({reply(3, 5, 0, 3), reply(3, 6, 0, 4), {0x04, 0x03, 0x09, 0x04}});
  EXPECT_EQ(answers, expected);
  EXPECT_EQ(UsbipSession({device_}).receive(messages), expected);
}

TEST_F(UsbipSessionTest, InterruptTransferWaitsUntilItIsUnlinked) {
  EXPECT_EQ(session_.receive(submit(7, usbip::kDirectionIn, 1, 64)), Bytes{});
  EXPECT_EQ(session_.receive(unlink(8, 7)), reply(4, 8, -ECONNRESET));
  EXPECT_EQ(session_.receive(unlink(9, 7)), reply(4, 9, 0)) << "it has ended";
}

TEST_F(UsbipSessionTest, RequestThatTheDeviceLetsHangWaitsUntilItIsUnlinked) {
  const SetupPacket get_report = {0xA1, 0x01, 0x0301, 0, 5};
  device_.usb_faults.hangs = true;
  EXPECT_EQ(
      session_.receive(joined({submit(5, usbip::kDirectionOut, 0, 3, kSetReport), {1, 7, 8}})),
      Bytes{});
  EXPECT_EQ(session_.receive(submit(6, usbip::kDirectionIn, 0, 5, get_report)), Bytes{});
  EXPECT_EQ(session_.receive(submit(7, usbip::kDirectionIn, 0, 255, kAskLanguages)),
            joined({reply(3, 7, 0, 4), {0x04, 0x03, 0x09, 0x04}}))
      << "only reports hang";
  EXPECT_EQ(session_.receive(unlink(8, 5)), reply(4, 8, -ECONNRESET));
  EXPECT_EQ(session_.receive(unlink(9, 6)), reply(4, 9, -ECONNRESET));
  device_.usb_faults.hangs = false;
  EXPECT_EQ(
      session_.receive(joined({submit(10, usbip::kDirectionOut, 0, 3, kSetReport), {1, 7, 8}})),
      reply(3, 10, 0, 3));
}

TEST_F(UsbipSessionTest, RequestInWhichTheDeviceIsUnpluggedGetsNoAnswer) {
  int unplugs = 0;
  device_.set_on_unplug([&] { ++unplugs; });
  device_.usb_faults.unplugs_after = 0;
  EXPECT_EQ(
      session_.receive(joined({submit(5, usbip::kDirectionOut, 0, 3, kSetReport), {1, 7, 8}})),
      Bytes{});
  EXPECT_EQ(unplugs, 1);
}

TEST_F(UsbipSessionTest, ReportsAreTraced) {
  std::vector<std::string> lines;
  UsbipSession session({device_}, [&](std::string line) { lines.push_back(std::move(line)); });
  session.receive(joined({submit(5, usbip::kDirectionOut, 0, 3, kSetReport), {1, 7, 8}}));
  session.receive(submit(6, usbip::kDirectionIn, 0, 5, {0xA1, 0x01, 0x0301, 0, 5}));
  session.receive(submit(7, usbip::kDirectionIn, 0, 255, kAskLanguages));
  EXPECT_EQ(lines, (std::vector<std::string>{"set_report 1: 07 08", "get_report 1: 07 08"}));
}

}  // namespace
}  // namespace zelkora::sim
