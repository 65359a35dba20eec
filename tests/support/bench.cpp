// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "bench.h"

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace zelkora::test {
namespace {

namespace fs = std::filesystem;

void empty_directory(const fs::path& directory) {
  for (const fs::directory_entry& entry : fs::directory_iterator(directory)) {
    fs::remove_all(entry.path());
  }
}

bool begins_with_words(std::string_view line, std::string_view words) {
  if (!line.starts_with(words)) return false;
  return line.size() == words.size() || line[words.size()] == ' ' || line[words.size()] == ':';
}

void copy_text(std::span<char> target, const std::string& text) {
  std::snprintf(target.data(), target.size(), "%s", text.c_str());
}

}  // namespace

Bench::Bench() {
  g_host = {};
  g_x = {};
}
Bench::~Bench() = default;

void Bench::SetUp() {
  reset_library_state();
  empty_directory(sim::kDataDirectory);
  empty_directory(fs::current_path());
  descriptors_before_ = open_descriptors();
}

void Bench::TearDown() {
  for (const int descriptor : owned_) {
    if (seams_.serves(descriptor)) ::close(descriptor);
  }
  const std::vector<int> leaked = leaked_descriptors();
  EXPECT_EQ(leaked.size(), expected_leaks_) << "descriptors opened by this test and left open";
  EXPECT_EQ(seams_.open_pipes(), 0U) << "pipes without a pclose()";
  EXPECT_EQ(x.held, 0) << "displays and answers of the X server that were not given back";
  for (const int descriptor : leaked) {
    // Those of files belong to streams, which close them at the end of the program.
    if (seams_.serves(descriptor)) ::close(descriptor);
  }
  for (const std::string& path : shown_nodes_) {
    if (kernel.owns(path)) sim::remove_node_placeholder(path);
  }
}

void Bench::show(const std::string& path) {
  if (path.empty()) return;
  ASSERT_EQ(sim::make_node_placeholder(path), "");
  shown_nodes_.push_back(path);
  // A node that was there once may be looked for after it went.
  expect_absent(path);
}

int Bench::attach(sim::HidDevice& device, const sim::HidNodes& nodes) {
  for (const std::string& path : {nodes.hiddev, nodes.hidraw, nodes.event}) show(path);
  return kernel.attach(device, nodes);
}

Panel& Bench::attach_resistive(const PanelOptions& options) {
  const std::string number = std::to_string(panels_.size());
  const std::string port = std::to_string(panels_.size() + 1);
  Panel& panel = *panels_.emplace_back(std::make_unique<Panel>(options.identity));
  panel.nodes = {
      .phys = options.phys.value_or("usb-0000:00:14.0-" + port + "/input0"),
      .hiddev = options.hiddev.value_or("/dev/usb/hiddev" + number),
      .hidraw = options.hidraw.value_or("/dev/hidraw" + number),
      .event = options.event.value_or("/dev/input/event" + number),
  };
  panel.attachment = attach(panel.usb, panel.nodes);
  panel.usb.set_on_unplug([this, &panel] { unplug(panel); });
  return panel;
}

SerialPanel& Bench::attach_serial(const std::string& path) {
  SerialPanel& panel = *serial_panels_.emplace_back(std::make_unique<SerialPanel>());
  panel.path = path;
  show(path);
  panel.attachment = kernel.attach(panel.port, path);
  return panel;
}

void Bench::unplug(const Panel& panel) {
  kernel.unplug(panel.attachment);
  for (const std::string& path : {panel.nodes.hiddev, panel.nodes.hidraw, panel.nodes.event}) {
    if (path.empty()) continue;
    EXPECT_EQ(sim::remove_node_placeholder(path), "");
  }
}

void Bench::unplug(const SerialPanel& panel) {
  kernel.unplug(panel.attachment);
  EXPECT_EQ(sim::remove_node_placeholder(panel.path), "");
}

void Bench::write_resistive_list(const std::string& text) {
  write_file(data_file("rmanuflist.conf"), text);
  // A panel that is found gets a stored record.
  answer_command({.command = "chmod 777 \"" + data_file(".restpbin") + "\""});
}

Panel& Bench::open_resistive(const PanelOptions& options) {
  Panel& panel = attach_resistive(options);
  TouchDeviceEntry& entry = TouchDevice[0];
  copy_text(entry.Name, panel.nodes.hiddev);
  copy_text(entry.Phys, panel.nodes.phys);
  entry.Type = ZELKORA_TYPE_RESISTIVE_USB;
  entry.VID = panel.usb.identity().vendor;
  entry.PID = panel.usb.identity().product;
  std::snprintf(entry.ID, sizeof entry.ID, "%04X_%04X", entry.VID, entry.PID);
  DeviceNumber = 1;
  EXPECT_EQ(OpenTouchDevice(0), ZELKORA_TYPE_RESISTIVE_USB);
  own_descriptor(fd);
  clear_trace();
  return panel;
}

SerialPanel& Bench::open_serial(const std::string& path) {
  SerialPanel& panel = attach_serial(path);
  fd = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK);
  device_type = ZELKORA_TYPE_RESISTIVE_SERIAL;
  own_descriptor(fd);
  clear_trace();
  return panel;
}

Lines Bench::trace_of(std::initializer_list<std::string_view> beginnings) const {
  Lines lines;
  std::ranges::copy_if(seams_.trace, std::back_inserter(lines), [&](const std::string& line) {
    return std::ranges::any_of(
        beginnings, [&](std::string_view words) { return begins_with_words(line, words); });
  });
  return lines;
}

void Bench::clear_trace() {
  seams_.trace.clear();
  seams_.messages.clear();
}

std::vector<int> Bench::open_descriptors() {
  std::vector<int> numbers;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc/self/fd")) {
    numbers.push_back(std::atoi(entry.path().filename().c_str()));
  }
  // The walk itself had one open, which is gone by now.
  std::erase_if(numbers, [](int number) { return ::fcntl(number, F_GETFD) < 0; });
  std::ranges::sort(numbers);
  return numbers;
}

std::vector<int> Bench::leaked_descriptors() const {
  std::vector<int> leaked;
  std::ranges::set_difference(open_descriptors(), descriptors_before_, std::back_inserter(leaked));
  std::erase_if(leaked, [&](int number) { return std::ranges::count(owned_, number) > 0; });
  return leaked;
}

std::string captured_stdout(const std::function<void()>& action) {
  std::fflush(stdout);
  const int saved = ::dup(STDOUT_FILENO);
  const int capture = ::memfd_create("stdout", 0);
  ::dup2(capture, STDOUT_FILENO);
  Seams* seams = Seams::active();
  if (seams != nullptr) seams->show_output = true;
  action();
  if (seams != nullptr) seams->show_output = false;
  std::fflush(stdout);
  ::dup2(saved, STDOUT_FILENO);
  ::close(saved);

  std::string text(static_cast<size_t>(::lseek(capture, 0, SEEK_END)), '\0');
  EXPECT_EQ(::pread(capture, text.data(), text.size(), 0), static_cast<ssize_t>(text.size()));
  ::close(capture);
  return text;
}

void write_file(const std::string& path, std::string_view text) {
  if (const fs::path parent = fs::path(path).parent_path(); !parent.empty()) {
    fs::create_directories(parent);
  }
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text << std::flush;
  EXPECT_TRUE(file.good()) << "cannot write " << path;
}

std::string read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.good()) << "cannot read " << path;
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string data_file(std::string_view name) {
  return std::string(sim::kDataDirectory) + "/" + std::string(name);
}

}  // namespace zelkora::test
