// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The kernel's side of a virtual controller: hiddev, hidraw, evdev and serial nodes that answer
// open, close, ioctl, read and write the way Linux does. No file is touched here: whoever carries
// the virtual kernel (the unit tests, the simulator) makes the nodes visible in a /dev of its own.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "serial_device.h"
#include "usb_interface.h"

namespace zelkora::sim {

// The nodes one HID interface has. An empty path: no such node.
struct HidNodes {
  std::string phys;    // "usb-0000:00:14.0-1/input0", the same on all three nodes
  std::string hiddev;  // "/dev/usb/hiddev0"
  std::string hidraw;  // "/dev/hidraw0"
  std::string event;   // "/dev/input/event0"
};

struct PluggedInterface {
  UsbInterface interface;
  HidNodes nodes;
};

class VirtualKernel {
 public:
  VirtualKernel();
  ~VirtualKernel();
  VirtualKernel(const VirtualKernel&) = delete;
  VirtualKernel& operator=(const VirtualKernel&) = delete;

  // Each call returns a number to unplug the device by. The device must outlive the kernel or be
  // unplugged first; its identity is read at every request, so a test may change it.
  int attach(std::vector<PluggedInterface> interfaces);
  int attach(HidDevice& device, HidNodes nodes);  // of one interface
  int attach(SerialDevice& device, std::string path);

  // The nodes vanish; requests on descriptors still open give ENODEV from now on (on a serial
  // port, which hangs up, EIO).
  void unplug(int attachment);

  // Unplugs a HID device and plugs it in again, with the same nodes, phys and number: what a device
  // does that resets itself. A device may ask for this in the midst of a request, which then still
  // ends as it would have. Without effect on a device that is not plugged in.
  void replug(int attachment);

  bool owns(std::string_view path) const;
  std::vector<std::string> node_paths() const;

  // The kernel calls. Results are those of the system calls, with -errno for a failure.
  // `argument` is the memory the request reads and writes; requests whose number carries a size
  // never touch more than that size. The others that are served are those of serial ports: TCFLSH
  // takes a number, and TCGETS, TCSETS, TCSETSW and TCSETSF the kernel's 36 bytes of settings.
  int open(std::string_view path, int flags);
  int close(int handle);
  int ioctl(int handle, unsigned long request, void* argument);
  ssize_t write(int handle, std::span<const uint8_t> bytes);
  ssize_t read(int handle, std::span<uint8_t> room);
  // What poll() would say at once: POLLIN and so on. It leaves no trace.
  int poll(int handle);

  // Fault script. `times` -1: for ever. Requests are named by their number without the size bits,
  // so HIDIOCGNAME(0) stands for every length.
  void fail_open(std::string path, int error, int times = -1);
  void fail_ioctl(std::string path, unsigned long request, int error, int times = -1);
  void fail_read(std::string path, int error, int times = -1);
  void fail_write(std::string path, int error, int times = -1);

  // Receives one line for each call and for each report or byte run that reaches a device:
  //   open /dev/usb/hiddev0 O_RDWR|O_NONBLOCK
  //   close /dev/usb/hiddev0
  //   ioctl HIDIOCGREPORTINFO type=3 id=1
  //   ioctl HIDIOCGFIELDINFO type=3 id=1 field=0
  //   ioctl HIDIOCINITREPORT
  //   ioctl HIDIOCSUSAGE type=3 id=1 field=0 usage=0 code=FF000001 value=-128
  //   ioctl HIDIOCGUCODE type=3 id=1 field=0 usage=0
  //   ioctl HIDIOCGUSAGE type=3 id=1 field=0 usage=0
  //   ioctl HIDIOCSREPORT type=3 id=1
  //   ioctl HIDIOCGREPORT type=3 id=1
  //   ioctl HIDIOCGDEVINFO, HIDIOCGRAWINFO, HIDIOCGNAME 256, HIDIOCGPHYS 256, HIDIOCGRAWNAME 256,
  //         HIDIOCGRAWPHYS 256, EVIOCGNAME 256, EVIOCGPHYS 256
  //   ioctl HIDIOCSFEATURE 64, ioctl HIDIOCGFEATURE 64
  //   set_report 1: 04 01 4F 49 0D        (payload as it is sent to the device, without its
  //                                        trailing zeros)
  //   get_report 1: 06 01 56 31 2E 32 0D  (the same for the answer)
  //   set_report 1: 04 01 4F 49 0D -> stall
  //   set_report 1: 04 01 4F 49 0D -> no answer
  //   get_report 1: stall
  //   get_report 1: no answer
  //   ioctl TCGETS, ioctl TCFLSH 0
  //   ioctl TCSETS iflag=0 oflag=0 cflag=8BD lflag=0 min=1 time=0
  //   write /dev/ttyS0: 01 5A 5A 0D
  //   read /dev/ttyS0 10: 01 30 0D        (the limit, then the bytes)
  // A failing call has " -> ENODEV" (or another errno name) at its end.
  void set_trace(std::function<void(std::string)> trace);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

}  // namespace zelkora::sim
