// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One node: who it is, whether its ids and its name match, and what becomes of its descriptor.
#include <linux/hiddev.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <cstring>

#include "discovery_bench.h"

namespace {

using zelkora::test::kPctIdentity;
using zelkora::test::kResistiveIdentity;
using zelkora::test::kStrangeIdentity;
using zelkora::test::Lines;
using zelkora::test::named;
using zelkora::test::trace_message;
using zelkora::test::trace_messages;

constexpr char kNode[] = "/dev/usb/hiddev0";
constexpr char kRawNode[] = "/dev/hidraw0";

class HidScanMatchTest : public zelkora::test::DiscoveryBench {
 protected:
  // As an enumeration leaves it before its walk.
  void SetUp() override {
    DiscoveryBench::SetUp();
    MyConfig[0] = 1;
    LoadVidPid();
    set_names(MatchProduct, ManufCnt, {"Virtual PCT"});
    set_names(rMatchProduct, rManufCnt, {"Virtual Resistive"});
  }
  static void set_names(char (&list)[ZELKORA_MAX_NAMES][ZELKORA_NAME_LENGTH], int& count,
                        const Lines& names) {
    count = 0;
    for (const std::string& name : names) std::strcpy(list[count++], name.c_str());
  }
  void match(const char* path) {
    clear_trace();
    MatchMyHidDevice(path);
  }
  static std::string fd_text() { return "fd:" + std::to_string(fd); }
  // The node's descriptor is still open, as the one descriptor more than before.
  void expect_left_open() {
    EXPECT_EQ(leaked_descriptors(), std::vector<int>{fd});
    EXPECT_EQ(count_of("close"), 0U);
    expect_leaked_descriptors(1);
  }
};

TEST_F(HidScanMatchTest, AHiddevNodeIsAskedForIdsAndName) {
  add(kNode, named(0x2575, 0x8753, "Other Panel"));
  match(kNode);
  EXPECT_EQ(trace_of({"open", "ioctl", "close"}),
            (Lines{"open /dev/usb/hiddev0 O_RDWR|O_NONBLOCK", "ioctl HIDIOCGDEVINFO",
                   "ioctl HIDIOCGNAME 256", "close /dev/usb/hiddev0"}));
  EXPECT_EQ(
      messages(),
      trace_messages({"MatchMyHidDevice device node:/dev/usb/hiddev0 HidRaw:0 " + fd_text() + "\n",
                      "MatchMyHidDevice device name:Other Panel\n", "VID:0x2575 PID:0x8753\n",
                      "===pct id_match 0x2575:0x8753 id_match:2 " + fd_text() + "===\n",
                      "PCT device name not match\n"}));
  EXPECT_EQ(HidRaw, 0);
}

TEST_F(HidScanMatchTest, AHidrawNodeIsAskedByItsOwnRequests) {
  add(kRawNode, named(0x2575, 0x8753, "Other Panel"));
  match(kRawNode);
  EXPECT_EQ(trace_of({"open", "ioctl", "close"}),
            (Lines{"open /dev/hidraw0 O_RDWR|O_NONBLOCK", "ioctl HIDIOCGRAWINFO",
                   "ioctl HIDIOCGRAWNAME 256", "close /dev/hidraw0"}));
  EXPECT_EQ(
      messages().front(),
      trace_message("MatchMyHidDevice device node:/dev/hidraw0 HidRaw:1 " + fd_text() + "\n"));
  EXPECT_EQ(HidRaw, 1);
}

TEST_F(HidScanMatchTest, HidRawFollowsTheNodeExamined) {
  HidRaw = 1;
  expect_absent("/dev/usb/hiddev9");
  expect_absent("/dev/hidraw9");
  match("/dev/usb/hiddev9");
  EXPECT_EQ(HidRaw, 0);
  match("/dev/hidraw9");
  EXPECT_EQ(HidRaw, 1);
}

TEST_F(HidScanMatchTest, ANodeThatCannotBeOpenedIsNotAsked) {
  add(kNode, kPctIdentity);
  kernel.fail_open(kNode, EACCES);
  match(kNode);
  EXPECT_EQ(trace(), (Lines{"open /dev/usb/hiddev0 O_RDWR|O_NONBLOCK -> EACCES",
                            "log zelkora DD:MatchMyHidDevice device node:/dev/usb/hiddev0 "
                            "HidRaw:0 fd:-1"}));
  EXPECT_EQ(fd, -1);
  EXPECT_EQ(DeviceNumber, 0);
}

TEST_F(HidScanMatchTest, DescriptorZeroIsTakenForAFailure) {
  add(kNode, kPctIdentity);
  const zelkora::test::WithoutStandardInput without;
  match(kNode);
  EXPECT_EQ(fd, 0);
  EXPECT_EQ(trace(), (Lines{"open /dev/usb/hiddev0 O_RDWR|O_NONBLOCK",
                            "log zelkora DD:MatchMyHidDevice device node:/dev/usb/hiddev0 "
                            "HidRaw:0 fd:0"}));
}

struct RequestCase {
  const char* name;
  const char* node;
  unsigned long request;
  const char* text;
};

constexpr RequestCase kRequests[] = {
    {"hiddev ids", kNode, HIDIOCGDEVINFO, "perror Get Device infomation error!!"},
    {"hiddev name", kNode, HIDIOCGNAME(0), "perror Get Device Name error!!"},
    {"hidraw ids", kRawNode, HIDIOCGRAWINFO, "perror Get Device infomation error!!"},
    {"hidraw name", kRawNode, HIDIOCGRAWNAME(0), "perror Get Device Name error!!"},
};

class HidScanRequestTest : public HidScanMatchTest,
                           public testing::WithParamInterface<RequestCase> {};

TEST_P(HidScanRequestTest, AFailingRequestIsReportedAndLeavesTheNodeOpen) {
  add(GetParam().node, kPctIdentity);
  kernel.fail_ioctl(GetParam().node, GetParam().request, EIO);
  match(GetParam().node);
  EXPECT_EQ(trace().back(), GetParam().text);
  EXPECT_EQ(messages().size(), 1U);
  EXPECT_EQ(DeviceNumber, 0);
  expect_left_open();
}

TEST_P(HidScanRequestTest, AFailingRequestIsReportedOnlyWhileTheDebugSwitchIsOne) {
  add(GetParam().node, kPctIdentity);
  kernel.fail_ioctl(GetParam().node, GetParam().request, EIO);
  expect_leaked_descriptors(2);
  for (const int debug : {0, 2}) {
    DbgFlag = debug;
    match(GetParam().node);
    EXPECT_EQ(count_of("perror"), 0U);
  }
}

INSTANTIATE_TEST_SUITE_P(Requests, HidScanRequestTest, testing::ValuesIn(kRequests),
                         [](const auto& row) {
                           std::string name = row.param.name;
                           std::ranges::replace(name, ' ', '_');
                           return name;
                         });

TEST_F(HidScanMatchTest, AnEmptyNameLeavesTheNodeOpen) {
  add(kNode, named(0x2575, 0x8753, ""));
  match(kNode);
  EXPECT_EQ(trace().back(), "ioctl HIDIOCGNAME 256");
  expect_left_open();
}

TEST_F(HidScanMatchTest, StrangeIdsLeaveTheNodeOpen) {
  add(kNode, kStrangeIdentity);
  match(kNode);
  EXPECT_EQ(
      messages(),
      trace_messages({"MatchMyHidDevice device node:/dev/usb/hiddev0 HidRaw:0 " + fd_text() + "\n",
                      "MatchMyHidDevice device name:Some Keyboard\n", "VID:0xfedc PID:0xba98\n"}));
  expect_left_open();
}

TEST_F(HidScanMatchTest, TheLoadedIdsDecideAsTheyStand) {
  add(kNode, kPctIdentity);
  cMyHidInfo.PctVendorCount = 0;
  match(kNode);
  EXPECT_EQ(DeviceNumber, 0);
  EXPECT_EQ(cMyHidInfo.PctVendorCount, 0);
  EXPECT_EQ(host.config_reads, 0);
  expect_left_open();
}

TEST_F(HidScanMatchTest, TheNextOpenTakesTheDescriptorOver) {
  add(kNode, kStrangeIdentity);
  add("/dev/usb/hiddev1", named(0x2575, 1, "Other Panel"));
  match(kNode);
  const int first = fd;
  match("/dev/usb/hiddev1");
  EXPECT_NE(fd, first);
  EXPECT_EQ(leaked_descriptors(), std::vector<int>{first});
  expect_leaked_descriptors(1);
}

TEST_F(HidScanMatchTest, IdsFrom8000UpAreTakenAsTheirLow16Bits) {
  for (const char* node : {kNode, kRawNode}) {
    SCOPED_TRACE(node);
    add(node, {0x8000, 0xFFFF, "Some", "Keyboard"});
    match(node);
    EXPECT_EQ(messages().back(), "zelkora DD:VID:0x8000 PID:0xffff\n");
  }
  expect_leaked_descriptors(2);
}

TEST_F(HidScanMatchTest, ShortIdsArePrintedWithFourDigits) {
  add(kNode, {0x0001, 0x000A, "Some", "Keyboard"});
  match(kNode);
  EXPECT_EQ(messages().back(), "zelkora DD:VID:0x0001 PID:0x000a\n");
  expect_leaked_descriptors(1);
}

TEST_F(HidScanMatchTest, AResistiveNameThatIsNotListedClosesTheNode) {
  set_names(rMatchProduct, rManufCnt, {"First", "Second"});
  add(kNode, kResistiveIdentity);
  match(kNode);
  EXPECT_EQ(
      messages(),
      trace_messages({"MatchMyHidDevice device node:/dev/usb/hiddev0 HidRaw:0 " + fd_text() + "\n",
                      "MatchMyHidDevice device name:Zelkora Virtual Resistive\n",
                      "VID:0x3a4c PID:0x1688\n",
                      "===res id_match 0x3a4c:0x1688 id_match:1 " + fd_text() + "===\n",
                      "MatchMyHidDevice list[0]First", "MatchMyHidDevice list[1]Second"}));
  EXPECT_EQ(trace().back(), "close /dev/usb/hiddev0");
  EXPECT_EQ(DeviceNumber, 0);
}

TEST_F(HidScanMatchTest, TheFirstResistiveNameThatMatchesEndsTheSearch) {
  set_names(rMatchProduct, rManufCnt, {"First", "Resistive", "Virtual Resistive"});
  attach_resistive();
  match(kNode);
  EXPECT_EQ(messages_of({"MatchMyHidDevice list", "Res touch"}),
            trace_messages({"MatchMyHidDevice list[0]First", "MatchMyHidDevice list[1]Resistive",
                            "Res touch device name match\n"}));
  EXPECT_EQ(DeviceNumber, 1);
}

TEST_F(HidScanMatchTest, TheFirstPctNameThatMatchesIsNamed) {
  set_names(MatchProduct, ManufCnt, {"First", "PCT", "Virtual PCT"});
  add(kNode, kPctIdentity);
  match(kNode);
  EXPECT_EQ(messages_of({"PCT device"}), trace_messages({"PCT device name match PCT\n"}));
  EXPECT_EQ(DeviceNumber, 1);
}

TEST_F(HidScanMatchTest, AResistiveIdIsNotLookedForInThePctList) {
  set_names(MatchProduct, ManufCnt, {"Virtual Resistive"});
  set_names(rMatchProduct, rManufCnt, {"Other"});
  add(kNode, kResistiveIdentity);
  match(kNode);
  EXPECT_EQ(DeviceNumber, 0);
}

TEST_F(HidScanMatchTest, WithoutResistiveNamesNoResistivePanelIsTaken) {
  rManufCnt = 0;
  add(kNode, kResistiveIdentity);
  match(kNode);
  EXPECT_EQ(DeviceNumber, 0);
  EXPECT_EQ(messages_of({"MatchMyHidDevice list"}), Lines{});
  EXPECT_EQ(trace().back(), "close /dev/usb/hiddev0");
}

TEST_F(HidScanMatchTest, WithoutPctNamesNoPctPanelIsTaken) {
  ManufCnt = 0;
  add(kNode, kPctIdentity);
  match(kNode);
  EXPECT_EQ(DeviceNumber, 0);
  EXPECT_EQ(trace_of({"log", "close"}).back(), "close /dev/usb/hiddev0");
  EXPECT_EQ(messages().back(), "zelkora DD:PCT device name not match\n");
}

TEST_F(HidScanMatchTest, OnlyTheCountedNamesAreCompared) {
  set_names(MatchProduct, ManufCnt, {"First", "Virtual PCT"});
  ManufCnt = 1;
  add(kNode, kPctIdentity);
  match(kNode);
  EXPECT_EQ(DeviceNumber, 0);
}

TEST_F(HidScanMatchTest, ACountBeyondTheListEndsWithTheList) {
  for (auto& name : MatchProduct) std::strcpy(name, "Other");
  for (auto& name : rMatchProduct) std::strcpy(name, "Other");
  ManufCnt = 1000000;
  rManufCnt = 1000000;
  add(kNode, kPctIdentity);
  add("/dev/usb/hiddev1", kResistiveIdentity);
  match(kNode);
  EXPECT_EQ(messages().back(), "zelkora DD:PCT device name not match\n");
  match("/dev/usb/hiddev1");
  EXPECT_EQ(messages().back(), "zelkora DD:MatchMyHidDevice list[35]Other");
}

struct NameCase {
  const char* name;
  std::string device;
  Lines list;
  bool taken;
};

TEST_F(HidScanMatchTest, APctNameHoldsAListedNameAndNoPen) {
  const NameCase cases[] = {
      {"whole", "Virtual PCT", {"Virtual PCT"}, true},
      {"at the start", "Virtual PCT Panel", {"Virtual PCT"}, true},
      {"in the middle", "The Virtual PCT Panel", {"Virtual PCT"}, true},
      {"at the end", "The Virtual PCT", {"Virtual PCT"}, true},
      {"shorter than the list's", "Virtual P", {"Virtual PCT"}, false},
      {"another case", "virtual pct", {"Virtual PCT"}, false},
      {"the second of the list", "Virtual PCT", {"Other", "Virtual PCT"}, true},
      {"an empty entry takes any", "Whatever Panel", {"Other", ""}, true},
      {"a pen at the end", "Virtual PCT Pen", {"Virtual PCT"}, false},
      {"a pen at the start", "Pen Virtual PCT", {"Virtual PCT"}, false},
      {"a pen in a word", "Virtual PCT Pencil", {"Virtual PCT"}, false},
      {"a listed pen", "Virtual PCT Pen", {"Virtual PCT Pen"}, false},
      {"a pen and an empty entry", "Virtual Pen", {""}, false},
      {"another case of pen", "Virtual PCT pen", {"Virtual PCT"}, true},
  };
  for (const NameCase& row : cases) {
    SCOPED_TRACE(row.name);
    DeviceNumber = 0;
    set_names(MatchProduct, ManufCnt, row.list);
    const auto& panel = add(kNode, named(0x2575, 0x8753, row.device));
    match(kNode);
    EXPECT_EQ(DeviceNumber, row.taken ? 1 : 0);
    EXPECT_EQ(messages_of({"PCT device name not match\n"}).size(), row.taken ? 0U : 1U);
    EXPECT_EQ(node_calls().back(), "close /dev/usb/hiddev0");
    remove(panel);
  }
}

TEST_F(HidScanMatchTest, AResistiveNameHoldsAListedName) {
  const NameCase cases[] = {
      {"at the start", "Virtual Resistive Panel", {"Virtual Resistive"}, true},
      {"in the middle", "The Virtual Resistive Panel", {"Virtual Resistive"}, true},
      {"another", "Virtual Panel", {"Virtual Resistive"}, false},
      {"an empty entry takes any", "Whatever Panel", {"Other", ""}, true},
      {"a pen is no exception", "Virtual Resistive Pen", {"Virtual Resistive"}, true},
  };
  for (const NameCase& row : cases) {
    SCOPED_TRACE(row.name);
    DeviceNumber = 0;
    set_names(rMatchProduct, rManufCnt, row.list);
    const auto& panel = add(kNode, named(0x3A4C, 0x1688, row.device));
    match(kNode);
    EXPECT_EQ(messages_of({"Res touch device name match\n"}).size(), row.taken ? 1U : 0U);
    EXPECT_EQ(DeviceNumber, row.taken ? 1 : 0);
    remove(panel);
  }
}

TEST_F(HidScanMatchTest, NamesAreNoFormats) {
  set_names(rMatchProduct, rManufCnt, {"%s%n"});
  set_names(MatchProduct, ManufCnt, {"%n%s"});
  add(kNode, named(0x3A4C, 0x1688, "%s%n %n%s"));
  match(kNode);
  EXPECT_EQ(
      messages_of({"MatchMyHidDevice device name", "MatchMyHidDevice list"}),
      trace_messages({"MatchMyHidDevice device name:%s%n %n%s\n", "MatchMyHidDevice list[0]%s%n"}));
  add("/dev/usb/hiddev1", named(0x2575, 1, "%n%s %s%n"), "%n%n%s");
  match("/dev/usb/hiddev1");
  EXPECT_EQ(messages_of({"PCT device name match"}),
            trace_messages({"PCT device name match %n%s\n"}));
  EXPECT_STREQ(TouchDevice[1].Phys, "%n%n%s");
}

TEST_F(HidScanMatchTest, NamesAreCutAt256Bytes) {
  const std::string listed_name = "Virtual PCT";
  for (const size_t length : {255U, 256U, 257U, 300U}) {
    SCOPED_TRACE(length);
    DeviceNumber = 0;
    // The listed name is the end of the device's.
    const std::string name = "A " + std::string(length - 2 - listed_name.size(), 'n') + listed_name;
    for (const char* node : {kNode, kRawNode}) {
      const auto& panel = add(node, {0x2575, 0x8753, "", "", name});
      match(node);
      EXPECT_EQ(messages()[1],
                "zelkora DD:MatchMyHidDevice device name:" + name.substr(0, 256) + "\n");
      remove(panel);
    }
    EXPECT_EQ(DeviceNumber, length <= 256 ? 1 : 0);
  }
}

}  // namespace
