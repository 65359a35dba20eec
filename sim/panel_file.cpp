// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panel_file.h"

#include <cerrno>
#include <cstring>
#include <fstream>
#include <string_view>

namespace zelkora::sim {
namespace {

constexpr std::string_view kBlanks = " \t\r";

bool is_blank(char character) { return kBlanks.find(character) != std::string_view::npos; }

std::string_view without_comment(std::string_view line) {
  bool quoted = false;
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '"') quoted = !quoted;
    const bool begins_word = i == 0 || is_blank(line[i - 1]);
    if (line[i] == '#' && begins_word && !quoted) return line.substr(0, i);
  }
  return line;
}

std::string_view trimmed(std::string_view line) {
  const size_t first = line.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return line.substr(first, line.find_last_not_of(kBlanks) + 1 - first);
}

}  // namespace

std::string read_panels(std::istream& file, const std::string& name,
                        std::vector<PanelDescription>& panels) {
  const size_t had = panels.size();
  std::string line;
  for (unsigned number = 1; std::getline(file, line); ++number) {
    const std::string_view description = trimmed(without_comment(line));
    if (description.empty()) continue;
    const std::string problem = parse_panel(description, panels.emplace_back());
    if (problem.empty()) continue;
    return std::string(name).append(":").append(std::to_string(number)).append(": ") + problem;
  }
  if (file.bad()) return name + ": cannot be read";
  return panels.size() == had ? name + ": describes no panel" : std::string();
}

std::string read_panel_file(const std::string& name, std::vector<PanelDescription>& panels) {
  errno = 0;
  std::ifstream file(name);
  if (!file) return name + ": " + std::strerror(errno);
  return read_panels(file, name, panels);
}

}  // namespace zelkora::sim
