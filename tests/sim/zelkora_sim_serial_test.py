#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkora-sim through its real executable: serial panels, and the commands around them."""

import os
import shutil
import unittest

from sim_session import BUILD, SIM, SimulatorTest, run, session, without_privileges

# A host that opens a port as it is opened for a controller.
PORT = r"""
import termios

class Port:
    def __init__(self, path="/dev/ttyS0", flags=os.O_NONBLOCK):
        self.fd = os.open(path, os.O_RDWR | os.O_NOCTTY | flags)

    def set_up(self, when=termios.TCSANOW):
        termios.tcflush(self.fd, termios.TCIFLUSH)
        control = termios.B9600 | termios.CS8 | termios.CREAD | termios.CLOCAL
        characters = [b"\0"] * 32
        characters[termios.VMIN] = b"\1"
        termios.tcsetattr(self.fd, when,
                          [0, 0, control, 0, termios.B9600, termios.B9600, characters])

    def write(self, text):
        return os.write(self.fd, b"\x01" + text.encode() + b"\r")

    def read(self, limit=20):
        return os.read(self.fd, limit).hex(" ").upper()

    def ask(self, text):
        self.write(text)
        return self.read()

def shell(command):
    result = subprocess.run(["sh", "-c", command], capture_output=True, text=True)
    return (result.stdout + result.stderr).strip().replace("\n", "|"), result.returncode
"""


class SerialPorts(SimulatorTest):
    def test_a_panel_answers_the_probe_and_for_its_firmware(self):
        result = session(PORT + """
port = Port()
port.set_up()
print(error_of(port.read))
print(port.write("ZZ"), port.read(2), port.read(10), error_of(port.read))
print(port.ask("OI"))
print(sim("frames", "0").stdout.strip().replace("\\n", "|"))
""", "--panel", "serial,firmware=V2.1")
        self.assert_prints("EAGAIN\n4 01 31 0D EAGAIN\n01 56 32 2E 31 0D\n"
                           "01 5A 5A 0D|01 4F 49 0D", result)

    def test_a_newer_panel_answers_the_probe_differently(self):
        result = session(PORT + 'print(Port().ask("ZZ"))', "--panel", "serial,new-generation")
        self.assert_prints("01 30 0D", result)

    def test_the_settings_of_the_line_are_kept_and_told(self):
        result = session(PORT + """
port = Port()
print(os.isatty(port.fd), sim("line-settings", "0").stdout.strip())
before = termios.tcgetattr(port.fd)
print(*["%X" % word for word in before[:6]])
for when in termios.TCSANOW, termios.TCSADRAIN, termios.TCSAFLUSH:
    port.set_up(when)
after = termios.tcgetattr(Port().fd)
print(*["%X" % word for word in after[:6]], after[6][termios.VMIN], after[6][termios.VTIME])
print(sim("line-settings", "0").stdout.strip())
""", "--panel", "serial", "--trace", self.path("trace"))
        self.assert_prints("True untouched\n500 5 CBD 8A3B D D\n0 0 8BD 0 D D 1 0\n"
                           "iflag=0 oflag=0 cflag=8BD lflag=0 min=1 time=0", result)
        with open(self.path("trace"), encoding="utf-8") as trace:
            lines = trace.read().splitlines()
        settings = "iflag=0 oflag=0 cflag=8BD lflag=0 min=1 time=0"
        self.assertEqual("open /dev/ttyS0 O_RDWR|O_NONBLOCK|O_NOCTTY|O_CLOEXEC", lines[0])
        self.assertEqual(["ioctl TCSETS " + settings, "ioctl TCSETSW " + settings,
                          "ioctl TCSETSF " + settings],
                         [line for line in lines if "TCSETS" in line])
        self.assertEqual(3, lines.count("ioctl TCFLSH 0"))

    def test_a_flush_drops_what_waits(self):
        result = session(PORT + """
port = Port()
port.write("OI")
termios.tcflush(port.fd, termios.TCIFLUSH)
print(error_of(port.read))
try:
    termios.tcflush(port.fd, 9)
except termios.error as error:
    print(errno.errorcode[error.args[0]])
""", "--panel", "serial")
        self.assert_prints("EAGAIN\nEINVAL", result)

    def test_a_blocking_reader_waits_for_bytes(self):
        result = session(PORT + """
port = Port(flags=0)
child = os.fork()
if child == 0:
    time.sleep(0.2)
    port.write("OI")
    os._exit(0)
print(port.read())
os.waitpid(child, 0)
""", "--panel", "serial")
        self.assert_prints("01 56 31 2E 32 0D", result)

    def test_terminals_and_files_that_are_no_ports_stay_what_they_are(self):
        result = session(PORT + """
master, slave = os.openpty()
before = termios.tcgetattr(slave)
before[3] &= ~termios.ECHO
termios.tcsetattr(slave, termios.TCSANOW, before)
termios.tcflush(slave, termios.TCIOFLUSH)
print(os.isatty(slave), termios.tcgetattr(slave)[3] & termios.ECHO)
with open("/dev/null") as file:
    print(os.isatty(file.fileno()))
try:
    termios.tcgetattr(os.open("/dev/usb/hiddev0", os.O_RDWR))
except termios.error as error:
    print(errno.errorcode[error.args[0]])
""", "--panel", "resistive")
        self.assert_prints("True 0\nFalse\nEINVAL", result)


class SerialPanels(SimulatorTest):
    def test_ports_are_given_out_around_those_that_are_named(self):
        result = session("""
print(*[name for name in os.listdir("/dev") if name.startswith(("ttyS", "ttyUSB"))])
print(sim("value", "1", "86").stdout.strip(), sim("unplug", "1").returncode)
print(os.path.exists("/dev/ttyS1"))
""", "--panel", "serial,port=ttyS0", "--panel", "serial,beep=0", "--panel", "serial,port=ttyUSB4")
        self.assert_prints("ttyS0 ttyS1 ttyUSB4\n0 0\nFalse", result)

    def test_a_port_has_one_panel(self):
        self.assert_fails(2, "two panels are on port ttyS1",
                          run([SIM, "--panel", "serial,port=ttyS1", "--panel",
                               "serial,port=ttyS1", "--", "true"]))

    def test_all_kinds_of_panels_go_together(self):
        result = session(PORT + """
print(Panel().command("OI"), HidrawPanel("/dev/hidraw1").id(), Port().ask("OI"))
print(open("/opt/.touch_panel/rmanuflist.conf").read().strip())
print(sim("usb-id", "2").stderr.strip())
""", "--panel", "resistive", "--panel", "pct8753", "--panel", "serial")
        self.assert_prints(
            "V1.2 2575:8753 01 56 31 2E 32 0D\nVirtual Resistive\n"
            "zelkora-sim: 'usb-id' is a query to USB panels, and this one is of kind serial", result)

    def test_a_line_goes_wrong_as_described_and_as_told(self):
        result = session(PORT + """
print(error_of(Port), error_of(Port, "/dev/ttyS1"), end=" ")
port = Port()
print(port.ask("ZZ"), "/", port.ask("ZZ"))
sim("fault", "0", "failed-opens=1")
print(error_of(Port), error_of(Port))
sim("fault", "0", "streaming")
print(port.ask("ZZ"))
deaf = Port("/dev/ttyS1")
deaf.write("ZZ")
print(error_of(deaf.read))
""", "--panel", "serial,failed-opens=1,streamed-reports=1", "--panel", "serial,silent")
        coordinates = "00 98 10 20 30 40 00 00 00 00"
        self.assert_prints("EIO done %s / 01 31 0D\nEIO done\n%s\nEAGAIN"
                           % (coordinates, coordinates), result)

    def test_an_unplugged_port_hangs_up(self):
        result = session(PORT + """
port = Port()
print(sim("unplug", "0").returncode, port.read() == "", error_of(port.write, "OI"))
print(error_of(Port))
""", "--panel", "serial")
        self.assert_prints("0 True EIO\nENOENT", result)


class Commands(SimulatorTest):
    def test_the_kernel_log_tells_of_the_ports_of_the_session(self):
        result = session(PORT + 'print(shell("dmesg | grep -o \'tty[A-Z]*[0-9]\'"))',
                         "--panel", "serial", "--panel", "serial,port=ttyUSB2")
        self.assert_prints("('ttyS0|ttyUSB2', 0)", result)
        self.assert_prints("1", session(PORT + 'print(shell("dmesg | grep tty")[1])'))

    def test_daemons_are_started_found_and_ended_and_all_is_recorded(self):
        result = session(PORT + """
for command in ("pgrep vastrel1", "systemctl start vastrel1@ttyS0.service", "pgrep vastrel1",
                "pidof vastrel1", "killall vastrel1", "killall vastrel1"):
    print(*shell(command))
print(sim("commands").stdout, end="")
""", "--panel", "serial", "--trace", self.path("trace"))
        record = ["pgrep vastrel1 -> 1", "systemctl start vastrel1@ttyS0.service",
                  "pgrep vastrel1", "pidof vastrel1", "killall vastrel1", "killall vastrel1 -> 1"]
        self.assert_prints(" 1\n 0\n5000001 0\n5000001 0\n 0\nvastrel1: no process found 1\n"
                           + "\n".join(record), result)
        with open(self.path("trace"), encoding="utf-8") as trace:
            self.assertEqual(["run " + line for line in record], trace.read().splitlines())

    def test_no_process_has_the_number_of_a_daemon(self):
        result = session(PORT + """
shell("systemctl start vastrel1@ttyS0.service")
print(shell("kill -9 $(pidof vastrel1) 2>/dev/null"))
print(int(open("/proc/sys/kernel/pid_max").read()) < int(shell("pidof vastrel1")[0]))
""")
        self.assert_prints("('', 1)\nTrue", result)

    def test_commands_fail_as_told(self):
        result = session(PORT + """
print(sim("command-fails", "systemctl", "5").returncode)
print(shell("systemctl start vastrel1@ttyS0.service"), shell("pgrep vastrel1"))
print(sim("command-fails", "systemctl", "0").returncode)
print(shell("systemctl start vastrel1@ttyS0.service"), shell("pgrep vastrel1"))
print(sim("command-fails", "rm", "1").stderr.strip())
""")
        self.assert_prints("0\n('', 5) ('', 1)\n0\n('', 0) ('5000001', 0)\n"
                           "zelkora-sim: NAME is one of dmesg killall pgrep pidof systemctl", result)

    def test_a_stand_in_needs_a_session(self):
        os.symlink(SIM, self.path("dmesg"))
        self.assert_fails(2, "there is no session here", run([self.path("dmesg")]))

    def test_the_stand_ins_come_first_even_without_a_path(self):
        result = session(["/bin/sh", "-c", "command -v dmesg; command -v ls >/dev/null"],
                         env={})
        self.assert_prints("/dev/zelkora-sim/bin/dmesg", result)


class BootFiles(SimulatorTest):
    FILES = ("/etc/rc.local", "/etc/rc.d/rc.local", "/etc/udev/rules.d/10-serialtouch.rules",
             "/lib/udev/rules.d/10-serialtouch.rules")
    # For a shell: an ordinary user may not be allowed to run this interpreter.
    SCRIPT = """
for file in %s; do
  [ ! -e $file ] && echo private > $file && cat $file
done
ls /etc/rc.d
[ -e /etc/passwd ]
""" % " ".join(FILES)

    def assert_private(self, simulator=SIM, **options):
        before = [self.state(path) for path in self.FILES]
        result = run([simulator, "--", "sh", "-c", self.SCRIPT], **options)
        self.assert_prints("private\nprivate\nprivate\nprivate\nrc.local", result)
        self.assertEqual(before, [self.state(path) for path in self.FILES])

    @staticmethod
    def state(path):
        try:
            with open(path, "rb") as file:
                return file.read()
        except OSError:
            return None

    def test_scripts_and_rules_are_those_of_the_session(self):
        self.assert_private()

    @unittest.skipUnless(os.getuid() == 0, "only root can give its privileges up")
    def test_an_ordinary_user_has_them_too(self):
        namespaces = run(["unshare", "--user", "--mount", "true"], preexec_fn=without_privileges)
        if namespaces.returncode != 0:
            self.skipTest("this machine allows no user namespaces")
        for name in ("zelkora-sim", "libzelkora-sim-preload.so"):
            shutil.copy(os.path.join(BUILD, name), self.directory)
        self.assert_private(self.path("zelkora-sim"), cwd="/", preexec_fn=without_privileges)


if __name__ == "__main__":
    unittest.main()
