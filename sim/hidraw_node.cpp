// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hidraw_node.h"

#include <linux/hidraw.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "request_name.h"

namespace zelkora::sim {
namespace {

// Reports are read and written with their id in front.
constexpr size_t kShortestReport = 2;
constexpr size_t kLongestReport = 16384;

bool fits(size_t length) { return length >= kShortestReport && length <= kLongestReport; }

int error_of(Outcome outcome) {
  switch (outcome) {
    case Outcome::kStall:
      return -EPIPE;
    case Outcome::kNoAnswer:
      return -ETIMEDOUT;
    default:
      return 0;
  }
}

}  // namespace

HidrawNode::HidrawNode(std::shared_ptr<HidInterface> interface) : hid_(std::move(interface)) {
  hid_->add(*this);
}

HidrawNode::~HidrawNode() { hid_->remove(*this); }

int HidrawNode::ioctl(unsigned long request, void* argument) {
  if (gone()) return -ENODEV;
  if (_IOC_SIZE(request) > 0 && argument == nullptr) return -EFAULT;
  switch (request) {
    case HIDIOCGRAWINFO: {
      const UsbIdentity& identity = hid_->identity();
      *static_cast<hidraw_devinfo*>(argument) = {
          .bustype = BUS_USB,
          .vendor = static_cast<int16_t>(identity.vendor),
          .product = static_cast<int16_t>(identity.product),
      };
      return 0;
    }
    case HIDIOCGRDESCSIZE:
      *static_cast<int*>(argument) = static_cast<int>(hid_->description().size());
      return 0;
    case HIDIOCGRDESC:
      return description(argument);
    default:
      return by_size(request, argument);
  }
}

int HidrawNode::description(void* argument) const {
  auto& room = *static_cast<hidraw_report_descriptor*>(argument);
  if (room.size >= HID_MAX_DESCRIPTOR_SIZE) return -EINVAL;
  const std::vector<uint8_t> bytes = hid_->description();
  std::copy_n(bytes.begin(), std::min<size_t>(bytes.size(), room.size), room.value);
  return 0;
}

int HidrawNode::by_size(unsigned long request, void* argument) {
  const size_t size = _IOC_SIZE(request);
  const std::span<uint8_t> report(static_cast<uint8_t*>(argument), size);
  const std::span<char> name(static_cast<char*>(argument), size);
  switch (without_size(request)) {
    case HIDIOCSFEATURE(0):
      return set_feature(report);
    case HIDIOCGFEATURE(0):
      return get_feature(report);
    case HIDIOCSINPUT(0):
    case HIDIOCGINPUT(0):
    case HIDIOCSOUTPUT(0):
    case HIDIOCGOUTPUT(0):
      return fits(size) ? -EPIPE : -EINVAL;  // the device stalls what is no feature report
    case HIDIOCGRAWNAME(0):
      return copy_name(hid_->identity().kernel_name(), name);
    case HIDIOCGRAWPHYS(0):
      return copy_name(hid_->phys(), name);
    case HIDIOCGRAWUNIQ(0):
      return copy_name("", name);
    default:
      break;
  }
  return _IOC_TYPE(request) == 'H' && _IOC_DIR(request) == _IOC_READ ? -ENOTTY : -EINVAL;
}

// Unlike hiddev, hidraw asks the device whatever the report id, and tells when that fails.
int HidrawNode::set_feature(std::span<const uint8_t> report) {
  if (!fits(report.size())) return -EINVAL;
  const int error = error_of(hid_->set_report(report[0], report.subspan(1)));
  return error != 0 ? error : static_cast<int>(report.size());
}

int HidrawNode::get_feature(std::span<uint8_t> room) {
  if (!fits(room.size())) return -EINVAL;
  const auto [outcome, payload] = hid_->get_report(room[0]);
  if (outcome != Outcome::kDone) return error_of(outcome);
  // The id stays in byte 0: the device sends it back in front of the payload.
  const size_t count = std::min(payload.size(), room.size() - 1);
  std::copy_n(payload.begin(), count, room.begin() + 1);
  return static_cast<int>(1 + count);
}

void HidrawNode::hear(uint8_t id, std::span<const uint8_t> payload) {
  constexpr size_t kLongestQueue = 63;
  if (heard_.size() == kLongestQueue) return;
  heard_.emplace_back(1, id).insert(heard_.back().end(), payload.begin(), payload.end());
}

// There is no touch to tell of, but what somebody asked for over hiddev is told, too.
ssize_t HidrawNode::read(std::span<uint8_t> room) {
  if (room.empty()) heard_.clear();  // one report after another goes where there is no room
  if (heard_.empty()) return gone() ? -EIO : -EAGAIN;
  const size_t count = std::min(heard_.front().size(), room.size());
  std::copy_n(heard_.front().begin(), count, room.begin());
  heard_.pop_front();
  return static_cast<ssize_t>(count);
}

ssize_t HidrawNode::write(std::span<const uint8_t> bytes) {
  if (gone()) return -ENODEV;
  // Output reports, and the device has none: it stalls.
  return fits(bytes.size()) ? -EPIPE : -EINVAL;
}

int HidrawNode::poll() {
  const int always = POLLOUT | POLLWRNORM | (gone() ? POLLERR | POLLHUP : 0);
  return heard_.empty() ? always : always | POLLIN | POLLRDNORM;
}

std::string HidrawNode::describe(unsigned long request, const void*) const {
  return hidraw_request(request);
}

}  // namespace zelkora::sim
