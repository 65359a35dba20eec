// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Fetching a parameter set: what each mode does to both files, the X input driver, the controller
// and the record.
#include "persistence_bench.h"

namespace {

using namespace zelkora::test;

class PersistenceFetchTest : public PersistenceBench {
 protected:
  struct FetchRow {
    const char* name;
    Lines modes;
    Files before, after;
    int result;
    std::optional<ParameterSet> set;  // what the record holds, if anything
    bool stored;                      // whether the driver was told
  };
  static std::vector<FetchRow> fetch_rows();

  void check_fetch(const FetchRow& row, const std::string& mode) {
    SCOPED_TRACE(row.name + (" " + mode));
    write_files(row.before);
    clear_trace();
    PCTDevInfo rec{};
    rec.DevNum = 77;
    EXPECT_EQ(fetch(rec, std::stoi(mode)), row.result);
    EXPECT_EQ(rec.DevNum, unsigned{kPanel});
    EXPECT_EQ(settings_of(rec),
              settings_of(row.set ? host_record(*row.set, kOwnNumber) : PCTDevInfo{}));
    EXPECT_EQ(files(), row.after);
    EXPECT_EQ(done(), opened(fetched(row)));
    EXPECT_EQ(messages_of({"=================PCT", "PCTGetAllParams"}),
              debug_messages({"=================PCTGetAllParams start==========================\n",
                              "PCTGetAllParams--Mode:" + mode + " DevNum:2\n",
                              "=================PCTGetAllParams end==========================\n"}));
  }
  // The current set is loaded first, and the temporary one made of it.
  Lines fetched(const FetchRow& row) const {
    if (!row.set) return {};
    return joined({made({row.before.current, ""}, row.after), row.stored ? notification() : Lines(),
                   told(*row.set), made({"", row.before.temporary}, row.after)});
  }

  int fetch(PCTDevInfo& rec, int mode) {
    return PCTGetAllParams(kPanel, &rec, static_cast<signed char>(mode));
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, PersistenceFetchTest, testing::ValuesIn(kWays), way_name);

std::vector<PersistenceFetchTest::FetchRow> PersistenceFetchTest::fetch_rows() {
  const std::string replaced = store_record(replaced_keys(), payload(loud_set(), kOtherNumber));
  const Lines only = {"4", "7"};
  return {
      {"fetch and keep it",
       {"0", "3"},
       {own_loud(), kNoFile},
       {own_loud(), own_loud()},
       1,
       loud_set(),
       false},
      {"fetch and keep it over another",
       {"0", "3"},
       {own_loud(), own_quiet()},
       {own_loud(), own_loud()},
       1,
       loud_set(),
       false},
      {"fetch and keep it over one erased",
       {"0", "3"},
       {own_loud(), erased_record()},
       {own_loud(), own_loud()},
       1,
       loud_set(),
       false},
      {"fetch the defaults and keep them",
       {"0", "3"},
       {},
       {own_default(), own_default()},
       1,
       default_set(),
       true},
      {"fetch another panel's and keep it",
       {"0", "3"},
       {replaced, strange_record()},
       {own_loud(), strange_record() + own_loud()},
       1,
       loud_set(),
       true},
      {"fetch only",
       only,
       {own_loud(), own_quiet()},
       {own_loud(), own_quiet()},
       3,
       loud_set(),
       false},
      {"fetch only, with no other",
       only,
       {own_loud(), kNoFile},
       {own_loud(), kNoFile},
       3,
       loud_set(),
       false},
      {"fetch only the defaults", only, {}, {own_default(), kNoFile}, 1, default_set(), true},
      {"no such mode",
       {"1", "2", "5", "6", "8", "127", "-1", "-3", "-4", "-128"},
       {own_loud(), own_quiet()},
       {own_loud(), own_quiet()},
       0,
       {},
       false},
  };
}

TEST_P(PersistenceFetchTest, FetchingByMode) {
  for (const FetchRow& row : fetch_rows()) {
    for (const std::string& mode : row.modes) check_fetch(row, mode);
  }
}

TEST_P(PersistenceFetchTest, ATemporarySetWithoutASerialNumberIsNotKeptAnew) {
  constexpr SerialNumber kNone = {};
  std::ranges::copy(kNone, entry.SN);
  const Keys keys{kPhys, digits(kNone), "2575_8753"};
  const std::string quiet = store_record(keys, payload(quiet_set(), kNone));
  const std::string loud = store_record(keys, payload(loud_set(), kNone));
  write_files({loud, quiet});
  PCTDevInfo rec{};
  EXPECT_EQ(fetch(rec, 0), 3) << "the result of the current set";
  EXPECT_EQ(settings_of(rec), settings_of(host_record(loud_set(), kNone)));
  EXPECT_EQ(files(), (Files{loud, quiet}));
  EXPECT_EQ(fetch(rec, 3), 1);
  EXPECT_EQ(files(), (Files{loud, loud}));
}

TEST_P(PersistenceFetchTest, ACurrentSetThatCannotBeStoredIsKeptAllTheSame) {
  for (const int mode : {0, 3}) {
    write_files({});
    forbid(kRecords);
    clear_trace();
    PCTDevInfo rec{};
    EXPECT_EQ(fetch(rec, mode), 1) << "the result of the temporary set";
    EXPECT_EQ(read_file(kTemporaryRecords), own_default());
    EXPECT_EQ(done(), opened(joined({notification(), made_world_writable(kTemporaryRecords)})));
  }
  for (const int mode : {4, 7}) {
    PCTDevInfo rec{};
    EXPECT_EQ(fetch(rec, mode), 0);
  }
}

TEST_P(PersistenceFetchTest, ATemporarySetThatCannotBeKeptFails) {
  for (const int mode : {0, 3}) {
    write_files({own_loud(), kNoFile});
    forbid(kTemporaryRecords);
    clear_trace();
    PCTDevInfo rec{};
    EXPECT_EQ(fetch(rec, mode), 0);
    EXPECT_EQ(settings_of(rec), settings_of(loud_record()));
    EXPECT_EQ(done(), opened(told(loud_set())));
  }
}

TEST_P(PersistenceFetchTest, FetchingFromAPanelThatDoesNotOpenDoesNothing) {
  kernel.fail_open(node(), EACCES, -1);
  write_files({own_loud(), own_quiet()});
  for (const int mode : {0, 3, 4, 7}) {
    clear_trace();
    PCTDevInfo rec{};
    rec.DevNum = 77;
    EXPECT_EQ(fetch(rec, mode), 0);
    EXPECT_EQ(rec.DevNum, unsigned{kPanel}) << "set before the panel is opened";
    EXPECT_EQ(files(), (Files{own_loud(), own_quiet()}));
    EXPECT_EQ(done(), Lines{"open " + std::string(node()) + " O_RDONLY -> EACCES"});
    EXPECT_EQ(
        messages(),
        (Lines{"zelkora DD:=================PCTGetAllParams start==========================\n",
               "zelkora DD:PCTGetAllParams--Mode:" + std::to_string(mode) + " DevNum:2\n",
               "EE:unable to open device\n",
               "zelkora DD:=================PCTGetAllParams end==========================\n"}));
  }
}

TEST_P(PersistenceFetchTest, FetchingReadsTheModeFlags) {
  write_file(data_file(".hybrid"), "");
  write_file(data_file("mousedef"), "");
  HidRaw = 77;
  PCTDevInfo rec = loud_record();
  EXPECT_EQ(fetch(rec, 4), 1);
  EXPECT_EQ(isHybrid, 1);
  EXPECT_EQ(isPureMouse, 1);
  EXPECT_EQ(HidRaw, entry.HidRaw);
}

}  // namespace
