# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""The tree itself: formatting, sizes, headers, leftovers, shell scripts."""

import re
import subprocess
import unittest

from support import SOURCE, run, sources

# Written in two halves, so that this file is not its own finding.
LEFTOVERS = re.compile(
    r"\b(?:TO" r"DO|FIX" r"ME|XX" r"X|HA" r"CK)\b|#if" r" 0\b|^<{7} |^>{7} ", re.MULTILINE
)


def tracked():
    names = run("git", "-C", SOURCE, "ls-files", "--cached", "--others", "--exclude-standard")
    return [SOURCE / name for name in names.splitlines() if (SOURCE / name).is_file()]


def shell_scripts():
    def is_shell(path):
        first = path.read_bytes()[:40].split(b"\n")[0]
        return path.suffix == ".sh" or (first.startswith(b"#!") and b"sh" in first)

    return [path for path in tracked() if is_shell(path)]


class Tree(unittest.TestCase):
    def test_c_and_cpp_files_are_formatted(self):
        files = sources("include", "src", "sim", "tools", "tests")
        result = subprocess.run(
            ["clang-format-14", "--dry-run", "-Werror", *map(str, files)],
            capture_output=True, text=True, check=False,
        )
        self.assertEqual(result.returncode, 0, result.stderr[:4000])

    def test_every_source_file_names_its_licence(self):
        bare = [p for p in sources("include", "src", "sim", "tools", "tests",
                                   endings=(".cpp", ".h", ".c", ".py"))
                if "SPDX-License-Identifier: MIT" not in p.read_text()[:300]]
        self.assertEqual(bare, [])

    def test_no_leftovers(self):
        found = []
        for path in tracked():
            try:
                text = path.read_text()
            except UnicodeDecodeError:
                continue
            found += [f"{path.relative_to(SOURCE)}: {m.group(0)}" for m in LEFTOVERS.finditer(text)]
        self.assertEqual(found, [])

    def test_source_files_stay_small(self):
        large = [
            f"{p.relative_to(SOURCE)}: {len(p.read_text().splitlines())}"
            for p in sources("src", "sim", "tools", "tests", endings=(".cpp", ".h", ".c", ".py"))
            if len(p.read_text().splitlines()) > 500
        ]
        self.assertEqual(large, [])

    def test_shell_scripts_pass_shellcheck(self):
        scripts = shell_scripts()
        self.assertGreater(len(scripts), 2)
        run("shellcheck", "-x", *scripts, cwd=SOURCE)


if __name__ == "__main__":
    unittest.main()
