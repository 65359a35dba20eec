// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The command set of the PCT controllers, on the open device.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "core/bytes.h"
#include "core/log.h"
#include "layout.h"
#include "zelkora.h"

using zelkora::get_le16;
using zelkora::get_le32;
using zelkora::kTrace;
using namespace zelkora::pct;

namespace {

constexpr unsigned kFlashWaitUs = 100'000;
constexpr unsigned kUsbIdWaitUs = 300'000;
constexpr int kUsbIdAttempts = 21;
constexpr unsigned kUsbIdCommandSize = 62;
constexpr unsigned kUsbIdReplySize = 512;  // asked for; the kernel gives what there is

// Counts the block and its checksum, though the 32 bytes of the block alone follow: controllers
// expect it so.
constexpr uint8_t kWriteLength = 0x22;

using Frame = std::array<uint8_t, kReportSize>;

bool send(const Frame& frame, unsigned length = kReportSize) {
  return SendDataNew(frame.data(), length) != 0;
}

bool is_legacy_firmware(unsigned family, unsigned revision) {
  const auto within = [revision](unsigned low, unsigned high) {
    return revision >= low && revision <= high;
  };
  // The ranges from 360 end differently for the two families, as the firmware itself did.
  return (family == 8 && (within(800, 824) || within(360, 392))) ||
         (family == 2 && within(360, 395));
}

// The words of "USB id read" replies, counted without the report id.
struct UsbId {
  explicit UsbId(const uint8_t* reply)
      : vendor(get_le16(reply + 6)), product(get_le16(reply + 8)) {}
  unsigned vendor;
  unsigned product;
};

void log_usb_id_reply(const uint8_t* reply, int count) {
  DebugMsg(kTrace, "ReadUSBID RespBuf---start ret:%d", count);
  for (const uint8_t* b = reply; b < reply + 64; b += 8) {
    DebugMsg(kTrace, "0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x 0x%02x\n", b[0], b[1], b[2],
             b[3], b[4], b[5], b[6], b[7]);
  }
  DebugMsg(kTrace, "ReadUSBID RespBuf---End\n");
}

// One attempt at the USB id; what the transport counted, 0 when no reply came.
int ask_usb_id(uint8_t (&reply)[kUsbIdReplySize]) {
  const bool sent = send({kUsbIdReport, 0x04, 0x00, 0x02}, kUsbIdCommandSize);
  if (!sent) DebugMsg(kTrace, "ReadUSBID HidD_SetFeature failed err=0x%x\r\n", errno);
  usleep(kUsbIdWaitUs);
  const int count = sent ? ReceiveDataNew(kUsbIdReport, reply, kUsbIdReplySize) : 0;
  if (count != 0) {
    log_usb_id_reply(reply, count);
  } else {
    DebugMsg(kTrace, "ReadUSBID HidD_GetFeature failed err=%d\r\n", errno);
  }
  return count;
}

}  // namespace

int GetIsLegacy(void) {
  DebugMsg(kTrace, "GetIsLegacy\n");
  uint8_t reply[kReportSize]{};
  if (ReceiveDataNew(kIdentityReport, reply, kReportSize) == 0) {
    DebugMsg(kTrace, "IsLegacy failed err:003\n");
    return ZELKORA_FAMILY_UNKNOWN;
  }
  const uint32_t identity = get_le32(reply);
  if (identity >> 28 == 3) {
    DebugMsg(kTrace, "It is WDT8755 or WDT8752 !\n");
    return ZELKORA_FAMILY_8752;
  }
  if (is_legacy_firmware((identity >> 12) & 0xF, identity & 0xFFF)) {
    DebugMsg(kTrace, "It is FW_LEGACY!\n");
    return ZELKORA_FAMILY_LEGACY;
  }
  DebugMsg(kTrace, "It is FW_WITH_CMD!\n");
  return ZELKORA_FAMILY_8753;
}

int GetFwID(int index) {
  DebugMsg(kTrace, "GetFwID\n");
  uint8_t reply[kReportSize]{};
  if (ReceiveDataNew(kIdentityReport, reply, kReportSize) == 0) {
    DebugMsg(kTrace, "GetFwID failed err:003\n");
    return 0;
  }
  PrintData("GetFwID RespBuf", reply, 16);
  char digits[sizeof "00000000"];
  std::snprintf(digits, sizeof digits, "%08X", get_le32(reply));
  TouchDeviceEntry& entry = TouchDevice[index];
  entry.FWRev = static_cast<int>(HexStrToInt(digits + 5, 3));
  std::snprintf(entry.FWVersion, sizeof entry.FWVersion, "S%c.%c.%c%c(r%d)", digits[0], digits[1],
                digits[2], digits[3], entry.FWRev);
  DebugMsg(kTrace, "1 Firmware Version:%s\n", entry.FWVersion);
  DebugMsg(kTrace, "GetFwID end\n");
  return 1;
}

int ReadPCTParames(unsigned char* dest, int length) {
  const Layout& layout = current_layout();
  DebugMsg(kTrace, "***ReadPCTParames start***\n");
  DebugMsg(kTrace, "%s", layout.read_log);
  const auto wanted = static_cast<uint8_t>(static_cast<unsigned>(length) + 2U);
  if (!send({kQueryReport, 0xA1, wanted})) {
    DebugMsg(kTrace, "%s", layout.read_send_error);
    return 0;
  }
  usleep(kFlashWaitUs);
  uint8_t reply[kReportSize]{};
  if (ReceiveDataNew(kReplyReport, reply, kReportSize) == 0) {
    DebugMsg(kTrace, "%s", layout.read_reply_error);
    return 0;
  }
  uint8_t encoded[kReportSize]{};
  std::memcpy(encoded, reply + layout.data_reply,
              std::min<size_t>(wanted, kReportSize - layout.data_reply));
  const int shown = std::min<int>(length, kReportSize);
  PrintData("ReadPCTParames RespBuf", reply, shown);
  PrintData("ReadPCTParames tmp", encoded, shown);
  return DecodeParames(dest, encoded, ZELKORA_PCT_BLOCK);
}

int WritePCTParames(const unsigned char* src) {
  const Layout& layout = current_layout();
  DebugMsg(kTrace, "***WritePCTParames***\n");
  uint8_t encoded[ZELKORA_PCT_ENCODED_BLOCK]{};
  EncodeParames(src, encoded, ZELKORA_PCT_BLOCK);
  Frame frame{kCommandReport, 0xA8, kWriteLength};
  std::memcpy(frame.data() + layout.flash_command, encoded, ZELKORA_PCT_BLOCK);
  if (!send(frame)) {
    DebugMsg(kTrace, "%s", layout.write_error);
    return 0;
  }
  DebugMsg(kTrace, "***WritePCTParames--end***\n");
  return 1;
}

int ReadUSBID(unsigned int* vid, unsigned int* pid) {
  DebugMsg(kTrace, "=========ReadUSBID==========\n");
  const unsigned expected = *vid;
  uint8_t reply[kUsbIdReplySize]{};
  for (int attempt = 1;; ++attempt) {
    const int count = ask_usb_id(reply);
    const bool last = attempt == kUsbIdAttempts;
    if (count == 0 && last) return 0;
    if (count == 0) continue;
    const UsbId id(reply);
    if (id.vendor != expected && !last) continue;
    // After the last attempt the id counts even where it is not the one expected.
    *vid = id.vendor;
    *pid = id.product;
    return count;
  }
}

int WriteUSBID(unsigned int vid, unsigned int pid) {
  DebugMsg(kTrace, "WriteUSBID VID:0x%04X PID:0x%04X\n", vid, pid);
  Frame frame{kUsbIdReport, 0x08, 0x00, 0x02};
  zelkora::put_le16(frame.data() + 6, vid);
  zelkora::put_le16(frame.data() + 8, pid);
  return SendDataNew(frame.data(), kReportSize);
}

int ResetPCTController(void) {
  DebugMsg(kTrace, "***ResetPCTController HidRaw:%d***\n", HidRaw);
  const CommandFrame frame(current_layout().reset, {});
  // A controller that resets may be gone before it confirms, so nobody asks.
  SendDataNew(frame.bytes, sizeof frame.bytes);
  DebugMsg(kTrace, "***ResetPCTController end***\n");
  return 1;
}
