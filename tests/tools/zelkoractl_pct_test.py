# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkoractl on virtual projected-capacitive panels, of both families and on both carriers."""

import os
import unittest

from session import CTL, Session

DONE, FAILED, USAGE, NO_PERMISSION = 0, 1, 2, 5

DATA = "/opt/.touch_panel/"
STORE, SAVED = DATA + ".pctpbin", DATA + ".pctpbintmp"
INI = DATA + "TouchUtil.ini"
RECORD, PAYLOAD, BLOCK = 347, 283, 32  # bytes of a record, where its parameters begin, their number

# A panel of each family on each carrier.
PANELS = [f"{kind},sn=0102030405060708,nodes={nodes}"
          for kind in ("pct8752", "pct8753") for nodes in ("hiddev", "hidraw")]
PANEL = PANELS[-1]
OTHER = "pct8752,sn=1112131415161718,nodes=hiddev"

# Every setting: how its default reads, another value, and where in the block that is stored.
SETTINGS = {
    "beep": ("down", "both", 20, 3),
    "play-method": ("1", "2", 21, 2),
    "frequency": ("2000", "3000", 22, 0x0B),
    "duration": ("10", "none", 24, 0),
    "screen": ("0", "9", 25, 9),
    "click-mode": ("mouse", "right-first", 27, 3 | 0x10 | 8 | 4),
    "right-click": ("on", "off", 27, 3 | 0x10 | 8 | 4),
    "right-time": ("4", "15", 28, 0x0F),
    "right-range": ("10", "0", 28, 0x0F),
    "menu": ("up", "down", 27, 3 | 0x10 | 8 | 4),
    "digitizer": ("off", "on", 29, 1),
    "reports": ("on", "off", 30, 1),
    "hide-cursor": ("off", "on", 5, 1),
}
DEFAULTS = "".join(f"{name}={row[0]}\n" for name, row in SETTINGS.items())


class PctSession(Session):
    def block(self, path, number=0):
        """The parameters in a record of a store file: this host keeps them as they are."""
        hexadecimal = self.shell(f"od -An -v -tx1 {path}").stdout
        start = number * RECORD + PAYLOAD
        return bytes.fromhex(hexadecimal)[start:start + BLOCK]

    def has_saved_set(self):
        return self.shell(f"test -e {SAVED}").status == 0 and self.block(SAVED) != b"\xff" * BLOCK

    def pos_config(self, panel=0):
        return bytes.fromhex(self.sim("pos-config", str(panel)))

    def usb_id(self, panel=0):
        return self.sim("usb-id", str(panel)).strip()

    def device_mode(self, panel=0):
        return self.sim("device-mode", str(panel)).strip()


class WhoTest(unittest.TestCase):
    def test_panels_of_every_kind_are_listed_in_one_table(self):
        with PctSession(PANEL, OTHER, "resistive") as session:
            result = session.ctl("list")
        self.assertEqual((result.status, result.stderr), (DONE, ""))
        rows = sorted(line.split()[1:] for line in result.stdout.splitlines())
        self.assertEqual(rows, [
            ["TYPE", "NODE", "USB-ID", "FIRMWARE", "FAMILY", "MODE", "SERIAL-NUMBER"],
            ["pct-usb", "/dev/hidraw0", "2575:8753", "S8.7.53(r400)", "8753", "digitizer",
             "0102030405060708"],
            ["pct-usb", "/dev/usb/hiddev1", "2575:8752", "S3.0.81(r564)", "8752", "digitizer",
             "1112131415161718"],
            ["resistive-usb", "/dev/usb/hiddev2", "3A4C:1688", "V1.2", "-", "-", "-"]])

    def test_show_tells_who_the_panel_is_and_all_settings(self):
        for panel in PANELS:
            with PctSession(panel) as session:
                result = session.ctl("show", "0")
            self.assertEqual((result.status, result.stderr), (DONE, ""), panel)
            who, settings = result.stdout.split("\nSETTING ")
            family = panel[3:7]
            facts = dict(line.split("  ", 1) for line in who.splitlines() if "  " in line)
            facts = {name: text.strip() for name, text in facts.items()}
            self.assertEqual(facts["type"], "pct-usb")
            self.assertEqual(facts["usb id"], "2575:" + family)
            self.assertEqual(facts["recorded id"], "2575:" + family)
            self.assertEqual(facts["family"], family)
            self.assertEqual(facts["mode"], "digitizer")
            self.assertEqual(facts["serial number"], "0102030405060708")
            shown = {line.split()[0]: line.split()[1] for line in settings.splitlines()[1:]}
            self.assertEqual(shown, {name: row[0] for name, row in SETTINGS.items()})

    def test_the_document_tells_the_same(self):
        with PctSession(PANEL + ",pos=3,id=2575:9968") as session:
            status, document = session.ctl_json("show", "0")
        self.assertEqual(status, DONE)
        self.assertEqual(document["panel"], {
            "index": 0, "type": "pct-usb", "node": "/dev/hidraw0", "usb_id": "2575:9968",
            "firmware": "S8.7.53(r400)", "family": "8753", "mode": "hybrid",
            "serial_number": "0102030405060708", "recorded_usb_id": "2575:8753",
            "event_node": "/dev/input/event0", "phys": "usb-0000:00:14.0-1/input0"})
        self.assertEqual(list(document["settings"]), list(SETTINGS))
        self.assertEqual(document["settings"]["beep"],
                         {"value": "down", "stored": 1, "in_range": True})
        self.assertEqual(document["settings"]["frequency"]["value"], 2000)

    def test_the_mode_is_told_in_words(self):
        for pos, word in enumerate(("digitizer", "mouse", "hybrid", "hybrid-4"), 1):
            with PctSession(f"{PANEL},pos={pos}") as session:
                _, document = session.ctl_json("list")
            self.assertEqual(document["panels"][0]["mode"], word)

    def test_the_serial_number_is_printed_alone(self):
        with PctSession(PANEL) as session:
            self.assertEqual(session.ctl("serial-number", "0"), (DONE, "0102030405060708\n", ""))
            status, document = session.ctl_json("serial-number", "0")
        self.assertEqual((status, document["serial_number"]), (DONE, "0102030405060708"))

    def test_panels_without_a_serial_number_get_one_each_that_stays(self):
        with PctSession("pct8753,nodes=hidraw", "pct8752,nodes=hidraw") as session:
            first = [session.ctl("serial-number", panel).stdout for panel in "01"]
            again = [session.ctl("serial-number", panel).stdout for panel in "01"]
        self.assertEqual(first, again)
        self.assertNotEqual(first[0], first[1])
        for number in first:
            self.assertRegex(number, "^[0-9a-f]{16}\n$")

    def test_a_node_that_may_not_be_opened_is_no_permission(self):
        with PctSession(PANEL + ",mode=000") as session:
            for words in (["list"], ["keep", "0"], ["mode", "0", "mouse"], ["reset", "0"]):
                self.assertEqual(session.ctl(*words).status, NO_PERMISSION, words)


class SetTest(unittest.TestCase):
    def test_every_setting_can_be_set_and_is_stored(self):
        words = [f"{name}={row[1]}" for name, row in SETTINGS.items()]
        for panel in PANELS:
            with PctSession(panel) as session:
                before = session.ctl("get", "0")
                result = session.ctl("set", "0", *words)
                after = session.ctl("get", "0")
                block, config = session.block(STORE), session.pos_config()
                mode = session.device_mode()
            lines = "".join(word + "\n" for word in words)
            self.assertEqual(before, (DONE, DEFAULTS, ""), panel)
            self.assertEqual((result, after), ((DONE, lines, ""), (DONE, lines, "")), panel)
            for name, (_, _, at, value) in SETTINGS.items():
                self.assertEqual(block[at], value, name)
            self.assertEqual(block[22:24], (3000).to_bytes(2, "big"))
            self.assertEqual(block[12:20].hex(), "0102030405060708")
            self.assertEqual(config.hex(), "21001f0f", "what the controller carries out")
            self.assertEqual(mode, "normal")

    def test_one_setting_leaves_the_others_alone(self):
        with PctSession(PANEL) as session:
            session.ctl("set", "0", "click-mode=touch", "beep=off")
            self.assertEqual(session.ctl("set", "0", "beep=on"), (DONE, "beep=down\n", ""))
            self.assertEqual(session.ctl("get", "0").stdout,
                             DEFAULTS.replace("click-mode=mouse", "click-mode=touch"))

    def test_the_document_tells_before_and_after(self):
        with PctSession(PANEL) as session:
            status, document = session.ctl_json("set", "0", "beep=off", "frequency=500")
        self.assertEqual(status, DONE)
        self.assertEqual(document, {
            "schema": 1, "panel": 0, "node": "/dev/hidraw0", "hints": [], "permanent": True,
            "settings": {"beep": {"before": "down", "asked": "off", "outcome": "changed"},
                         "frequency": {"before": 2000, "asked": 500, "outcome": "changed"}}})

    def test_a_value_out_of_range_is_refused_before_anything_is_written(self):
        cases = {"beep=4": "off, down, up, both, on", "frequency=499": "500..3000",
                 "frequency=3001": "500..3000", "duration=4": "none, 5..50",
                 "duration=51": "none, 5..50", "screen=10": "0..9", "right-time=16": "0..15",
                 "right-range=16": "0..15", "right-range=-1": "0..15", "menu=left": "down, up",
                 "click-mode=4": "mouse, touch, release, right-first", "play-method=3": "0..2",
                 "edge-up=1": "panel 0 has no setting edge-up", "digitizer=1": "on, off"}
        with PctSession(PANEL) as session:
            session.ctl("list")
            before = session.block(STORE)
            for word, complaint in cases.items():
                result = session.ctl("set", "0", "beep=off", word)
                if word.startswith("beep"):
                    result = session.ctl("set", "0", word)
                self.assertEqual((result.status, result.stdout), (USAGE, ""), word)
                self.assertIn(complaint, result.stderr)
            self.assertEqual(session.block(STORE), before)
            self.assertFalse(session.has_saved_set())

    def test_only_the_panel_named_is_changed(self):
        twins = [f"pct8753,sn=010203040506070{n},nodes=hidraw" for n in "12"]
        with PctSession(*twins) as session:
            self.assertEqual(session.ctl("set", "1", "beep=off").status, DONE)
            self.assertEqual([session.ctl("get", panel, "beep").stdout for panel in "01"],
                             ["down\n", "off\n"])

    def test_what_cannot_be_stored_changes_nothing(self):
        with PctSession(PANEL) as session:
            session.ctl("list")
            before = session.block(STORE)
            session.shell(f"mkdir {SAVED}")
            unsaved = session.ctl("set", "0", "beep=off")
            kept = session.ctl("keep", "0")
            after = session.block(STORE)
        self.assertEqual((unsaved.status, unsaved.stdout), (FAILED, ""))
        self.assertIn("the settings to go back to cannot be saved; nothing was changed",
                      unsaved.stderr)
        self.assertIn("/opt/.touch_panel can be written", unsaved.stderr)
        self.assertEqual((kept.status, kept.stdout), (FAILED, ""))
        self.assertEqual(after, before)

    def test_neither_answers_nor_errors_mention_the_missing_x_driver(self):
        with PctSession(PANEL) as session:
            quiet = session.shell(f"env -u DISPLAY {CTL} set 0 beep=off")
            traced = session.shell(f"env -u DISPLAY {CTL} --debug set 0 beep=up")
        self.assertEqual(quiet, (DONE, "beep=off\n", ""))
        self.assertEqual(traced.stdout, "beep=up\n")
        self.assertIn("EE:** Can't open XDisplay **\n", traced.stderr)


class GoBackTest(unittest.TestCase):
    def test_revert_undoes_all_changes_since_the_first(self):
        for panel in PANELS:
            with PctSession(panel) as session:
                session.ctl("set", "0", "beep=off", "click-mode=touch")
                session.ctl("set", "0", "frequency=700")
                saved = session.block(SAVED)
                result = session.ctl("revert", "0")
                settings = session.ctl("get", "0").stdout
                gone = session.has_saved_set()
                config, mode = session.pos_config(), session.device_mode()
            self.assertEqual(saved[20], 1, "the first change saved what there was")
            self.assertEqual(result,
                             (DONE, "beep=down\nfrequency=2000\nclick-mode=mouse\n", ""), panel)
            self.assertEqual((settings, gone, config.hex(), mode),
                             (DEFAULTS, False, "210018a4", "normal"), panel)

    def test_there_is_nothing_to_go_back_to_before_a_change_and_after_going_back(self):
        with PctSession(PANEL) as session:
            fresh = session.ctl("revert", "0")
            session.ctl("set", "0", "beep=off")
            session.ctl("revert", "0")
            status, document = session.ctl_json("revert", "0")
            self.assertEqual(session.ctl("get", "0").stdout, DEFAULTS)
        self.assertEqual((fresh.status, fresh.stdout), (FAILED, ""))
        self.assertIn("panel 0 has nothing to go back to", fresh.stderr)
        self.assertEqual((status, document["error"]["code"]), (FAILED, FAILED))

    def test_keep_makes_the_settings_of_now_those_to_go_back_to(self):
        with PctSession(PANEL) as session:
            session.ctl("set", "0", "beep=off")
            kept = session.ctl("keep", "0")
            session.ctl("set", "0", "beep=both", "screen=3")
            _, document = session.ctl_json("revert", "0")
            again = session.ctl("revert", "0")
        self.assertEqual(kept, (DONE, DEFAULTS.replace("beep=down", "beep=off"), ""))
        self.assertEqual(document["settings"],
                         {"beep": {"before": "both", "asked": "off", "outcome": "changed"},
                          "screen": {"before": 3, "asked": 0, "outcome": "changed"}})
        self.assertEqual(again.status, FAILED)

    def test_going_back_to_the_same_settings_says_so(self):
        with PctSession(PANEL) as session:
            status, kept = session.ctl_json("keep", "0")
            result = session.ctl("revert", "0")
        self.assertEqual((status, kept["settings"]["duration"]), (DONE, 10))
        self.assertEqual((result.status, result.stdout), (DONE, ""))
        self.assertIn("the settings were the same already", result.stderr)

    def test_a_panel_does_not_go_back_to_the_settings_of_another(self):
        with PctSession(*[f"pct8753,sn=010203040506070{n},nodes=hidraw" for n in "12"]) as session:
            session.ctl("set", "0", "beep=off")
            self.assertEqual(session.ctl("revert", "1").status, FAILED)
            self.assertEqual(session.ctl("revert", "0").status, DONE)

    def test_defaults_can_be_undone_as_well(self):
        for panel in PANELS:
            with PctSession(panel) as session:
                session.ctl("set", "0", "beep=both")
                session.ctl("keep", "0")
                session.shell(f"printf '[Default]\\nBeepOn=2\\nClickMode=2\\n' > {INI}")
                result = session.ctl("defaults", "0")
                config, mode = session.pos_config(), session.device_mode()
                back = session.ctl("revert", "0")
            wanted = DEFAULTS.replace("beep=down", "beep=up").replace("=mouse", "=release")
            self.assertEqual(result, (DONE, wanted, ""), panel)
            self.assertEqual((config.hex(), mode), ("21001aa4", "normal"), panel)
            self.assertEqual(back.stdout, "beep=both\nclick-mode=mouse\n")

    def test_a_default_out_of_range_is_refused_before_anything_is_written(self):
        with PctSession(PANEL) as session:
            session.shell(f"printf '[Default]\\nBeepOn=3\\nRightTime=16\\n' > {INI}")
            session.ctl("list")
            session.ctl("set", "0", "right-time=2")
            result = session.ctl("defaults", "0")
            self.assertEqual((result.status, result.stdout), (USAGE, ""))
            self.assertIn(f"the default of right-time in {INI} is 16, which is out of range "
                          "(0..15); nothing was changed", result.stderr)
            self.assertEqual(session.ctl("get", "0", "right-time").stdout, "2\n")


class ResetTest(unittest.TestCase):
    def test_a_panel_of_the_8753_family_comes_back_with_another_product_id(self):
        for mode, product in (("mouse", "9969"), ("hybrid", "9968")):
            with PctSession(PANEL) as session:
                session.ctl("set", "0", "beep=off")
                there = session.ctl("mode", "0", mode)
                beep = session.ctl("get", "0", "beep").stdout
                status, back = session.ctl_json("mode", "0", "digitizer")
                usb_id, pos_mode = session.usb_id(), session.sim("pos-mode", "0").strip()
            self.assertEqual((there.status, there.stderr), (DONE, ""))
            self.assertEqual(there.stdout.splitlines(),
                             ["panel   0", "node    /dev/hidraw0", "mode    " + mode,
                              "reset   yes", f"usb id  2575:{product}, was 2575:8753"])
            self.assertEqual(beep, "off\n", "settings go by the serial number")
            self.assertEqual((status, back), (DONE, {
                "schema": 1, "panel": 0, "node": "/dev/hidraw0", "mode": "digitizer",
                "was_reset": True, "usb_id": "2575:8753", "usb_id_before": "2575:" + product,
                "hints": []}))
            self.assertEqual((usb_id, pos_mode), ("2575:8753", "1"))

    def test_a_panel_of_the_8752_family_keeps_its_product_id(self):
        with PctSession(OTHER) as session:
            result = session.ctl("mode", "0", "mouse")
            facts = session.usb_id(), session.sim("pos-mode", "0").strip(), session.device_mode()
        self.assertEqual((result.status, result.stderr), (DONE, ""))
        self.assertIn("usb id  2575:8752\n", result.stdout)
        self.assertEqual(facts, ("2575:8752", "2", "normal"))

    def test_a_panel_that_is_in_the_mode_is_not_reset(self):
        for panel in PANELS:
            with PctSession(panel) as session:
                result = session.ctl("mode", "0", "digitizer")
                resets = session.sim("resets", "0").strip()
            self.assertEqual((result.status, resets), (DONE, "0"), panel)
            self.assertIn("reset   no\n", result.stdout)

    def test_a_digitizer_becomes_a_hybrid_where_hybrid_mode_is_on(self):
        with PctSession(PANEL) as session:
            session.shell(f": > {DATA}.hybrid")
            result = session.ctl("mode", "0", "digitizer")
        self.assertEqual(result.status, DONE)
        self.assertIn("mode    hybrid\n", result.stdout)
        self.assertIn("a digitizer becomes a hybrid", result.stderr)

    def test_a_panel_that_does_not_take_a_mode_is_a_failure(self):
        with PctSession(OTHER + ",refused-pos-modes=99") as session:
            status, document = session.ctl_json("mode", "0", "mouse")
        self.assertEqual((status, document["mode"]), (FAILED, "digitizer"))
        self.assertIn("panel 0 did not take the mode", document["error"]["message"])

    def test_reset_brings_the_panel_back(self):
        for panel in PANELS:
            with PctSession(panel, "resistive") as session:
                _, listed = session.ctl_json("list")
                number = [row["type"] for row in listed["panels"]].index("pct-usb")
                status, document = session.ctl_json("reset", str(number))
                resets = [session.sim("resets", index).strip() for index in "01"]
                self.assertEqual(session.device_mode(), "normal", panel)
            self.assertEqual((status, document["was_reset"], document["mode"]),
                             (DONE, True, "digitizer"), panel)
            self.assertEqual(resets, ["1", "0"], panel)

    def test_the_tool_is_bound_to_the_x_functions_of_the_library(self):
        with PctSession(PANEL) as session:
            needed = session.shell(f"readelf -d {os.path.abspath(CTL)}").stdout
        for library in ("libX11.so", "libXrandr.so"):
            self.assertIn(library, needed)


if __name__ == "__main__":
    unittest.main()
