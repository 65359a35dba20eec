// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panel_description.h"

#include "description_key.h"
#include "fault_keys.h"
#include "typed_text.h"

namespace zelkora::sim {
namespace {

using View = std::string_view;

constexpr View kWordKey = "word";
constexpr uint8_t kBeepAddress = 86;

// What a kind of panel is when it is delivered.
struct Kind {
  View name;
  View help;
  PanelDescription (*make)();
};

PanelDescription make_pct(uint32_t firmware, uint16_t product) {
  return {.identity = {0x2575, product, "Zelkora", "Virtual PCT"},
          .controller = PctDescription{.firmware = firmware}};
}

constexpr Kind kKinds[] = {
    {"resistive", "3A4C:1688, Zelkora Virtual Resistive, firmware V1.2",
     [] { return PanelDescription{}; }},
    {"pct8752", "2575:8752, Zelkora Virtual PCT, firmware 30811234",
     [] { return make_pct(PctController::kFirmware8752, 0x8752); }},
    {"pct8753", "2575:8753, Zelkora Virtual PCT, firmware 87530190",
     [] { return make_pct(PctController::kFirmware8753, 0x8753); }},
    {"serial", "a resistive panel on a serial port, firmware V1.2",
     [] { return PanelDescription{.controller = SerialDescription{}}; }},
};

std::string kind_names() {
  std::string names;
  for (const Kind& kind : kKinds) names.append(names.empty() ? "" : ", ").append(kind.name);
  return names;
}

bool set_mode(mode_t& mode, View value) {
  const auto number = parse_digits(value, 8, 0777);
  if (number) mode = *number;
  return number.has_value();
}

bool set_id(PanelDescription& panel, View value) {
  const auto halves = split(value, ':');
  if (halves.size() != 2) return false;
  const auto vendor = parse_digits(halves[0], 16, 0xFFFF);
  const auto product = parse_digits(halves[1], 16, 0xFFFF);
  if (!vendor || !product) return false;
  panel.identity.vendor = static_cast<uint16_t>(*vendor);
  panel.identity.product = static_cast<uint16_t>(*product);
  return true;
}

bool set_nodes(PanelDescription& panel, View value) {
  panel.on_hiddev = value == "hiddev" || value == "both";
  panel.on_hidraw = value == "hidraw" || value == "both";
  return panel.on_hiddev || panel.on_hidraw;
}

constexpr Key<PanelDescription> kPanelKeys[] = {
    {"mode", "MODE", "octal, 000..777", "permissions of all its nodes, octal (0600)",
     [](PanelDescription& panel, View value) {
       return set_mode(panel.mode, value) && set_mode(panel.hiddev_mode, value);
     }},
};

constexpr Key<PanelDescription> kUsbKeys[] = {
    {"id", "VVVV:PPPP", "hexadecimal", "USB vendor and product, hexadecimal", set_id},
    {"maker", "TEXT", "any text", "manufacturer, may be empty",
     [](PanelDescription& panel, View value) {
       panel.identity.manufacturer = value;
       return true;
     }},
    {"name", "TEXT", "any text", "product name, may be empty",
     [](PanelDescription& panel, View value) {
       panel.identity.product_name = value;
       return true;
     }},
    {"nodes", "NODES", "one of hiddev, hidraw and both",
     "the nodes it has: hiddev, hidraw or both (both)", set_nodes},
    {"pen", "", "", "has a pen on a second USB interface, with the next free node numbers",
     [](PanelDescription& panel, View) { return panel.has_pen = true; }},
    {"hiddev-mode", "MODE", "octal, 000..777", "permissions of the hiddev node, octal (0600)",
     [](PanelDescription& panel, View value) { return set_mode(panel.hiddev_mode, value); }},
};

bool set_word(ResistiveDescription& panel, unsigned address, View value) {
  const auto number = parse_number(value, 0xFFFF);
  if (!number) return false;
  panel.words.emplace_back(static_cast<uint8_t>(address), static_cast<uint16_t>(*number));
  return true;
}

constexpr Key<ResistiveDescription> kResistiveKeys[] = {
    {"firmware", "TEXT", "any text", "firmware version, may be empty",
     [](ResistiveDescription& panel, View value) {
       panel.firmware = value;
       return true;
     }},
    {"beep", "VALUE", "0..65535", "the same as word86",
     [](ResistiveDescription& panel, View value) { return set_word(panel, kBeepAddress, value); }},
    {"signed-fields", "", "", "describes its report's bytes as signed, on USB",
     [](ResistiveDescription& panel, View) { return panel.signed_fields = true; }},
};

bool set_port(SerialDescription& panel, View value) {
  for (const View prefix : {View("ttyS"), View("ttyUSB")}) {
    if (!value.starts_with(prefix)) continue;
    const View number = value.substr(prefix.size());
    if (!parse_digits(number, 10, 255) || (number.size() > 1 && number[0] == '0')) continue;
    panel.port = value;
    return true;
  }
  return false;
}

constexpr Key<SerialDescription> kSerialKeys[] = {
    {"port", "NAME", "ttyS0..ttyS255 or ttyUSB0..ttyUSB255",
     "its node below /dev, as ttyS0 or ttyUSB0 (the first free ttyS)", set_port},
    {"new-generation", "", "", "answers for itself as newer controllers do",
     [](SerialDescription& panel, View) { return panel.new_generation = true; }},
};

bool set_firmware(PctDescription& panel, View value) {
  const auto word = parse_digits(value, 16, UINT32_MAX);
  if (!word || value.size() != 8) return false;
  if (PctController::family_of(*word) != PctController::family_of(panel.firmware)) return false;
  panel.firmware = *word;
  return true;
}

bool set_serial_number(PctDescription& panel, View value) {
  std::array<uint8_t, 8> number;
  if (!parse_bytes(value, number)) return false;
  panel.serial_number = number;
  return true;
}

bool set_pos_mode(PctDescription& panel, View value) {
  const auto number = parse_number(value, PctController::kPosModeCount);
  if (!number || *number == 0) return false;
  panel.pos_mode = *number;
  return true;
}

constexpr Key<PctDescription> kPctKeys[] = {
    {"firmware", "HHHHHHHH", "eight hexadecimal digits, the first one 3 for pct8752 alone",
     "identity word, hexadecimal; begins with 3 for pct8752 alone", set_firmware},
    {"sn", "HHHHHHHHHHHHHHHH", "sixteen hexadecimal digits",
     "serial number in the flash (without: the flash is blank)", set_serial_number},
    {"pos", "MODE", "1..4", "1 digitizer (as delivered), 2 mouse, 3 and 4 hybrid", set_pos_mode},
};

// The pieces between commas; a comma in double quotes separates nothing, the quotes go.
bool split_quoted(View text, std::vector<std::string>& pieces) {
  bool quoted = false;
  pieces.emplace_back();
  for (const char character : text) {
    if (character == '"') {
      quoted = !quoted;
    } else if (character == ',' && !quoted) {
      pieces.emplace_back();
    } else {
      pieces.back() += character;
    }
  }
  return !quoted;
}

std::optional<std::string> apply_own_piece(View piece, ResistiveDescription& panel) {
  if (auto problem = apply_key(kResistiveKeys, piece, panel)) return problem;
  if (auto problem = apply_fault(piece, panel.faults)) return problem;
  if (!piece.starts_with(kWordKey)) return std::nullopt;
  const size_t equals = std::min(piece.find('='), piece.size());
  const auto address = parse_number(piece.substr(0, equals).substr(kWordKey.size()), 0xFF);
  const View value = piece.substr(std::min(equals + 1, piece.size()));
  if (address && set_word(panel, *address, value)) return std::string();
  return quoted(piece) + ": expected word0=0 to word255=65535";
}

std::optional<std::string> apply_own_piece(View piece, SerialDescription& panel) {
  if (auto problem = apply_key(kSerialKeys, piece, panel)) return problem;
  if (auto problem = apply_serial_fault(piece, panel.faults)) return problem;
  return apply_own_piece(piece, static_cast<ResistiveDescription&>(panel));
}

std::optional<std::string> apply_own_piece(View piece, PctDescription& panel) {
  if (auto problem = apply_key(kPctKeys, piece, panel)) return problem;
  return apply_fault(piece, panel.faults);
}

std::string apply_piece(View piece, View kind, PanelDescription& panel) {
  if (auto problem = apply_key(kPanelKeys, piece, panel)) return *problem;
  if (!is_serial(panel)) {
    if (auto problem = apply_key(kUsbKeys, piece, panel)) return *problem;
    if (auto problem = apply_fault(piece, panel.usb_faults)) return *problem;
  }
  const auto problem =
      std::visit([&](auto& own) { return apply_own_piece(piece, own); }, panel.controller);
  if (problem) return *problem;
  return "unknown key " + quoted(piece.substr(0, piece.find('='))) + " of a panel of kind " +
         std::string(kind) + "; zelkora-sim --help lists them";
}

}  // namespace

std::string parse_panel(std::string_view text, PanelDescription& panel) {
  std::vector<std::string> pieces;
  if (!split_quoted(text, pieces)) return "a double quote is not closed";
  const auto* kind = std::ranges::find(kKinds, View(pieces.front()), &Kind::name);
  if (kind == std::end(kKinds)) {
    return quoted(pieces.front()) + " is no kind of panel; known: " + kind_names();
  }
  panel = kind->make();
  for (size_t i = 1; i < pieces.size(); ++i) {
    std::string problem = apply_piece(pieces[i], kind->name, panel);
    if (!problem.empty()) return problem;
  }
  return {};
}

std::string panel_help() {
  std::string text = "DESCRIPTION is a kind of panel, and keys behind commas:\n";
  for (const Kind& kind : kKinds) append_help_line(text, std::string(kind.name), kind.help);
  text += "Keys of every panel:\n";
  append_help(text, kPanelKeys);
  text += "Keys of every panel on USB:\n";
  append_help(text, kUsbKeys);
  append_usb_fault_help(text);
  text += "Keys of resistive panels, serial ones included:\n";
  append_help(text, kResistiveKeys);
  append_help_line(text, "wordADDRESS=VALUE", "the 16-bit value stored at ADDRESS, 0..255");
  append_resistive_fault_help(text);
  text += "Keys of serial panels:\n";
  append_help(text, kSerialKeys);
  append_serial_fault_help(text);
  text += "Keys of pct8752 and pct8753 panels:\n";
  append_help(text, kPctKeys);
  append_pct_fault_help(text);
  return text;
}

}  // namespace zelkora::sim
