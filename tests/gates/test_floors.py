# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""Files call downwards only: read from the symbols of the object files, not from includes."""

import pathlib
import re
import unittest

from support import BUILD, SOURCE, run

OBJECTS = BUILD / "src" / "CMakeFiles" / "zelkora.dir"


def listed():
    lines = (pathlib.Path(__file__).parent / "floors.txt").read_text().splitlines()
    return [line for line in lines if line and not line.startswith(("#", "floor "))]


def drawn():
    """The table of docs/ARCHITECTURE.md as (floor, file) pairs; headers have no floor of their own."""
    pairs = []
    for line in (SOURCE / "docs" / "ARCHITECTURE.md").read_text().splitlines():
        row = re.fullmatch(r"\| (\w+) \| (\w+: `.*) \|", line)
        for room in row[2].split("; ") if row else []:
            folder, _, files = room.partition(": ")
            if files:  # a list of headers has no folder
                pairs += [(row[1], f"{folder}/{name}") for name in re.findall(r"`(\w+)`", files)]
    return pairs


def symbols(name, kinds, flag):
    lines = run("nm", flag, OBJECTS / f"{name}.cpp.o").splitlines()
    return {line.split()[-1] for line in lines if line.split()[-2] in kinds}


def functions_of(name):
    return symbols(name, {"T", "W"}, "--defined-only")


def calls_of(name):
    return symbols(name, {"U"}, "--undefined-only")


class Floors(unittest.TestCase):
    def test_every_source_file_stands_on_one_floor(self):
        files = [str(p.relative_to(SOURCE / "src").with_suffix("")) for p in
                 (SOURCE / "src").rglob("*.cpp")]
        self.assertEqual(sorted(files), sorted(listed()))

    def test_the_architecture_shows_the_same_floors(self):
        floor = None
        floors = []
        for line in (pathlib.Path(__file__).parent / "floors.txt").read_text().splitlines():
            if line.startswith("floor "):
                floor = line.removeprefix("floor ")
            elif line and not line.startswith("#"):
                floors.append((floor, line))
        self.assertEqual(sorted(drawn()), sorted(floors))

    def test_no_file_calls_upwards(self):
        owner = {f: name for name in listed() for f in functions_of(name)}
        order = {name: i for i, name in enumerate(listed())}
        upward = [
            f"{name} calls {called} of {owner[called]}"
            for name in listed()
            for called in sorted(calls_of(name))
            if called in owner and order[owner[called]] > order[name]
        ]
        self.assertEqual(upward, [])

    def test_the_symbols_of_the_object_files_are_seen(self):
        # Without this the test above could pass by finding nothing.
        self.assertIn("SendData", functions_of("transport/hiddev"))
        self.assertIn("SendData", calls_of("resistive/exchange"))


if __name__ == "__main__":
    unittest.main()
