// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "server.h"

#include <poll.h>
#include <signal.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <string_view>

#include "panel_queries.h"
#include "typed_text.h"

namespace zelkora::sim {
namespace {

std::string_view text(std::span<const uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

int signal_descriptor(std::span<const int> forwarded) {
  sigset_t set;
  sigemptyset(&set);
  sigaddset(&set, SIGCHLD);
  for (const int number : forwarded) sigaddset(&set, number);
  return signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK);
}

// True when the child has ended.
bool handle_signals(int signals, pid_t child, int& status) {
  signalfd_siginfo info;
  while (read(signals, &info, sizeof info) == sizeof info) {
    if (info.ssi_signo != SIGCHLD) kill(child, static_cast<int>(info.ssi_signo));
  }
  return waitpid(child, &status, WNOHANG) == child;
}

}  // namespace

Server::~Server() {
  for (const Connection& connection : connections_) close(connection.fd);
  if (listener_ >= 0) close(listener_);
}

std::string Server::listen() {
  const sockaddr_un address{AF_UNIX, ZELKORA_SIM_SOCKET_PATH};
  listener_ = socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
  // A process that gave up its privileges may still connect; the nodes have permissions of their
  // own.
  if (listener_ < 0 ||
      bind(listener_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      chmod(address.sun_path, 0666) != 0 || ::listen(listener_, SOMAXCONN) != 0) {
    return std::string("cannot listen on " ZELKORA_SIM_SOCKET_PATH ": ") + std::strerror(errno);
  }
  return {};
}

int Server::serve_until_exit(pid_t child, std::span<const int> forwarded) {
  const int signals = signal_descriptor(forwarded);
  int status = 0;
  for (bool ended = false; !ended;) {
    std::vector<pollfd> ready{{listener_, POLLIN, 0}, {signals, POLLIN, 0}};
    for (const Connection& connection : connections_) ready.push_back({connection.fd, POLLIN, 0});
    if (poll(ready.data(), ready.size(), -1) < 0) continue;

    std::vector<int> speaking;
    for (size_t i = 2; i < ready.size(); ++i) {
      if ((ready[i].revents & POLLIN) != 0) speaking.push_back(ready[i].fd);
    }
    // Whatever was closed before one of these requests was made is seen closed now.
    close_hung_up();
    for (Connection& connection : connections_) {
      if (std::ranges::count(speaking, connection.fd) != 0) answer(connection);
    }
    if ((ready[0].revents & POLLIN) != 0) accept_one();
    if ((ready[1].revents & POLLIN) != 0) ended = handle_signals(signals, child, status);
  }
  close(signals);
  close_hung_up();
  return status;
}

void Server::close_hung_up() {
  std::erase_if(connections_, [this](const Connection& connection) {
    pollfd state{connection.fd, 0, 0};
    if (poll(&state, 1, 0) != 1 || (state.revents & POLLHUP) == 0) return false;
    if (connection.handle >= 0) panels_.kernel().close(connection.handle);
    close(connection.fd);
    return true;
  });
}

void Server::accept_one() {
  const int fd = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
  if (fd >= 0) connections_.push_back({fd});
}

void Server::answer(Connection& connection) {
  SimRequest request{};
  std::vector<uint8_t> data(SIM_MAX_DATA);
  iovec received[] = {{&request, sizeof request}, {data.data(), data.size()}};
  msghdr message{};
  message.msg_iov = received;
  message.msg_iovlen = 2;
  const ssize_t count = recvmsg(connection.fd, &message, MSG_DONTWAIT);
  if (count < static_cast<ssize_t>(sizeof request)) return;
  data.resize(static_cast<size_t>(count) - sizeof request);

  std::vector<uint8_t> result;
  SimReply reply = perform(connection, request, data, result);
  iovec sent[] = {{&reply, sizeof reply}, {result.data(), result.size()}};
  message.msg_iov = sent;
  // A process that ended meanwhile needs no reply; its hang-up comes next.
  sendmsg(connection.fd, &message, MSG_NOSIGNAL);
}

SimReply Server::perform(Connection& connection, const SimRequest& request, std::span<uint8_t> data,
                         std::vector<uint8_t>& answer) {
  VirtualKernel& kernel = panels_.kernel();
  if (request.operation == SIM_QUERY) return perform_query(request, data, answer);
  if (request.operation == SIM_RUN) return perform_run(data, answer);
  if (request.operation == SIM_OPEN) {
    if (!kernel.owns(text(data))) return {-ENOENT, 0};
    const int handle = kernel.open(text(data), request.flags);
    if (handle < 0) return {handle, 0};
    connection.handle = handle;
    return {0, 0};
  }
  if (connection.handle < 0) return {-EBADF, 0};
  switch (request.operation) {
    case SIM_IOCTL:
      return perform_ioctl(connection.handle, request, data, answer);
    case SIM_WRITE:
      return {static_cast<int32_t>(kernel.write(connection.handle, data)), 0};
    case SIM_POLL:
      return {kernel.poll(connection.handle), 0};
    case SIM_READ: {
      answer.resize(std::min<uint64_t>(request.argument, SIM_MAX_DATA));
      const ssize_t count = kernel.read(connection.handle, answer);
      answer.resize(count > 0 ? static_cast<size_t>(count) : 0);
      return {static_cast<int32_t>(count), 0};
    }
    default:
      return {-EINVAL, 0};
  }
}

SimReply Server::perform_ioctl(int handle, const SimRequest& request, std::span<uint8_t> data,
                               std::vector<uint8_t>& answer) {
  if (data.size() != sim_request_size(request.request)) return {-EFAULT, 0};
  answer.assign(data.begin(), data.end());
  void* argument =
      data.empty() ? std::bit_cast<void*>(static_cast<uintptr_t>(request.argument)) : answer.data();
  const int result = panels_.kernel().ioctl(handle, request.request, argument);
  if (std::ranges::equal(answer, data)) answer.clear();
  return {result, 0};
}

SimReply Server::perform_query(const SimRequest& request, std::span<const uint8_t> data,
                               std::vector<uint8_t>& answer) {
  const Answer whole = answer_query(panels_, text(data));
  const size_t first = std::min<uint64_t>(request.argument, whole.text.size());
  const std::string_view part = std::string_view(whole.text).substr(first, SIM_MAX_DATA);
  answer.assign(part.begin(), part.end());
  return {whole.status, static_cast<uint32_t>(whole.text.size())};
}

SimReply Server::perform_run(std::span<const uint8_t> data, std::vector<uint8_t>& answer) {
  std::vector<std::string> words;
  for (const std::string_view word : split(text(data), '\0')) words.emplace_back(word);
  words.pop_back();  // nothing behind the last NUL
  const HostCommands::Outcome outcome = panels_.commands()->run(words);
  const std::string_view part = std::string_view(outcome.text).substr(0, SIM_MAX_DATA);
  answer.assign(part.begin(), part.end());
  return {outcome.status, static_cast<uint32_t>(part.size())};
}

}  // namespace zelkora::sim
