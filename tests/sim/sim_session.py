# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""Running commands in sessions of zelkora-sim, for tests.

ZELKORA_BUILD names the build directory.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest

BUILD = os.path.abspath(os.environ.get("ZELKORA_BUILD", "build"))
SIM = os.path.join(BUILD, "zelkora-sim")
NOBODY = 65534

# What a host program does with a hiddev or hidraw node, for the scripts of the tests.
PRELUDE = r"""
import ctypes, errno, fcntl, os, struct, subprocess, sys, time

def ioc(direction, number, size):
    return direction << 30 | size << 16 | ord("H") << 8 | number

READ, WRITE = 2, 1
GET_DEVICE_INFO = ioc(READ, 0x03, 28)
INIT_REPORT = ioc(0, 0x05, 0)
GET_REPORT = ioc(WRITE, 0x07, 12)
SET_REPORT = ioc(WRITE, 0x08, 12)
GET_FIELD_INFO = ioc(READ | WRITE, 0x0A, 56)
GET_USAGE = ioc(READ | WRITE, 0x0B, 24)
SET_USAGE = ioc(WRITE, 0x0C, 24)
GET_RAW_INFO = ioc(READ, 0x03, 8)
SET_FEATURE = ioc(READ | WRITE, 0x06, 64)
GET_FEATURE = ioc(READ | WRITE, 0x07, 64)
FEATURE_1 = struct.pack("3I", 3, 1, 0)
USAGES = 63

def error_of(call, *arguments):
    try:
        call(*arguments)
        return "done"
    except OSError as error:
        return errno.errorcode[error.errno]

class Panel:
    def __init__(self, node="/dev/usb/hiddev0"):
        self.fd = node if isinstance(node, int) else os.open(node, os.O_RDWR)

    def text(self, number):
        room = bytearray(256)
        length = fcntl.ioctl(self.fd, ioc(READ, number, 256), room)
        return room[:length].split(b"\0")[0].decode()

    def name(self):
        return self.text(0x06)

    def id(self):
        room = bytearray(28)
        fcntl.ioctl(self.fd, GET_DEVICE_INFO, room)
        return "%04X:%04X" % struct.unpack_from("HH", room, 16)

    def send(self, frame):
        for i, byte in enumerate((bytes([len(frame)]) + frame).ljust(USAGES, b"\0")):
            usage = struct.pack("5Ii", 3, 1, 0, i, 0xFF000001 + i, byte)
            fcntl.ioctl(self.fd, SET_USAGE, usage)
        fcntl.ioctl(self.fd, SET_REPORT, FEATURE_1)

    def receive(self):
        fcntl.ioctl(self.fd, GET_REPORT, FEATURE_1)
        reply = bytearray()
        for i in range(USAGES):
            usage = bytearray(struct.pack("5Ii", 3, 1, 0, i, 0, 0))
            fcntl.ioctl(self.fd, GET_USAGE, usage)
            reply.append(struct.unpack_from("i", usage, 20)[0] & 0xFF)
        return bytes(reply[1:1 + reply[0]])

    def command(self, text):
        self.send(b"\x01" + text.encode() + b"\r")
        return self.receive().strip(b"\x01\r").decode()

# A PCT panel over hidraw: 64-byte feature reports behind their ids.
class HidrawPanel:
    def __init__(self, node="/dev/hidraw0"):
        self.fd = os.open(node, os.O_RDWR)

    def id(self):
        room = bytearray(8)
        fcntl.ioctl(self.fd, GET_RAW_INFO, room)
        return "%04X:%04X" % struct.unpack_from("HH", room, 4)

    def send(self, *report):
        return fcntl.ioctl(self.fd, SET_FEATURE, bytearray(report).ljust(64, b"\0"))

    def receive(self, report, count):
        room = bytearray([report]).ljust(64, b"\0")
        fcntl.ioctl(self.fd, GET_FEATURE, room)
        return room[1:1 + count].hex()

def sim(*words):
    return subprocess.run([SIM, *words], capture_output=True, text=True)
"""


def run(command, **options):
    return subprocess.run(command, capture_output=True, text=True, timeout=60, **options)


def without_privileges():
    os.setgroups([])
    os.setgid(NOBODY)
    os.setuid(NOBODY)


def session(command, *options, **process_options):
    """Runs a command, or a Python script behind the prelude, in a session."""
    if isinstance(command, str):
        prelude = "SIM = %r\n%s" % (SIM, PRELUDE)
        command = [sys.executable, "-c", prelude + command]
    return run([SIM, *options, "--", *command], **process_options)


class SimulatorTest(unittest.TestCase):
    maxDiff = None

    def setUp(self):
        self.directory = tempfile.mkdtemp(prefix="zelkora-sim-test-")
        os.chmod(self.directory, 0o777)
        self.addCleanup(shutil.rmtree, self.directory)

    def path(self, name):
        return os.path.join(self.directory, name)

    def assert_prints(self, expected, result):
        self.assertEqual(("", 0), (result.stderr, result.returncode))
        self.assertEqual(expected.split("\n"), result.stdout.rstrip("\n").split("\n"))

    def assert_fails(self, status, text, result):
        self.assertIn(text, result.stderr)
        self.assertEqual(("", status), (result.stdout, result.returncode))
