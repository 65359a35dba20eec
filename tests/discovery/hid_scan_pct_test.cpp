// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What an enumeration asks a PCT panel, brings up to date in it, and enters of it.
#include <filesystem>

#include "pct_scan_bench.h"

namespace {

using zelkora::sim::PctController;
using zelkora::test::Bytes;
using zelkora::test::data_file;
using zelkora::test::encoded_block;
using zelkora::test::identity_flash;
using zelkora::test::joined;
using zelkora::test::joined_bytes;
using zelkora::test::kNewSerialNumber;
using zelkora::test::kPctKinds;
using zelkora::test::kSerialNumber;
using zelkora::test::Lines;
using zelkora::test::padded;
using zelkora::test::pct_kind_name;
using zelkora::test::PctKind;
using zelkora::test::PctPanel;
using zelkora::test::PctScanBench;
using zelkora::test::read_file;
using zelkora::test::repeated;
using zelkora::test::serial_number;
using zelkora::test::SerialNumber;
using zelkora::test::set_flash;
using zelkora::test::trace_messages;

class PctKindTest : public PctScanBench, public testing::WithParamInterface<PctKind> {
 protected:
  const PctKind& kind() const { return GetParam(); }
  Bytes flash_of(const PctPanel& panel) const {
    return {panel.controller.flash().begin(), panel.controller.flash().end()};
  }
  Bytes known_flash(const SerialNumber& number = kSerialNumber) const {
    return identity_flash(0x2575, 0x8753, kind().revision, number);
  }
};

class HidScanPctTest : public PctKindTest {};
INSTANTIATE_TEST_SUITE_P(Discovery, HidScanPctTest, testing::ValuesIn(kPctKinds), pct_kind_name);

// Where a panel that refuses a request can be told from one that answers: hiddev hides it.
class HidScanHidrawPctTest : public PctKindTest {};
INSTANTIATE_TEST_SUITE_P(Discovery, HidScanHidrawPctTest,
                         testing::Values(kPctKinds[0], kPctKinds[2], kPctKinds[4]), pct_kind_name);

TEST_P(HidScanPctTest, AKnownPanelIsReadOnceAndGetsItsConfiguration) {
  add_known(kind());
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(steps(),
            joined({opened(kind()), firmware_told(kind()), mode_entered(kind()),
                    flash_read(kind(), known_flash()), mode_left(kind()), made_writable(".pctuniq"),
                    log("***SetMySNBin Write_UniqList_Binary_File status=1***"),
                    made_writable(".pctpbin"), notified(), pos_exchanged(kind()), counted(kind()),
                    closed(kind())}));
}

TEST_P(HidScanPctTest, ANewPanelGetsASerialNumber) {
  PctPanel& panel = add_new(kind());
  EXPECT_EQ(GetTouchPanels(0), 1);
  const Bytes flash = known_flash(kNewSerialNumber);
  EXPECT_EQ(steps(), joined({opened(kind()), firmware_told(kind()), mode_entered(kind()),
                             repeated(11, joined({flash_read(kind(), {}), {"usleep 300000"}})),
                             flash_written(kind(), flash), flash_read(kind(), flash),
                             mode_left(kind()), made_writable(".pctuniq"),
                             log("***SetMySNBin Write_UniqList_Binary_File status=1***"),
                             made_writable(".pctpbin"), notified(), pos_exchanged(kind()),
                             counted(kind()), closed(kind())}));
  EXPECT_EQ(flash_of(panel), flash);
  EXPECT_EQ(serial_number(TouchDevice[0]), kNewSerialNumber);
  EXPECT_EQ(host.random_argument, 1);
}

TEST_P(HidScanPctTest, TheNextEnumerationFindsAllAsItLeftIt) {
  add_new(kind());
  GetTouchPanels(0);
  clear_trace();
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(steps(), joined({opened(kind()), firmware_told(kind()), mode_entered(kind()),
                             flash_read(kind(), known_flash(kNewSerialNumber)), mode_left(kind()),
                             log("***SetMySNBin Write_UniqList_Binary_File status=1***"),
                             pos_exchanged(kind()), counted(kind()), closed(kind())}))
      << "neither a record nor the flash is written again";
}

TEST_P(HidScanPctTest, TheEntryIsFilled) {
  PctPanel& panel = add_known(kind());
  panel.controller.set_pos_config({0x21, 0x01, 0x10, 0xA4});
  device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  IsLegacy = 77;
  ASSERT_EQ(GetTouchPanels(0), 1);
  const TouchDeviceEntry& entry = TouchDevice[0];
  EXPECT_STREQ(entry.Name, kind().node());
  EXPECT_EQ(entry.Type, ZELKORA_TYPE_PCT);
  EXPECT_STREQ(entry.Phys, kPhys);
  EXPECT_STREQ(entry.EventName, "");
  EXPECT_STREQ(entry.ID, "2575_8753");
  EXPECT_STREQ(entry.FWVersion, kind().version);
  EXPECT_EQ(entry.POSMode, 2);
  EXPECT_EQ(entry.HidRaw, kind().hidraw ? 1 : 0);
  EXPECT_EQ(entry.IsLegacy, kind().family);
  EXPECT_EQ(entry.VID, 0x2575U);
  EXPECT_EQ(entry.PID, 0x8753U);
  EXPECT_EQ(entry.OldVID, 0x2575U);
  EXPECT_EQ(entry.OldPID, 0x8753U);
  EXPECT_EQ(serial_number(entry), kSerialNumber);
  EXPECT_EQ(entry.FWRevFlash, kind().revision);
  EXPECT_EQ(entry.FWRev, kind().revision);

  EXPECT_EQ(PCTDeviceNumber, 1);
  EXPECT_EQ(IsLegacy, kind().family);
  EXPECT_EQ(HidRaw, kind().hidraw ? 1 : 0);
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_SERIAL) << "set for resistive panels only";
  EXPECT_EQ(panel.controller.device_mode(), PctController::kNormalMode);
}

TEST_P(HidScanPctTest, TheStepsAreToldInFull) {
  add_known(kind());
  GetTouchPanels(0);
  const std::string head = std::string("Device1 : ") + kind().node() + " phys:usb-4/input0 ";
  EXPECT_EQ(messages_of({"Device", "+++check", "[0]"}),
            trace_messages({head + "MatchFlag:3\n", "+++check PCT+++\n",
                            "[0] IsLegacy:" + std::to_string(kind().family) + "\n",
                            head + "fw:" + kind().version + " POSMode:1 PCTDeviceNumber:1\n"}));
}

struct BlockCase {
  const char* name;
  unsigned vendor;
  unsigned product;
  int newer;  // by how much the firmware is newer than the block
  bool rewritten;
};

TEST_P(HidScanPctTest, AnOutdatedBlockIsRewrittenWithItsSerialNumber) {
  const BlockCase cases[] = {
      {"of other firmware", 0x2575, 0x8753, 1, true}, {"without ids", 0, 0, 0, true},
      {"of a hybrid", 0x2575, 0x9968, 0, true},       {"of a mouse", 0x2575, 0x9969, 0, true},
      {"without a vendor", 0, 0x8753, 0, false},      {"without a product", 0x2575, 0, 0, false},
      {"of another panel", 0x3A4C, 0x0040, 0, false},
  };
  PctPanel& panel = add_new(kind());
  for (const BlockCase& row : cases) {
    SCOPED_TRACE(row.name);
    const Bytes block =
        identity_flash(row.vendor, row.product, kind().revision - row.newer, kSerialNumber);
    set_flash(panel.controller, block);
    EXPECT_EQ(GetTouchPanels(0), 1);
    EXPECT_EQ(flash_of(panel), row.rewritten ? known_flash() : block);
    EXPECT_EQ(TouchDevice[0].OldVID, row.rewritten ? 0x2575 : row.vendor);
    EXPECT_EQ(TouchDevice[0].OldPID, row.rewritten ? 0x8753 : row.product);
    EXPECT_EQ(TouchDevice[0].FWRevFlash, kind().revision);
    EXPECT_EQ(serial_number(TouchDevice[0]), kSerialNumber);
  }
}

TEST_P(HidScanPctTest, TheEleventhReadOfTheBlockStillCounts) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.bad_checksums = 10;
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(panel.controller.faults.bad_checksums, 0U);
  EXPECT_EQ(count_of("usleep 300000"), 10U);
  EXPECT_EQ(serial_number(TouchDevice[0]), kSerialNumber);
}

TEST_P(HidScanPctTest, ABlockThatCannotBeReadGetsANewSerialNumber) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.bad_checksums = 11;
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(flash_of(panel), known_flash(kNewSerialNumber));
}

TEST_P(HidScanPctTest, TheFilesHoldTheNewPanel) {
  add_new(kind());
  GetTouchPanels(0);
  const std::string keys = std::string(kPhys) + std::string(256 - sizeof kPhys + 1, '\0') +
                           "050a02070b090308" + '\0' + "2575_8753" + '\0';
  const Bytes plain =
      joined_bytes(joined_bytes(Bytes(12, 0), {0x05, 0x0A, 0x02, 0x07, 0x0B, 0x09, 0x03, 0x08}),
                   {0x01, 0x01, 0x07, 0xD0, 0x0A, 0x00, 0x21, 0x10, 0xA4, 0x00, 0x00, 0x00});
  const Bytes payload = padded(encoded_block(plain), ZELKORA_STORE_PAYLOAD);
  EXPECT_EQ(read_file(data_file(".pctuniq")), keys + std::string(64, '\0'));
  EXPECT_EQ(read_file(data_file(".pctpbin")), keys + std::string(payload.begin(), payload.end()));
}

TEST_P(HidScanPctTest, ThePosModeIsThatOfTheController) {
  PctPanel& panel = add_known(kind());
  for (uint8_t mode = 0; mode < 4; ++mode) {
    panel.controller.set_pos_config({0x21, mode, 0x10, 0xA4});
    EXPECT_EQ(GetTouchPanels(0), 1);
    EXPECT_EQ(TouchDevice[0].POSMode, mode + 1);
  }
}

TEST_P(HidScanPctTest, WithoutAPosModeThePanelIsEnteredAllTheSame) {
  PctPanel& panel = add_known(kind());
  panel.controller.faults.blank_pos_replies = 7;
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(TouchDevice[0].POSMode, 0);
  EXPECT_EQ(messages_of({"Device1"}).back(), std::string("zelkora DD:Device1 : ") + kind().node() +
                                                 " phys:usb-4/input0 fw:" + kind().version +
                                                 " POSMode:0 PCTDeviceNumber:1\n");
}

TEST_P(HidScanPctTest, APanelThatIsNotListedIsEnteredAllTheSame) {
  add_known(kind());
  std::filesystem::create_directory(data_file(".pctuniq"));
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(messages_of({"***SetMySNBin"}),
            trace_messages({"***SetMySNBin Write_UniqList_Binary_File status=0***\n"}));
  EXPECT_EQ(PCTDeviceNumber, 1);
}

TEST_P(HidScanHidrawPctTest, WithoutItsFirmwareIdThePanelIsEnteredAllTheSame) {
  PctPanel& panel = add_known(kind());
  // Told for the family, refused for the version.
  panel.usb.stalls = [asked = 0](uint8_t id) mutable { return id == 0xF2 && ++asked == 2; };
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(messages_of({"GetFwID"}), trace_messages({"GetFwID\n", "GetFwID failed err:003\n"}));
  EXPECT_STREQ(TouchDevice[0].FWVersion, "");
  EXPECT_EQ(TouchDevice[0].IsLegacy, kind().family);
  EXPECT_EQ(TouchDevice[0].FWRev, 0);
  EXPECT_EQ(TouchDevice[0].FWRevFlash, 0) << "rewritten, as for any other revision";
}

TEST_P(HidScanPctTest, AnUnknownFamilyIsSpokenToLikeThe8753) {
  PctPanel& panel = add_known(kind());
  fail_replies(kind(), 1);
  const bool answers = !kind().is_8752();
  EXPECT_EQ(GetTouchPanels(0), answers ? 1 : 0);
  EXPECT_EQ(messages_of({"[0] IsLegacy"}), trace_messages({"[0] IsLegacy:0\n"}));
  EXPECT_EQ(TouchDevice[0].IsLegacy, ZELKORA_FAMILY_UNKNOWN);
  EXPECT_EQ(IsLegacy, ZELKORA_FAMILY_UNKNOWN);
  EXPECT_STREQ(TouchDevice[0].FWVersion, kind().version);
  EXPECT_EQ(messages_of({"enter_cmd_mode", "leave_cmd_mode"}), Lines());
  EXPECT_EQ(panel.controller.device_mode(), PctController::kNormalMode);
  EXPECT_EQ(node_calls().back(), std::string("close ") + kind().node());
}

TEST_P(HidScanHidrawPctTest, AConfigurationThatIsNotTakenDropsNoPanel) {
  PctPanel& panel = add_known(kind());
  // The commands into command mode and out of it go through.
  panel.usb.stalls = [left = kind().is_8752() ? 2 : 0](uint8_t id) mutable {
    return id == 0x08 && left-- <= 0;
  };
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(panel.controller.pos_config(), (PctController::PosConfig{0x21, 0x00, 0x10, 0xA4}));
  EXPECT_EQ(TouchDevice[0].POSMode, 1);
}

TEST_P(HidScanPctTest, WithoutADisplayThePanelIsEnteredAllTheSame) {
  add_known(kind());
  x.reachable = false;
  EXPECT_EQ(GetTouchPanels(0), 1);
}

TEST_P(HidScanPctTest, GetPctTouchPanelsDoesTheSame) {
  add_known(kind());
  EXPECT_EQ(GetPCTTouchPanels(0), 1);
  EXPECT_EQ(steps(),
            joined({opened(kind()), firmware_told(kind()), mode_entered(kind()),
                    flash_read(kind(), known_flash()), mode_left(kind()), made_writable(".pctuniq"),
                    log("***SetMySNBin Write_UniqList_Binary_File status=1***"),
                    made_writable(".pctpbin"), notified(), pos_exchanged(kind()), counted(kind()),
                    closed(kind())}));
}

}  // namespace
