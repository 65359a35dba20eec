// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Asks the nodes of one panel everything that a host may ask, right and wrong, and prints what came
// back. Nodes of the real kernel and of the virtual one must give the same text.
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>

#include "answers.h"
#include "hiddev_questions.h"
#include "hidraw_questions.h"
#include "node_questions.h"

namespace zelkora::probe {
namespace {

void ask_event(int fd) {
  int number = 0;
  show("EVIOCGVERSION", ioctl(fd, EVIOCGVERSION, &number));
  std::printf("  %X\n", number);
  input_id id{};
  show("EVIOCGID", ioctl(fd, EVIOCGID, &id));
  std::printf("  bus type %u vendor %04X product %04X version %04X\n", id.bustype, id.vendor,
              id.product, id.version);
  ask_text(fd, "EVIOCGNAME", EVIOCGNAME(0), false);
  ask_text(fd, "EVIOCGPHYS", EVIOCGPHYS(0), true);
  ask_text(fd, "EVIOCGUNIQ", EVIOCGUNIQ(0), false);
  ask_others(fd, "event");
}

void ask_unplugged_event(int fd) {
  std::array<char, 64> name{};
  show("EVIOCGVERSION", ioctl(fd, EVIOCGVERSION, name.data()));
  show("EVIOCGNAME", ioctl(fd, EVIOCGNAME(64), name.data()));
  ask_others(fd, "event");
}

constexpr const char* kNames[] = {"hiddev", "hidraw", "event"};

// A process that waits for input. What it gets is its exit code.
pid_t start_reader(const char* path) {
  const pid_t child = fork();
  if (child != 0) return child;
  std::array<uint8_t, 64> bytes{};
  const int fd = open(path, O_RDONLY);
  const ssize_t count = fd < 0 ? 0 : read(fd, bytes.data(), bytes.size());
  _exit(count < 0 ? errno : 0);
}

void show_reader(const char* name, pid_t child) {
  int status = 0;
  waitpid(child, &status, 0);
  errno = WEXITSTATUS(status);
  show(std::string(name) + " read that waited", errno == 0 ? 0 : -1);
}

int run(char** paths) {
  std::array<int, 3> nodes{};
  std::array<pid_t, 3> readers{};
  for (size_t i = 0; i < nodes.size(); ++i) {
    nodes[i] = open(paths[i], O_RDWR | O_NONBLOCK);
    if (nodes[i] < 0) {
      std::perror(paths[i]);
      return 1;
    }
  }
  ask_hiddev(nodes[0], paths[0]);
  ask_hidraw(nodes[1]);
  ask_event(nodes[2]);
  for (size_t i = 0; i < nodes.size(); ++i) ask_opens(paths[i], kNames[i]);
  std::fflush(stdout);
  for (size_t i = 0; i < nodes.size(); ++i) readers[i] = start_reader(paths[i]);
  usleep(100'000);  // the readers wait by then
  std::puts("now unplug");
  std::fflush(stdout);
  while (getchar() != EOF) {
  }
  for (size_t i = 0; i < nodes.size(); ++i) show_reader(kNames[i], readers[i]);
  for (size_t i = 0; i < nodes.size(); ++i) show(kNames[i], open(paths[i], O_RDWR | O_NONBLOCK));
  ask_unplugged_hiddev(nodes[0]);
  ask_unplugged_hidraw(nodes[1]);
  ask_unplugged_event(nodes[2]);
  return 0;
}

}  // namespace
}  // namespace zelkora::probe

int main(int argc, char** argv) {
  if (argc != 4) {
    std::fputs("Usage: hid-probe HIDDEV HIDRAW EVENT; asks again, unplugged, when its input ends\n",
               stderr);
    return 2;
  }
  return zelkora::probe::run(argv + 1);
}
