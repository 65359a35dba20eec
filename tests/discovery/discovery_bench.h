// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench for the walks over /dev: PCT panels of any identity, and nodes whose place in the order of
// their directory is known.
#pragma once

#include <dirent.h>
#include <unistd.h>

#include <algorithm>
#include <deque>
#include <functional>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "pct_controller.h"
#include "support/bench.h"

namespace zelkora::test {

// A HID interface with a PCT controller behind it. Whether a node is taken for a PCT panel is up to
// its identity; as anything else it is a stranger that answers nothing.
class PctInterface final : public sim::HidDevice {
 public:
  PctInterface(uint32_t firmware, sim::UsbIdentity identity)
      : controller(firmware, std::move(identity)) {}

  const sim::UsbIdentity& identity() const override { return controller.identity(); }
  std::span<const sim::FeatureReport> feature_reports() const override {
    return controller.feature_reports();
  }
  bool set_feature(uint8_t id, std::span<const uint8_t> payload) override {
    return !(stalls && stalls(id)) && controller.set_feature(id, payload);
  }
  std::optional<std::vector<uint8_t>> get_feature(uint8_t id) override {
    if (stalls && stalls(id)) return std::nullopt;
    return controller.get_feature(id);
  }

  sim::PctController controller;
  // Asked at every request: whether this one stalls before it comes to the controller.
  std::function<bool(uint8_t id)> stalls;
};

struct PctPanel {
  PctPanel(uint32_t firmware, sim::UsbIdentity identity)
      : usb(firmware, std::move(identity)), controller(usb.controller) {}

  PctInterface usb;
  sim::PctController& controller;
  sim::HidNodes nodes;
  int attachment = 0;
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

inline std::string bytes_of(const TouchDeviceEntry& entry) {
  return {reinterpret_cast<const char*>(&entry), sizeof entry};
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
    for (const char* name : {".pctuniq", ".pctpbin", ".restpbin"}) {
      answer_command({.command = "chmod 777 \"" + data_file(name) + "\""});
    }
  }

  // Makes count nodes, stem0, stem1 and so on, and returns their paths in the order in which a
  // walk over their directory meets them. Each must be given an interface with plug().
  Lines slots(const std::string& stem, size_t count) {
    std::vector<PctPanel*> strangers;
    for (size_t i = 0; i < count; ++i) {
      strangers.push_back(&add(stem + std::to_string(i), kStrangeIdentity, ""));
    }
    for (const PctPanel* stranger : strangers) kernel.unplug(stranger->attachment);
    const size_t slash = stem.rfind('/');
    Lines paths = listed(stem.substr(0, slash), stem.substr(slash + 1));
    for (std::string& path : paths) path.insert(0, stem, 0, slash + 1);
    EXPECT_EQ(paths.size(), count);
    return paths;
  }

  // Puts an interface behind a node that slots() made.
  PctPanel& plug(const std::string& path, const sim::UsbIdentity& identity, const std::string& phys,
                 uint32_t firmware = sim::PctController::kFirmware8753) {
    PctPanel& panel = make_pct(firmware, identity, nodes_of(phys, path));
    panel.attachment = kernel.attach(panel.usb, panel.nodes);
    return panel;
  }
  Panel& plug_resistive(const std::string& path, const std::string& phys) {
    Panel& panel = panels_.emplace_back(kResistiveIdentity);
    panel.nodes = nodes_of(phys, path);
    panel.attachment = kernel.attach(panel.usb, panel.nodes);
    return panel;
  }

  // Makes one node with an interface behind it; what kind of node, its path says.
  PctPanel& add(const std::string& path, const sim::UsbIdentity& identity,
                const std::string& phys = "usb-0000:00:14.0-1/input0",
                uint32_t firmware = sim::PctController::kFirmware8753) {
    PctPanel& panel = make_pct(firmware, identity, nodes_of(phys, path));
    panel.attachment = attach(panel.usb, panel.nodes);
    return panel;
  }
  void remove(const PctPanel& panel) {
    kernel.unplug(panel.attachment);
    for (const std::string& path : {panel.nodes.hiddev, panel.nodes.hidraw, panel.nodes.event}) {
      if (path.empty()) continue;
      EXPECT_EQ(sim::remove_node_placeholder(path), "");
    }
  }
  // The hiddev and the hidraw node of one PCT controller.
  PctPanel& add_pct(const std::string& number = "0",
                    const std::string& phys = "usb-0000:00:14.0-1/input0") {
    PctPanel& panel = make_pct(sim::PctController::kFirmware8753, kPctIdentity,
                               {.phys = phys,
                                .hiddev = "/dev/usb/hiddev" + number,
                                .hidraw = "/dev/hidraw" + number,
                                .event = ""});
    panel.attachment = attach(panel.usb, panel.nodes);
    return panel;
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

  PctPanel& make_pct(uint32_t firmware, const sim::UsbIdentity& identity, sim::HidNodes nodes) {
    PctPanel& panel = pct_panels_.emplace_back(firmware, identity);
    panel.nodes = std::move(nodes);
    return panel;
  }

  std::deque<PctPanel> pct_panels_;
  std::deque<Panel> panels_;
};

}  // namespace zelkora::test
