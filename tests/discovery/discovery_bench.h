// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench for the walks over /dev: interfaces that can be asked who they are, and nodes whose place
// in the order of their directory is known.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/bench.h"

namespace zelkora::test {

// A HID interface that says who it is and has no reports.
class NamedInterface final : public sim::HidDevice {
 public:
  explicit NamedInterface(sim::UsbIdentity identity) : identity_(std::move(identity)) {}

  const sim::UsbIdentity& identity() const override { return identity_; }
  std::span<const sim::FeatureReport> feature_reports() const override { return {}; }
  bool set_feature(uint8_t, std::span<const uint8_t>) override { return false; }
  std::optional<std::vector<uint8_t>> get_feature(uint8_t) override { return std::nullopt; }

 private:
  sim::UsbIdentity identity_;
};

// An identity whose kernel name is exactly this text.
inline sim::UsbIdentity named(uint16_t vendor, uint16_t product, const std::string& name) {
  const size_t blank = name.find(' ');
  if (blank == std::string::npos) {
    // The blank between the two parts comes behind a NUL and is no part of the text.
    return {vendor, product, name + '\0', ""};
  }
  return {vendor, product, name.substr(0, blank), name.substr(blank + 1)};
}

inline const sim::UsbIdentity kPctIdentity = {0x2575, 0x8753, "Zelkora", "Virtual PCT"};
inline const sim::UsbIdentity kResistiveIdentity = {0x3A4C, 0x1688, "Zelkora", "Virtual Resistive"};
inline const sim::UsbIdentity kStrangeIdentity = {0xFEDC, 0xBA98, "Some", "Keyboard"};

// The level 3 message as it is printed.
inline std::string trace_message(const std::string& text) { return "zelkora DD:" + text; }

inline Lines trace_messages(const Lines& texts) {
  Lines lines;
  std::ranges::transform(texts, std::back_inserter(lines), trace_message);
  return lines;
}

// The names in a directory that hold a text, in the order in which the directory gives them.
inline Lines listed(const std::string& directory, std::string_view part) {
  Lines names;
  DIR* stream = opendir(directory.c_str());
  while (const dirent* entry = readdir(stream)) {
    if (std::string_view(entry->d_name).find(part) != std::string_view::npos) {
      names.emplace_back(entry->d_name);
    }
  }
  closedir(stream);
  return names;
}

// Closes standard input, so that the next descriptor opened is 0.
class WithoutStandardInput {
 public:
  WithoutStandardInput() : saved_(::dup(STDIN_FILENO)) { ::close(STDIN_FILENO); }
  ~WithoutStandardInput() {
    ::close(STDIN_FILENO);
    if (saved_ < 0) return;
    ::dup2(saved_, STDIN_FILENO);
    ::close(saved_);
  }
  WithoutStandardInput(const WithoutStandardInput&) = delete;
  WithoutStandardInput& operator=(const WithoutStandardInput&) = delete;

 private:
  int saved_;
};

class DiscoveryBench : public Bench {
 protected:
  void SetUp() override {
    Bench::SetUp();
    host.debug = 1;
    DbgFlag = 1;
  }

  // Makes count nodes, stem0, stem1 and so on, and returns their paths in the order in which a
  // walk over their directory meets them. Each must be given an interface with plug().
  Lines slots(const std::string& stem, size_t count) {
    std::vector<int> attachments;
    for (size_t i = 0; i < count; ++i) {
      attachments.push_back(
          attach(interface(kStrangeIdentity), nodes_of("", stem + std::to_string(i))));
    }
    for (const int attachment : attachments) kernel.unplug(attachment);
    const size_t slash = stem.rfind('/');
    Lines paths = listed(stem.substr(0, slash), stem.substr(slash + 1));
    for (std::string& path : paths) path.insert(0, stem, 0, slash + 1);
    EXPECT_EQ(paths.size(), count);
    return paths;
  }

  // Puts an interface behind a node that slots() made.
  int plug(const std::string& path, const sim::UsbIdentity& identity, const std::string& phys) {
    return kernel.attach(interface(identity), nodes_of(phys, path));
  }
  Panel& plug_resistive(const std::string& path, const std::string& phys) {
    Panel& panel = panels_.emplace_back(kResistiveIdentity);
    panel.nodes = nodes_of(phys, path);
    panel.attachment = kernel.attach(panel.usb, panel.nodes);
    return panel;
  }

  // Makes one node with an interface behind it; what it is, its path says.
  int add(const std::string& path, const sim::UsbIdentity& identity,
          const std::string& phys = "usb-0000:00:14.0-1/input0") {
    return attach(interface(identity), nodes_of(phys, path));
  }
  void remove(const std::string& path, int attachment) {
    kernel.unplug(attachment);
    EXPECT_EQ(sim::remove_node_placeholder(path), "");
  }
  // The hiddev and the hidraw node of one PCT controller.
  void add_pct(const std::string& number = "0",
               const std::string& phys = "usb-0000:00:14.0-1/input0") {
    attach(interface(kPctIdentity), {.phys = phys,
                                     .hiddev = "/dev/usb/hiddev" + number,
                                     .hidraw = "/dev/hidraw" + number,
                                     .event = ""});
  }
  Panel& add_resistive(const PanelOptions& options = {}) {
    write_resistive_list();
    return attach_resistive(options);
  }
  static void write_pct_list(const std::string& text = "Virtual PCT\n") {
    write_file(data_file("manuflist.conf"), text);
  }

  // The messages whose text behind the prefix begins like one of these.
  Lines messages_of(std::initializer_list<std::string_view> beginnings) const {
    Lines lines;
    std::ranges::copy_if(messages(), std::back_inserter(lines), [&](const std::string& line) {
      return std::ranges::any_of(beginnings, [&](std::string_view beginning) {
        return line.starts_with(trace_message(std::string(beginning)));
      });
    });
    return lines;
  }
  Lines node_calls() const { return trace_of({"open", "close"}); }

 private:
  static sim::HidNodes nodes_of(const std::string& phys, const std::string& path) {
    sim::HidNodes nodes{.phys = phys, .hiddev = "", .hidraw = "", .event = ""};
    if (path.starts_with("/dev/input/")) {
      nodes.event = path;
    } else if (path.find("hidraw") != std::string::npos) {
      nodes.hidraw = path;
    } else {
      nodes.hiddev = path;
    }
    return nodes;
  }
  NamedInterface& interface(const sim::UsbIdentity& identity) {
    return interfaces_.emplace_back(identity);
  }

  std::deque<NamedInterface> interfaces_;
  std::deque<Panel> panels_;
};

}  // namespace zelkora::test
