// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "bench.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

#include "typed_text.h"

namespace zelkora::sim {
namespace {

unsigned number(std::string_view text, unsigned maximum) {
  const auto value = parse_number(text, maximum);
  if (!value) throw std::runtime_error(std::string(text) + " is no number as expected here");
  return *value;
}

uint8_t address(std::string_view text) { return static_cast<uint8_t>(number(text, 0xFF)); }

std::string frames(const ResistiveController& controller) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string text = std::to_string(controller.frames().size());
  for (const auto& frame : controller.frames()) {
    text += ' ';
    for (const uint8_t byte : frame) {
      text += kDigits[byte >> 4];
      text += kDigits[byte & 0xF];
    }
  }
  return text;
}

void set_mode(const std::string& node, mode_t mode) {
  if (chmod(node.c_str(), mode) != 0) throw std::runtime_error(node + ": " + std::strerror(errno));
}

}  // namespace

struct Bench::Panel {
  explicit Panel(const PanelDescription& description) : usb(controller, description.identity) {
    set_up(controller, description);
  }

  ResistiveController controller;
  ResistiveUsb usb;
};

Bench::Bench() = default;
Bench::~Bench() = default;

UsbNodes Bench::plug(const PanelDescription& description) {
  panels_.push_back(std::make_unique<Panel>(description));
  UsbNodes nodes = server_.plug(panels_.back()->usb);
  set_mode(nodes.hiddev, description.hiddev_mode);
  set_mode(nodes.hidraw, description.mode);
  set_mode(nodes.event, description.mode);
  return nodes;
}

std::string Bench::run(std::string_view line) {
  try {
    return dispatch(split(line, ' '));
  } catch (const std::exception& error) {
    return std::string("error: ") + error.what();
  }
}

std::string Bench::dispatch(const std::vector<std::string_view>& words) {
  const auto is = [&](std::string_view name, size_t arguments) {
    return words[0] == name && words.size() == 2 + arguments;
  };
  if (words.size() < 2) throw std::runtime_error("a command and the number of a panel expected");
  const size_t index = number(words[1], 0xFF);
  if (index >= panels_.size()) throw std::runtime_error("there is no such panel");
  ResistiveController& controller = panels_[index]->controller;

  if (is("value", 1)) return std::to_string(controller.value(address(words[2])));
  if (is("permanent", 1)) return std::to_string(controller.permanent_value(address(words[2])));
  if (is("frames", 0)) return frames(controller);
  if (is("set", 2)) {
    controller.set_value(address(words[2]), static_cast<uint16_t>(number(words[3], 0xFFFF)));
  } else if (is("silent", 1) && (words[2] == "on" || words[2] == "off")) {
    controller.faults.silent = words[2] == "on";
  } else if (is("unplug", 0)) {
    server_.unplug(index);
  } else {
    throw std::runtime_error("not understood: " + std::string(words[0]));
  }
  return "ok";
}

}  // namespace zelkora::sim
