#!/usr/bin/env python3
# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""zelkora-sim through its real executable: PCT panels, and files of panels."""

import unittest

from sim_session import SimulatorTest, session

NODES = """
print(*sorted(os.listdir("/dev/usb")), *sorted(n for n in os.listdir("/dev") if "hidraw" in n),
      *sorted(os.listdir("/dev/input")))
"""


class PctPanels(SimulatorTest):
    def test_a_pct_panel_answers_for_its_firmware_over_hidraw(self):
        result = session("""
panel = HidrawPanel()
print(panel.id(), panel.receive(0xF2, 4))
""", "--panel", "pct8753,firmware=87530190")
        self.assert_prints("2575:8753 90015387", result)

    def test_a_pct_panel_answers_for_its_firmware_over_hiddev(self):
        result = session("""
panel = Panel()
fcntl.ioctl(panel.fd, GET_REPORT, struct.pack("3I", 3, 0xF2, 0))
bytes_ = []
for i in range(4):
    usage = bytearray(struct.pack("5Ii", 3, 0xF2, 0, i, 0, 0))
    fcntl.ioctl(panel.fd, GET_USAGE, usage)
    bytes_.append(struct.unpack_from("i", usage, 20)[0])
print(panel.id(), panel.name(), *["%02X" % byte for byte in bytes_])
""", "--panel", "pct8752,nodes=hiddev,firmware=30811234")
        self.assert_prints("2575:8752 Zelkora Virtual PCT 34 12 81 30", result)

    def test_a_panel_has_the_nodes_it_is_given_under_its_own_number(self):
        self.assert_prints("hiddev0 hiddev1 hidraw0 hidraw2 event0 event1 event2",
                           session(NODES, "--panel", "resistive", "--panel", "pct8752,nodes=hiddev",
                                   "--panel", "pct8753,nodes=hidraw"))
        self.assert_prints("hidraw0 event0", session(NODES, "--panel", "pct8753,nodes=hidraw"))

    def test_a_reset_panel_comes_back_with_the_product_id_last_written(self):
        result = session("""
panel = HidrawPanel()
print(panel.id())
panel.send(0xF3, 8, 0, 2, 0, 0, 0x75, 0x25, 0x69, 0x99)
print(panel.id(), sim("usb-id", "0").stdout.strip(), sim("stored-usb-id", "0").stdout.strip())
print(panel.send(0x08, 0x84, 0x09), error_of(panel.id), error_of(panel.send, 0x06, 0xA1, 34))
print(HidrawPanel().id(), Panel().id(), Panel().text(0x12))
print(sim("usb-id", "0").stdout.strip(), sim("resets", "0").stdout.strip())
""" + NODES, "--panel", "pct8753")
        self.assert_prints("2575:8753\n2575:8753 2575:8753 2575:9969\n64 ENODEV ENODEV\n"
                           "2575:9969 2575:9969 usb-0000:00:14.0-1/input0\n2575:9969 1\n"
                           "hiddev0 hidraw0 event0", result)

    def test_a_reset_panel_can_be_unplugged_and_nobody_else_is_disturbed(self):
        result = session("""
other = Panel("/dev/usb/hiddev1")
HidrawPanel().send(0x08, 0x84, 0x09)
print(other.command("OI"), sim("unplug", "0").returncode, error_of(HidrawPanel))
print(*os.listdir("/dev/usb"), other.command("OI"))
""", "--panel", "pct8753", "--panel", "resistive")
        self.assert_prints("V1.2 0 ENOENT\nhiddev1 V1.2", result)

    def test_a_serial_number_is_in_the_flash_that_is_blank_without_one(self):
        result = session("""
for node in "/dev/hidraw0", "/dev/hidraw1":
    panel = HidrawPanel(node)
    panel.send(0x06, 0xA1, 34)
    print(panel.receive(0x07, 7 + 34)[14:])
print(sim("flash", "0").stdout.replace(" ", "").lower(), end="")
""", "--panel", "pct8753,sn=0102030405060708", "--panel", "pct8753")
        block = "25758753" "0190" "000000000000" "0102030405060708" + "00" * 12 + "8f68"
        self.assert_prints("\n".join([block, "00" * 34, block]), result)

    def test_queries_change_what_a_host_sees(self):
        result = session("""
panel = HidrawPanel()
def config():
    panel.send(0x06, 0xA2, 16)
    return panel.receive(0x07, 11)[14:]
print(config(), sim("set-pos-mode", "0", "3").returncode, config())
print(sim("fault", "0", "blank-pos-replies=1").returncode, config(), config())
print(sim("silent", "0", "on").returncode, error_of(panel.receive, 0xF2, 4))
print(sim("frames", "0").stdout.splitlines()[:2], sim("value", "0", "86").stderr, end="")
""", "--panel", "pct8753,pos=2")
        self.assert_prints("210110a4 0 210210a4\n0 00000000 210210a4\n0 EPIPE\n"
                           "['06 A2 10', '06 A2 10'] zelkora-sim: 'value' is a query to resistive "
                           "panels, and this one is of kind pct8753", result)


class PanelFiles(SimulatorTest):
    def write(self, text):
        path = self.path("kiosk.panels")
        with open(path, "w") as file:
            file.write(text)
        return path

    def test_the_panels_of_a_file_come_before_those_of_the_command_line(self):
        path = self.write("# a kiosk\n\nresistive,beep=0\n  pct8752,nodes=hiddev  # left\n"
                          "pct8753,nodes=hidraw\nresistive,name=Four\n")
        result = session("""
for number in range(5):
    print(sim("usb-id", str(number)).stdout, end="")
print(sim("value", "0", "86").stdout, end="")
""", "--panel", "pct8753,id=3E05:0001", "--panels", path)
        self.assert_prints("3A4C:1688\n2575:8752\n2575:8753\n3A4C:1688\n3E05:0001\n0", result)

    def test_a_mistake_is_told_with_its_file_and_line(self):
        path = self.write("resistive\n# next\npct8753,nodes=usb\n")
        self.assert_fails(2, "zelkora-sim: %s:3: 'usb' is no value for 'nodes': expected NODES, one "
                             "of hiddev, hidraw and both\n" % path,
                          session(["true"], "--panels", path))

    def test_a_file_without_panels_and_no_file_at_all_are_told(self):
        path = self.write("# nothing yet\n")
        self.assert_fails(2, "zelkora-sim: %s: describes no panel\n" % path,
                          session(["true"], "--panels", path))
        self.assert_fails(2, "zelkora-sim: /none/at/all: No such file or directory\n",
                          session(["true"], "--panels", "/none/at/all"))


if __name__ == "__main__":
    unittest.main()
