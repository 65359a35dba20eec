// SPDX-FileCopyrightText: 2026 The Zelkora authors
// SPDX-License-Identifier: MIT
//
// One run of one exported function with one fault: a bench that is set up anew each time, and what
// is left on the machine afterwards.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "pct_controller.h"
#include "scenes.h"
#include "support/bench.h"
#include "support/faults.h"

namespace zelkora::test {

// What a run leaves behind.
struct Aftermath {
  std::vector<FallibleCall> calls;
  size_t injected = 0;
  size_t kept_descriptors = 0;
  std::set<std::string> kept_pieces;  // records and lines that were there before
  std::set<std::string> files;
  bool image_is_whole = false;
};

class Rig : public Bench {
 public:
  explicit Rig(Scene scene) : scene_(scene) {}
  Aftermath run(void (*call)(), const FaultPlan& plan);

 private:
  void TestBody() override {}
  void write_files();
  void set_stage();
  void list_panel(int type, const std::string& node, const std::string& phys);
  void stage_pct(const PctMake& make, bool open);
  Aftermath look_around() const;

  Scene scene_;
  std::unique_ptr<sim::PctController> pct_;
};

}  // namespace zelkora::test
