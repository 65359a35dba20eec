// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Controllers that answer what the input says. Each request takes a byte of it:
//   0x00..0x3F  the honest answer, with this many of its bytes overwritten by the input
//   0x40..0x5F  the request stalls; on a serial port nothing comes
//   0x60..0xFF  an answer of so many bytes less 0x60, all from the input
// Behind the input's end the answers are honest, so what an input has to say can lead deep. A
// controller is gone after kRequests requests, so no input goes on for ever.
#pragma once

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "fuzz_input.h"
#include "pct_controller.h"
#include "resistive_controller.h"

namespace zelkora::fuzz {

class HostileAnswers {
 public:
  explicit HostileAnswers(FuzzInput& input) : input_(input) {}

  // Whether a report that the host sends arrives.
  bool takes();
  // What becomes of an answer; nothing when it stalls.
  std::optional<std::vector<uint8_t>> spoil(std::vector<uint8_t> honest);

 private:
  FuzzInput& input_;
};

class HostileHid final : public sim::HidDevice {
 public:
  static constexpr unsigned kRequests = 2000;

  HostileHid(sim::HidDevice& honest, FuzzInput& input);

  const sim::UsbIdentity& identity() const override { return identity_; }
  std::span<const sim::FeatureReport> feature_reports() const override { return reports_; }
  bool set_feature(uint8_t id, std::span<const uint8_t> payload) override;
  std::optional<std::vector<uint8_t>> get_feature(uint8_t id) override;

  void set_identity(sim::UsbIdentity identity) { identity_ = std::move(identity); }
  // Reports of 0 to 1024 usages, signed or not, as the input says: a byte for each report.
  void reshape(FuzzInput& input);

 private:
  sim::HidDevice& honest_;
  HostileAnswers answers_;
  sim::UsbIdentity identity_;
  std::vector<sim::FeatureReport> reports_;
};

class HostileSerial final : public sim::SerialDevice {
 public:
  HostileSerial(sim::SerialDevice& honest, FuzzInput& input) : honest_(honest), answers_(input) {}

  void receive(std::span<const uint8_t> bytes) override { honest_.receive(bytes); }
  std::vector<uint8_t> transmit(size_t limit) override;
  void discard() override { honest_.discard(); }

 private:
  sim::SerialDevice& honest_;
  HostileAnswers answers_;
};

}  // namespace zelkora::fuzz
