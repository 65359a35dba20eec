/* SPDX-FileCopyrightText: 2026 The Zelkora authors
 * SPDX-License-Identifier: MIT
 *
 * zelkora.h - find, open and configure touch controllers.
 *
 * Conventions, valid for the whole interface:
 *
 *  1. One global state, no handles, no locks: call the library from one thread only.
 *  2. Device indexes count from 0 and must lie in 0..3. Two exceptions count from 1:
 *     GetDeviceNode() and the variable ActiveDevice.
 *  3. Results: non-zero is success or true, 0 is failure or false; counting functions return
 *     counts. Getters and setters of settings return the value, or -1 when no acceptable
 *     reply came. (The kernel hides transfer errors on hiddev, where a silent controller reads back
 *     the command: a firmware text "OI", values of 0.) Functions whose sense is the other way round
 *     say so.
 *  4. What enumerates, looks up a node or opens a panel by its table index calls GetTouchConf()
 *     first, so the host's switches and debug switch are read afresh each time.
 *  5. One device is open at a time, on the variable fd. OpenTouchDevice() and OpenPCTDevice()
 *     open; CloseTouchDevice() and CloseDevice() close; opening while open leaks the descriptor
 *     that was open. Functions that open and close by themselves say so. fd keeps its number after
 *     a close, and a close of any kind closes that number again, whoever has it by then: set fd to
 *     0 after a close in a host that opens files of its own.
 *  6. Commands wait for the controller with fixed sleeps (50 ms and more for each attempt, four
 *     attempts at most). No call has another time limit.
 *  7. The library prints to standard output: messages of level 0 to 2 always, level 3 only while
 *     the host's debug switch is on. A host that prints an answer of its own moves one of the two.
 *  8. Texts copied out are NUL-terminated and never longer than the buffer size stated.
 *  9. Names keep their spelling, misspellings included.
 *
 * Calling order: InitialZelkora() (optional), GetTouchPanels(), the table accessors,
 * OpenTouchDevice(), commands and settings, CloseTouchDevice().
 */
#ifndef ZELKORA_H
#define ZELKORA_H

#include <linux/hiddev.h>
#include <sys/utsname.h>
#include <termios.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(__GNUC__)
#pragma GCC visibility push(default)
#endif

/* ------------------------------------------------------------------------------------------
 * Host hooks: functions that the host process must define. The library leaves them undefined
 * and binds each at its first call.
 * ---------------------------------------------------------------------------------------- */

/* Fills the nine bytes of MyConfig (see there). Returns non-zero when a configuration was read,
 * 0 to have the library fall back to its defaults (bytes 0, 1, 2, 3, 4 and 8 are then cleared). */
unsigned char Read_Config(unsigned char* config);

/* Returns the debug switch: 1 on, 0 off. */
int GetEnableDebug(void);

/* Delivers a request to the X input driver: SendPCTConfigChange() and its kin. `display` is the
 * Display* of a connection that is closed after the call; `config` is 0..255. */
void mydoled_all_display(void* display, unsigned int request, int config);

/* Encode `length` plain bytes of a PCT parameter block, and decode its 32 bytes, by a scheme that
 * keeps the length; a plain copy will do. The third argument of EncodeData is always 0. */
void EncodeData(const unsigned char* source, unsigned char* destination, int zero, int length);
void DecodeData(const unsigned char* source, unsigned char* destination);

/* Fills `buffer` with 16 random bytes, of which a panel without a serial number gets its own. The
 * second argument is always 1. */
void GenerateRand(unsigned char* buffer, int one);

/* ------------------------------------------------------------------------------------------
 * Types
 * ---------------------------------------------------------------------------------------- */

enum {
  ZELKORA_MAX_DEVICES = 4,  /* entries of TouchDevice */
  ZELKORA_MAX_NAMES = 36,   /* entries of a product-name list */
  ZELKORA_NAME_LENGTH = 64, /* bytes of one product name, the NUL included */
  ZELKORA_MAX_SCREENS = 4,  /* entries of screen_info */
  ZELKORA_MAX_SERIAL = 4,   /* entries of cMySerInfo and TempSer */
  ZELKORA_CONFIG_BYTES = 9  /* bytes of MyConfig */
};

/* Kind of controller: TouchDeviceEntry::Type and the variable device_type. */
enum {
  ZELKORA_TYPE_NONE = 0,
  ZELKORA_TYPE_RESISTIVE_USB = 1,
  ZELKORA_TYPE_RESISTIVE_SERIAL = 2,
  ZELKORA_TYPE_PCT = 3 /* projected-capacitive, USB */
};

/* Firmware family of a PCT controller: TouchDeviceEntry::IsLegacy and the variable IsLegacy. */
enum {
  ZELKORA_FAMILY_UNKNOWN = 0, /* the controller did not tell */
  ZELKORA_FAMILY_8752 = 1,    /* WDT8752 and WDT8755; takes commands in command mode only */
  ZELKORA_FAMILY_LEGACY = 2,  /* firmware without a command interface */
  ZELKORA_FAMILY_8753 = 3     /* firmware with a command interface */
};

/* Sizes of a PCT parameter block in bytes: plain, and encoded with its checksum behind it. */
enum { ZELKORA_PCT_BLOCK = 32, ZELKORA_PCT_ENCODED_BLOCK = 34 };

/* Bytes of MyConfig; a byte other than 0 switches its effect on. */
enum {
  ZELKORA_CONFIG_RESISTIVE = 0,         /* resistive controllers are supported */
  ZELKORA_CONFIG_NEW_PRODUCT_IDS = 1,   /* resistive: the new generation of product ids */
  ZELKORA_CONFIG_ALTERNATIVE_PCT = 2,   /* the alternative list of PCT vendor ids */
  ZELKORA_CONFIG_IGNORE_LEGACY_PCT = 3, /* PCT controllers with IsLegacy 1 are passed over */
  ZELKORA_CONFIG_NOTIFY_ARGUMENT = 4,   /* handed on with every driver notification */
  ZELKORA_CONFIG_HIDRAW = 5,            /* hidraw nodes are enumerated besides hiddev nodes */
  ZELKORA_CONFIG_HIDE_CURSOR = 6,       /* answer of the hide-cursor query */
  ZELKORA_CONFIG_UNUSED = 7,            /* not read by the library */
  ZELKORA_CONFIG_NO_RES_HIDE_CURSOR = 8 /* answer of the resistive hide-cursor query */
};

/* 16-bit values in the EEPROM of a resistive controller, by address: ReadEEPValue() and
 * WriteEEPValue(). */
enum {
  ZELKORA_EEP_REPORT_MODE = 51,
  ZELKORA_EEP_COUNT_UNIT = 54,
  ZELKORA_EEP_SCREEN_NUMBER = 55,
  ZELKORA_EEP_FIRST_MOVE = 66,
  ZELKORA_EEP_ROTATION = 67,
  ZELKORA_EEP_AUTO_HID = 68,
  ZELKORA_EEP_HID_MODE = 69,
  ZELKORA_EEP_EDGE_RIGHT = 70,
  ZELKORA_EEP_EDGE_LEFT = 71,
  ZELKORA_EEP_EDGE_DOWN = 72,
  ZELKORA_EEP_EDGE_UP = 73,
  ZELKORA_EEP_BACKLIGHT_DUTY = 75,
  ZELKORA_EEP_DISABLE_RIGHT = 84,
  ZELKORA_EEP_RIGHT_TIME = 85,
  ZELKORA_EEP_BEEP_ON = 86,
  ZELKORA_EEP_PLAY_METHOD = 87,
  ZELKORA_EEP_FREQUENCY = 88,
  ZELKORA_EEP_DURATION = 89,
  ZELKORA_EEP_CHECKSUM = 91 /* of the values that SetResAllDataFlash() writes */
};

/* 16-bit words of a resistive parameter record: as stored, and as written to the controller; the
 * last of each is the checksum of the others. */
enum { ZELKORA_RES_STORED_WORDS = 17, ZELKORA_RES_FLASH_WORDS = 11 };

/* One discovered controller (568 bytes). */
typedef struct TouchDeviceEntry {
  char Name[36];               /* device node path */
  unsigned char Type;          /* ZELKORA_TYPE_...; 0: empty entry */
  char Phys[256];              /* topology path as the kernel reports it */
  char EventName[36];          /* input event node; filled by FindMyEVDevice() only */
  char ID[36];                 /* "VVVV_PPPP", vendor and product id in upper-case hex */
  char FWVersion[64];          /* firmware version text; empty without an acceptable reply */
  unsigned char POSMode;       /* PCT: POS mode as read at enumeration */
  unsigned char Reserved[100]; /* not used by the library */
  unsigned char HidRaw;        /* 1: the node is a hidraw node */
  int IsLegacy;                /* PCT: firmware family */
  unsigned int VID;            /* USB vendor id, 0..0xFFFF */
  unsigned int PID;            /* USB product id, 0..0xFFFF */
  unsigned int OldVID;         /* PCT: vendor id kept in the controller's flash */
  unsigned int OldPID;         /* PCT: product id kept in the controller's flash */
  unsigned char SN[8];         /* panel serial number */
  int FWRevFlash;              /* PCT: firmware revision recorded in flash */
  int FWRev;                   /* PCT: revision of the running firmware */
} TouchDeviceEntry;

/* The built-in USB id table (144 bytes), rebuilt by LoadVidPid(). Counts are signed bytes. */
typedef struct HidInfoTable {
  signed char ResVendorCount;
  signed char ResProductCount;
  unsigned int ResVendorIds[4];
  unsigned int ResProductIds[26]; /* 0..15 old generation, 16..25 new generation */
  signed char PctVendorCount;
  unsigned int PctVendorIds[4];
} HidInfoTable;

/* The parameter record of a resistive panel. The host allocates it. Every bare integer is in
 * host byte order; bytes named NotUsed are never touched. */
typedef struct ResDevInfo {
  unsigned char NotUsed0[2];
  unsigned char BeepOn;       /* 1 the panel beeps on touch, 0 it does not */
  unsigned char PlayMethod;   /* when the beep plays, 0..2 */
  unsigned int Frequency;     /* of the beep, 500..3000 Hz */
  unsigned char Duration;     /* of the beep, 5..50 */
  unsigned char ScreenNumber; /* the screen the panel maps to, counted from 0 */
  unsigned char NotUsed10;
  unsigned char DisableRight; /* 1 right-click emulation off, 0 on */
  unsigned char RightTime;    /* hold time of a right click */
  unsigned char NotUsed13[13];
  unsigned char DisableReport; /* for the host; only stored */
  unsigned char NotUsed27;
  unsigned char HideCursor; /* for the host; only stored */
  unsigned char FirstMove;
  unsigned char ReportMode;
  unsigned char HidMode; /* the defaults give 3 for a digitizer, else 2 */
  int EdgeRight;         /* edge adjustments */
  int EdgeLeft;
  int EdgeDown;
  int EdgeUp;
  unsigned char SpareByte; /* carried along, never set by the library */
  unsigned char NotUsed49[3];
  unsigned int Chksum; /* 16-bit checksum of the stored form */
} ResDevInfo;

/* The parameter record of a PCT panel (68 bytes, packed to 4). The host allocates it. */
#pragma pack(push, 4)
typedef struct PCTDevInfo {
  unsigned char POSMode;
  unsigned char Digitizer; /* 0 mouse, 1 digitizer */
  unsigned char BeepOn;    /* 1 on pen down, 2 on pen up, 3 on both */
  unsigned char PlayMethod;
  unsigned int Frequency;     /* of the beep, 500..3000 Hz */
  unsigned char Duration;     /* of the beep, 5..50; 0 none */
  unsigned char ScreenNumber; /* counted from 0, 0..9 */
  unsigned char
      ClickMode; /* 0 mouse emulation, 1 click on touch, 2 on release, 3 right button first */
  unsigned char DisableRight; /* 1 automatic right click off */
  unsigned char RightTime;    /* right-click hold time, 0..15 */
  unsigned char RightRange;   /* right-click range, 0..15 */
  unsigned char RightUp;      /* 1 menu on right button down, 0 on right button up */
  unsigned char POSEnable;    /* always 1 after decoding, as the next two */
  unsigned char HidEnable;
  unsigned char SyncFlag;
  unsigned char SN[8]; /* panel serial number */
  unsigned char DisableReport;
  unsigned char FlashByte31; /* 0..3 */
  unsigned char HideCursor;
  unsigned char Reserved[27];
  char* FWVersion;     /* the device's firmware version text, for the library to set */
  unsigned int DevNum; /* the table index the record belongs to */
} PCTDevInfo;
#pragma pack(pop)

/* One record of a parameter store file (347 bytes). A file holds nothing but records, end to end.
 * Texts end in a NUL in a record that the library wrote; a reader does not rely on it. */
typedef struct ParamStoreRecord {
  char Phys[256];            /* TouchDeviceEntry::Phys */
  char SN[17];               /* the panel's serial number, 16 lower-case hex digits */
  char UsbId[10];            /* "VVVV_PPPP", vendor and product id in upper-case hex */
  unsigned char Payload[64]; /* parameters; their form depends on the file */
} ParamStoreRecord;

/* One port of the serial panel list (56 bytes). */
typedef struct SerialPanelSlot {
  char Name[36];      /* port name, such as ttyS0 */
  char FWVersion[20]; /* firmware version text */
} SerialPanelSlot;

/* A report mode kept while a serial panel's reports are switched off (40 bytes). */
typedef struct SerialReportSlot {
  char Name[36];
  int ReportMode;
} SerialReportSlot;

/* One lit screen (36 bytes). */
typedef struct ScreenInfoEntry {
  unsigned int Width;  /* pixels */
  unsigned int Height; /* pixels */
  int X;               /* left edge in the root window, pixels */
  int Y;               /* top edge, pixels */
  char OutputName[20]; /* name of the output */
} ScreenInfoEntry;

/* A configuration line, passed by value to SubStr(). */
typedef struct ConfigLine {
  char Text[512];
} ConfigLine;

/* ------------------------------------------------------------------------------------------
 * Global state. All zero at load. Read it freely; the library writes it.
 * ---------------------------------------------------------------------------------------- */

extern TouchDeviceEntry TouchDevice[ZELKORA_MAX_DEVICES]; /* cleared before every enumeration */
extern int DeviceNumber;          /* entries filled; where the next one goes */
extern int PCTDeviceNumber;       /* PCT entries accepted by the last enumeration */
extern int ActiveDevice;          /* number of the entry opened last, counted from 1 */
extern int fd;                    /* the one open descriptor; keeps its number after a close */
extern unsigned char HidRaw;      /* 1: the current device is driven through hidraw */
extern unsigned char device_type; /* ZELKORA_TYPE_... of the device being worked on */
extern int IsLegacy;              /* firmware family of the current PCT device */
extern int isPureMouse;           /* 1: the flag file of pure mouse mode exists */
extern int isHybrid;              /* 1: the flag file of hybrid mode exists */
extern int DbgFlag;               /* the host's debug switch as last read */
extern unsigned char MyConfig[ZELKORA_CONFIG_BYTES]; /* ZELKORA_CONFIG_... */

extern char MatchProduct[ZELKORA_MAX_NAMES][ZELKORA_NAME_LENGTH];  /* PCT product names */
extern char rMatchProduct[ZELKORA_MAX_NAMES][ZELKORA_NAME_LENGTH]; /* resistive product names */
extern int ManufCnt;                                               /* names in MatchProduct */
extern int rManufCnt;                                              /* names in rMatchProduct */
extern HidInfoTable cMyHidInfo;

extern SerialPanelSlot cMySerInfo[ZELKORA_MAX_SERIAL];
extern SerialReportSlot TempSer[ZELKORA_MAX_SERIAL];
extern struct termios oldtio;     /* settings of a serial port as they were found */
extern unsigned char ReadSerConf; /* 1: the serial panel list was rebuilt by this process */

extern ScreenInfoEntry screen_info[ZELKORA_MAX_SCREENS];

extern struct utsname KernelVersion;     /* filled before every resistive hiddev send */
extern struct hiddev_report_info report; /* the report prepared for the open device */
extern struct hiddev_field_info field;   /* its field 0; maxusage is the report's length */
extern struct hiddev_usage_ref uref;     /* carries one usage value at a time */
extern struct hiddev_report_info rinfo;  /* no use inside the library, as the next four */
extern struct hiddev_field_info finfo;
extern struct hiddev_devinfo devinfo;
extern int running;
extern int shmID;

/* ------------------------------------------------------------------------------------------
 * Library state and device table
 * ---------------------------------------------------------------------------------------- */

/* Reads the host's debug switch into DbgFlag and the host's configuration into MyConfig. The
 * argument has no use. Returns 1 when the host read a configuration; 0 when it did not: bytes 0,
 * 1, 2, 3, 4 and 8 of MyConfig are then 0, bytes 5, 6 and 7 keep what they held. */
int GetTouchConf(int x);

/* The same as GetTouchConf(), for a host to call first. */
int InitialZelkora(int x);

/* Closes fd and ends the calling process with status 0. Never returns. */
void CloseZelkora(void);

/* What CloseZelkora() does, in the shape of a signal handler; the library installs none. */
void INTHandler(int signal_number);

/* Copies of table entry `index` (0..3, not checked). Buffer sizes: name 36 bytes, id 36 bytes,
 * firmware text 64 bytes; the whole field is copied. GetTouchDeviceType() returns the entry's
 * ZELKORA_TYPE_... */
int GetTouchDeviceType(int index);
void GetTouchDeviceName(int index, char* out);
void GetTouchDeviceID(int index, char* out);
void GetTouchDeviceFw(int index, char* out);

/* Looks up the input event node of entry `index` (0..3) and copies its path to `out`, 36 bytes:
 * an empty text when none was ever found, the one found before when it has gone since the last
 * enumeration. */
void GetEventDeviceName(int index, char* out);

/* Enumerates all panels, then copies the node path of entry `number`, counted from 1 (1..4), to
 * `out`, 36 bytes. Returns 1 for a HID node, 2 for a tty, 0 for neither; 0 with `out` untouched
 * when no panel was found. */
int GetDeviceNode(int number, char* out);

/* Prints entry `index` (0..3) at debug level 3. */
void ShowDeviceInfo(int index);

/* ------------------------------------------------------------------------------------------
 * Diagnostics and utilities
 * ---------------------------------------------------------------------------------------- */

/* Prints a message to standard output behind the prefix of its level: 0 "EE:", 1 "II:", 2 "CC:",
 * 3 "zelkora DD:", others none. Level 3 is printed only while DbgFlag is not 0. The message
 * brings its own line feed. Returns what printing it returned, 0 when it was suppressed. */
int DebugMsg(int level, const char* format, ...)
#if defined(__GNUC__)
    __attribute__((format(printf, 2, 3)))
#endif
    ;

/* Dumps whole rows of eight bytes to standard output while DbgFlag is not 0; a last row of fewer
 * bytes is not printed. */
void PrintData(const char* label, const unsigned char* data, int length);

/* Hexadecimal text to a number: at most `count` characters, up to the first that is no hex
 * digit. The result is cut to 32 bits; 0 when there is no digit. Two names, one contract. */
unsigned int HextoInt(const char* text, int count);
unsigned int HexStrToInt(const char* text, int count);

/* Sum of 0x6666 and the bytes, modulo 0x10000. */
unsigned int CheckSum(const unsigned char* data, int length);

/* The number (as of atoi) that begins the first piece of the line, split at double quotes and
 * blanks, which holds one of the digits 1 to 4; 0 when there is no such piece. */
int SubStr(ConfigLine line);

/* Removes a file. Returns 1 when it was there, 0 when it was not. */
int DelFile(const char* path);

/* ------------------------------------------------------------------------------------------
 * Configuration files: key=value lines, section headers in square brackets, "#" comments. Keys
 * are found by substring, the first line that holds one wins; lines are looked at in pieces of at
 * most 255 characters. A missing file, or a line without "=", yields the default (or 0).
 * ---------------------------------------------------------------------------------------- */

/* The value of `key` inside [section] of the file, or the default. Comment lines are passed
 * over. */
int ReadIniKeyValue(const char* path, const char* section, const char* key, int default_value);

/* 1 when a line of the file holds the section header, else 0. A successful call leaves the file
 * open: do not call it in a loop. */
int IniSectionExist(const char* path, const char* section);

/* The value of the first line that holds `key`, or the default. Comment lines are passed over. */
int get_conf_option(const char* path, const char* key, int default_value);

/* Rewrites the first line that holds `key`, comment lines included, as "key=value". All other
 * lines stay as they are. A crash leaves the old or the new file, but for one that can only be
 * written in place: a symbolic link, or in a directory that may not be written. Returns 1 when the
 * key was there, 0 when it was not or the file could not be rewritten. A missing key is not
 * added. */
int set_conf_option(const char* path, const char* key, int value);
int set_conf_option_str(const char* path, const char* key, const char* text);

/* Appends "key=value". Returns 1, or 0 when the file cannot be written. */
int add_conf_option(const char* path, const char* key, int value);

/* Copies the text of the first line that holds `key` to `out`: 36 bytes, cleared first, the text
 * cut to 35. The last character of the line is taken for its line feed and left out. Returns 1
 * when the key was found, else 0. */
int get_conf_option_str(const char* path, const char* key, char* out);

/* Copies what stands behind the first "=" of a line, without the line's last character and
 * without a terminator, to `out`: as large as the line, and cleared by the caller. */
void GetConfStr(const char* line, char* out);

/* The fourth piece of a line split at its double quotes (the value of: Option "name" "value"):
 * its number, 0 when there is no such piece; */
int GetOptionValue(const char* line);
/* or the 16 bytes that start with it (`out`: 16 bytes, untouched when there is no such piece).
 * The piece ends in a NUL when it is shorter than 16. Always returns 0. */
int GetOptionValueStr(const char* line, char* out);

/* The one digit that follows the marker type="string"> in a text, 0 when there is none. */
int GetFdiOptionValue(const char* text);

/* Reads the touch sections of the X configuration's server layout. Always returns 1. */
int GetDevceNumbersConf(void);

/* Copies the UniqueID of input section "HID TOUCH" `touch_number` to `out`, 16 bytes as of
 * GetOptionValueStr(). The section is found by substring, so 1 also finds 10. Returns 1 when it
 * was found, else 0. */
int GetDevceUniqueIDConf(int touch_number, char* out);

/* ------------------------------------------------------------------------------------------
 * Vendor and product ids, product-name lists, flag files
 * ---------------------------------------------------------------------------------------- */

/* Reads the mode flag files into isPureMouse and isHybrid and rebuilds cMyHidInfo. */
void LoadVidPid(void);

/* 1 when the id is in the table, else 0: resistive vendors; resistive products of the old, the
 * new and of either generation; PCT vendors. */
int ChkVid(unsigned int vid);
int ChkOldPid(unsigned int pid);
int ChkNewPid(unsigned int pid);
int ChkAllPid(unsigned int pid);
int ChkPCTVid(unsigned int vid);

/* Load the PCT list into MatchProduct, the resistive list into rMatchProduct: at most 36 names of
 * at most 63 characters, one a line; longer lines go on in the next entry. An empty entry matches
 * every device. Return the number of names, 0 when the file is missing. ManufCnt and rManufCnt
 * are set by the enumeration, not here. */
int get_Manufacturer_list(void);
int get_Res_Manufacturer_list(void);

/* Rewrites the PCT list with the first `count` (at most 36) names of MatchProduct. */
void set_Manufacturer_list(int count);

/* 1 when the flag file is there, else 0: pure mouse mode, hybrid mode, serial panels switched off,
 * udev rules below /etc instead of /lib. */
int ChkMouseMode(void);
int ChkHybridMode(void);
int ChkDisableRS232(void);
int ChkUdevPath(void);

/* The POS mode setting of the utilities' configuration file, 0 when there is none. */
int GetPostModeConf(void);

/* ------------------------------------------------------------------------------------------
 * Enumeration. Fills TouchDevice with at most four panels, none of them open. A HID node of another
 * device, such as a keyboard, keeps the descriptor it was asked on: a host that enumerates often
 * does so in a child process, or closes the descriptors that appeared. A panel that was open before
 * is no longer the current one, and its descriptor stays open.
 * ---------------------------------------------------------------------------------------- */

/* Finds the panels of every kind. The argument has no use. Returns DeviceNumber. */
int GetTouchPanels(int x);

/* Finds panels for PCT tools and deletes the list of known serial numbers. Resistive panels are
 * found only by a name list that an earlier GetTouchPanels() loaded. Returns PCTDeviceNumber. */
int GetPCTTouchPanels(int x);

/* The walks over the hiddev and the hidraw nodes, and the examination of one node. They go by the
 * ids, lists and switches of an earlier enumeration, match nothing before one, and append to the
 * table without clearing it. The walks return 1. */
int FindMyHidDevice(void);
int FindMyHidRawDevice(void);
void MatchMyHidDevice(const char* path);

/* Finds the input event node of entry `index` (0..3) into its EventName. Returns 1. */
int FindMyEVDevice(int index);

/* Asks whether a resistive controller answers on the serial port open on fd. Returns 1 or 0. A
 * silent port costs ten attempts of 50 ms, one that streams coordinates up to fifty. */
int ChkDevExist(void);

/* ------------------------------------------------------------------------------------------
 * HID report exchange on fd. For hosts that speak a command of their own. 0 is failure; receiving
 * over hiddev does not notice one, and counts the report's bytes all the same.
 * ---------------------------------------------------------------------------------------- */

/* Prepares hiddev feature report 1 of a resistive controller. 0 only when fd is negative. */
unsigned int init_Hiddev(void);

/* Sends a resistive command of at most 63 bytes, and waits 50 ms when it was taken. Returns 1 or
 * 0. */
unsigned int SendData(const unsigned char* data, unsigned int length);

/* Reads a resistive reply, at most `length` bytes of it (63 at most), into `out`. A reply as long
 * as `length` ends in a 0 instead of its last byte. Returns the number of bytes copied. */
unsigned int ReceiveData(unsigned char* out, unsigned int length);

/* Prepares a hiddev feature report of a PCT controller. Returns 1 or 0. */
unsigned int init_Pct_Hiddev(unsigned int report_id);

/* Sends the prepared report, one byte of `data` for each usage (64 at most), and waits 50 ms
 * when it was taken. Returns 1 or 0. */
unsigned int SendDataPct(const unsigned char* data);

/* Reads the prepared report into `out`, 64 bytes. Returns the number of bytes read. */
unsigned int ReceiveDataPct(unsigned char* out);

/* Sends a feature report through hidraw: `length` bytes (512 at most), byte 0 the report id.
 * Returns 1 or 0. */
unsigned int HidRaw_Set_Feature(const void* data, unsigned int length);

/* Gets a feature report through hidraw: asks for `length` bytes (1..512) with the report id, and
 * copies length - 1 bytes without it to `out`. Returns the kernel's count, which includes the
 * report id, or 0. */
unsigned int HidRaw_Get_Feature(unsigned int report_id, void* out, unsigned int length);

/* The same for either interface, chosen by the variable HidRaw. A report sent through hidraw is
 * always 64 bytes long. One received through hiddev fills `out` with the whole report, up to 64
 * bytes, whatever `length` is; through hidraw with length - 1 bytes. Results are cut to 8 bits: a
 * count of 256 reads as failure. */
unsigned char SendDataNew(const unsigned char* data, unsigned int length);
unsigned char ReceiveDataNew(unsigned int report_id, unsigned char* out, unsigned int length);

/* ------------------------------------------------------------------------------------------
 * Open and close
 * ---------------------------------------------------------------------------------------- */

/* Opens table entry `index` (0..3) into fd and makes it the current device. Returns its type
 * code, 0 when it could not be opened. */
int OpenTouchDevice(int index);

/* Opens a resistive USB node and prepares its report. Returns 1 or 0. */
int OpenResUsbDevice(int index, const char* path);

/* Opens the PCT panel of entry `index` (0..3). Returns 1 or 0. */
int OpenPCTUsbDevice(int index);

/* The same after re-reading the mode flag files; prints "unable to open device" on failure. */
int OpenPCTDevice(int index);

/* Closes a PCT panel. Returns what close() returned - 0 is success - or 0 when fd is 0. */
int CloseDevice(void);

/* Closes fd; the index has no use. */
void CloseTouchDevice(int index);

/* ------------------------------------------------------------------------------------------
 * PCT commands, on the open device. None is repeated but where it says so.
 * ---------------------------------------------------------------------------------------- */

/* The firmware family, ZELKORA_FAMILY_...; sets nothing. */
int GetIsLegacy(void);

/* Reads the firmware version into FWVersion and FWRev of entry `index` (0..3). Returns 1 or 0. */
int GetFwID(int index);

/* Ask the controller for a device mode - 0x90 command mode, 0x01 normal mode - and whether it is in
 * one: 1 or 0. */
void set_device_mode(unsigned char mode);
int get_device_mode(unsigned char mode);

/* Enter and leave command mode in at most 21 attempts. Return the attempts left: 20 after success
 * at once, 0 after success at the last attempt, -1 when all failed. Only 0 counts as failure. */
int enter_cmd_mode(void);
int leave_cmd_mode(void);

/* Read and write the parameter block in the controller's flash: 32 plain bytes, through the host's
 * DecodeData() and EncodeData(). `length` is 32. Reading returns the block's checksum, 0 on failure
 * with `dest` untouched; writing returns 1 or 0. */
int ReadPCTParames(unsigned char* dest, int length);
int WritePCTParames(const unsigned char* src);

/* Reads the USB id that the controller goes by, in at most 21 attempts of 300 ms: `vid` holds the
 * vendor id expected, and both receive what came last, expected or not. Returns non-zero, or 0 with
 * both untouched when the last attempt brought no reply. */
int ReadUSBID(unsigned int* vid, unsigned int* pid);

/* Writes the USB id, which takes effect after a reset. Returns 1 or 0. */
int WriteUSBID(unsigned int vid, unsigned int pid);

/* Sends the reset command, and does not ask whether it arrived. Returns 1. */
int ResetPCTController(void);

/* Opens entry `index` (0..3), resets it, closes it. Returns 1, 0 when it could not be opened. */
int PCT_ResetDevice(int index);

/* ------------------------------------------------------------------------------------------
 * PCT parameter blocks
 * ---------------------------------------------------------------------------------------- */

/* A plain block (32 bytes) to a record, with values out of range repaired: Digitizer above 1
 * becomes 1; BeepOn above 3, 0; PlayMethod above 2, 1; Frequency outside 500..3000, 1000; Duration
 * outside 5..50, 0; ScreenNumber above 9, 0; FlashByte31 above 3, 0; HideCursor above 1, 0. A
 * DisableReport above 1 stays, and DisableRight becomes 0 in its place. */
void PCTParsingParamas(PCTDevInfo* rec, const unsigned char* plain);

/* A record to a plain block (32 bytes); bytes of no parameter stay as they are. */
void PCTParamaEncode(const PCTDevInfo* rec, unsigned char* plain);

/* A plain block (32 bytes) to an encoded one (34 bytes, the checksum last), and back. `length` is
 * 32. Decoding returns the checksum, or 0, with `plain` untouched, when it is wrong or 0. */
void EncodeParames(const unsigned char* plain, unsigned char* encoded, int length);
int DecodeParames(unsigned char* plain, const unsigned char* encoded, int length);

/* Fills a record with the defaults of the defaults file; fields without a default keep theirs. */
void GetPCTParamDefault(PCTDevInfo* rec);

/* Clears the parameter block in the open controller's flash. Returns 1 or 0. */
int EmptyParames(void);

/* Copies the firmware version text of entry `index` (0..3) to `out`, 64 bytes. Returns 1. */
int GetFWVersionStr(int index, char* out);

/* Prints a parameter record at debug level 3: a PCTDevInfo for `type` 3, for other values a
 * ResDevInfo, with the firmware text of the entry opened last. Lists the screens to name one. */
void ShowParams(const void* rec, int type);

/* ------------------------------------------------------------------------------------------
 * PCT modes, on the open device. POS modes: 1 digitizer, 2 mouse, 3 hybrid, 4 a kind of hybrid; 0
 * stands for a mode that could not be read.
 * ---------------------------------------------------------------------------------------- */

/* Reads the POS configuration, in at most seven attempts of 50 ms: `length` bytes, 16 as a rule,
 * into `out`, at least 16 bytes, which are cleared first. Byte 0: bit 0 enabled, bit 5 HID; byte 1:
 * POS mode - 1; byte 2: bits 0-1 click mode, 2 menu on right down, 3 right click off, 4 sync; byte
 * 3: right click's time (low nibble) and range. Returns 1; 0 when none but zeros came. */
int ReadPOSConfig(unsigned char* out, int length);

/* Write bytes 0, 2 and 3 of the POS configuration; write a POS mode as its command byte, which is
 * the mode + 31. Return 1 when the command was sent, else 0. */
int WritePOSConfig(unsigned char c0, unsigned char c1, unsigned char c2);
int WritePOSMode(unsigned char mode_command);

/* The POS mode, 1..4; 0 when it could not be read. */
int GetPOSMode(void);

/* Writes the POS configuration that a record asks for, and sets POSEnable, HidEnable and SyncFlag
 * of the record to 1. Automatic right click is written as off whatever the record says. A `flag`
 * other than 0 adds bit 5 to the second byte. Returns what WritePOSConfig() returned. */
int SetPOSConfig(PCTDevInfo* rec, int flag);

/* Compares the controller's POS configuration with a record. `out`, 8 bytes, receives HID, enable,
 * right click off, click mode, right time, right range, menu on right down and the POS mode, which
 * also goes into the record. Returns 1 when all but the mode agree; else, or unread, 0. */
int ChkPOSConfig(PCTDevInfo* rec, unsigned char* out);

/* Brings the open controller, entry `index` (0..3), into a POS mode, and gives an 8753 one the
 * product id that goes with it. Returns non-zero when the controller must be reset for that: it
 * comes back with the new id, and the device table is stale until the next enumeration. A
 * controller that never takes a mode is left in the one it reports. */
int SetCurrPOSMode(int index, int mode);

/* Opens entry `index` (0..3), brings it into a mode, resets it when that is needed, and closes it.
 * ChkPosMode() takes 1 for digitizer and any other value for mouse, and returns what
 * SetCurrPOSMode() returned; the others return what closing returned. A panel asked to be a
 * digitizer becomes a hybrid while the flag file of hybrid mode exists. 0 when it did not open. */
int ChkPosMode(int index, int mode);
int SetDevtoHybrid(int index);
int SetDevtoDigitizer(int index);
int SetDevtoMouse(int index);

/* The product id that a vendor's digitizers go by. */
unsigned int GetDefaultPID(unsigned int vid);

/* ------------------------------------------------------------------------------------------
 * PCT parameter sets. The host keeps them in two store files, a record for each panel: the current
 * set, and a temporary one, to go back to. The controller receives the part that it carries out, as
 * its POS configuration. Writing a current set notifies the X input driver.
 * ---------------------------------------------------------------------------------------- */

/* Saves a set, for entry `index` (0..3), and sends it to the controller. By `mode`: 1 as current and
 * temporary set; 2 or 5 goes back: the temporary set becomes the current one, is deleted, and `rec`
 * receives it; 6 as current set only. The record's SN must be the panel's for 2 and 5. Returns
 * non-zero; 0 when the panel did not open, the mode is another, there is no temporary set of this
 * panel, or the file could not be written. */
int PCTSetAllParams(int index, PCTDevInfo* rec, signed char mode);

/* Loads the current set of entry `index` (0..3) into `rec`. By `mode`: 0 or 3 keeps it as temporary
 * set as well; 4 or 7 does not. Returns non-zero; 0 as for PCTSetAllParams(). A panel without a set
 * receives the defaults, which become its current set. */
int PCTGetAllParams(int index, PCTDevInfo* rec, signed char mode);

/* The same with the firmware text and the POS mode of the entry. `rec->FWVersion` points into the
 * device table. Returns -1; 0 on failure, with the panel left open. */
int GetPCTParam(int index, PCTDevInfo* rec);

/* Makes the defaults the current set of entry `index`; despite the name nothing in the controller's
 * flash changes. Leaves a controller of the 8752 family in command mode. Returns non-zero; 0 when
 * there is no such entry, it did not open, or the file could not be written. */
int SetPCTDefaultFlash(int index);

/* Clears the parameter block in the flash of entry `index` (0..3), and with it the panel's serial
 * number; leaves the panel open. Returns 1 when it opened, else 0. */
int EmptyFlash(int index);

/* The same by the record's DevNum (0..3), on the open device.
 *
 * The current set is looked up by serial number, then by path, then by USB id; a set found away
 * from its path, or of another serial number, is written anew for this panel, and so are the
 * defaults when there is none. Loading ends with SetPOSConfig(). The temporary set must carry the
 * record's SN, and the record receives it even where it does not. Return non-zero, or 0: no set,
 * or the file could not be written. */
int GetMyHidDeviceParames(PCTDevInfo* rec);
int SetMyHidDeviceParames(PCTDevInfo* rec);
int GetMyHidDeviceTempParames(PCTDevInfo* rec);
int SetMyHidDeviceTempParames(PCTDevInfo* rec);
int DelMyHidDeviceTempParames(PCTDevInfo* rec);

/* The store files' records of entry `index` (0..3) as plain blocks (32 bytes). For `mode` see
 * Read_Binary_File(). Setting and deleting return 1 or 0; getting returns 1 to 3 by how the record
 * was found, 0 when there is none or its checksum is wrong. */
int SetPCTParamBin(int index, const unsigned char* plain);
int SetPCTParamTempBin(int index, const unsigned char* plain);
int GetPCTParamBin(int index, unsigned char* plain, int mode);
int GetPCTParamTempBin(int index, unsigned char* plain);
int DelPCTParamTempBin(int index);

/* The 16-bit value at EEPROM address 91 of the open resistive controller, the checksum of its
 * parameters, read, or written and read back. Return the value, or -1. */
int GetParamCheckSumDev(void);
int SetParamCheckSumDev(unsigned int value);

/* ------------------------------------------------------------------------------------------
 * PCT serial numbers, kept in the controller's flash beside the USB id and the firmware revision
 * of the day they were written. `index` is the entry (0..3) of the open device.
 * ---------------------------------------------------------------------------------------- */

/* Makes a new serial number (8 bytes) of the host's random bytes. */
void GenerateSreialNumber(unsigned char* out);

/* Reads the block into SN, OldVID, OldPID and FWRevFlash of the entry, in at most eleven attempts,
 * 300 ms apart. Returns 1 or 0. */
int GetMySN(int index);

/* Writes the block: SN, VID and FWRev of the entry, and the product id that its panel has as a
 * digitizer. Returns 1 or 0. */
int SetMySN(int index);

/* Gives a panel without a valid block a new serial number, and writes the block anew for a new
 * firmware, without ids, or with the product id of another mode. Returns 1 when the panel has a
 * valid block at the end, else 0. */
int ChkSNFlash(int index);

/* Look up the panel in, and enter it into, the list of known serial numbers. Return 1 or 0. */
int GetMySNBin(int index);
int SetMySNBin(int index);

/* ------------------------------------------------------------------------------------------
 * Parameter store files: ParamStoreRecord by ParamStoreRecord. Files have no header; a trailing
 * piece of a record is passed over, and dropped by the next rewrite. No locks: two processes that
 * write one file at once may lose a record. A rewrite that a crash cuts short leaves the old file.
 *
 * `devnum` is the table entry (0..3) whose Phys, SN and USB id are looked for; a record matches when
 * its text contains the entry's. An entry without a Phys is in no file.
 * ---------------------------------------------------------------------------------------- */

enum {
  ZELKORA_STORE_PAYLOAD = 64, /* bytes of ParamStoreRecord::Payload */
  ZELKORA_STORE_RECORDS = 256 /* records of a file that are looked at */
};

/* Stores 64 bytes for a device: over its record, or in a new one at the end. `mode` 1 looks for the
 * Phys, 2 for the serial number, and the first record counts; with none, a record of the same Phys
 * is taken, one of the same USB id preferred. Returns 1; 0 when the device has no Phys, the file
 * cannot be read or written, or a record is to be added to 256. */
unsigned int Write_Binary_File(const char* path, int devnum, const unsigned char* payload,
                               int mode);

/* Finds the record of a device and copies its 64 bytes; the last of several counts. Returns 0, with
 * `payload` untouched, without a record; 1 found by Phys, or in the second search; 2 found by serial
 * number (`mode` 2) with another Phys; 3 with its own. The second search goes by Phys and USB id,
 * by Phys, by USB id, and is all there is in modes other than 1 and 2. What the USB id alone found
 * belongs to another panel, so a copy of it is stored for this one. */
unsigned int Read_Binary_File(const char* path, int devnum, unsigned char* payload, int mode);

/* Enter a PCT panel into the list of known serial numbers, by serial number, then by Phys, and look
 * it up there, by Phys alone. Return 1 or 0. */
unsigned int Write_UniqList_Binary_File(int devnum);
unsigned int Read_UniqList_Binary_File(int devnum);

/* Print the records of a PCT store file, of the list of serial numbers, and of both PCT store files
 * and the list, at debug level 3. Return 1, 0 when the (last) file cannot be opened. */
unsigned int Show_Binary_File_Mem(const char* path);
unsigned int Show_UniqList_SN(void);
unsigned int ListPCTAllBin(void);

/* Prints the current sets of all known PCT panels at debug level 3. Returns 0. */
unsigned int PCTEnumAllBin(void);

/* ------------------------------------------------------------------------------------------
 * Resistive commands, on the open device. Each is tried at most four times.
 * ---------------------------------------------------------------------------------------- */

/* Reads the firmware version text into `fw`, 20 bytes, cleared first. Returns 1 or 0. */
int GetFirmware(char* fw);

/* Switches the controller into calibration mode. Returns 1 or 0. */
int EnterCalibMode(void);

/* Has the controller keep the values written with WriteEEPValue(). Returns 1 or 0. */
int PermanentParameter(void);

/* Resets the controller. Returns 1 or 0. */
int ResetController(void);

/* A 16-bit EEPROM value by its address (ZELKORA_EEP_..., 0..0xFF): 0..0xFFFF, or -1 when no
 * acceptable reply came or the address is out of range. */
int ReadEEPValue(short address);

/* Writes a 16-bit EEPROM value; higher bits are cut off. Returns 1 or 0; an address out of range
 * is refused with 0. */
int WriteEEPValue(short address, unsigned int value);

/* Read and write a 32-byte page (0..3) of the EEPROM. Return 1 or 0; `out` is untouched on
 * failure. */
int AXI_ReadEEPValue(int page, unsigned char* out);
int AXI_WriteEEPValue(int page, const unsigned char* data);

/* The count unit, or -1. */
int GetCountUnit(void);

/* Opens entry `devnum` (nothing happens when negative), sends PermanentParameter(), closes. As of
 * SetCurren...(), fd is closed even when the open failed. */
void LockParameter(int devnum);

/* Sets the backlight duty, one byte. Returns 1 or 0. Over USB the result is always 0: the reply
 * is read one byte short. Read the duty back with GetBackLightDuty(). */
int SetBackLightDuty(int duty);

/* Switches the automatic HID setting. Returns 1 or 0; over USB always 0, for the same reason. */
int ChkAutoSetHid(void);

/* ------------------------------------------------------------------------------------------
 * Resistive settings, on the open device
 * ---------------------------------------------------------------------------------------- */

/* Getters: the value, or -1. Some repair: a stored value out of its range is replaced in the
 * controller, and the replacement returned:
 *   right click off 0..1, else 1    beep on 0..1, else 1     screen 0..4, else 0
 *   frequency 500..3000, 0 becomes 2000, others the nearer end
 *   duration 5..50, 0 becomes 10, others the nearer end
 *   play method 0..2, else 1 - which is written to the frequency's address, and the stored play
 *   method stays as it is
 * Read with ReadEEPValue() to look without touching. */
int GetAutoRightClick(void); /* 1: right-click emulation is off */
int GetRightCount(void);     /* right-click hold time */
int GetRotation(void);
int GetHidMode(void);
int GetReportMode(void);
int GetFirstMove(void);
int GetEdgeRight(void);
int GetEdgeLeft(void);
int GetEdgeDown(void);
int GetEdgeUp(void);
int GetBeepOn(void);
int GetPlayMethod(void);
int GetFrequency(void); /* Hz */
int GetDuration(void);
int GetScreenNo(void); /* counted from 0 */
int GetBackLightDuty(void);

/* Setters: write the value as it is, without a range check, and return the value read back, or
 * -1. SetRightCount() refuses 0; SetHidMode() first switches the automatic HID setting off. */
int SetAutoRightClick(unsigned int value);
int SetRightCount(unsigned int value);
int SetRotation(unsigned int value);
int SetHidMode(unsigned int value);
int SetReportMode(unsigned int value);
int SetFirstMove(unsigned int value);
int SetEdgeRight(unsigned int value);
int SetEdgeLeft(unsigned int value);
int SetEdgeDown(unsigned int value);
int SetEdgeUp(unsigned int value);
int SetBeepOn(unsigned int value);
int SetPlayMethod(unsigned int value);
int SetFrequency(unsigned int value);
int SetDuration(unsigned int value);
int SetScreenNo(unsigned int value);

/* Open entry `devnum`, set one value, close. Return 1 when what came back equals `value`, else 0.
 * A device that cannot be opened brings back 0, so asking such a device for 0 returns 1: open it
 * yourself to tell the two apart. fd is closed even when nothing was opened: an entry of no type
 * closes whatever has that number by now. A negative devnum returns 0. */
int SetCurrenAutoRightClick(int devnum, unsigned int value);
int SetCurrenReportMode(int devnum, unsigned int value);
int SetCurrenHidMode(int devnum, unsigned int value);
int SetCurrenRightCount(int devnum, unsigned int value);
int SetCurrenScreenNo(int devnum, unsigned int value);
int SetCurrenRotation(int devnum, unsigned int value);
int SetCurrenFirstMove(int devnum, unsigned int value);
int SetCurrenBeepOn(int devnum, unsigned int value);
int SetCurrenPlayMethod(int devnum, unsigned int value);
int SetCurrenFrequency(int devnum, unsigned int value);
int SetCurrenDuration(int devnum, unsigned int value);

/* Opens entry `devnum`, sends SetBackLightDuty() with the low byte of `duty`, closes. Returns its
 * result, 0 when negative or not opened. */
int SetCurrenBackLightDuty(int devnum, int duty);

/* Mirrors one value of the active device into the serial panel list, under `key_stem` and the
 * panel's number. Nothing happens when the list is missing or does not name the device. */
void SetSerConf(const char* key_stem, unsigned int value);

/* Fills a record with the defaults of the defaults file; fields without a default keep theirs. */
void GetResParamDefault(ResDevInfo* rec);

/* Checks the firmware of the resistive USB panel open on fd, for entry `devnum` (0..3). Returns 1
 * and stores the text in the entry when the panel is supported, or gave no acceptable reply; 0,
 * with fd closed, when it is not supported. */
int ChkResFW(int devnum);

/* ------------------------------------------------------------------------------------------
 * EEPROM images of resistive panels: files of 130 bytes, the EEPROM's 128 and the low and high byte
 * of their CheckSum(). All open and close entry `devnum` and return 0 when it is negative or does
 * not open. A page takes 400 ms and more.
 * ---------------------------------------------------------------------------------------- */

/* Saves the EEPROM to a file. Returns 1, or 0 with the old file as it was. */
int AXI_LoadDevToFile(int devnum, const char* path);

/* Writes a file into the EEPROM, page by page, each read back and its sum compared. Returns 1, or 0:
 * the file cannot be read, its sum is wrong (the controller is then not touched), or a page failed
 * (the pages before it are written). */
int AXI_WriteFileToDev(int devnum, const char* path);

/* Returns 1 when the checksum of the EEPROM is the one stored in the file, else 0. Differences that
 * cancel each other in the sum show in the trace alone. */
int AXI_CompareFileAndDev(int devnum, const char* path);

/* ------------------------------------------------------------------------------------------
 * Parameter records of resistive and serial panels. Two store files hold one for each panel, by its
 * Phys: the saved record, and a working copy that an edit begins with and can go back to. `devnum`
 * is the table entry (0..3), `rec` a ResDevInfo; results are 1 or 0 where nothing else stands. The
 * working copy is never really deleted.
 * ---------------------------------------------------------------------------------------- */

/* Saves a set of a USB panel, which is opened and closed. By `mode`: 1 saves the record and its
 * working copy, and writes the flash where its checksum is another; 2 goes back to the working copy,
 * unless both records agree, and `rec` receives it; 5 does the same; 6 saves the record and writes
 * the flash. Only mode 1 has the controller keep it. `only_address` 0 writes the whole flash form,
 * else that address and the checksum. 0 also when the records agreed. */
int ResSetAllParams(int devnum, ResDevInfo* rec, signed char mode, int only_address);

/* Loads the saved record of a USB panel, which is opened and closed. By `mode`: 0 makes a working
 * copy where there is none; 3 begins an edit: the defaults are saved where there is no record, the
 * working copy is made, and the flash brought in line; 7 does the same without the copy; 4 only
 * reads. */
int ResGetAllParams(int devnum, ResDevInfo* rec, signed char mode);

/* The same for serial panels: files alone. Saving knows modes 1, 2, 5 (as 2) and 6, loading 0, 3
 * and 4. */
int ResSerSetAllParams(int devnum, ResDevInfo* rec, signed char mode);
int ResSerGetAllParams(int devnum, ResDevInfo* rec, signed char mode);

/* Open a panel, save or load its record, close it. Saving returns 1 and saves nothing where the
 * saved record and its working copy agree. Negative numbers return 0. */
int SetCurrenAllParame(int devnum, ResDevInfo* rec);
int GetCurrenAllParame(int devnum, ResDevInfo* rec);

/* SetCurrenAllParame() with the defaults. */
int ResRestoreDefault(int devnum);

/* First-time set-up of a USB and of a serial panel: a saved record, the defaults where there is
 * none, and the flash brought in line. The serial port stays open where the panel is refused. */
int SetResDefaultFlash(int devnum);
int SetSerDefaultFlash(int devnum);

/* The saved record and the working copy. Writing the saved one notifies the X input driver, and both
 * set `rec->Chksum`; reading leaves FirstMove as it is, and checks no checksum. */
int GetResAllDataBin(int devnum, ResDevInfo* rec);
int SetResAllDataBin(int devnum, ResDevInfo* rec);
int GetResAllDataBinTemp(int devnum, ResDevInfo* rec);
int SetResAllDataBinTemp(int devnum, ResDevInfo* rec);

/* Writes the working copy back as it is: nothing is deleted. */
int DelResAllDataBinTemp(int devnum);

/* Whether both records are there with the same checksum; whether the open controller holds the
 * checksum of this record. */
int MatchResCheckSum(int devnum);
int MatchResDevChksum(ResDevInfo* rec);

/* Writes a record's flash form to the open controller, value by value, and sets `rec->Chksum`. For
 * `only_address` see ResSetAllParams(). Returns 1, whatever came back. */
int SetResAllDataFlash(int devnum, ResDevInfo* rec, unsigned int only_address);

/* A record of a store file. Return 0 without a Phys or a record. */
unsigned int ReadResAllDataBin(const char* file, unsigned int devnum, ResDevInfo* rec);
unsigned int WriteResAllDataBin(const char* file, unsigned int devnum, ResDevInfo* rec);
unsigned int CleanResAllDataBin(const char* file, unsigned int devnum);

/* A record to its stored words (ZELKORA_RES_STORED_WORDS), and back; to the words of its flash form
 * (ZELKORA_RES_FLASH_WORDS). Encoding sets rec->Chksum. */
void ResParamaEncode(ResDevInfo* rec, unsigned int* words);
void ResParamaDecode(ResDevInfo* rec, const unsigned int* words);
void ResParamaEncodeFlash(ResDevInfo* rec, unsigned int* words);

/* The 16-bit checksums of the first 16 stored, and of the first 10 flash words. */
unsigned int GetCheckSumBin(const unsigned int* words);
unsigned int GetCheckSumFlash(const int* words);

/* ------------------------------------------------------------------------------------------
 * Serial panels. A list in the data directory keeps what the last refresh found; enumeration reads
 * it. Port names are bare, such as ttyS0, and at most 35 characters; names with characters other
 * than letters, digits and "._/-", or with "..", are never opened, nor written to a file or command.
 * ---------------------------------------------------------------------------------------- */

/* Stops the attach daemons, searches all serial ports, starts the daemons of the panels found,
 * rewrites the list and the boot files, and enumerates the USB panels. Takes seconds for each port.
 * Returns DeviceNumber, or 1 at once when resistive panels are not supported. */
int RefreshSerialDevice(void);

/* Searches the serial ports that the kernel log mentions, and appends the panels found to the table.
 * Returns 1 when there was one, else 0. */
int FindMyttyDevice(void);

/* Whether the kernel log mentions a port: 1 or 0. */
int CheckSerialPortExist(const char* name);

/* Reads the list into cMySerInfo. Returns the number of port names read, repeated ones counted. */
int GetSerDevInfo(void);

/* Appends the panels of the list to the table, with a saved record for each. Returns DeviceNumber; 0
 * while serial support is switched off. */
int GetSerialDevceNameConf(void);

/* Writes the list from the table, then unit files, rc.local lines and the udev rule. Returns 6; 0
 * when the table has no serial panel, or the list could not be written. */
int SetSerialDeviceConf(void);

/* The table entry of the serial panel whose Phys `name` contains, after appending the panels of the
 * list; -1 when there is none. */
int GetSerDeviceNumber(const char* name);

/* Records a panel's firmware text in the list, under a number one lower than its own. */
void UpdateSerFw(const char* phys, const char* fw);

/* Take the port name out of a line of another configuration format - the first text between double
 * quotes that holds "tty"; the text between type="string"> and </merge> - into the next free table
 * entry, which does not count yet. Return 1, or 0 when there is none. */
int GetSerialDeviceName(const char* text);
int GetSerialDeviceNameFdi(const char* text);

/* Opens a port by its path into fd, raw, 9600 baud, 8N1; the settings found go to oldtio. Returns 1,
 * or 0. */
int init_rs232touch(const char* path);

/* Opens a port by its name and asks for a supported controller. Returns 1 with the port open on fd;
 * 0: not opened, nobody there (the port stays open), or not supported (closed). */
int OpenSerialDevice(const char* name);

/* The process id of the attach daemon of panel `number`, counted from 1; 0 when none runs. */
int GetPid(int number);

/* Stop and start the attach daemon of panel `index`, counted from 0. Return 1 when the command
 * failed - starting: also when the name is none of a tty - else 0. */
int DisableRS232(int index);
int EnableRS232(int index, const char* name);

/* Write the daemon lines into /etc/rc.local and /etc/rc.d/rc.local, behind the line that loads the
 * module; without such a line they are only removed, and a script that begins with it stays as it
 * is. Return 0 when there is no such file, else 1. */
int SetSerDevBootFile(void);
int SetSerDevBootFile_rcd(void);

/* Writes the udev rule, unless there is one. Returns 1 or 0. */
int SetUdevRule(void);

/* Creates the unit files that are not there, in the current directory. Returns 0, or 1 when one could
 * not be created. */
int CreateServiceFile(void);

/* Switches the reports of all serial panels of the table off (`disable` other than 0) or back to what
 * they were. Returns what the last SetReportMode() did, 0 when none was made. */
int DisableRS232Report(int disable);

/* ------------------------------------------------------------------------------------------
 * Screens, driver notifications, external tools. The screens and the notifications call Xlib and
 * XRandR, which the library does not bring along: a host that uses them links libX11 and
 * libXrandr itself. Others link without (ld --allow-shlib-undefined, as zelkora.pc and the CMake
 * package say) and must not call them.
 * ---------------------------------------------------------------------------------------- */

enum {
  ZELKORA_SCREEN_LINE = 96, /* bytes of one line of get_screen_list() */
  ZELKORA_MAX_PIDS = 100    /* entries of GetTouchServicePid() */
};

/* Both list the lit screens of the default display into screen_info, four at most, in the order
 * of the display's CRTCs. A screen is named by the output at its CRTC's position; a longer name is
 * cut to 19 characters. Return the number of screens, 0 without a display. */
int get_screen(void);
int GetSysScreenNumber(void);

/* The following list the screens anew and return their number. Their lines read
 * "NAME [WIDTHxHEIGHT+X+Y]", 24 blanks, line feed. */

/* Prints every screen with its number, counted from 1, and a mark at screen `current` (counted from
 * 0), at debug level 3. */
int show_screen_list(int current);

/* Writes the line of each screen to its buffer: four buffers of ZELKORA_SCREEN_LINE bytes. */
int get_screen_list(char** lines);

/* Prints screen `index`, counted from 0, at debug level 3; nothing when there is no such screen. */
int show_screen(int index);

/* Ask the X input driver, through mydoled_all_display(), to read its PCT settings again (0x80000),
 * to let go of the panels (0x800), to read its resistive settings again (0x1000000), to look up
 * the screen numbers again (0x20000). Byte 4 of MyConfig is handed on. Return what XCloseDisplay()
 * returned, 0 without a display; Xlib itself returns 0 as well. */
int SendPCTConfigChange(void);
int DisableTouchDriver(void);
int SendResConfigChange(void);
int SendRegetScreenNumber(void);

/* Run a tool and wait for it: calibration, free drawing, alignment of panels and screens. The
 * arguments go through the shell as they are, so hand in no text of unknown origin. Return, the
 * other way round than usual, 1 when the tool failed; 0 when it succeeded or no shell could be run.
 * A command longer than 49 characters is not run and counts as failed. */
int ExecuteCalibration(const char* dev_path, int calib_point);
int ExecuteScrimble(int first, int second, const char* text);
int ExecuteMap(void);

/* The process ids of the touch service, written to `pids`, ZELKORA_MAX_PIDS entries. Returns their
 * number. */
int GetTouchServicePid(int* pids);

/* Kill the touch service, and start it in the background. Return, the other way round than usual,
 * 1 when the last command failed; 0 when it succeeded, none was needed or no shell could be run. */
int DisableTouchService(void);
int EnableTouchService(void);

/* Rewrites the boot script that was marked as changed, with its lines as they are: a check of the
 * number of devices is not added. Always returns 0. */
int SaveCheckDeviceNumber(int number);

/* Read the host's configuration and return byte 6, byte 8 of MyConfig: hide the cursor; do not hide
 * it for resistive panels. The argument has no use. */
int get_en_hide_cursor(int x);
int get_dis_res_hide_cursor(int x);

#if defined(__GNUC__)
#pragma GCC visibility pop
#endif

#ifdef __cplusplus
}
#endif

#endif /* ZELKORA_H */
