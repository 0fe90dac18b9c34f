// SPDX-License-Identifier: MIT
#include "QvApi_IP/QvPolarizationTables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "QvSDKCommon/ImageTestSupport.h"

namespace QvApi {
namespace {

TEST(VirtualPolarizerTable, WorkedByHand) {
  const struct {
    double angle;
    double weights[4];
  } kCases[] = {
      {0, {1, 0, 0, 0}},
      {45, {0, 1, 0, 0}},
      {135, {0, 0, 0, 1}},
      {180, {1, 0, 0, 0}},
      {-45, {0, 0, 0, 1}},
      {67.5, {-0.0625, 0.5625, 0.5625, -0.0625}},
      {-22.5, {0.5625, -0.0625, -0.0625, 0.5625}},
      {1000 * 180 + 22.5, {0.5625, 0.5625, -0.0625, -0.0625}},
      {std::numeric_limits<double>::infinity(), {1, 0, 0, 0}},
      {std::nan(""), {1, 0, 0, 0}},
      {-1e-20, {1, 0, 0, 0}},
  };
  CQvLookUpTableForVirtualPolarizerManager manager;
  for (const auto& c : kCases)
    for (std::size_t bits : {8, 12}) {
      const auto& entries = manager.LockTable(bits, c.angle)->Entries();
      ASSERT_EQ(entries.size(), std::size_t{4} << bits);
      for (std::size_t i = 0; i < entries.size(); ++i)
        ASSERT_EQ(entries[i],
                  c.weights[i >> bits] * 16384 * static_cast<double>(i % (entries.size() / 4)))
            << c.angle << " entry " << i;
    }
  for (double angle : {1e300, -1e300, std::numeric_limits<double>::max(), -5e-324, 1e17})
    EXPECT_EQ(manager.LockTable(8, angle)->Entries().size(), 1024u) << "it ends";
}

/// Weights as the polynomial through 1 at one node and 0 at the others, multiplied out otherwise
/// than the table does it; what repeated addition adds is far below one unit.
TEST(VirtualPolarizerTable, FollowsThePolynomialAtAnyAngle) {
  CQvLookUpTableForVirtualPolarizerManager manager;
  for (double angle = 0.05; angle < 180; angle += 0.73) {
    const auto& entries = manager.LockTable(12, angle)->Entries();
    const double x = std::fmod(angle, 45) / 45;  // from -1, 0, 1, 2
    const double basis[]{-x * (x - 1) * (x - 2) / 6, (x + 1) * (x - 1) * (x - 2) / 2,
                         -(x + 1) * x * (x - 2) / 2, (x + 1) * x * (x - 1) / 6};
    const auto first = static_cast<std::size_t>(angle / 45) + 3;
    for (std::size_t j = 0; j < 4; ++j)
      for (std::size_t i = 0; i < 4096; ++i) {
        const double exact = basis[j] * 16384 * static_cast<double>(i);
        const double entry = entries[((first + j) % 4 << 12) + i];
        ASSERT_LT(std::fabs(exact - entry), 1 + 1e-5) << angle;
        ASSERT_LE(std::fabs(entry), std::fabs(exact) + 1e-5) << angle << ": not toward zero";
      }
  }
}

TEST(VirtualPolarizerTable, IsKeptWhileItsKeyHolds) {
  CQvLookUpTableForVirtualPolarizerManager manager;
  const auto table = manager.LockTable(8, 30);
  EXPECT_EQ(manager.LockTable(8, 30), table);
  EXPECT_NE(manager.LockTable(8, 30.5), table);
  EXPECT_NE(manager.LockTable(10, 30), table);
  EXPECT_EQ(manager.LockTable(8, 210)->Entries(), table->Entries());
}

TEST(StokesVectorTable, WorkedByHand) {
  const struct {
    int s1, s2;
    unsigned magnitude, angle;
  } kCases[] = {
      {255, 0, 130050, 0},  {0, 0, 0, 0},
      {3, 4, 2550, 38},                              // 53.13 / 360 * 255 = 37.6
      {0, 255, 130050, 64}, {0, -255, 130050, 191},  // 63.75, 191.25
      {1, 1, 721, 32},      {-256, -256, 184640, 159},
      {1, -1, 721, 223},  // 510 * 1.41421 = 721.25; 31.875, 159.375, 223.125
  };
  const auto table = CQvLookUpTableForStokesVectorManager().LockTable(8);
  for (const auto& c : kCases) {
    const auto place = static_cast<std::size_t>(2 * ((c.s2 + 256) * 512 + c.s1 + 256));
    EXPECT_EQ(table->Entries()[place], c.magnitude) << c.s1 << ", " << c.s2;
    EXPECT_EQ(table->Entries()[place + 1], c.angle) << c.s1 << ", " << c.s2;
  }
}

TEST(StokesVectorTable, HoldsTheEntriesOfAllPairs) {
  for (unsigned bits : {8, 10}) {
    const auto table = CQvLookUpTableForStokesVectorManager().LockTable(bits);
    const Kernels::StokesScale scale(bits);
    const int n = 1 << bits;
    ASSERT_EQ(table->Entries().size(), std::size_t{8} << 2 * bits);
    auto entry = table->Entries().begin();
    for (int s2 = -n; s2 < n; ++s2)
      for (int s1 = -n; s1 < n; ++s1) {
        ASSERT_EQ(*entry++, scale.Magnitude(s1, s2)) << s1 << ", " << s2;
        ASSERT_EQ(*entry++, scale.Angle(s1, s2)) << s1 << ", " << s2;
      }
  }
}

TEST(TableCache, IsEmptyAfterABuilderFoundNoMemory) {
  TableCache<int, int> cache;
  const auto build = [] { return 10; };
  const auto first = cache.Lock(1, build);
  for (int attempt = 0; attempt < 2; ++attempt)
    EXPECT_EQ(Testing::MessageOf<GenICam::BadAllocException>(
                  [&] { cache.Lock(2, []() -> int { throw std::bad_alloc(); }); }),
              "std::bad_alloc");
  EXPECT_NE(cache.Lock(1, build), first);
  EXPECT_EQ(*cache.Lock(2, build), 10);
}

}  // namespace
}  // namespace QvApi
