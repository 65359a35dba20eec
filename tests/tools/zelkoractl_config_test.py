# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""The configuration file of zelkoractl: what it changes, and what is refused."""

import unittest

from session import Session

DONE, USAGE = 0, 2


class ConfigTest(unittest.TestCase):
    def run_with(self, session, content, *words):
        path = session.file("zelkoractl.ini", content)
        return session.ctl(*(words or ("list",)), "--config", path)

    def panels_with(self, session, content):
        result = self.run_with(session, content)
        self.assertEqual(result.status, DONE, result.stderr)
        return max(len(result.stdout.splitlines()) - 1, 0)

    def test_switches_reach_the_library(self):
        with Session("resistive,id=3A4C:1688", "resistive,id=3A4C:2088") as session:
            old = self.run_with(session, "[switches]\nnew-product-ids = off\n")
            new = self.run_with(session, "[switches]\nnew-product-ids = on\n")
            none = self.panels_with(session, "[switches]\nresistive = off\n")
            traced = self.run_with(session, "[switches]\ndebug = on\n")
        self.assertIn("3A4C:1688", old.stdout)
        self.assertNotIn("3A4C:2088", old.stdout)
        self.assertIn("3A4C:2088", new.stdout)
        self.assertNotIn("3A4C:1688", new.stdout)
        self.assertEqual(none, 0)
        self.assertIn("zelkora DD:", traced.stderr)

    def test_hidraw_nodes_are_looked_at_only_when_switched_on(self):
        with Session() as session:
            on = self.run_with(session, "[switches]\nhidraw = on\ndebug = on\n")
            off = self.run_with(session, "[switches]\nhidraw = off\ndebug = on\n")
        self.assertIn("/dev/hidraw0", on.stderr)
        self.assertNotIn("/dev/hidraw0", off.stderr)
        with Session("resistive,mode=000") as session:
            on = self.run_with(session, "[switches]\nhidraw = on\n")
            off = self.run_with(session, "[switches]\nhidraw = off\n")
        self.assertIn("/dev/hidraw0, /dev/usb/hiddev0: no permission", on.stderr)
        self.assertIn("zelkoractl: /dev/usb/hiddev0: no permission", off.stderr)

    def test_what_is_switched_off_is_told_with_the_file(self):
        with Session() as session:
            path = session.file("zelkoractl.ini")
            resistive = self.run_with(session, "[switches]\nresistive = off\n")
            shown = self.run_with(session, "[switches]\nresistive = off\n", "show", "0")
            session.sim("unplug", "0")
            hidraw = self.run_with(session, "[switches]\nhidraw = off\n")
        for result in (resistive, shown):
            self.assertIn("resistive panels are passed over: resistive = off in the configuration "
                          "file " + path, result.stderr)
            self.assertIn("--debug shows", result.stderr)
        self.assertIn("there is no hiddev node; is a panel", hidraw.stderr)
        self.assertIn("hidraw nodes are passed over: hidraw = off in the configuration file " + path,
                      hidraw.stderr)

    def test_every_key_is_known(self):
        keys = ["resistive", "new-product-ids", "alternative-pct-vendors", "ignore-legacy-pct",
                "hidraw", "hide-cursor", "disable-resistive-hide-cursor", "debug"]
        with Session() as session:
            for key in keys:
                for value in ("on", "off"):
                    content = f"[switches]\n{key} = {value}\n"
                    self.assertEqual(self.run_with(session, content).status, DONE, content)
            for value in ("0", "255"):
                content = f"[switches]\nnotify-argument = {value}\n"
                self.assertEqual(self.run_with(session, content).status, DONE, content)

    def test_the_help_and_the_remedy_of_an_unknown_key_tell_all_keys(self):
        with Session() as session:
            remedy = self.run_with(session, "[switches]\nloud = on\n").stderr.splitlines()[1]
            general = session.ctl("--help").stdout
        keys = remedy.split("[switches] are ")[1].split(", ")
        self.assertEqual(len(keys), 9)
        for key in keys:
            values = "0..255" if key == "notify-argument" else "on, off"
            self.assertRegex(general, rf"(?m)^  {key} +{values}$")

    def test_odd_but_sound_files_are_taken(self):
        files = {
            "empty": "",
            "no newline at the end": "[switches]\nresistive=on",
            "comments, blanks and carriage returns":
                "# c\r\n; c\r\n\r\n [switches] \r\n resistive  =  on ; c\r\n",
            "byte order mark": "\ufeff[switches]\nresistive=on\n",
            "a section alone": "[other]\n",
            "ten thousand lines": "[switches]\n" + "resistive = on\n" * 9999,
        }
        with Session() as session:
            for name, content in files.items():
                with self.subTest(name):
                    self.assertEqual(self.panels_with(session, content), 1)

    def test_the_last_of_two_values_counts_and_no_newline_loses_nothing(self):
        with Session() as session:
            content = "[switches]\n" + "resistive = on\n" * 9998 + "resistive = off"
            self.assertEqual(self.panels_with(session, content), 0)

    def test_what_is_wrong_is_told_with_file_and_line(self):
        long_line = "[switches]\nresistive = on" + " " * 300 + "off\n"
        files = {
            "[switches]\nresistiv = on\n": '2: unknown key "resistiv" in section [switches]',
            "\nresistive = on\n": '2: unknown key "resistive" before any section',
            "[other]\nresistive = on\n": '2: unknown key "resistive" in section [other]',
            "[switches]\n\nresistive = yes\n": '3: resistive takes on or off, not "yes"',
            "[switches]\nresistive =\n": '2: resistive takes on or off, not ""',
            "[switches]\nnotify-argument = 256\n":
                '2: notify-argument takes a number from 0 to 255, not "256"',
            "[switches]\nnotify-argument = -1\n": '2: notify-argument takes a number',
            "[switches]\nresistive on\nhidraw = maybe\n": "2: neither",
            "[switches\nresistive = on\n": "1: neither",
            long_line: "2: the line is longer than",
            "[switches]\n#" + "x" * 5000 + "\n": "2: the line is longer than",
            b"[switches]\nresistive = on\0ly\n": "2: the line holds a NUL byte",
            b"\0": "1: the line holds a NUL byte",
            "[switches]\n" + "resistive = on\n" * 9998 + "resistive": "10000: neither",
        }
        with Session("resistive,beep=1") as session:
            for content, complaint in files.items():
                result = self.run_with(session, content, "set", "0", "beep=off")
                with self.subTest(complaint):
                    self.assertEqual((result.status, result.stdout), (USAGE, ""))
                    self.assertIn("zelkoractl.ini:" + complaint, result.stderr)
            self.assertEqual(session.frames(0), [])

    def test_a_named_file_that_cannot_be_read_is_refused(self):
        with Session() as session:
            session.file("large.ini", b"#\n" * 600_000)
            cases = {session.file("none.ini"): "No such file", "/": "Is a directory",
                     "/dev/zero": "larger than 1 MiB", "": "No such file",
                     session.file("large.ini"): "larger than 1 MiB"}
            for path, complaint in cases.items():
                result = session.ctl("--config", path, "list")
                with self.subTest(path):
                    self.assertEqual((result.status, result.stdout), (USAGE, ""))
                    self.assertIn(complaint, result.stderr)
            status, document = session.ctl_json("--config", session.file("none.ini"), "list")
        self.assertEqual((status, document["error"]["code"]), (USAGE, USAGE))
        self.assertIn("none.ini", document["error"]["message"])


if __name__ == "__main__":
    unittest.main()
