// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "support/bench.h"

namespace {

using testing::ExitedWithCode;
using LifecycleTest = zelkora::test::Bench;

// Tells what became of fd once the process ends by exit().
void tell_descriptor_at_exit() {
  std::atexit([] {
    std::fprintf(stderr, "descriptor %s\n", ::fcntl(fd, F_GETFD) < 0 ? "closed" : "open");
  });
}

void open_descriptor() {
  fd = ::open("/dev/null", O_RDONLY);
  tell_descriptor_at_exit();
}

TEST_F(LifecycleTest, CloseZelkoraClosesTheDescriptorAndEndsTheProcessWithStatus0) {
  EXPECT_EXIT(
      {
        open_descriptor();
        CloseZelkora();
      },
      ExitedWithCode(0), "^descriptor closed\n$");
}

TEST_F(LifecycleTest, IntHandlerDoesTheSameWhateverTheSignal) {
  for (const int signal_number : {SIGINT, SIGTERM, 0, -1}) {
    SCOPED_TRACE(signal_number);
    EXPECT_EXIT(
        {
          open_descriptor();
          INTHandler(signal_number);
        },
        ExitedWithCode(0), "^descriptor closed\n$");
  }
}

TEST_F(LifecycleTest, EndsWithStatus0EvenWhenNothingIsOpen) {
  EXPECT_EXIT(
      {
        fd = -1;
        tell_descriptor_at_exit();
        CloseZelkora();
      },
      ExitedWithCode(0), "^descriptor closed\n$");
}

TEST_F(LifecycleTest, ClosesAnOpenPanel) {
  open_resistive();
  EXPECT_EXIT(
      {
        // The bench of this process sees the close.
        kernel.set_trace(
            [](const std::string& line) { std::fprintf(stderr, "%s\n", line.c_str()); });
        CloseZelkora();
      },
      ExitedWithCode(0), "^close /dev/usb/hiddev0\n$");
}

TEST_F(LifecycleTest, ServesAsTheHostsSignalHandler) {
  EXPECT_EXIT(
      {
        open_descriptor();
        std::signal(SIGINT, INTHandler);
        std::raise(SIGINT);
      },
      ExitedWithCode(0), "^descriptor closed\n$");
}

TEST_F(LifecycleTest, InstallsNoSignalHandlerItself) {
  // Whatever the test program's parent ignores stays ignored.
  const auto handlers = [] {
    std::vector<void (*)(int)> all;
    for (const int signal_number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) {
      struct sigaction action {};
      EXPECT_EQ(sigaction(signal_number, nullptr, &action), 0);
      all.push_back(action.sa_handler);
    }
    return all;
  };
  const auto before = handlers();
  write_resistive_list();
  attach_resistive();
  InitialZelkora(0);
  ASSERT_EQ(GetTouchPanels(0), 1);
  EXPECT_EQ(handlers(), before);
}

}  // namespace
