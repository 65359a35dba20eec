// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// zelkora-sim runs a command among virtual panels, and inside such a session it answers questions
// about them.
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>

#include "client.h"
#include "command.h"
#include "panel_file.h"
#include "panels.h"
#include "private_root.h"
#include "protocol.h"
#include "serial_ports.h"
#include "server.h"
#include "typed_text.h"

namespace {

using namespace zelkora::sim;

struct Options {
  std::vector<std::string> panels;
  std::string panel_file;
  std::vector<std::string> command;
  std::string data_directory;
  std::string trace_file;
  bool no_waits = false;
};

struct Query {
  CLI::App* command = nullptr;
  std::vector<std::string> words;
};

// The usage that the parser would write shows neither the "--" nor that queries stand alone.
struct HelpFormatter : CLI::Formatter {
  std::string make_usage(const CLI::App* app, std::string name) const override {
    if (app->get_parent() != nullptr) return CLI::Formatter::make_usage(app, name);
    return "Usage: zelkora-sim [OPTIONS] -- COMMAND [ARG...]\n"
           "       zelkora-sim QUERY [ARG...]    inside a session\n";
  }
};

int fail(const std::string& text, int status = kExitFailed) {
  std::fprintf(stderr, "zelkora-sim: %s\n", text.c_str());
  return status;
}

void add_options(CLI::App& app, Options& options) {
  const auto describe = [](const std::string& text) {
    PanelDescription panel;
    return parse_panel(text, panel);
  };
  app.add_option("--panel", options.panels, "A panel to present; may be given several times")
      ->type_name("DESCRIPTION")
      ->allow_extra_args(false)
      ->check(CLI::Validator(describe, ""));
  app.add_option("--panels", options.panel_file,
                 "Present the panels that FILE describes, one to a line; they come first")
      ->type_name("FILE");
  app.add_option("--data", options.data_directory,
                 "Show DIR as /opt/.touch_panel and keep what is written there")
      ->type_name("DIR");
  app.add_option("--trace", options.trace_file,
                 "Write each call on a virtual node, and each stand-in run, to FILE")
      ->type_name("FILE");
  app.add_flag("--no-waits", options.no_waits, "Have sleep() and usleep() return at once");
  app.add_option("COMMAND", options.command, "What to run, behind --")->type_name("");
}

// Inside a session: the words behind the name are passed on to the runner as they are.
void add_query(CLI::App& app, const QueryUsage& usage, Query& query) {
  const auto arguments = usage.argument_names();
  query.command = app.add_subcommand(std::string(usage.name), std::string(usage.help));
  query.command->group("");  // listed behind the options, with their arguments
  query.words.resize(arguments.size());
  for (size_t i = 0; i < arguments.size(); ++i) {
    const std::string name(arguments[i]);
    query.command->add_option(name, query.words[i])->required()->type_name("");
  }
}

void add_queries(CLI::App& app, std::vector<Query>& queries) {
  const std::vector<QueryUsage> usages = query_usages();
  queries.resize(usages.size());  // the options point into it from here on
  for (size_t i = 0; i < usages.size(); ++i) add_query(app, usages[i], queries[i]);
}

int ask(const Query& query) {
  std::string line = query.command->get_name();
  for (const std::string& word : query.words) line.append(" ").append(word);
  const Answer answer = ask_runner(line);
  if (answer.status != kExitDone) return fail(answer.text, answer.status);
  std::fputs(answer.text.c_str(), stdout);
  return kExitDone;
}

// The panels of the file, then those of the command line. Returns what is wrong with them.
std::string describe_panels(const Options& options, std::vector<PanelDescription>& panels) {
  if (!options.panel_file.empty()) {
    std::string problem = read_panel_file(options.panel_file, panels);
    if (!problem.empty()) return problem;
  }
  for (const std::string& text : options.panels) parse_panel(text, panels.emplace_back());
  if (panels.empty()) panels.emplace_back();
  return assign_ports(panels);
}

// Everything that needs the real file system comes before the private root.
std::string enter_session(Options& options, Panels& panels, Server& server) {
  const std::string executable = find_executable();
  const std::string library = find_preload_library();
  if (library.empty()) return "libzelkora-sim-preload.so is missing; build or install it";
  PrivateRootOptions root{.private_boot = true};
  if (!options.data_directory.empty()) {
    std::error_code code;
    std::filesystem::create_directories(options.data_directory, code);
    if (code) return "cannot create " + options.data_directory + ": " + code.message();
    root.data_directory = std::filesystem::absolute(options.data_directory);
  }
  std::string problem = enter_private_root(root);
  if (problem.empty()) problem = install_preload_library(library);
  if (problem.empty()) problem = install_stand_ins(executable);
  if (problem.empty()) problem = panels.create_files();
  return problem.empty() ? server.listen() : problem;
}

int run_session(Options& options) {
  if (access(ZELKORA_SIM_SOCKET_PATH, F_OK) == 0) {
    return fail("this is a session already; a session cannot hold another one", kExitUsage);
  }
  std::vector<PanelDescription> descriptions;
  const std::string mistake = describe_panels(options, descriptions);
  if (!mistake.empty()) return fail(mistake, kExitUsage);
  std::ofstream trace;
  Panels panels(descriptions);
  if (!options.trace_file.empty()) {
    trace.open(options.trace_file);
    if (!trace) return fail("cannot write " + options.trace_file + ": " + std::strerror(errno));
    panels.kernel().set_trace([&trace](const std::string& line) { trace << line << std::endl; });
    panels.commands()->set_trace(
        [&trace](const std::string& line) { trace << "run " << line << std::endl; });
  }
  Server server(panels);
  const std::string problem = enter_session(options, panels, server);
  if (!problem.empty()) return fail(problem);

  // The terminal sends its signals to the command as well; the others are passed on to it.
  constexpr int kForwarded[] = {SIGTERM, SIGHUP};
  sigset_t blocked;
  sigemptyset(&blocked);
  for (const int number : {SIGCHLD, SIGTERM, SIGHUP, SIGINT, SIGQUIT}) sigaddset(&blocked, number);
  sigprocmask(SIG_BLOCK, &blocked, nullptr);

  const pid_t child = start_command(options.command, options.no_waits);
  if (child < 0) return fail(std::string("cannot start a process: ") + std::strerror(errno));
  return exit_status(server.serve_until_exit(child, kForwarded));
}

int run(int argc, char** argv) {
  CLI::App app("Runs a command among virtual touch panels, with a data directory of its own.\n",
               "zelkora-sim");
  Options options;
  std::vector<Query> queries;
  add_options(app, options);
  add_queries(app, queries);
  app.set_version_flag("--version", "zelkora-sim " ZELKORA_VERSION);
  app.formatter(std::make_shared<HelpFormatter>());
  app.footer("Queries, inside a session. PANEL counts from 0:\n" + query_help() + "\n" +
             panel_help());
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    return fail(std::string(error.what()) + "; see zelkora-sim --help", kExitUsage);
  }
  for (const Query& query : queries) {
    if (query.command->parsed()) return ask(query);
  }
  if (options.command.empty()) {
    return fail("nothing to run: zelkora-sim [OPTIONS] -- COMMAND [ARG...]", kExitUsage);
  }
  return run_session(options);
}

bool is_stand_in(std::string_view program) {
  const auto names = HostCommands::names();
  return std::ranges::find(names, program.substr(program.rfind('/') + 1)) != names.end();
}

// This executable under the name of a command.
int stand_in(std::span<char*> words) {
  std::string name(words[0]);
  name.erase(0, name.rfind('/') + 1);
  words[0] = name.data();
  const Answer answer = run_stand_in(words);
  std::fputs(answer.text.c_str(), answer.status == kExitDone ? stdout : stderr);
  return answer.status;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const std::span words(argv, static_cast<size_t>(argc));
    return is_stand_in(words[0]) ? stand_in(words) : run(argc, argv);
  } catch (const std::exception& error) {
    return fail(error.what());
  }
}
