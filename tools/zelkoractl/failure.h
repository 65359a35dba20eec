// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What a command throws when it cannot go on: what failed, on which nodes, and what to do.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "exit_code.h"

namespace zelkoractl {

class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message, std::vector<std::string> nodes,
          std::string remedy)
      : std::runtime_error(message),
        code_(code),
        nodes_(std::move(nodes)),
        remedy_(std::move(remedy)) {}

  // An empty node: none is concerned.
  Failure(ExitCode code, const std::string& message, const std::string& node, std::string remedy)
      : Failure(code, message,
                node.empty() ? std::vector<std::string>() : std::vector<std::string>{node},
                std::move(remedy)) {}

  ExitCode code() const { return code_; }
  std::string message() const { return what(); }
  const std::vector<std::string>& nodes() const { return nodes_; }
  const std::string& remedy() const { return remedy_; }

 private:
  ExitCode code_;
  std::vector<std::string> nodes_;
  std::string remedy_;
};

}  // namespace zelkoractl
