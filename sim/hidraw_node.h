// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// /dev/hidrawN, opened: whole reports in one call.
#pragma once

#include <deque>
#include <memory>
#include <vector>

#include "hid_interface.h"

namespace zelkora::sim {

class HidrawNode final : public DeviceNode, private ReportListener {
 public:
  explicit HidrawNode(std::shared_ptr<HidInterface> interface);
  ~HidrawNode() override;

  int ioctl(unsigned long request, void* argument) override;
  ssize_t read(std::span<uint8_t> room) override;
  ssize_t write(std::span<const uint8_t> bytes) override;
  int poll() override;
  std::string describe(unsigned long request, const void* argument) const override;

 private:
  int by_size(unsigned long request, void* argument);
  int description(void* argument) const;
  int set_feature(std::span<const uint8_t> report);
  int get_feature(std::span<uint8_t> room);
  void hear(uint8_t id, std::span<const uint8_t> payload) override;

  std::shared_ptr<HidInterface> hid_;
  std::deque<std::vector<uint8_t>> heard_;
};

}  // namespace zelkora::sim
