// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "support/bench.h"

namespace {

using zelkora::test::Lines;
using NotifyTest = zelkora::test::Bench;

struct Notification {
  const char* name;
  int (*send)();
  const char* request;
  Lines messages;
  Lines messages_without_display;
};

const Notification kNotifications[] = {
    {"SendPCTConfigChange",
     SendPCTConfigChange,
     "0x80000",
     {"zelkora DD:EVDEV_PCT_RECONFIG\n"},
     {"EE:** Can't open XDisplay **\n"}},
    {"DisableTouchDriver",
     DisableTouchDriver,
     "0x800",
     {"zelkora DD:EVDEV_DISABLE_TOUCH_DRIVER\n"},
     {}},
    {"SendResConfigChange",
     SendResConfigChange,
     "0x1000000",
     {"zelkora DD:EVDEV_RES_RECONFIG\n"},
     {}},
    {"SendRegetScreenNumber",
     SendRegetScreenNumber,
     "0x20000",
     {"zelkora DD:SendRegetScreenNumber\n", "zelkora DD:EVDEV_REGET_SCREEN_NUMBER\n"},
     {}},
};

std::string hook_line(const Notification& row, int argument) {
  return std::string("mydoled_all_display ") + row.request + " " + std::to_string(argument);
}

TEST_F(NotifyTest, HandsTheRequestToTheHostOverADisplayOfItsOwn) {
  for (const Notification& row : kNotifications) {
    SCOPED_TRACE(row.name);
    clear_trace();
    row.send();
    EXPECT_EQ(trace(), (Lines{"XOpenDisplay", hook_line(row, 0), "XCloseDisplay"}));
  }
}

TEST_F(NotifyTest, PrintsItsNameBeforeTheHostIsCalled) {
  DbgFlag = 1;
  for (const Notification& row : kNotifications) {
    SCOPED_TRACE(row.name);
    clear_trace();
    row.send();
    EXPECT_EQ(messages(), row.messages);
    ASSERT_EQ(trace().size(), row.messages.size() + 3);
    EXPECT_EQ(trace().front(), "XOpenDisplay");
    EXPECT_EQ(trace()[row.messages.size() + 1], hook_line(row, 0));
  }
}

TEST_F(NotifyTest, TheHostGetsTheDisplayThatWasOpened) {
  int display = 0;
  for (const Notification& row : kNotifications) {
    SCOPED_TRACE(row.name);
    host.notified_display = &display;
    row.send();
    EXPECT_NE(host.notified_display, &display);
    EXPECT_NE(host.notified_display, nullptr);
    EXPECT_EQ(host.display_was_open, true);
  }
}

TEST_F(NotifyTest, ByteFourOfTheConfigurationGoesAlongUnsigned) {
  for (const int argument : {1, 0x7F, 0x80, 0xFF}) {
    MyConfig[ZELKORA_CONFIG_NOTIFY_ARGUMENT] = static_cast<unsigned char>(argument);
    for (const Notification& row : kNotifications) {
      SCOPED_TRACE(row.name);
      clear_trace();
      row.send();
      EXPECT_EQ(trace_of({"mydoled_all_display"}), Lines{hook_line(row, argument)});
    }
  }
}

TEST_F(NotifyTest, TakesTheConfigurationAsItWasReadLast) {
  host.config[ZELKORA_CONFIG_NOTIFY_ARGUMENT] = 9;
  for (const Notification& row : kNotifications) row.send();
  EXPECT_EQ(host.config_reads, 0);
  for (const std::string& line : trace_of({"mydoled_all_display"})) {
    EXPECT_TRUE(line.ends_with(" 0")) << line;
  }
}

TEST_F(NotifyTest, ReturnsWhatClosingTheDisplayReturned) {
  for (const int result : {0, 1, -1, 77}) {
    x.close_result = result;
    for (const Notification& row : kNotifications) EXPECT_EQ(row.send(), result) << row.name;
  }
}

TEST_F(NotifyTest, WithoutADisplayNobodyIsNotified) {
  x.reachable = false;
  x.close_result = 77;
  for (const int debug : {0, 1}) {
    DbgFlag = debug;
    for (const Notification& row : kNotifications) {
      SCOPED_TRACE(row.name);
      clear_trace();
      EXPECT_EQ(row.send(), 0);
      EXPECT_EQ(messages(), row.messages_without_display);
      EXPECT_EQ(count_of("mydoled_all_display"), 0U);
      EXPECT_EQ(count_of("XCloseDisplay"), 0U);
    }
  }
}

TEST_F(NotifyTest, IsSilentWithoutTheDebugSwitch) {
  for (const Notification& row : kNotifications) row.send();
  EXPECT_EQ(messages(), Lines{});
}

}  // namespace
