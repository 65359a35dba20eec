// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Files that break the usual bounds: over-long lines, too many lines, bytes of any value. A rewrite
// loses none of them.
#include <string>

#include "support/bench.h"

namespace {

using zelkora::test::data_file;
using zelkora::test::read_file;
using zelkora::test::write_file;

class FileLinesTest : public zelkora::test::Bench {
 protected:
  const char* file_with(const std::string& text) {
    write_file(path_, text);
    return path_.c_str();
  }
  const char* path() const { return path_.c_str(); }

  // What "Beep" is set to 7 in this text.
  std::string rewritten(const std::string& text) {
    EXPECT_EQ(set_conf_option(file_with(text), "Beep", 7), 1);
    return read_file(path_);
  }

 private:
  std::string path_ = data_file("settings.conf");
};

std::string numbered_lines(int count) {
  std::string text;
  for (int i = 0; i < count; ++i)
    text += "Line" + std::to_string(i) + "=" + std::to_string(i) + "\n";
  return text;
}

TEST_F(FileLinesTest, TenThousandLinesStayAsTheyAre) {
  const std::string before = numbered_lines(5000);
  const std::string behind = numbered_lines(5000);
  EXPECT_EQ(rewritten(before + "Beep=1\n" + behind), before + "Beep=7\n" + behind);
  EXPECT_EQ(get_conf_option(path(), "Beep", 0), 7);
}

TEST_F(FileLinesTest, TenThousandLinesStayAsTheyAreWhenTheKeyIsMissing) {
  const std::string text = numbered_lines(10000);
  EXPECT_EQ(set_conf_option_str(file_with(text), "Beep", "7"), 0);
  EXPECT_EQ(read_file(path()), text);
}

TEST_F(FileLinesTest, LinesOfEveryLengthStayAsTheyAre) {
  for (const size_t length : {1, 253, 254, 255, 256, 257, 509, 510, 511, 512, 5000, 100000}) {
    SCOPED_TRACE(length);
    const std::string line(length, 'x');
    EXPECT_EQ(rewritten(line + "\nBeep=1\n" + line + "\n"), line + "\nBeep=7\n" + line + "\n");
    EXPECT_EQ(rewritten("Beep=1\n" + line), "Beep=7\n" + line);
    EXPECT_EQ(get_conf_option(path(), "Beep", 0), 7);
  }
}

TEST_F(FileLinesTest, BytesOfEveryValueStayAsTheyAre) {
  std::string bytes;
  for (int value = 0; value < 256; ++value) bytes += static_cast<char>(value);
  EXPECT_EQ(rewritten(bytes + "\nBeep=1\n" + bytes), bytes + "\nBeep=7\n" + bytes);
  const std::string zeros(1000, '\0');
  EXPECT_EQ(rewritten(zeros + "\nBeep=1\n" + zeros), zeros + "\nBeep=7\n" + zeros);
}

TEST_F(FileLinesTest, AKeyIsFoundBehindOverLongLines) {
  const std::string line(5000, 'x');
  EXPECT_EQ(get_conf_option(file_with(line + "\nBeep=3\n"), "Beep", 0), 3);
  EXPECT_EQ(ReadIniKeyValue(file_with(line + "\n[S]\n" + line + "\nBeep=3\n"), "S", "Beep", 0), 3);
  char text[36];
  EXPECT_EQ(get_conf_option_str(path(), "Beep", text), 1);
  EXPECT_STREQ(text, "3");
}

TEST_F(FileLinesTest, AnOverLongLineIsReadInPiecesOf255Characters) {
  struct Row {
    const char* name;
    std::string text;
    int value;  // -1 is the default
  };
  const Row rows[] = {
      {"a key at the end of a piece", std::string(249, 'x') + "Beep=5\n", 5},
      {"a value that ends with its piece", std::string(249, 'x') + "Beep=56\n", 5},
      {"a key at the beginning of the second piece", std::string(255, 'x') + "Beep=5\n", 5},
      {"a key across the border", std::string(253, 'x') + "Beep=5\n", -1},
      {"an = in the next piece", std::string(251, 'x') + "Beep=5\n", -1},
      {"a comment sign counts for its piece", "#" + std::string(254, 'x') + "Beep=5\n", 5},
      {"a NUL ends no piece", std::string("#\0Beep=5\n", 9), -1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.name);
    EXPECT_EQ(get_conf_option(file_with(row.text), "Beep", -1), row.value);
  }
}

TEST_F(FileLinesTest, AnOverLongLineThatHoldsTheKeyLosesThatPieceAlone) {
  const std::string piece(255, 'x');
  const std::string key_piece = "Beep=" + std::string(250, 'y');
  EXPECT_EQ(rewritten(key_piece + piece + "\nA=1\n"), "Beep=7\n" + piece + "\nA=1\n");
  EXPECT_EQ(rewritten(piece + key_piece + piece + "\n"), piece + "Beep=7\n" + piece + "\n");
}

TEST_F(FileLinesTest, ALineThatHoldsTheKeyBehindANulIsReplacedAsAWhole) {
  EXPECT_EQ(rewritten(std::string("A=1\nx\0Beep=1\nC=3\n", 17)), "A=1\nBeep=7\nC=3\n");
}

TEST_F(FileLinesTest, AnOverLongValueIsCutToItsField) {
  char text[36];
  EXPECT_EQ(get_conf_option_str(file_with("Name=" + std::string(5000, 'n') + "\n"), "Name", text),
            1);
  EXPECT_STREQ(text, std::string(35, 'n').c_str());
}

}  // namespace
