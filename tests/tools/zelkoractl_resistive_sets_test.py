# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkoractl keep and revert on virtual resistive panels, on USB and on a serial port."""

import unittest

from session import Session

DONE, FAILED = 0, 1
UNITS = "/etc/systemd/system"
VALUES = "word51=2,word55=3,word67=90,word70=12,word71=65531,word86=1,word88=2000"


class SetsSession(Session):
    """A panel on USB, or one on a serial port that a refresh has found."""

    def __init__(self, kind):
        super().__init__(f"{kind},{VALUES}")
        self._serial = kind == "serial"

    def __enter__(self):
        super().__enter__()
        if self._serial:
            # What a refresh writes there must not reach the machine.
            if self.shell(f"mount -t tmpfs tmpfs {UNITS}").status != 0:
                raise unittest.SkipTest(f"{UNITS} cannot be made private")
            self.ctl("serial", "refresh")
        return self


class SetsTest(unittest.TestCase):
    def each(self):
        for kind in "resistive", "serial":
            with self.subTest(kind), SetsSession(kind) as session:
                yield session

    def test_keep_changes_no_setting(self):
        for session in self.each():
            before = session.ctl("get", "0").stdout
            kept = session.ctl("keep", "0")
            self.assertEqual((kept.status, kept.stderr), (DONE, ""))
            self.assertIn("screen=3\n", kept.stdout)
            self.assertEqual(session.ctl("get", "0").stdout, before)

    def test_revert_gives_the_kept_settings_back_for_good(self):
        for session in self.each():
            session.ctl("keep", "0")
            before = session.ctl("get", "0").stdout
            session.ctl("set", "0", "beep=off", "edge-left=7", "frequency=700", "screen=1",
                        "report-mode=1")
            result = session.ctl("revert", "0")
            self.assertEqual(result, (DONE, "beep=on\nfrequency=2000\nscreen=3\nreport-mode=2\n"
                                            "edge-left=-5\n", ""))
            self.assertEqual(session.ctl("get", "0").stdout, before)
            self.assertEqual(session.permanent(0, 71), 65531)
            again = session.ctl("revert", "0")
            self.assertEqual(again, (DONE, "",
                                     "zelkoractl: the settings were the same already\n"))

    def test_revert_undoes_the_defaults_and_leaves_what_records_do_not_hold(self):
        for session in self.each():
            session.ctl("keep", "0")
            before = session.ctl("get", "0").stdout
            self.assertEqual(session.ctl("defaults", "0").status, DONE)
            session.ctl("set", "0", "rotation=180")
            self.assertEqual(session.ctl("revert", "0").status, DONE)
            after = session.ctl("get", "0").stdout
            self.assertEqual(after, before.replace("rotation=90", "rotation=180"))

    def test_revert_without_keep_has_nothing_to_go_back_to(self):
        for session in self.each():
            status, document = session.ctl_json("revert", "0")
            self.assertEqual(status, FAILED)
            self.assertEqual(document["error"]["message"], "panel 0 has nothing to go back to")


if __name__ == "__main__":
    unittest.main()
