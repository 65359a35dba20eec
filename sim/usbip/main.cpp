// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// zelkora-usbip: plugs virtual controllers into the running kernel and serves them until its input
// ends. What comes there are queries: see panel_queries.h.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <exception>
#include <fstream>
#include <span>
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
    "Usage: zelkora-usbip [OPTION]... DESCRIPTION...\n"
    "\n"
    "  --line PORT=PATH  the line of a serial port ends at this terminal: there a panel that is\n"
    "                    described as on PORT sits, serial,port=PORT. What a host sets up at its\n"
    "                    own end does not show there, and opening it never fails.\n"
    "  --trace FILE      write each feature report to FILE, and when a controller comes or goes\n"
    "\n"
    "The controllers are plugged in one after another. For each it prints \"plugged NUMBER\"\n"
    "and the nodes that the kernel made, \"HIDDEV HIDRAW EVENT\", a pen's three behind them\n"
    "and \"-\" for one that does not exist, or the port of a serial panel, and at last\n"
    "\"ready\". From then on it takes queries, a line each, and answers each with a line:\n"
    "with \"ok\" when there is nothing to say, with how many and \" | \" in front of each for\n"
    "frames, or with \"error: \" and the reason. PANEL counts from 0.\n"
    "\n";

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
std::vector<zelkora::sim::PanelDescription> parse_panels(std::span<char* const> texts) {
  std::vector<zelkora::sim::PanelDescription> descriptions(texts.size());
  for (size_t i = 0; i < descriptions.size(); ++i) {
    const std::string problem = parse_panel(texts[i], descriptions[i]);
    if (!problem.empty()) throw std::runtime_error(problem);
  }
  return descriptions;
}

struct Options {
  zelkora::sim::Bench::LineEnds line_ends;
  const char* trace_file = nullptr;
};

// Takes the options off the front of the arguments.
Options take_options(std::span<char* const>& arguments) {
  Options options;
  while (!arguments.empty() && std::string_view(arguments[0]).starts_with("--")) {
    const std::string_view name = arguments[0];
    const std::string_view value = arguments.size() > 1 ? arguments[1] : "";
    const size_t equals = value.find('=');
    if (name == "--line" && equals != value.npos) {
      options.line_ends.insert_or_assign(std::string(value.substr(0, equals)),
                                         value.substr(equals + 1));
    } else if (name == "--trace" && !value.empty()) {
      options.trace_file = arguments[1];
    } else {
      throw std::runtime_error("it takes --line PORT=PATH and --trace FILE, not " +
                               std::string(name) + " " + std::string(value));
    }
    arguments = arguments.subspan(2);
  }
  return options;
}

// Each line is in the file before the controller goes on. Without a name nothing is traced.
zelkora::sim::Trace trace_into(std::ofstream& file, const char* name) {
  if (name == nullptr) return {};
  file.open(name, std::ios::app);
  if (!file)
    throw std::runtime_error(std::string("cannot write ") + name + ": " + std::strerror(errno));
  return [&file](const std::string& line) { file << line << std::endl; };
}

void run(std::span<char* const> arguments) {
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);  // an answer must not wait for the next one
  const Options options = take_options(arguments);
  const auto descriptions = parse_panels(arguments);
  std::ofstream trace;
  zelkora::sim::Bench bench(options.line_ends, trace_into(trace, options.trace_file));
  for (size_t i = 0; i < descriptions.size(); ++i) {
    const std::vector<std::string> nodes = bench.plug(descriptions[i]);
    std::puts(zelkora::sim::plugged_line(i, nodes).c_str());
  }
  std::puts("ready");
  answer_queries(bench);
}

}  // namespace

int main(int argc, char** argv) {
  const std::span<char* const> words(argv + 1, static_cast<size_t>(argc - 1));
  if (!words.empty() && std::string_view(words[0]) == "--help") {
    print_help(stdout);
    return 0;
  }
  if (words.empty()) {
    print_help(stderr);
    return 2;
  }
  try {
    run(words);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "zelkora-usbip: %s\n", error.what());
    return 1;
  }
}
