// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panel_queries.h"

#include <algorithm>
#include <optional>
#include <stdexcept>
#include <variant>

#include "description_key.h"
#include "fault_keys.h"
#include "request_name.h"
#include "typed_text.h"

namespace zelkora::sim {
namespace {

using Words = std::span<const std::string_view>;

Answer usage(std::string text) { return {kExitUsage, std::move(text)}; }

Answer line(std::string text) { return {kExitDone, std::move(text) + "\n"}; }

// --- Resistive panels

std::optional<uint8_t> parse_address(std::string_view word) {
  const auto address = parse_number(word, 0xFF);
  if (!address) return std::nullopt;
  return static_cast<uint8_t>(*address);
}

Answer value(ResistiveController& controller, Words words) {
  const auto address = parse_address(words[0]);
  if (!address) return usage("ADDRESS lies in 0..255");
  return line(std::to_string(controller.value(*address)));
}

Answer permanent(ResistiveController& controller, Words words) {
  const auto address = parse_address(words[0]);
  if (!address) return usage("ADDRESS lies in 0..255");
  return line(std::to_string(controller.permanent_value(*address)));
}

Answer set(ResistiveController& controller, Words words) {
  const auto address = parse_address(words[0]);
  const auto number = parse_number(words[1], 0xFFFF);
  if (!address || !number) return usage("ADDRESS lies in 0..255, VALUE in 0..65535");
  controller.set_value(*address, static_cast<uint16_t>(*number));
  return {};
}

// --- Projected-capacitive panels

std::string hex_digits(uint32_t number, unsigned count) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text;
  for (unsigned shift = 4 * count; shift > 0; shift -= 4) {
    text += kDigits[number >> (shift - 4) & 0xF];
  }
  return text;
}

std::string usb_id_text(uint16_t vendor, uint16_t product) {
  return hex_digits(vendor, 4) + ":" + hex_digits(product, 4);
}

Answer pos_mode(PctController& controller, Words) {
  return line(std::to_string(controller.pos_mode()));
}

Answer set_pos_mode(PctController& controller, Words words) {
  const auto mode = parse_number(words[0], PctController::kPosModeCount);
  if (!mode || *mode == 0) return usage("MODE lies in 1..4");
  controller.set_pos_mode(*mode);
  return {};
}

Answer pos_config(PctController& controller, Words) {
  return line(hex_bytes(controller.pos_config()));
}

Answer set_pos_config(PctController& controller, Words words) {
  PctController::PosConfig bytes{};
  if (!parse_bytes(words[0], bytes)) {
    return usage("BYTES are 4 bytes in hexadecimal, without blanks: 00000000..FFFFFFFF");
  }
  controller.set_pos_config(bytes);
  return {};
}

Answer device_mode(PctController& controller, Words) {
  return line(controller.device_mode() == PctController::kCommandMode ? "command" : "normal");
}

Answer flash(PctController& controller, Words) { return line(hex_bytes(controller.flash())); }

Answer set_flash(PctController& controller, Words words) {
  PctController::Flash bytes{};
  if (!parse_bytes(words[0], bytes)) {
    return usage("BYTES are 34 bytes in hexadecimal, without blanks: the block and its checksum");
  }
  controller.set_flash(bytes);
  return {};
}

Answer stored_usb_id(PctController& controller, Words) {
  return line(usb_id_text(controller.stored_vendor(), controller.stored_product()));
}

Answer firmware(PctController& controller, Words) {
  return line(hex_digits(controller.firmware(), 8));
}

Answer set_firmware(PctController& controller, Words words) {
  const auto word = parse_digits(words[0], 16, UINT32_MAX);
  if (!word || words[0].size() != 8 || PctController::family_of(*word) != controller.family()) {
    return usage("WORD is eight hexadecimal digits, the first one 3 for pct8752 alone");
  }
  controller.set_firmware(*word);
  return {};
}

// --- Panels on a serial port

Answer line_settings(ResistiveSerial& port, Words) {
  return line(port.settings() ? describe(*port.settings()) : "untouched");
}

// --- Panels of every kind

Answer usb_id(HidDevice& panel, Words) {
  const UsbIdentity& identity = panel.identity();
  return line(usb_id_text(identity.vendor, identity.product));
}

Answer resets(VirtualPanel& panel, Words) {
  const auto count = panel.pct() ? panel.pct()->resets() : panel.resistive()->resets();
  return line(std::to_string(count));
}

// The zeros that fill a report up are left out.
Answer frames(VirtualPanel& panel, Words) {
  Answer answer{.is_list = true};
  for (std::span<const uint8_t> frame :
       panel.pct() ? panel.pct()->commands() : panel.resistive()->frames()) {
    while (panel.pct() && frame.size() > 1 && frame.back() == 0) {
      frame = frame.first(frame.size() - 1);
    }
    answer.text += hex_bytes(frame) + "\n";
  }
  return answer;
}

Answer silent(VirtualPanel& panel, Words words) {
  if (words[0] != "on" && words[0] != "off") return usage("silent PANEL is followed by on or off");
  bool& fault = panel.pct() ? panel.pct()->faults.silent : panel.resistive()->faults.silent;
  fault = words[0] == "on";
  return {};
}

Answer fault(VirtualPanel& panel, Words words) {
  auto problem = panel.pct() ? apply_fault(words[0], panel.pct()->faults)
                             : apply_fault(words[0], panel.resistive()->faults);
  if (!problem && panel.serial()) {
    problem = apply_serial_fault(words[0], panel.resistive()->faults);
  }
  if (!problem && panel.usb()) problem = apply_fault(words[0], panel.usb()->usb_faults);
  if (!problem) return usage(quoted(words[0]) + " is no fault of a panel of this kind");
  return problem->empty() ? Answer() : usage(*problem);
}

// --- The commands around them

Answer commands(HostCommands& commands, Words) {
  Answer answer{.is_list = true};
  for (const std::string& command : commands.record()) answer.text += command + "\n";
  return answer;
}

Answer command_fails(HostCommands& commands, Words words) {
  const auto status = parse_number(words[1], 0xFF);
  if (!status) return usage("STATUS lies in 0..255");
  if (commands.fail(words[0], static_cast<int>(*status))) return {};
  std::string names;
  for (const auto name : HostCommands::names()) names.append(" ").append(name);
  return usage("NAME is one of" + names);
}

// --- All panels

Answer unplug(PluggedPanels& panels, size_t number) {
  if (panels.unplug(number)) return {};
  return {kExitFailed, "panel " + std::to_string(number) + " is unplugged already"};
}

Answer plug(PluggedPanels& panels, size_t number) {
  try {
    if (const auto nodes = panels.plug(number)) return line(plugged_line(number, *nodes));
  } catch (const std::runtime_error& error) {
    return {kExitFailed, error.what()};
  }
  return {kExitFailed, "panel " + std::to_string(number) + " is plugged in already"};
}

// What a query needs: most of them a panel, of some kind.
using Run = std::variant<Answer (*)(ResistiveController&, Words), Answer (*)(PctController&, Words),
                         Answer (*)(HidDevice&, Words), Answer (*)(ResistiveSerial&, Words),
                         Answer (*)(VirtualPanel&, Words), Answer (*)(PluggedPanels&, size_t),
                         Answer (*)(HostCommands&, Words)>;

struct Row {
  QueryUsage usage;
  Run run;
};

constexpr Row kRows[] = {
    {{"value", "PANEL ADDRESS", "Print a 16-bit value of a resistive panel, decimal"}, value},
    {{"permanent", "PANEL ADDRESS", "Print the value that a reset brings back"}, permanent},
    {{"set", "PANEL ADDRESS VALUE", "Change a value of a resistive panel"}, set},
    {{"pos-mode", "PANEL", "Print the POS mode of a PCT panel, 1..4"}, pos_mode},
    {{"set-pos-mode", "PANEL MODE", "Change the POS mode"}, set_pos_mode},
    {{"pos-config", "PANEL", "Print the POS configuration of a PCT panel, 4 bytes"}, pos_config},
    {{"set-pos-config", "PANEL BYTES", "Change it: 4 bytes, hexadecimal, no blanks"},
     set_pos_config},
    {{"device-mode", "PANEL", "Print the mode of a PCT panel: normal or command"}, device_mode},
    {{"flash", "PANEL", "Print the flash of a PCT panel: a block and its checksum"}, flash},
    {{"set-flash", "PANEL BYTES", "Change it: 34 bytes, hexadecimal, no blanks"}, set_flash},
    {{"stored-usb-id", "PANEL", "Print the USB id that a reset gives a PCT panel"}, stored_usb_id},
    {{"firmware", "PANEL", "Print the firmware's identity word of a PCT panel"}, firmware},
    {{"set-firmware", "PANEL WORD", "Change it, as an update does"}, set_firmware},
    {{"usb-id", "PANEL", "Print the USB id of a panel on USB"}, usb_id},
    {{"line-settings", "PANEL", "Print how a host has set up the port of a serial panel"},
     line_settings},
    {{"resets", "PANEL", "Print how often a host has reset a panel"}, resets},
    {{"frames", "PANEL", "Print the command frames or reports so far, hexadecimal"}, frames},
    {{"silent", "PANEL on|off", "Have a panel ignore commands, or not"}, silent},
    {{"fault", "PANEL FAULT", "Give a panel a fault of its kind: KEY, KEY=VALUE or KEY=off"},
     fault},
    {{"unplug", "PANEL", "Take a panel away"}, unplug},
    {{"plug", "PANEL", "Put it back, into another USB port, and print its nodes"}, plug},
    {{"commands", "", "Print the commands run so far: dmesg, killall, pgrep, pidof, systemctl"},
     commands},
    {{"command-fails", "NAME STATUS", "Have one of them do nothing and end with STATUS; 0: undo"},
     command_fails},
};

// A query that runs into a panel of another kind.
Answer other_kind(std::string_view query, std::string_view wanted, const VirtualPanel& panel) {
  return usage(quoted(query) + " is a query to " + std::string(wanted) +
               " panels, and this one is of kind " + std::string(panel.kind()));
}

// Puts a query to a panel, with the words behind the number of the panel.
struct Ask {
  std::string_view query;
  PluggedPanels& panels;
  size_t number;
  Words words;

  Answer operator()(Answer (*run)(ResistiveController&, Words)) const {
    VirtualPanel& panel = panels.panel(number);
    return panel.resistive() ? run(*panel.resistive(), words)
                             : other_kind(query, "resistive", panel);
  }
  Answer operator()(Answer (*run)(PctController&, Words)) const {
    VirtualPanel& panel = panels.panel(number);
    return panel.pct() ? run(*panel.pct(), words) : other_kind(query, "PCT", panel);
  }
  Answer operator()(Answer (*run)(HidDevice&, Words)) const {
    VirtualPanel& panel = panels.panel(number);
    return panel.usb() ? run(*panel.usb(), words) : other_kind(query, "USB", panel);
  }
  Answer operator()(Answer (*run)(ResistiveSerial&, Words)) const {
    VirtualPanel& panel = panels.panel(number);
    return panel.serial() ? run(*panel.serial(), words) : other_kind(query, "serial", panel);
  }
  Answer operator()(Answer (*run)(VirtualPanel&, Words)) const {
    return run(panels.panel(number), words);
  }
  Answer operator()(Answer (*run)(PluggedPanels&, size_t)) const { return run(panels, number); }
  Answer operator()(Answer (*run)(HostCommands&, Words)) const {
    HostCommands* commands = panels.commands();
    return commands ? run(*commands, words) : usage("the commands here are the machine's own");
  }
};

bool names_panel(const QueryUsage& usage) { return usage.arguments.starts_with("PANEL"); }

}  // namespace

std::vector<std::string_view> QueryUsage::argument_names() const {
  return arguments.empty() ? std::vector<std::string_view>() : split(arguments, ' ');
}

std::vector<QueryUsage> query_usages() {
  std::vector<QueryUsage> usages;
  for (const Row& row : kRows) usages.push_back(row.usage);
  return usages;
}

std::string query_help() {
  std::string text;
  for (const auto& [name, arguments, help] : query_usages()) {
    append_help_line(text, std::string(name) + " " + std::string(arguments), help);
  }
  return text;
}

std::string plugged_line(size_t number, std::span<const std::string> nodes) {
  std::string text = "plugged " + std::to_string(number);
  for (const std::string& node : nodes) text.append(" ").append(node.empty() ? "-" : node);
  return text;
}

Answer answer_query(PluggedPanels& panels, std::string_view text) {
  const std::vector<std::string_view> words = split(text, ' ');
  const auto* row = std::ranges::find(kRows, words[0], [](const Row& r) { return r.usage.name; });
  if (row == std::end(kRows)) return usage("unknown query " + quoted(words[0]));
  if (words.size() != 1 + row->usage.argument_names().size()) {
    const bool alone = row->usage.arguments.empty();
    return usage(std::string(row->usage.name) + " is followed by " +
                 (alone ? "nothing" : std::string(row->usage.arguments)));
  }
  if (!names_panel(row->usage)) {
    return std::visit(Ask{words[0], panels, 0, Words(words).subspan(1)}, row->run);
  }
  const auto number = parse_number(words[1], UINT16_MAX);
  if (!number) return usage("PANEL is a number, counted from 0");
  if (*number >= panels.size()) {
    return {kExitNotFound, "there is no panel " + std::to_string(*number) + "; the session has " +
                               std::to_string(panels.size()) + ", counted from 0"};
  }
  return std::visit(Ask{words[0], panels, *number, Words(words).subspan(2)}, row->run);
}

}  // namespace zelkora::sim
