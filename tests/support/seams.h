// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Where the library's calls of the C library land while a test runs. The test executable defines
// open, ioctl, usleep, system and the others itself (libc_calls.cpp), and executables win over the
// C library when the loader binds the library's calls. Device nodes are served by the virtual
// kernel, sleeps and shell commands are recorded and not carried out; everything else goes on to
// the C library. All of it lands in one ordered trace.
#pragma once

#include <sys/types.h>
#include <termios.h>

#include <cstddef>
#include <cstdio>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "disk_operation.h"
#include "virtual_kernel.h"

namespace zelkora::test {

// The answer to one shell command, which is given by its full text.
struct CommandAnswer {
  std::string command;
  int status = 0;                  // what system() and pclose() return
  std::string output = {};         // what popen() reads
  std::function<void()> effect{};  // what else the command does
};

class Seams {
 public:
  Seams();
  ~Seams();
  Seams(const Seams&) = delete;
  Seams& operator=(const Seams&) = delete;

  // The one of the test that runs; null between tests, when every call goes on to the C library.
  static Seams* active();

  sim::VirtualKernel kernel;
  std::vector<std::string> trace;
  std::vector<std::string> messages;  // with their prefixes and line feeds, as they were printed
  std::string kernel_release = "6.1.0";
  bool show_output = false;  // the library's text goes on to standard output besides
  std::vector<CommandAnswer> commands;
  bool any_command = false;            // commands without an answer succeed silently
  std::set<std::string> absent_nodes;  // may be opened in vain,
  bool any_node = false;               // and so may all nodes
  std::map<std::string, termios> terminals;
  std::function<void()> during_usleep;  // what else happens while the library waits
  // Is told of every change on disk, once it is made.
  std::function<void(const DiskOperation&)> on_disk_operation;

  // Makes the call (by name, such as "fopen") on a path fail with the error, once `skipped` such
  // calls went through. A path that ends in "*" stands for all that begin like it.
  void fail_file_call(std::string call, std::string path, int error, int skipped = 0);
  // A stream that fopen() opens on this path gives so many bytes, and then fails with EIO.
  void break_reading(std::string path, size_t bytes);
  // The process is killed with SIGKILL at call number `count`, from 1 on, of those that change
  // what is on disk.
  void kill_at_write_call(int count) { write_calls_left_ = count; }

  bool serves(int descriptor) const { return open_nodes_.contains(descriptor); }

  // The calls; results as the C library's, with errno set.
  // Nothing: the path is none of a device.
  std::optional<int> open(const std::string& path, int flags);
  void close(int descriptor);
  int ioctl(int descriptor, unsigned long request, void* argument);
  ssize_t read(int descriptor, std::span<uint8_t> room);
  ssize_t write(int descriptor, std::span<const uint8_t> bytes);
  int terminal_call(int descriptor, const std::string& line);
  termios& terminal(int descriptor) { return terminals[open_nodes_.at(descriptor).path]; }
  void print_prefix(const char* text) { prefix_ = text; }
  void print(const std::string& text);
  int run(const std::string& command);
  FILE* open_pipe(const std::string& command);
  FILE* empty_pipe();  // of a command that says nothing
  std::optional<int> close_pipe(FILE* pipe);
  size_t open_pipes() const { return pipes_.size(); }
  // The error that was asked for with fail_file_call().
  std::optional<int> file_fault(std::string_view call, std::string_view path);
  std::optional<int> file_fault(std::string_view call, int descriptor);
  FILE* broken_stream(FILE* file, const std::string& path);
  void reach_write_call();

 private:
  struct OpenNode {
    int handle;
    std::string path;
  };
  struct FileFault {
    std::string call;
    std::string path;
    int error;
    int skipped;
  };
  struct Pipe {
    std::string output;
    int status;
  };

  CommandAnswer answer(const std::string& command);

  std::map<int, OpenNode> open_nodes_;
  std::vector<FileFault> file_faults_;
  std::map<std::string, size_t> broken_reads_;
  int write_calls_left_ = 0;
  std::map<FILE*, Pipe> pipes_;
  std::string prefix_;
};

// The C library's own function of that name, behind those of the test executable.
void* next_function(const char* name);

template <typename Function>
Function next(const char* name) {
  return reinterpret_cast<Function>(next_function(name));
}

}  // namespace zelkora::test
