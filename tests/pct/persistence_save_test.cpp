// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// Saving a parameter set: what each mode does to both files, the X input driver, the controller and
// the record.
#include "persistence_bench.h"

namespace {

using namespace zelkora::test;

class PersistenceSaveTest : public PersistenceBench {
 protected:
  struct SaveRow {
    const char* name;
    Lines modes;  // as the messages tell them
    Files before, after;
    std::optional<ParameterSet> told;  // what went to the driver and the controller, if anything
  };
  static std::vector<SaveRow> save_rows();

  void check_save(const SaveRow& row, const std::string& mode) {
    SCOPED_TRACE(row.name + (" " + mode));
    write_files(row.before);
    clear_trace();
    PCTDevInfo rec = loud_record();
    rec.DevNum = 77;
    EXPECT_EQ(save(rec, std::stoi(mode)), row.told ? 1 : 0);
    EXPECT_EQ(rec.DevNum, unsigned{kPanel});
    EXPECT_EQ(settings_of(rec),
              settings_of(host_record(row.told ? *row.told : loud_set(), kOwnNumber)));
    EXPECT_EQ(files(), row.after);
    EXPECT_EQ(
        done(),
        opened(row.told ? joined({made(row.before, row.after), notification(), told(*row.told)})
                        : Lines()));
    EXPECT_EQ(messages_of({"===================PCT", "PCTSetAllParams"}),
              debug_messages({"===================PCTSetAllParams start===================\n",
                              "PCTSetAllParams--Device2 Mode:" + mode + "\n",
                              "===================PCTSetAllParams end===================\n"}));
  }

  int save(PCTDevInfo& rec, int mode) {
    return PCTSetAllParams(kPanel, &rec, static_cast<signed char>(mode));
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, PersistenceSaveTest, testing::ValuesIn(kWays), way_name);

std::vector<PersistenceSaveTest::SaveRow> PersistenceSaveTest::save_rows() {
  const std::string elsewhere = store_record(moved_keys(), payload(default_set(), kOwnNumber));
  const std::string spoiled = store_record(own_keys(), spoiled_payload(default_set(), kOwnNumber));
  const Lines revert = {"2", "5"};
  return {
      {"save both", {"1"}, {own_quiet(), own_default()}, {own_loud(), own_loud()}, loud_set()},
      {"save both anew", {"1"}, {}, {own_loud(), own_loud()}, loud_set()},
      {"save both beside others",
       {"1"},
       {strange_record(), strange_record()},
       {strange_record() + own_loud(), strange_record() + own_loud()},
       loud_set()},
      {"save the current one",
       {"6"},
       {own_quiet(), own_default()},
       {own_loud(), own_default()},
       loud_set()},
      {"save the current one anew", {"6"}, {}, {own_loud(), kNoFile}, loud_set()},
      {"revert",
       revert,
       {own_loud(), own_default()},
       {own_default(), erased_record()},
       default_set()},
      {"revert beside others",
       revert,
       {strange_record() + own_loud(), own_default() + strange_record()},
       {strange_record() + own_default(), erased_record() + strange_record()},
       default_set()},
      {"revert with no current set",
       revert,
       {kNoFile, own_default()},
       {own_default(), erased_record()},
       default_set()},
      {"revert what was saved at another port",
       revert,
       {own_loud(), elsewhere},
       {own_default(), erased_record()},
       default_set()},
      {"nothing to revert to", revert, {own_quiet(), kNoFile}, {own_quiet(), kNoFile}, {}},
      {"revert twice", revert, {own_quiet(), erased_record()}, {own_quiet(), erased_record()}, {}},
      {"revert to what is spoiled", revert, {own_quiet(), spoiled}, {own_quiet(), spoiled}, {}},
      {"revert to a stranger's",
       revert,
       {own_quiet(), strange_record()},
       {own_quiet(), strange_record()},
       {}},
      {"no such mode",
       {"0", "3", "4", "7", "8", "127", "-1", "-2", "-5", "-128"},
       {own_quiet(), own_default()},
       {own_quiet(), own_default()},
       {}},
  };
}

TEST_P(PersistenceSaveTest, SavingByMode) {
  for (const SaveRow& row : save_rows()) {
    for (const std::string& mode : row.modes) check_save(row, mode);
  }
}

TEST_P(PersistenceSaveTest, SavingSetsTheFlagsOfTheConfigurationOfThePanel) {
  PCTDevInfo rec = loud_record();
  rec.POSEnable = rec.HidEnable = rec.SyncFlag = 0;
  ParameterSet stored = loud_set();
  stored.tail[6] = 0x00;
  stored.tail[7] = 0x0E;
  EXPECT_EQ(save(rec, 6), 1);
  EXPECT_EQ(read_file(kRecords), own_record(stored)) << "stored before they are set";
  EXPECT_EQ(settings_of(rec), settings_of(loud_record()));
}

TEST_P(PersistenceSaveTest, RevertingToAnotherPanelsSetHandsItOutAndChangesNoFile) {
  const std::string others = store_record(own_keys(), payload(default_set(), kOtherNumber));
  for (const int mode : {2, 5}) {
    write_files({own_quiet(), others});
    clear_trace();
    PCTDevInfo rec = loud_record();
    EXPECT_EQ(save(rec, mode), 0);
    EXPECT_EQ(settings_of(rec), settings_of(host_record(default_set(), kOtherNumber)));
    EXPECT_EQ(files(), (Files{own_quiet(), others}));
    EXPECT_EQ(done(), opened({}));
  }
}

TEST_P(PersistenceSaveTest, ACurrentSetThatCannotBeSavedFailsAndTellsTheControllerNothing) {
  forbid(kRecords);
  PCTDevInfo rec = loud_record();
  EXPECT_EQ(save(rec, 1), 0);
  EXPECT_EQ(read_file(kTemporaryRecords), own_loud());
  EXPECT_EQ(done(), opened(joined({made_world_writable(kTemporaryRecords), notification()})));
  clear_trace();
  EXPECT_EQ(save(rec, 6), 0);
  EXPECT_EQ(done(), opened(notification()));
}

TEST_P(PersistenceSaveTest, ARevertThatCannotBeSavedHasErasedWhatItWentBackTo) {
  write_files({kNoFile, own_default()});
  forbid(kRecords);
  PCTDevInfo rec = loud_record();
  EXPECT_EQ(save(rec, 2), 0);
  EXPECT_EQ(read_file(kTemporaryRecords), erased_record());
  EXPECT_EQ(settings_of(rec), settings_of(host_record(default_set(), kOwnNumber)));
  EXPECT_EQ(done(), opened(notification()));
}

TEST_P(PersistenceSaveTest, TheResultIsThatOfTheCurrentSetAlone) {
  forbid(kTemporaryRecords);
  PCTDevInfo rec = loud_record();
  EXPECT_EQ(save(rec, 1), 1);
  EXPECT_EQ(read_file(kRecords), own_loud());

  std::filesystem::remove(kTemporaryRecords);
  write_files({own_loud(), own_default()});
  fail_file_call("open", kTemporaryRecords, EACCES);  // cannot be erased
  EXPECT_EQ(save(rec, 2), 1);
  EXPECT_EQ(files(), (Files{own_default(), own_default()}));
}

TEST_P(PersistenceSaveTest, AControllerThatDoesNotListenChangesNoResultOfSaving) {
  device.on_command = [this](const Bytes& payload) {
    if (payload[0] == 0x91) answers_mode(payload[4]);
    if (payload[0] == 0x73) fail_sends(1);  // the report behind the question for the mode
  };
  if (!is_8752()) fail_sends(1);
  PCTDevInfo rec = loud_record();
  EXPECT_EQ(save(rec, 6), 1);
  EXPECT_FALSE(was_told());
  EXPECT_EQ(read_file(kRecords), own_loud());
}

TEST_P(PersistenceSaveTest, SavingToAPanelThatDoesNotOpenDoesNothing) {
  kernel.fail_open(node(), EACCES, -1);
  write_files({own_quiet(), own_default()});
  for (const int mode : {1, 2, 5, 6}) {
    clear_trace();
    PCTDevInfo rec = loud_record();
    rec.DevNum = 77;
    EXPECT_EQ(save(rec, mode), 0);
    EXPECT_EQ(rec.DevNum, 77U);
    EXPECT_EQ(files(), (Files{own_quiet(), own_default()}));
    EXPECT_EQ(messages(), Lines{"EE:unable to open device\n"});
    EXPECT_EQ(done(), Lines{"open " + std::string(node()) + " O_RDONLY -> EACCES"});
  }
}

TEST_P(PersistenceSaveTest, SavingReadsTheModeFlags) {
  write_file(data_file(".hybrid"), "");
  write_file(data_file("mousedef"), "");
  HidRaw = 77;
  PCTDevInfo rec = loud_record();
  EXPECT_EQ(save(rec, 6), 1);
  EXPECT_EQ(isHybrid, 1);
  EXPECT_EQ(isPureMouse, 1);
  EXPECT_EQ(HidRaw, entry.HidRaw);
}

}  // namespace
