// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// /dev/usb/hiddevN, opened: reports written and read usage by usage.
#pragma once

#include <memory>
#include <vector>

#include "hid_interface.h"

namespace zelkora::sim {

class HiddevNode final : public DeviceNode, private ReportListener {
 public:
  explicit HiddevNode(std::shared_ptr<HidInterface> interface);
  ~HiddevNode() override;

  int ioctl(unsigned long request, void* argument) override;
  ssize_t read(std::span<uint8_t> room) override;
  ssize_t write(std::span<const uint8_t> bytes) override;
  int poll() override;
  std::string describe(unsigned long request, const void* argument) const override;

 private:
  int by_size(unsigned long request, void* argument);
  int device_request(unsigned long request, void* argument);
  void device_info(void* argument) const;
  int set_flags(int flags);
  int report_request(unsigned long request, void* argument);
  int field_info(void* argument);
  int usage_request(unsigned long request, void* argument);
  void hear(uint8_t id, std::span<const uint8_t> payload) override;

  std::shared_ptr<HidInterface> hid_;
  int flags_ = 0;
  std::vector<uint8_t> heard_;  // ids of reports, for a host that asked to hear of them
};

}  // namespace zelkora::sim
