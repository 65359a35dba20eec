// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// INI and key=value files. Input: a key in the first line, a section in the second, then the file.
#include "fuzz_bench.h"

using namespace zelkora;

namespace {

void read_values(const char* path, const std::string& section, const std::string& key) {
  char value[36];
  ReadIniKeyValue(path, section.c_str(), key.c_str(), -1);
  get_conf_option(path, key.c_str(), -1);
  get_conf_option_str(path, key.c_str(), value);
}

// Lines of texts that are handed over as texts.
void read_lines(std::string text) {
  std::vector<char> value(text.size() + 1);
  GetConfStr(text.c_str(), value.data());
  ConfigLine line;
  std::fill(std::begin(line.Text), std::end(line.Text), 'x');
  text.copy(line.Text, sizeof line.Text);
  SubStr(line);
  HextoInt(text.c_str(), static_cast<int>(text.size()));
}

// The defaults and the settings of the utilities, wherever they are used.
void read_settings() {
  ResDevInfo res{};
  PCTDevInfo pct{};
  GetResParamDefault(&res);
  GetPCTParamDefault(&pct);
  GetPostModeConf();
  get_en_hide_cursor(0);
  get_dis_res_hide_cursor(0);
  SaveCheckDeviceNumber(1);
}

// A key that was found is set, whatever it is, and no line but its own is lost.
void check_setting(const char* path, const std::string& key) {
  const std::string before = test::read_file(path);
  if (set_conf_option(path, key.c_str(), 77) == 0) return;
  fuzz::require(test::read_file(path).find(key.c_str() + std::string("=77\n")) != std::string::npos,
                "a set value is not there");
  set_conf_option_str(path, key.c_str(), "text");
  add_conf_option(path, key.c_str(), 5);
}

}  // namespace

// IniSectionExist() leaves its file open by its contract, and ReadIniKeyValue() reads the same way.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  fuzz::FuzzInput input(data, size);
  fuzz::FuzzBench bench;
  const std::string key = input.line();
  const std::string section = input.line();
  const std::string text = input.file();
  for (const char* name : {"TouchUtil.ini", "Util.conf"}) {
    test::write_file(test::data_file(name), text);
  }
  const std::string path = test::data_file("Util.conf");
  read_values(path.c_str(), section, key);
  read_lines(text.substr(0, text.find('\0')));
  read_settings();
  check_setting(path.c_str(), key);
  return 0;
}
