# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkoractl on virtual serial panels: found, listed, attached, set."""

import unittest

from session import Session

DONE, FAILED = 0, 1
UNITS = "/etc/systemd/system"
LIST = "/opt/.touch_panel/sertp.conf"


class SerialSession(Session):
    def __enter__(self):
        super().__enter__()
        # What a refresh writes there must not reach the machine.
        if self.shell(f"mount -t tmpfs tmpfs {UNITS}").status != 0:
            raise unittest.SkipTest(f"{UNITS} cannot be made private")
        return self

    def refresh(self):
        result = self.ctl("serial", "refresh")
        if result.status != DONE:
            raise AssertionError(result.stderr)
        return result


class SerialTest(unittest.TestCase):
    def test_nothing_is_listed_before_a_refresh(self):
        with SerialSession("serial,port=ttyS0") as session:
            result = session.ctl("serial", "list")
        self.assertEqual(result, (DONE, "", "zelkoractl: no serial panel is listed; zelkoractl "
                                            "serial refresh looks for some\n"))

    def test_a_refresh_finds_the_panel_and_lists_it_beside_others(self):
        with SerialSession("serial,port=ttyS0", "resistive") as session:
            result = session.refresh()
            self.assertEqual(sorted(line.split()[1:5] for line in result.stdout.splitlines()), [
                ["TYPE", "NODE", "USB-ID", "FIRMWARE"],
                ["resistive-serial", "/dev/ttyS0", "-", "V1.2"],
                ["resistive-usb", "/dev/usb/hiddev1", "3A4C:1688", "V1.2"]])
            self.assertIn(f"unit files of serial panels are written to {UNITS}\n", result.stderr)
            self.assertEqual(session.shell(f"ls {UNITS}").stdout, "vastrel1@.service\n")
            self.assertEqual(session.shell(f"cat {LIST}").stdout, "SerialDevice1=ttyS0\nFW1=V1.2\n")
            self.assertEqual(session.ctl("serial", "list"),
                             (DONE, "NUMBER  PORT   FIRMWARE\n1       ttyS0  V1.2\n", ""))
            _, document = session.ctl_json("serial", "list")
            self.assertEqual(document["ports"],
                             [{"number": 1, "port": "ttyS0", "firmware": "V1.2"}])

    def panel(self, session):
        _, document = session.ctl_json("list")
        return next(str(panel["index"]) for panel in document["panels"]
                    if panel["type"] == "resistive-serial")

    def test_the_daemon_is_stopped_and_started(self):
        with SerialSession("serial,port=ttyS0", "resistive") as session:
            session.refresh()
            panel = self.panel(session)
            self.assertEqual(session.ctl("serial", "disable", panel),
                             (DONE, f"panel {panel} is detached\n", ""))
            self.assertNotEqual(session.shell("pgrep vastrel1").status, 0)
            session.sim("command-fails", "systemctl", "1")
            result = session.ctl("serial", "enable", panel)
            self.assertEqual((result.status, result.stdout), (FAILED, ""))
            self.assertIn(f"the attach daemon of panel {panel} did not start", result.stderr)
            session.sim("command-fails", "systemctl", "0")
            self.assertEqual(session.ctl("serial", "enable", panel),
                             (DONE, f"panel {panel} is attached\n", ""))
            self.assertEqual(session.shell("pgrep vastrel1").status, 0)
            session.sim("command-fails", "killall", "1")
            self.assertEqual(session.ctl("serial", "disable", panel).status, FAILED)
            other = "1" if panel == "0" else "0"
            self.assertEqual(session.ctl("serial", "enable", other).status, FAILED)

    def test_settings_are_read_and_written_over_the_port(self):
        with SerialSession("serial,port=ttyS0") as session:
            session.refresh()
            self.assertEqual(session.ctl("get", "0", "beep").stdout, "on\n")
            self.assertEqual(session.ctl("set", "0", "beep=off"), (DONE, "beep=off\n", ""))
            self.assertEqual(session.permanent(0, 86), 0)

    def test_a_silent_panel_is_a_failure_that_names_the_port(self):
        with SerialSession("serial,port=ttyS0") as session:
            session.refresh()
            session.sim("silent", "0", "on")
            status, document = session.ctl_json("get", "0")
        self.assertEqual((status, document["error"]["node"]), (FAILED, "/dev/ttyS0"))


if __name__ == "__main__":
    unittest.main()
