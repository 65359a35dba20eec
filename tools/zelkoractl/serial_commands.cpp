// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "serial_commands.h"

#include <unistd.h>
#include <zelkora.h>

#include <cstring>
#include <filesystem>

#include "commands.h"
#include "config.h"
#include "panels.h"
#include "paths.h"
#include "signals_held.h"

namespace zelkoractl {
namespace {

std::string text_of(const char* field, size_t size) { return {field, strnlen(field, size)}; }

std::string port_of(const SerialPanelSlot& slot) { return text_of(slot.Name, sizeof slot.Name); }

// The library writes unit files into the current directory. Returns which one that is.
std::string enter_unit_directory() {
  if (geteuid() == 0 && chdir(paths::kUnits) == 0) return paths::kUnits;
  std::error_code error;
  return std::filesystem::current_path(error).string();
}

// The library starts the daemons before it writes their units, so the first start of a panel that
// the machine has not seen before failed.
void start_daemons() {
  int index = 0;
  for (const TouchDeviceEntry& entry : TouchDevice) {
    if (entry.Type != ZELKORA_TYPE_RESISTIVE_SERIAL) continue;
    if (GetPid(index + 1) == 0) EnableRS232(index, text_of(entry.Name, sizeof entry.Name).c_str());
    ++index;
  }
}

struct SerialPanel {
  Panel panel;
  int slot;  // in the list, from 0; its daemon has the same number
  std::string port;
};

SerialPanel find_serial_panel(const std::string& name) {
  const Panel panel = find_panel(name);
  GetSerDevInfo();
  for (int slot = 0; slot < ZELKORA_MAX_SERIAL; ++slot) {
    const std::string port = port_of(cMySerInfo[slot]);
    if (panel.type != ZELKORA_TYPE_RESISTIVE_SERIAL || port.empty()) continue;
    if (panel.node == std::string(paths::kDev) + "/" + port) return {panel, slot, port};
  }
  throw Failure(ExitCode::kFailed, call(panel) + " is on no serial port: it needs no daemon",
                panel.node, "name a serial panel");
}

Answer daemon_answer(const SerialPanel& serial, bool wanted, bool done) {
  Answer answer;
  answer.document = {{"panel", serial.panel.index}, {"node", serial.panel.node}};
  answer.document["enabled"] = done == wanted;
  if (done) {
    answer.text = call(serial.panel) + (wanted ? " is attached\n" : " is detached\n");
  } else {
    answer.failure.emplace(
        ExitCode::kFailed,
        "the attach daemon of " + call(serial.panel) + " did not " + (wanted ? "start" : "stop"),
        serial.panel.node, "try again with the rights of root");
  }
  return answer;
}

}  // namespace

Answer list_serial() {
  GetSerDevInfo();
  Answer answer;
  answer.document["ports"] = Json::array();
  std::vector<std::vector<std::string>> rows = {{"NUMBER", "PORT", "FIRMWARE"}};
  for (int slot = 0; slot < ZELKORA_MAX_SERIAL; ++slot) {
    const std::string port = port_of(cMySerInfo[slot]);
    if (port.empty()) continue;
    const char(&field)[sizeof SerialPanelSlot::FWVersion] = cMySerInfo[slot].FWVersion;
    const std::string firmware = text_of(field, sizeof field);
    rows.push_back(
        {std::to_string(slot + 1), printable(port), firmware.empty() ? "-" : printable(firmware)});
    answer.document["ports"].push_back(
        {{"number", slot + 1}, {"port", port}, {"firmware", or_null(firmware)}});
  }
  if (rows.size() > 1) {
    answer.text = align(rows);
  } else {
    answer.hints.emplace_back(
        "no serial panel is listed; zelkoractl serial refresh looks for some");
  }
  return answer;
}

Answer refresh_serial() {
  if (current_config().switches[ZELKORA_CONFIG_RESISTIVE] == 0) {
    throw Failure(ExitCode::kUsage, "resistive panels are switched off in the configuration", "",
                  "switch them on there");
  }
  find_panels();  // a refresh does not load the lists of product names itself
  const std::string units = enter_unit_directory();
  {
    const SignalsHeld held;
    RefreshSerialDevice();
    start_daemons();
  }
  Answer answer = list_panels();
  answer.document["unit_directory"] = units;
  answer.hints.push_back("the unit files of serial panels are written to " + units);
  return answer;
}

Answer enable_serial(const std::string& name) {
  const SerialPanel serial = find_serial_panel(name);
  const bool failed = EnableRS232(serial.slot, serial.port.c_str()) != 0;
  return daemon_answer(serial, true, !failed && GetPid(serial.slot + 1) != 0);
}

Answer disable_serial(const std::string& name) {
  const SerialPanel serial = find_serial_panel(name);
  const bool failed = DisableRS232(serial.slot) != 0;
  return daemon_answer(serial, false, !failed && GetPid(serial.slot + 1) == 0);
}

}  // namespace zelkoractl
