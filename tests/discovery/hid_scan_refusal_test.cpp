// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Where an enumeration drops a PCT panel, and what it leaves of it: in the table, in the files, in
// the controller and of descriptors.
#include <cerrno>
#include <filesystem>
#include <functional>

#include "pct_scan_bench.h"

namespace {

using zelkora::sim::PctController;
using zelkora::test::Bytes;
using zelkora::test::data_file;
using zelkora::test::identity_flash;
using zelkora::test::joined;
using zelkora::test::kNewSerialNumber;
using zelkora::test::kPctKinds;
using zelkora::test::kSerialNumber;
using zelkora::test::Lines;
using zelkora::test::pct_kind_name;
using zelkora::test::PctKind;
using zelkora::test::PctPanel;
using zelkora::test::PctScanBench;
using zelkora::test::repeated;
using zelkora::test::serial_number;
using zelkora::test::SerialNumber;
using zelkora::test::trace_messages;
using zelkora::test::write_file;

constexpr SerialNumber kNone = {};

class RefusalTest : public PctScanBench, public testing::WithParamInterface<PctKind> {
 protected:
  const PctKind& kind() const { return GetParam(); }
  Bytes known_flash(const SerialNumber& number = kSerialNumber) const {
    return identity_flash(0x2575, 0x8753, kind().revision, number);
  }
  // What the panel left behind the last entry.
  const TouchDeviceEntry& left() const { return TouchDevice[DeviceNumber]; }
  void expect_identity_left() const {
    EXPECT_STREQ(left().Name, kind().node());
    EXPECT_STREQ(left().Phys, kPhys);
    EXPECT_STREQ(left().ID, "2575_8753");
    EXPECT_EQ(left().Type, ZELKORA_TYPE_PCT);
    EXPECT_EQ(left().HidRaw, kind().hidraw ? 1 : 0);
    EXPECT_EQ(left().IsLegacy, kind().family);
    EXPECT_EQ(left().POSMode, 0);
    EXPECT_EQ(IsLegacy, kind().family) << "as the last panel left it";
  }
  static void expect_file(const char* name, bool there) {
    EXPECT_EQ(std::filesystem::exists(data_file(name)), there) << name;
  }
};

// --- every family ---

class HidScanRefusalTest : public RefusalTest {};
INSTANTIATE_TEST_SUITE_P(Discovery, HidScanRefusalTest, testing::ValuesIn(kPctKinds),
                         pct_kind_name);

TEST_P(HidScanRefusalTest, WithByteThreePanelsOfThe8752FamilyAreLeftOpenAndUnasked) {
  add_known(kind());
  host.config[3] = 0x80;
  if (!kind().is_8752()) {
    EXPECT_EQ(GetTouchPanels(0), 1);
    return;
  }
  EXPECT_EQ(GetTouchPanels(0), 0);
  expect_dropped();
  expect_left_open();
  EXPECT_EQ(steps(), opened(kind()));
  expect_identity_left();
  EXPECT_STREQ(left().FWVersion, "");
  EXPECT_EQ(serial_number(left()), kNone);
  expect_file(".pctuniq", false);
}

TEST_P(HidScanRefusalTest, WithByteThreeAPanelOfUnknownFamilyIsNoneOfThe8752) {
  PctPanel& panel = add_known(kind());
  host.config[3] = 1;
  fail_replies(kind(), 1);
  GetTouchPanels(0);
  EXPECT_FALSE(panel.controller.commands().empty());
}

TEST_P(HidScanRefusalTest, ABlockThatIsNotValidOnceWrittenDropsThePanel) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.bad_checksums = 22;
  EXPECT_EQ(GetTouchPanels(0), 0);
  expect_dropped();
  EXPECT_EQ(panel.controller.faults.bad_checksums, 0U);
  EXPECT_EQ(count_of("usleep 300000"), 22U);
  EXPECT_EQ(steps().back(), closed(kind()).back());
  EXPECT_EQ(messages_of({"leave_cmd_mode"}).size(), kind().is_8752() ? 1U : 0U);
  EXPECT_EQ(panel.controller.device_mode(), PctController::kNormalMode);
  expect_identity_left();
  EXPECT_STREQ(left().FWVersion, kind().version);
  EXPECT_EQ(left().FWRev, kind().revision);
  EXPECT_EQ(serial_number(left()), kNewSerialNumber) << "in memory for this scan";
  EXPECT_EQ(messages_of({"***SetMySNBin"}), Lines());
  expect_file(".pctuniq", false);
  expect_file(".pctpbin", false);
}

TEST_P(HidScanRefusalTest, ABlockThatIsValidAtTheLastReadKeepsThePanel) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.bad_checksums = 21;
  EXPECT_EQ(GetTouchPanels(0), 1);
}

TEST_P(HidScanRefusalTest, APanelThatTakesNoCommandIsDropped) {
  PctPanel& panel = add_known(kind());
  kernel.fail_ioctl(kind().node(), kind().hidraw ? HIDIOCSFEATURE(0) : HIDIOCSREPORT, EIO, -1);
  EXPECT_EQ(GetTouchPanels(0), 0);
  expect_dropped();
  // Neither of the modes is reached, which passes for done; the block cannot be written.
  const Lines modes = kind().is_8752() ? repeated(21, {"usleep 5000"}) : Lines();
  EXPECT_EQ(steps(),
            joined({opened(kind()), firmware_told(kind()),
                    kind().is_8752() ? log("enter_cmd_mode") : Lines(), modes,
                    repeated(11, {"usleep 300000"}),
                    kind().is_8752() ? log("leave_cmd_mode") : Lines(), modes, closed(kind())}));
  EXPECT_TRUE(panel.controller.commands().empty());
  EXPECT_EQ(serial_number(left()), kNewSerialNumber);
}

TEST_P(HidScanRefusalTest, ASilentPanelIsDropped) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.silent = true;
  EXPECT_EQ(GetTouchPanels(0), 0);
  expect_dropped();
  EXPECT_EQ(node_calls().back(), closed(kind()).back());
}

TEST_P(HidScanRefusalTest, ReportsOfAnyLengthAreSurvivedAndLongEnoughOnesTaken) {
  const unsigned needed = (kind().is_8752() ? 3 : 7) + PctController::kFlashSize;
  for (const unsigned count : {4U, 8U, needed - 1, needed, 63U, 64U, 65U, 200U, 511U, 512U, 600U}) {
    SCOPED_TRACE(count);
    PctPanel& panel = add_known(kind());
    panel.controller.set_usage_count(count);
    EXPECT_EQ(GetTouchPanels(0), count < needed ? 0 : 1);
    EXPECT_EQ(TouchDevice[0].IsLegacy, kind().family);
    EXPECT_STREQ(TouchDevice[0].FWVersion, kind().version);
    EXPECT_EQ(TouchDevice[1].Type, 0);
    remove(panel);
  }
}

struct StoreCase {
  const char* name;
  std::function<void()> spoil;
};

TEST_P(HidScanRefusalTest, ARecordThatCannotBeWrittenDropsThePanel) {
  const std::string path = data_file(".pctpbin");
  const StoreCase cases[] = {
      {"a directory", [&] { std::filesystem::create_directory(path); }},
      {"not to be opened", [&] { fail_file_call("fopen", path, EACCES, 2); }},
      {"full", [&] { write_file(path, std::string(256 * 347, 'x')); }},
  };
  add_known(kind());
  for (const StoreCase& row : cases) {
    SCOPED_TRACE(row.name);
    std::filesystem::remove(path);
    std::filesystem::remove(data_file(".pctuniq"));
    row.spoil();
    clear_trace();
    EXPECT_EQ(GetTouchPanels(0), 0);
    expect_dropped();
    EXPECT_EQ(steps(), joined({opened(kind()), firmware_told(kind()), mode_entered(kind()),
                               flash_read(kind(), known_flash()), mode_left(kind()),
                               made_writable(".pctuniq"),
                               log("***SetMySNBin Write_UniqList_Binary_File status=1***"),
                               notified(), closed(kind())}))
        << "neither configured nor asked for its mode";
    expect_identity_left();
    EXPECT_STREQ(left().FWVersion, kind().version);
    EXPECT_EQ(left().OldPID, 0x8753U);
    EXPECT_EQ(left().FWRevFlash, kind().revision);
    EXPECT_EQ(serial_number(left()), kSerialNumber);
    expect_file(".pctuniq", true);
  }
}

TEST_P(HidScanRefusalTest, APanelWithoutPhysHasNoRecordAndIsDropped) {
  add_known(kind(), kind().node(), "", kSerialNumber);
  EXPECT_EQ(GetTouchPanels(0), 0);
  expect_dropped();
  EXPECT_EQ(messages_of({"***SetMySNBin"}),
            trace_messages({"***SetMySNBin Write_UniqList_Binary_File status=0***\n"}));
  EXPECT_EQ(node_calls().back(), closed(kind()).back());
  expect_file(".pctuniq", false);
  expect_file(".pctpbin", false);
}

// --- the family that knows a command mode ---

class HidScanCommandModeTest : public RefusalTest {};
INSTANTIATE_TEST_SUITE_P(Discovery, HidScanCommandModeTest,
                         testing::Values(kPctKinds[2], kPctKinds[3]), pct_kind_name);

TEST_P(HidScanCommandModeTest, SuccessAtTheLastAttemptDropsThePanelAndLeavesItOpen) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.refused_command_modes = 20;
  EXPECT_EQ(GetTouchPanels(0), 0);
  expect_dropped();
  expect_left_open();
  EXPECT_EQ(steps(), joined({opened(kind()), firmware_told(kind()), log("enter_cmd_mode"),
                             repeated(20, mode_attempt(kind(), 0x90, 0x01)),
                             mode_attempt(kind(), 0x90, 0x90)}));
  EXPECT_EQ(panel.controller.device_mode(), PctController::kCommandMode);
  expect_identity_left();
  EXPECT_STREQ(left().FWVersion, kind().version);
  EXPECT_EQ(serial_number(left()), kNone);
  expect_file(".pctuniq", false);
}

TEST_P(HidScanCommandModeTest, SuccessAtTheLastButOneIsSuccess) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.refused_command_modes = 19;
  panel.controller.faults.refused_normal_modes = 19;
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(panel.controller.device_mode(), PctController::kNormalMode);
}

TEST_P(HidScanCommandModeTest, NoSuccessAtAllPassesForSuccess) {
  PctPanel& panel = add_known(kind());
  // It enters command mode, but never says so.
  panel.controller.faults.wrong_device_modes = 21;
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(steps(),
            joined({opened(kind()), firmware_told(kind()), log("enter_cmd_mode"),
                    repeated(21, mode_attempt(kind(), 0x90, 0x01)),
                    flash_read(kind(), known_flash()), mode_left(kind()), made_writable(".pctuniq"),
                    log("***SetMySNBin Write_UniqList_Binary_File status=1***"),
                    made_writable(".pctpbin"), notified(), pos_exchanged(kind()), counted(kind()),
                    closed(kind())}));
}

TEST_P(HidScanCommandModeTest, OutsideCommandModeThereIsNoBlock) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.refused_command_modes = 21;
  EXPECT_EQ(GetTouchPanels(0), 0);
  expect_dropped();
  EXPECT_EQ(count_of("usleep 300000"), 22U);
  EXPECT_EQ(messages_of({"leave_cmd_mode"}).size(), 1U);
  EXPECT_EQ(node_calls().back(), closed(kind()).back());
  EXPECT_EQ(Bytes(panel.controller.flash().begin(), panel.controller.flash().end()), known_flash())
      << "closed flash takes nothing";
}

TEST_P(HidScanCommandModeTest, LeavingAtTheLastAttemptDropsThePanelAndClosesIt) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.refused_normal_modes = 20;
  EXPECT_EQ(GetTouchPanels(0), 0);
  expect_dropped();
  EXPECT_EQ(steps(), joined({opened(kind()), firmware_told(kind()), mode_entered(kind()),
                             flash_read(kind(), known_flash()), log("leave_cmd_mode"),
                             repeated(20, mode_attempt(kind(), 0x01, 0x90)),
                             mode_attempt(kind(), 0x01, 0x01), closed(kind())}))
      << "though its block is valid";
  EXPECT_EQ(serial_number(left()), kSerialNumber);
  expect_file(".pctuniq", false);
  expect_file(".pctpbin", false);
}

TEST_P(HidScanCommandModeTest, NeverLeavingPassesForLeaving) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.refused_normal_modes = 21;
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(PCTDeviceNumber, 1);
  EXPECT_EQ(panel.controller.device_mode(), PctController::kCommandMode);
}

TEST_P(HidScanCommandModeTest, CommandModeIsLeftEvenWhenTheBlockIsBad) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.bad_checksums = 22;
  panel.controller.faults.refused_normal_modes = 3;
  EXPECT_EQ(GetTouchPanels(0), 0);
  EXPECT_EQ(panel.controller.device_mode(), PctController::kNormalMode);
}

}  // namespace
