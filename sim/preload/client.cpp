// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "client.h"

#include <sys/socket.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <optional>

#include "protocol.h"

namespace zelkora::sim {
namespace {

// Closes a descriptor at the end of its block.
struct Connection {
  int fd = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  Connection() = default;
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;
  ~Connection() {
    if (fd >= 0) close(fd);
  }

  // False, with errno set: nobody listens there.
  bool reach_runner() const {
    const sockaddr_un address{AF_UNIX, ZELKORA_SIM_SOCKET_PATH};
    return connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
};

Answer no_connection(int error) {
  if (error == ENOENT) {
    return {kExitUsage, "there is no session here; run this inside one: zelkora-sim -- COMMAND"};
  }
  if (error == ECONNREFUSED) return {kExitUsage, "the session is over; its panels are gone"};
  return {kExitFailed, std::string("cannot reach the session: ") + std::strerror(error)};
}

// One request; appends the part of the answer that came and returns the header.
std::optional<SimReply> exchange(int fd, uint32_t operation, const std::string& data,
                                 std::string& text) {
  SimRequest request{};
  request.operation = operation;
  request.argument = text.size();
  iovec sent[] = {{&request, sizeof request}, {const_cast<char*>(data.data()), data.size()}};
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

Answer run_stand_in(std::span<char* const> words) {
  const Connection connection;
  if (!connection.reach_runner()) return no_connection(errno);
  std::string data;
  for (const char* word : words) data.append(word).push_back('\0');
  Answer answer;
  const auto reply = exchange(connection.fd, SIM_RUN, data, answer.text);
  if (!reply) return no_connection(ECONNREFUSED);
  answer.status = reply->result;
  return answer;
}

Answer ask_runner(const std::string& line) {
  const Connection connection;
  if (!connection.reach_runner()) return no_connection(errno);
  Answer answer;
  for (;;) {
    const size_t had = answer.text.size();
    const auto reply = exchange(connection.fd, SIM_QUERY, line, answer.text);
    if (!reply) return no_connection(ECONNREFUSED);
    answer.status = reply->result;
    // An answer longer than one message is fetched part by part.
    if (answer.text.size() >= reply->length || answer.text.size() == had) return answer;
  }
}

}  // namespace zelkora::sim
