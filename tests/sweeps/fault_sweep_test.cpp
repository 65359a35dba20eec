// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// The fault sweep: the C library calls of a run are counted, and the run is repeated with each one
// failing once, and from there on. The process lives, keeps no descriptor but those that the
// interface keeps, and every record and line that a run without fault keeps is still there.
#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <string>
#include <vector>

#include "rig.h"

namespace zelkora::test {
namespace {

size_t g_functions = 0;
size_t g_faults = 0;
const char* g_function = "";

// A run that never ends cannot be ended from within.
[[noreturn]] void stop_endless(const FallibleCall& call) {
  std::fprintf(stderr, "%s never ends: its last call is %s\n", g_function, call.name);
  std::_Exit(1);
}

// The 63 usages of a report, set or read one by one, are one thing to go wrong: of a run of the
// same call, or of two calls in turn, the middle is left out.
bool is_amidst(const std::vector<FallibleCall>& calls, size_t at) {
  if (at < 4 || at + 2 >= calls.size()) return false;
  return calls[at] == calls[at - 2] && calls[at] == calls[at - 4] && calls[at] == calls[at + 2] &&
         calls[at - 1] == calls[at - 3] && calls[at - 1] == calls[at + 1];
}

bool knows_short(const std::string& name) {
  return name.ends_with("read") || name.ends_with("write") || name == "popen" || name == "system";
}

// What the call can fail with. Of a device's requests the library never looks at the error.
std::vector<int> errors_of(const FallibleCall& call) {
  const std::string name = call.name;
  if (name == "ioctl" || name.starts_with("tc")) return {EIO, ENODEV, EINTR};
  std::vector<int> errors = {EIO, ENODEV, EINTR, ENOSPC, EACCES, ENOMEM};
  if (knows_short(name)) errors.push_back(FaultPlan::kShort);
  return errors;
}

bool struck(const Aftermath& found, const FaultPlan& plan, std::string_view name) {
  for (size_t at = plan.first - 1; at < found.calls.size(); ++at) {
    if (found.calls[at].name == name) return true;
    if (!plan.persistent) break;
  }
  return false;
}

void expect_in_order(const Aftermath& found, const Aftermath& clean, const FaultPlan& plan,
                     size_t may_keep) {
  EXPECT_LE(found.kept_descriptors, clean.kept_descriptors + may_keep);
  for (const std::string& piece : clean.kept_pieces) {
    EXPECT_TRUE(found.kept_pieces.contains(piece)) << "lost from " << piece;
  }
  EXPECT_TRUE(found.image_is_whole);
  const bool undeletable = struck(found, plan, "unlink") || struck(found, plan, "remove") ||
                           struck(found, plan, "system");
  static const Aftermath untouched = Rig(kFiles).run([] {}, {});
  for (const std::string& file : found.files) {
    const bool expected = clean.files.contains(file) || untouched.files.contains(file);
    EXPECT_TRUE(expected || undeletable) << "left behind: " << file;
  }
}

class FaultSweep : public testing::TestWithParam<SweepRow> {
 protected:
  void sweep(Scene scene) {
    const Aftermath clean = Rig(scene).run(GetParam().call, {});
    calls_ += clean.calls.size();
    for (size_t at = 0; at < clean.calls.size(); ++at) {
      if (is_amidst(clean.calls, at)) continue;
      for (const int error : errors_of(clean.calls[at])) {
        for (const bool persistent : {false, true}) {
          inject(scene, clean, {at + 1, persistent, error});
          if (HasFailure()) return;
        }
      }
    }
  }

  size_t calls_ = 0;

 private:
  void inject(Scene scene, const Aftermath& clean, const FaultPlan& plan) {
    SCOPED_TRACE("scene " + std::to_string(scene) + ", call " + std::to_string(plan.first) + " " +
                 clean.calls[plan.first - 1].name + ", error " + std::to_string(plan.error) +
                 (plan.persistent ? " from there on" : " once"));
    const Aftermath found = Rig(scene).run(GetParam().call, plan);
    EXPECT_GE(found.injected, 1U);
    ++g_faults;  // the plan's, however often a persistent one struck
    expect_in_order(found, clean, plan, GetParam().may_keep);
  }
};

TEST_P(FaultSweep, LeavesTheMachineInOrder) {
  g_function = GetParam().function;
  Faults::on_endless = stop_endless;
  for (unsigned scene = kFiles; scene <= kAttached; scene *= 2) {
    if ((GetParam().scenes & scene) != 0) sweep(static_cast<Scene>(scene));
  }
  EXPECT_GT(calls_, 0U) << "nothing can fail: it belongs to the functions without I/O";
  ++g_functions;
}

INSTANTIATE_TEST_SUITE_P(Exports, FaultSweep,
                         testing::ValuesIn(sweep_rows().begin(), sweep_rows().end()),
                         [](const auto& row) { return std::string(row.param.function); });

// The names behind the last variable of the export list.
std::vector<std::string> exported_functions() {
  std::ifstream map(ZELKORA_EXPORT_LIST);
  EXPECT_TRUE(map.good()) << ZELKORA_EXPORT_LIST;
  std::vector<std::string> names;
  bool variables = true;
  for (std::string line; std::getline(map, line);) {
    if (line.find("/*") != line.npos) variables = line.find("Global state") != line.npos;
    const size_t end = line.find(';');
    const size_t start = line.find_first_not_of(' ');
    if (variables || end == line.npos || line.find_first_of("*}") != line.npos) continue;
    names.push_back(line.substr(start, end - start));
  }
  std::ranges::sort(names);
  return names;
}

TEST(FaultSweepTable, HasEveryExportedFunctionOnce) {
  std::vector<std::string> names(functions_without_io().begin(), functions_without_io().end());
  for (const SweepRow& row : sweep_rows()) names.emplace_back(row.function);
  std::ranges::sort(names);
  EXPECT_EQ(names, exported_functions());
}

class Total : public testing::Environment {
 public:
  void TearDown() override {
    std::printf("fault sweep: %zu functions, %zu faults\n", g_functions, g_faults);
  }
};

const testing::Environment* const kTotal = testing::AddGlobalTestEnvironment(new Total);

}  // namespace

void PrintTo(const SweepRow& row, std::ostream* out) { *out << row.function; }

}  // namespace zelkora::test
