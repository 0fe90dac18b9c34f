// SPDX-License-Identifier: MIT
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wconversion"
#pragma GCC diagnostic ignored "-Wshadow"
#include "hwy/highway.h"
#include "hwy/targets.h"
#pragma GCC diagnostic pop

namespace QvApi::Kernels {

/// Calls `check(name)` once for each instruction set that this machine and this build can run, with
/// the run-time dispatch of all kernels bound to it. Afterwards the best one is bound again.
template <class Check>
void ForEachTarget(Check&& check) {
  struct Restore {
    ~Restore() {
      hwy::SetSupportedTargetsForTest(0);
      hwy::GetChosenTarget().DeInit();
    }
  } restore;

  hwy::SetSupportedTargetsForTest(0);
  for (int64_t rest = hwy::SupportedTargets() & HWY_TARGETS; rest != 0; rest &= rest - 1) {
    const int64_t target = rest & -rest;
    hwy::SetSupportedTargetsForTest(target);
    hwy::GetChosenTarget().Update(target);
    const std::string name = hwy::TargetName(target);
    SCOPED_TRACE(name);
    check(name);
  }
}

}  // namespace QvApi::Kernels
