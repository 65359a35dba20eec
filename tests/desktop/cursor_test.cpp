// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
#include "support/bench.h"

namespace {

using CursorTest = zelkora::test::Bench;

struct Query {
  const char* name;
  int (*ask)(int);
  int byte;
  int without_configuration;  // when the byte held 5
};

constexpr Query kQueries[] = {
    {"get_en_hide_cursor", get_en_hide_cursor, 6, 5},
    {"get_dis_res_hide_cursor", get_dis_res_hide_cursor, 8, 0},
};

TEST_F(CursorTest, EachQueryAnswersWithItsByteOfAFreshConfiguration) {
  int reads = 0;
  for (const Query& row : kQueries) {
    SCOPED_TRACE(row.name);
    for (const int value : {1, 0, 0x80, 0xFF}) {
      host.config.fill(0x33);
      host.config[static_cast<size_t>(row.byte)] = static_cast<unsigned char>(value);
      EXPECT_EQ(row.ask(value), value);
      EXPECT_EQ(host.config_reads, ++reads);
    }
  }
}

TEST_F(CursorTest, WithoutAConfigurationOnlyTheFirstKeepsItsAnswer) {
  for (const Query& row : kQueries) {
    SCOPED_TRACE(row.name);
    host.config[static_cast<size_t>(row.byte)] = 5;
    host.config_read = 1;
    EXPECT_EQ(row.ask(0), 5);
    host.config_read = 0;
    EXPECT_EQ(row.ask(0), row.without_configuration);
  }
}

TEST_F(CursorTest, AskingReadsTheDebugSwitchToo) {
  for (const Query& row : kQueries) {
    host.debug = 1 - host.debug;
    row.ask(0);
    EXPECT_EQ(DbgFlag, host.debug) << row.name;
  }
}

}  // namespace
