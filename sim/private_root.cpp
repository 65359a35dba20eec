// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "private_root.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <span>
#include <string_view>
#include <vector>

namespace zelkora::sim {
namespace {

namespace fs = std::filesystem;

// Steps return what went wrong; an empty text means that they are done.
using Error = std::string;

constexpr const char* kOrdinaryNodes[] = {"null",    "zero", "full", "random",
                                          "urandom", "tty",  "pts",  "shm"};
constexpr const char* kEtcFiles[] = {"passwd",      "group",     "nsswitch.conf", "hosts",
                                     "resolv.conf", "localtime", "ld.so.cache"};

// mount() ignores the type of such mounts, memory checkers read it.
constexpr char kNoType[] = "none";

Error failure(std::string_view what) { return std::string(what) + ": " + std::strerror(errno); }

class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  explicit operator bool() const { return number_ >= 0; }
  int number() const { return number_; }
  // A way to what is open here that no mount over its old path can block.
  std::string path() const { return "/proc/self/fd/" + std::to_string(number_); }

 private:
  int number_;
};

Error write_text(const char* path, const std::string& text) {
  const Descriptor file(::open(path, O_WRONLY | O_CLOEXEC));
  if (!file) return failure(path);
  const ssize_t written = ::write(file.number(), text.data(), text.size());
  return written == static_cast<ssize_t>(text.size()) ? Error() : failure(path);
}

Error make_empty_file(const std::string& path) {
  // Not by open(), which a carrier may have taken over for nodes like this one.
  return ::mknod(path.c_str(), S_IFREG | 0666, 0) == 0 ? Error() : failure("create " + path);
}

Error make_directory(const std::string& path, mode_t mode) {
  // The mode is set apart, because that of mkdir() is cut by the umask.
  if (::mkdir(path.c_str(), mode) != 0 || ::chmod(path.c_str(), mode) != 0) {
    return failure("create " + path);
  }
  return {};
}

Error mount_empty(const char* path) {
  if (::mount("tmpfs", path, "tmpfs", 0, "mode=755") != 0) {
    return failure(std::string("mount a private ") + path);
  }
  return {};
}

Error bind(const std::string& source, const std::string& target) {
  if (::mount(source.c_str(), target.c_str(), kNoType, MS_BIND | MS_REC, nullptr) != 0) {
    return failure("bind " + target);
  }
  return {};
}

// Shows source/name as target/name; nothing happens when there is no such source.
Error take_over(const std::string& source, const std::string& target, const std::string& name) {
  const std::string from = source + "/" + name;
  const std::string to = target + "/" + name;
  std::error_code code;
  const fs::file_status status = fs::symlink_status(from, code);
  if (status.type() == fs::file_type::not_found) return {};
  if (fs::is_symlink(status)) {
    fs::copy_symlink(from, to, code);
    return code ? "link " + to + ": " + code.message() : Error();
  }
  const Error made = fs::is_directory(status) ? make_directory(to, 0755) : make_empty_file(to);
  return made.empty() ? bind(from, to) : made;
}

Error own_user_namespace() {
  const std::string user = std::to_string(::getuid());
  const std::string group = std::to_string(::getgid());
  if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
    return failure("private mounts need root or user namespaces, and this machine allows neither");
  }
  // Group ids may be mapped only by a process that gave up setgroups().
  if (Error error = write_text("/proc/self/setgroups", "deny"); !error.empty()) return error;
  if (Error error = write_text("/proc/self/uid_map", user + " " + user + " 1"); !error.empty()) {
    return error;
  }
  return write_text("/proc/self/gid_map", group + " " + group + " 1");
}

Error own_mount_namespace() {
  if (::unshare(CLONE_NEWNS) != 0) {
    if (errno != EPERM) return failure("make a mount namespace");
    if (Error error = own_user_namespace(); !error.empty()) return error;
  }
  if (::mount(nullptr, "/", kNoType, MS_REC | MS_PRIVATE, nullptr) != 0) {
    return failure("keep mounts to this process");
  }
  return {};
}

Error replace_dev() {
  const Descriptor real(::open("/dev", O_PATH | O_CLOEXEC));
  if (!real) return failure("/dev");
  if (Error error = mount_empty("/dev"); !error.empty()) return error;
  for (const char* name : kOrdinaryNodes) {
    if (Error error = take_over(real.path(), "/dev", name); !error.empty()) return error;
  }
  constexpr const char* kLinks[][2] = {{"/proc/self/fd", "/dev/fd"},
                                       {"/proc/self/fd/0", "/dev/stdin"},
                                       {"/proc/self/fd/1", "/dev/stdout"},
                                       {"/proc/self/fd/2", "/dev/stderr"},
                                       {"pts/ptmx", "/dev/ptmx"}};
  for (const auto& [to, link] : kLinks) {
    if (::symlink(to, link) != 0) return failure(link);
  }
  for (const char* directory : {"/dev/usb", "/dev/input"}) {
    if (Error error = make_directory(directory, 0755); !error.empty()) return error;
  }
  return {};
}

// Puts a private directory in the place of this one: everything in it is there, but for what is
// named, and new files go nowhere else.
Error replace_with_view(const std::string& directory, std::span<const std::string_view> without) {
  const Descriptor real(::open(directory.c_str(), O_PATH | O_CLOEXEC));
  if (!real) return failure(directory);
  std::vector<std::string> names;
  std::error_code code;
  for (const fs::directory_entry& entry : fs::directory_iterator(directory, code)) {
    names.push_back(entry.path().filename());
  }
  if (code) return directory + ": " + code.message();

  if (Error error = mount_empty(directory.c_str()); !error.empty()) return error;
  for (const std::string& name : names) {
    if (std::ranges::find(without, name) != without.end()) continue;
    if (Error error = take_over(real.path(), directory, name); !error.empty()) return error;
  }
  return {};
}

// An empty directory, whether the machine has it or not.
Error make_private(const fs::path& directory) {
  if (fs::exists(directory)) return mount_empty(directory.c_str());
  fs::path present = directory.parent_path();
  while (!fs::exists(present)) present = present.parent_path();
  if (Error error = replace_with_view(present, {}); !error.empty()) return error;
  std::error_code code;
  fs::create_directories(directory, code);
  return code ? "create " + directory.string() + ": " + code.message() : Error();
}

Error replace_boot_files() {
  for (const char* directory : {"/etc/udev/rules.d", "/lib/udev/rules.d", "/etc/systemd/system"}) {
    if (Error error = make_private(directory); !error.empty()) return error;
  }
  constexpr std::string_view kScripts[] = {"rc.local", "rc.d"};
  if (Error error = replace_with_view("/etc", kScripts); !error.empty()) return error;
  return make_directory("/etc/rc.d", 0755);
}

Error replace_data_directory(const std::string& replacement) {
  const Descriptor data(
      ::open(replacement.empty() ? "/" : replacement.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!data) return failure("data directory " + replacement);

  const std::string own_name = fs::path(kDataDirectory).filename();
  const std::string_view without[] = {own_name};
  if (Error error = replace_with_view("/opt", without); !error.empty()) return error;
  if (Error error = make_directory(kDataDirectory, 0777); !error.empty()) return error;
  return replacement.empty() ? Error() : bind(data.path(), kDataDirectory);
}

Error replace_etc() {
  const Descriptor real(::open("/etc", O_PATH | O_CLOEXEC));
  if (!real) return failure("/etc");
  if (Error error = mount_empty("/etc"); !error.empty()) return error;
  for (const char* name : kEtcFiles) {
    // Copies, not binds: what is written here must not reach the real file.
    const fs::path from = fs::path(real.path()) / name;
    std::error_code code;
    if (!fs::exists(from, code)) continue;
    fs::copy_file(from, fs::path("/etc") / name, code);
    if (code) return std::string("copy /etc/") + name + ": " + code.message();
  }
  return {};
}

}  // namespace

std::string enter_private_root(const PrivateRootOptions& options) {
  // Relative names and open directories keep their meaning: the working directory is not changed.
  if (Error error = own_mount_namespace(); !error.empty()) return error;
  if (Error error = replace_data_directory(options.data_directory); !error.empty()) return error;
  if (Error error = replace_dev(); !error.empty()) return error;
  if (options.private_etc) {
    if (Error error = replace_etc(); !error.empty()) return error;
  }
  return options.private_boot ? replace_boot_files() : Error();
}

std::string make_node_placeholder(const std::string& path) {
  std::error_code code;
  fs::create_directories(fs::path(path).parent_path(), code);
  if (code) return "create the directory of " + path + ": " + code.message();
  return make_empty_file(path);
}

std::string remove_node_placeholder(const std::string& path) {
  return ::unlink(path.c_str()) == 0 ? Error() : failure("remove " + path);
}

}  // namespace zelkora::sim
