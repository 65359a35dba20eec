// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "hiddev_node.h"

#include <linux/hiddev.h>
#include <linux/input.h>
#include <poll.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <cstring>
#include <optional>
#include <utility>

#include "request_name.h"

namespace zelkora::sim {
namespace {

constexpr int16_t kDeviceVersion = 0x0100;

// The report that a type and an id name. The id may carry "first" or "the one after".
std::optional<HidReport> look_up(const HidInterface& hid, uint32_t type, uint32_t id) {
  std::vector<HidReport> all = hid.reports();
  std::erase_if(all, [&](const HidReport& report) { return report.type != type; });
  auto found = all.begin();
  const uint32_t flags = id & ~static_cast<uint32_t>(HID_REPORT_ID_MASK);
  if (flags != HID_REPORT_ID_FIRST) {
    found = std::ranges::find(all, id & HID_REPORT_ID_MASK, &HidReport::id);
  }
  if (flags == HID_REPORT_ID_NEXT && found != all.end()) ++found;
  if (found == all.end() || (flags & ~(HID_REPORT_ID_FIRST | HID_REPORT_ID_NEXT)) != 0) {
    return std::nullopt;
  }
  return *found;
}

// The report of a usage that is named by its code alone; the other names are filled in.
std::optional<HidReport> look_up_code(const HidInterface& hid, hiddev_usage_ref& usage) {
  for (const HidReport& report : hid.reports()) {
    if (report.type != usage.report_type) continue;
    for (size_t field = 0; field < report.fields.size(); ++field) {
      const uint32_t index = usage.usage_code - report.fields[field].first_usage;
      if (index >= report.fields[field].usage_count) continue;
      usage.report_id = report.id;
      usage.field_index = static_cast<uint32_t>(field);
      usage.usage_index = index;
      return report;
    }
  }
  return std::nullopt;
}

bool is_about_many(unsigned long request) {
  return request == HIDIOCGUSAGES || request == HIDIOCSUSAGES;
}

int collection_info(void* argument) {
  auto& info = *static_cast<hiddev_collection_info*>(argument);
  if (info.index >= hid_collections().size()) return -EINVAL;
  const auto& [type, usage, level] = hid_collections()[info.index];
  info = {info.index, type, usage, level};
  return 0;
}

// A usage is the result, though many look like failures when they are seen as a number.
int application(uint32_t index) {
  for (const HidCollection& collection : hid_collections()) {
    constexpr uint32_t kApplication = 1;
    if (collection.type != kApplication) continue;
    if (index-- == 0) return static_cast<int>(collection.usage);
  }
  return -EINVAL;
}

// The strings that the device descriptor names.
int device_string(const UsbIdentity& identity, void* argument) {
  auto& string = *static_cast<hiddev_string_descriptor*>(argument);
  if (string.index != 1 && string.index != 2) return -EINVAL;
  return copy_name(string.index == 1 ? identity.manufacturer : identity.product_name,
                   std::span(string.value)) -
         1;
}

}  // namespace

HiddevNode::HiddevNode(std::shared_ptr<HidInterface> interface) : hid_(std::move(interface)) {
  hid_->add(*this);
}

HiddevNode::~HiddevNode() { hid_->remove(*this); }

int HiddevNode::ioctl(unsigned long request, void* argument) {
  if (gone()) return -ENODEV;
  if (_IOC_SIZE(request) > 0 && argument == nullptr) return -EFAULT;
  switch (request) {
    case HIDIOCINITREPORT:
      hid_->initialise();
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
    case HIDIOCGUSAGES:
    case HIDIOCSUSAGES:
    case HIDIOCGCOLLECTIONINDEX:
      if (!hid_->initialised()) hid_->initialise();
      return usage_request(request, argument);
    default:
      return device_request(request, argument);
  }
}

int HiddevNode::device_request(unsigned long request, void* argument) {
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
    case HIDIOCSFLAG:
      return set_flags(*static_cast<int*>(argument));
    case HIDIOCAPPLICATION:
      return application(static_cast<uint32_t>(std::bit_cast<uintptr_t>(argument)));
    case HIDIOCGCOLLECTIONINFO:
      return collection_info(argument);
    case HIDIOCGSTRING:
      return device_string(hid_->identity(), argument);
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

int HiddevNode::set_flags(int flags) {
  // Whole reports can be asked for only along with usage references.
  if ((flags & ~HIDDEV_FLAGS) != 0 || flags == HIDDEV_FLAG_REPORT) return -EINVAL;
  flags_ = flags;
  return 0;
}

int HiddevNode::report_request(unsigned long request, void* argument) {
  auto& info = *static_cast<hiddev_report_info*>(argument);
  const std::optional<HidReport> report = look_up(*hid_, info.report_type, info.report_id);
  if (!report) return -EINVAL;
  if (request == HIDIOCGREPORTINFO) {
    info.report_id = report->id;
    info.num_fields = static_cast<uint32_t>(report->fields.size());
  } else if (request == HIDIOCGREPORT) {
    hid_->fetch_values(*report);
  } else if (report->type == HID_REPORT_TYPE_INPUT) {
    return -EINVAL;
  } else {
    hid_->send_values(*report);
  }
  return 0;
}

int HiddevNode::field_info(void* argument) {
  auto& info = *static_cast<hiddev_field_info*>(argument);
  const std::optional<HidReport> report = look_up(*hid_, info.report_type, info.report_id);
  if (!report || info.field_index >= report->fields.size()) return -EINVAL;
  const HidField& field = report->fields[info.field_index];
  info = {};
  info.report_type = report->type;
  info.report_id = report->id;
  // Odd, but so it is: the number of the last usage comes back in place of the field's own.
  info.field_index = field.usage_count - 1;
  info.maxusage = field.usage_count;
  info.flags = field.flags;
  info.physical = field.physical;
  info.application = field.application;
  info.logical_minimum = field.logical_minimum;
  info.logical_maximum = field.logical_maximum;
  return 0;
}

int HiddevNode::usage_request(unsigned long request, void* argument) {
  // Of one usage the record is the beginning of that of many.
  auto& usage = *static_cast<hiddev_usage_ref*>(argument);
  auto* many = is_about_many(request) ? static_cast<hiddev_usage_ref_multi*>(argument) : nullptr;
  const bool only_reads =
      request == HIDIOCGUCODE || request == HIDIOCGUSAGE || request == HIDIOCGUSAGES;
  if (usage.report_type == HID_REPORT_TYPE_INPUT && !only_reads) return -EINVAL;

  // A usage may be named by its code alone, but for the request that asks for the code.
  const bool by_code = usage.report_id == HID_REPORT_ID_UNKNOWN && request != HIDIOCGUCODE;
  hiddev_usage_ref found = usage;
  const std::optional<HidReport> report =
      by_code ? look_up_code(*hid_, found) : look_up(*hid_, usage.report_type, usage.report_id);
  if (!report || found.field_index >= report->fields.size()) return -EINVAL;
  const HidField& field = report->fields[found.field_index];
  if (found.usage_index >= field.usage_count) return -EINVAL;
  std::span<int32_t> values(hid_->values(*report, found.field_index));
  values = values.subspan(found.usage_index);
  if (many != nullptr && many->num_values > values.size()) return -EINVAL;

  switch (request) {
    case HIDIOCGUCODE:
      usage.usage_code = field.first_usage + usage.usage_index;
      return 0;
    case HIDIOCGUSAGE:
      found.value = values[0];
      usage = found;
      return 0;
    case HIDIOCSUSAGE:
      values[0] = usage.value;
      return 0;
    case HIDIOCGUSAGES:
      usage = found;
      std::ranges::copy(values.first(many->num_values), many->values);
      return 0;
    case HIDIOCSUSAGES:
      std::copy_n(many->values, many->num_values, values.begin());
      return 0;
    default:
      return field.collection;
  }
}

void HiddevNode::hear(uint8_t id, std::span<const uint8_t>) {
  constexpr size_t kLongestQueue = 2048;
  if ((flags_ & HIDDEV_FLAG_REPORT) == 0) return;
  heard_.push_back(id);
  if (heard_.size() == kLongestQueue) heard_.clear();  // a ring, and it has caught up with itself
}

// Only reports that arrived are told: there is no other input.
ssize_t HiddevNode::read(std::span<uint8_t> room) {
  const bool whole = (flags_ & HIDDEV_FLAG_UREF) != 0;
  if (room.size() < (whole ? sizeof(hiddev_usage_ref) : sizeof(hiddev_event))) return 0;
  if ((flags_ & HIDDEV_FLAG_REPORT) == 0) heard_.clear();
  if (heard_.empty()) return gone() ? -EIO : -EAGAIN;
  const size_t count = std::min(heard_.size(), room.size() / sizeof(hiddev_usage_ref));
  for (size_t i = 0; i < count; ++i) {
    hiddev_usage_ref event{};
    event.report_type = HID_REPORT_TYPE_FEATURE;
    event.report_id = heard_[i];
    event.field_index = HID_FIELD_INDEX_NONE;
    std::memcpy(room.data() + i * sizeof event, &event, sizeof event);
  }
  heard_.erase(heard_.begin(), heard_.begin() + static_cast<ptrdiff_t>(count));
  return static_cast<ssize_t>(count * sizeof(hiddev_usage_ref));
}

ssize_t HiddevNode::write(std::span<const uint8_t>) { return -EINVAL; }

int HiddevNode::poll() {
  if (!heard_.empty()) return POLLIN | POLLRDNORM | POLLOUT;
  return gone() ? POLLERR | POLLHUP : 0;
}

std::string HiddevNode::describe(unsigned long request, const void* argument) const {
  return hiddev_request(request, argument);
}

}  // namespace zelkora::sim
