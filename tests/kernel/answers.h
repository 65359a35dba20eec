// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// How the probes write down what a kernel answered. Two kernels that answer alike give the same
// text, so what may differ between two machines (node numbers, bus numbers, ports) stays out of it.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace zelkora::probe {

// "0", "64" or the name of the error; of the call that was made last.
std::string outcome(long result);

// "WHAT -> OUTCOME". True when the request was served.
bool show(const std::string& what, long result);

// The bytes, without the zeros at the end.
std::string hex(std::span<const uint8_t> bytes);

// What poll() says at once about a descriptor, wanted both ways.
void show_poll(const std::string& what, int fd);

// The answers to one question about many numbers: equal ones in a row become one line.
class Answers {
 public:
  explicit Answers(std::string question) : question_(std::move(question)) {}
  ~Answers() { flush(); }
  Answers(const Answers&) = delete;
  Answers& operator=(const Answers&) = delete;

  void add(unsigned number, std::string answer);

 private:
  void flush();

  std::string question_;
  std::string answer_;
  unsigned first_ = 0;
  unsigned last_ = 0;
};

}  // namespace zelkora::probe
