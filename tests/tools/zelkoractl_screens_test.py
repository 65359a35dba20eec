# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkoractl screens on a real X server."""

import json
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "desktop"))

from real_x_test import FIVE, TWO, Server

CTL = os.path.join(os.environ["ZELKORA_BUILD"], "zelkoractl")


class ScreensTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(cls.folder.cleanup)
        cls.server = Server(pathlib.Path(cls.folder.name))
        cls.addClassCleanup(cls.server.stop)

    def screens(self, *options):
        environment = dict(os.environ, DISPLAY=self.server.display)
        result = subprocess.run([CTL, "screens", *options], env=environment, check=True,
                                capture_output=True, text=True, timeout=30)
        self.assertEqual(result.stderr, "")
        return result.stdout

    def test_lit_screens_are_numbered_as_their_setting_is(self):
        self.server.light(TWO)
        self.assertEqual(self.screens().splitlines(),
                         ["SCREEN  OUTPUT  AREA",
                          "0       DUMMY0  1920x1080+0+0",
                          "1       DUMMY1  1280x1024+1920+0"])

    def test_of_five_screens_the_library_tells_four(self):
        self.server.light(FIVE)
        screens = json.loads(self.screens("--json"))["screens"]
        self.assertEqual(screens, [{"number": i, "output": f"DUMMY{i}", "width": width,
                                    "height": height, "x": left, "y": top}
                                   for i, (width, height, left, top) in enumerate(FIVE[:4])])


if __name__ == "__main__":
    unittest.main()
