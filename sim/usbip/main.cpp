// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// zelkora-usbip: plugs virtual controllers into the running kernel and serves them until its input
// ends. See bench.h for the commands that it takes there.
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "bench.h"

namespace {

constexpr char kUsage[] =
    "Plugs virtual touch controllers into the running kernel, and answers for them until its\n"
    "input ends. Needs root and the kernel module vhci-hcd.\n"
    "\n"
    "Usage: zelkora-usbip DESCRIPTION...\n"
    "\n"
    "The controllers are plugged in one after another. For each it prints \"plugged NUMBER HIDDEV\n"
    "HIDRAW EVENT\", with the nodes that the kernel made, and at last \"ready\". From then on it\n"
    "takes commands, a line each, and answers each with a line:\n"
    "  value PANEL ADDRESS      the 16-bit value in the controller, decimal\n"
    "  permanent PANEL ADDRESS  the value that a reset brings back\n"
    "  set PANEL ADDRESS VALUE  changes a value\n"
    "  silent PANEL on|off      whether the controller ignores commands\n"
    "  frames PANEL             how many command frames came, and each of them in hexadecimal\n"
    "  unplug PANEL             takes the controller away\n"
    "\n";

// Runs the commands that come on standard input, serving the kernel in between.
void take_commands(zelkora::sim::Bench& bench) {
  std::string pending;
  char buffer[256];
  for (;;) {
    bench.serve_until_readable(STDIN_FILENO);
    const ssize_t count = read(STDIN_FILENO, buffer, sizeof buffer);
    if (count <= 0) return;
    pending.append(buffer, static_cast<size_t>(count));
    for (size_t end; (end = pending.find('\n')) != std::string::npos; pending.erase(0, end + 1))
      std::puts(bench.run(std::string_view(pending).substr(0, end)).c_str());
  }
}

// All of them are read before the first one is plugged in.
std::vector<zelkora::sim::PanelDescription> parse_panels(int count, char** texts) {
  std::vector<zelkora::sim::PanelDescription> descriptions(static_cast<size_t>(count));
  for (size_t i = 0; i < descriptions.size(); ++i) {
    const std::string problem = parse_panel(texts[i], descriptions[i]);
    if (!problem.empty()) throw std::runtime_error(problem);
  }
  return descriptions;
}

void run(const std::vector<zelkora::sim::PanelDescription>& descriptions) {
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // an answer must not wait for the next one
  zelkora::sim::Bench bench;
  for (size_t i = 0; i < descriptions.size(); ++i) {
    const auto nodes = bench.plug(descriptions[i]);
    std::printf("plugged %zu %s %s %s\n", i, nodes.hiddev.c_str(), nodes.hidraw.c_str(),
                nodes.event.c_str());
  }
  std::puts("ready");
  take_commands(bench);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || std::string_view(argv[1]) == "--help") {
    std::fprintf(argc < 2 ? stderr : stdout, "%s%s", kUsage, zelkora::sim::panel_help().c_str());
    return argc < 2 ? 2 : 0;
  }
  try {
    run(parse_panels(argc - 1, argv + 1));
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zelkora-usbip: %s\n", error.what());
    return 1;
  }
}
