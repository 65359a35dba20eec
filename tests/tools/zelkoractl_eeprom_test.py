# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkoractl eeprom on virtual resistive panels: images out of one panel and into another."""

import os
import unittest

from session import Session

DONE, FAILED, USAGE = 0, 1, 2
OLD, NEW = bytes(128), bytes(range(100, 228))
SCREEN = 110  # the first byte of the word at address 55


def image_file(content):
    """The content and its 16-bit sum, which starts at 6666."""
    return content + ((0x6666 + sum(content)) & 0xFFFF).to_bytes(2, "little")


def read(path):
    with open(path, "rb") as file:
        return file.read()


class EepromTest(unittest.TestCase):
    def held(self, session, panel="0"):
        path = session.file("held")
        self.assertEqual(session.ctl("eeprom", "backup", panel, path).status, DONE)
        return read(path)

    def test_an_image_goes_from_one_panel_into_another(self):
        with Session("resistive", "resistive") as session:
            source, copy = session.file("source", image_file(NEW)), session.file("copy")
            self.assertEqual(session.ctl("eeprom", "restore", "0", source).status, DONE)
            self.assertEqual(session.ctl("eeprom", "backup", "0", copy),
                             (DONE, f"the EEPROM of panel 0 is in {copy}\n", ""))
            self.assertEqual(read(copy), image_file(NEW))
            self.assertEqual(session.ctl("eeprom", "verify", "1", copy).status, FAILED)
            result = session.ctl("eeprom", "restore", "1", copy)
            self.assertEqual(result, (DONE, f"panel 1 holds what {copy} does\n",
                                      "zelkoractl: what the panel held before is in "
                                      f"{copy}.before\n"))
            self.assertEqual(read(copy + ".before"), image_file(OLD))
            self.assertEqual(session.ctl("eeprom", "verify", "1", copy),
                             (DONE, f"panel 1 holds what {copy} does\n", ""))

    def test_verify_names_the_first_address_that_differs_though_the_sums_agree(self):
        content = bytearray(OLD)
        content[40], content[41] = 3, 253
        content[42], content[43] = 0xFF, 1
        swapped = bytes(content[:40]) + bytes((253, 3)) + bytes(content[42:])
        with Session() as session:
            session.ctl("eeprom", "restore", "0", session.file("one", image_file(bytes(content))))
            other = session.file("other", image_file(swapped))
            result = session.ctl("eeprom", "verify", "0", other)
            status, document = session.ctl_json("eeprom", "verify", "0", other)
        self.assertEqual((result.status, status), (FAILED, FAILED))
        self.assertIn(f"panel 0 differs from {other} first at address 40: it holds 03 instead of "
                      "FD\n", result.stderr)
        self.assertEqual((document["same"], document["first_difference"]), (False, 40))

    def test_diff_names_settings_and_bytes(self):
        content = bytearray(OLD)
        content[SCREEN + 1] = 2
        content[5] = 9
        with Session() as session:
            path = session.file("image", image_file(bytes(content)))
            result = session.ctl("eeprom", "diff", "0", path)
            _, document = session.ctl_json("eeprom", "diff", "0", path)
            same = session.ctl("eeprom", "diff", "0", session.file("same", image_file(OLD)))
        self.assertEqual(result, (DONE, "SETTING  BYTES     FILE   PANEL\n"
                                        "-        4..5      00 09  00 00\n"
                                        "screen   110..111  00 02  00 00\n", ""))
        self.assertEqual(document["differences"], [
            {"setting": None, "address": 4, "file": "00 09", "panel": "00 00"},
            {"setting": "screen", "address": SCREEN, "file": "00 02", "panel": "00 00"}])
        self.assertEqual(same, (DONE, "", ""))

    def test_a_page_that_fails_puts_the_old_image_back(self):
        with Session() as session:
            session.ctl("eeprom", "restore", "0", session.file("first", image_file(NEW)))
            other = session.file("other", image_file(NEW[::-1]))
            session.sim("fault", "0", "bad-acknowledges=4")  # as often as a page is tried
            status, document = session.ctl_json("eeprom", "restore", "0", other)
            self.assertEqual((status, document["outcome"], document["page"]),
                             (FAILED, "put back", 0))
            self.assertIn("its EEPROM holds what it held before", document["error"]["message"])
            self.assertEqual(self.held(session), image_file(NEW))

    def test_a_panel_that_takes_neither_image_leaves_the_saved_one(self):
        with Session() as session:
            path = session.file("image", image_file(NEW))
            session.sim("fault", "0", "bad-acknowledges=100")
            status, document = session.ctl_json("eeprom", "restore", "0", path)
            self.assertEqual((status, document["outcome"]), (FAILED, "not put back"))
            self.assertEqual(document["saved"], path + ".before")
            self.assertEqual(read(path + ".before"), image_file(OLD))
            session.sim("fault", "0", "bad-acknowledges=0")
            _, document = session.ctl_json("eeprom", "restore", "0", path)
            self.assertEqual(document["saved"], path + ".before2")
            self.assertEqual(read(path + ".before"), image_file(OLD))

    def test_a_bad_file_is_refused_before_the_panel_is_touched(self):
        good = image_file(NEW)
        bad = {"short": good[:-1], "long": good + b"\0", "empty": b"",
               "damaged": good[:9] + b"\xFF" + good[10:]}
        with Session() as session:
            for name, content in bad.items():
                path = session.file(name, content)
                for command in "verify", "diff", "restore":
                    self.assertEqual(session.ctl("eeprom", command, "0", path).status, USAGE, name)
                self.assertFalse(os.path.exists(path + ".before"))
            missing = session.ctl("eeprom", "restore", "0", session.file("missing"))
            self.assertEqual(missing.status, USAGE)
            self.assertEqual(session.frames(0), [])

    def test_nothing_is_left_of_a_backup_that_fails(self):
        with Session() as session:
            session.sim("fault", "0", "wrong-echoes=100")
            path = session.file("image")
            result = session.ctl("eeprom", "backup", "0", path)
            self.assertEqual(result.status, FAILED)
            self.assertIn("panel 0 did not tell page 0 of its EEPROM", result.stderr)
            self.assertFalse(os.path.exists(path))

    def test_other_panels_have_no_eeprom(self):
        with Session("pct8753,nodes=hidraw") as session:
            result = session.ctl("eeprom", "backup", "0", session.file("image"))
        self.assertEqual(result.status, FAILED)
        self.assertIn("panel 0 is projected-capacitive", result.stderr)


if __name__ == "__main__":
    unittest.main()
