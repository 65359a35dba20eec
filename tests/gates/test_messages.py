# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""Every text that the library prints, and every wait, is named by a test."""

import re
import unittest

from support import SOURCE, sources, without_comments

LITERAL = r'"(?:[^"\\]|\\.)*"'
PRINTS = re.compile(
    rf"(?:DebugMsg\(\s*(?:zelkora::)?k?\w+,|perror\(|printf\(|set_error)\s*((?:{LITERAL}\s*)+)"
)


def texts_of(path):
    """The printed literals of one source file, as written, without their line feeds."""
    code = without_comments(path.read_text())
    for found in PRINTS.finditer(code):
        text = "".join(re.findall(LITERAL, found.group(1))).replace('""', "").strip('"')
        if re.sub(r"%[0-9.]*l?[a-zA-Z]|\\n|\W", "", text):
            yield text.removesuffix("\\n")
    # Texts that a table row carries to its print.
    for text in re.findall(rf"({LITERAL})", code):
        if text.endswith('\\n"'):
            yield text.strip('"').removesuffix("\\n")


def pieces(text):
    """The fixed parts of a format, which a test can quote."""
    parts = re.split(r"%[0-9.]*l?[a-zA-Z]|\\n", text)
    return [part for part in parts if re.search(r"[A-Za-z]{2}", part)]


class Messages(unittest.TestCase):
    def setUp(self):
        self.tests = "\n".join(p.read_text() for p in sources("tests", endings=(".cpp", ".h")))

    def test_every_message_is_quoted_by_a_test(self):
        missing = [
            f"{path.relative_to(SOURCE)}: {text}"
            for path in sources("src")
            for text in texts_of(path)
            if not all(piece in self.tests for piece in pieces(text))
        ]
        self.assertEqual(missing, [])

    def test_messages_are_found_in_the_sources(self):
        found = [text for path in sources("src") for text in texts_of(path)]
        self.assertGreater(len(found), 70)
        self.assertIn("Set Beep On error", found)

    def test_every_wait_is_quoted_by_a_test(self):
        waits = set()
        for path in sources("src"):
            for number in re.findall(r"\bk\w+ = ([0-9']+);", without_comments(path.read_text())):
                if "'" in number:
                    waits.add(number.replace("'", ""))
        self.assertIn("50000", waits)
        missing = [wait for wait in waits if f"usleep {wait}" not in self.tests]
        self.assertEqual(missing, [])


if __name__ == "__main__":
    unittest.main()
