// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include "QvApi_IP/Kernels/DepthChangeScalar.h"
#include "QvApi_IP/QvDepthChange.h"

namespace QvApi {
namespace {

// Arithmetic stands for a table only where it gives the same for every sample.
TEST(LockedDepthChange, ArithmeticEqualsTheTableEntryByEntry) {
  for (std::size_t source : {1, 2, 4, 8, 10, 12, 14, 16})
    for (std::size_t destination : {1, 2, 4, 8, 10, 12, 14, 16})
      for (unsigned mode : {0u, 1u, 2u, 3u, 99u}) {
        if (source == destination) continue;
        const auto expansion = static_cast<_EQvBitExpansionMode_t>(mode);
        CQvLookUpTableManager tables;
        const LockedDepthChange locked =
            LockDepthChange(tables, source, destination, 1.0, expansion);
        ASSERT_EQ(locked.table, nullptr);
        const auto table = tables.LockTable(source, destination, 1.0, expansion);
        for (unsigned x = 0; x < table->size(); ++x)
          ASSERT_EQ(Kernels::Scalar::ChangedSample(locked.change, x), (*table)[x])
              << source << " to " << destination << ", mode " << mode << ", sample " << x;
      }
}

TEST(LockedDepthChange, GammaNeedsTheTableWhereItCounts) {
  CQvLookUpTableManager tables;
  const auto lock = [&](std::size_t source, std::size_t destination, _EQvBitExpansionMode_t mode) {
    return LockDepthChange(tables, source, destination, 0.45, mode);
  };
  EXPECT_NE(lock(12, 8, QvBitExpansionMode_Gamma).table, nullptr);
  EXPECT_NE(lock(12, 8, QvBitExpansionMode_Fixed).table, nullptr);
  EXPECT_NE(lock(8, 12, QvBitExpansionMode_Gamma).table, nullptr);
  EXPECT_EQ(lock(8, 12, QvBitExpansionMode_Fixed).table, nullptr);
  EXPECT_EQ(lock(12, 12, QvBitExpansionMode_Gamma).table, nullptr);
}

}  // namespace
}  // namespace QvApi
