// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "panel_file.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace zelkora::sim {
namespace {

class PanelFileTest : public testing::Test {
 protected:
  std::string read(const std::string& text) {
    std::istringstream file(text);
    return read_panels(file, "kiosk.panels", panels_);
  }
  std::vector<std::string> names() const {
    std::vector<std::string> names;
    for (const PanelDescription& panel : panels_) names.push_back(panel.identity.product_name);
    return names;
  }

  std::vector<PanelDescription> panels_;
};

TEST_F(PanelFileTest, HasAPanelOnEachLineInTheirOrder) {
  EXPECT_EQ(read("resistive,name=One\npct8752,name=Two\npct8753,name=Three\nresistive,name=Four\n"
                 "pct8753,name=Five"),
            "");
  EXPECT_EQ(names(), (std::vector<std::string>{"One", "Two", "Three", "Four", "Five"}));
}

TEST_F(PanelFileTest, MayHaveBlankLinesCommentsAndBlanksAround) {
  EXPECT_EQ(read("# panels\n\n \t\n  resistive,name=One  \r\n\tpct8753,name=Two # and a word\n"
                 "   # resistive,name=Three\n"),
            "");
  EXPECT_EQ(names(), (std::vector<std::string>{"One", "Two"}));
}

TEST_F(PanelFileTest, KeepsNumberSignsThatBeginNoComment) {
  EXPECT_EQ(read("resistive,name=No#1\nresistive,name=\"No #2\" # this one does\n"), "");
  EXPECT_EQ(names(), (std::vector<std::string>{"No#1", "No #2"}));
}

TEST_F(PanelFileTest, AddsToThePanelsThereAre) {
  panels_.resize(1);
  EXPECT_EQ(read("pct8753"), "");
  EXPECT_EQ(names(), (std::vector<std::string>{"Virtual Resistive", "Virtual PCT"}));
}

TEST_F(PanelFileTest, NamesFileAndLineOfAMistake) {
  EXPECT_EQ(read("# first\n\nresistive,beep=2\npct8753,pos=9\nnonsense\n"),
            "kiosk.panels:4: '9' is no value for 'pos': expected MODE, 1..4");
}

TEST_F(PanelFileTest, DescribesAtLeastOnePanel) {
  EXPECT_EQ(read(""), "kiosk.panels: describes no panel");
  panels_.resize(1);
  EXPECT_EQ(read("# nothing\n"), "kiosk.panels: describes no panel");
}

TEST_F(PanelFileTest, IsReadFromTheDisk) {
  std::ofstream("kiosk.panels") << "pct8752\n";
  EXPECT_EQ(read_panel_file("kiosk.panels", panels_), "");
  EXPECT_EQ(names(), (std::vector<std::string>{"Virtual PCT"}));
  std::filesystem::remove("kiosk.panels");
  EXPECT_EQ(read_panel_file("kiosk.panels", panels_), "kiosk.panels: No such file or directory");
}

TEST_F(PanelFileTest, IsNoDirectory) {
  EXPECT_EQ(read_panel_file("/dev", panels_), "/dev: cannot be read");
}

}  // namespace
}  // namespace zelkora::sim
