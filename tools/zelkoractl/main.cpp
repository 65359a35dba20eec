// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// zelkoractl: lists touch panels, shows and changes their settings.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <csignal>
#include <string>
#include <string_view>
#include <vector>

#include "commands.h"
#include "config.h"
#include "paths.h"
#include "settings.h"

namespace zelkoractl {
namespace {

struct CommandLine {
  bool json = false;
  bool debug = false;
  std::string config_file;
  std::string panel;
  std::string setting;
  std::vector<std::string> assignments;
};

constexpr const char* kExitCodes =
    "Exit status: 0 done, 1 failed, 2 wrong usage or configuration, 3 no such panel, 5 no "
    "permission.\nThe answer goes to standard output, everything else to standard error.";

std::string settings_help() {
  std::vector<std::vector<std::string>> rows;
  for (const Setting& setting : all_settings()) {
    rows.push_back(
        {"  " + std::string(setting.name), range_text(setting), std::string(setting.meaning)});
  }
  return "Settings:\n" + align(rows);
}

void describe(CLI::App& app, CommandLine& line) {
  app.description("Lists touch panels, shows and changes their settings.");
  app.name("zelkoractl");
  app.require_subcommand(1);
  app.footer([] { return config_help() + "\n" + kExitCodes; });
  app.set_version_flag("--version", "zelkoractl " ZELKORACTL_VERSION, "Print the version");
  app.add_flag("--json", line.json, "Answer with one JSON document, errors included")
      ->trigger_on_parse();  // help and version are answers, too
  app.add_flag("--debug", line.debug, "Print the library's trace to standard error");
  app.add_option(
         "--config", line.config_file,
         "Configuration file; without it " + std::string(paths::kConfig) + " when it is there")
      ->type_name("FILE");

  const auto add_command = [&app](const char* name, const char* description) {
    return app.add_subcommand(name, description)->fallthrough();
  };
  const auto add_panel = [&line](CLI::App* command) {
    command->add_option("PANEL", line.panel, "Number of the panel, as listed")
        ->required()
        ->type_name("");
  };
  add_command("list", "List the panels");
  add_panel(add_command("show", "Show a panel and all its settings"));
  CLI::App* get = add_command("get", "Print all settings as name=value, or the value of one");
  add_panel(get);
  get->add_option("SETTING", line.setting, "Name of a setting")->type_name("");
  get->footer(settings_help);
  CLI::App* set = add_command("set", "Change settings, all of them or none, and keep them");
  add_panel(set);
  set->add_option("SETTING=VALUE", line.assignments, "What to change")->required()->type_name("");
  set->footer(settings_help);
}

Answer run_command(const CLI::App& app, const CommandLine& line) {
  const std::string name = app.get_subcommands().front()->get_name();
  if (name == "show") return show_panel(line.panel);
  if (name == "get") return get_settings(line.panel, line.setting);
  if (name == "set") return set_settings(line.panel, line.assignments);
  return list_panels();
}

Answer plain_answer(const char* key, const std::string& text) {
  Answer answer;
  answer.document[key] = text;
  answer.text = text + "\n";
  return answer;
}

std::string command_names(const CLI::App& app) {
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) {
    names.push_back(command->get_name());
  }
  return join(names);
}

// A command line with words that nothing takes, or without a command.
Failure no_command(const CLI::App& app) {
  const std::vector<std::string> rest = app.remaining(true);
  const auto word = std::ranges::find_if(rest, [](const auto& text) { return text != "--"; });
  const std::string remedy = "zelkoractl --help shows what there is";
  if (word == rest.end()) {
    return {ExitCode::kUsage, "a command is missing; the commands are " + command_names(app), "",
            remedy};
  }
  const std::string quoted = "\"" + *word + "\"";
  if (word->starts_with("-")) return {ExitCode::kUsage, quoted + " is no option", "", remedy};
  const std::vector<CLI::App*> commands = app.get_subcommands();
  if (!commands.empty()) {
    return {ExitCode::kUsage, commands.front()->get_name() + " does not take " + quoted, "",
            remedy};
  }
  return {ExitCode::kUsage, quoted + " is no command; the commands are " + command_names(app), "",
          remedy};
}

Answer run(int argc, char** argv, CommandLine& line) {
  CLI::App app;
  describe(app, line);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    return plain_answer("help", app.help());
  } catch (const CLI::CallForVersion&) {
    return plain_answer("version", app.version());
  } catch (const CLI::ParseError& error) {
    // What is behind the error was not parsed, but may ask for JSON, too.
    line.json = line.json || std::ranges::count(argv, argv + argc, std::string_view("--json")) != 0;
    const bool extras = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
    const bool required = dynamic_cast<const CLI::RequiredError*>(&error) != nullptr;
    if (extras || (required && app.get_subcommands().empty())) throw no_command(app);
    throw Failure(ExitCode::kUsage, error.what(), "", "zelkoractl --help shows what there is");
  }
  const bool named = app.count("--config") != 0;
  Config config = read_config(named ? std::optional(line.config_file) : std::nullopt);
  config.debug = config.debug || line.debug;
  use_config(config);
  return run_command(app, line);
}

Answer run_or_explain(int argc, char** argv, CommandLine& line) {
  Answer answer;
  try {
    return run(argc, argv, line);
  } catch (const Failure& failure) {
    answer.failure = failure;
  } catch (const std::exception& error) {
    answer.failure.emplace(ExitCode::kFailed, error.what(), "", "");
  }
  return answer;
}

}  // namespace
}  // namespace zelkoractl

int main(int argc, char** argv) {
  // A reader that went away must not end a change half way.
  std::signal(SIGPIPE, SIG_IGN);
  try {
    zelkoractl::AnswerChannel channel;
    zelkoractl::CommandLine line;
    const zelkoractl::Answer answer = zelkoractl::run_or_explain(argc, argv, line);
    return static_cast<int>(zelkoractl::deliver(answer, line.json, channel));
  } catch (...) {
    return static_cast<int>(zelkoractl::ExitCode::kFailed);  // no memory is left to say so
  }
}
