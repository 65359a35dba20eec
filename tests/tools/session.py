# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""A session of zelkora-sim with a shell in it, and the real zelkoractl run there."""

import json
import os
import shlex
import subprocess
import tempfile
from collections import namedtuple

BUILD = os.environ.get("ZELKORA_BUILD", "build")
SIM = os.path.join(BUILD, "zelkora-sim")
CTL = os.path.join(BUILD, "zelkoractl")

Result = namedtuple("Result", "status stdout stderr")


class Session:
    """Virtual panels and a private /dev, as long as the `with` block lasts."""

    def __init__(self, *panels):
        self._panels = panels or ("resistive",)

    def __enter__(self):
        self._files = tempfile.TemporaryDirectory()
        command = [SIM, "--no-waits"]
        for panel in self._panels:
            command += ["--panel", panel]
        # A sanitized tool is loaded behind the library that makes the panels.
        environment = dict(os.environ, ASAN_OPTIONS="verify_asan_link_order=0")
        self._shell = subprocess.Popen(command + ["--", "sh"], stdin=subprocess.PIPE,
                                       stdout=subprocess.PIPE, text=True, env=environment)
        return self

    def __exit__(self, *_):
        self._shell.communicate()
        self._files.cleanup()

    def file(self, name, content=None):
        """The path of a file outside the private directories, with this content."""
        path = os.path.join(self._files.name, name)
        if content is not None:
            with open(path, "wb") as file:
                file.write(content.encode() if isinstance(content, str) else content)
        return path

    def shell(self, line):
        """Runs a line of shell and returns its exit status and what it printed."""
        out, err = self.file("out"), self.file("err")
        self._shell.stdin.write(f"{{ {line}\n}} >{out} 2>{err} </dev/null; echo $?\n")
        self._shell.stdin.flush()
        status = int(self._shell.stdout.readline())
        with open(out, encoding="utf-8") as stdout, open(err, encoding="utf-8") as stderr:
            return Result(status, stdout.read(), stderr.read())

    def ctl(self, *arguments):
        return self.shell(shlex.join([CTL, *arguments]))

    def ctl_json(self, *arguments):
        """The exit status and the document; fails when standard output holds anything else."""
        result = self.ctl("--json", *arguments)
        return result.status, json.loads(result.stdout)

    def sim(self, *arguments):
        result = self.shell(shlex.join([SIM, *arguments]))
        if result.status != 0:
            raise AssertionError(f"zelkora-sim {arguments}: {result.stderr}")
        return result.stdout

    def value(self, panel, address):
        return int(self.sim("value", str(panel), str(address)))

    def permanent(self, panel, address):
        return int(self.sim("permanent", str(panel), str(address)))

    def frames(self, panel):
        """The command letters that reached the controller so far, such as "GP"."""
        lines = self.sim("frames", str(panel)).splitlines()
        return [bytes.fromhex(line)[1:3].decode() for line in lines]
