// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The list of serial panels that the last refresh found, and texts that name serial ports.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "core/file_lines.h"
#include "core/log.h"
#include "core/open_file.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "core/text.h"
#include "port_names.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::paths::kSerialPanels;

namespace {

bool has_key(const zelkora::LineReader& reader, const char* stem, int number) {
  char key[sizeof "SerialDevice1"];
  std::snprintf(key, sizeof key, "%s%d", stem, number);
  return reader.contains(key);
}

template <size_t kSize>
void copy_value(const zelkora::LineReader& reader, char (&field)[kSize]) {
  char value[zelkora::kLineBuffer]{};
  GetConfStr(reader.line().data(), value);
  zelkora::set_text(field, zelkora::field_text(value));
}

// Names the next free table entry after a port; 1, or 0 when the table is full.
int name_next_entry(std::string_view name) {
  if (DeviceNumber < 0 || DeviceNumber >= ZELKORA_MAX_DEVICES) return 0;
  TouchDeviceEntry& entry = TouchDevice[DeviceNumber];
  zelkora::set_text(entry.Name, name);
  entry.Type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  return 1;
}

}  // namespace

bool zelkora::serial::PortName::is_safe() const {
  constexpr std::string_view kAllowed =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789._/-";
  const std::string_view name(text);
  return whole && !name.empty() && name.find_first_not_of(kAllowed) == name.npos &&
         !contains(name, "..");
}

std::string_view zelkora::serial::listable(std::string_view text) {
  const auto end = std::ranges::find_if(text, [](char c) { return c < ' ' || c > '~'; });
  return {text.data(), static_cast<size_t>(end - text.begin())};
}

int GetSerDevInfo(void) {
  const zelkora::ScopedFile file(zelkora::open_file(kSerialPanels, "r"));
  if (!file) return 0;
  int count = 0;
  for (zelkora::LineReader reader(file.get()); reader.next();) {
    for (int number = 1; number <= ZELKORA_MAX_SERIAL; ++number) {
      SerialPanelSlot& slot = cMySerInfo[number - 1];
      if (has_key(reader, "SerialDevice", number)) {
        copy_value(reader, slot.Name);
        ++count;
      }
      if (has_key(reader, "FW", number)) {
        copy_value(reader, slot.FWVersion);
        DebugMsg(kTrace, "Device[%d]:%s FW:%s\n", number - 1, slot.Name, slot.FWVersion);
      }
    }
  }
  return count;
}

void UpdateSerFw(const char* phys, const char* fw) {
  DebugMsg(kTrace, "UpdateSerFw\n");
  const int count = GetSerDevInfo();
  for (int i = 0; i < count && i < ZELKORA_MAX_SERIAL; ++i) {
    const SerialPanelSlot& slot = cMySerInfo[i];
    if (!zelkora::contains(phys, zelkora::field_text(slot.Name)) ||
        zelkora::contains(zelkora::field_text(slot.FWVersion), fw)) {
      continue;
    }
    // Counted from 0 here and from 1 by the reader: the text lands in the slot before, where hosts
    // have learned to look.
    char key[sizeof "FW0"];
    std::snprintf(key, sizeof key, "FW%d", i);
    char value[sizeof SerialPanelSlot::FWVersion];
    zelkora::set_text(value, zelkora::serial::listable(fw));
    set_conf_option_str(kSerialPanels, key, value);
  }
}

int GetSerialDeviceName(const char* text) {
  for (std::string_view rest(text); !rest.empty();) {
    const size_t quote = rest.find('"');
    const std::string_view piece(rest.data(), quote == rest.npos ? rest.size() : quote);
    if (zelkora::contains(piece, "tty")) {
      if (name_next_entry(piece) == 0) return 0;
      DebugMsg(kTrace, "Device%d : %s\n", DeviceNumber + 1, TouchDevice[DeviceNumber].Name);
      return 1;
    }
    rest.remove_prefix(quote == rest.npos ? rest.size() : quote + 1);
  }
  return 0;
}

int GetSerialDeviceNameFdi(const char* text) {
  constexpr std::string_view kMarker = "type=\"string\">";
  const std::string_view line(text);
  const size_t marker = line.find(kMarker);
  const size_t end = line.find("</merge>");
  if (marker == line.npos || end == line.npos || end < marker + kMarker.size()) return 0;
  const size_t start = marker + kMarker.size();
  const std::string_view name(text + start, end - start);
  return zelkora::contains(name, "tty") ? name_next_entry(name) : 0;
}
