# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""The command line of zelkoractl: usage, help, JSON, and what goes to which output."""

import json
import os
import unittest

from session import CTL, Session

DONE, FAILED, USAGE = 0, 1, 2

BEEP = 86
COMMANDS = ("list", "show", "get", "set", "defaults", "keep", "revert", "mode", "reset",
            "serial-number", "screens",
            "eeprom", "serial")


class CommandLineTest(unittest.TestCase):
    def test_wrong_usage_is_told_on_standard_error(self):
        with Session() as session:
            for words in ([], ["dance"], ["show"], ["show", "0", "1"], ["show", "first"],
                          ["show", "-1"], ["get", "0", "loudness"], ["set", "0"], ["--loud"],
                          ["keep"], ["mode", "0"], ["mode", "0", "pen"], ["screens", "0"],
                          ["list", "--config"]):
                result = session.ctl(*words)
                self.assertEqual((result.status, result.stdout), (USAGE, ""), words)
                self.assertTrue(result.stderr.startswith("zelkoractl: "), words)
                status, document = session.ctl_json(*words)
                self.assertEqual((status, document["error"]["code"]), (USAGE, USAGE), words)

    def test_a_word_that_nothing_takes_is_named(self):
        commands = "; the commands are " + ", ".join(COMMANDS)
        cases = {("dance",): '"dance" is no command' + commands,
                 ("dance", "0"): '"dance" is no command' + commands,
                 (): "a command is missing" + commands,
                 ("list", "show", "0"): 'list does not take "show"',
                 ("show", "0", "1"): 'show does not take "1"',
                 ("list", "--", "x"): 'list does not take "x"',
                 ("list", "--loud"): '"--loud" is no option'}
        with Session() as session:
            for words, complaint in cases.items():
                self.assertEqual(session.ctl(*words).stderr.splitlines()[0],
                                 "zelkoractl: " + complaint, words)

    def test_json_is_answered_whenever_it_is_asked_for(self):
        asked = (["--json=true", "list"], ["list", "--json"], ["--version", "--json=true"],
                 ["--json=true", "--help"], ["--json=true", "dance"], ["list", "--config", "/none",
                 "--json=true"], ["--config", "--json"])
        with Session() as session:
            for words in asked:
                self.assertEqual(json.loads(session.ctl(*words).stdout)["schema"], 1, words)
            self.assertTrue(session.ctl("--json=false", "list").stdout.startswith("PANEL"))

    def test_help_and_version_are_answers(self):
        with Session() as session:
            version = session.ctl("--version")
            status, document = session.ctl_json("--version")
            general, of_set = session.ctl("--help"), session.ctl("set", "--help")
        self.assertEqual((version.status, version.stderr), (DONE, ""))
        self.assertRegex(version.stdout, r"^zelkoractl \d+\.\d+\.\d+\n$")
        self.assertEqual((status, document["version"]), (DONE, version.stdout.strip()))
        self.assertIn("Exit status", general.stdout)
        resistive, pct = of_set.stdout.split("Settings of projected-capacitive panels:\n")
        self.assertRegex(resistive, "(?m)^  frequency +500..3000 +beep frequency, in Hz$")
        self.assertRegex(resistive, "(?m)^  hid-mode +0..255 ")
        self.assertRegex(pct, "(?m)^  duration +none, 5..50 ")
        self.assertRegex(pct, "(?m)^  click-mode +mouse, touch, release, right-first ")
        for command in COMMANDS:
            self.assertRegex(general.stdout, rf"(?m)^  {command} +[A-Z]")

    def test_the_trace_goes_to_standard_error_only(self):
        with Session() as session:
            for words in (["list"], ["show", "0"], ["get", "0"], ["set", "0", "beep=off"]):
                plain, traced = session.ctl(*words), session.ctl("--debug", *words)
                self.assertEqual(traced.stdout, plain.stdout, words)
                self.assertIn("zelkora DD:", traced.stderr)
                self.assertEqual(plain.stderr, "", words)
                self.assertEqual(session.ctl_json(*words, "--debug")[0], DONE, words)

    def test_an_answer_that_cannot_be_written_is_a_failure(self):
        with Session() as session:
            full = session.shell(f"{CTL} list > /dev/full")
            closed = session.shell(f"{CTL} list >&-")
        for result in (full, closed):
            self.assertEqual(result.status, FAILED)
            self.assertIn("cannot write the answer", result.stderr)

    def test_a_reader_that_went_away_does_not_stop_a_change(self):
        with Session("resistive,beep=1") as session:
            session.shell(f"{CTL} --debug set 0 beep=off 2>&1 | true")
            self.assertEqual(session.permanent(0, BEEP), 0)

    def test_no_screens_are_an_empty_answer_with_the_reason(self):
        with Session() as session:
            for setting, reason in (("-u DISPLAY", "DISPLAY is not set"),
                                    ("DISPLAY=", "DISPLAY is not set"),
                                    ("DISPLAY=:77", "the X display :77 does not let itself")):
                text = session.shell(f"env {setting} {CTL} screens")
                self.assertEqual((text.status, text.stdout), (DONE, ""), setting)
                self.assertIn("zelkoractl: no screens: " + reason, text.stderr)
            answer = session.shell(f"env -u DISPLAY {CTL} screens --json")
        document = json.loads(answer.stdout)
        self.assertEqual((answer.status, document["screens"]), (DONE, []))
        self.assertEqual(len(document["hints"]), 1)

    def test_all_six_hooks_are_there_for_the_library(self):
        with Session() as session:
            symbols = session.shell(f"nm -D --defined-only {os.path.abspath(CTL)}").stdout
        for hook in ("Read_Config", "GetEnableDebug", "GenerateRand", "EncodeData", "DecodeData",
                     "mydoled_all_display"):
            self.assertRegex(symbols, rf"(?m) T {hook}$")


if __name__ == "__main__":
    unittest.main()
