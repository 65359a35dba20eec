// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <linux/input.h>

#include <cerrno>
#include <cstring>

#include "discovery_bench.h"

namespace {

using zelkora::sim::UsbIdentity;
using zelkora::test::kPctIdentity;
using zelkora::test::Lines;
using zelkora::test::trace_messages;

constexpr char kPhys[] = "usb-0000:00:14.0-1/input0";
const UsbIdentity kPen = {0x2575, 0x8753, "Zelkora", "Virtual PCT Pen"};
const UsbIdentity kMouse = {0x2575, 0x8753, "Zelkora", "Virtual PCT Mouse"};

class EventNodeTest : public zelkora::test::DiscoveryBench {
 protected:
  void SetUp() override {
    DiscoveryBench::SetUp();
    std::strcpy(TouchDevice[0].Phys, kPhys);
  }
  void refuse_requests(const std::string& path) {
    kernel.fail_ioctl(path, EVIOCGPHYS(0), EIO);
    kernel.fail_ioctl(path, EVIOCGNAME(0), EIO);
  }
};

TEST_F(EventNodeTest, FindsTheNodeOfTheSamePhys) {
  add("/dev/input/event7", kPctIdentity, kPhys);
  EXPECT_EQ(FindMyEVDevice(0), 1);
  EXPECT_STREQ(TouchDevice[0].EventName, "/dev/input/event7");
  EXPECT_EQ(
      trace(),
      (Lines{"log zelkora DD:FindMyEVDevice--start", "log zelkora DD:open /dev/input/event7",
             "open /dev/input/event7 O_RDONLY", "ioctl EVIOCGPHYS 256", "ioctl EVIOCGNAME 256",
             "close /dev/input/event7",
             "log zelkora DD:/dev/input/event7 phys:usb-0000:00:14.0-1/input0 "
             "name:Zelkora Virtual PCT Mouse",
             "log zelkora DD:Device Name:Zelkora Virtual PCT Mouse",
             "log zelkora DD:ev_path : /dev/input/event7", "log zelkora DD:FindMyEVDevice--end"}));
}

TEST_F(EventNodeTest, EveryMessageEndsItsLine) {
  const Lines nodes = slots("/dev/input/event", 2);
  plug(nodes[0], kPctIdentity, kPhys);
  plug(nodes[1], kPctIdentity, kPhys);
  kernel.fail_open(nodes[0], EACCES);
  FindMyEVDevice(0);
  EXPECT_EQ(messages(),
            trace_messages({"FindMyEVDevice--start\n", "open " + nodes[0] + "\n",
                            "open " + nodes[0] + " fail.\n", "open " + nodes[1] + "\n",
                            nodes[1] + " phys:" + kPhys + " name:Zelkora Virtual PCT Mouse\n",
                            "Device Name:Zelkora Virtual PCT Mouse\n",
                            "ev_path : " + nodes[1] + "\n", "FindMyEVDevice--end\n"}));
}

TEST_F(EventNodeTest, WritesTheEntryOfTheIndexAlone) {
  add("/dev/input/event0", kPctIdentity, "usb-2/input0");
  std::strcpy(TouchDevice[2].Phys, "usb-2/input0");
  EXPECT_EQ(FindMyEVDevice(2), 1);
  EXPECT_STREQ(TouchDevice[2].EventName, "/dev/input/event0");
  EXPECT_STREQ(TouchDevice[0].EventName, "");
  EXPECT_STREQ(TouchDevice[2].Phys, "usb-2/input0");
}

TEST_F(EventNodeTest, StopsAtTheFirstNodeThatFits) {
  const Lines nodes = slots("/dev/input/event", 3);
  plug(nodes[0], kPctIdentity, "usb-9/input0");
  plug(nodes[1], kPctIdentity, kPhys);
  plug(nodes[2], kMouse, kPhys);
  FindMyEVDevice(0);
  EXPECT_EQ(TouchDevice[0].EventName, nodes[1]);
  EXPECT_EQ(node_calls(), (Lines{"open " + nodes[0] + " O_RDONLY", "close " + nodes[0],
                                 "open " + nodes[1] + " O_RDONLY", "close " + nodes[1]}));
}

TEST_F(EventNodeTest, OnlyNodesNamedEventAreOpened) {
  add("/dev/input/mouse0", kPctIdentity, kPhys);
  add("/dev/input/js0", kPctIdentity, kPhys);
  EXPECT_EQ(FindMyEVDevice(0), 1);
  EXPECT_STREQ(TouchDevice[0].EventName, "");
  EXPECT_EQ(messages(), trace_messages({"FindMyEVDevice--start\n", "FindMyEVDevice--end\n"}));
}

TEST_F(EventNodeTest, TheNameMayHoldEventAnywhere) {
  add("/dev/input/my-event-node", kPctIdentity, kPhys);
  FindMyEVDevice(0);
  EXPECT_STREQ(TouchDevice[0].EventName, "/dev/input/my-event-node");
}

struct PhysCase {
  const char* name;
  std::string entry;
  std::string node;
  bool fits;
};

TEST_F(EventNodeTest, TheNodesPhysMustContainTheEntrys) {
  const PhysCase cases[] = {
      {"the same", "usb-1/input0", "usb-1/input0", true},
      {"longer at the end", "usb-1/input0", "usb-1/input01", true},
      {"longer at the start", "usb-1/input0", "pci-usb-1/input0", true},
      {"shorter", "usb-1/input0", "usb-1/input", false},
      {"another", "usb-1/input0", "usb-1/input1", false},
      {"an entry without phys takes any", "", "usb-1/input0", true},
      {"a node without phys", "", "", false},
  };
  int number = 0;
  for (const PhysCase& row : cases) {
    SCOPED_TRACE(row.name);
    const std::string path = "/dev/input/event" + std::to_string(number++);
    const auto& panel = add(path, kPctIdentity, row.node);
    TouchDevice[0] = {};
    row.entry.copy(TouchDevice[0].Phys, row.entry.size());
    FindMyEVDevice(0);
    EXPECT_EQ(TouchDevice[0].EventName, row.fits ? path : "");
    remove(panel);
  }
}

TEST_F(EventNodeTest, APenIsNeverTaken) {
  const Lines nodes = slots("/dev/input/event", 2);
  plug(nodes[0], kPen, kPhys);
  plug(nodes[1], kMouse, kPhys);
  FindMyEVDevice(0);
  EXPECT_EQ(TouchDevice[0].EventName, nodes[1]);
}

TEST_F(EventNodeTest, APenAloneIsNoNode) {
  add("/dev/input/event0", {0x2575, 0x8753, "Pencil", "Company"}, kPhys);
  EXPECT_EQ(FindMyEVDevice(0), 1);
  EXPECT_STREQ(TouchDevice[0].EventName, "");
  EXPECT_EQ(messages().back(), "zelkora DD:FindMyEVDevice--end\n");
}

TEST_F(EventNodeTest, ALowerCasePenIsNone) {
  add("/dev/input/event0", {0x2575, 0x8753, "Zelkora", "open pencil"}, kPhys);
  FindMyEVDevice(0);
  EXPECT_STREQ(TouchDevice[0].EventName, "/dev/input/event0");
}

TEST_F(EventNodeTest, ANodeBehindNoneIsJudgedByUnknownAndNoPhys) {
  add("/dev/input/event0", kPctIdentity, kPhys);
  refuse_requests("/dev/input/event0");
  TouchDevice[0].Phys[0] = '\0';
  FindMyEVDevice(0);
  EXPECT_STREQ(TouchDevice[0].EventName, "");
  EXPECT_EQ(messages()[2], "zelkora DD:/dev/input/event0 phys: name:Unknown\n");
}

TEST_F(EventNodeTest, ANodeWithoutNameIsTakenByItsPhys) {
  add("/dev/input/event0", kPen, kPhys);
  kernel.fail_ioctl("/dev/input/event0", EVIOCGNAME(0), EIO);
  FindMyEVDevice(0);
  EXPECT_STREQ(TouchDevice[0].EventName, "/dev/input/event0");
  EXPECT_EQ(messages_of({"Device Name:"}), trace_messages({"Device Name:Unknown\n"}));
}

TEST_F(EventNodeTest, ANodeThatFailsIsJudgedByThePhysOfTheNodeBefore) {
  const Lines nodes = slots("/dev/input/event", 2);
  plug(nodes[0], kPen, kPhys);
  plug(nodes[1], kMouse, "usb-9/input0");
  kernel.fail_ioctl(nodes[1], EVIOCGPHYS(0), EIO);
  FindMyEVDevice(0);
  EXPECT_EQ(TouchDevice[0].EventName, nodes[1]);
}

TEST_F(EventNodeTest, ANodeThatFailsIsJudgedByTheNameOfTheNodeBefore) {
  const Lines nodes = slots("/dev/input/event", 2);
  plug(nodes[0], kPen, "usb-9/input0");
  plug(nodes[1], kMouse, kPhys);
  kernel.fail_ioctl(nodes[1], EVIOCGNAME(0), EIO);
  FindMyEVDevice(0);
  EXPECT_STREQ(TouchDevice[0].EventName, "");
  EXPECT_EQ(messages_of({nodes[1]}), trace_messages({nodes[1] + " phys:" + kPhys +
                                                     " name:Zelkora Virtual PCT Pen Mouse\n"}));
}

TEST_F(EventNodeTest, ANodeThatCannotBeOpenedIsNotJudged) {
  const Lines nodes = slots("/dev/input/event", 2);
  plug(nodes[0], kPen, kPhys);
  plug(nodes[1], kMouse, kPhys);
  kernel.fail_open(nodes[1], ENODEV);
  FindMyEVDevice(0);
  EXPECT_STREQ(TouchDevice[0].EventName, "");
  EXPECT_EQ(messages_of({nodes[1]}), Lines{});
  EXPECT_EQ(node_calls().back(), "open " + nodes[1] + " O_RDONLY -> ENODEV");
}

TEST_F(EventNodeTest, ADirectoryThatCannotBeOpenedHoldsNothing) {
  add("/dev/input/event0", kPctIdentity, kPhys);
  fail_file_call("opendir", "/dev/input", EACCES);
  EXPECT_EQ(FindMyEVDevice(0), 1);
  EXPECT_STREQ(TouchDevice[0].EventName, "");
  EXPECT_EQ(trace(),
            (Lines{"log zelkora DD:FindMyEVDevice--start", "log zelkora DD:FindMyEVDevice--end"}));
}

TEST_F(EventNodeTest, WhenNothingFitsTheOldNameStays) {
  std::strcpy(TouchDevice[0].EventName, "/dev/input/event3");
  add("/dev/input/event0", kPctIdentity, "usb-9/input0");
  EXPECT_EQ(FindMyEVDevice(0), 1);
  EXPECT_STREQ(TouchDevice[0].EventName, "/dev/input/event3");
}

TEST_F(EventNodeTest, ANewNameReplacesTheWholeOldOne) {
  std::memset(TouchDevice[0].EventName, 'x', sizeof TouchDevice[0].EventName);
  add("/dev/input/event0", kPctIdentity, kPhys);
  FindMyEVDevice(0);
  EXPECT_STREQ(TouchDevice[0].EventName, "/dev/input/event0");
  EXPECT_EQ(TouchDevice[0].EventName[35], '\0');
}

TEST_F(EventNodeTest, APathThatDoesNotFitIsCut) {
  const std::string path = "/dev/input/event" + std::string(100, '1');
  add(path, kPctIdentity, kPhys);
  FindMyEVDevice(0);
  EXPECT_EQ(TouchDevice[0].EventName, path.substr(0, 35));
  EXPECT_STREQ(TouchDevice[0].ID, "");
  EXPECT_EQ(messages_of({"ev_path"}), trace_messages({"ev_path : " + path + "\n"}));
}

TEST_F(EventNodeTest, ANodeNameOfTheLongestKindIsFound) {
  const std::string path = "/dev/input/event" + std::string(250, '1');
  add(path, kPctIdentity, kPhys);
  FindMyEVDevice(0);
  EXPECT_EQ(node_calls()[0], "open " + path + " O_RDONLY");
}

TEST_F(EventNodeTest, LongTextsOfTheKernelAreCutAt256Bytes) {
  for (const size_t length : {255U, 256U, 257U, 1000U}) {
    SCOPED_TRACE(length);
    const std::string path = "/dev/input/event" + std::to_string(length);
    const std::string phys = kPhys + std::string(length - std::strlen(kPhys), 'p');
    const std::string name = std::string(length - 6, 'n') + " Mouse";
    const auto& panel = add(path, {0x2575, 0x8753, "", "", name}, phys);
    clear_trace();
    FindMyEVDevice(0);
    EXPECT_EQ(messages_of({path}), trace_messages({path + " phys:" + phys.substr(0, 256) +
                                                   " name:" + name.substr(0, 256) + "\n"}));
    remove(panel);
  }
}

TEST_F(EventNodeTest, TextsAreNoFormats) {
  std::strcpy(TouchDevice[0].Phys, "%s%n");
  add("/dev/input/event%s%n", {0, 0, "%s%n", "%s%n"}, "%s%n%s%n");
  FindMyEVDevice(0);
  EXPECT_STREQ(TouchDevice[0].EventName, "/dev/input/event%s%n");
  EXPECT_EQ(messages_of({"/dev"}),
            trace_messages({"/dev/input/event%s%n phys:%s%n%s%n name:%s%n %s%n Mouse\n"}));
}

TEST_F(EventNodeTest, TheOpenPanelKeepsItsDescriptor) {
  fd = 77;
  add("/dev/input/event0", kPctIdentity, kPhys);
  FindMyEVDevice(0);
  EXPECT_EQ(fd, 77);
}

}  // namespace
