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
#include "eeprom_commands.h"
#include "paths.h"
#include "pct_settings.h"
#include "resistive_settings.h"
#include "serial_commands.h"

namespace zelkoractl {
namespace {

struct CommandLine {
  bool json = false;
  bool debug = false;
  std::string config_file;
  std::string panel;
  std::string setting;
  std::string mode;
  std::string file;
  std::vector<std::string> assignments;
};

constexpr const char* kExitCodes =
    "Exit status: 0 done, 1 failed, 2 wrong usage or configuration, 3 no such panel, 5 no "
    "permission.\nThe answer goes to standard output, everything else to standard error.";

std::string settings_help() {
  return "Settings of resistive panels:\n" + align(help_rows(resistive_settings())) +
         "Settings of projected-capacitive panels:\n" + align(help_rows(pct_settings()));
}

using Run = Answer (*)(const CommandLine& line);

struct Command {
  const char* name;
  const char* description;
  bool has_panel;
  Run run;
  void (*add_more)(CLI::App& command, CommandLine& line) = nullptr;
  std::string_view group = {};  // the command that this one belongs to, such as eeprom
};

struct Group {
  const char* name;
  const char* description;
};

void add_setting(CLI::App& command, CommandLine& line) {
  command.add_option("SETTING", line.setting, "Name of a setting")->type_name("");
  command.footer(settings_help);
}

void add_assignments(CLI::App& command, CommandLine& line) {
  command.add_option("SETTING=VALUE", line.assignments, "What to change")
      ->required()
      ->type_name("");
  command.footer(settings_help() +
                 "On a projected-capacitive panel the first change saves the settings there were: "
                 "revert goes back to them.");
}

void add_mode(CLI::App& command, CommandLine& line) {
  command.add_option("MODE", line.mode, "digitizer, mouse or hybrid")->required()->type_name("");
  command.footer(
      "The panel is reset when its mode changes, and may come back with another number "
      "and product id.");
}

void add_file(CLI::App& command, CommandLine& line) {
  command.add_option("FILE", line.file, "Image file")->required()->type_name("");
}

constexpr Group kGroups[] = {
    {"eeprom", "Save, compare and restore the whole EEPROM of a resistive panel"},
    {"serial", "Find panels on serial ports, and attach them"},
};

// clang-format off
constexpr Command kCommands[] = {
    {"list", "List the panels", false, [](const CommandLine&) { return list_panels(); }},
    {"show", "Show a panel and all its settings", true,
     [](const CommandLine& line) { return show_panel(line.panel); }},
    {"get", "Print all settings as name=value, or the value of one", true,
     [](const CommandLine& line) { return get_settings(line.panel, line.setting); }, add_setting},
    {"set", "Change settings for good, all of them or none", true,
     [](const CommandLine& line) { return set_settings(line.panel, line.assignments); },
     add_assignments},
    {"defaults", "Give all settings the values of the defaults file", true,
     [](const CommandLine& line) { return apply_defaults(line.panel); }},
    {"keep", "Make the settings of now those that revert goes back to",
     true, [](const CommandLine& line) { return keep_settings(line.panel); }},
    {"revert",
     "Give a panel the settings again that it had at the last keep; a projected-capacitive one "
     "without it those before the first set or defaults",
     true, [](const CommandLine& line) { return revert_settings(line.panel); }},
    {"mode", "Make a projected-capacitive panel a digitizer, a mouse or a hybrid of both", true,
     [](const CommandLine& line) { return set_mode(line.panel, line.mode); }, add_mode},
    {"reset", "Reset the controller of a panel", true,
     [](const CommandLine& line) { return reset_panel(line.panel); }},
    {"serial-number", "Print the serial number of a projected-capacitive panel", true,
     [](const CommandLine& line) { return show_serial_number(line.panel); }},
    {"backup", "Save the EEPROM in a file", true,
     [](const CommandLine& line) { return back_up_eeprom(line.panel, line.file); }, add_file,
     "eeprom"},
    {"verify", "Compare the EEPROM with a file, byte by byte", true,
     [](const CommandLine& line) { return verify_eeprom(line.panel, line.file); }, add_file,
     "eeprom"},
    {"diff", "Show what differs between a file and the EEPROM", true,
     [](const CommandLine& line) { return diff_eeprom(line.panel, line.file); }, add_file,
     "eeprom"},
    {"restore", "Write a file into the EEPROM; what it held is saved in FILE.before", true,
     [](const CommandLine& line) { return restore_eeprom(line.panel, line.file); }, add_file,
     "eeprom"},
    {"list", "List what the last refresh found", false,
     [](const CommandLine&) { return list_serial(); }, nullptr, "serial"},
    {"refresh", "Search all serial ports anew, and list the panels", false,
     [](const CommandLine&) { return refresh_serial(); }, nullptr, "serial"},
    {"enable", "Start the attach daemon of a panel", true,
     [](const CommandLine& line) { return enable_serial(line.panel); }, nullptr, "serial"},
    {"disable", "Stop the attach daemon of a panel", true,
     [](const CommandLine& line) { return disable_serial(line.panel); }, nullptr, "serial"},
    {"screens", "List the lit screens, as the setting screen counts them", false,
     [](const CommandLine&) { return list_screens(); }},
};
// clang-format on

void add_commands(CLI::App& parent, CommandLine& line, std::string_view group) {
  for (const Command& command : kCommands) {
    if (command.group != group) continue;
    CLI::App* added = parent.add_subcommand(command.name, command.description)->fallthrough();
    if (command.has_panel) {
      added->add_option("PANEL", line.panel, "Number of the panel, as listed")
          ->required()
          ->type_name("");
    }
    if (command.add_more != nullptr) command.add_more(*added, line);
  }
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

  add_commands(app, line, "");
  for (const Group& group : kGroups) {
    CLI::App* added = app.add_subcommand(group.name, group.description)->fallthrough();
    add_commands(*added->require_subcommand(1), line, group.name);
  }
}

Answer run_command(const CLI::App& app, const CommandLine& line) {
  const CLI::App* command = app.get_subcommands().front();
  const std::vector<CLI::App*> inner = command->get_subcommands();
  const std::string group = inner.empty() ? "" : command->get_name();
  const std::string name = inner.empty() ? command->get_name() : inner.front()->get_name();
  return std::ranges::find_if(
             kCommands, [&](const Command& row) { return row.group == group && row.name == name; })
      ->run(line);
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
