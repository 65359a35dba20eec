# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""Screens and notifications on a real X server: Xorg with its dummy driver, 16 CRTCs."""

import os
import pathlib
import subprocess
import tempfile
import unittest

HOST = pathlib.Path(os.environ["ZELKORA_BUILD"]) / "tests" / "desktop" / "real_x_host"

CONFIGURATION = pathlib.Path(__file__).with_name("dummy_x.conf")

# Width, height, left edge, top edge of each lit screen.
TWO = [(1920, 1080, 0, 0), (1280, 1024, 1920, 0)]
FIVE = [(640, 480, 640 * i, 480 * (i % 2)) for i in range(5)]


class Server:
    """An X server of its own, gone at the end."""

    def __init__(self, folder):
        reading, writing = os.pipe()
        with open(folder / "output", "wb") as output:
            self.process = subprocess.Popen(
                ["Xorg", "-displayfd", str(writing), "-config", CONFIGURATION, "-noreset",
                 "-nolisten", "tcp", "-novtswitch", "-sharevts", "-ac",
                 "-logfile", folder / "xorg.log"],
                pass_fds=[writing], stdout=output, stderr=output)
        os.close(writing)
        with os.fdopen(reading) as numbers:
            number = numbers.readline().strip()
        if not number:
            self.stop()
            raise AssertionError("Xorg did not start:\n" + (folder / "output").read_text())
        self.display = f":{number}"

    def stop(self):
        self.process.terminate()
        self.process.wait()

    def xrandr(self, *arguments):
        subprocess.run(["xrandr", "--display", self.display, *arguments], check=True)

    def light(self, screens):
        """Lights these screens on the first CRTCs, and no others."""
        for i in range(1, 16):
            self.xrandr("--output", f"DUMMY{i}", "--off")
        self.xrandr("--output", "DUMMY0", "--off")
        for i, (width, height, left, top) in enumerate(screens):
            self.xrandr("--addmode", f"DUMMY{i}", f"{width}x{height}")
            self.xrandr("--output", f"DUMMY{i}", "--mode", f"{width}x{height}",
                        "--pos", f"{left}x{top}")


def run_host(display):
    environment = {name: text for name, text in os.environ.items() if name != "DISPLAY"}
    if display is not None:
        environment["DISPLAY"] = display
    result = subprocess.run([HOST], env=environment, capture_output=True, text=True, check=True,
                            timeout=30)
    return result.stdout.splitlines()


def line(number, screen):
    width, height, left, top = screen
    return f"DUMMY{number} [{width}x{height}+{left}+{top}]" + 24 * " "


class RealX(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.server = Server(pathlib.Path(cls.folder.name))
        cls.addClassCleanup(cls.server.stop)

    def check_screens(self, lit, listed):
        self.server.light(lit)
        # XCloseDisplay() has nothing else to return than 0.
        self.assertEqual(run_host(self.server.display), [
            f"{len(listed)} screens",
            *(line(i, screen) for i, screen in enumerate(listed)),
            f"request 0x80000 200 {self.server.display}",
            "result 0",
        ])

    def test_no_lit_screen(self):
        self.check_screens([], [])

    def test_two_lit_screens(self):
        self.check_screens(TWO, TWO)

    def test_of_five_lit_screens_four_are_listed(self):
        self.check_screens(FIVE, FIVE[:4])


class NoDisplay(unittest.TestCase):
    def test_no_screens_and_no_notification(self):
        for display in (None, ":12345"):
            with self.subTest(display):
                self.assertEqual(run_host(display),
                                 ["0 screens", "EE:** Can't open XDisplay **", "result 0"])


if __name__ == "__main__":
    unittest.main()
