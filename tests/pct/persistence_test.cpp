// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The parameters of one panel by its index: fetched, set to the defaults, cleared; and the checksum
// that resistive controllers keep.
#include <optional>

#include "persistence_bench.h"

namespace {

// What the library's calls of GetMyHidDeviceParames() return instead of what they came to.
std::optional<int> g_load_result;

}  // namespace

// A call from one file of the library to another lands here: no store file leads to every result
// that its callers know.
int GetMyHidDeviceParames(PCTDevInfo* rec) {
  static const auto kOwn = zelkora::test::next<int (*)(PCTDevInfo*)>("GetMyHidDeviceParames");
  const int result = kOwn(rec);
  return g_load_result.value_or(result);
}

namespace {

using namespace zelkora::test;

class PersistenceTest : public PersistenceBench {
 protected:
  void SetUp() override {
    PersistenceBench::SetUp();
    std::strcpy(entry.FWVersion, "S3.0.81(r564) %s%n");
    entry.POSMode = 3;
  }
  void TearDown() override {
    g_load_result.reset();
    PersistenceBench::TearDown();
  }

  // The panel stays open.
  void expect_left_open() { expect_leaked_descriptors(1); }

  // No mode flag is read and the carrier not chosen anew.
  static void expect_no_flags_read() {
    EXPECT_EQ(isHybrid, 0);
    EXPECT_EQ(isPureMouse, 0);
  }
  static void set_mode_flags() {
    write_file(data_file(".hybrid"), "");
    write_file(data_file("mousedef"), "");
  }
};
INSTANTIATE_TEST_SUITE_P(Pct, PersistenceTest, testing::ValuesIn(kWays), way_name);

// --- one panel's parameters ---

TEST_P(PersistenceTest, TheParametersOfAPanelComeWithItsFirmwareAndMode) {
  set_mode_flags();
  write_files({own_loud(), kNoFile});
  PCTDevInfo rec{};
  rec.DevNum = 77;
  EXPECT_EQ(GetPCTParam(kPanel, &rec), -1);
  EXPECT_EQ(settings_of(rec), settings_of(loud_record()));
  EXPECT_EQ(rec.DevNum, unsigned{kPanel});
  EXPECT_EQ(rec.POSMode, 3);
  EXPECT_EQ(rec.FWVersion, entry.FWVersion) << "the field itself, no copy";
  EXPECT_EQ(done(), opened(told(loud_set())));
  EXPECT_EQ(files(), (Files{own_loud(), kNoFile}));
  EXPECT_EQ(messages_of({"GetPCTParam "}),
            debug_messages({"GetPCTParam FWVersion:S3.0.81(r564) %s%n\n"}));
  expect_no_flags_read();
}

TEST_P(PersistenceTest, TheParametersOfANewPanelAreTheDefaultsAndAreStored) {
  PCTDevInfo rec{};
  EXPECT_EQ(GetPCTParam(kPanel, &rec), -1);
  EXPECT_EQ(settings_of(rec), settings_of(host_record(default_set(), kOwnNumber)));
  EXPECT_EQ(files(), (Files{own_default(), kNoFile}));
  EXPECT_EQ(done(),
            opened(joined({made_world_writable(kRecords), notification(), told(default_set())})));
}

TEST_P(PersistenceTest, AMovedPanelsParametersAreNoError) {
  write_file(kRecords, store_record(moved_keys(), payload(loud_set(), kOwnNumber)));
  PCTDevInfo rec{};
  EXPECT_EQ(GetPCTParam(kPanel, &rec), -1);
  EXPECT_EQ(files(), (Files{own_loud(), kNoFile}));
}

TEST_P(PersistenceTest, AStoreThatCannotBeReadIsAnErrorForUsersAndLeavesThePanelOpen) {
  forbid(kRecords);
  expect_left_open();
  host.debug = DbgFlag = 0;
  PCTDevInfo rec{};
  EXPECT_EQ(GetPCTParam(kPanel, &rec), 0);
  EXPECT_EQ(messages(), Lines{"EE:Can't read flash.\n"});
  EXPECT_EQ(done(), joined({opening(), notification()}));
  EXPECT_EQ(rec.DevNum, unsigned{kPanel});
  EXPECT_EQ(rec.POSMode, 0);
  EXPECT_EQ(rec.FWVersion, nullptr);
}

TEST_P(PersistenceTest, ARecordFoundElsewhereIsAnErrorForUsersAndLeavesThePanelOpen) {
  write_files({own_loud(), kNoFile});
  g_load_result = 2;
  expect_left_open();
  host.debug = DbgFlag = 0;
  PCTDevInfo rec{};
  EXPECT_EQ(GetPCTParam(kPanel, &rec), 0);
  EXPECT_EQ(messages(), Lines{"EE:Check sum error. You need to re-install the touch driver.\n"});
  EXPECT_EQ(done(), joined({opening(), told(loud_set())}));
  EXPECT_EQ(rec.POSMode, 0);
  EXPECT_EQ(rec.FWVersion, nullptr);
}

TEST_P(PersistenceTest, EveryOtherResultOfLoadingIsASuccess) {
  write_files({own_loud(), kNoFile});
  for (const int result : {1, 3, 4, -1, 255}) {
    SCOPED_TRACE(result);
    g_load_result = result;
    PCTDevInfo rec{};
    EXPECT_EQ(GetPCTParam(kPanel, &rec), -1);
    EXPECT_EQ(rec.FWVersion, entry.FWVersion);
  }
}

TEST_P(PersistenceTest, SavingAndFetchingGiveTheirOwnResultsForThoseOfLoading) {
  write_files({own_loud(), kNoFile});
  for (const int result : {0, 2, 7}) {
    g_load_result = result;
    PCTDevInfo rec{};
    EXPECT_EQ(PCTGetAllParams(kPanel, &rec, 4), result);
    EXPECT_EQ(PCTGetAllParams(kPanel, &rec, 3), 1);
  }
}

TEST_P(PersistenceTest, TheParametersOfAPanelThatDoesNotOpenAreNotRead) {
  kernel.fail_open(node(), EACCES, 1);
  write_files({own_loud(), kNoFile});
  PCTDevInfo rec{};
  rec.DevNum = 77;
  EXPECT_EQ(GetPCTParam(kPanel, &rec), 0);
  EXPECT_EQ(messages(), Lines{"EE:unable to open device\n"});
  EXPECT_EQ(rec.DevNum, 77U);
  EXPECT_EQ(settings_of(rec), settings_of({}));
}

// --- defaults ---

TEST_P(PersistenceTest, TheDefaultsAreStoredWithThePanelsNumberAndTheControllerNotTold) {
  HidRaw = 77;
  write_files({own_loud(), own_loud()});
  EXPECT_EQ(SetPCTDefaultFlash(kPanel), 1);
  EXPECT_EQ(HidRaw, entry.HidRaw);
  EXPECT_EQ(ActiveDevice, kPanel + 1);
  EXPECT_EQ(files(), (Files{own_default(), own_loud()}));
  // Command mode is not left.
  EXPECT_EQ(done(), joined({opening(), notification(), {"close " + std::string(node())}}));
}

TEST_P(PersistenceTest, TheMessagesOfSettingTheDefaults) {
  write_file(data_file("TouchUtil.ini"),
             "[Default]\nBeepOn=3\nPlayMethod=2\nFrequency=3000\nDuration=50\nScreenNumber=10\n"
             "ClickMode=2\nDisableRight=1\nRightTime=7\nRightRange=12\nDisableReport=1\n"
             "HideCursor=1\n");
  EXPECT_EQ(SetPCTDefaultFlash(kPanel), 1);
  EXPECT_EQ(messages_of({"***SetPCTDefaultFlash"}),
            debug_messages({"***SetPCTDefaultFlash SN:1021324354657687\n***",
                            "***SetPCTDefaultFlash beep:3 Play:2 freq:3000 dura:50 scrno:9 click:2 "
                            "right:1 time:7 range:12 up:0 DisableReport:1 HideCursor:1\n***"}));
  EXPECT_EQ(messages().back(), messages_of({"***SetPCTDefaultFlash"}).back());
}

TEST_P(PersistenceTest, DefaultsThatCannotBeStoredFail) {
  forbid(kRecords);
  EXPECT_EQ(SetPCTDefaultFlash(kPanel), 0);
  EXPECT_EQ(count_of("close"), 1U);
}

TEST_P(PersistenceTest, OnlyPanelsOfTheTableGetDefaults) {
  for (const int index : {-1, kPanel + 1, 4, 1000000, INT32_MIN}) {
    SCOPED_TRACE(index);
    EXPECT_EQ(SetPCTDefaultFlash(index), 0);
  }
  EXPECT_EQ(trace(), Lines());
  kernel.fail_open(node(), EACCES, 1);
  EXPECT_EQ(SetPCTDefaultFlash(kPanel), 0);
  EXPECT_EQ(files(), Files());
  EXPECT_EQ(count_of("mydoled_all_display"), 0U);
}

// --- clearing ---

TEST_P(PersistenceTest, ThePanelIsClearedAndLeftOpen) {
  set_mode_flags();
  expect_left_open();
  EXPECT_EQ(EmptyFlash(kPanel), 1);
  EXPECT_EQ(done(), joined({opening(), sent({0x08, 0xA8, 0x40})}));
  EXPECT_EQ(files(), Files());
  expect_no_flags_read();
}

TEST_P(PersistenceTest, AClearCommandThatDoesNotGoOutCountsAsDone) {
  if (is_8752()) return;  // its command mode needs reports that go out
  fail_sends(1);
  expect_left_open();
  EXPECT_EQ(EmptyFlash(kPanel), 1);
  EXPECT_TRUE(device.received.empty());
}

TEST_P(PersistenceTest, APanelThatDoesNotOpenIsNotCleared) {
  kernel.fail_open(node(), EACCES, 1);
  EXPECT_EQ(EmptyFlash(kPanel), 0);
  EXPECT_EQ(messages(), Lines{"EE:unable to open device\n"});
  EXPECT_TRUE(device.received.empty());
}

// --- the checksum of resistive controllers ---

using ParamCheckSumTest = Bench;

TEST_F(ParamCheckSumTest, TheChecksumIsTheValueAtAddress91) {
  Panel& panel = open_resistive();
  panel.controller.set_value(91, 0xBEEF);
  EXPECT_EQ(GetParamCheckSumDev(), 0xBEEF);
  EXPECT_EQ(trace_of({"set_report"}), Lines{"set_report 1: 06 01 47 50 35 42 0D"});
}

TEST_F(ParamCheckSumTest, AChecksumIsWrittenAndReadBack) {
  Panel& panel = open_resistive();
  EXPECT_EQ(SetParamCheckSumDev(0x1234), 0x1234);
  EXPECT_EQ(panel.controller.value(91), 0x1234);
  EXPECT_EQ(trace_of({"set_report"}), (Lines{"set_report 1: 0A 01 53 50 35 42 31 32 33 34 0D",
                                             "set_report 1: 06 01 47 50 35 42 0D"}));
  EXPECT_EQ(SetParamCheckSumDev(0xFFFF8765), 0x8765);
}

TEST_F(ParamCheckSumTest, AChecksumThatIsNotTakenIsAnErrorAndNotReadBack) {
  Panel& panel = open_resistive();
  host.debug = DbgFlag = 1;
  panel.controller.faults.bad_acknowledges = 4;
  EXPECT_EQ(SetParamCheckSumDev(0x1234), -1);
  EXPECT_EQ(messages().back(), "zelkora DD:SetParamCheckSumDev error\n");
  EXPECT_EQ(trace_of({"set_report"}),
            repeated(4, {"set_report 1: 0A 01 53 50 35 42 31 32 33 34 0D"}));
}

TEST_F(ParamCheckSumTest, ControllersOnASerialPortHaveOneToo) {
  SerialPanel& panel = open_serial();
  EXPECT_EQ(SetParamCheckSumDev(0x1234), 0x1234);
  EXPECT_EQ(panel.controller.value(91), 0x1234);
  panel.controller.faults.silent = true;
  EXPECT_EQ(GetParamCheckSumDev(), -1);
}

}  // namespace
