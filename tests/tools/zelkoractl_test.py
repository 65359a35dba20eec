# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkoractl on virtual resistive panels: every command and every exit status."""

import unittest

from session import Session

DONE, FAILED, USAGE, NOT_FOUND, NO_PERMISSION = 0, 1, 2, 3, 5

AUTO_HID, HID_MODE, BACKLIGHT, RIGHT_OFF, RIGHT_TIME = 68, 69, 75, 84, 85
BEEP, PLAY_METHOD, FREQUENCY, DURATION = 86, 87, 88, 89

# Every setting: its address, a stored value, and how that reads.
SETTINGS = {
    "beep": (BEEP, 1, "on"),
    "play-method": (PLAY_METHOD, 2, "2"),
    "frequency": (FREQUENCY, 2000, "2000"),
    "duration": (DURATION, 10, "10"),
    "screen": (55, 3, "3"),
    "right-click": (RIGHT_OFF, 0, "on"),
    "right-time": (RIGHT_TIME, 4, "4"),
    "rotation": (67, 90, "90"),
    "hid-mode": (HID_MODE, 2, "2"),
    "report-mode": (51, 1, "1"),
    "first-move": (66, 7, "7"),
    "edge-right": (70, 12, "12"),
    "edge-left": (71, 0xFFFB, "-5"),
    "edge-down": (72, 0x8000, "-32768"),
    "edge-up": (73, 0x7FFF, "32767"),
    "backlight": (BACKLIGHT, 200, "200"),
}
KNOWN = "resistive," + ",".join(f"word{a}={v}" for a, v, _ in SETTINGS.values())


class ListTest(unittest.TestCase):
    def test_panels_are_listed_in_aligned_columns(self):
        with Session("resistive", "resistive,firmware=V2.10,id=1234:8888") as session:
            result = session.ctl("list")
        self.assertEqual(result.status, DONE)
        self.assertEqual(result.stdout.splitlines(), [
            "PANEL  TYPE           NODE              USB-ID     FIRMWARE  FAMILY  MODE  "
            "SERIAL-NUMBER",
            "0      resistive-usb  /dev/usb/hiddev0  3A4C:1688  V1.2      -       -     -",
            "1      resistive-usb  /dev/usb/hiddev1  1234:8888  V2.10     -       -     -"])
        self.assertEqual(result.stderr, "")

    def test_the_document_also_tells_event_node_and_phys(self):
        with Session() as session:
            status, document = session.ctl_json("list")
        self.assertEqual(status, DONE)
        self.assertEqual(document, {"schema": 1, "hints": [], "panels": [{
            "index": 0, "type": "resistive-usb", "node": "/dev/usb/hiddev0",
            "usb_id": "3A4C:1688", "firmware": "V1.2", "family": None, "mode": None,
            "serial_number": None, "recorded_usb_id": None, "event_node": "/dev/input/event0",
            "phys": "usb-0000:00:14.0-1/input0"}]})

    def test_no_panel_is_an_empty_answer_with_a_hint(self):
        with Session() as session:
            session.sim("unplug", "0")
            text = session.ctl("list")
            status, document = session.ctl_json("list")
        self.assertEqual((text.status, text.stdout), (DONE, ""))
        self.assertIn("is a panel plugged in?", text.stderr)
        self.assertEqual((status, document["panels"]), (DONE, []))
        self.assertEqual(len(document["hints"]), 1)

    def test_an_empty_or_missing_name_list_is_the_hint(self):
        with Session() as session:
            session.shell("rm /opt/.touch_panel/rmanuflist.conf")
            missing = session.ctl("list")
            session.shell(": > /opt/.touch_panel/rmanuflist.conf")
            empty = session.ctl("list")
        self.assertEqual((missing.status, empty.status), (DONE, DONE))
        self.assertIn("/opt/.touch_panel/rmanuflist.conf is missing", missing.stderr)
        self.assertIn("/opt/.touch_panel/rmanuflist.conf is empty", empty.stderr)

    def test_a_panel_that_was_passed_over_leads_to_the_trace_and_not_to_the_other_list(self):
        for panel in ("resistive,firmware=V3.0", "resistive,id=1111:2222"):
            with Session(panel) as session:
                listed, shown = session.ctl("list"), session.ctl("show", "0")
            for result in (listed, shown):
                self.assertIn("--debug shows how each node was judged", result.stderr, panel)
                self.assertNotIn("projected-capacitive", result.stderr, panel)

    def test_where_no_kind_is_accepted_both_lists_are_hints(self):
        with Session() as session:
            session.shell("rm -f /opt/.touch_panel/*manuflist.conf")
            _, document = session.ctl_json("list")
        hints = document["hints"]
        self.assertIn("/opt/.touch_panel/rmanuflist.conf is missing", hints[1])
        self.assertIn("/opt/.touch_panel/manuflist.conf is missing", hints[2])
        self.assertEqual(hints[3:], ["--debug shows how each node was judged"])

    def test_a_fifth_panel_is_not_passed_over_in_silence(self):
        with Session(*["resistive"] * 4) as session:
            four = session.ctl("list")
        with Session(*["resistive"] * 3) as session:
            three = session.ctl("list")
        self.assertEqual((four.status, len(four.stdout.splitlines())), (DONE, 5))
        self.assertIn("the library holds 4 panels; any further ones are not listed", four.stderr)
        self.assertEqual(three.stderr, "")

    def test_a_node_that_may_not_be_opened_is_no_permission(self):
        with Session("resistive,hiddev-mode=000") as session:
            for command in (["list"], ["show", "0"], ["get", "0"], ["set", "0", "beep=off"]):
                result = session.ctl(*command)
                self.assertEqual((result.status, result.stdout), (NO_PERMISSION, ""), command)
                self.assertIn("/dev/usb/hiddev0: no permission", result.stderr)
                self.assertIn("what to do: run zelkoractl as root", result.stderr)
            status, document = session.ctl_json("list")
        self.assertEqual(status, NO_PERMISSION)
        self.assertEqual(document["error"]["code"], NO_PERMISSION)
        self.assertEqual(document["error"]["node"], "/dev/usb/hiddev0")
        self.assertNotIn("nodes", document["error"])
        self.assertIn("udev rule", document["error"]["remedy"])

    def test_several_locked_nodes_are_told_one_by_one(self):
        with Session("resistive,mode=000") as session:
            text = session.ctl("list")
            status, document = session.ctl_json("list")
        self.assertIn("/dev/hidraw0, /dev/usb/hiddev0: no permission", text.stderr)
        self.assertEqual(status, NO_PERMISSION)
        self.assertIsNone(document["error"]["node"])
        self.assertEqual(document["error"]["nodes"], ["/dev/hidraw0", "/dev/usb/hiddev0"])

    def test_a_locked_node_beside_a_panel_is_a_hint(self):
        with Session("resistive", "resistive,hiddev-mode=000") as session:
            result = session.ctl("list")
            beyond = session.ctl("show", "1")
        self.assertEqual(result.status, DONE)
        self.assertEqual(len(result.stdout.splitlines()), 2)
        self.assertIn("/dev/usb/hiddev1: no permission", result.stderr)
        self.assertEqual(beyond.status, NO_PERMISSION)

    def test_device_text_cannot_drive_the_terminal(self):
        with Session("resistive,firmware=V1\x1b[2J\udce9") as session:  # ends in the byte E9
            text = session.ctl("list")
            status, document = session.ctl_json("list")
        self.assertIn("V1\\x1B[2J\\xE9", text.stdout)
        self.assertEqual((status, document["panels"][0]["firmware"]), (DONE, "V1\x1b[2J\ufffd"))

    def test_text_quoted_in_a_failure_cannot_drive_the_terminal(self):
        with Session() as session:
            for words in (["show", "\x1b[2J"], ["get", "0", "\x1b[2J"], ["set", "0", "\x1b[2J=1"],
                          ["\x1b[2J"], ["--config", "\x1b[2J", "list"]):
                result = session.ctl(*words)
                self.assertEqual(result.status, USAGE, words)
                self.assertIn("\\x1B[2J", result.stderr)
                self.assertNotIn("\x1b", result.stderr)


class ReadTest(unittest.TestCase):
    def test_show_tells_who_the_panel_is_and_all_settings(self):
        with Session(KNOWN) as session:
            result = session.ctl("show", "0")
        self.assertEqual((result.status, result.stderr), (DONE, ""))
        for line in ("node        /dev/usb/hiddev0", "usb id      3A4C:1688",
                     "firmware    V1.2", "event node  /dev/input/event0",
                     "phys        usb-0000:00:14.0-1/input0"):
            self.assertIn(line, result.stdout.splitlines())
        shown = {line.split()[0]: line.split()[1]
                 for line in result.stdout.split("MEANING\n")[1].splitlines()}
        self.assertEqual(shown, {name: text for name, (_, _, text) in SETTINGS.items()})

    def test_get_prints_all_settings_as_name_and_value(self):
        with Session(KNOWN) as session:
            result = session.ctl("get", "0")
        self.assertEqual((result.status, result.stderr), (DONE, ""))
        self.assertEqual(result.stdout.splitlines(),
                         [f"{name}={text}" for name, (_, _, text) in SETTINGS.items()])

    def test_get_of_one_setting_prints_the_bare_value(self):
        with Session(KNOWN) as session:
            for name, (_, _, text) in SETTINGS.items():
                self.assertEqual(session.ctl("get", "0", name), (DONE, text + "\n", ""), name)
            status, document = session.ctl_json("get", "0", "right-click")
        self.assertEqual(status, DONE)
        self.assertEqual(document["settings"],
                         {"right-click": {"value": "on", "stored": 0, "in_range": True}})

    def test_reading_repairs_nothing_and_marks_what_is_out_of_range(self):
        with Session(f"resistive,word{PLAY_METHOD}=7,word{FREQUENCY}=250,word{BEEP}=9") as session:
            shown = session.ctl("show", "0")
            got = session.ctl("get", "0", "play-method")
            status, document = session.ctl_json("get", "0", "beep")
            stored = [session.value(0, a) for a in (PLAY_METHOD, FREQUENCY, BEEP)]
            letters = session.frames(0)
        self.assertIn("250 (out of range)", shown.stdout)
        self.assertEqual((got.status, got.stdout), (DONE, "7\n"))
        self.assertIn("play-method holds 7, which is out of range (0..2)", got.stderr)
        self.assertEqual(document["settings"]["beep"],
                         {"value": 9, "stored": 9, "in_range": False})
        self.assertEqual((status, stored), (DONE, [7, 250, 9]))
        self.assertEqual(set(letters), {"OI", "GP"})

    def test_a_silent_panel_is_told_from_one_that_holds_zeros(self):
        with Session("resistive,silent") as session:
            listed = session.ctl("list")
            commands = (["show", "0"], ["get", "0"], ["set", "0", "backlight=0"])
            results = [session.ctl(*command) for command in commands]
        self.assertEqual(listed.status, DONE)
        self.assertIn("no answer", listed.stdout)
        for result in results:
            self.assertEqual((result.status, result.stdout), (FAILED, ""))
            self.assertIn("/dev/usb/hiddev0: panel 0 does not answer", result.stderr)

    def test_a_number_that_no_panel_has_is_not_found(self):
        with Session() as session:
            for panel in ("1", "4", "99999999999"):
                self.assertEqual(session.ctl("show", panel).status, NOT_FOUND, panel)
            status, document = session.ctl_json("get", "3", "beep")
            session.sim("unplug", "0")
            gone = session.ctl("get", "0")
        self.assertEqual((status, document["error"]["code"]), (NOT_FOUND, NOT_FOUND))
        self.assertIn("there is no panel 3", document["error"]["message"])
        self.assertEqual(gone.status, NOT_FOUND)
        self.assertIn("is a panel plugged in?", gone.stderr)


class SetTest(unittest.TestCase):
    def test_the_beep_is_switched_off_for_good(self):
        with Session("resistive,beep=1") as session:
            result = session.ctl("set", "0", "beep=off")
            stored = session.value(0, BEEP), session.permanent(0, BEEP)
        self.assertEqual(result, (DONE, "beep=off\n", ""))
        self.assertEqual(stored, (0, 0))

    def test_every_setting_can_be_set_and_is_committed_once(self):
        words = [f"{name}={text}" for name, (_, _, text) in SETTINGS.items()]
        with Session() as session:
            result = session.ctl("set", "0", *words)
            stored = {name: session.permanent(0, a) for name, (a, _, _) in SETTINGS.items()}
            commits = session.frames(0).count("PL")
        self.assertEqual(result, (DONE, "".join(word + "\n" for word in words), ""))
        self.assertEqual(stored, {name: value for name, (_, value, _) in SETTINGS.items()})
        self.assertEqual(commits, 1)

    def test_the_document_tells_before_and_after(self):
        with Session(f"resistive,beep=1,word{RIGHT_OFF}=1") as session:
            status, document = session.ctl_json("set", "0", "beep=off", "right-click=on")
        self.assertEqual(status, DONE)
        self.assertEqual(document, {
            "schema": 1, "panel": 0, "node": "/dev/usb/hiddev0", "hints": [], "permanent": True,
            "settings": {"beep": {"before": "on", "asked": "off", "outcome": "changed"},
                         "right-click": {"before": "off", "asked": "on", "outcome": "changed"}}})

    def test_only_the_panel_named_is_changed(self):
        with Session("resistive,beep=1", "resistive,beep=1") as session:
            self.assertEqual(session.ctl("set", "1", "beep=off").status, DONE)
            self.assertEqual([session.value(panel, BEEP) for panel in (0, 1)], [1, 0])

    def test_a_wrong_word_is_refused_before_any_panel_is_touched(self):
        cases = {"loudness=3": "there is no setting", "beep": "SETTING=VALUE",
                 "beep=1": "on, off", "beep=": "on, off", "frequency=499": "500..3000",
                 "frequency=3001": "500..3000", "duration=4": "5..50", "duration=51": "5..50",
                 "play-method=3": "0..2", "screen=10": "0..4", "screen=-1": "0..4",
                 "right-time=256": "1..255", "edge-up=32768": "-32768..32767",
                 "edge-up=-32769": "-32768..32767", "backlight=256": "0..255",
                 "frequency=1000Hz": "500..3000", "frequency= 1000": "500..3000",
                 "frequency=99999999999999999999": "500..3000", "beep=on": "given twice"}
        with Session("resistive,beep=1") as session:
            for word, complaint in cases.items():
                result = session.ctl("set", "0", "beep=off", word)
                self.assertEqual((result.status, result.stdout), (USAGE, ""), word)
                self.assertIn(complaint, result.stderr)
            self.assertEqual(session.frames(0), [])
            self.assertEqual(session.value(0, BEEP), 1)

    def test_what_only_the_other_kind_of_panel_takes_is_refused_before_it_is_changed(self):
        cases = {"screen=5": "screen takes 0..4", "beep=both": "beep takes on, off",
                 "menu=up": "panel 0 has no setting menu", "right-time=0": "takes 1..255"}
        with Session("resistive,beep=1") as session:
            for word, complaint in cases.items():
                result = session.ctl("set", "0", "duration=20", word)
                self.assertEqual((result.status, result.stdout), (USAGE, ""), word)
                self.assertIn(complaint, result.stderr)
            self.assertEqual(session.ctl("get", "0", "menu").status, USAGE)
            self.assertEqual(set(session.frames(0)), {"OI"})

    def test_a_value_stored_differently_fails_and_nothing_becomes_permanent(self):
        with Session("resistive,stores=1,beep=1") as session:
            result = session.ctl("set", "0", "beep=off")
            status, document = session.ctl_json("set", "0", "beep=off")
            letters = session.frames(0)
        self.assertEqual((result.status, result.stdout), (FAILED, ""))
        self.assertIn("/dev/usb/hiddev0: beep: the panel stored on instead of off", result.stderr)
        self.assertIn("every setting has its old value again", result.stderr)
        self.assertEqual(status, FAILED)
        self.assertEqual(document["settings"]["beep"],
                         {"before": "on", "asked": "off", "outcome": "put back", "stored": "on"})
        self.assertFalse(document["permanent"])
        self.assertNotIn("PL", letters)

    def test_what_was_changed_before_a_failure_is_put_back(self):
        # The panel stores 5 whatever is written: the duration takes it, the frequency does not.
        with Session(f"resistive,stores=5,word{DURATION}=5,word{FREQUENCY}=2000") as session:
            status, document = session.ctl_json("set", "0", "duration=5", "frequency=1000",
                                                "beep=off")
            letters = session.frames(0)
        self.assertEqual(status, FAILED)
        self.assertEqual({name: step["outcome"] for name, step in document["settings"].items()},
                         {"duration": "put back", "frequency": "not put back",
                          "beep": "untouched"})
        self.assertEqual({name: step.get("stored") for name, step in document["settings"].items()},
                         {"duration": None, "frequency": 5, "beep": None})
        self.assertIn("stored 5 instead of 1000; not put back: frequency",
                      document["error"]["message"])
        self.assertIn("unplug the panel", document["error"]["remedy"])
        self.assertNotIn("PL", letters)

    def test_a_refused_value_is_put_back_with_those_before_it(self):
        # The fourth refusal ends the attempts of the first write; putting back finds the old value.
        with Session("resistive,beep=1,bad-acknowledges=4") as session:
            result = session.ctl("set", "0", "beep=off")
            stored = session.value(0, BEEP), session.frames(0).count("PL")
        self.assertEqual((result.status, result.stdout), (FAILED, ""))
        self.assertIn("beep: the panel did not take the value", result.stderr)
        self.assertEqual(stored, (1, 0))

    def test_a_passing_disturbance_is_ridden_out(self):
        with Session("resistive,beep=1,bad-acknowledges=3") as session:
            self.assertEqual(session.ctl("set", "0", "beep=off").status, DONE)
            self.assertEqual(session.permanent(0, BEEP), 0)

    def test_the_automatic_hid_setting_goes_with_the_hid_mode(self):
        with Session(f"resistive,word{AUTO_HID}=1,word{HID_MODE}=2") as session:
            self.assertEqual(session.ctl("set", "0", "hid-mode=3").status, DONE)
            self.assertEqual((session.permanent(0, AUTO_HID), session.permanent(0, HID_MODE)),
                             (0, 3))


class DefaultsTest(unittest.TestCase):
    INI = "/opt/.touch_panel/TouchUtil.ini"

    def test_the_values_of_the_defaults_file_become_permanent(self):
        with Session(f"resistive,beep=1,word{FREQUENCY}=700,word67=90,word71=9") as session:
            session.shell(f"printf '[Res_Default]\\nBeepOn=0\\nEdgeLeft=-5\\n' > {self.INI}")
            result = session.ctl("defaults", "0")
            stored = [session.permanent(0, a) for a in (BEEP, FREQUENCY, 67, 71)]
        self.assertEqual((result.status, result.stderr), (DONE, ""))
        self.assertEqual(stored, [0, 2000, 90, 0xFFFB])
        self.assertIn("edge-left=-5\n", result.stdout)
        self.assertNotIn("rotation", result.stdout, "it has no default")

    def test_a_default_out_of_range_is_refused_before_anything_is_written(self):
        for line, complaint in (("Frequency=99", "frequency in %s is 99, which is out of range (500"),
                                ("EdgeUp=40000", "edge-up in %s is 40000"),
                                ("PlayMethod=3", "play-method in %s is 3")):
            with Session("resistive,beep=1") as session:
                session.shell(f"printf '[Res_Default]\\nBeepOn=0\\n{line}\\n' > {self.INI}")
                result = session.ctl("defaults", "0")
                self.assertEqual((result.status, result.stdout), (USAGE, ""), line)
                self.assertIn(complaint % self.INI, result.stderr)
                self.assertEqual(session.value(0, BEEP), 1)

    def test_a_reset_brings_the_permanent_values_back(self):
        with Session("resistive,beep=1") as session:
            session.sim("set", "0", str(BEEP), "0")
            status, document = session.ctl_json("reset", "0")
            resets = session.sim("resets", "0").strip()
            text = session.ctl("reset", "0")
            stored = session.value(0, BEEP)
        self.assertEqual((status, document["was_reset"], document["mode"]), (DONE, True, None))
        self.assertEqual((resets, stored), ("1", 1))
        self.assertEqual(text.stdout.splitlines(),
                         ["panel   0", "node    /dev/usb/hiddev0", "reset   yes",
                          "usb id  3A4C:1688"])

    def test_what_a_resistive_panel_does_not_have_is_told(self):
        with Session() as session:
            for words, complaint in ((["mode", "0", "mouse"], "it has no modes"),
                                     (["serial-number", "0"], "it has no serial number")):
                result = session.ctl(*words)
                self.assertEqual((result.status, result.stdout), (FAILED, ""), words)
                self.assertIn("panel 0 is resistive", result.stderr)
                self.assertIn(complaint, result.stderr)


if __name__ == "__main__":
    unittest.main()
