// SPDX-License-Identifier: MIT
// Tables from depth to depth, and the arithmetic that stands for them.
#include "QvApi_IP/QvLookUpTable.h"

#include <gtest/gtest.h>

#include <cmath>

#include "QvApi_IP/Kernels/DepthChangeScalar.h"
#include "QvApi_IP/QvDepthChange.h"

namespace QvApi {
namespace {

constexpr auto kGammaMode = QvBitExpansionMode_Gamma;

/// In extended precision; where that is too near to a rounding border to tell, both are taken.
TEST(LookUpTable, FollowsTheCurveFromFullScaleToFullScale) {
  for (std::size_t source : {1, 4, 8, 10, 12, 16})
    for (std::size_t destination : {8, 10, 14, 16})
      for (double gamma : {0.0, 0.45, 1.0, 2.2, 3.9999, 4.0}) {
        const auto table =
            CQvLookUpTableManager().LockTable(source, destination, gamma, kGammaMode);
        const auto maximum = static_cast<long double>((1U << destination) - 1);
        for (unsigned i = 0; i < table->size(); ++i) {
          const auto x = static_cast<long double>(i) / static_cast<long double>(table->size() - 1);
          const long double exact = std::pow(x, static_cast<long double>(gamma)) * maximum;
          if (gamma == 1.0 && source >= destination)
            ASSERT_EQ((*table)[i], i >> (source - destination));
          else
            ASSERT_LE(std::fabs((*table)[i] - exact), 0.5L + 1e-9L)
                << i << ": " << source << " to " << destination << " gamma " << gamma;
        }
      }
}

TEST(LookUpTable, StaysInRangeForAnyGammaThatARegisterCanHold) {
  CQvLookUpTableManager manager;
  for (double gamma : {-1.0, -1e300, -HUGE_VAL, HUGE_VAL, 1e300, std::nan("")})
    for (std::size_t destination : {8, 12, 16}) {
      const auto table = manager.LockTable(10, destination, gamma, kGammaMode);
      const unsigned maximum = (1U << destination) - 1;
      for (unsigned entry : *table) ASSERT_LE(entry, maximum);
      EXPECT_EQ(table->back(), maximum) << gamma;  // 1 to any power
      if (!std::isnan(gamma)) {
        EXPECT_EQ(table->front(), gamma < 0 ? maximum : 0) << gamma;  // 0 to that power
      }
    }
}

TEST(LookUpTable, IsKeptWhileItsKeyHolds) {
  CQvLookUpTableManager manager;
  const auto narrow = manager.LockTable(12, 8, 2.0, kGammaMode);
  const auto content = *narrow;
  // The mode is nothing to fewer bits, nor to equal ones.
  EXPECT_EQ(manager.LockTable(12, 8, 2.0, QvBitExpansionMode_LeftShiftBy1), narrow);
  const auto other = manager.LockTable(12, 8, 2.1, kGammaMode);
  EXPECT_NE(other, narrow);
  EXPECT_EQ(*narrow, content) << "a table in use changed";
  EXPECT_NE(*manager.LockTable(10, 8, 2.1, kGammaMode), *other);
  EXPECT_EQ(*manager.LockTable(12, 8, 2.0, kGammaMode), content);
  const auto wide = manager.LockTable(8, 12, 1.0, QvBitExpansionMode_Fixed);
  EXPECT_EQ(wide->back(), 255);
  EXPECT_EQ(manager.LockTable(8, 12, 1.0, QvBitExpansionMode_Fixed), wide);
  EXPECT_NE(*manager.LockTable(8, 12, 1.0, QvBitExpansionMode_LeftShiftBy0), *wide);
}

/// It stands for a table only where it gives the same for every sample.
TEST(LockedDepthChange, ArithmeticEqualsTheTableEntryByEntry) {
  CQvLookUpTableManager tables;
  for (std::size_t source : {1, 2, 4, 8, 10, 12, 14, 16})
    for (std::size_t destination : {1, 2, 4, 8, 10, 12, 14, 16})
      for (unsigned number : {0u, 1u, 2u, 3u, 99u})
        for (double gamma : {1.0, 0.45}) {
          if (source == destination) continue;
          const auto mode = static_cast<_EQvBitExpansionMode_t>(number);
          const auto locked = LockDepthChange(tables, source, destination, gamma, mode);
          const bool isCurve = gamma != 1.0 && (source > destination || mode == kGammaMode);
          ASSERT_EQ(locked.table != nullptr, isCurve) << "arithmetic is faster";
          const auto table = tables.LockTable(source, destination, gamma, mode);
          for (unsigned x = 0; x < table->size(); ++x)
            ASSERT_EQ(Kernels::Scalar::ChangedSample(locked.change, x), (*table)[x])
                << source << " to " << destination << ", mode " << number << ", sample " << x;
        }
  EXPECT_EQ(LockDepthChange(tables, 12, 12, 0.45, kGammaMode).table, nullptr);
}

}  // namespace
}  // namespace QvApi
