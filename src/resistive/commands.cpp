// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The command set of the resistive controllers, a row each. A frame is 01, the letters, the
// arguments and 0D; a plain acknowledge is 01 30 0D.
#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>

#include "core/bytes.h"
#include "core/log.h"
#include "exchange.h"
#include "zelkora.h"

using zelkora::as_signed;
using zelkora::kTrace;
using zelkora::put_hex;
using zelkora::resistive::Command;
using zelkora::resistive::exchange;
using zelkora::resistive::Frame;
using zelkora::resistive::kFrameEnd;
using zelkora::resistive::kFrameStart;
using zelkora::resistive::Reply;

namespace {

constexpr size_t kFirmwareSize = 20;
constexpr size_t kPageSize = 32;
constexpr size_t kPageArgument = 3;  // where a page command carries its page, sent and echoed
constexpr size_t kPageData = 4;
constexpr size_t kPageReplyEnd = kPageData + kPageSize;
constexpr int kMaxAddress = 0xFF;

// The index of the 0D that ends a firmware text, 0 when there is none: the text has at least two
// characters.
size_t firmware_end(const Reply& reply) {
  for (int i = 3; i < reply.count; ++i) {
    if (reply.bytes[i] == kFrameEnd) return static_cast<size_t>(i);
  }
  return 0;
}

bool is_acknowledge(const Reply& reply) {
  return reply.bytes[0] == kFrameStart && reply.bytes[1] == '0' && reply.bytes[2] == kFrameEnd;
}

bool accepts_firmware(const Reply& reply, Frame) {
  return reply.bytes[0] == kFrameStart && firmware_end(reply) != 0;
}

bool accepts_acknowledge(const Reply& reply, Frame) {
  return reply.count != 0 && is_acknowledge(reply);
}

bool accepts_whole_acknowledge(const Reply& reply, Frame) {
  return reply.count > 2 && is_acknowledge(reply);
}

bool accepts_value(const Reply& reply, Frame) {
  return reply.count != 0 && reply.bytes[0] == kFrameStart && reply.bytes[5] == kFrameEnd;
}

// The reply echoes the command's letters and page.
bool accepts_page(const Reply& reply, Frame sent) {
  return reply.count > 0 && reply.bytes[0] == kFrameStart &&
         std::equal(reply.bytes + 1, reply.bytes + kPageData, sent.begin() + 1) &&
         reply.bytes[kPageReplyEnd] == kFrameEnd;
}

// Reply bytes are printed as signed characters: one from 80 up shows as FFFFFF80 and up.

void log_firmware(const Reply& reply) {
  const uint8_t* b = reply.bytes;
  DebugMsg(kTrace, "GetFirmware Len:%d %04X %04X %04X %04X %04X %04X\n", reply.count,
           as_signed(b[0]), as_signed(b[1]), as_signed(b[2]), as_signed(b[3]), as_signed(b[4]),
           as_signed(b[5]));
}

void log_value_write(const Reply& reply) {
  const uint8_t* b = reply.bytes;
  DebugMsg(kTrace, "device_type=%d [0]0x%x [1]0x%x [2]0x%x\n", device_type, as_signed(b[0]),
           as_signed(b[1]), as_signed(b[2]));
}

void log_page_read(const Reply& reply) {
  DebugMsg(kTrace, "AXI_ReadEEPValue Len=%d\n", reply.count);
  for (int i = 0; i < reply.count; ++i) {
    DebugMsg(kTrace, "[%d]0x%02X\n", i, as_signed(reply.bytes[i]));
  }
}

void log_page_write(const Reply& reply) {
  const uint8_t* b = reply.bytes;
  DebugMsg(kTrace, "device_type=%d rLen=%d [0]0x%02x [1]0x%02x [2]0x%02x [3]0x%02x\n", device_type,
           reply.count, as_signed(b[0]), as_signed(b[1]), as_signed(b[2]), as_signed(b[3]));
}

constexpr unsigned kShort = 50'000;
constexpr unsigned kPage = 200'000;

// clang-format off
//                             most  USB     serial  settle  signed accepted when               log
constexpr Command kFirmware  {  20, kShort, kShort, 0,      false, accepts_firmware,          log_firmware};
constexpr Command kPlain     {   4, kShort, kShort, 0,      false, accepts_acknowledge,       nullptr};
// Reset waits on a serial port alone, and tells a failed read apart there.
constexpr Command kReset     {  10, 0,      kShort, 0,      true,  accepts_whole_acknowledge, nullptr};
constexpr Command kReadValue {  10, kShort, kShort, 0,      false, accepts_value,             nullptr};
constexpr Command kWriteValue{  10, kShort, kShort, 0,      false, accepts_acknowledge,       log_value_write};
constexpr Command kReadPage  {  40, kPage,  kPage,  kPage,  false, accepts_page,              log_page_read};
constexpr Command kWritePage {  10, kPage,  kPage,  kPage,  false, accepts_acknowledge,       log_page_write};
// Three bytes are one too few over USB, where the last byte of a reply as long as the limit reads
// as 0: these two never succeed there, and hosts expect it.
constexpr Command kBacklight {   3, kShort, kShort, 0,      false, accepts_acknowledge,       nullptr};
constexpr Command kAutoHid   {   3, kShort, kShort, 0,      false, accepts_whole_acknowledge, nullptr};
// clang-format on

constexpr uint8_t kFirmwareFrame[] = {kFrameStart, 'O', 'I', kFrameEnd};
constexpr uint8_t kCalibrateFrame[] = {kFrameStart, 'C', 'R', kFrameEnd};
constexpr uint8_t kPermanentFrame[] = {kFrameStart, 'P', 'L', kFrameEnd};
constexpr uint8_t kResetFrame[] = {kFrameStart, 'R', kFrameEnd};
constexpr uint8_t kAutoHidFrame[] = {kFrameStart, 'A', 'U', kFrameEnd};

// Longer addresses would push the frame's other bytes out of place.
bool is_address(int address) { return address >= 0 && address <= kMaxAddress; }

}  // namespace

int GetFirmware(char* fw) {
  std::memset(fw, 0, kFirmwareSize);
  Reply reply;
  if (!exchange(kFirmware, kFirmwareFrame, reply)) return 0;
  std::memcpy(fw, reply.bytes + 1, firmware_end(reply) - 1);
  DebugMsg(kTrace, "GetFirmware FW = %s\n", fw);
  return 1;
}

int EnterCalibMode(void) {
  if (!exchange(kPlain, kCalibrateFrame)) return 0;
  DebugMsg(kTrace, "EnterCalibMode--ok\n");
  return 1;
}

int PermanentParameter(void) { return exchange(kPlain, kPermanentFrame) ? 1 : 0; }

int ResetController(void) { return exchange(kReset, kResetFrame) ? 1 : 0; }

int ReadEEPValue(short address) {
  DebugMsg(kTrace, "ReadEEPValue device_type=%d Address:%02X\n", device_type, address);
  if (!is_address(address)) return -1;
  std::array<uint8_t, 6> frame{kFrameStart, 'G', 'P', 0, 0, kFrameEnd};
  put_hex(std::span(frame).subspan<3, 2>(), static_cast<unsigned>(address));
  Reply reply;
  if (!exchange(kReadValue, frame, reply)) return -1;
  return static_cast<int>(HextoInt(reinterpret_cast<const char*>(reply.bytes + 1), 4));
}

int WriteEEPValue(short address, unsigned int value) {
  DebugMsg(kTrace, "WriteEEPValue---start Address:0x%x Value:%d\n", address,
           static_cast<int>(value));
  if (!is_address(address)) return 0;
  std::array<uint8_t, 10> frame{kFrameStart, 'S', 'P', 0, 0, 0, 0, 0, 0, kFrameEnd};
  put_hex(std::span(frame).subspan<3, 2>(), static_cast<unsigned>(address));
  put_hex(std::span(frame).subspan<5, 4>(), value);
  return exchange(kWriteValue, frame) ? 1 : 0;
}

int AXI_ReadEEPValue(int page, unsigned char* out) {
  const uint8_t frame[] = {kFrameStart, 'E', 'R', static_cast<uint8_t>(page), kFrameEnd};
  Reply reply;
  if (!exchange(kReadPage, frame, reply)) return 0;
  std::memcpy(out, reply.bytes + kPageData, kPageSize);
  return 1;
}

int AXI_WriteEEPValue(int page, const unsigned char* data) {
  std::array<uint8_t, kPageData + kPageSize + 1> frame{kFrameStart, 'E', 'W'};
  frame[kPageArgument] = static_cast<uint8_t>(page);
  std::memcpy(frame.data() + kPageData, data, kPageSize);
  frame.back() = kFrameEnd;
  return exchange(kWritePage, frame) ? 1 : 0;
}

int GetCountUnit(void) { return ReadEEPValue(ZELKORA_EEP_COUNT_UNIT); }

int SetBackLightDuty(int duty) {
  const uint8_t frame[] = {kFrameStart, 'D', 'U', static_cast<uint8_t>(duty), kFrameEnd};
  return exchange(kBacklight, frame) ? 1 : 0;
}

int ChkAutoSetHid(void) { return exchange(kAutoHid, kAutoHidFrame) ? 1 : 0; }
