// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The product id that goes with a POS mode in the 8753 layout.
#include "modes_bench.h"

namespace {

using zelkora::test::Bytes;
using zelkora::test::joined;
using zelkora::test::Lines;
using zelkora::test::repeated;
using zelkora::test::report_line;
using zelkora::test::Way;
using zelkora::test::way_name;
using zelkora::test::WrittenId;

constexpr Way k8753Ways[] = {{true, 0}, {true, 2}, {true, 3}, {false, 0}, {false, 2}, {false, 3}};

class ModesProductTest : public zelkora::test::ModesBench {
 protected:
  // A reading without the requests that carry the reports.
  Lines short_reading(int mode) const {
    return joined({{"set_report 6: A2 10"},
                   settled(),
                   {"usleep 50000", report_line("get_report", 7, reply(mode))}});
  }
  // Makes the next report fail once so many modes were asked for.
  void fail_after_readings(int readings) {
    device.on_command = [this, readings, obey = device.on_command](const Bytes& payload) mutable {
      obey(payload);
      if (payload[0] == 0xA2 && --readings == 0) fail_sends(1);
    };
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, ModesProductTest, testing::ValuesIn(k8753Ways), way_name);

struct Choice {
  const char* name;
  int mode;
  unsigned vid, pid, old_pid;
  unsigned product;
};

constexpr Choice kChoices[] = {
    {"digitizer by the flash", 1, 0x2575, 0x9969, 0x1234, 0x1234},
    {"digitizer by the flash, before the panel's own", 1, 0x2575, 0x4321, 0x1234, 0x1234},
    {"digitizer without a flash entry", 1, 0x2575, 0x4321, 0, 0x4321},
    {"digitizer from mouse, vendor 2575", 1, 0x2575, 0x9969, 0, 0x8753},
    {"digitizer from hybrid, vendor 2575", 1, 0x2575, 0x9968, 0, 0x8753},
    {"digitizer from mouse, vendor 3A4C", 1, 0x3A4C, 0x9969, 0, 0x0040},
    {"digitizer from mouse, vendor 3D8E", 1, 0x3D8E, 0x9969, 0, 0x3D28},
    {"digitizer from mouse, other vendor", 1, 0x1111, 0x9969, 0, 0x8753},
    {"digitizer, mouse in the flash", 1, 0x3D8E, 0x4321, 0x9969, 0x3D28},
    {"digitizer, hybrid in the flash", 1, 0x3A4C, 0x4321, 0x9968, 0x0040},
    {"digitizer, near the ids of the modes", 1, 0x2575, 0x9969, 0x9967, 0x9967},
    {"digitizer without any id", 1, 0x2575, 0, 0, 0},
    {"mouse", 2, 0x2575, 0x8753, 0x8753, 0x9969},
    {"mouse from hybrid", 2, 0x3A4C, 0x9968, 0x0040, 0x9969},
    {"mouse already", 2, 0x2575, 0x9969, 0x8753, 0x9969},
    {"hybrid", 3, 0x2575, 0x8753, 0x8753, 0x9968},
    {"hybrid already", 3, 0x2575, 0x9968, 0x8753, 0x9968},
    {"other hybrid", 4, 0x2575, 0x9969, 0x8753, 0x9968},
    {"other hybrid already", 4, 0x2575, 0x9968, 0, 0x9968},
    {"no mode", 0, 0x2575, 0x8753, 0x8753, 0},
    {"none of the modes", 5, 0x2575, 0x8753, 0x8753, 0},
    {"none of the modes, no id", 5, 0x2575, 0, 0x8753, 0},
};

TEST_P(ModesProductTest, EachModeHasItsProductId) {
  open_way();
  for (const Choice& row : kChoices) {
    SCOPED_TRACE(row.name);
    entry.VID = row.vid;
    entry.PID = row.pid;
    entry.OldPID = row.old_pid;
    const Bytes before(reinterpret_cast<uint8_t*>(&entry), reinterpret_cast<uint8_t*>(&entry + 1));
    written_ids.clear();
    report(row.mode);
    clear_trace();
    const bool other = row.pid != row.product;
    EXPECT_EQ(SetCurrPOSMode(kPanel, row.mode), other ? 1 : 0);
    EXPECT_EQ(written_ids,
              other ? std::vector<WrittenId>({{row.vid, row.product}}) : std::vector<WrittenId>());
    EXPECT_EQ(Lines(messages().begin(), messages().begin() + 2),
              joined({start_message(), choice_message(row.product, row.mode)}));
    // The new id shows with the next enumeration.
    EXPECT_EQ(before,
              Bytes(reinterpret_cast<uint8_t*>(&entry), reinterpret_cast<uint8_t*>(&entry + 1)));
  }
}

TEST_P(ModesProductTest, AModeThatIsNoneKeepsTheProductIdChosenBefore) {
  open_way();
  std::deque<int> modes(12, 0);  // not taken, so the mode 0 is settled on
  modes.push_back(4);
  report_next(modes);
  EXPECT_EQ(SetCurrPOSMode(kPanel, 3), 1);
  // Written for the hybrid, and again as the table still has the old one. The controller then tells
  // that it is a hybrid, which counts as whatever was asked for.
  EXPECT_EQ(written_ids, (std::vector<WrittenId>{{0x2575, 0x9968}, {0x2575, 0x9968}}));
  const Lines said = choice_message(0x9968, 0);
  EXPECT_EQ(std::count(messages().begin(), messages().end(), said[0]), 1);
  EXPECT_EQ(std::count(messages().begin(), messages().end(), current_message(0)[0]), 2);
}

TEST_P(ModesProductTest, ADigitizerIsNotTakenForAHybrid) {
  const struct {
    const char* name;
    unsigned pid;
    int asked, reported;
    bool there;
  } kRows[] = {
      {"hybrid", 0x9968, 3, 3, true},           {"hybrid for the other", 0x9968, 3, 4, true},
      {"other hybrid", 0x9968, 4, 4, true},     {"other hybrid for hybrid", 0x9968, 4, 3, true},
      {"digitizer", 0x9968, 3, 1, false},       {"mouse", 0x9968, 3, 2, false},
      {"no mode", 0x9968, 3, 0, false},         {"a fifth mode", 0x9968, 3, 5, false},
      {"mouse asked", 0x9969, 2, 3, false},     {"mouse asked, other hybrid", 0x9969, 2, 4, false},
      {"digitizer asked", 0x8753, 1, 3, false},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    entry.PID = row.pid;
    open_way();
    report(row.reported);
    take_modes();
    const bool there = SetCurrPOSMode(kPanel, row.asked) == 0;
    EXPECT_EQ(there, row.there);
    EXPECT_EQ(messages()[5], current_message(there ? row.asked : row.reported)[0]);
    ::close(fd);
  }
}

TEST_P(ModesProductTest, EitherHybridIsAsGoodAfterAWrite) {
  open_way();
  report_next({1, 1, 4});
  EXPECT_EQ(SetCurrPOSMode(kPanel, 3), 1);
  EXPECT_EQ(wire(), joined({writing_id(0x9968),
                            reading(1),
                            writing(3),
                            reading(1),
                            writing(3),
                            reading(4),
                            {"usleep 200000"}}));
  EXPECT_EQ(messages()[messages().size() - 2],
            "zelkora DD:***SetCurrPOSMode WritePOSMode mode:3 NewPosMode:3***\n");
}

TEST_P(ModesProductTest, AProductIdIsTriedSixTimesWithFiveWaits) {
  open_way();
  for (const size_t failures : {1U, 4U, 5U}) {
    SCOPED_TRACE(failures);
    report(1);
    take_modes();
    clear_trace();
    fail_sends(static_cast<int>(failures));
    EXPECT_EQ(SetCurrPOSMode(kPanel, 2), 1);
    EXPECT_EQ(exchanges(), joined({repeated(failures, {"usleep 200000"}),
                                   {"set_report 243: 08 00 02 00 00 75 25 69 99"},
                                   settled(),
                                   short_reading(1),
                                   {"set_report 8: 84 C9 00 21"},
                                   settled(),
                                   short_reading(2),
                                   {"usleep 200000"}}));
  }
  clear_trace();
  fail_sends(6);
  EXPECT_EQ(SetCurrPOSMode(kPanel, 3), 0);
  EXPECT_EQ(exchanges(), repeated(5, {"usleep 200000"}));
  EXPECT_EQ(messages(), joined({start_message(), choice_message(0x9968, 3),
                                repeated(6, id_message(0x9968)), end_message(0)}));
}

TEST_P(ModesProductTest, TriesOfTheProductIdAreNotTakenFromThoseOfTheMode) {
  open_way();
  report(1);
  take_modes(10);
  fail_sends(5);
  EXPECT_EQ(SetCurrPOSMode(kPanel, 2), 1);
  EXPECT_EQ(written_modes, std::vector<int>(11, 2));
}

// The attempts stay spent after eleven misses.
TEST_P(ModesProductTest, AProductIdThatFailsAfterElevenMissesIsNotTriedAgain) {
  entry.PID = 0x9969;
  open_way();
  report(1);
  fail_after_readings(12);
  EXPECT_EQ(SetCurrPOSMode(kPanel, 2), 0);
  EXPECT_EQ(written_modes.size(), 11U);
  EXPECT_EQ(count_of("usleep 200000"), 0U);
  EXPECT_EQ(Lines(messages().end() - 3, messages().end()),
            joined({choice_message(0x8753, 1), id_message(0x8753), end_message(0)}));
}

TEST_P(ModesProductTest, AnIdWrittenBeforeStillWantsAReset) {
  open_way();
  report(3);
  fail_after_readings(12);
  EXPECT_EQ(SetCurrPOSMode(kPanel, 2), 1);
  EXPECT_EQ(written_ids, (std::vector<WrittenId>{{0x2575, 0x9969}}));
  EXPECT_EQ(count_of("usleep 200000"), 0U);
  EXPECT_EQ(Lines(messages().end() - 3, messages().end()),
            joined({choice_message(0x9968, 3), id_message(0x9968), end_message(1)}));
}

}  // namespace
