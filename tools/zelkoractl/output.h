// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What a command answers, and the one place that writes it: the answer to standard output,
// everything else to standard error.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "failure.h"

namespace zelkoractl {

using Json = nlohmann::ordered_json;

// What is not known is null in a document.
Json or_null(const std::string& text);

struct Answer {
  Json document = Json::object();  // with --json
  std::string text;                // without
  std::vector<std::string> hints;  // worth knowing, but no failure
  std::optional<Failure> failure;
};

// Standard output, kept apart from the library. The library prints to descriptor 1, so the answer
// gets a private copy of it and descriptor 1 becomes standard error.
class AnswerChannel {
 public:
  AnswerChannel();
  ~AnswerChannel();
  AnswerChannel(const AnswerChannel&) = delete;
  AnswerChannel& operator=(const AnswerChannel&) = delete;

  // False, with errno set, when it could not be written whole.
  bool write(std::string_view text);

 private:
  int answer_;
};

// Writes the answer and returns the exit status.
ExitCode deliver(const Answer& answer, bool json, AnswerChannel& channel);

// Rows of cells in columns as wide as their widest cell, two blanks apart.
std::string align(const std::vector<std::vector<std::string>>& rows);

// "a, b, c"
std::string join(const std::vector<std::string>& parts);

// Text from elsewhere, fit for a terminal: other than printable ASCII becomes \xNN.
std::string printable(std::string_view text);

}  // namespace zelkoractl
