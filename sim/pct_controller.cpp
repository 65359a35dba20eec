// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "pct_controller.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <utility>

#include "fault_counter.h"

namespace zelkora::sim {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr unsigned kChip8752 = 3;
constexpr unsigned kChipShift = 28;
constexpr uint16_t kChecksumStart = 0x6666;
constexpr size_t kReportSize = 1 + PctController::kUsageCount;

// Where replies of one layout for both families carry their data, counted after the report id.
constexpr size_t kDeviceModeAt = 3;
constexpr size_t kUsbIdAt = 6;
// Every reply begins with so many bytes of the command it answers.
constexpr size_t kEchoSize = 3;

constexpr size_t kPosReplySize = 16;
// The command byte of the first POS mode.
constexpr uint8_t kFirstPosMode = 0x20;

uint8_t low(uint16_t number) { return static_cast<uint8_t>(number); }
uint8_t high(uint16_t number) { return static_cast<uint8_t>(number >> 8); }
uint16_t number(uint8_t low, uint8_t high) { return static_cast<uint16_t>(low | high << 8); }

bool starts_with(std::span<const uint8_t> report, std::span<const uint8_t> prefix) {
  return report.size() >= prefix.size() && std::ranges::equal(report.first(prefix.size()), prefix);
}

}  // namespace

struct PctController::Command {
  Bytes prefix;  // the bytes that name the command, the report id in front
  void (PctController::*run)(std::span<const uint8_t> rest);
};

struct PctController::Layout {
  size_t reply_data_at;               // where a reply's data start, counted after the report id
  size_t block_gap;                   // the zeros between the length and the block in a flash write
  std::span<const Command> commands;  // those that the other family lays out differently
};

const PctController::Layout& PctController::layout() const {
  static const Command k8752Commands[] = {
      {{kCommandReport, 0x91, 0x05, 0x00, 0xC0}, &PctController::write_pos_config},
      {{kCommandReport, 0x91, 0x05, 0x00, 0xC9}, &PctController::write_pos_mode},
      {{kCommandReport, 0x85, 0x01, 0x00, 0x02}, &PctController::reset},
  };
  static const Command k8753Commands[] = {
      {{kCommandReport, 0x84, 0xC0, 0x00}, &PctController::write_pos_config},
      {{kCommandReport, 0x84, 0xC9, 0x00}, &PctController::write_pos_mode},
      {{kCommandReport, 0x84, 0x09, 0x00}, &PctController::reset},
  };
  static const Layout k8752 = {.reply_data_at = 3, .block_gap = 1, .commands = k8752Commands};
  static const Layout k8753 = {.reply_data_at = 7, .block_gap = 5, .commands = k8753Commands};
  return family() == PctFamily::k8752 ? k8752 : k8753;
}

const PctController::Command* PctController::find_command(std::span<const uint8_t> report) const {
  static const Command kCommands[] = {
      {{kQueryReport, 0x73, 0x0C}, &PctController::tell_device_mode},
      {{kQueryReport, 0xA1}, &PctController::tell_flash},
      {{kQueryReport, 0xA2}, &PctController::tell_pos_config},
      {{kCommandReport, 0x91, 0x02, 0x00, 0x82}, &PctController::change_device_mode},
      {{kCommandReport, 0xA8, 0x22}, &PctController::write_flash},
      {{kCommandReport, 0xA8, 0x40}, &PctController::erase_flash},
      {{kUsbIdReport, 0x04, 0x00, 0x02}, &PctController::tell_usb_id},
      {{kUsbIdReport, 0x08, 0x00, 0x02, 0x00, 0x00}, &PctController::write_usb_id},
  };
  const std::span<const Command> tables[] = {kCommands, layout().commands};
  for (const std::span<const Command> commands : tables) {
    for (const Command& command : commands)
      if (starts_with(report, command.prefix)) return &command;
  }
  return nullptr;
}

PctController::PctController(uint32_t firmware, UsbIdentity identity)
    : firmware_(firmware),
      identity_(std::move(identity)),
      stored_vendor_(identity_.vendor),
      stored_product_(identity_.product) {
  constexpr uint8_t kIds[] = {kQueryReport, kReplyReport, kCommandReport, kFirmwareReport,
                              kUsbIdReport};
  static_assert(std::size(kIds) == std::tuple_size_v<decltype(reports_)>);
  std::ranges::transform(kIds, reports_.begin(), [](uint8_t id) {
    return FeatureReport{.id = id, .usage_count = kUsageCount};
  });
}

PctFamily PctController::family_of(uint32_t firmware) {
  return firmware >> kChipShift == kChip8752 ? PctFamily::k8752 : PctFamily::k8753;
}

void PctController::set_usage_count(unsigned count) {
  for (FeatureReport& report : reports_) report.usage_count = count;
}

void PctController::store_block(std::span<const uint8_t, kBlockSize> block) {
  std::ranges::copy(block, flash_.begin());
  const uint16_t sum = std::accumulate(
      block.begin(), block.end(), kChecksumStart,
      [](uint16_t so_far, uint8_t byte) { return static_cast<uint16_t>(so_far + byte); });
  flash_[kBlockSize] = low(sum);
  flash_[kBlockSize + 1] = high(sum);
}

// A command that the controller does not know is taken like any other and left unanswered.
bool PctController::set_feature(uint8_t id, std::span<const uint8_t> payload) {
  if (id != kQueryReport && id != kCommandReport && id != kUsbIdReport) return false;
  Bytes& report = commands_.emplace_back(Bytes{id});
  report.insert(report.end(), payload.begin(), payload.end());
  if (strikes(faults.stalled_commands)) return false;
  reply_.reset();
  if (faults.silent || strikes(faults.silent_commands)) return true;
  Bytes whole = report;  // what was left out at the end counts as zero
  whole.resize(std::max(whole.size(), kReportSize));
  const Command* command = find_command(whole);
  if (command != nullptr) (this->*command->run)(std::span(whole).subspan(command->prefix.size()));
  return true;
}

// A reply stays until the next command. The reports that only take commands have none to give.
std::optional<Bytes> PctController::get_feature(uint8_t id) {
  if (faults.silent) return std::nullopt;
  Bytes payload;
  if (id == kFirmwareReport) {
    payload = firmware_reply();
  } else if (reply_ && reply_->id == id) {
    payload = reply_->payload;
  } else {
    return std::nullopt;
  }
  payload.resize(reports_.front().usage_count);  // always the whole report
  return payload;
}

// Hosts look only at the data. In front of them the controller repeats the beginning of the
// command, so that one who looks in the wrong place does not find zeros there.
void PctController::answer(uint8_t id, size_t data_at, std::span<const uint8_t> data) {
  Bytes payload(commands_.back());
  payload.erase(payload.begin());
  payload.resize(kEchoSize);
  payload.resize(data_at);
  payload.insert(payload.end(), data.begin(), data.end());
  reply_ = Reply{id, std::move(payload)};
}

Bytes PctController::firmware_reply() const {
  Bytes payload;
  for (unsigned shift = 0; shift < 32; shift += 8) {
    payload.push_back(static_cast<uint8_t>(firmware_ >> shift));
  }
  return payload;
}

void PctController::tell_device_mode(std::span<const uint8_t>) {
  uint8_t mode = device_mode_;
  if (strikes(faults.wrong_device_modes)) mode = mode == kNormalMode ? kCommandMode : kNormalMode;
  answer(kReplyReport, kDeviceModeAt, {&mode, 1});
}

// There is no third mode: other bytes change nothing.
void PctController::change_device_mode(std::span<const uint8_t> rest) {
  const uint8_t mode = rest[0];
  if (mode == kCommandMode && strikes(faults.refused_command_modes)) return;
  if (mode == kNormalMode && strikes(faults.refused_normal_modes)) return;
  if (mode == kCommandMode || mode == kNormalMode) device_mode_ = mode;
}

// The 8752 family opens its flash in command mode only, the 8753 family always. Closed flash
// takes nothing and answers nothing.
bool PctController::flash_is_open() const {
  return family() == PctFamily::k8753 || device_mode_ == kCommandMode;
}

void PctController::tell_flash(std::span<const uint8_t> rest) {
  if (!flash_is_open()) return;
  Flash bytes = flash_;
  if (strikes(faults.bad_checksums)) bytes[kBlockSize] ^= 0xFF;
  answer(kReplyReport, layout().reply_data_at,
         std::span(bytes).first(std::min<size_t>(rest[0], bytes.size())));
}

// The length speaks of 34 bytes, but hosts send the block alone and expect to read it back with a
// checksum that is right: the controller adds it, whatever follows the block.
void PctController::write_flash(std::span<const uint8_t> rest) {
  if (flash_is_open()) store_block(rest.subspan(layout().block_gap).first<kBlockSize>());
}

// The longer write clears the checksum too: no block is left, and not one of valid zeros.
void PctController::erase_flash(std::span<const uint8_t>) {
  if (flash_is_open()) flash_.fill(0);
}

void PctController::tell_pos_config(std::span<const uint8_t> rest) {
  std::array<uint8_t, kPosReplySize> bytes{};
  if (!strikes(faults.blank_pos_replies)) std::ranges::copy(pos_config_, bytes.begin());
  answer(kReplyReport, layout().reply_data_at,
         std::span(bytes).first(std::min<size_t>(rest[0], bytes.size())));
}

// Three bytes around the mode, which has a command of its own.
void PctController::write_pos_config(std::span<const uint8_t> rest) {
  pos_config_ = {rest[0], pos_config_[1], rest[1], rest[2]};
}

// In force at once and kept over a reset; how the controller shows itself on the bus is up to the
// USB id, which the host writes along with the mode.
void PctController::write_pos_mode(std::span<const uint8_t> rest) {
  const unsigned mode = rest[0] - unsigned{kFirstPosMode};
  if (mode >= kPosModeCount || strikes(faults.refused_pos_modes)) return;
  pos_config_[1] = static_cast<uint8_t>(mode);
}

// Tells the ids as they are stored, in force or not.
void PctController::tell_usb_id(std::span<const uint8_t>) {
  uint16_t vendor = stored_vendor_;
  if (strikes(faults.wrong_usb_ids)) vendor ^= 0xFFFF;
  const uint8_t ids[] = {low(vendor), high(vendor), low(stored_product_), high(stored_product_)};
  answer(kUsbIdReport, kUsbIdAt, ids);
}

void PctController::write_usb_id(std::span<const uint8_t> rest) {
  stored_vendor_ = number(rest[0], rest[1]);
  stored_product_ = number(rest[2], rest[3]);
}

void PctController::reset(std::span<const uint8_t>) {
  identity_.vendor = stored_vendor_;
  identity_.product = stored_product_;
  device_mode_ = kNormalMode;
  ++resets_;
  if (on_reset_) on_reset_();
}

}  // namespace zelkora::sim
