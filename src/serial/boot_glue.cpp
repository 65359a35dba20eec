// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// What starts the attach daemons at boot: lines in rc.local, a udev rule, systemd units. Numbers and
// names are those of the serial panels in the device table; a panel whose port name is not fit for
// a command is left out, and keeps its number.
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string_view>
#include <utility>

#include "core/file_rewrite.h"
#include "core/log.h"
#include "core/open_file.h"
#include "core/paths.h"
#include "core/scoped.h"
#include "core/text.h"
#include "port_names.h"
#include "zelkora.h"

using zelkora::kTrace;
using zelkora::NewContent;
using zelkora::serial::for_each_serial_panel;
using zelkora::serial::PortName;

namespace {

// A text file's lines, whole, however long they are.
class WholeLines {
 public:
  explicit WholeLines(FILE* file) : file_(file) {}
  ~WholeLines() { std::free(line_); }
  WholeLines(const WholeLines&) = delete;
  WholeLines& operator=(const WholeLines&) = delete;

  bool next() {
    length_ = getline(&line_, &size_, file_);
    return length_ >= 0;
  }
  std::string_view line() const { return {line_, static_cast<size_t>(length_)}; }

 private:
  FILE* file_;
  char* line_ = nullptr;
  size_t size_ = 0;
  ssize_t length_ = 0;
};

bool is_daemon_line(std::string_view line) { return zelkora::contains(line, "vastrel"); }

// The number of the last line that loads the module, daemon lines not counted; -1 when none does.
// Nothing: the file could not be read.
std::optional<int> find_module_line(FILE* file) {
  int found = -1;
  int number = 0;
  for (WholeLines lines(file); lines.next();) {
    if (is_daemon_line(lines.line())) continue;
    if (zelkora::contains(lines.line(), "modprobe morlex")) found = number;
    ++number;
  }
  if (std::ferror(file) != 0) return std::nullopt;
  return found;
}

// Behind a line that may be the file's last, without a line feed.
void write_daemon_lines(FILE* out, std::string_view line) {
  bool ended = line.ends_with('\n');
  for_each_serial_panel([out, &ended](int number, const PortName& name, const TouchDeviceEntry&) {
    if (!name.is_safe()) return;
    if (!std::exchange(ended, true)) std::fputc('\n', out);
    std::fprintf(out, "/usr/bin/vastrel%d -morlex --daemon /dev/%s\n", number, name.text);
  });
}

// Everything but the daemon lines, and new ones behind the line that loads the module.
bool write_script(FILE* script, int module_line, NewContent& content) {
  int number = 0;
  for (WholeLines lines(script); lines.next();) {
    if (is_daemon_line(lines.line())) continue;
    content.write(lines.line());
    if (number++ == module_line) write_daemon_lines(content.stream(), lines.line());
  }
  return std::ferror(script) == 0;
}

int rewrite_boot_script(const char* path) {
  const zelkora::ScopedFile script(zelkora::open_file(path, "r"));
  if (!script) return 0;
  const std::optional<int> module_line = find_module_line(script.get());
  if (!module_line) return 1;
  // A script that begins with the module is left alone: it is the administrator's own.
  if (*module_line == 0) return 1;
  std::rewind(script.get());
  NewContent content;
  if (content.stream() != nullptr && write_script(script.get(), *module_line, content)) {
    content.commit(path);
  }
  return 1;
}

bool exists(const char* path) {
  return zelkora::ScopedFile(zelkora::open_file(path, "r")).get() != nullptr;
}

// Creates the unit of the daemon with this number in the current directory, unless it is there.
bool create_unit(int number) {
  char path[32];
  std::snprintf(path, sizeof path, "./vastrel%d@.service", number);
  if (exists(path)) return true;
  NewContent content;
  if (content.stream() == nullptr) return false;
  std::fprintf(content.stream(),
               "[Unit]\n"
               "Description=attach serial touch screen\n"
               "\n"
               "[Service]\n"
               "Type=simple\n"
               "ExecStart=/usr/bin/vastrel%d -morlex /dev/%%I\n",
               number);
  return content.commit(path);
}

}  // namespace

int SetSerDevBootFile(void) { return rewrite_boot_script(zelkora::paths::kRcLocal); }

int SetSerDevBootFile_rcd(void) { return rewrite_boot_script(zelkora::paths::kRcLocalInRcD); }

int SetUdevRule(void) {
  // Always the one in /etc, whatever ChkUdevPath() says, where the refresh deletes the one of its
  // choice: an existing rule is the administrator's to change.
  const char* path = zelkora::paths::kUdevRuleInEtc;
  if (exists(path)) return 1;
  NewContent content;
  if (content.stream() != nullptr) {
    for_each_serial_panel([&content](int number, const PortName& name, const TouchDeviceEntry&) {
      if (!name.is_safe()) return;
      std::fprintf(content.stream(),
                   "ACTION==\"add|change\", SUBSYSTEM==\"tty|pnp\", KERNEL==\"%s\", "
                   "MODE:=\"0777\", \\\n"
                   "RUN+=\"/sbin/modprobe morlex\", \\\n"
                   "TAG+=\"systemd\", ENV{SYSTEMD_WANTS}+=\"vastrel%d@%%k.service\"\n",
                   name.text, number);
    });
    if (content.commit(path)) return 1;
  }
  DebugMsg(kTrace, "Create udev rules fail!!\n");
  return 0;
}

int CreateServiceFile(void) {
  for (int i = 0; i < ZELKORA_MAX_DEVICES; ++i) {
    const PortName name(TouchDevice[i].Name);
    // By the table index, where all else goes by the number of the serial panel.
    if (!name.is_tty() || !name.is_safe() || create_unit(i + 1)) continue;
    DebugMsg(kTrace, "Create systemd service fail!!\n");
    return 1;
  }
  return 0;
}
