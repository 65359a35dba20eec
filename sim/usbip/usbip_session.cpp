// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "usbip_session.h"

#include <cerrno>
#include <cstring>

namespace zelkora::sim {
namespace {

using Bytes = std::vector<uint8_t>;

template <typename Message>
Message read_message(std::span<const uint8_t> bytes) {
  Message message;
  std::memcpy(&message, bytes.data(), sizeof message);
  return message;
}

template <typename Message>
void append(Bytes& out, const Message& message) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(&message);
  out.insert(out.end(), bytes, bytes + sizeof message);
}

// A reply repeats the sequence number alone; the other fields are zero by the protocol.
usbip::BasicHeader reply_header(uint32_t command, const usbip::BasicHeader& request) {
  usbip::BasicHeader header;
  header.command = command;
  header.sequence = request.sequence;
  return header;
}

}  // namespace

Bytes UsbipSession::receive(std::span<const uint8_t> bytes) {
  incoming_.insert(incoming_.end(), bytes.begin(), bytes.end());
  Bytes out;
  while (answer_next(out)) {
  }
  return out;
}

bool UsbipSession::answer_next(Bytes& out) {
  if (incoming_.size() < sizeof(usbip::Submit)) return false;
  const auto request = read_message<usbip::Submit>(incoming_);
  size_t size = sizeof request;
  if (request.basic.command == usbip::kSubmit) {
    if (request.basic.direction == usbip::kDirectionOut) size += request.length;
    if (incoming_.size() < size) return false;
    submit(request, std::span(incoming_).subspan(sizeof request, size - sizeof request), out);
  } else if (request.basic.command == usbip::kUnlink) {
    unlink(read_message<usbip::Unlink>(incoming_), out);
  }
  incoming_.erase(incoming_.begin(), incoming_.begin() + static_cast<ptrdiff_t>(size));
  return true;
}

void UsbipSession::submit(const usbip::Submit& request, std::span<const uint8_t> data, Bytes& out) {
  if (request.basic.endpoint != 0) {
    waiting_.insert(request.basic.sequence);
    return;
  }
  const auto [outcome, answer] = device_.control(request.setup, data);
  if (outcome == Outcome::kNoAnswer) {
    waiting_.insert(request.basic.sequence);
    return;
  }
  const bool done = outcome == Outcome::kDone;
  usbip::SubmitReply reply;
  reply.basic = reply_header(usbip::kSubmitReply, request.basic);
  reply.status = done ? 0u : static_cast<uint32_t>(-EPIPE);
  if (done && request.basic.direction == usbip::kDirectionOut) {
    reply.actual_length = static_cast<uint32_t>(data.size());
  } else if (done) {
    reply.actual_length = static_cast<uint32_t>(answer.size());
  }
  append(out, reply);
  out.insert(out.end(), answer.begin(), answer.end());
}

void UsbipSession::unlink(const usbip::Unlink& request, Bytes& out) {
  usbip::UnlinkReply reply;
  reply.basic = reply_header(usbip::kUnlinkReply, request.basic);
  // Status 0 says that the transfer had ended before.
  const bool cancelled = waiting_.erase(request.sequence) != 0;
  reply.status = cancelled ? static_cast<uint32_t>(-ECONNRESET) : 0u;
  append(out, reply);
}

}  // namespace zelkora::sim
