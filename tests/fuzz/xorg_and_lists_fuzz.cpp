// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The X configuration and the lists of product names. Input: three files.
#include "fuzz_bench.h"

using namespace zelkora;

namespace {

void write_name_back() {
  ManufCnt = get_Manufacturer_list();
  get_Res_Manufacturer_list();
  set_Manufacturer_list(ManufCnt);
  fuzz::require(get_Manufacturer_list() == ManufCnt, "a name was lost on its way back");
}

void read_option_lines(const std::string& text) {
  char unique[16];
  GetOptionValueStr(text.c_str(), unique);
  GetOptionValue(text.c_str());
  GetFdiOptionValue(text.c_str());
  GetSerialDeviceName(text.c_str());
  GetSerialDeviceNameFdi(text.c_str());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  fuzz::FuzzBench bench;
  const std::string xorg = input.file();
  test::write_file(test::data_file("X11/xorg.conf"), xorg);
  test::write_file(test::data_file("manuflist.conf"), input.file());
  test::write_file(test::data_file("rmanuflist.conf"), input.file());
  GetDevceNumbersConf();
  char unique[16];
  for (int number = 0; number <= 4; ++number) GetDevceUniqueIDConf(number, unique);
  write_name_back();
  read_option_lines(xorg.substr(0, xorg.find('\0')));
  return 0;
}
