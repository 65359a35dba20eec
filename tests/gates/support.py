# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""What the gates share: where the sources and the build lie, and a few tool calls."""

import os
import pathlib
import re
import subprocess

SOURCE = pathlib.Path(__file__).resolve().parents[2]
BUILD = pathlib.Path(os.environ.get("ZELKORA_BUILD", SOURCE / "build"))
LIBRARY = BUILD / "libzelkora.so.1"
HEADER = SOURCE / "include" / "zelkora.h"


def run(*command, **options):
    """Runs a command and returns its standard output; a failure shows what it printed."""
    result = subprocess.run(
        [str(word) for word in command], capture_output=True, text=True, check=False, **options
    )
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}\n{result.stdout}{result.stderr}")
    return result.stdout


def without_comments(text):
    return re.sub(r"/\*.*?\*/|//[^\n]*", "", text, flags=re.DOTALL)


def sources(*folders, endings=(".cpp", ".h", ".c")):
    """The tracked and new source files below these folders."""
    names = run(
        "git", "-C", SOURCE, "ls-files", "--cached", "--others", "--exclude-standard", *folders
    ).splitlines()
    paths = [SOURCE / name for name in names]
    return sorted(p for p in paths if p.suffix in endings and p.exists())
