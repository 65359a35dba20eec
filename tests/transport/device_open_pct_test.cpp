// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Opening and closing PCT panels as an enumeration entered them.
#include <cerrno>
#include <cstring>

#include "discovery/pct_scan_bench.h"

namespace {

using zelkora::sim::PctController;
using zelkora::test::joined;
using zelkora::test::kPctKinds;
using zelkora::test::kSerialNumber;
using zelkora::test::Lines;
using zelkora::test::pct_kind_name;
using zelkora::test::PctKind;
using zelkora::test::PctPanel;

class PctOpenTest : public zelkora::test::PctScanBench,
                    public testing::WithParamInterface<PctKind> {
 protected:
  const PctKind& kind() const { return GetParam(); }
  PctPanel& enumerate() {
    PctPanel& panel = add_known(kind());
    EXPECT_EQ(GetTouchPanels(0), 1);
    HidRaw = 77;
    IsLegacy = 77;
    clear_trace();
    return panel;
  }
  Lines opened_read_only() const { return {std::string("open ") + kind().node() + " O_RDONLY"}; }
  uint8_t open_mode() const {
    return kind().is_8752() ? PctController::kCommandMode : PctController::kNormalMode;
  }
  // The 32 bytes of the flash, decoded.
  static bool reads_serial_number() {
    unsigned char plain[ZELKORA_PCT_BLOCK]{};
    return ReadPCTParames(plain, sizeof plain) != 0 &&
           std::memcmp(plain + 12, kSerialNumber.data(), kSerialNumber.size()) == 0;
  }
};

INSTANTIATE_TEST_SUITE_P(Transport, PctOpenTest, testing::ValuesIn(kPctKinds), pct_kind_name);

TEST_P(PctOpenTest, AnOpenPanelTakesCommandsUntilItIsClosed) {
  const PctPanel& panel = enumerate();
  EXPECT_EQ(OpenPCTDevice(0), 1);
  EXPECT_EQ(steps(), joined({opened_read_only(), mode_entered(kind())}));
  EXPECT_EQ(HidRaw, kind().hidraw ? 1 : 0);
  EXPECT_EQ(IsLegacy, kind().family);
  EXPECT_EQ(panel.controller.device_mode(), open_mode());
  EXPECT_TRUE(reads_serial_number());
  clear_trace();
  EXPECT_EQ(CloseDevice(), 0);
  EXPECT_EQ(steps(), joined({mode_left(kind()), closed(kind())}));
  EXPECT_EQ(panel.controller.device_mode(), PctController::kNormalMode);
}

TEST_P(PctOpenTest, ATouchDeviceOpensTheSameAndStaysInCommandModeWhenClosed) {
  const PctPanel& panel = enumerate();
  device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  EXPECT_EQ(OpenTouchDevice(0), ZELKORA_TYPE_PCT);
  EXPECT_EQ(steps(), joined({opened_read_only(), mode_entered(kind())}));
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_SERIAL);
  EXPECT_TRUE(reads_serial_number());
  clear_trace();
  CloseTouchDevice(0);
  EXPECT_EQ(steps(), closed(kind()));
  EXPECT_EQ(panel.controller.device_mode(), open_mode());
}

TEST_P(PctOpenTest, AnEnumerationFindsAPanelThatWasLeftInCommandMode) {
  const PctPanel& panel = enumerate();
  OpenTouchDevice(0);
  CloseTouchDevice(0);
  EXPECT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(panel.controller.device_mode(), PctController::kNormalMode);
}

TEST_P(PctOpenTest, APanelThatWentDoesNotOpen) {
  const PctPanel& panel = enumerate();
  remove(panel);
  EXPECT_EQ(OpenPCTDevice(0), 0);
  EXPECT_EQ(messages(), Lines{"EE:unable to open device\n"});
  EXPECT_EQ(OpenTouchDevice(0), 0);
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(IsLegacy, 77) << "copied from the entry only once it is open";
}

TEST_P(PctOpenTest, APanelThatGoesWhileItIsOpenIsClosedAllTheSame) {
  const PctPanel& panel = enumerate();
  EXPECT_EQ(OpenPCTDevice(0), 1);
  remove(panel);
  clear_trace();
  EXPECT_FALSE(reads_serial_number());
  EXPECT_EQ(CloseDevice(), 0);
  EXPECT_EQ(node_calls(), closed(kind()));
}

}  // namespace
