// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The one owner of file names.
#pragma once

namespace zelkora::paths {

// Installations let every user write here; see docs/SECURITY.md.
inline constexpr char kDataDirectory[] = "/opt/.touch_panel";

inline constexpr char kPctNames[] = "/opt/.touch_panel/manuflist.conf";
inline constexpr char kResistiveNames[] = "/opt/.touch_panel/rmanuflist.conf";
inline constexpr char kUtilities[] = "/opt/.touch_panel/Util.conf";
inline constexpr char kDefaults[] = "/opt/.touch_panel/TouchUtil.ini";
inline constexpr char kSerialPanels[] = "/opt/.touch_panel/sertp.conf";
inline constexpr char kXorgConf[] = "/opt/.touch_panel/X11/xorg.conf";

// Parameter store files, and the list of serial numbers in the same form.
inline constexpr char kPctRecords[] = "/opt/.touch_panel/.pctpbin";
inline constexpr char kPctTemporaryRecords[] = "/opt/.touch_panel/.pctpbintmp";
inline constexpr char kResistiveRecords[] = "/opt/.touch_panel/.restpbin";
inline constexpr char kResistiveTemporaryRecords[] = "/opt/.touch_panel/.restpbintmp";
inline constexpr char kPctSerialNumbers[] = "/opt/.touch_panel/.pctuniq";

// Flag files: their mere existence switches a behaviour.
inline constexpr char kMouseModeFlag[] = "/opt/.touch_panel/mousedef";
inline constexpr char kHybridModeFlag[] = "/opt/.touch_panel/.hybrid";
inline constexpr char kNoSerialFlag[] = "/opt/.touch_panel/.disable_rs232";
inline constexpr char kUdevInEtcFlag[] = "/opt/.touch_panel/udevdef";

// Where distributions keep their boot script. The marker beside it is the copy that was made when
// the script was first changed, and tells which of them is in use.
struct BootScript {
  const char* marker;
  const char* script;
};
inline constexpr BootScript kBootScripts[] = {
    {"/etc/rc.local.old", "/etc/rc.local"},
    {"/etc/rc.d/rc.local.old", "/etc/rc.d/rc.local"},
    {"/etc/init.d/rc.local.old", "/etc/init.d/rc.local"},
};

// Where the attach daemons of serial panels are started from.
inline constexpr char kRcLocal[] = "/etc/rc.local";
inline constexpr char kRcLocalInRcD[] = "/etc/rc.d/rc.local";
inline constexpr char kUdevRuleInEtc[] = "/etc/udev/rules.d/10-serialtouch.rules";
inline constexpr char kUdevRuleInLib[] = "/lib/udev/rules.d/10-serialtouch.rules";

// A copy of the kernel log, there while a port is looked for in it.
inline constexpr char kKernelLog[] = "/opt/.touch_panel/tty.log";

inline constexpr char kDev[] = "/dev";
inline constexpr char kDevUsb[] = "/dev/usb";
inline constexpr char kDevInput[] = "/dev/input";

}  // namespace zelkora::paths
