// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// zelkora-usbip: plugs virtual controllers into the running kernel and serves them until its input
// ends. What comes there are queries: see panel_queries.h.
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
    "HIDRAW EVENT\", with the nodes that the kernel made, a pen's three behind them and \"-\" for\n"
    "one that does not exist, and at last \"ready\". From then on it takes queries, a line each, "
    "and\n"
    "answers each with a line: with \"ok\" when there is nothing to say, with how many and \" | \" "
    "in\n"
    "front of each for frames, or with \"error: \" and the reason. PANEL counts from 0.\n";

void print_help(std::FILE* file) {
  const std::string queries = zelkora::sim::query_help();
  const std::string panels = zelkora::sim::panel_help();
  std::fprintf(file, "%s%s\n%s", kUsage, queries.c_str(), panels.c_str());
}

// Answers the queries that come on standard input, serving the kernel in between.
void answer_queries(zelkora::sim::Bench& bench) {
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
    const std::vector<std::string> nodes = bench.plug(descriptions[i]);
    std::puts(zelkora::sim::plugged_line(i, nodes).c_str());
  }
  std::puts("ready");
  answer_queries(bench);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2 || std::string_view(argv[1]) == "--help") {
    print_help(argc < 2 ? stderr : stdout);
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
