// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "usbip_server.h"

#include <fcntl.h>
#include <glob.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <utility>

namespace zelkora::sim {
namespace {

constexpr char kHostController[] = "/sys/devices/platform/vhci_hcd.0";
constexpr auto kPatience = std::chrono::seconds(20);
constexpr int kLookAgainMilliseconds = 10;

std::runtime_error failure(const std::string& what) {
  return std::runtime_error(what + ": " + std::strerror(errno));
}

// The ports without a device, of those for devices of up to high speed. Each line of the table
// reads "hub port state ...".
std::vector<unsigned> free_ports() {
  constexpr unsigned kNothingInIt = 4;
  std::ifstream status(std::string(kHostController) + "/status");
  if (!status) {
    throw std::runtime_error(std::string(kHostController) +
                             " is missing: load the module vhci-hcd (as root)");
  }
  std::vector<unsigned> ports;
  std::string line;
  while (std::getline(status, line)) {
    std::istringstream words(line);
    std::string hub;
    unsigned port = 0, state = 0;
    const bool is_free = words >> hub >> port >> state && hub == "hs" && state == kNothingInIt;
    if (is_free) ports.push_back(port);
  }
  return ports;
}

bool is_free(unsigned port) { return std::ranges::count(free_ports(), port) != 0; }

unsigned free_port_other_than(std::optional<unsigned> left) {
  for (const unsigned port : free_ports())
    if (port != left) return port;
  throw std::runtime_error("every port of the virtual host controller is taken");
}

// The node below /dev whose entry in /sys matches the pattern; empty when there is none, or none
// yet: the kernel makes the entry a moment before the node.
std::string find_node(const std::string& pattern, std::string_view folder) {
  glob_t found{};
  std::string node;
  if (glob(pattern.c_str(), 0, nullptr, &found) == 0) {
    const std::string_view path = found.gl_pathv[0];
    node = std::string(folder).append(path.substr(path.rfind('/')));
    if (access(node.c_str(), F_OK) != 0) node.clear();
  }
  globfree(&found);
  return node;
}

}  // namespace

// One controller, its port and the connection to the kernel.
class UsbipServer::Plug {
 public:
  Plug(std::vector<UsbInterface> interfaces, Trace trace)
      : interfaces_(std::move(interfaces)),
        trace_(std::move(trace)),
        port_(free_port_other_than(std::nullopt)) {
    connect();
  }
  ~Plug() { disconnect(); }
  Plug(const Plug&) = delete;
  Plug& operator=(const Plug&) = delete;

  int socket() const { return socket_; }

  void unplug() {
    leaving_ = false;
    disconnect();
  }

  void plug_elsewhere() {
    port_ = free_port_other_than(port_);
    connect();
  }

  // The device leaves without answering what it is asked just now.
  void drop() { dropped_ = true; }

  // The device leaves when it has answered what it is asked just now, and comes back.
  void replug() { leaving_ = true; }
  bool is_away() const { return leaving_ && socket_ < 0; }
  // The kernel needs a moment to notice that the port is free again.
  void come_back() {
    if (!is_free(port_)) return;
    leaving_ = false;
    connect();
  }

  // Takes what the kernel sent and answers it.
  void serve() {
    std::array<uint8_t, 4096> buffer;
    const ssize_t count = read(socket_, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) return;
    if (count <= 0) return disconnect();
    const auto answers = session_->receive({buffer.data(), static_cast<size_t>(count)});
    if (dropped_) return disconnect();
    for (size_t sent = 0; sent < answers.size();) {
      const ssize_t part =
          send(socket_, answers.data() + sent, answers.size() - sent, MSG_NOSIGNAL);
      if (part < 0) return disconnect();
      sent += static_cast<size_t>(part);
    }
    if (leaving_) disconnect();
  }

  const std::vector<UsbInterface>& interfaces() const { return interfaces_; }

  std::vector<UsbNodes> nodes() const {
    const std::string device =
        std::string(kHostController) + "/usb*/*-" + std::to_string(port_ + 1) + "/*:1.";
    std::vector<UsbNodes> all;
    for (size_t number = 0; number < interfaces_.size(); ++number) {
      const std::string interface = device + std::to_string(number);
      all.push_back({find_node(interface + "/usbmisc/hiddev*", "/dev/usb"),
                     find_node(interface + "/*/hidraw/hidraw*", "/dev"),
                     find_node(interface + "/*/input/input*/event*", "/dev/input")});
    }
    return all;
  }

 private:
  void connect() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
      throw failure("socketpair");
    }
    session_.emplace(interfaces_, trace_);
    socket_ = ends[0];
    dropped_ = false;
    try {
      attach(ends[1]);
    } catch (...) {
      close(ends[1]);
      disconnect();
      throw;
    }
    close(ends[1]);  // the kernel holds it now
    if (trace_) trace_("plugged");
  }

  void disconnect() {
    if (socket_ < 0) return;
    close(socket_);
    socket_ = -1;
    if (trace_) trace_("unplugged");
  }

  // Gives the kernel its end: port, descriptor, a device number of its own, full speed.
  void attach(int kernel_end) const {
    constexpr unsigned kFullSpeed = 2;
    const std::string path = std::string(kHostController) + "/attach";
    std::ofstream file(path);
    file << port_ << ' ' << kernel_end << ' ' << (1u << 16 | (port_ + 2)) << ' ' << kFullSpeed
         << std::flush;
    if (!file) throw failure(path);
  }

  std::vector<UsbInterface> interfaces_;
  Trace trace_;
  std::optional<UsbipSession> session_;  // a new one each time the device is plugged in
  unsigned port_;
  int socket_ = -1;
  bool leaving_ = false;
  bool dropped_ = false;
};

UsbipServer::UsbipServer() = default;
UsbipServer::~UsbipServer() = default;

std::vector<UsbNodes> UsbipServer::plug(std::vector<UsbInterface> interfaces, Trace trace) {
  plugs_.push_back(std::make_unique<Plug>(std::move(interfaces), std::move(trace)));
  return wait_for_nodes(*plugs_.back());
}

std::vector<UsbNodes> UsbipServer::plug_again(size_t number) {
  plugs_.at(number)->plug_elsewhere();
  return wait_for_nodes(*plugs_[number]);
}

std::vector<UsbNodes> UsbipServer::wait_for_nodes(Plug& plug) {
  std::vector<UsbNodes> nodes;
  const bool made = serve_until([&] {
    nodes = plug.nodes();
    return std::ranges::equal(nodes, plug.interfaces(), &UsbNodes::complete);
  });
  if (made) return nodes;
  plug.unplug();
  throw std::runtime_error("the kernel did not make the nodes: see its messages with dmesg");
}

void UsbipServer::unplug(size_t number) {
  Plug& plug = *plugs_.at(number);
  plug.unplug();
  const bool gone = serve_until([&] { return std::ranges::all_of(plug.nodes(), &UsbNodes::none); });
  if (!gone) throw std::runtime_error("the kernel keeps the nodes of an unplugged controller");
}

void UsbipServer::drop(size_t number) { plugs_.at(number)->drop(); }

void UsbipServer::replug(size_t number) { plugs_.at(number)->replug(); }

void UsbipServer::serve_until_readable(int descriptor) {
  while (!serve(descriptor, -1)) {
  }
}

template <typename Condition>
bool UsbipServer::serve_until(Condition condition) {
  const auto end = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    serve(-1, kLookAgainMilliseconds);
  }
  return true;
}

// Answers what has come, waiting for it at most this long (-1: for ever). True: the descriptor
// can be read. A descriptor of -1 never can.
bool UsbipServer::serve(int descriptor, int milliseconds) {
  std::vector<pollfd> wanted{{descriptor, POLLIN, 0}};
  for (const auto& plug : plugs_) {
    if (plug->is_away()) plug->come_back();
    if (plug->is_away()) milliseconds = kLookAgainMilliseconds;
    wanted.push_back({plug->socket(), POLLIN, 0});
  }
  for (const SerialLine* line : lines_) wanted.push_back({line->descriptor(), POLLIN, 0});
  if (poll(wanted.data(), wanted.size(), milliseconds) < 0) {
    if (errno == EINTR) return false;
    throw failure("poll");
  }
  for (size_t i = 0; i < plugs_.size(); ++i)
    if (wanted[1 + i].revents != 0) plugs_[i]->serve();
  for (size_t i = 0; i < lines_.size(); ++i)
    if (wanted[1 + plugs_.size() + i].revents != 0) lines_[i]->serve();
  return wanted[0].revents != 0;
}

}  // namespace zelkora::sim
