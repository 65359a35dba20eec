// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The first-time set-up of panels on USB and on serial ports.
#include <cerrno>

#include "record_bench.h"
#include "settings_bench.h"

namespace {

using namespace zelkora::test;
using enum Kept;

Lines flash(Kept kept) { return joined({flash_steps(record_named(kept)), {"PL"}}); }

struct SetUpRow {
  const char* name;
  Kept saved;
  Kept flash;
  Lines steps;  // once the panel is open
  Kept saved_after;
};

// The same for both kinds of panel.
const SetUpRow kSetUps[] = {
    {"SavedAndInLine", kSaved, kSaved, {"read saved", "GP5B"}, kSaved},
    {"SavedWithAnotherFlash", kSaved, kWorking, joined({{"read saved", "GP5B"}, flash(kSaved)}),
     kSaved},
    {"NewWithTheDefaultsInTheFlash",
     kNone,
     kDefaults,
     {"read saved", "write saved", "notify", "GP5B"},
     kDefaults},
    {"New", kNone, kNone,
     joined({{"read saved", "write saved", "notify", "GP5B"}, flash(kDefaults)}), kDefaults},
};

class FirstSetupBench : public RecordBench {
 protected:
  static void put_flash(zelkora::sim::ResistiveController& controller, Kept kept) {
    const unsigned sum = kept == kNone ? 0 : flash_checksum(record_named(kept));
    controller.set_value(91, static_cast<uint16_t>(sum));
  }

  static void put_saved(Kept kept, const std::string& phys, const std::string& usb_id) {
    std::filesystem::remove(kSavedFile);
    if (kept != kNone) write_file(kSavedFile, file_with(kept, phys, usb_id));
  }

  size_t logged(const std::string& message) const {
    return static_cast<size_t>(
        std::count(messages().begin(), messages().end(), "zelkora DD:" + message));
  }
};

// --- on USB ---

class UsbSetupTest : public FirstSetupBench {
 protected:
  int set_up() {
    return quietly([] { return SetResDefaultFlash(0); });
  }
};

TEST_F(UsbSetupTest, GivesAPanelARecordAndBringsItsFlashInLine) {
  Panel& panel = add_usb_panel();
  for (const SetUpRow& row : kSetUps) {
    SCOPED_TRACE(row.name);
    put_saved(row.saved, kUsbPhys, "3A4C_1688");
    put_flash(panel.controller, row.flash);
    clear_trace();
    EXPECT_EQ(set_up(), 1);
    EXPECT_EQ(steps(), joined({{"open"}, row.steps, {"close"}}));
    EXPECT_EQ(read_file(kSavedFile), file_with(row.saved_after, kUsbPhys, "3A4C_1688"));
    EXPECT_FALSE(std::filesystem::exists(kWorkingFile));
    EXPECT_EQ(messages().front(), "zelkora DD:SetResDefaultFlash DevNum:0 ret:0\n");
  }
}

TEST_F(UsbSetupTest, ARecordThatCannotBeSavedEndsIt) {
  add_usb_panel();
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(set_up(), 0);
  EXPECT_EQ(steps(), (Lines{"open", "read saved", "write saved", "close"}));
}

TEST_F(UsbSetupTest, APanelWithoutPhysIsLeftAsItIs) {
  add_usb_panel();
  std::memset(TouchDevice[0].Phys, 0, sizeof TouchDevice[0].Phys);
  EXPECT_EQ(set_up(), 0);
  EXPECT_EQ(steps(), (Lines{"open", "close"}));
}

TEST_F(UsbSetupTest, ADeviceThatDoesNotOpenIsNotClosed) {
  EXPECT_EQ(set_up(), 0);
  EXPECT_EQ(messages().front(), "zelkora DD:SetResDefaultFlash DevNum:0 ret:0\n");
  EXPECT_EQ(messages().back(), "zelkora DD:device0 not exist err: 0\n");
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
}

TEST_F(UsbSetupTest, ASilentPanelIsWrittenToInVain) {
  silence(add_usb_panel());
  put_saved(kSaved, kUsbPhys, "3A4C_1688");
  EXPECT_EQ(set_up(), 1);
  EXPECT_EQ(steps().size(), 1U + 1 + 4 + 11 * 4 + 4 + 1);
}

// --- on a serial port ---

class SerialSetupTest : public FirstSetupBench {
 protected:
  static constexpr char kOpened[] =
      "SetSerDefaultFlash DevNum:0 init_rs232touch /dev/ttyS0 ret:1\n";

  SerialPanel& add_serial_panel() {
    add_serial_entry();
    return attach_serial();
  }
  int set_up(int devnum = 0) {
    return quietly([devnum] { return SetSerDefaultFlash(devnum); });
  }
};

TEST_F(SerialSetupTest, GivesAPanelARecordAndBringsItsFlashInLine) {
  SerialPanel& panel = add_serial_panel();
  for (const SetUpRow& row : kSetUps) {
    SCOPED_TRACE(row.name);
    put_saved(row.saved, "ttyS0", "0000_0000");
    put_flash(panel.controller, row.flash);
    clear_trace();
    EXPECT_EQ(set_up(), 1);
    EXPECT_EQ(steps(), joined({{"open", "ZZ", "OI"}, row.steps, {"close"}}));
    EXPECT_EQ(read_file(kSavedFile), file_with(row.saved_after, "ttyS0", "0000_0000"));
    EXPECT_FALSE(std::filesystem::exists(kWorkingFile));
    EXPECT_EQ(logged(kOpened), 1U);
    EXPECT_EQ(logged("UpdateSerFw\n"), 1U);
    EXPECT_EQ(logged("***SetSerDefaultFlash call GetResParamDefault***\n"),
              row.saved == kNone ? 1U : 0U);
    EXPECT_EQ(logged("SetSerDefaultFlash write flash\n"), row.steps.back() == "PL" ? 1U : 0U);
  }
}

TEST_F(SerialSetupTest, ThePortIsSetUpAndTheControllerAskedForItself) {
  SerialPanel& panel = add_serial_panel();
  put_saved(kSaved, "ttyS0", "0000_0000");
  put_flash(panel.controller, kSaved);
  device_type = ZELKORA_TYPE_PCT;
  EXPECT_EQ(set_up(), 1);
  EXPECT_EQ(device_type, ZELKORA_TYPE_RESISTIVE_SERIAL);
  EXPECT_EQ(host.config_reads, 1);
  EXPECT_EQ(
      trace_of({"open", "close", "read", "write", "usleep", "tcgetattr", "tcflush", "tcsetattr"}),
      (Lines{"open /dev/ttyS0 O_RDWR|O_NONBLOCK|O_NOCTTY", "tcgetattr /dev/ttyS0",
             "tcflush TCIFLUSH /dev/ttyS0", "tcsetattr TCSANOW /dev/ttyS0",
             "write /dev/ttyS0: 01 5A 5A 0D", "usleep 50000", "read /dev/ttyS0 10: 01 31 0D",
             "write /dev/ttyS0: 01 4F 49 0D", "usleep 50000",
             "read /dev/ttyS0 20: 01 56 31 2E 32 0D", "write /dev/ttyS0: 01 47 50 35 42 0D",
             "usleep 50000", "read /dev/ttyS0 10: 01 36 37 39 38 0D", "close /dev/ttyS0"}));
}

TEST_F(SerialSetupTest, TheVersionGoesIntoTheSerialPanelList) {
  SerialPanel& panel = add_serial_panel();
  panel.controller.set_firmware("V2.7");
  write_file(kSerialList, "SerialDevice1=ttyS3\nFW1=V1.0\nSerialDevice2=ttyS0\nFW2=V1.0\n");
  EXPECT_EQ(set_up(), 1);
  // One slot lower than its own.
  EXPECT_EQ(read_file(kSerialList),
            "SerialDevice1=ttyS3\nFW1=V2.7\nSerialDevice2=ttyS0\nFW2=V1.0\n");
}

TEST_F(SerialSetupTest, APortThatDoesNotOpenEndsIt) {
  add_serial_entry("ttyS9");
  expect_absent("/dev/ttyS9");
  EXPECT_EQ(set_up(), 0);
  EXPECT_EQ(logged("SetSerDefaultFlash DevNum:0 init_rs232touch /dev/ttyS9 ret:0\n"), 1U);
  EXPECT_EQ(count_of("write"), 0U);
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
}

TEST_F(SerialSetupTest, APortWithoutAControllerEndsItAndStaysOpen) {
  expect_leaked_descriptors(1);
  add_serial_panel().controller.faults.silent = true;
  EXPECT_EQ(set_up(), 0);
  EXPECT_EQ(steps(), joined({{"open"}, Lines(10, "ZZ")}));
  EXPECT_EQ(logged(kOpened), 1U);
  EXPECT_EQ(logged("UpdateSerFw\n"), 0U);
}

TEST_F(SerialSetupTest, AControllerOfTheOtherGenerationEndsIt) {
  expect_leaked_descriptors(1);
  add_serial_panel();
  host.config[1] = 1;  // read by the set-up itself
  EXPECT_EQ(set_up(), 0);
  EXPECT_EQ(steps(), joined({{"open"}, Lines(10, "ZZ")}));
}

TEST_F(SerialSetupTest, AnEmptyVersionEndsIt) {
  expect_leaked_descriptors(1);
  add_serial_panel().controller.set_firmware(std::string(2, '\0'));
  EXPECT_EQ(set_up(), 0);
  EXPECT_EQ(steps(), (Lines{"open", "ZZ", "OI"}));
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
}

TEST_F(SerialSetupTest, AControllerThatDoesNotTellItsVersionEndsIt) {
  expect_leaked_descriptors(1);
  DeafPort port;
  port.deaf_to = "\1OI";
  const int attachment = kernel.attach(port, "/dev/ttyS0");
  add_serial_entry();
  EXPECT_EQ(set_up(), 0);
  EXPECT_EQ(steps(), (Lines{"open", "ZZ", "OI", "OI", "OI", "OI"}));
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
  kernel.unplug(attachment);
}

TEST_F(SerialSetupTest, AnUnsupportedVersionHasItsReportsSwitchedOffAndItsPortLeftOpen) {
  const std::string list = "SerialDevice1=ttyS0\nFW1=V1.0\nFW0=\n";
  SerialPanel& panel = add_serial_panel();
  for (const char* version : {"V3.0", "V3.01", "AB V3.0 CD"}) {
    SCOPED_TRACE(version);
    panel.controller.set_firmware(version);
    write_file(kSerialList, list);
    clear_trace();
    EXPECT_EQ(set_up(), 0);
    EXPECT_EQ(steps(), (Lines{"open", "ZZ", "OI", "SP330003", "GP33", "PL"}));
    EXPECT_EQ(panel.controller.permanent_value(51), 3);
    EXPECT_EQ(read_file(kSerialList), list);
    EXPECT_FALSE(std::filesystem::exists(kSavedFile));
    EXPECT_EQ(leaked_descriptors(), (std::vector<int>{fd}));
    ::close(fd);
  }
}

TEST_F(SerialSetupTest, OtherVersionsAreSupported) {
  SerialPanel& panel = add_serial_panel();
  for (const char* version : {"V3.1", "V30", "v3.0", "3.0"}) {
    SCOPED_TRACE(version);
    panel.controller.set_firmware(version);
    EXPECT_EQ(set_up(), 1);
  }
}

TEST_F(SerialSetupTest, ARecordThatCannotBeSavedLeavesTheFlashAlone) {
  add_serial_panel();
  fail_file_call("rename", kSavedFile, EACCES);
  EXPECT_EQ(set_up(), 0);
  EXPECT_EQ(steps(), (Lines{"open", "ZZ", "OI", "read saved", "write saved", "close"}));
}

TEST_F(SerialSetupTest, AFirmwareTextAsLongAsItCanBeIsTaken) {
  SerialPanel& panel = add_serial_panel();
  panel.controller.set_firmware("V1.2%s%n%s%n%s%n12");  // 18 characters
  write_file(kSerialList, "FW0=\nSerialDevice1=ttyS0\nFW1=\n");
  EXPECT_EQ(set_up(), 1);
  EXPECT_EQ(read_file(kSerialList), "FW0=V1.2%s%n%s%n%s%n12\nSerialDevice1=ttyS0\nFW1=\n");
}

struct HostileRow {
  const char* name;
  std::string phys;
};

TEST_F(SerialSetupTest, NothingIsOpenedForAPhysThatIsNoPortName) {
  const HostileRow rows[] = {
      {"Empty", ""},
      {"WayUp", "../../tmp/x"},
      {"WayUpInside", "tty/../../tmp/x"},
      {"Command", "ttyS0;reboot"},
      {"Substitution", "ttyS0$(id)"},
      {"Backquotes", "`id`"},
      {"Quote", "ttyS0\"x"},
      {"Blank", "tty S0"},
      {"LineFeed", "ttyS0\nx"},
      {"Format", "tty%s%n"},
      {"HighByte", "ttyS0\xE9"},
      {"TooLongForAName", std::string(36, 'a')},
      {"WholeField", std::string(256, 'a')},  // not terminated
      {"PortAndMore", "ttyS0" + std::string(295, '0')},
  };
  attach_serial();
  fd = 0;
  for (const HostileRow& row : rows) {
    SCOPED_TRACE(row.name);
    add_serial_entry();
    char(&field)[256] = TouchDevice[0].Phys;
    std::memset(field, 0, sizeof field);
    row.phys.copy(field, sizeof field);
    clear_trace();
    EXPECT_EQ(set_up(), 0);
    EXPECT_EQ(logged("SetSerDefaultFlash DevNum:0 init_rs232touch  ret:0\n"), 1U);
    for (const char* call : {"open", "write", "read", "system", "popen", "tcgetattr"}) {
      EXPECT_EQ(count_of(call), 0U) << call;
    }
    EXPECT_EQ(fd, 0);
  }
  EXPECT_FALSE(std::filesystem::exists(kSavedFile));
}

TEST_F(SerialSetupTest, TheLongestPortNameIsOpened) {
  const std::string name = "tty" + std::string(32, '0');
  attach_serial("/dev/" + name);
  add_serial_entry(name);
  EXPECT_EQ(set_up(), 1);
  EXPECT_EQ(read_file(kSavedFile).substr(0, 256), cut_field(name, 256));
}

TEST_F(SerialSetupTest, ThePanelOfThatNumberIsMeant) {
  attach_serial("/dev/ttyUSB2");
  add_serial_entry("ttyS0");
  std::snprintf(TouchDevice[3].Phys, sizeof TouchDevice[3].Phys, "ttyUSB2");
  EXPECT_EQ(set_up(3), 1);
  EXPECT_EQ(logged("SetSerDefaultFlash DevNum:3 init_rs232touch /dev/ttyUSB2 ret:1\n"), 1U);
  EXPECT_EQ(read_file(kSavedFile).substr(0, 8), std::string("ttyUSB2\0", 8));
}

}  // namespace
