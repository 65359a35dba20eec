// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The configuration file of zelkoractl.
//
//   [switches]
//   resistive = on                    ; support resistive panels
//   new-product-ids = off             ; resistive panels of the new product generation
//   alternative-pct-vendors = off     ; the alternative list of PCT vendor ids
//   ignore-legacy-pct = off           ; pass over PCT panels with legacy firmware
//   notify-argument = 0               ; 0..255, handed on with every driver notification
//   hidraw = on                       ; look at hidraw nodes besides hiddev nodes
//   hide-cursor = off                 ; answer of the hide-cursor query
//   disable-resistive-hide-cursor = off
//   debug = off                       ; the library's trace on standard error
//
// The values above are those of a missing file. Every key may be left out; of a key that is there
// twice, the last counts.
#pragma once

#include <zelkora.h>

#include <array>
#include <optional>
#include <string>

namespace zelkoractl {

struct Config {
  std::array<unsigned char, ZELKORA_CONFIG_BYTES> switches{};
  bool debug = false;
  std::string file;  // it was read from; empty: there was none
};

Config default_config();

// Reads the named file, or the default file when none is named; only the latter may be missing.
// Throws a usage Failure that names the file and the line.
Config read_config(const std::optional<std::string>& named_path);

// The keys and the values they take, in columns.
std::string config_help();

// The configuration in use; until one is given, that of a missing file.
void use_config(const Config& config);
const Config& current_config();

}  // namespace zelkoractl
