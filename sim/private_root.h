// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// A private view of the file system for one process and its children: a /dev without the machine's
// devices, where virtual nodes can be shown, and a data directory of its own. Nothing of it is seen
// outside, and it is gone with the last process in it.
#pragma once

#include <string>

namespace zelkora::sim {

struct PrivateRootOptions {
  // An /etc with copies of the few files that the C library reads, for programs that write there.
  bool private_etc = false;
  // No rc.local, no files in /etc/rc.d and no udev rules and systemd units but those written there,
  // which the machine never sees.
  bool private_boot = false;
  // The data directory to use; empty: a fresh one that everybody may write to.
  std::string data_directory = {};
};

inline constexpr char kDataDirectory[] = "/opt/.touch_panel";

// Moves the calling process, which must have one thread only, into a mount namespace of its own:
//   /dev   only the ordinary nodes (null, tty, pts, ...), and empty /dev/usb and /dev/input
//   /opt   the real one, but for the data directory
//   /etc   see above, and so for /lib/udev
// Needs no privileges where user namespaces are allowed; user and group ids stay the same. Returns
// an empty text, or what went wrong, in words for the user. The process is of no further use then.
std::string enter_private_root(const PrivateRootOptions& options);

// Shows a virtual node in the private /dev as an empty file, its directories included, and takes
// it away again. Return an empty text, or what went wrong.
std::string make_node_placeholder(const std::string& path);
std::string remove_node_placeholder(const std::string& path);

}  // namespace zelkora::sim
