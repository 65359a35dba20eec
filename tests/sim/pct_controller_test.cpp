// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "pct_controller.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <numeric>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "virtual_kernel.h"

namespace {

using zelkora::sim::PctController;
using zelkora::sim::PctFamily;
using Bytes = std::vector<uint8_t>;
using PosConfig = PctController::PosConfig;

constexpr uint16_t kVendor = 0x2575;
constexpr uint16_t kProduct = 0x8753;

// A report's payload: these bytes and the zeros that fill the report up.
Bytes payload(Bytes bytes) {
  bytes.resize(63);
  return bytes;
}

Bytes joined(Bytes head, const Bytes& tail) {
  head.insert(head.end(), tail.begin(), tail.end());
  return head;
}

// The bytes 01, 02 and so on to 20.
Bytes counting_block() {
  Bytes block(PctController::kBlockSize);
  std::iota(block.begin(), block.end(), 1);
  return block;
}

// The sum of 1 to 32 is 0210, and 0210 + 6666 = 6876.
const Bytes kStoredBlock = joined(counting_block(), {0x76, 0x68});

PctController::Flash flash_of(const Bytes& bytes) {
  PctController::Flash flash{};
  std::ranges::copy(bytes, flash.begin());
  return flash;
}

class PctBench {
 public:
  explicit PctBench(uint32_t firmware)
      : controller_(firmware, {kVendor, kProduct, "Zelkora", "Virtual PCT"}) {}

 protected:
  // Sends a report, given with its id in front.
  bool send(const Bytes& report) {
    return controller_.set_feature(report[0], payload({report.begin() + 1, report.end()}));
  }
  std::optional<Bytes> ask(const Bytes& report) {
    EXPECT_TRUE(send(report));
    return controller_.get_feature(report[0] == 0xF3 ? 0xF3 : 0x07);
  }
  std::optional<Bytes> device_mode() { return ask({0x06, 0x73, 0x0C}); }
  std::optional<Bytes> usb_id() { return ask({0xF3, 0x04, 0x00, 0x02}); }
  void enter_command_mode() { send({0x08, 0x91, 0x02, 0x00, 0x82, 0x90}); }
  void leave_command_mode() { send({0x08, 0x91, 0x02, 0x00, 0x82, 0x01}); }

  PctController controller_;
};

const Bytes kTellsNormalMode = payload({0x73, 0x0C, 0x00, 0x01});
const Bytes kTellsCommandMode = payload({0x73, 0x0C, 0x00, 0x90});

Bytes usb_id_reply(const Bytes& ids) {
  return payload(joined({0x04, 0x00, 0x02, 0x00, 0x00, 0x00}, ids));
}

struct Family {
  const char* name;
  uint32_t firmware;
  Bytes reset;
  Bytes pos_mode;  // the command without its last byte
};

void PrintTo(const Family& family, std::ostream* out) { *out << family.name; }

// What does not depend on the layout.
class PctControllerTest : public PctBench, public testing::TestWithParam<Family> {
 protected:
  PctControllerTest() : PctBench(GetParam().firmware) {}

  bool reset() { return send(GetParam().reset); }
  bool set_pos_mode(uint8_t byte) { return send(joined(GetParam().pos_mode, {byte})); }
};

INSTANTIATE_TEST_SUITE_P(Families, PctControllerTest,
                         testing::Values(Family{"Pct8752",
                                                PctController::kFirmware8752,
                                                {0x08, 0x85, 0x01, 0x00, 0x02},
                                                {0x08, 0x91, 0x05, 0x00, 0xC9}},
                                         Family{"Pct8753",
                                                PctController::kFirmware8753,
                                                {0x08, 0x84, 0x09, 0x00, 0x00, 0x00, 0x00, 0x00},
                                                {0x08, 0x84, 0xC9, 0x00}}),
                         [](const auto& suite) { return std::string(suite.param.name); });

TEST_P(PctControllerTest, HasFiveReportsOf63UnsignedBytes) {
  Bytes ids;
  for (const auto& report : controller_.feature_reports()) {
    ids.push_back(report.id);
    EXPECT_EQ(report.usage_count, 63U);
    EXPECT_EQ(report.logical_minimum, 0);
    EXPECT_EQ(report.logical_maximum, 255);
  }
  EXPECT_EQ(ids, (Bytes{0x06, 0x07, 0x08, 0xF2, 0xF3}));
  EXPECT_EQ(controller_.identity().kernel_name(), "Zelkora Virtual PCT");
}

TEST_P(PctControllerTest, EntersAndLeavesCommandMode) {
  EXPECT_EQ(device_mode(), kTellsNormalMode);
  EXPECT_TRUE(send({0x08, 0x91, 0x02, 0x00, 0x82, 0x90}));
  EXPECT_EQ(controller_.device_mode(), PctController::kCommandMode);
  EXPECT_EQ(device_mode(), kTellsCommandMode);
  EXPECT_TRUE(send({0x08, 0x91, 0x02, 0x00, 0x82, 0x01}));
  EXPECT_EQ(controller_.device_mode(), PctController::kNormalMode);
  EXPECT_EQ(device_mode(), kTellsNormalMode);
}

TEST_P(PctControllerTest, KnowsNoThirdDeviceMode) {
  EXPECT_TRUE(send({0x08, 0x91, 0x02, 0x00, 0x82, 0x55}));
  EXPECT_EQ(device_mode(), kTellsNormalMode);
}

TEST_P(PctControllerTest, TellsItsUsbIdLowBytesFirst) {
  EXPECT_EQ(usb_id(), usb_id_reply({0x75, 0x25, 0x53, 0x87}));
}

TEST_P(PctControllerTest, TakesANewUsbIdWhenItIsReset) {
  EXPECT_TRUE(send({0xF3, 0x08, 0x00, 0x02, 0x00, 0x00, 0x4C, 0x3A, 0x69, 0x99}));
  EXPECT_EQ(controller_.get_feature(0xF3), std::nullopt) << "a write is not answered";
  EXPECT_EQ(controller_.stored_vendor(), 0x3A4C);
  EXPECT_EQ(controller_.stored_product(), 0x9969);
  EXPECT_EQ(usb_id(), usb_id_reply({0x4C, 0x3A, 0x69, 0x99}));
  EXPECT_EQ(controller_.identity().vendor, kVendor);
  EXPECT_EQ(controller_.identity().product, kProduct);

  uint16_t product_at_reset = 0;
  controller_.set_on_reset([&] { product_at_reset = controller_.identity().product; });
  EXPECT_TRUE(reset());
  EXPECT_EQ(product_at_reset, 0x9969);
  EXPECT_EQ(controller_.identity().vendor, 0x3A4C);
  EXPECT_EQ(controller_.identity().kernel_name(), "Zelkora Virtual PCT");
  EXPECT_EQ(controller_.resets(), 1U);
}

TEST_P(PctControllerTest, LeavesCommandModeButKeepsWhatIsStoredOverAReset) {
  enter_command_mode();
  set_pos_mode(0x22);
  controller_.set_flash(flash_of(kStoredBlock));
  EXPECT_TRUE(reset());
  EXPECT_EQ(controller_.device_mode(), PctController::kNormalMode);
  EXPECT_EQ(controller_.pos_mode(), 3U);
  EXPECT_EQ(controller_.flash(), flash_of(kStoredBlock));
  EXPECT_EQ(controller_.identity().product, kProduct);
}

TEST_P(PctControllerTest, TakesFourPosModesAndNoOther) {
  EXPECT_EQ(controller_.pos_mode(), 1U);
  for (const uint8_t byte : Bytes{0x23, 0x22, 0x21, 0x20}) {
    EXPECT_TRUE(set_pos_mode(byte));
    EXPECT_EQ(controller_.pos_mode(), byte - 31U);
  }
  set_pos_mode(0x21);
  for (const uint8_t byte : Bytes{0x00, 0x1F, 0x24, 0xFF}) {
    EXPECT_TRUE(set_pos_mode(byte));
    EXPECT_EQ(controller_.pos_mode(), 2U);
  }
}

TEST_P(PctControllerTest, StallsOnReportsThatDoNotGoThatWay) {
  for (const uint8_t id : Bytes{0x00, 0x01, 0x07, 0xF2})
    EXPECT_FALSE(controller_.set_feature(id, payload({}))) << unsigned{id};
  EXPECT_TRUE(controller_.commands().empty());
  for (const uint8_t id : Bytes{0x00, 0x01, 0x06, 0x07, 0x08, 0xF3})
    EXPECT_EQ(controller_.get_feature(id), std::nullopt) << unsigned{id};
}

TEST_P(PctControllerTest, KeepsAReplyUntilTheNextCommand) {
  EXPECT_EQ(device_mode(), kTellsNormalMode);
  EXPECT_EQ(controller_.get_feature(0x07), kTellsNormalMode);
  EXPECT_EQ(controller_.get_feature(0xF3), std::nullopt);
  EXPECT_EQ(ask({0x06, 0x99}), std::nullopt) << "an unknown command has no reply";
}

TEST_P(PctControllerTest, TakesCommandsWithoutTheZerosBehindThem) {
  EXPECT_TRUE(controller_.set_feature(0x06, Bytes{0x73, 0x0C}));
  EXPECT_EQ(controller_.get_feature(0x07), kTellsNormalMode);
  EXPECT_TRUE(controller_.set_feature(0x06, {}));
  EXPECT_EQ(controller_.get_feature(0x07), std::nullopt);
}

TEST_P(PctControllerTest, RecordsEveryCommandAsItCame) {
  controller_.faults.stalled_commands = 1;
  controller_.faults.silent_commands = 1;
  send({0x06, 0x73, 0x0C});
  send({0x08, 0xFF});
  controller_.set_feature(0xF3, Bytes{0x04, 0x00});
  EXPECT_EQ(controller_.commands(), (std::vector<Bytes>{joined({0x06}, payload({0x73, 0x0C})),
                                                        joined({0x08}, payload({0xFF})),
                                                        {0xF3, 0x04, 0x00}}));
}

TEST_P(PctControllerTest, FitsItsRepliesToReportsOfAnotherSize) {
  controller_.set_usage_count(2);
  EXPECT_EQ(controller_.feature_reports()[1].usage_count, 2U);
  EXPECT_EQ(device_mode(), (Bytes{0x73, 0x0C}));
  controller_.set_usage_count(100);
  EXPECT_EQ(device_mode()->size(), 100U);
}

TEST_P(PctControllerTest, KeepsSilentAltogether) {
  controller_.faults.silent = true;
  EXPECT_EQ(device_mode(), std::nullopt);
  EXPECT_EQ(usb_id(), std::nullopt);
  EXPECT_EQ(controller_.get_feature(0xF2), std::nullopt);
  EXPECT_TRUE(reset());
  EXPECT_EQ(controller_.resets(), 0U);
}

TEST_P(PctControllerTest, KeepsSilentForAsManyCommandsAsAsked) {
  controller_.faults.silent_commands = 2;
  enter_command_mode();
  EXPECT_EQ(device_mode(), std::nullopt);
  EXPECT_EQ(device_mode(), kTellsNormalMode) << "a command that is not answered has no effect";
}

TEST_P(PctControllerTest, StallsOnAsManyCommandsAsAsked) {
  controller_.faults.stalled_commands = 1;
  EXPECT_FALSE(reset());
  EXPECT_EQ(controller_.resets(), 0U);
  EXPECT_TRUE(reset());
  EXPECT_EQ(controller_.resets(), 1U);
}

TEST_P(PctControllerTest, RefusesToChangeItsDeviceModeAsOftenAsAsked) {
  controller_.faults.refused_command_modes = 2;
  controller_.faults.refused_normal_modes = 1;
  for (const Bytes& told : {kTellsNormalMode, kTellsNormalMode, kTellsCommandMode}) {
    enter_command_mode();
    EXPECT_EQ(device_mode(), told);
  }
  for (const Bytes& told : {kTellsCommandMode, kTellsNormalMode}) {
    leave_command_mode();
    EXPECT_EQ(device_mode(), told);
  }
}

TEST_P(PctControllerTest, TellsTheWrongDeviceMode) {
  controller_.faults.wrong_device_modes = 1;
  EXPECT_EQ(device_mode(), kTellsCommandMode);
  EXPECT_EQ(device_mode(), kTellsNormalMode);
  enter_command_mode();
  controller_.faults.wrong_device_modes = 1;
  EXPECT_EQ(device_mode(), kTellsNormalMode);
  EXPECT_EQ(device_mode(), kTellsCommandMode);
}

TEST_P(PctControllerTest, TellsTheWrongVendor) {
  controller_.faults.wrong_usb_ids = 1;
  EXPECT_EQ(usb_id(), usb_id_reply({0x8A, 0xDA, 0x53, 0x87}));
  EXPECT_EQ(usb_id(), usb_id_reply({0x75, 0x25, 0x53, 0x87}));
}

TEST_P(PctControllerTest, RefusesAPosModeAsOftenAsAsked) {
  controller_.faults.refused_pos_modes = 1;
  EXPECT_TRUE(set_pos_mode(0x21));
  EXPECT_EQ(controller_.pos_mode(), 1U);
  EXPECT_TRUE(set_pos_mode(0x21));
  EXPECT_EQ(controller_.pos_mode(), 2U);
}

class Pct8752Test : public PctBench, public testing::Test {
 protected:
  Pct8752Test() : PctBench(PctController::kFirmware8752) {}
};

TEST_F(Pct8752Test, TellsItsFirmware) {
  EXPECT_EQ(controller_.family(), PctFamily::k8752);
  EXPECT_EQ(controller_.get_feature(0xF2), payload({0x34, 0x12, 0x81, 0x30}));
  controller_.set_firmware(0x3FFFFFFF);
  EXPECT_EQ(controller_.family(), PctFamily::k8752);
  EXPECT_EQ(controller_.get_feature(0xF2), payload({0xFF, 0xFF, 0xFF, 0x3F}));
}

TEST_F(Pct8752Test, WritesReadsAndErasesItsFlashInCommandMode) {
  enter_command_mode();
  EXPECT_EQ(ask({0x06, 0xA1, 0x22}), payload({0xA1, 0x22, 0x00}));
  EXPECT_TRUE(send(joined({0x08, 0xA8, 0x22, 0x00}, counting_block())));
  EXPECT_EQ(controller_.flash(), flash_of(kStoredBlock));
  EXPECT_EQ(ask({0x06, 0xA1, 0x22}), payload(joined({0xA1, 0x22, 0x00}, kStoredBlock)));
  EXPECT_EQ(ask({0x06, 0xA1, 0x02}), payload({0xA1, 0x02, 0x00, 0x01, 0x02}));
  EXPECT_EQ(ask({0x06, 0xA1, 0xFF}), payload(joined({0xA1, 0xFF, 0x00}, kStoredBlock)));
  EXPECT_TRUE(send({0x08, 0xA8, 0x40}));
  EXPECT_EQ(controller_.flash(), PctController::Flash{});
}

TEST_F(Pct8752Test, KeepsItsFlashClosedOutsideCommandMode) {
  controller_.set_flash(flash_of(kStoredBlock));
  EXPECT_EQ(ask({0x06, 0xA1, 0x22}), std::nullopt);
  EXPECT_TRUE(send({0x08, 0xA8, 0x22}));
  EXPECT_TRUE(send({0x08, 0xA8, 0x40}));
  EXPECT_EQ(controller_.flash(), flash_of(kStoredBlock));
}

TEST_F(Pct8752Test, SpoilsTheChecksumItReads) {
  enter_command_mode();
  controller_.set_flash(flash_of(kStoredBlock));
  controller_.faults.bad_checksums = 1;
  EXPECT_EQ(ask({0x06, 0xA1, 0x22}),
            payload(joined(joined({0xA1, 0x22, 0x00}, counting_block()), {0x89, 0x68})));
  EXPECT_EQ(ask({0x06, 0xA1, 0x22}), payload(joined({0xA1, 0x22, 0x00}, kStoredBlock)));
}

TEST_F(Pct8752Test, WritesAndReadsItsPosConfiguration) {
  EXPECT_EQ(ask({0x06, 0xA2, 0x10}), payload({0xA2, 0x10, 0x00, 0x21, 0x00, 0x10, 0xA4}));
  EXPECT_TRUE(send({0x08, 0x91, 0x05, 0x00, 0xC9, 0x22}));
  EXPECT_TRUE(send({0x08, 0x91, 0x05, 0x00, 0xC0, 0x20, 0x3F, 0x5A}));
  EXPECT_EQ(controller_.pos_config(), (PosConfig{0x20, 0x02, 0x3F, 0x5A}));
  EXPECT_EQ(ask({0x06, 0xA2, 0x10}), payload({0xA2, 0x10, 0x00, 0x20, 0x02, 0x3F, 0x5A}));
  EXPECT_EQ(ask({0x06, 0xA2, 0x01}), payload({0xA2, 0x01, 0x00, 0x20}));
}

TEST_F(Pct8752Test, LeavesPosConfigurationRepliesBlankAsOftenAsAsked) {
  controller_.faults.blank_pos_replies = 1;
  EXPECT_EQ(ask({0x06, 0xA2, 0x10}), payload({0xA2, 0x10}));
  EXPECT_EQ(ask({0x06, 0xA2, 0x10}), payload({0xA2, 0x10, 0x00, 0x21, 0x00, 0x10, 0xA4}));
}

TEST_F(Pct8752Test, IgnoresTheCommandsOfTheOtherFamily) {
  EXPECT_TRUE(send({0x08, 0x84, 0xC0, 0x00, 0x20, 0x3F, 0x5A}));
  EXPECT_TRUE(send({0x08, 0x84, 0xC9, 0x00, 0x22}));
  EXPECT_TRUE(send({0x08, 0x84, 0x09, 0x00}));
  EXPECT_EQ(controller_.pos_config(), (PosConfig{0x21, 0x00, 0x10, 0xA4}));
  EXPECT_EQ(controller_.resets(), 0U);
}

class Pct8753Test : public PctBench, public testing::Test {
 protected:
  Pct8753Test() : PctBench(PctController::kFirmware8753) {}
};

TEST_F(Pct8753Test, TellsItsFirmware) {
  EXPECT_EQ(controller_.family(), PctFamily::k8753);
  EXPECT_EQ(controller_.get_feature(0xF2), payload({0x90, 0x01, 0x53, 0x87}));
  controller_.set_firmware(0x00020168);
  EXPECT_EQ(controller_.family(), PctFamily::k8753);
  EXPECT_EQ(controller_.get_feature(0xF2), payload({0x68, 0x01, 0x02, 0x00}));
}

TEST_F(Pct8753Test, WritesReadsAndErasesItsFlashInEitherMode) {
  EXPECT_EQ(ask({0x06, 0xA1, 0x22}), payload({0xA1, 0x22, 0x00, 0x00, 0x00, 0x00, 0x00}));
  EXPECT_TRUE(send(joined({0x08, 0xA8, 0x22, 0x00, 0x00, 0x00, 0x00, 0x00}, counting_block())));
  EXPECT_EQ(controller_.flash(), flash_of(kStoredBlock));
  const Bytes whole = joined({0xA1, 0x22, 0x00, 0x00, 0x00, 0x00, 0x00}, kStoredBlock);
  EXPECT_EQ(ask({0x06, 0xA1, 0x22}), payload(whole));
  EXPECT_EQ(ask({0x06, 0xA1, 0x02}), payload({0xA1, 0x02, 0x00, 0x00, 0x00, 0x00, 0x00, 1, 2}));
  enter_command_mode();
  EXPECT_EQ(ask({0x06, 0xA1, 0x22}), payload(whole));
  EXPECT_TRUE(send({0x08, 0xA8, 0x40}));
  EXPECT_EQ(controller_.flash(), PctController::Flash{});
}

TEST_F(Pct8753Test, AddsTheChecksumWhateverFollowsTheBlock) {
  const Bytes block = joined({0x08, 0xA8, 0x22, 0x00, 0x00, 0x00, 0x00, 0x00}, counting_block());
  EXPECT_TRUE(send(joined(block, {0x12, 0x34})));
  EXPECT_EQ(controller_.flash(), flash_of(kStoredBlock));
}

TEST_F(Pct8753Test, AddsTheChecksumOfLargeBytes) {
  std::array<uint8_t, PctController::kBlockSize> block{};
  block.fill(0xFF);
  controller_.store_block(block);
  EXPECT_EQ(controller_.flash()[31], 0xFF);
  EXPECT_EQ(controller_.flash()[32], 0x46) << "32 * FF + 6666 = 8646";
  EXPECT_EQ(controller_.flash()[33], 0x86);
}

TEST_F(Pct8753Test, ReadsAsStoredABlockWhoseChecksumIsWrong) {
  const Bytes bytes = joined(counting_block(), {0x00, 0xBA});
  controller_.set_flash(flash_of(bytes));
  EXPECT_EQ(ask({0x06, 0xA1, 0x22}),
            payload(joined({0xA1, 0x22, 0x00, 0x00, 0x00, 0x00, 0x00}, bytes)));
}

TEST_F(Pct8753Test, WritesAndReadsItsPosConfiguration) {
  EXPECT_EQ(ask({0x06, 0xA2, 0x10}),
            payload({0xA2, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00, 0x21, 0x00, 0x10, 0xA4}));
  EXPECT_TRUE(send({0x08, 0x84, 0xC9, 0x00, 0x23}));
  EXPECT_TRUE(send({0x08, 0x84, 0xC0, 0x00, 0x01, 0x18, 0xF0, 0x00}));
  EXPECT_EQ(controller_.pos_config(), (PosConfig{0x01, 0x03, 0x18, 0xF0}));
  EXPECT_EQ(ask({0x06, 0xA2, 0x10}),
            payload({0xA2, 0x10, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01, 0x03, 0x18, 0xF0}));
}

TEST_F(Pct8753Test, TellsThePosConfigurationItWasGiven) {
  controller_.set_pos_config({});
  EXPECT_EQ(ask({0x06, 0xA2, 0x10}), payload({0xA2, 0x10}));
  EXPECT_EQ(controller_.pos_mode(), 1U);
}

TEST_F(Pct8753Test, IgnoresTheCommandsOfTheOtherFamily) {
  EXPECT_TRUE(send({0x08, 0x91, 0x05, 0x00, 0xC0, 0x20, 0x3F, 0x5A}));
  EXPECT_TRUE(send({0x08, 0x91, 0x05, 0x00, 0xC9, 0x22}));
  EXPECT_TRUE(send({0x08, 0x85, 0x01, 0x00, 0x02}));
  EXPECT_EQ(controller_.pos_config(), (PosConfig{0x21, 0x00, 0x10, 0xA4}));
  EXPECT_EQ(controller_.resets(), 0U);
}

// The controller behind a hidraw node, as its hosts meet it.
class PctOnHidrawTest : public Pct8753Test {
 protected:
  PctOnHidrawTest() { plug_in(); }
  ~PctOnHidrawTest() override { kernel_.unplug(attachment_); }

  void plug_in() {
    attachment_ = kernel_.attach(controller_, {"usb-1/input0", "", "/dev/hidraw0", ""});
    handle_ = kernel_.open("/dev/hidraw0", O_RDWR);
  }
  int set_feature(Bytes report) {
    report.resize(64);
    return kernel_.ioctl(handle_, HIDIOCSFEATURE(64), report.data());
  }

  zelkora::sim::VirtualKernel kernel_;
  int attachment_ = -1;
  int handle_ = -1;
};

TEST_F(PctOnHidrawTest, AnswersALongRequestForTheUsbIdWithTheReportAndItsId) {
  EXPECT_EQ(set_feature({0xF3, 0x04, 0x00, 0x02}), 64);
  Bytes reply(512, 0xEE);
  reply[0] = 0xF3;
  EXPECT_EQ(kernel_.ioctl(handle_, HIDIOCGFEATURE(512), reply.data()), 64);
  EXPECT_EQ((Bytes{reply.begin() + 7, reply.begin() + 11}), (Bytes{0x75, 0x25, 0x53, 0x87}));
  EXPECT_EQ(reply[64], 0xEE);
}

TEST_F(PctOnHidrawTest, ComesBackAsAnotherProductWhenTheCarrierAttachesItAgain) {
  bool left = false;
  controller_.set_on_reset([&] { left = true; });
  set_feature({0xF3, 0x08, 0x00, 0x02, 0x00, 0x00, 0x75, 0x25, 0x68, 0x99});
  EXPECT_FALSE(left);
  EXPECT_EQ(set_feature({0x08, 0x84, 0x09}), 64);
  ASSERT_TRUE(left);
  kernel_.unplug(attachment_);
  EXPECT_EQ(set_feature({0x06, 0x73, 0x0C}), -ENODEV);
  plug_in();
  hidraw_devinfo info{};
  EXPECT_EQ(kernel_.ioctl(handle_, HIDIOCGRAWINFO, &info), 0);
  EXPECT_EQ(static_cast<uint16_t>(info.vendor), 0x2575);
  EXPECT_EQ(static_cast<uint16_t>(info.product), 0x9968);
}

}  // namespace
