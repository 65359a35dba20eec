// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "answers.h"

#include <poll.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <utility>

namespace zelkora::probe {

// Results may be negative without being failures: usages are among them.
std::string outcome(long result) {
  return result == -1 ? strerrorname_np(errno) : std::to_string(result);
}

bool show(const std::string& what, long result) {
  std::printf("%s -> %s\n", what.c_str(), outcome(result).c_str());
  return result != -1;
}

std::string hex(std::span<const uint8_t> bytes) {
  while (!bytes.empty() && bytes.back() == 0) bytes = bytes.first(bytes.size() - 1);
  std::string text;
  for (const uint8_t byte : bytes) {
    char digits[sizeof " 00"];
    std::snprintf(digits, sizeof digits, " %02X", byte);
    text += digits;
  }
  return text;
}

void show_poll(const std::string& what, int fd) {
  constexpr std::pair<short, const char*> kNames[] = {
      {POLLIN, " in"},         {POLLRDNORM, " rdnorm"}, {POLLOUT, " out"},
      {POLLWRNORM, " wrnorm"}, {POLLERR, " err"},       {POLLHUP, " hup"},
  };
  pollfd state{fd, POLLIN | POLLRDNORM | POLLOUT | POLLWRNORM, 0};
  std::string text = outcome(poll(&state, 1, 0));
  for (const auto& [bit, name] : kNames) {
    if ((state.revents & bit) != 0) text += name;
  }
  std::printf("%s -> %s\n", (what + " poll").c_str(), text.c_str());
}

void Answers::add(unsigned number, std::string answer) {
  if (!answer_.empty() && answer != answer_) flush();
  if (answer_.empty()) first_ = number;
  answer_ = std::move(answer);
  last_ = number;
}

void Answers::flush() {
  if (answer_.empty()) return;
  std::printf("%s %u", question_.c_str(), first_);
  if (last_ != first_) std::printf("..%u", last_);
  std::printf(" -> %s\n", std::exchange(answer_, {}).c_str());
}

}  // namespace zelkora::probe
