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

/// Calls `check(count, slack)` on each of them for lines of every length up to that of several
/// vectors, and for lines that end `slack` samples before the border of their memory.
template <class Check>
void ForEachLine(Check&& check) {
  ForEachTarget([&](const std::string&) {
    for (size_t i = 0; i < 210 + 64; ++i) {
      const size_t count = i < 210 ? i : 131 + i % 3;
      SCOPED_TRACE("count " + std::to_string(count));
      check(count, i < 210 ? 0 : i - 210);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

}  // namespace QvApi::Kernels
