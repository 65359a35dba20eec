// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "queries.h"

#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <optional>

#include "protocol.h"
#include "typed_text.h"

namespace zelkora::sim {
namespace {

using Words = std::vector<std::string_view>;

Answer usage(std::string text) { return {kExitUsage, std::move(text)}; }

std::string hex_line(std::span<const uint8_t> bytes) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  std::string line;
  for (const uint8_t byte : bytes) {
    if (!line.empty()) line += ' ';
    line += kDigits[byte >> 4];
    line += kDigits[byte & 0xF];
  }
  return line + '\n';
}

struct Query {
  Panels& panels;
  size_t panel;
  Words arguments;  // behind the panel

  ResistiveController& controller() const { return panels.controller(panel); }
};

Answer read_value(const Query& query, uint16_t (*get)(const ResistiveController&, uint8_t)) {
  const auto address = parse_number(query.arguments[0], 0xFF);
  if (!address) return usage("ADDRESS lies in 0..255");
  const unsigned value = get(query.controller(), static_cast<uint8_t>(*address));
  return {kExitDone, std::to_string(value) + "\n"};
}

Answer value(const Query& query) {
  return read_value(query, [](const ResistiveController& controller, uint8_t address) {
    return controller.value(address);
  });
}

Answer permanent(const Query& query) {
  return read_value(query, [](const ResistiveController& controller, uint8_t address) {
    return controller.permanent_value(address);
  });
}

Answer set(const Query& query) {
  const auto address = parse_number(query.arguments[0], 0xFF);
  const auto number = parse_number(query.arguments[1], 0xFFFF);
  if (!address || !number) return usage("ADDRESS lies in 0..255, VALUE in 0..65535");
  query.controller().set_value(static_cast<uint8_t>(*address), static_cast<uint16_t>(*number));
  return {};
}

Answer silent(const Query& query) {
  const std::string_view word = query.arguments[0];
  if (word != "on" && word != "off") return usage("silent PANEL is followed by on or off");
  query.controller().faults.silent = word == "on";
  return {};
}

Answer unplug(const Query& query) {
  if (query.panels.unplug(query.panel)) return {};
  return {kExitFailed, "panel " + std::to_string(query.panel) + " is unplugged already"};
}

Answer frames(const Query& query) {
  Answer answer;
  for (const auto& frame : query.controller().frames()) answer.text += hex_line(frame);
  return answer;
}

struct QueryRow {
  std::string_view name;
  size_t arguments;  // behind the panel
  Answer (*run)(const Query& query);
};

constexpr QueryRow kQueries[] = {
    {"value", 1, value},   {"permanent", 1, permanent}, {"set", 2, set},
    {"silent", 1, silent}, {"unplug", 0, unplug},       {"frames", 0, frames},
};

// Closes a descriptor at the end of its block.
struct Connection {
  int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    if (fd >= 0) close(fd);
  }
};

Answer no_connection(int error) {
  if (error == ENOENT) {
    return usage("there is no session here; run this inside one: zelkora-sim -- COMMAND");
  }
  if (error == ECONNREFUSED) return usage("the session is over; its panels are gone");
  return {kExitFailed, std::string("cannot reach the session: ") + std::strerror(error)};
}

// One request; appends the part of the answer that came and returns the header.
std::optional<SimReply> exchange(int fd, const std::string& line, std::string& text) {
  SimRequest request{};
  request.operation = SIM_QUERY;
  request.argument = text.size();
  iovec sent[] = {{&request, sizeof request}, {const_cast<char*>(line.data()), line.size()}};
  SimReply reply{};
  std::array<char, SIM_MAX_DATA> room;
  iovec received[] = {{&reply, sizeof reply}, {room.data(), room.size()}};
  msghdr message{};
  message.msg_iovlen = 2;
  message.msg_iov = sent;
  if (sendmsg(fd, &message, MSG_NOSIGNAL) < 0) return std::nullopt;
  message.msg_iov = received;
  const ssize_t count = recvmsg(fd, &message, 0);
  if (count < static_cast<ssize_t>(sizeof reply)) return std::nullopt;
  text.append(room.data(), static_cast<size_t>(count) - sizeof reply);
  return reply;
}

}  // namespace

Answer answer_query(Panels& panels, std::string_view line) {
  Words words = split(line, ' ');
  const auto* row = std::ranges::find(kQueries, words[0], &QueryRow::name);
  if (row == std::end(kQueries)) return usage("unknown query '" + std::string(words[0]) + "'");
  if (words.size() != row->arguments + 2) return usage("wrong number of words");
  const auto panel = parse_number(words[1], UINT16_MAX);
  if (!panel) return usage("PANEL is a number, counted from 0");
  if (*panel >= panels.size()) {
    return {kExitNotFound, "there is no panel " + std::to_string(*panel) + "; the session has " +
                               std::to_string(panels.size()) + ", counted from 0"};
  }
  words.erase(words.begin(), words.begin() + 2);
  return row->run({panels, *panel, std::move(words)});
}

Answer ask_runner(const std::string& line) {
  const Connection connection;
  const sockaddr_un address{AF_UNIX, ZELKORA_SIM_SOCKET_PATH};
  if (connect(connection.fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return no_connection(errno);
  }
  Answer answer;
  for (;;) {
    const size_t had = answer.text.size();
    const auto reply = exchange(connection.fd, line, answer.text);
    if (!reply) return no_connection(ECONNREFUSED);
    answer.status = reply->result;
    // An answer longer than one message is fetched part by part.
    if (answer.text.size() >= reply->length || answer.text.size() == had) return answer;
  }
}

}  // namespace zelkora::sim
