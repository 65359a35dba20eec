// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A resistive touch controller as pure logic: one command frame in, one reply frame out.
// The same model answers over USB (ResistiveUsb) and over a serial port (ResistiveSerial).
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "command_frames.h"
#include "hid_device.h"
#include "serial_device.h"

namespace zelkora::sim {

// What goes wrong, and how often. Counters tick down with each command they spoil.
struct ResistiveFaults {
  bool silent = false;             // no command is answered
  unsigned silent_commands = 0;    // this many commands are not answered
  unsigned bad_acknowledges = 0;   // this many acknowledges carry "1" for "0"
  unsigned wrong_echoes = 0;       // this many page reads echo another page number
  std::optional<uint16_t> stores;  // every value written is stored as this one
  // On a serial port only.
  bool streaming = false;         // coordinate reports instead of replies
  unsigned streamed_reports = 0;  // this many reads give coordinate reports instead of replies
  unsigned failed_opens = 0;      // this many times the port cannot be opened
  bool no_hardware = false;       // the port has a node and no UART
};

class ResistiveController {
 public:
  static constexpr unsigned kValueCount = 256;
  static constexpr unsigned kPageSize = 32;
  static constexpr unsigned kPageCount = 4;

  ResistiveController();

  // The reply to one command frame; empty when the controller stays silent.
  std::vector<uint8_t> answer(std::span<const uint8_t> frame);

  uint16_t value(uint8_t address) const { return values_[address]; }
  void set_value(uint8_t address, uint16_t value) { values_[address] = value; }
  // As the panel was delivered: the value survives a reset.
  void set_stored_value(uint8_t address, uint16_t value) {
    values_[address] = permanent_values_[address] = value;
  }
  // The values that survive a reset: those of the last "PL".
  uint16_t permanent_value(uint8_t address) const { return permanent_values_[address]; }

  std::array<uint8_t, kPageSize * kPageCount>& eeprom() { return eeprom_; }
  const std::array<uint8_t, kPageSize * kPageCount>& eeprom() const { return eeprom_; }

  void set_firmware(std::string text) { firmware_ = std::move(text); }
  const std::string& firmware() const { return firmware_; }

  // New generation controllers acknowledge "ZZ" with "0", old ones with "1".
  void set_new_generation(bool on) { new_generation_ = on; }

  bool calibrating() const { return calibrating_; }
  uint8_t backlight_duty() const { return static_cast<uint8_t>(values_[75]); }
  bool automatic_hid() const { return automatic_hid_; }
  unsigned resets() const { return resets_; }
  unsigned commits() const { return commits_; }
  // Every frame answered or ignored, oldest first.
  const std::vector<std::vector<uint8_t>>& frames() const { return frames_; }

  ResistiveFaults faults;

 private:
  std::vector<uint8_t> dispatch(std::span<const uint8_t> frame);
  std::vector<uint8_t> acknowledge();
  std::vector<uint8_t> read_value(std::span<const uint8_t> frame);
  std::vector<uint8_t> write_value(std::span<const uint8_t> frame);
  std::vector<uint8_t> read_page(std::span<const uint8_t> frame);
  std::vector<uint8_t> write_page(std::span<const uint8_t> frame);
  std::vector<uint8_t> reset();

  std::array<uint16_t, kValueCount> values_{};
  std::array<uint16_t, kValueCount> permanent_values_{};
  std::array<uint8_t, kPageSize * kPageCount> eeprom_{};
  std::string firmware_ = "V1.2";
  bool new_generation_ = false;
  bool calibrating_ = false;
  bool automatic_hid_ = false;
  unsigned resets_ = 0;
  unsigned commits_ = 0;
  std::vector<std::vector<uint8_t>> frames_;
};

// The controller on USB: feature report 1 carries a length byte and the frame.
class ResistiveUsb final : public HidDevice {
 public:
  static constexpr uint8_t kReportId = 1;
  static constexpr unsigned kUsageCount = 63;

  ResistiveUsb(ResistiveController& controller, UsbIdentity identity)
      : controller_(controller), identity_(std::move(identity)) {}

  const UsbIdentity& identity() const override { return identity_; }
  std::span<const FeatureReport> feature_reports() const override { return {&report_, 1}; }
  bool set_feature(uint8_t id, std::span<const uint8_t> payload) override;
  std::optional<std::vector<uint8_t>> get_feature(uint8_t id) override;

  // The shape of the report, for odd hardware: fewer or more usages, signed fields.
  void set_report(FeatureReport report) { report_ = report; }
  // Sends this report payload instead of the controller's reply, whatever it is.
  void set_forged_reply(std::optional<std::vector<uint8_t>> payload) {
    forged_reply_ = std::move(payload);
  }

 private:
  ResistiveController& controller_;
  UsbIdentity identity_;
  FeatureReport report_{kReportId, kUsageCount, 0, 255};
  std::vector<uint8_t> reply_;
  std::optional<std::vector<uint8_t>> forged_reply_;
};

// The controller on a serial port: the frames go raw.
class ResistiveSerial final : public SerialDevice {
 public:
  explicit ResistiveSerial(ResistiveController& controller) : controller_(controller) {}

  void receive(std::span<const uint8_t> bytes) override;
  std::vector<uint8_t> transmit(size_t limit) override;
  bool has_bytes() const override;
  void discard() override { outgoing_.clear(); }
  bool has_hardware() const override { return !controller_.faults.no_hardware; }
  bool opens() override;
  void configure(const LineSettings& settings) override { settings_ = settings; }

  // Nothing: the host has left the line as it was.
  const std::optional<LineSettings>& settings() const { return settings_; }

 private:
  ResistiveController& controller_;
  CommandFrames incoming_;
  std::vector<uint8_t> outgoing_;
  std::optional<LineSettings> settings_;
};

}  // namespace zelkora::sim
