# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""The library's outside: what it exports, what it needs, what it leaves undefined."""

import re
import unittest

from support import HEADER, LIBRARY, SOURCE, run, without_comments

HOOKS = {
    "Read_Config", "GetEnableDebug", "GenerateRand", "EncodeData", "DecodeData",
    "mydoled_all_display",
}

# Of Xlib and XRandR, which hosts bring along when they use the screens or the notifications.
X_FUNCTIONS = set(
    """
    XCloseDisplay XOpenDisplay XRRFreeCrtcInfo XRRFreeOutputInfo XRRFreeScreenResources
    XRRGetCrtcInfo XRRGetOutputInfo XRRGetScreenResources
    """.split()
)

# The C library calls the library makes. A new name here is a decision: hosts and tests stand on
# these seams, and a name outside the C library would be a new dependency.
C_LIBRARY = set(
    """
    close exit fchmod fchown ftruncate fsync ioctl lstat mkostemp open opendir closedir perror
    printf read readdir realpath remove rename stat uname unlink usleep vprintf write
    pclose popen sleep system tcflush tcgetattr tcsetattr
    fclose ferror fflush fgets fopen fprintf fputc fputs fread fwrite __getdelim getc getline open_memstream putchar puts
    rewind snprintf stderr stdout ungetc
    bcmp free memchr memcmp memcpy memmove memset strchr strcpy strlen strncmp strnlen strpbrk
    strrchr strstr strtok_r strtol strtoul
    """.split()
)

# What compiler and C start-up files add by themselves.
TOOLCHAIN = {
    "_ITM_deregisterTMCloneTable",
    "_ITM_registerTMCloneTable",
    "__cxa_finalize",
    "__errno_location",
    "__gmon_start__",
    "__stack_chk_fail",
}


def defined():
    lines = run("nm", "-D", "--defined-only", LIBRARY).splitlines()
    symbols = [line.split()[2].split("@")[0] for line in lines if line.split()[1] != "A"]
    return symbols


def undefined():
    lines = run("nm", "-D", "--undefined-only", LIBRARY).splitlines()
    return {line.split()[1].split("@")[0] for line in lines}


def map_groups():
    text = (SOURCE / "src" / "zelkora.map").read_text()
    inside = text.split("global:")[1].split("local:")[0]
    for group in re.split(r"/\*.*?\*/", inside)[1:]:
        yield re.findall(r"(\w+);", group)


def declared():
    names = []
    for statement in without_comments(HEADER.read_text()).split(";"):
        statement = re.sub(r"^\s*#.*$", "", statement, flags=re.MULTILINE)
        statement = re.sub(r'extern "C" \{', "", statement).strip()
        variable = re.search(r"^extern .*?(\w+)(\[\w+\])*$", statement, flags=re.DOTALL)
        function = re.search(r"^(?:[\w ]+?[ *]+)(\w+)\s*\([^{]*\)", statement)
        if variable:
            names.append(variable.group(1))
        elif function and not statement.startswith(("typedef", "enum")):
            names.append(function.group(1))
    return names


class Exports(unittest.TestCase):
    def test_the_library_exports_exactly_the_names_of_the_map(self):
        listed = [name for group in map_groups() for name in group]
        self.assertEqual(sorted(defined()), sorted(listed))

    def test_the_map_is_alphabetical_inside_each_group(self):
        for group in map_groups():
            self.assertEqual(group, sorted(group, key=str.lower))

    def test_the_header_declares_exactly_the_exports_and_the_host_hooks(self):
        self.assertEqual(sorted(declared()), sorted([*defined(), *HOOKS]))

    def test_the_library_needs_the_c_library_alone(self):
        needed = re.findall(r"\(NEEDED\).*\[(.*)\]", run("readelf", "-d", LIBRARY))
        self.assertEqual(needed, ["libc.so.6"])

    def test_the_soname_is_the_interface_version(self):
        soname = re.findall(r"\(SONAME\).*\[(.*)\]", run("readelf", "-d", LIBRARY))
        self.assertEqual(soname, ["libzelkora.so.1"])

    def test_undefined_symbols_are_known_c_library_names_host_hooks_and_x_functions(self):
        self.assertEqual(undefined() - C_LIBRARY - TOOLCHAIN - HOOKS - X_FUNCTIONS, set())

    def test_the_host_hooks_and_the_x_functions_are_left_to_the_host(self):
        self.assertLessEqual(HOOKS | X_FUNCTIONS, undefined())

    def test_what_is_left_to_the_host_is_bound_at_its_first_call(self):
        # A symbol whose address the library takes has a relocation of another kind, and a host
        # without it could not even load the library.
        relocations = re.findall(r"(R_\w+)\s+\w+\s+(\w+)", run("readelf", "-Wr", LIBRARY))
        kinds = {name: {kind for kind, other in relocations if other == name}
                 for name in HOOKS | X_FUNCTIONS}
        for name, found in kinds.items():
            with self.subTest(name):
                self.assertEqual(len(found), 1)
                self.assertRegex(next(iter(found)), r"^R_\w+_JUMP_SLOT?$")

    def test_calls_are_bound_lazily(self):
        dynamic = run("readelf", "-d", LIBRARY)
        self.assertNotIn("BIND_NOW", dynamic)
        self.assertNotRegex(dynamic, r"FLAGS_1.*\bNOW\b")
        self.assertIn("JUMP_SLO", run("readelf", "-r", LIBRARY))

    def test_there_are_no_static_constructors(self):
        self.assertNotIn("_GLOBAL__sub_I", run("nm", LIBRARY))


if __name__ == "__main__":
    unittest.main()
