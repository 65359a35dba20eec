// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <unistd.h>

#include <algorithm>
#include <cstring>

#include "settings_bench.h"

namespace {

using namespace zelkora::test;

class FirmwareCheckTest : public Bench {
 protected:
  // The panel is open and its entry holds an older text.
  Panel& open_with(const std::string& firmware) {
    Panel& panel = open_resistive();
    panel.controller.set_firmware(firmware);
    std::memset(TouchDevice[0].FWVersion, 'o', sizeof TouchDevice[0].FWVersion);
    DbgFlag = 1;
    return panel;
  }
  static std::string stored(int index = 0) {
    const char* text = TouchDevice[index].FWVersion;
    return {text, strnlen(text, sizeof TouchDevice[index].FWVersion)};
  }
  static std::string untouched() { return std::string(64, 'o'); }
  size_t refusals() const { return count_of("log zelkora DD:Driver"); }
};

const std::string kQuery = "\1OI\r";

TEST_F(FirmwareCheckTest, AcceptsAPanelAndKeepsItsText) {
  Panel& panel = open_with("V1.2");
  EXPECT_EQ(ChkResFW(0), 1);
  EXPECT_EQ(stored(), "V1.2");
  EXPECT_TRUE(std::all_of(TouchDevice[0].FWVersion + 4, std::end(TouchDevice[0].FWVersion),
                          [](char c) { return c == '\0'; }));
  EXPECT_EQ(frames_of(panel.controller), Lines{kQuery});
  EXPECT_EQ(count_of("close"), 0U);
}

TEST_F(FirmwareCheckTest, PreparesTheReportBeforeItAsks) {
  open_with("V1.2");
  report = {};
  field = {};
  ASSERT_EQ(ChkResFW(0), 1);
  Lines requests = trace_of({"ioctl", "set_report"});
  requests.resize(3);
  EXPECT_EQ(requests,
            (Lines{"ioctl HIDIOCGREPORTINFO type=3 id=1",
                   "ioctl HIDIOCGFIELDINFO type=3 id=1 field=0", "ioctl HIDIOCINITREPORT"}));
}

TEST_F(FirmwareCheckTest, StoresTheTextInTheEntryOfItsNumber) {
  open_with("V2.1");
  EXPECT_EQ(ChkResFW(3), 1);
  EXPECT_EQ(stored(3), "V2.1");
  EXPECT_EQ(stored(0), untouched());
}

TEST_F(FirmwareCheckTest, RefusesTheThirdGenerationAndClosesThePanel) {
  Panel& panel = open_with("V3.0");
  const int number = fd;
  EXPECT_EQ(ChkResFW(0), 0);
  EXPECT_EQ(fd, number) << "closed, and the number kept";
  EXPECT_EQ(frames_of(panel.controller), Lines{kQuery});
  EXPECT_EQ(stored(), untouched());
  EXPECT_EQ(trace().back(), "close /dev/usb/hiddev0");
  EXPECT_EQ(count_of("close"), 1U);
}

TEST_F(FirmwareCheckTest, NamesTheSupportAddressInItsRefusal) {
  open_with("V3.0");
  ChkResFW(0);
  const std::string message = messages().back();
  const std::string beginning =
      "zelkora DD:Driver dose not support this device,\nplease contact us via ";
  ASSERT_TRUE(message.starts_with(beginning)) << message;
  const std::string address = message.substr(beginning.size());
  EXPECT_GT(address.find('@'), 0U);
  EXPECT_NE(address.find('@'), address.npos);
  EXPECT_EQ(address.find_first_of(" \n"), address.size() - 1) << address;
}

TEST_F(FirmwareCheckTest, IsSilentWhileTheDebugSwitchIsOff) {
  open_with("V3.0");
  DbgFlag = 0;
  EXPECT_EQ(ChkResFW(0), 0);
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(FirmwareCheckTest, LooksForTheVersionAnywhereInTheText) {
  for (const char* text : {"V3.0", "V3.0A", "RES V3.0", "xxV3.0xx", "V1.2V3.0"}) {
    SCOPED_TRACE(text);
    Panel& panel = open_with(text);
    EXPECT_EQ(ChkResFW(0), 0);
    EXPECT_EQ(refusals(), 1U);
    unplug(panel);
  }
}

TEST_F(FirmwareCheckTest, AcceptsWhateverElseItSays) {
  for (const std::string text : {"V3.1", "v3.0", "V30", "V3,0", "3.0", "V3. 0", "%s%n%s%n"}) {
    SCOPED_TRACE(text);
    Panel& panel = open_with(text);
    EXPECT_EQ(ChkResFW(0), 1);
    EXPECT_EQ(stored(), text);
    EXPECT_EQ(refusals(), 0U);
    unplug(panel);
  }
}

TEST_F(FirmwareCheckTest, RefusesAnEmptyTextThatWasAnswered) {
  open_with(std::string("\0A", 2));
  EXPECT_EQ(ChkResFW(0), 0);
  EXPECT_EQ(refusals(), 1U);
  EXPECT_EQ(stored(), untouched());
  EXPECT_EQ(trace().back(), "close /dev/usb/hiddev0");
}

TEST_F(FirmwareCheckTest, AcceptsAPanelThatDoesNotAnswerWithAnEmptyText) {
  Panel& panel = open_with("V3.0");
  panel.usb.set_forged_reply(kNoReply);
  EXPECT_EQ(ChkResFW(0), 1);
  EXPECT_EQ(frames_of(panel.controller), times(4, kQuery));
  EXPECT_EQ(stored(), "");
  EXPECT_EQ(count_of("close"), 0U);
  EXPECT_EQ(refusals(), 0U);
}

TEST_F(FirmwareCheckTest, AcceptsAPanelThatWasUnplugged) {
  Panel& panel = open_with("V1.2");
  unplug(panel);
  EXPECT_EQ(ChkResFW(0), 1);
  EXPECT_EQ(stored(), "");
}

TEST_F(FirmwareCheckTest, AsksNothingWhileNoDeviceTypeIsSet) {
  Panel& panel = open_with("V3.0");
  device_type = ZELKORA_TYPE_NONE;
  EXPECT_EQ(ChkResFW(0), 1);
  EXPECT_EQ(frames_of(panel.controller), Lines{});
  EXPECT_EQ(stored(), "");
  EXPECT_EQ(device_type, ZELKORA_TYPE_NONE);
}

TEST_F(FirmwareCheckTest, AStalledReplyReadsAsTheQueryItself) {
  // The kernel hides the stall and keeps the report's values, which are those just sent.
  Panel& panel = open_with("V1.2");
  panel.controller.faults.silent = true;
  EXPECT_EQ(ChkResFW(0), 1);
  EXPECT_EQ(stored(), "OI");
}

TEST_F(FirmwareCheckTest, KeepsTheLongestTextThatAReplyHolds) {
  open_with(std::string(17, 'f'));
  EXPECT_EQ(ChkResFW(0), 1);
  EXPECT_EQ(stored(), std::string(17, 'f'));
}

TEST_F(FirmwareCheckTest, TakesATextThatNeverEndsForNoAnswer) {
  open_with(std::string(60, 'f'));
  EXPECT_EQ(ChkResFW(0), 1);
  EXPECT_EQ(stored(), "");
}

}  // namespace
