// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Asks the nodes of one panel everything that a host may ask, right and wrong, or makes one exchange
// over each, and prints what came back. Nodes of the real kernel and of the virtual one must give the same text.
#include <fcntl.h>
#include <linux/input.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <cstring>
#include <vector>

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

struct Node {
  const char* name;
  const char* path = "-";
  int fd = -1;
  pid_t reader = 0;

  bool exists() const { return std::strcmp(path, "-") != 0; }
};

// In the order of the arguments.
struct Nodes {
  Node hiddev{"hiddev"};
  Node hidraw{"hidraw"};
  Node event{"event"};

  std::vector<Node*> existing() {
    std::vector<Node*> list{&hiddev, &hidraw, &event};
    std::erase_if(list, [](const Node* node) { return !node->exists(); });
    return list;
  }
};

// A process that waits for input. What it gets is its exit code.
pid_t start_reader(const char* path) {
  const pid_t child = fork();
  if (child != 0) return child;
  std::array<uint8_t, 64> bytes{};
  const int fd = open(path, O_RDONLY);
  const ssize_t count = fd < 0 ? -1 : read(fd, bytes.data(), bytes.size());
  _exit(count < 0 ? errno : 0);
}

void show_reader(const Node& node) {
  int status = 0;
  waitpid(node.reader, &status, 0);
  errno = WEXITSTATUS(status);
  show(std::string(node.name) + " read that waited", errno == 0 ? 0 : -1);
}

void ask_everything(Nodes& nodes) {
  if (nodes.hiddev.exists()) ask_hiddev(nodes.hiddev.fd, nodes.hiddev.path);
  if (nodes.hidraw.exists()) ask_hidraw(nodes.hidraw.fd);
  if (nodes.event.exists()) ask_event(nodes.event.fd);
  for (const Node* node : nodes.existing()) ask_opens(node->path, node->name);
}

// A request that is not answered takes the real kernel up to ten seconds.
void ask_one_exchange(const Nodes& nodes) {
  if (nodes.hiddev.exists()) exchange_over_hiddev(nodes.hiddev.fd);
  if (nodes.hidraw.exists()) exchange_over_hidraw(nodes.hidraw.fd);
}

void ask_unplugged(Nodes& nodes) {
  std::puts("unplugged");
  for (const Node* node : nodes.existing()) show_reader(*node);
  for (const Node* node : nodes.existing()) {
    show(node->name, open(node->path, O_RDWR | O_NONBLOCK));
  }
  if (nodes.hiddev.exists()) ask_unplugged_hiddev(nodes.hiddev.fd);
  if (nodes.hidraw.exists()) ask_unplugged_hidraw(nodes.hidraw.fd);
  if (nodes.event.exists()) ask_unplugged_event(nodes.event.fd);
}

int run(Nodes nodes, bool one_exchange) {
  for (Node* node : nodes.existing()) {
    node->fd = open(node->path, O_RDWR | O_NONBLOCK);
    if (node->fd >= 0) continue;
    std::perror(node->path);
    return 1;
  }
  if (one_exchange) {
    ask_one_exchange(nodes);
  } else {
    ask_everything(nodes);
  }
  std::fflush(stdout);
  for (Node* node : nodes.existing()) node->reader = start_reader(node->path);
  usleep(100'000);  // the readers wait by then
  std::puts("now unplug");
  std::fflush(stdout);
  while (getchar() != EOF) {
  }
  ask_unplugged(nodes);
  return 0;
}

}  // namespace
}  // namespace zelkora::probe

int main(int argc, char** argv) {
  const bool one_exchange = argc > 1 && std::strcmp(argv[1], "--one-exchange") == 0;
  char** paths = argv + (one_exchange ? 2 : 1);
  if (argv + argc - paths != 3) {
    std::fputs(
        "Usage: hid-probe [--one-exchange] HIDDEV HIDRAW EVENT\n"
        "\"-\" stands for a node that does not exist; asks again, unplugged, when its input ends\n",
        stderr);
    return 2;
  }
  return zelkora::probe::run({{"hiddev", paths[0]}, {"hidraw", paths[1]}, {"event", paths[2]}},
                             one_exchange);
}
