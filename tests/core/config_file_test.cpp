// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Reading key=value files. Every test also sees that no file is left open.
#include <cstring>
#include <string>

#include "support/bench.h"

namespace {

using zelkora::test::data_file;
using zelkora::test::Lines;
using zelkora::test::write_file;

class ConfigFileTest : public zelkora::test::Bench {
 protected:
  const char* file_with(const std::string& text) {
    write_file(path_, text);
    return path_.c_str();
  }
  const char* path() const { return path_.c_str(); }

 private:
  std::string path_ = data_file("settings.conf");
};

TEST_F(ConfigFileTest, ReadIniKeyValueFindsTheKeyInItsSection) {
  struct Row {
    const char* name;
    std::string text;
    int value;  // -7 is the default
  };
  const Row rows[] = {
      {"the key's value", "[SETUP]\nPOSMODE=2\n", 2},
      {"behind other lines", "A=1\n[OTHER]\nB=2\n[SETUP]\nC=3\nPOSMODE=4\nD=5\n", 4},
      {"the first matching line", "[SETUP]\nPOSMODE=1\nPOSMODE=2\n", 1},
      {"a key that stands in front of the section", "POSMODE=9\n[SETUP]\nPOSMODE=1\n", 1},
      {"a key only in the next section", "[SETUP]\nA=1\n[OTHER]\nPOSMODE=5\n", -7},
      {"a key only in the section before", "[OTHER]\nPOSMODE=5\n[SETUP]\nA=1\n", -7},
      {"a bracket anywhere ends the section", "[SETUP]\nA=[1\nPOSMODE=5\n", -7},
      {"even on the line of the key", "[SETUP]\nPOSMODE=5 [ms]\n", -7},
      {"a closing bracket does not", "[SETUP]\nA=]\nPOSMODE=5\n", 5},
      {"the section again ends it", "[SETUP]\n[SETUP]\nPOSMODE=5\n", -7},
      {"the header's own line is passed over", "[SETUP] POSMODE=3\nPOSMODE=4\n", 4},
      {"a header anywhere in its line", "see [SETUP]:\nPOSMODE=3\n", 3},
      {"a section whose name begins earlier", "[MYSETUP]\nPOSMODE=3\n", -7},
      {"a section whose name goes on", "[SETUP2]\nPOSMODE=3\n", -7},
      {"a section in other letters", "[setup]\nPOSMODE=3\n", -7},
      {"a commented header", "#[SETUP]\nPOSMODE=3\n", -7},
      {"a commented key", "[SETUP]\n#POSMODE=3\nPOSMODE=4\n", 4},
      {"a comment sign anywhere", "[SETUP]\nPOSMODE=3 # why\nPOSMODE=4\n", 4},
      {"a comment does not end the section", "[SETUP]\n# [OTHER]\nPOSMODE=4\n", 4},
      {"a key within a longer one", "[SETUP]\nXPOSMODEX=6\n", 6},
      {"a key in a value", "[SETUP]\nA=POSMODE\nPOSMODE=4\n", 0},
      {"the text behind the first =", "[SETUP]\nPOSMODE=1=2\n", 1},
      {"a negative value", "[SETUP]\nPOSMODE=-3\n", -3},
      {"blanks in front of the digits", "[SETUP]\nPOSMODE= \t8\n", 8},
      {"blanks in front of the =", "[SETUP]\nPOSMODE =8\n", 8},
      {"text behind the digits", "[SETUP]\nPOSMODE=8ms\n", 8},
      {"no digits", "[SETUP]\nPOSMODE=on\n", 0},
      {"no value", "[SETUP]\nPOSMODE=\n", 0},
      {"no =", "[SETUP]\nPOSMODE\nPOSMODE=4\n", -7},
      {"no last line feed", "[SETUP]\nPOSMODE=12", 12},
      {"carriage returns", "[SETUP]\r\nPOSMODE=12\r\n", 12},
      {"no such section", "POSMODE=12\n", -7},
      {"an empty file", "", -7},
      {"a NUL in front of the key", std::string("[SETUP]\n\0POSMODE=6\n", 19), 6},
      {"a NUL in the value", std::string("[SETUP]\nPOSMODE=1\0002\n", 20), 1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(ReadIniKeyValue(file_with(row.text), "SETUP", "POSMODE", -7), row.value);
  }
  EXPECT_EQ(messages(), Lines{});
}

TEST_F(ConfigFileTest, ReadIniKeyValueOfAMissingFileIsTheDefault) {
  DbgFlag = 1;
  EXPECT_EQ(ReadIniKeyValue(path(), "SETUP", "POSMODE", 42), 42);
  EXPECT_EQ(ReadIniKeyValue(data_file("").c_str(), "SETUP", "POSMODE", 43), 43) << "a directory";
  EXPECT_EQ(trace(), Lines{});
}

TEST_F(ConfigFileTest, SectionsAreNoFormats) {
  EXPECT_EQ(ReadIniKeyValue(file_with("[%s%n]\nK=1\n"), "%s%n", "K", 0), 1);
  EXPECT_EQ(ReadIniKeyValue(path(), "%s", "K", 5), 5);
}

TEST_F(ConfigFileTest, ASectionNameOf29CharactersIsFoundAndAnEndlessOneIsNot) {
  const std::string section(29, 's');
  const std::string text = "[" + section + "]\nK=1\n";
  EXPECT_EQ(ReadIniKeyValue(file_with(text), section.c_str(), "K", 0), 1);
  const std::string endless(100000, 's');
  EXPECT_EQ(ReadIniKeyValue(path(), endless.c_str(), "K", 5), 5);
  EXPECT_EQ(IniSectionExist(path(), endless.c_str()), 0);
}

TEST_F(ConfigFileTest, IniSectionExistLeavesTheFileOpenOnSuccess) {
  EXPECT_EQ(IniSectionExist(file_with("A=1\n[SETUP]\n"), "SETUP"), 1);
  EXPECT_EQ(leaked_descriptors().size(), 1U);
  EXPECT_EQ(IniSectionExist(path(), "SETUP"), 1);
  EXPECT_EQ(leaked_descriptors().size(), 2U);
  expect_leaked_descriptors(2);
}

TEST_F(ConfigFileTest, IniSectionExistClosesTheFileWhenThereIsNoSuchSection) {
  struct Row {
    const char* name;
    const char* text;
  };
  constexpr Row kRows[] = {
      {"none at all", "A=1\n"},
      {"a commented one", "#[SETUP]\n"},
      {"a comment behind it", "[SETUP] # why\n"},
      {"a longer one", "[SETUP2]\n"},
      {"one that ends like it", "[MYSETUP]\n"},
      {"no brackets", "SETUP\n"},
      {"an empty file", ""},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(IniSectionExist(file_with(row.text), "SETUP"), 0);
  }
  EXPECT_EQ(leaked_descriptors().size(), 0U);
  EXPECT_EQ(IniSectionExist(data_file("missing.conf").c_str(), "SETUP"), 0);
}

TEST_F(ConfigFileTest, GetConfOptionTakesTheFirstLineThatHoldsTheKey) {
  struct Row {
    const char* name;
    std::string text;
    int value;  // -7 is the default
  };
  const Row rows[] = {
      {"the key's value", "A=1\nBeep=3\nBeep=4\n", 3},
      {"whatever the section", "[A]\nBeep=3\n[B]\n", 3},
      {"a commented line is passed over", "#Beep=1\nBeep=2 # why\nBeep=3\n", 3},
      {"within a longer key", "NoBeepAtAll=8\nBeep=1\n", 8},
      {"the text behind the first =", "Beep=5=6\n", 5},
      {"no digits", "Beep=on\n", 0},
      {"no last line feed", "Beep=12", 12},
      {"no =", "Beep\nBeep=4\n", -7},
      {"no such key", "beep=4\n", -7},
      {"an empty file", "", -7},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(get_conf_option(file_with(row.text), "Beep", -7), row.value);
  }
}

TEST_F(ConfigFileTest, GetConfOptionTellsWhatItFound) {
  DbgFlag = 1;
  EXPECT_EQ(get_conf_option(file_with("Beep=-3\n"), "Beep", 0), -3);
  EXPECT_EQ(messages(), Lines{"zelkora DD:Option:Beep Value:-3\n"});
  clear_trace();
  EXPECT_EQ(get_conf_option(path(), "Right", 6), 6);
  EXPECT_EQ(get_conf_option(data_file("missing.conf").c_str(), "Right", 6), 6);
  EXPECT_EQ(trace(), Lines{});
}

// 36 bytes with room behind them that must stay as it was.
struct Value {
  Value() { std::memset(bytes, '?', sizeof bytes); }
  std::string padded() const { return {bytes, 36}; }
  std::string rest() const { return {bytes + 36, 4}; }

  char bytes[40];
};

TEST_F(ConfigFileTest, GetConfOptionStrCopiesTheTextIntoAClearedField) {
  struct Row {
    const char* name;
    std::string text;
    int found;
    std::string value;
  };
  const std::string long_value(300, 'v');
  const Row rows[] = {
      {"the key's text", "A=1\nName=ttyS0\nName=ttyS1\n", 1, "ttyS0"},
      {"a commented line counts", "#Name=ttyS0\nName=ttyS1\n", 1, "ttyS0"},
      {"the text behind the first =", "Name=a=b # c\n", 1, "a=b # c"},
      {"blanks stay", "Name= a \n", 1, " a "},
      {"the last character is taken for a line feed", "Name=ttyS0", 1, "ttyS"},
      {"so is a carriage return in front of it not", "Name=a\r\n", 1, "a\r"},
      {"no text", "Name=\n", 1, ""},
      {"nothing behind the =", "Name=", 1, ""},
      {"no =", "Name\nName=ttyS0\n", 0, ""},
      {"no such key", "A=1\n", 0, ""},
      {"an empty file", "", 0, ""},
      {"35 characters", "Name=" + long_value.substr(0, 35) + "\n", 1, long_value.substr(0, 35)},
      {"36 characters", "Name=" + long_value.substr(0, 36) + "\n", 1, long_value.substr(0, 35)},
      {"300 characters", "Name=" + long_value + "\n", 1, long_value.substr(0, 35)},
      {"format characters", "Name=%s%n\n", 1, "%s%n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    Value out;
    EXPECT_EQ(get_conf_option_str(file_with(row.text), "Name", out.bytes), row.found);
    EXPECT_EQ(out.padded(), row.value + std::string(36 - row.value.size(), '\0'));
    EXPECT_EQ(out.rest(), "????");
  }
}

TEST_F(ConfigFileTest, GetConfOptionStrTellsWhatItLooksForAndWhatItFound) {
  DbgFlag = 1;
  Value out;
  EXPECT_EQ(get_conf_option_str(file_with("Name=ttyS0\n"), "Name", out.bytes), 1);
  EXPECT_EQ(get_conf_option_str(path(), "%s%n", out.bytes), 0);
  const std::string start =
      "zelkora DD:get_conf_option_str--start /opt/.touch_panel/settings.conf Option:";
  EXPECT_EQ(messages(),
            (Lines{start + "Name\n", "zelkora DD:get_conf_option_str--end ret=1 ttyS0\n",
                   start + "%s%n\n", "zelkora DD:get_conf_option_str--end ret=0 \n"}));
}

TEST_F(ConfigFileTest, GetConfOptionStrOfAMissingFileClearsTheField) {
  DbgFlag = 1;
  Value out;
  EXPECT_EQ(get_conf_option_str("missing.conf", "Name", out.bytes), 0);
  EXPECT_EQ(out.padded(), std::string(36, '\0'));
  EXPECT_EQ(trace(),
            (Lines{"log zelkora DD:get_conf_option_str--start missing.conf Option:Name",
                   "perror open file error", "log zelkora DD:get_conf_option_str--end ret=0 "}));
}

TEST_F(ConfigFileTest, GetConfStrCopiesTheValueWithoutTheLastCharacterAndWithoutATerminator) {
  struct Row {
    const char* name;
    const char* line;
    const char* out;
  };
  constexpr Row kRows[] = {
      {"a line", "Key=value\n", "value???"},
      {"the first =", "Key=a=b\n", "a=b?????"},
      {"no line feed", "Key=value", "valu????"},
      {"one character", "Key=\n", "????????"},
      {"nothing behind the =", "Key=", "????????"},
      {"no =", "Key\n", "????????"},
      {"nothing", "", "????????"},
  };
  for (const Row& row : kRows) {
    SCOPED_TRACE(row.name);
    char out[9] = "????????";
    GetConfStr(row.line, out);
    EXPECT_STREQ(out, row.out);
  }
}

}  // namespace
