# SPDX-FileCopyrightText: 2026 The Zelkora authors
# SPDX-License-Identifier: MIT
"""The installed tree: hosts in C and C++ build against it and share the library's variables."""

import os
import pathlib
import tempfile
import unittest

from support import BUILD, HEADER, run

HOST = r"""
#include <stdio.h>
#include <zelkora.h>
unsigned char Read_Config(unsigned char* config) {
  config[ZELKORA_CONFIG_NO_RES_HIDE_CURSOR] = 7;
  return 1;
}
int GetEnableDebug(void) { return 3; }
void EncodeData(const unsigned char* source, unsigned char* destination, int zero, int length) {
  (void)source, (void)destination, (void)zero, (void)length;
}
void DecodeData(const unsigned char* source, unsigned char* destination) {
  (void)source, (void)destination;
}
void GenerateRand(unsigned char* buffer, int one) { (void)buffer, (void)one; }
int main(void) {
  fd = -1; /* seen by the library */
  const unsigned prepared = init_Hiddev();
  const int read = InitialZelkora(0);
  printf("%d %d %d %u\n", read, DbgFlag, MyConfig[8], prepared); /* written by the library */
  return 0;
}
"""

# The hooks stand in the executable, which shows them to what it loads.
LOADING_HOST = r"""
#include <dlfcn.h>
#include <stdio.h>
unsigned char Read_Config(unsigned char* config) {
  config[8] = 7;
  return 1;
}
int GetEnableDebug(void) { return 3; }
int main(void) {
  void* library = dlopen("libzelkora.so.1", RTLD_LAZY | RTLD_LOCAL);
  if (library == NULL) return puts(dlerror()), 1;
  int (*initial)(int) = (int (*)(int))dlsym(library, "InitialZelkora");
  const int* debug = dlsym(library, "DbgFlag");
  const unsigned char* config = dlsym(library, "MyConfig");
  const int read = initial(0);
  printf("%d %d %d\n", read, *debug, config[8]);
  return dlclose(library);
}
"""

FIND_PACKAGE = """
cmake_minimum_required(VERSION 3.25)
project(host LANGUAGES C)
find_package(zelkora 1 REQUIRED)
add_executable(host host.c)
target_link_libraries(host PRIVATE Zelkora::zelkora)
"""


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.folder = tempfile.TemporaryDirectory()
        cls.work = pathlib.Path(cls.folder.name)
        cls.prefix = cls.work / "usr"
        run("cmake", "--install", BUILD, "--prefix", cls.prefix)
        (cls.work / "host.c").write_text(HOST)
        (cls.work / "host.cpp").write_text(HOST)  # zelkora.h makes the hooks extern "C"
        cls.libdir = next(cls.prefix.rglob("libzelkora.so.1")).parent
        cls.environment = {**os.environ, "LD_LIBRARY_PATH": str(cls.libdir),
                           "PKG_CONFIG_PATH": str(cls.libdir / "pkgconfig")}

    @classmethod
    def tearDownClass(cls):
        cls.folder.cleanup()

    def check_host(self, compiler, source, *flags):
        found = run("pkg-config", "--cflags", "--libs", "zelkora", env=self.environment).split()
        program = self.work / "host"
        run(compiler, *flags, "-o", program, self.work / source, *found)
        self.assertEqual(run(program, env=self.environment).split(), ["1", "3", "7", "0"])

    def test_a_position_independent_c_host_shares_the_variables(self):
        self.check_host("cc", "host.c", "-std=c11", "-fPIE", "-pie")

    def test_a_fixed_position_c_host_shares_the_variables(self):
        self.check_host("cc", "host.c", "-std=c11", "-fno-pie", "-no-pie")

    def test_a_host_bound_at_load_needs_neither_x_nor_the_hooks_that_it_never_calls(self):
        self.check_host("cc", "host.c", "-std=c11", "-Wl,-z,now")

    def test_a_cpp_host_shares_the_variables(self):
        self.check_host("c++", "host.cpp", "-std=c++17")

    def test_a_host_that_loads_the_library_at_run_time_needs_no_x(self):
        (self.work / "loading.c").write_text(LOADING_HOST)
        program = self.work / "loading"
        run("cc", "-std=c11", "-rdynamic", "-o", program, self.work / "loading.c")
        self.assertEqual(run(program, env=self.environment).split(), ["1", "3", "7"])
        self.assertNotIn("libX", run("ldd", program))

    def test_the_soname_links_lead_to_one_library(self):
        for name in ("libzelkora.so", "libzelkora.so.1"):
            self.assertTrue((self.libdir / name).is_symlink())
        self.assertEqual((self.libdir / "libzelkora.so").resolve(),
                         (self.libdir / "libzelkora.so.1").resolve())

    def test_cmake_finds_the_package(self):
        (self.work / "CMakeLists.txt").write_text(FIND_PACKAGE)
        run("cmake", "-G", "Ninja", "-S", self.work, "-B", self.work / "found",
            f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run("cmake", "--build", self.work / "found")
        self.assertEqual(run(self.work / "found" / "host").split(), ["1", "3", "7", "0"])


class HeaderAlone(unittest.TestCase):
    def check(self, compiler, language, standard):
        run(compiler, "-x", language, f"-std={standard}", "-Wall", "-Wextra", "-Wpedantic",
            "-Werror", "-fsyntax-only", "-include", HEADER, "/dev/null")

    def test_the_header_alone_is_valid_c11(self):
        self.check("gcc", "c", "c11")
        self.check("clang", "c", "c11")

    def test_the_header_alone_is_valid_cpp17(self):
        self.check("g++", "c++", "c++17")
        self.check("clang++", "c++", "c++17")


if __name__ == "__main__":
    unittest.main()
