// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A bench with a projected-capacitive controller that answers only what a test tells it to, over
// either carrier and in either report layout.
#pragma once

#include <linux/hidraw.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <deque>
#include <functional>

#include "transport/fake_hid.h"

namespace zelkora::test {

class ScriptedPct final : public sim::HidDevice {
 public:
  const sim::UsbIdentity& identity() const override { return identity_; }
  std::span<const sim::FeatureReport> feature_reports() const override { return reports; }

  bool set_feature(uint8_t id, std::span<const uint8_t> payload) override {
    received.emplace_back(id, Bytes(payload.begin(), payload.end()));
    if (on_command) on_command(received.back().second);
    return true;
  }

  std::optional<Bytes> get_feature(uint8_t id) override {
    if (std::deque<std::optional<Bytes>>& next = script[id]; !next.empty()) {
      const std::optional<Bytes> answer = next.front();
      next.pop_front();
      return answer;
    }
    if (!answers.contains(id)) return std::nullopt;
    return answers[id];
  }

  std::vector<sim::FeatureReport> reports = {
      {0x06, 63}, {0x07, 63}, {0x08, 63}, {0xF2, 63}, {0xF3, 63}};
  // Payloads by report id: those to come, one for each request, then the standing one. The device
  // stalls where there is none.
  std::map<uint8_t, std::deque<std::optional<Bytes>>> script;
  std::map<uint8_t, Bytes> answers;
  std::vector<std::pair<uint8_t, Bytes>> received;
  std::function<void(const Bytes& payload)> on_command;

 private:
  sim::UsbIdentity identity_{0x2575, 0x8753, "Zelkora", "Scripted"};
};

// How a controller is spoken to: HidRaw and IsLegacy.
struct Way {
  bool hidraw;
  int family;
  bool is_8752() const { return family == ZELKORA_FAMILY_8752; }
};

inline constexpr Way kWays[] = {{true, 0},  {true, 1},  {true, 2},  {true, 3},
                                {false, 0}, {false, 1}, {false, 2}, {false, 3}};

inline std::string way_name(const testing::TestParamInfo<Way>& info) {
  return std::string(info.param.hidraw ? "Hidraw" : "Hiddev") + "Family" +
         std::to_string(info.param.family);
}

inline std::string report_line(const char* call, unsigned id, Bytes payload) {
  while (!payload.empty() && payload.back() == 0) payload.pop_back();
  std::string line = std::string(call) + " " + std::to_string(id) + ":";
  for (const uint8_t byte : payload) {
    char digits[8];
    std::snprintf(digits, sizeof digits, " %02X", byte);
    line += digits;
  }
  return line;
}

// Debug messages as they are printed.
inline Lines debug_messages(std::initializer_list<std::string> texts) {
  Lines lines;
  for (const std::string& text : texts) lines.push_back("zelkora DD:" + text);
  return lines;
}

inline Lines repeated(size_t count, const Lines& lines) {
  Lines all;
  for (size_t i = 0; i < count; ++i) all.insert(all.end(), lines.begin(), lines.end());
  return all;
}

class PctBench : public Bench {
 protected:
  static constexpr char kHiddev[] = "/dev/usb/hiddev7";
  static constexpr char kHidraw[] = "/dev/hidraw7";

  void SetUp() override {
    Bench::SetUp();
    host.debug = DbgFlag = 1;
    attach(device, {.phys = "usb-1/input0", .hiddev = kHiddev, .hidraw = kHidraw, .event = ""});
  }

  void TearDown() override {
    if (descriptor_ >= 0) ::close(descriptor_);
    Bench::TearDown();
  }

  static const char* node() { return HidRaw == 1 ? kHidraw : kHiddev; }

  // The controller as entry `index`, not opened.
  static void set_entry(const Way& way, int index = 0) {
    TouchDeviceEntry& entry = TouchDevice[index];
    HidRaw = way.hidraw ? 1 : 0;
    std::snprintf(entry.Name, sizeof entry.Name, "%s", node());
    entry.Type = ZELKORA_TYPE_PCT;
    entry.HidRaw = HidRaw;
    entry.IsLegacy = way.family;
  }

  // The controller on fd, in normal mode.
  void open_way(const Way& way) {
    HidRaw = way.hidraw ? 1 : 0;
    IsLegacy = way.family;
    fd = descriptor_ = ::open(node(), O_RDONLY);
    // The kernel fetches all reports at the first look at a usage: let it do that now.
    if (!way.hidraw) ::ioctl(fd, HIDIOCINITREPORT, 0);
    clear_trace();
  }

  // The device mode follows its command, but for so many times.
  void follow_modes(int refusals = 0) {
    answers_mode(0x01);
    device.on_command = [this, refusals](const Bytes& payload) mutable {
      if (payload[0] != 0x91) return;
      if (refusals-- <= 0) answers_mode(payload[4]);
    };
  }

  void answers_mode(uint8_t mode) { device.answers[0x07] = {0xAA, 0xBB, 0xCC, mode, 0xDD}; }

  // The device has no report of that id any more.
  void forget_report(uint8_t id) {
    std::erase_if(device.reports, [id](const sim::FeatureReport& r) { return r.id == id; });
    device.answers.erase(id);
  }

  void fail_sends(int times) {
    kernel.fail_ioctl(node(), HidRaw == 1 ? HIDIOCSFEATURE(0) : HIDIOCSREPORT, EIO, times);
  }

  // --- the trace of one report, as the carrier makes it ---
  static Lines sent(const Bytes& command) {
    const unsigned id = command[0];
    const Bytes payload(command.begin() + 1, command.end());
    const std::string arrival = report_line("set_report", id, payload);
    if (HidRaw == 1) return {"ioctl HIDIOCSFEATURE 64", arrival};
    const Bytes values = padded(payload, 63);
    return joined(
        {prepared(id),
         usages_set(id, {values.begin(), values.end()}),
         {"ioctl HIDIOCSREPORT type=3 id=" + std::to_string(id), arrival, "usleep 50000"}});
  }

  static Lines received(unsigned id, const Bytes& payload, unsigned length = 64) {
    const std::string answer = report_line("get_report", id, payload);
    if (HidRaw == 1) return {"ioctl HIDIOCGFEATURE " + std::to_string(length), answer};
    return joined({prepared(id),
                   {"ioctl HIDIOCGREPORT type=3 id=" + std::to_string(id), answer},
                   usages_read(id, 63)});
  }

  // Everything but the messages.
  Lines wire() const {
    return trace_of({"open", "close", "ioctl", "set_report", "get_report", "usleep"});
  }
  // The same without the requests that carry the reports.
  Lines exchanges() const {
    return trace_of({"open", "close", "set_report", "get_report", "usleep"});
  }
  // A wait of the carrier's own after each report sent.
  static Lines settled() { return HidRaw == 1 ? Lines() : Lines{"usleep 50000"}; }

  ScriptedPct device;

 private:
  static Lines prepared(unsigned id) {
    const std::string number = std::to_string(id);
    return {"ioctl HIDIOCGREPORTINFO type=3 id=" + number,
            "ioctl HIDIOCGFIELDINFO type=3 id=" + number + " field=0"};
  }

  int descriptor_ = -1;
};

class PctWays : public PctBench, public testing::WithParamInterface<Way> {
 protected:
  void open_way() { PctBench::open_way(GetParam()); }
  bool is_8752() const { return GetParam().is_8752(); }
};

// The block that the host's scheme makes of plain bytes, with its checksum.
inline Bytes encoded_block(const Bytes& plain) {
  Bytes block;
  unsigned sum = 0x6666;
  for (const uint8_t byte : plain) {
    block.push_back(byte ^ 0x5A);
    sum += block.back();
  }
  block.push_back(static_cast<uint8_t>(sum));
  block.push_back(static_cast<uint8_t>(sum >> 8));
  return block;
}

// What PrintData() prints of these bytes.
inline std::string dump(const std::string& label, const Bytes& bytes) {
  std::string text = label + "---start\n";
  for (size_t i = 0; i < bytes.size(); ++i) {
    char digits[8];
    std::snprintf(digits, sizeof digits, "0x%02x%c", bytes[i], i % 8 == 7 ? '\n' : ' ');
    text += digits;
  }
  return text + label + "---End\n";
}

inline Bytes head(const Bytes& bytes, size_t count) { return padded(bytes, count); }

inline Bytes joined_bytes(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

}  // namespace zelkora::test
