// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A projected-capacitive touch controller as pure logic: command reports in, reply reports out.
// Both families are here. They know the same commands, but lay out their reports differently.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "hid_device.h"

namespace zelkora::sim {

enum class PctFamily { k8752, k8753 };

// What goes wrong, and how often. Counters tick down with each command they spoil.
struct PctFaults {
  bool silent = false;                 // no command is carried out, every reply report stalls
  unsigned silent_commands = 0;        // this many commands are neither carried out nor answered
  unsigned stalled_commands = 0;       // the report that carries the command stalls, this often
  unsigned refused_command_modes = 0;  // so many requests for command mode have no effect
  unsigned refused_normal_modes = 0;   // the same on the way back
  unsigned wrong_device_modes = 0;     // so many replies tell the device mode it is not in
  unsigned bad_checksums = 0;          // so many reads of the flash block spoil its checksum
  unsigned blank_pos_replies = 0;      // so many POS configuration replies carry only zeros
  unsigned refused_pos_modes = 0;      // so many writes of the POS mode have no effect
  unsigned wrong_usb_ids = 0;          // so many USB id replies tell another vendor
};

class PctController final : public HidDevice {
 public:
  // The report ids, and the bytes that a report carries behind its id.
  static constexpr uint8_t kQueryReport = 0x06;
  static constexpr uint8_t kReplyReport = 0x07;
  static constexpr uint8_t kCommandReport = 0x08;
  static constexpr uint8_t kFirmwareReport = 0xF2;
  static constexpr uint8_t kUsbIdReport = 0xF3;
  static constexpr unsigned kUsageCount = 63;

  static constexpr uint8_t kNormalMode = 0x01;
  static constexpr uint8_t kCommandMode = 0x90;

  static constexpr unsigned kPosModeCount = 4;

  static constexpr size_t kBlockSize = 32;
  static constexpr size_t kFlashSize = kBlockSize + 2;  // the checksum follows, low byte first

  // One firmware of each family, for those who need no special one.
  static constexpr uint32_t kFirmware8752 = 0x30811234;
  static constexpr uint32_t kFirmware8753 = 0x87530190;

  using Flash = std::array<uint8_t, kFlashSize>;
  using PosConfig = std::array<uint8_t, 4>;

  // The firmware's identity word tells the family: the chip is in its highest four bits.
  PctController(uint32_t firmware, UsbIdentity identity);

  const UsbIdentity& identity() const override { return identity_; }
  std::span<const FeatureReport> feature_reports() const override { return reports_; }
  bool set_feature(uint8_t id, std::span<const uint8_t> payload) override;
  std::optional<std::vector<uint8_t>> get_feature(uint8_t id) override;

  static PctFamily family_of(uint32_t firmware);
  PctFamily family() const { return family_of(firmware_); }
  uint32_t firmware() const { return firmware_; }
  void set_firmware(uint32_t word) { firmware_ = word; }  // as after an update

  uint8_t device_mode() const { return device_mode_; }

  // The flash block as it is stored, encoded, with its checksum. A new controller's is all zero.
  const Flash& flash() const { return flash_; }
  void set_flash(const Flash& bytes) { flash_ = bytes; }
  // Stores a block and adds its checksum, as the controller does when a host writes one.
  void store_block(std::span<const uint8_t, kBlockSize> block);

  // In the order in which it is read: flags, mode - 1, clicks, right click's time and range.
  const PosConfig& pos_config() const { return pos_config_; }
  void set_pos_config(const PosConfig& bytes) { pos_config_ = bytes; }
  unsigned pos_mode() const { return pos_config_[1] + 1U; }  // 1..kPosModeCount
  void set_pos_mode(unsigned mode) { pos_config_[1] = static_cast<uint8_t>(mode - 1); }

  // The ids that a host wrote last. They are those of identity() once the controller was reset.
  uint16_t stored_vendor() const { return stored_vendor_; }
  uint16_t stored_product() const { return stored_product_; }

  // After a reset the controller leaves the bus and comes back as identity() says from then on.
  // The call comes from inside set_feature(), whose request still ends well.
  void set_on_reset(std::function<void()> on_reset) { on_reset_ = std::move(on_reset); }
  unsigned resets() const { return resets_; }

  // Every command report, with its id in front, oldest first, whatever became of it.
  const std::vector<std::vector<uint8_t>>& commands() const { return commands_; }

  // The size of the reports, for odd hardware.
  void set_usage_count(unsigned count);

  PctFaults faults;

 private:
  struct Command;
  struct Layout;
  struct Reply {
    uint8_t id = 0;
    std::vector<uint8_t> payload;
  };

  const Layout& layout() const;
  const Command* find_command(std::span<const uint8_t> report) const;
  void answer(uint8_t id, size_t data_at, std::span<const uint8_t> data);
  std::vector<uint8_t> firmware_reply() const;

  // The commands, given the bytes behind those that name the command.
  void tell_device_mode(std::span<const uint8_t> rest);
  void change_device_mode(std::span<const uint8_t> rest);
  void tell_flash(std::span<const uint8_t> rest);
  void write_flash(std::span<const uint8_t> rest);
  void erase_flash(std::span<const uint8_t> rest);
  void tell_pos_config(std::span<const uint8_t> rest);
  void write_pos_config(std::span<const uint8_t> rest);
  void write_pos_mode(std::span<const uint8_t> rest);
  void tell_usb_id(std::span<const uint8_t> rest);
  void write_usb_id(std::span<const uint8_t> rest);
  void reset(std::span<const uint8_t> rest);

  bool flash_is_open() const;

  uint32_t firmware_;
  UsbIdentity identity_;
  uint16_t stored_vendor_;
  uint16_t stored_product_;
  std::array<FeatureReport, 5> reports_;
  uint8_t device_mode_ = kNormalMode;
  Flash flash_{};
  // As delivered: a digitizer that is enabled, right click after a short hold.
  PosConfig pos_config_{0x21, 0x00, 0x10, 0xA4};
  std::optional<Reply> reply_;
  unsigned resets_ = 0;
  std::function<void()> on_reset_;
  std::vector<std::vector<uint8_t>> commands_;
};

}  // namespace zelkora::sim
