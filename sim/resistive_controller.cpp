// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "resistive_controller.h"

#include <algorithm>
#include <charconv>
#include <string_view>
#include <utility>

#include "fault_counter.h"

namespace zelkora::sim {
namespace {

using Bytes = std::vector<uint8_t>;

constexpr uint8_t kStart = 0x01;
constexpr uint8_t kEnd = 0x0D;

// What a panel leaves the factory with: the values its getters would not repair.
constexpr std::pair<uint8_t, uint16_t> kFactoryValues[] = {
    {51, 1}, {54, 1}, {55, 0}, {66, 1}, {67, 0}, {68, 1}, {69, 2}, {70, 0},    {71, 0},
    {72, 0}, {73, 0}, {75, 5}, {84, 0}, {85, 4}, {86, 1}, {87, 1}, {88, 2000}, {89, 10},
};

std::string_view text(std::span<const uint8_t> bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// A number of exactly these upper- or lower-case hex digits.
std::optional<unsigned> hex(std::span<const uint8_t> digits) {
  const std::string_view view = text(digits);
  unsigned number = 0;
  const auto [end, error] = std::from_chars(view.data(), view.data() + view.size(), number, 16);
  if (error != std::errc() || end != view.data() + view.size()) return std::nullopt;
  return number;
}

void append_hex4(Bytes& out, uint16_t value) {
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (int shift = 12; shift >= 0; shift -= 4) {
    out.push_back(static_cast<uint8_t>(kDigits[(value >> shift) & 0xF]));
  }
}

}  // namespace

ResistiveController::ResistiveController() {
  for (const auto& [address, value] : kFactoryValues) values_[address] = value;
  permanent_values_ = values_;
}

Bytes ResistiveController::answer(std::span<const uint8_t> frame) {
  frames_.emplace_back(frame.begin(), frame.end());
  if (faults.silent || strikes(faults.silent_commands)) return {};
  if (frame.size() < 3 || frame.front() != kStart || frame.back() != kEnd) return {};
  return dispatch(frame);
}

Bytes ResistiveController::dispatch(std::span<const uint8_t> frame) {
  if (frame.size() == 3 && frame[1] == 'R') return reset();
  const std::string_view command = text(frame.subspan(1, 2));
  if (command == "OI") {
    Bytes reply{kStart};
    reply.insert(reply.end(), firmware_.begin(), firmware_.end());
    reply.push_back(kEnd);
    return reply;
  }
  if (command == "ZZ") return {kStart, static_cast<uint8_t>(new_generation_ ? '0' : '1'), kEnd};
  if (command == "GP") return read_value(frame);
  if (command == "SP") return write_value(frame);
  if (command == "ER") return read_page(frame);
  if (command == "EW") return write_page(frame);
  if (command == "CR") {
    calibrating_ = true;
    return acknowledge();
  }
  if (command == "PL") {
    permanent_values_ = values_;
    ++commits_;
    return acknowledge();
  }
  if (command == "DU" && frame.size() == 5) {
    values_[75] = frame[3];
    return acknowledge();
  }
  if (command == "AU") {
    automatic_hid_ = true;
    return acknowledge();
  }
  return {};
}

Bytes ResistiveController::acknowledge() {
  const bool bad = strikes(faults.bad_acknowledges);
  return {kStart, static_cast<uint8_t>(bad ? '1' : '0'), kEnd};
}

Bytes ResistiveController::read_value(std::span<const uint8_t> frame) {
  if (frame.size() != 6) return {};
  const std::optional<unsigned> address = hex(frame.subspan(3, 2));
  if (!address) return {};
  Bytes reply{kStart};
  append_hex4(reply, values_[*address]);
  reply.push_back(kEnd);
  return reply;
}

Bytes ResistiveController::write_value(std::span<const uint8_t> frame) {
  if (frame.size() != 10) return {};
  const std::optional<unsigned> address = hex(frame.subspan(3, 2));
  const std::optional<unsigned> value = hex(frame.subspan(5, 4));
  if (!address || !value) return {};
  values_[*address] = faults.stores.value_or(static_cast<uint16_t>(*value));
  return acknowledge();
}

Bytes ResistiveController::read_page(std::span<const uint8_t> frame) {
  if (frame.size() != 5 || frame[3] >= kPageCount) return {};
  const uint8_t page = frame[3];
  Bytes reply(frame.begin(), frame.begin() + 4);
  if (strikes(faults.wrong_echoes)) reply[3] = static_cast<uint8_t>((page + 1) % kPageCount);
  const auto* first = eeprom_.data() + page * kPageSize;
  reply.insert(reply.end(), first, first + kPageSize);
  reply.push_back(kEnd);
  return reply;
}

Bytes ResistiveController::write_page(std::span<const uint8_t> frame) {
  if (frame.size() != 5 + kPageSize || frame[3] >= kPageCount) return {};
  std::ranges::copy(frame.subspan(4, kPageSize), eeprom_.data() + frame[3] * kPageSize);
  return acknowledge();
}

Bytes ResistiveController::reset() {
  values_ = permanent_values_;
  calibrating_ = false;
  ++resets_;
  return acknowledge();
}

bool ResistiveUsb::set_feature(uint8_t id, std::span<const uint8_t> payload) {
  if (id != report_.id || payload.empty()) return false;
  const size_t length = std::min<size_t>(payload[0], payload.size() - 1);
  reply_ = controller_.answer(payload.subspan(1, length));
  return true;
}

std::optional<Bytes> ResistiveUsb::get_feature(uint8_t id) {
  if (id != report_.id) return std::nullopt;
  if (forged_reply_) return forged_reply_;
  if (reply_.empty()) return std::nullopt;  // a silent controller stalls the request
  Bytes payload{static_cast<uint8_t>(reply_.size())};
  payload.insert(payload.end(), reply_.begin(), reply_.end());
  payload.resize(report_.usage_count);  // always the whole report
  return payload;
}

bool ResistiveSerial::opens() { return !strikes(controller_.faults.failed_opens); }

void ResistiveSerial::receive(std::span<const uint8_t> bytes) {
  for (const Bytes& frame : incoming_.add(bytes)) {
    const Bytes reply = controller_.answer(frame);
    outgoing_.insert(outgoing_.end(), reply.begin(), reply.end());
  }
}

Bytes ResistiveSerial::transmit(size_t limit) {
  if (controller_.faults.streaming || strikes(controller_.faults.streamed_reports)) {
    // A coordinate report: ten bytes, the second one 98 while touched.
    outgoing_ = {0x00, 0x98, 0x10, 0x20, 0x30, 0x40, 0x00, 0x00, 0x00, 0x00};
  }
  const size_t count = std::min(limit, outgoing_.size());
  Bytes bytes(outgoing_.begin(), outgoing_.begin() + static_cast<ptrdiff_t>(count));
  outgoing_.erase(outgoing_.begin(), outgoing_.begin() + static_cast<ptrdiff_t>(count));
  return bytes;
}

bool ResistiveSerial::has_bytes() const {
  const ResistiveFaults& faults = controller_.faults;
  return faults.streaming || faults.streamed_reports > 0 || !outgoing_.empty();
}

}  // namespace zelkora::sim
