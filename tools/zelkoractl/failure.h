// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What a command throws when it cannot go on: what failed, on which node, and what to do.
#pragma once

#include <stdexcept>
#include <string>
#include <utility>

#include "exit_code.h"

namespace zelkoractl {

class Failure : public std::runtime_error {
 public:
  Failure(ExitCode code, const std::string& message, std::string node, std::string remedy)
      : std::runtime_error(message),
        code_(code),
        node_(std::move(node)),
        remedy_(std::move(remedy)) {}

  ExitCode code() const { return code_; }
  std::string message() const { return what(); }
  const std::string& node() const { return node_; }  // empty: no node is concerned
  const std::string& remedy() const { return remedy_; }

 private:
  ExitCode code_;
  std::string node_;
  std::string remedy_;
};

}  // namespace zelkoractl
