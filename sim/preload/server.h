// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Answers the processes of a session, one request after another, until the command has ended.
#pragma once

#include <sys/types.h>

#include <span>
#include <string>
#include <vector>

#include "panels.h"
#include "protocol.h"

namespace zelkora::sim {

class Server {
 public:
  explicit Server(Panels& panels) : panels_(panels) {}
  ~Server();
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;

  // Starts to listen in the private root. Returns what failed, or an empty text.
  std::string listen();

  // Serves until `child` has ended; returns its wait status. SIGCHLD must be blocked, and so must
  // the signals in `forwarded`, which are passed on to the child.
  int serve_until_exit(pid_t child, std::span<const int> forwarded);

 private:
  struct Connection {
    int fd = -1;
    int handle = -1;  // the open node; -1: none yet
  };

  void close_hung_up();
  void accept_one();
  void answer(Connection& connection);
  SimReply perform(Connection& connection, const SimRequest& request, std::span<uint8_t> data,
                   std::vector<uint8_t>& answer);
  SimReply perform_ioctl(int handle, const SimRequest& request, std::span<uint8_t> data,
                         std::vector<uint8_t>& answer);
  SimReply perform_query(const SimRequest& request, std::span<const uint8_t> data,
                         std::vector<uint8_t>& answer);
  SimReply perform_run(std::span<const uint8_t> data, std::vector<uint8_t>& answer);

  Panels& panels_;
  int listener_ = -1;
  std::vector<Connection> connections_;
};

}  // namespace zelkora::sim
