// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The file names of zelkoractl. Those of nodes and name lists are the library's, which tells none.
#pragma once

namespace zelkoractl::paths {

inline constexpr char kConfig[] = "/etc/zelkora/zelkoractl.ini";

inline constexpr char kData[] = "/opt/.touch_panel";
inline constexpr char kDefaults[] = "/opt/.touch_panel/TouchUtil.ini";

inline constexpr char kUnits[] = "/etc/systemd/system";

inline constexpr char kDev[] = "/dev";
inline constexpr char kDevUsb[] = "/dev/usb";
inline constexpr char kResistiveNames[] = "/opt/.touch_panel/rmanuflist.conf";
inline constexpr char kPctNames[] = "/opt/.touch_panel/manuflist.conf";

}  // namespace zelkoractl::paths
