// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "output.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "config.h"

namespace zelkoractl {
namespace {

constexpr int kSchema = 1;

// What went wrong may quote names of files, devices and arguments.
void complain(const std::string& text) {
  std::fprintf(stderr, "zelkoractl: %s\n", printable(text).c_str());
}

void complain(const Failure& failure) {
  const std::string nodes = failure.nodes().empty() ? "" : join(failure.nodes()) + ": ";
  complain(nodes + failure.message());
  if (!failure.remedy().empty()) complain("what to do: " + failure.remedy());
}

Json to_json(const Failure& failure) {
  const std::vector<std::string>& nodes = failure.nodes();
  Json document = {{"code", static_cast<int>(failure.code())},
                   {"message", failure.message()},
                   {"node", nodes.size() == 1 ? Json(nodes.front()) : Json(nullptr)},
                   {"remedy", or_null(failure.remedy())}};
  if (nodes.size() > 1) document["nodes"] = nodes;
  return document;
}

std::string to_document(const Answer& answer) {
  Json document = {{"schema", kSchema}};
  document.update(answer.document);
  document["hints"] = answer.hints;
  if (answer.failure) document["error"] = to_json(*answer.failure);
  // Device text may be anything: what is no UTF-8 is replaced, not thrown at.
  return document.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

// The library asks the X input driver to read settings again whenever it stores some. Without a
// display there is no such driver, which is no error in a command-line host.
constexpr std::string_view kNoDisplay = "EE:** Can't open XDisplay **\n";

// Takes the library's lines to standard error.
ssize_t pass_on(void* /*cookie*/, const char* text, size_t size) {
  std::string_view rest(text, size);
  while (!rest.empty()) {
    const std::string_view line = rest.substr(0, std::min(rest.find('\n'), rest.size() - 1) + 1);
    if (line != kNoDisplay || current_config().debug) {
      std::fwrite(line.data(), 1, line.size(), stderr);
    }
    rest.remove_prefix(line.size());
  }
  return static_cast<ssize_t>(size);
}

}  // namespace

Json or_null(const std::string& text) { return text.empty() ? Json(nullptr) : Json(text); }

AnswerChannel::AnswerChannel() {
  // A standard descriptor that the caller closed would go to the next device node that is opened.
  const bool has_output = fcntl(STDOUT_FILENO, F_GETFD) >= 0;
  int spare = open("/dev/null", O_RDWR);
  while (spare >= 0 && spare <= STDERR_FILENO) {
    spare = open("/dev/null", O_RDWR);
  }
  if (spare >= 0) close(spare);
  answer_ = has_output ? fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, STDERR_FILENO + 1) : -1;
  dup2(STDERR_FILENO, STDOUT_FILENO);
  // Line by line, so that the library's lines and ours stay in order.
  stdout = fopencookie(nullptr, "w", {nullptr, pass_on, nullptr, nullptr});
  std::setvbuf(stdout, nullptr, _IOLBF, BUFSIZ);
}

AnswerChannel::~AnswerChannel() {
  if (answer_ >= 0) close(answer_);
}

bool AnswerChannel::write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(answer_, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return false;
    text.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

ExitCode deliver(const Answer& answer, bool json, AnswerChannel& channel) {
  const bool written = channel.write(json ? to_document(answer) : answer.text);
  const int error = errno;
  if (!json) {
    for (const std::string& hint : answer.hints) {
      complain(hint);
    }
    if (answer.failure) complain(*answer.failure);
  }
  if (!written) complain(std::string("cannot write the answer: ") + std::strerror(error));
  if (answer.failure) return answer.failure->code();
  return written ? ExitCode::kDone : ExitCode::kFailed;
}

std::string align(const std::vector<std::vector<std::string>>& rows) {
  std::vector<size_t> widths;
  for (const auto& row : rows) {
    widths.resize(std::max(widths.size(), row.size()));
    for (size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], row[i].size());
    }
  }
  std::string text;
  for (const auto& row : rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      line.append(widths[i] - row[i].size() + 2, ' ');
    }
    line.erase(line.find_last_not_of(' ') + 1);
    text += line + "\n";
  }
  return text;
}

std::string join(const std::vector<std::string>& parts) {
  std::string text;
  for (const std::string& part : parts) {
    text += (text.empty() ? "" : ", ") + part;
  }
  return text;
}

std::string printable(std::string_view text) {
  std::string clean;
  for (const char c : text) {
    if (c >= ' ' && c <= '~') {
      clean += c;
      continue;
    }
    char escape[5];
    std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned char>(c));
    clean += escape;
  }
  return clean;
}

}  // namespace zelkoractl
