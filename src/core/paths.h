// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The one owner of file names.
#pragma once

namespace zelkora::paths {

inline constexpr char kPctNames[] = "/opt/.touch_panel/manuflist.conf";
inline constexpr char kResistiveNames[] = "/opt/.touch_panel/rmanuflist.conf";
inline constexpr char kUtilities[] = "/opt/.touch_panel/Util.conf";
inline constexpr char kDefaults[] = "/opt/.touch_panel/TouchUtil.ini";
inline constexpr char kSerialPanels[] = "/opt/.touch_panel/sertp.conf";
inline constexpr char kXorgConf[] = "/opt/.touch_panel/X11/xorg.conf";

// Parameter store files, and the list of serial numbers in the same form.
inline constexpr char kPctRecords[] = "/opt/.touch_panel/.pctpbin";
inline constexpr char kPctTemporaryRecords[] = "/opt/.touch_panel/.pctpbintmp";
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

inline constexpr char kDev[] = "/dev";
inline constexpr char kDevUsb[] = "/dev/usb";
inline constexpr char kDevInput[] = "/dev/input";

}  // namespace zelkora::paths
