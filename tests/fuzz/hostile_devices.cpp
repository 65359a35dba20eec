// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hostile_devices.h"

#include <algorithm>

namespace zelkora::fuzz {
namespace {

constexpr uint8_t kFirstStall = 0x40;
constexpr uint8_t kFirstForgery = 0x60;

// What a byte says about the size of a report.
constexpr unsigned kUsageCounts[] = {63, 0, 1, 2, 62, 64, 65, 255, 256, 512, 513, 1023, 1024};

}  // namespace

bool HostileAnswers::takes() {
  const uint8_t act = input_.byte();
  return act < kFirstStall || act >= kFirstForgery;
}

std::optional<std::vector<uint8_t>> HostileAnswers::spoil(std::vector<uint8_t> honest) {
  const uint8_t act = input_.byte();
  if (act >= kFirstForgery) return input_.bytes(act - kFirstForgery);
  if (act >= kFirstStall) return std::nullopt;
  std::ranges::copy(input_.bytes(std::min<size_t>(act, honest.size())), honest.begin());
  return honest;
}

HostileHid::HostileHid(sim::HidDevice& honest, FuzzInput& input)
    : honest_(honest),
      answers_(input),
      identity_(honest.identity()),
      reports_(honest.feature_reports().begin(), honest.feature_reports().end()) {
  usb_faults.unplugs_after = kRequests;
}

void HostileHid::reshape(FuzzInput& input) {
  for (sim::FeatureReport& report : reports_) {
    const uint8_t shape = input.byte();
    report.usage_count = kUsageCounts[shape / 2 % std::size(kUsageCounts)];
    if (shape % 2 != 0) {
      report.logical_minimum = -128;
      report.logical_maximum = 127;
    }
  }
}

bool HostileHid::set_feature(uint8_t id, std::span<const uint8_t> payload) {
  // The controller knows reports of its own size alone.
  std::vector<uint8_t> fitting(payload.begin(), payload.end());
  fitting.resize(sim::PctController::kUsageCount);
  return answers_.takes() && honest_.set_feature(id, fitting);
}

std::optional<std::vector<uint8_t>> HostileHid::get_feature(uint8_t id) {
  return answers_.spoil(honest_.get_feature(id).value_or(std::vector<uint8_t>()));
}

std::vector<uint8_t> HostileSerial::transmit(size_t limit) {
  std::vector<uint8_t> bytes =
      answers_.spoil(honest_.transmit(limit)).value_or(std::vector<uint8_t>());
  bytes.resize(std::min(bytes.size(), limit));
  return bytes;
}

}  // namespace zelkora::fuzz
