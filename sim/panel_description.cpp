// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panel_description.h"

#include <algorithm>

#include "typed_text.h"

namespace zelkora::sim {
namespace {

constexpr std::string_view kKind = "resistive";
constexpr std::string_view kWordKey = "word";
constexpr uint8_t kBeepAddress = 86;

bool set_word(PanelDescription& panel, unsigned address, std::string_view value) {
  const auto number = parse_number(value, 0xFFFF);
  if (!number) return false;
  panel.words.emplace_back(static_cast<uint8_t>(address), static_cast<uint16_t>(*number));
  return true;
}

bool set_count(unsigned& count, std::string_view value) {
  const auto number = parse_number(value, 1'000'000);
  if (number) count = *number;
  return number.has_value();
}

bool set_text(std::string& text, std::string_view value) {
  text = value;
  return !value.empty();
}

bool set_mode(mode_t& mode, std::string_view value) {
  const auto number = parse_digits(value, 8, 0777);
  if (number) mode = *number;
  return number.has_value();
}

bool set_id(PanelDescription& panel, std::string_view value) {
  const auto halves = split(value, ':');
  if (halves.size() != 2) return false;
  const auto vendor = parse_digits(halves[0], 16, 0xFFFF);
  const auto product = parse_digits(halves[1], 16, 0xFFFF);
  if (!vendor || !product) return false;
  panel.identity.vendor = static_cast<uint16_t>(*vendor);
  panel.identity.product = static_cast<uint16_t>(*product);
  return true;
}

bool set_stored(PanelDescription& panel, std::string_view value) {
  const auto number = parse_number(value, 0xFFFF);
  if (number) panel.faults.stores = static_cast<uint16_t>(*number);
  return number.has_value();
}

struct Key {
  std::string_view name;
  std::string_view value;  // how the value looks; empty: the key takes none
  std::string_view help;
  bool (*apply)(PanelDescription& panel, std::string_view value);
};

using View = std::string_view;
constexpr Key kKeys[] = {
    {"id", "VVVV:PPPP", "USB vendor and product, hexadecimal (3A4C:1688)", set_id},
    {"maker", "TEXT", "manufacturer (Zelkora)",
     [](PanelDescription& panel, View value) {
       return set_text(panel.identity.manufacturer, value);
     }},
    {"name", "TEXT", "product name (Virtual Resistive)",
     [](PanelDescription& panel, View value) {
       return set_text(panel.identity.product_name, value);
     }},
    {"firmware", "TEXT", "firmware version, may be empty (V1.2)",
     [](PanelDescription& panel, View value) {
       panel.firmware = value;
       return true;
     }},
    {"beep", "VALUE", "the same as word86",
     [](PanelDescription& panel, View value) { return set_word(panel, kBeepAddress, value); }},
    {"hiddev-mode", "MODE", "permissions of the hiddev node, octal (0600)",
     [](PanelDescription& panel, View value) { return set_mode(panel.hiddev_mode, value); }},
    {"mode", "MODE", "permissions of all its nodes, octal (0600)",
     [](PanelDescription& panel, View value) {
       return set_mode(panel.mode, value) && set_mode(panel.hiddev_mode, value);
     }},
    {"silent", "", "answers no command",
     [](PanelDescription& panel, View) { return panel.faults.silent = true; }},
    {"silent-commands", "COUNT", "does not answer the first COUNT commands",
     [](PanelDescription& panel, View value) {
       return set_count(panel.faults.silent_commands, value);
     }},
    {"bad-acknowledges", "COUNT", "refuses the first COUNT commands that change something",
     [](PanelDescription& panel, View value) {
       return set_count(panel.faults.bad_acknowledges, value);
     }},
    {"wrong-echoes", "COUNT", "answers the first COUNT page reads with another page number",
     [](PanelDescription& panel, View value) {
       return set_count(panel.faults.wrong_echoes, value);
     }},
    {"stores", "VALUE", "stores VALUE whatever is written", set_stored},
};

std::string quoted(std::string_view text) { return std::string("'").append(text).append("'"); }

// The pieces between commas; a comma in double quotes separates nothing, the quotes go.
bool split_quoted(std::string_view text, std::vector<std::string>& pieces) {
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

std::string apply_piece(std::string_view piece, PanelDescription& panel) {
  const size_t equals = piece.find('=');
  const std::string name(piece.substr(0, equals));
  const bool has_value = equals != std::string_view::npos;
  const std::string_view value = has_value ? piece.substr(equals + 1) : std::string_view();

  const auto* key = std::ranges::find(kKeys, name, &Key::name);
  if (key != std::end(kKeys)) {
    if (has_value == key->value.empty()) {
      return quoted(name) + (has_value ? " takes no value" : " needs a value");
    }
    if (key->apply(panel, value)) return {};
    return quoted(value) + " is no value for " + quoted(name) + ": expected " +
           std::string(key->value);
  }
  if (name.starts_with(kWordKey)) {
    const auto address = parse_number(std::string_view(name).substr(kWordKey.size()), 0xFF);
    if (address && set_word(panel, *address, value)) return {};
    return quoted(piece) + ": expected word0=0 to word255=65535";
  }
  return "unknown key " + quoted(name) + "; zelkora-sim --help lists them";
}

}  // namespace

std::string parse_panel(std::string_view text, PanelDescription& panel) {
  std::vector<std::string> pieces;
  if (!split_quoted(text, pieces)) return "a double quote is not closed";
  if (pieces.front() != kKind) {
    return quoted(pieces.front()) + " is no kind of panel; known: " + std::string(kKind);
  }
  for (size_t i = 1; i < pieces.size(); ++i) {
    std::string problem = apply_piece(pieces[i], panel);
    if (!problem.empty()) return problem;
  }
  return {};
}

void set_up(ResistiveController& controller, const PanelDescription& panel) {
  controller.set_firmware(panel.firmware);
  controller.faults = panel.faults;
  for (const auto& [address, value] : panel.words) controller.set_stored_value(address, value);
}

std::string panel_help() {
  std::string text = "DESCRIPTION is the kind of panel, resistive, and keys behind commas:\n";
  const auto add_line = [&text](std::string usage, std::string_view help) {
    usage.resize(std::max<size_t>(usage.size() + 1, 24), ' ');
    text.append("  ").append(usage).append(help).append("\n");
  };
  for (const Key& key : kKeys) {
    std::string usage(key.name);
    if (!key.value.empty()) usage.append("=").append(key.value);
    add_line(usage, key.help);
  }
  add_line("wordADDRESS=VALUE", "the 16-bit value stored at ADDRESS, 0..255");
  return text;
}

}  // namespace zelkora::sim
