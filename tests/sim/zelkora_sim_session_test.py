#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkora-sim through its real executable: the session around the panels, and its files."""

import os
import shutil
import signal
import subprocess
import sys
import time
import unittest

from sim_session import BUILD, PRELUDE, SIM, SimulatorTest, run, session

REAL_DATA = "/opt/.touch_panel"


class Sessions(SimulatorTest):
    def test_the_exit_status_of_the_command_is_passed_on(self):
        self.assertEqual(7, session(["sh", "-c", "exit 7"]).returncode)
        self.assertEqual(128 + signal.SIGKILL, session(["sh", "-c", "kill -KILL $$"]).returncode)

    def test_a_command_that_cannot_run_is_named(self):
        self.assert_fails(127, "cannot run ./missing: No such file", session(["./missing"]))
        self.assert_fails(126, "cannot run /etc/passwd: Permission denied", session(["/etc/passwd"]))

    def test_arguments_reach_the_command_unchanged(self):
        words = ["--panel", "-x", "", "a b", "--", "value"]
        result = session(["sh", "-c", 'printf "<%s>" "$@"', "sh", *words])
        self.assert_prints("".join("<%s>" % word for word in words), result)

    def test_the_help_lists_options_queries_and_keys_with_their_arguments(self):
        result = run([SIM, "--help"])
        self.assertEqual(("", 0), (result.stderr, result.returncode))
        for line in ("  --panels FILE ", "  set PANEL ADDRESS VALUE ", "  silent PANEL on|off ",
                     "  set-flash PANEL BYTES ", "  pct8753 ", "  sn=HHHHHHHHHHHHHHHH "):
            self.assertIn("\n" + line, result.stdout)

    def test_every_error_says_who_speaks(self):
        for words in (["--colour"], ["--panel"], ["value", "0"], ["value", "0", "86", "1"]):
            with self.subTest(words):
                result = run([SIM, *words])
                self.assertEqual(("", 2), (result.stdout, result.returncode))
                self.assertRegex(result.stderr, r"\Azelkora-sim: .*; see zelkora-sim --help\n\Z")

    def test_nothing_to_run_is_a_usage_error(self):
        self.assert_fails(2, "nothing to run", run([SIM, "--no-waits"]))

    def test_the_session_ends_with_its_command_and_not_with_what_that_left_running(self):
        folder = os.path.dirname(self.path("any"))  # gone after the test, and so is what waits
        script = "(while [ -d %s ]; do sleep 0.05; done) >/dev/null 2>&1 & exit 3" % folder
        started = time.monotonic()
        result = session(["sh", "-c", script])
        self.assertEqual(3, result.returncode)
        self.assertLess(time.monotonic() - started, 30)

    def test_a_process_left_running_is_told_that_the_panels_are_gone(self):
        report = self.path("report")
        result = session("""
panel = Panel()
if os.fork() == 0:
    os.close(1); os.close(2)
    parent = os.getppid()
    while error_of(panel.name) == "done":
        time.sleep(0.02)
    late = sim("value", "0", "86")
    text = "%s %s %d %s" % (error_of(panel.name), error_of(Panel), late.returncode, late.stderr)
    with open(REPORT + ".new", "w") as file:
        file.write(text)
    os.rename(REPORT + ".new", REPORT)
""".replace("REPORT", repr(report)))
        self.assert_prints("", result)
        for _ in range(200):
            if os.path.exists(report):
                break
            time.sleep(0.05)
        with open(report) as file:
            self.assertEqual("ENODEV ENODEV 2 zelkora-sim: the session is over; its panels are gone\n",
                             file.read())

    @staticmethod
    def end_group(leader):
        try:
            os.killpg(leader, signal.SIGKILL)
        except ProcessLookupError:
            pass  # all of them have ended, as they should

    def test_a_termination_signal_reaches_the_command(self):
        ready = self.path("ready")
        script = "trap 'exit 5' TERM; touch %s; while :; do sleep 0.05; done" % ready
        runner = subprocess.Popen([SIM, "--", "sh", "-c", script], start_new_session=True)
        self.addCleanup(self.end_group, runner.pid)
        for _ in range(200):
            if os.path.exists(ready):
                break
            time.sleep(0.05)
        runner.terminate()
        self.assertEqual(5, runner.wait(timeout=30))

    def test_a_session_holds_no_second_one(self):
        self.assert_fails(2, "this is a session already", session([SIM, "--", "true"]))

    def test_waits_are_skipped_only_when_asked_for(self):
        script = """
libc = ctypes.CDLL(None)
start = time.monotonic()
libc.usleep(WAIT)
libc.sleep(WAIT // 1000000)
print(time.monotonic() - start < WAIT / 1e6)
"""
        self.assert_prints("False", session(script.replace("WAIT", "200000")))
        self.assert_prints("True", session(script.replace("WAIT", "20000000"), "--no-waits"))

    def test_the_trace_names_every_call(self):
        trace = self.path("trace")
        result = session("Panel().command('OI')", "--trace", trace)
        self.assert_prints("", result)
        with open(trace) as file:
            lines = file.read().splitlines()
        self.assertEqual("open /dev/usb/hiddev0 O_RDWR|O_CLOEXEC", lines[0])
        self.assertIn("ioctl HIDIOCSREPORT type=3 id=1", lines)
        self.assertIn("set_report 1: 04 01 4F 49 0D", lines)
        self.assertIn("get_report 1: 06 01 56 31 2E 32 0D", lines)
        self.assertEqual("close /dev/usb/hiddev0", lines[-1])

    def test_a_trace_that_cannot_be_written_ends_the_session_before_it_begins(self):
        missing = self.path("missing/trace")
        self.assert_fails(1, "cannot write %s: No such file" % missing,
                          session(["true"], "--trace", missing))

    def test_a_build_directory_may_have_any_name(self):
        place = self.path("a b:c")
        os.mkdir(place)
        for name in ("zelkora-sim", "libzelkora-sim-preload.so"):
            shutil.copy(os.path.join(BUILD, name), place)
        result = run([os.path.join(place, "zelkora-sim"), "--", sys.executable, "-c",
                      PRELUDE + "print(Panel().name())"])
        self.assert_prints("Zelkora Virtual Resistive", result)

    def test_a_missing_preload_library_is_named(self):
        shutil.copy(SIM, self.directory)
        result = run([self.path("zelkora-sim"), "--", "true"])
        self.assert_fails(1, "libzelkora-sim-preload.so is missing", result)


class DataDirectory(SimulatorTest):
    def listing(self):
        return sorted(os.listdir(REAL_DATA)) if os.path.isdir(REAL_DATA) else None

    def test_the_data_directory_is_private_and_everybody_may_write_to_it(self):
        before = self.listing()
        result = session(["sh", "-c", "echo x >%s/mark && stat -c %%a %s && cat %s/mark"
                          % (REAL_DATA, REAL_DATA, REAL_DATA)])
        self.assert_prints("777\nx", result)
        self.assertEqual(before, self.listing())

    def test_the_name_lists_hold_the_panels_presented(self):
        result = session(["sh", "-c", "cd %s && cat rmanuflist.conf && wc -c <manuflist.conf"
                          % REAL_DATA], "--panel", "resistive", "--panel", "resistive,name=Other",
                         "--panel", "resistive")
        self.assert_prints("Virtual Resistive\nOther\n0", result)

    def test_each_name_list_holds_the_panels_of_its_kind(self):
        result = session(["sh", "-c", "cd %s && cat rmanuflist.conf && echo - && cat manuflist.conf"
                          % REAL_DATA], "--panel", "pct8752", "--panel", "resistive",
                         "--panel", "pct8753,name=Other", "--panel", "pct8753")
        self.assert_prints("Virtual Resistive\n-\nVirtual PCT\nOther", result)

    def test_a_given_data_directory_is_kept_with_the_lists_in_it(self):
        data = self.path("new/data")
        self.assert_prints("", session(["sh", "-c", "echo 1 >%s/kept" % REAL_DATA], "--data", data))
        self.assertEqual(["kept", "manuflist.conf", "rmanuflist.conf"], sorted(os.listdir(data)))
        with open(os.path.join(data, "rmanuflist.conf"), "w") as file:
            file.write("Mine\n")
        script = "cat %s/kept %s/rmanuflist.conf" % (REAL_DATA, REAL_DATA)
        self.assert_prints("1\nMine", session(["sh", "-c", script], "--data", data))

    def test_the_devices_of_the_machine_are_out_of_reach(self):
        result = session(["sh", "-c", "echo /dev/tty[A-Z]* /dev/loop* /dev/hid* /dev/usb/*"])
        self.assert_prints("/dev/tty[A-Z]* /dev/loop* /dev/hidraw0 /dev/usb/hiddev0", result)


if __name__ == "__main__":
    unittest.main()
