// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hiddev_node.h"

#include <linux/hiddev.h>
#include <linux/input.h>
#include <sys/ioctl.h>

#include <cerrno>

#include "request_name.h"

namespace zelkora::sim {
namespace {

// The device's usages are those of the first vendor page, counted from 1.
constexpr uint32_t kFirstUsage = 0xFF000001;
constexpr int16_t kDeviceVersion = 0x0100;
constexpr uint32_t kFieldsPerReport = 1;

}  // namespace

int HiddevNode::ioctl(unsigned long request, void* argument) {
  if (_IOC_SIZE(request) > 0 && argument == nullptr) return -EFAULT;
  switch (request) {
    case HIDIOCGVERSION:
      *static_cast<int*>(argument) = HID_VERSION;
      return 0;
    case HIDIOCGDEVINFO:
      device_info(argument);
      return 0;
    case HIDIOCGFLAG:
      *static_cast<int*>(argument) = flags_;
      return 0;
    case HIDIOCSFLAG: {
      const int flags = *static_cast<int*>(argument);
      // Whole reports can be asked for only along with usage references.
      if ((flags & ~HIDDEV_FLAGS) != 0 || flags == HIDDEV_FLAG_REPORT) return -EINVAL;
      flags_ = flags;
      return 0;
    }
    case HIDIOCINITREPORT:
      initialise_reports();
      return 0;
    case HIDIOCGREPORT:
    case HIDIOCSREPORT:
    case HIDIOCGREPORTINFO:
      return report_request(request, argument);
    case HIDIOCGFIELDINFO:
      return field_info(argument);
    case HIDIOCGUCODE:
    case HIDIOCGUSAGE:
    case HIDIOCSUSAGE:
      if (!initialised_) initialise_reports();
      return usage_request(request, *static_cast<hiddev_usage_ref*>(argument));
    default:
      return by_size(request, argument);
  }
}

int HiddevNode::by_size(unsigned long request, void* argument) {
  const std::span<char> room(static_cast<char*>(argument), _IOC_SIZE(request));
  switch (without_size(request)) {
    case HIDIOCGNAME(0):
      return copy_name(hid_->identity().kernel_name(), room);
    case HIDIOCGPHYS(0):
      return copy_name(hid_->phys(), room);
    default:
      return -EINVAL;
  }
}

void HiddevNode::device_info(void* argument) const {
  const UsbIdentity& identity = hid_->identity();
  hiddev_devinfo info{};
  info.bustype = BUS_USB;
  info.busnum = 1;
  info.devnum = hid_->device_number();
  info.ifnum = hid_->interface_number();
  info.vendor = static_cast<int16_t>(identity.vendor);
  info.product = static_cast<int16_t>(identity.product);
  info.version = kDeviceVersion;
  info.num_applications = hid_->usb().application_count();
  *static_cast<hiddev_devinfo*>(argument) = info;
}

void HiddevNode::initialise_reports() {
  for (const FeatureReport& report : hid_->reports()) hid_->fetch_values(report);
  initialised_ = true;
}

// The id may carry "first" or "the one after"; it is replaced by the report's own.
const FeatureReport* HiddevNode::look_up(uint32_t type, uint32_t& id) const {
  if (type != HID_REPORT_TYPE_FEATURE) return nullptr;
  const std::span<const FeatureReport> all = hid_->reports();
  const FeatureReport* report = nullptr;
  switch (id & ~static_cast<uint32_t>(HID_REPORT_ID_MASK)) {
    case 0:
      return hid_->find_report(id);
    case HID_REPORT_ID_FIRST:
      report = all.empty() ? nullptr : all.data();
      break;
    case HID_REPORT_ID_NEXT:
      report = hid_->find_report(id & HID_REPORT_ID_MASK);
      if (report != nullptr && ++report == all.data() + all.size()) report = nullptr;
      break;
    default:
      break;
  }
  if (report != nullptr) id = report->id;
  return report;
}

int HiddevNode::report_request(unsigned long request, void* argument) {
  auto& info = *static_cast<hiddev_report_info*>(argument);
  uint32_t id = info.report_id;
  const FeatureReport* report = look_up(info.report_type, id);
  if (report == nullptr) return -EINVAL;
  if (request == HIDIOCGREPORTINFO) {
    info.report_id = id;
    info.num_fields = kFieldsPerReport;
  } else if (request == HIDIOCSREPORT) {
    hid_->send_values(*report);
  } else {
    hid_->fetch_values(*report);
  }
  return 0;
}

int HiddevNode::field_info(void* argument) {
  auto& info = *static_cast<hiddev_field_info*>(argument);
  uint32_t id = info.report_id;
  const FeatureReport* report = look_up(info.report_type, id);
  if (report == nullptr || info.field_index >= kFieldsPerReport) return -EINVAL;
  const uint32_t type = info.report_type;
  info = {};
  info.report_type = type;
  info.report_id = id;
  info.maxusage = report->usage_count;
  info.flags = HID_FIELD_VARIABLE;
  info.application = kFirstUsage;
  info.logical_minimum = report->logical_minimum;
  info.logical_maximum = report->logical_maximum;
  return 0;
}

bool HiddevNode::find_usage(hiddev_usage_ref& usage) const {
  if (usage.report_type != HID_REPORT_TYPE_FEATURE) return false;
  for (const FeatureReport& report : hid_->reports()) {
    const uint32_t index = usage.usage_code - kFirstUsage;
    if (index >= report.usage_count) continue;
    usage.report_id = report.id;
    usage.field_index = 0;
    usage.usage_index = index;
    return true;
  }
  return false;
}

int HiddevNode::usage_request(unsigned long request, hiddev_usage_ref& usage) {
  // A usage may be named by its code alone, but for the request that asks for the code.
  const bool by_code = usage.report_id == HID_REPORT_ID_UNKNOWN && request != HIDIOCGUCODE;
  hiddev_usage_ref found = usage;
  if (by_code && !find_usage(found)) return -EINVAL;
  const FeatureReport* report = look_up(found.report_type, found.report_id);
  if (report == nullptr || found.field_index >= kFieldsPerReport) return -EINVAL;
  if (found.usage_index >= report->usage_count) return -EINVAL;

  int32_t& value = hid_->values(*report)[found.usage_index];
  switch (request) {
    case HIDIOCGUCODE:
      usage.usage_code = kFirstUsage + found.usage_index;
      break;
    case HIDIOCGUSAGE:
      found.value = value;
      usage = found;
      break;
    default:
      value = usage.value;
      break;
  }
  return 0;
}

ssize_t HiddevNode::read(std::span<uint8_t>) {
  return -EAGAIN;  // input events, and there are none
}

ssize_t HiddevNode::write(std::span<const uint8_t>) { return -EINVAL; }

DeviceNode::AfterUnplug HiddevNode::after_unplug() const {
  return {.ioctl = -ENODEV, .read = -EIO, .write = -EINVAL};
}

std::string HiddevNode::describe(unsigned long request, const void* argument) const {
  return hiddev_request(request, argument);
}

}  // namespace zelkora::sim
