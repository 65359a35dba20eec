#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkora-sim through its real executable: resistive panels, descriptors and queries.

The programs run in the sessions are Python and sh: they know nothing of the simulator and reach
the virtual nodes by the plain system calls.
"""

import os
import shutil
import unittest

from sim_session import BUILD, SIM, SimulatorTest, run, session, without_privileges


class Panels(SimulatorTest):

    def test_a_program_sees_the_default_panel_on_its_hiddev_node(self):
        result = session("""
panel = Panel()
print(panel.id(), panel.name(), panel.text(0x12))
""")
        self.assert_prints("3A4C:1688 Zelkora Virtual Resistive usb-0000:00:14.0-1/input0", result)

    def test_a_description_sets_ids_texts_and_stored_values(self):
        result = session("""
panel = Panel()
print(panel.id(), panel.name(), panel.command("OI"), panel.command("GP56"))
print(sim("value", "0", "0x10").stdout, end="")
""", "--panel", 'resistive,id=3b17:0001,maker=Acme,name="Touch, small",firmware=V2.5,beep=0,'
            "word16=0xABCD")
        self.assert_prints("3B17:0001 Acme Touch, small V2.5 0000\n43981", result)

    def test_the_first_panel_of_the_command_line_is_listed_first(self):
        panels = []
        for number in range(3):
            panels += ["--panel", "resistive,name=Panel %d,word9=%d" % (number, number)]
        result = session("""
for directory, kind in ("/dev/usb", "hiddev"), ("/dev", "hidraw"), ("/dev/input", "event"):
    print(*[name for name in os.listdir(directory) if kind in name])
for node in os.listdir("/dev/usb"):
    panel = Panel("/dev/usb/" + node)
    print(panel.name(), panel.command("GP09"), panel.text(0x12))
""", *panels)
        self.assert_prints("hiddev0 hiddev1 hiddev2\nhidraw0 hidraw1 hidraw2\nevent0 event1 event2\n"
                           "Zelkora Panel 0 0000 usb-0000:00:14.0-1/input0\n"
                           "Zelkora Panel 1 0001 usb-0000:00:14.0-2/input0\n"
                           "Zelkora Panel 2 0002 usb-0000:00:14.0-3/input0", result)

    def test_what_one_process_stores_the_next_one_reads(self):
        script = session("""
if len(sys.argv) == 1:
    print(Panel().command("SP560000"))
    subprocess.run([sys.executable, "-c", SCRIPT, "again"])
else:
    print(Panel().command("GP56"), sim("value", "0", "86").stdout, end="")
""".replace("SCRIPT", "open('/proc/self/cmdline').read().split(chr(0))[2]"))
        self.assert_prints("0\n0000 0", script)

    def test_processes_at_work_at_the_same_time_each_get_their_own_answers(self):
        panels = ["--panel", "resistive"] * 6
        result = session("""
children = []
for number in range(6):
    child = os.fork()
    if child == 0:
        panel = Panel("/dev/usb/hiddev%d" % number)
        wrong = 0
        for value in range(10):
            panel.command("SP56%04X" % (value * 6 + number))
            wrong += panel.command("GP56") != "%04X" % (value * 6 + number)
        os._exit(wrong)
    children.append(child)
print(sum(os.waitpid(child, 0)[1] for child in children))
print(*[sim("value", str(number), "86").stdout.strip() for number in range(6)])
""", *panels)
        self.assert_prints("0\n54 55 56 57 58 59", result)

    def test_an_unplugged_panel_leaves_open_descriptors_dead_and_no_nodes(self):
        result = session("""
panel, other = Panel(), Panel("/dev/usb/hiddev1")
print(sim("unplug", "0").returncode)
print(error_of(panel.name), error_of(panel.command, "OI"))
print(error_of(Panel), os.listdir("/dev/usb"), other.command("OI"))
print(os.path.exists("/dev/hidraw0"), os.path.exists("/dev/input/event0"))
again = sim("unplug", "0")
print(again.returncode, again.stderr, end="")
""", "--panel", "resistive", "--panel", "resistive")
        self.assert_prints("0\nENODEV ENODEV\nENOENT ['hiddev1'] V1.2\nFalse False\n"
                           "1 zelkora-sim: panel 0 is unplugged already", result)

    def test_a_panel_is_plugged_into_another_port_and_keeps_what_it_stores(self):
        result = session("""
Panel().command("SP560007")
Panel().command("PL")
print(sim("unplug", "0").returncode, sim("plug", "0").stdout, end="")
panel = Panel()
print(panel.text(0x12), panel.command("GP56"), Panel("/dev/usb/hiddev1").text(0x12))
again = sim("plug", "0")
print(again.returncode, again.stderr, end="")
sim("unplug", "0")
sim("plug", "0")
print(Panel().text(0x12))
""", "--panel", "resistive", "--panel", "resistive")
        self.assert_prints("0 plugged 0 /dev/usb/hiddev0 /dev/hidraw0 /dev/input/event0\n"
                           "usb-0000:00:14.0-3/input0 0007 usb-0000:00:14.0-2/input0\n"
                           "1 zelkora-sim: panel 0 is plugged in already\n"
                           "usb-0000:00:14.0-1/input0", result)

    def test_a_panel_on_a_serial_port_is_plugged_into_the_same_port(self):
        result = session("""
sim("unplug", "0")
print(os.path.exists("/dev/ttyS4"), sim("plug", "0").stdout.strip(), os.path.exists("/dev/ttyS4"))
""", "--panel", "serial,port=ttyS4")
        self.assert_prints("False plugged 0 /dev/ttyS4 True", result)

    def test_a_pen_has_the_next_free_nodes_and_no_feature_reports(self):
        result = session("""
print(sim("unplug", "1").returncode, sim("plug", "1").stdout, end="")
for node in "/dev/hidraw1", "/dev/hidraw2":
    panel = HidrawPanel(node)
    print(Panel(panel.fd).text(0x05), error_of(panel.send, 6, 0xA1, 0x22))
print(sorted(os.listdir("/dev/input")), os.listdir("/dev/usb"))
""", "--panel", "resistive,nodes=hidraw", "--panel", "pct8753,pen,nodes=hidraw")
        self.assert_prints("0 plugged 1 - /dev/hidraw1 /dev/input/event1 "
                           "- /dev/hidraw2 /dev/input/event2\n"
                           "usb-0000:00:14.0-3/input0 done\n"
                           "usb-0000:00:14.0-3/input1 EPIPE\n"
                           "['event0', 'event1', 'event2'] []", result)

    def test_a_panel_without_texts_is_named_by_its_ids_and_listed_so(self):
        result = session("""
print(Panel().name(), open("/opt/.touch_panel/rmanuflist.conf").read(), end="")
""", "--panel", "resistive,maker=,name=,id=3a4c:16AF")
        self.assert_prints("HID 3a4c:16af HID 3a4c:16af", result)

    def test_poll_sees_reports_hang_ups_and_ordinary_files(self):
        result = session("""
import select, time
panel, raw = Panel(), os.open("/dev/hidraw0", os.O_RDWR | os.O_NONBLOCK)
readable, writable = os.pipe()
poll = select.poll()
for fd in (panel.fd, raw, readable): poll.register(fd, select.POLLIN)
def ready(wait): return [(names[fd], events) for fd, events in poll.poll(wait)]
names = {panel.fd: "hiddev", raw: "hidraw", readable: "pipe"}
before = time.monotonic()
print(ready(50), time.monotonic() - before >= 0.05)
panel.command("OI")
os.write(writable, b"x")
print(ready(-1), len(os.read(raw, 100)))
os.read(readable, 1)
poll.modify(panel.fd, 0)
sim("unplug", "0")
print(ready(-1) == [(name, select.POLLERR | select.POLLHUP) for name in ("hiddev", "hidraw")])
""")
        self.assert_prints("[] True\n[('hidraw', 1), ('pipe', 1)] 64\nTrue", result)

    def test_a_node_of_mode_000_cannot_be_opened_by_anybody(self):
        script = """
print(*[error_of(os.open, node, os.O_RDWR)
        for node in ("/dev/usb/hiddev0", "/dev/hidraw0", "/dev/input/event0")])
"""
        self.assert_prints("EACCES done done",
                           session(script, "--panel", "resistive,hiddev-mode=000"))
        self.assert_prints("EACCES EACCES EACCES",
                           session(script, "--panel", "resistive,mode=000"))

    def test_a_silent_panel_is_asked_and_does_not_answer(self):
        result = session("""
panel = Panel()
print(panel.command("OI"))
sim("silent", "0", "on")
panel.command("GP56")
print(sim("frames", "0").stdout, end="")
sim("silent", "0", "off")
print(panel.command("GP56"))
""", "--panel", "resistive,silent-commands=0")
        self.assert_prints("V1.2\n01 4F 49 0D\n01 47 50 35 36 0D\n0001", result)

    def test_faults_of_a_description_reach_the_controller(self):
        result = session("""
panel = Panel()
print(panel.command("SP560000"), panel.command("SP560000"), panel.command("GP56"))
""", "--panel", "resistive,bad-acknowledges=1,stores=77")
        self.assert_prints("1 0 004D", result)

    def test_a_wrong_description_is_refused_with_the_reason(self):
        for description, reason in [
                ("projected", "'projected' is no kind of panel; known: resistive, pct8752, pct8753"),
                ("resistive,colour=red", "unknown key 'colour'"),
                ("pct8753,pos=5", "'5' is no value for 'pos': expected MODE, 1..4")]:
            with self.subTest(description):
                result = session(["true"], "--panel", description)
                self.assert_fails(2, reason, result)
                self.assertTrue(result.stderr.startswith("zelkora-sim: --panel: "), result.stderr)


class Descriptors(SimulatorTest):

    def test_a_node_is_found_by_any_of_its_names(self):
        result = session("""
os.chdir("/dev/usb")
os.symlink("/dev/usb/hiddev0", "/dev/shm/touch-%d" % os.getpid())
usb = os.open("/dev/usb", os.O_RDONLY)
libc = ctypes.CDLL(None)
for fd in (os.open("hiddev0", os.O_RDWR), os.open("/dev/../dev//usb/hiddev0", os.O_RDONLY),
           os.open("/dev/shm/touch-%d" % os.getpid(), os.O_RDWR | os.O_NONBLOCK),
           os.open("hiddev0", os.O_RDWR, dir_fd=usb),
           getattr(libc, "__open_2")(b"/dev/usb/hiddev0", os.O_RDWR),
           getattr(libc, "__openat64_2")(usb, b"hiddev0", os.O_RDWR)):
    print(Panel(fd).command("OI"))
os.unlink("/dev/shm/touch-%d" % os.getpid())
""")
        self.assert_prints("\n".join(["V1.2"] * 6), result)

    def test_a_descriptor_survives_dup_fork_and_exec(self):
        result = session("""
panel = Panel()
other = os.open("/dev/null", os.O_RDWR)
other_file = os.open("/dev/null", os.O_RDWR)
os.read(other, 1)
os.dup2(panel.fd, other)
print(Panel(other).command("OI"), Panel(os.dup(panel.fd)).command("OI"))
for copy in (lambda: fcntl.fcntl(panel.fd, fcntl.F_DUPFD, 20),
             lambda: fcntl.fcntl(panel.fd, fcntl.F_DUPFD_CLOEXEC, 20),
             lambda: ctypes.CDLL(None).fcntl64(panel.fd, fcntl.F_DUPFD, 20),
             lambda: ctypes.CDLL(None).dup3(panel.fd, 20, os.O_CLOEXEC)):
    ordinary = os.dup2(other_file, 20)
    os.read(ordinary, 1)
    os.close(ordinary)
    fd = copy()
    print(fd, Panel(fd).command("OI"))
    os.close(fd)
sys.stdout.flush()
if os.fork() == 0:
    print(panel.command("GP58"))
    sys.stdout.flush()
    os._exit(0)
os.wait()
os.set_inheritable(panel.fd, True)
script = open("/proc/self/cmdline").read().split(chr(0))[2].split("# script")[0]
os.execv(sys.executable, [sys.executable, "-c", script + "print(Panel(%d).command('GP59'))" % panel.fd])
# script
""".replace("panel = Panel()", "# script\npanel = Panel()", 1))
        self.assert_prints("V1.2 V1.2\n" + "20 V1.2\n" * 4 + "07D0\n000A", result)

    def test_a_reused_descriptor_number_is_an_ordinary_file_again(self):
        result = session("""
panel = Panel()
panel.name()
os.close(panel.fd)
path = "/dev/shm/zelkora-%d" % os.getpid()
fd = os.open(path, os.O_RDWR | os.O_CREAT, 0o640)
print(fd == panel.fd, os.write(fd, b"text"), os.lseek(fd, 0, 0), os.read(fd, 9))
print(oct(os.fstat(fd).st_mode & 0o777), error_of(panel.name))
os.unlink(path)
""", umask=0o022)
        self.assert_prints("True 4 0 b'text'\n0o640 ENOTTY", result)

    def test_a_file_that_a_program_puts_into_dev_stays_a_file(self):
        result = session(["sh", "-c", "echo text >/dev/notes && cat /dev/notes"],
                         preexec_fn=None)
        self.assert_prints("text", result)

    def test_memory_is_treated_as_the_kernel_treats_it(self):
        result = session("""
import mmap
panel = Panel()
libc = ctypes.CDLL(None, use_errno=True)
libc.ioctl.argtypes = [ctypes.c_int, ctypes.c_ulong, ctypes.c_void_p]

def ioctl(request, address):
    done = libc.ioctl(panel.fd, request, address) >= 0
    return "done" if done else errno.errorcode[ctypes.get_errno()]

memory = mmap.mmap(-1, mmap.PAGESIZE)
memory.write(FEATURE_1)
page = ctypes.c_void_p(ctypes.addressof(ctypes.c_char.from_buffer(memory)))
libc.mprotect(page, mmap.PAGESIZE, mmap.PROT_READ)
print(ioctl(SET_REPORT, page), ioctl(GET_DEVICE_INFO, page), ioctl(SET_REPORT, 16))
""")
        self.assert_prints("done EFAULT EFAULT", result)

    def test_reading_waits_for_input_unless_the_descriptor_does_not_block(self):
        result = session("""
hurried = os.open("/dev/hidraw0", os.O_RDWR | os.O_NONBLOCK)
print(error_of(os.read, hurried, 64))
patient = os.open("/dev/hidraw0", os.O_RDWR)
if os.fork() == 0:
    time.sleep(0.2)
    sim("unplug", "0")
    os._exit(0)
started = time.monotonic()
print(error_of(os.read, patient, 64), time.monotonic() - started > 0.15)
""")
        self.assert_prints("EAGAIN\nEIO True", result)

    def test_closing_is_seen_before_what_the_process_does_next(self):
        trace = self.path("trace")
        result = session("""
for turn in range(200):
    os.close(os.open("/dev/usb/hiddev0", os.O_RDWR))
""", "--trace", trace)
        self.assert_prints("", result)
        with open(trace) as lines:
            kinds = [line.split()[0] for line in lines]
        self.assertEqual(["open", "close"] * 200, kinds)


class Queries(SimulatorTest):

    def test_outside_a_session_every_query_says_so(self):
        for words in (["value", "0", "86"], ["set", "0", "86", "1"], ["silent", "0", "on"],
                      ["unplug", "0"], ["frames", "0"], ["pos-mode", "0"], ["fault", "0", "silent"]):
            with self.subTest(words[0]):
                self.assert_fails(2, "there is no session here", run([SIM, *words]))

    def test_a_value_is_set_behind_the_back_of_the_host_and_not_made_permanent(self):
        result = session("""
print(sim("set", "0", "86", "0xFFFF").returncode, Panel().command("GP56"))
print(sim("value", "0", "86").stdout + sim("permanent", "0", "86").stdout, end="")
Panel().command("PL")
print(sim("permanent", "0", "86").stdout, end="")
""")
        self.assert_prints("0 FFFF\n65535\n1\n65535", result)

    def test_a_wrong_query_is_refused_with_the_reason(self):
        result = session("""
for words in ("value 1 86", "value x 86", "value 0 256", "set 0 86 65536", "silent 0 maybe",
              "value 0", "value 0 86 1"):
    answer = sim(*words.split())
    print(answer.returncode, answer.stdout + answer.stderr.splitlines()[0])
""")
        self.assertEqual(0, result.returncode, result.stderr)
        lines = result.stdout.splitlines()
        self.assertEqual(["3 zelkora-sim: there is no panel 1; the session has 1, counted from 0",
                          "2 zelkora-sim: PANEL is a number, counted from 0",
                          "2 zelkora-sim: ADDRESS lies in 0..255",
                          "2 zelkora-sim: ADDRESS lies in 0..255, VALUE in 0..65535",
                          "2 zelkora-sim: silent PANEL is followed by on or off"], lines[:5])
        self.assertEqual(["2", "2"], [line[0] for line in lines[5:]])

    def test_an_answer_longer_than_a_message_comes_whole(self):
        result = session("""
panel = Panel()
for turn in range(150):
    panel.send(b"\\x01EW\\x01" + bytes([turn]) * 32 + b"\\r")
print(sim("frames", "0").stdout, end="")
""")
        expected = ["01 45 57 01 " + "%02X " % turn * 32 + "0D" for turn in range(150)]
        self.assert_prints("\n".join(expected), result)


@unittest.skipUnless(os.getuid() == 0, "only root can give its privileges up")
class OrdinaryUser(SimulatorTest):

    def test_a_process_without_privileges_is_stopped_by_the_permissions_of_a_node(self):
        result = session("""
os.setgroups([]); os.setgid(65534); os.setuid(65534)
print(error_of(Panel), Panel("/dev/usb/hiddev1").name())
""", "--panel", "resistive", "--panel", "resistive,mode=0666")
        self.assert_prints("EACCES Zelkora Virtual Resistive", result)

    def test_an_ordinary_user_gets_a_session_from_a_user_namespace(self):
        namespaces = run(["unshare", "--user", "--mount", "true"], preexec_fn=without_privileges)
        if namespaces.returncode != 0:
            self.skipTest("this machine allows no user namespaces")
        for name in ("zelkora-sim", "libzelkora-sim-preload.so"):
            shutil.copy(os.path.join(BUILD, name), self.directory)
        script = "stat -c '%%U %%a' /dev/usb/hiddev0; %s set 0 86 9; %s value 0 86; id -u" % (
            (self.path("zelkora-sim"),) * 2)
        result = run([self.path("zelkora-sim"), "--", "sh", "-c", script], cwd="/",
                     preexec_fn=without_privileges)
        self.assert_prints("nobody 600\n9\n65534", result)


if __name__ == "__main__":
    unittest.main()
