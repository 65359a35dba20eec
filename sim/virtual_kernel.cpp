// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "virtual_kernel.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <functional>
#include <optional>
#include <utility>

#include "event_node.h"
#include "hiddev_node.h"
#include "hidraw_node.h"
#include "request_name.h"
#include "serial_node.h"

namespace zelkora::sim {
namespace {

using Path = std::string;

using OpenNode = std::function<std::shared_ptr<DeviceNode>()>;

struct PluggedNode {
  Path path;
  int attachment;
  OpenNode open;
};

struct OpenFile {
  Path path;
  std::shared_ptr<DeviceNode> node;
  int attachment;
  int access;
};

enum class Call { kOpen, kIoctl, kRead, kWrite };

struct Fault {
  Call call;
  Path path;
  unsigned long request;  // without its size bits; of an ioctl only
  int error;
  int times;
};

std::string open_flags(int flags) {
  constexpr std::array kAccess = {"O_RDONLY", "O_WRONLY", "O_RDWR", "O_ACCMODE"};
  constexpr std::pair<int, const char*> kNames[] = {
      {O_NONBLOCK, "|O_NONBLOCK"}, {O_NOCTTY, "|O_NOCTTY"}, {O_CLOEXEC, "|O_CLOEXEC"}};
  std::string text = kAccess[static_cast<size_t>(flags & O_ACCMODE)];
  for (const auto& [bit, name] : kNames) {
    if ((flags & bit) != 0) text += name;
  }
  return text;
}

std::string outcome(ssize_t result) {
  constexpr ssize_t kLastError = -4095;
  if (result >= 0 || result < kLastError) return {};
  const char* name = strerrorname_np(static_cast<int>(-result));
  return std::string(" -> ") + (name != nullptr ? name : "?");
}

std::string byte_run(std::span<const uint8_t> bytes) {
  return bytes.empty() ? ":" : ": " + hex_bytes(bytes);
}

}  // namespace

struct VirtualKernel::State {
  std::map<int, std::vector<PluggedInterface>> devices;  // by attachment
  std::vector<PluggedNode> nodes;
  std::map<int, OpenFile> files;
  std::vector<Fault> faults;
  std::function<void(std::string)> trace;
  std::vector<std::string> transfers;  // of the call that is going on
  int attachments = 0;
  unsigned bus_numbers = 0;
  int handles = 0;

  void plug(int attachment, std::string path, OpenNode open);
  void plug_nodes(int attachment);
  void drop_nodes(int attachment);
  const PluggedNode* find(std::string_view path) const;
  OpenFile* file(int handle);
  std::optional<int> strike(Call call, std::string_view path, unsigned long request = 0);
  std::optional<int> strike(Call call, const OpenFile& file, unsigned long request = 0);
  // Writes the line of a call that ended, then what it moved to and from the device.
  void report(const std::string& line, ssize_t result);
};

void VirtualKernel::State::plug(int attachment, Path path, OpenNode open) {
  if (!path.empty()) nodes.push_back({std::move(path), attachment, std::move(open)});
}

// A device that comes back gets the next number on the bus, and its fields start anew.
void VirtualKernel::State::plug_nodes(int attachment) {
  ++bus_numbers;
  for (const auto& [usb, paths] : devices.at(attachment)) {
    const auto interface = std::make_shared<HidInterface>(
        usb, paths.phys, bus_numbers,
        [this](std::string line) { transfers.push_back(std::move(line)); });
    plug(attachment, paths.hiddev, [interface] { return std::make_shared<HiddevNode>(interface); });
    plug(attachment, paths.hidraw, [interface] { return std::make_shared<HidrawNode>(interface); });
    plug(attachment, paths.event, [interface] { return std::make_shared<EventNode>(interface); });
  }
}

// A request that is going on keeps its node, which the open file owns.
void VirtualKernel::State::drop_nodes(int attachment) {
  for (auto& [handle, file] : files) {
    if (file.attachment == attachment) file.node->unplug();
  }
  std::erase_if(nodes, [&](const PluggedNode& node) { return node.attachment == attachment; });
}

const PluggedNode* VirtualKernel::State::find(std::string_view path) const {
  const auto found = std::ranges::find(nodes, path, &PluggedNode::path);
  return found == nodes.end() ? nullptr : &*found;
}

OpenFile* VirtualKernel::State::file(int handle) {
  const auto found = files.find(handle);
  return found == files.end() ? nullptr : &found->second;
}

// The error that the script has for this call, if it has one.
std::optional<int> VirtualKernel::State::strike(Call call, std::string_view path,
                                                unsigned long request) {
  for (Fault& fault : faults) {
    if (fault.call != call || fault.path != path || fault.times == 0) continue;
    if (fault.request != without_size(request)) continue;
    if (fault.times > 0) --fault.times;
    return -fault.error;
  }
  return std::nullopt;
}

// A device that is gone fails by itself.
std::optional<int> VirtualKernel::State::strike(Call call, const OpenFile& file,
                                                unsigned long request) {
  return file.node->gone() ? std::nullopt : strike(call, file.path, request);
}

void VirtualKernel::State::report(const std::string& line, ssize_t result) {
  const std::vector<std::string> moved = std::exchange(transfers, {});
  if (!trace) return;
  trace(line + outcome(result));
  for (const std::string& transfer : moved) trace(transfer);
}

VirtualKernel::VirtualKernel() : state_(std::make_unique<State>()) {}
VirtualKernel::~VirtualKernel() = default;

int VirtualKernel::attach(std::vector<PluggedInterface> interfaces) {
  const int attachment = ++state_->attachments;
  state_->devices.emplace(attachment, std::move(interfaces));
  state_->plug_nodes(attachment);
  return attachment;
}

int VirtualKernel::attach(HidDevice& device, HidNodes nodes) {
  return attach({PluggedInterface{device, std::move(nodes)}});
}

int VirtualKernel::attach(SerialDevice& device, Path path) {
  const int attachment = ++state_->attachments;
  // All who open a port share its settings.
  state_->plug(attachment, std::move(path),
               [node = std::make_shared<SerialNode>(device)] { return node; });
  return attachment;
}

void VirtualKernel::unplug(int attachment) {
  state_->drop_nodes(attachment);
  state_->devices.erase(attachment);
}

void VirtualKernel::replug(int attachment) {
  if (!state_->devices.contains(attachment)) return;
  state_->drop_nodes(attachment);
  state_->plug_nodes(attachment);
}

bool VirtualKernel::owns(std::string_view path) const { return state_->find(path) != nullptr; }

std::vector<Path> VirtualKernel::node_paths() const {
  std::vector<Path> paths;
  for (const PluggedNode& node : state_->nodes) paths.push_back(node.path);
  return paths;
}

int VirtualKernel::open(std::string_view path, int flags) {
  const std::string name(path);
  const PluggedNode* plugged = state_->find(path);
  std::shared_ptr<DeviceNode> node;
  int result = -ENOENT;
  if (const std::optional<int> fault = state_->strike(Call::kOpen, path)) {
    result = *fault;
  } else if (plugged != nullptr) {
    node = plugged->open();
    result = node->open();
  }
  if (result == 0) {
    result = ++state_->handles;
    state_->files[result] = {name, std::move(node), plugged->attachment, flags & O_ACCMODE};
  }
  state_->report("open " + name + " " + open_flags(flags), result);
  return result;
}

int VirtualKernel::close(int handle) {
  const OpenFile* file = state_->file(handle);
  if (file == nullptr) return -EBADF;
  if (!file->node->gone()) file->node->close();
  state_->report("close " + file->path, 0);
  state_->files.erase(handle);
  return 0;
}

int VirtualKernel::ioctl(int handle, unsigned long request, void* argument) {
  OpenFile* file = state_->file(handle);
  if (file == nullptr) return -EBADF;
  // Named before it is served: a request may overwrite what it was asked with.
  const std::string line = "ioctl " + file->node->describe(request, argument);
  const std::optional<int> fault = state_->strike(Call::kIoctl, *file, request);
  const int result = fault ? *fault : file->node->ioctl(request, argument);
  state_->report(line, result);
  return result;
}

ssize_t VirtualKernel::write(int handle, std::span<const uint8_t> bytes) {
  OpenFile* file = state_->file(handle);
  if (file == nullptr || file->access == O_RDONLY) return -EBADF;
  const std::optional<int> fault = state_->strike(Call::kWrite, *file);
  const ssize_t result = fault ? *fault : file->node->write(bytes);
  state_->report("write " + file->path + byte_run(bytes), result);
  return result;
}

ssize_t VirtualKernel::read(int handle, std::span<uint8_t> room) {
  OpenFile* file = state_->file(handle);
  if (file == nullptr || file->access == O_WRONLY) return -EBADF;
  const std::optional<int> fault = state_->strike(Call::kRead, *file);
  const ssize_t result = fault ? *fault : file->node->read(room);
  std::string line = "read " + file->path + " " + std::to_string(room.size());
  if (result >= 0) line += byte_run(room.first(static_cast<size_t>(result)));
  state_->report(line, result);
  return result;
}

int VirtualKernel::poll(int handle) {
  const OpenFile* file = state_->file(handle);
  return file == nullptr ? POLLNVAL : file->node->poll();
}

void VirtualKernel::fail_open(Path path, int error, int times) {
  state_->faults.push_back({Call::kOpen, std::move(path), 0, error, times});
}

void VirtualKernel::fail_ioctl(Path path, unsigned long request, int error, int times) {
  state_->faults.push_back({Call::kIoctl, std::move(path), without_size(request), error, times});
}

void VirtualKernel::fail_read(Path path, int error, int times) {
  state_->faults.push_back({Call::kRead, std::move(path), 0, error, times});
}

void VirtualKernel::fail_write(Path path, int error, int times) {
  state_->faults.push_back({Call::kWrite, std::move(path), 0, error, times});
}

void VirtualKernel::set_trace(std::function<void(std::string)> trace) {
  state_->trace = std::move(trace);
}

}  // namespace zelkora::sim
