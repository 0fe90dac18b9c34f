// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <limits>
#include <random>

#include "QvApi_IP/QvPolarizationTables.h"

namespace QvApi {
namespace {

TEST(VirtualPolarizerTable, WorkedByHand) {
  const struct {
    double angle;
    double weights[4];
  } kCases[] = {
      {0, {1, 0, 0, 0}},
      {45, {0, 1, 0, 0}},
      {90, {0, 0, 1, 0}},
      {135, {0, 0, 0, 1}},
      {180, {1, 0, 0, 0}},
      {-45, {0, 0, 0, 1}},
      {22.5, {0.5625, 0.5625, -0.0625, -0.0625}},
      {67.5, {-0.0625, 0.5625, 0.5625, -0.0625}},
      {112.5, {-0.0625, -0.0625, 0.5625, 0.5625}},
      {157.5, {0.5625, -0.0625, -0.0625, 0.5625}},
      {-22.5, {0.5625, -0.0625, -0.0625, 0.5625}},
      {1000 * 180 + 22.5, {0.5625, 0.5625, -0.0625, -0.0625}},
      {std::numeric_limits<double>::infinity(), {1, 0, 0, 0}},
      {std::nan(""), {1, 0, 0, 0}},
      {-1e-20, {1, 0, 0, 0}},
  };
  for (const auto& c : kCases)
    for (std::size_t bits : {8, 10, 12}) {
      CQvLookUpTableForVirtualPolarizerManager manager;
      const auto& entries = manager.LockTable(bits, c.angle)->Entries();
      ASSERT_EQ(entries.size(), std::size_t{4} << bits);
      for (std::size_t k = 0; k < 4; ++k)
        for (std::size_t i = 0; i < std::size_t{1} << bits; ++i)
          ASSERT_EQ(entries[(k << bits) + i], c.weights[k] * 16384 * static_cast<double>(i))
              << c.angle << " block " << k << " entry " << i;
    }
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

TEST(VirtualPolarizerTable, EndsForEveryAngle) {
  CQvLookUpTableForVirtualPolarizerManager manager;
  for (double angle : {1e300, -1e300, std::numeric_limits<double>::max(), -5e-324, 1e17})
    EXPECT_EQ(manager.LockTable(8, angle)->Entries().size(), 1024u);
}

TEST(VirtualPolarizerTable, IsKeptWhileItsKeyHolds) {
  CQvLookUpTableForVirtualPolarizerManager manager;
  const auto table = manager.LockTable(8, 30);
  EXPECT_EQ(manager.LockTable(8, 30), table);
  EXPECT_NE(manager.LockTable(8, 30.5), table);
  EXPECT_NE(manager.LockTable(10, 30), table);
  EXPECT_EQ(manager.LockTable(8, 210)->Entries(), table->Entries());
}

/// The formulas again, plainly.
void ExpectEntries(const StokesVectorTable& table, std::size_t bits, int s1, int s2) {
  const int n = 1 << bits;
  const auto place =
      2 * ((static_cast<std::size_t>(s2 + n) << (bits + 1)) + static_cast<std::size_t>(s1 + n));
  const double x = s1, y = s2;
  const double length = std::sqrt(x * x + y * y);
  ASSERT_EQ(table.Entries()[place], static_cast<std::uint32_t>(std::fma(2 * (n - 1), length, 0.5)))
      << s1 << ", " << s2;
  double angle = std::atan2(y, x);
  if (angle < 0) angle += 6.283185307179586;
  const double scaled = ((n - 1) / 6.283185307179586) * angle;
  ASSERT_EQ(table.Entries()[place + 1],
            s1 == 0 && s2 == 0 ? 0 : static_cast<std::uint32_t>(scaled + 0.5))
      << s1 << ", " << s2;
}

TEST(StokesVectorTable, WorkedByHand) {
  CQvLookUpTableForStokesVectorManager manager;
  const auto table = manager.LockTable(8);
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
  for (const auto& c : kCases) {
    const auto place = static_cast<std::size_t>(2 * ((c.s2 + 256) * 512 + c.s1 + 256));
    EXPECT_EQ(table->Entries()[place], c.magnitude) << c.s1 << ", " << c.s2;
    EXPECT_EQ(table->Entries()[place + 1], c.angle) << c.s1 << ", " << c.s2;
  }
}

TEST(StokesVectorTable, HoldsWhatTheFormulasGive) {
  CQvLookUpTableForStokesVectorManager manager;
  for (std::size_t bits : {8, 10}) {
    const auto table = manager.LockTable(bits);
    const int n = 1 << bits;
    ASSERT_EQ(table->Entries().size(), std::size_t{8} << 2 * bits);
    for (int s2 = -n; s2 < n; ++s2)
      for (int s1 = -n; s1 < n; ++s1) {
        ExpectEntries(*table, bits, s1, s2);
        if (HasFatalFailure()) return;
      }
  }
}

TEST(StokesVectorTable, HoldsWhatTheFormulasGiveAt12Bits) {
  CQvLookUpTableForStokesVectorManager manager;
  const auto table = manager.LockTable(12);
  EXPECT_EQ(table->Entries().size_bytes(), std::size_t{512} << 20);
  EXPECT_EQ(manager.LockTable(12), table);
  std::mt19937 random(7);
  const auto any = [&] { return static_cast<int>(random() >> 19) - 4096; };
  for (int i = 0; i < 3'000'000; ++i) ExpectEntries(*table, 12, any(), any());
  for (int s = -4096; s < 4096; ++s)
    for (int other : {-4096, -4095, -1, 0, 1, 4095, s}) {
      ExpectEntries(*table, 12, s, other);
      ExpectEntries(*table, 12, other, s);
    }
}

/// What happens to a table that finds no memory; false if anything else does.
bool FailsAndRecovers() {
  CQvLookUpTableForStokesVectorManager manager;
  const auto small = manager.LockTable(8);
  rlimit old{};
  getrlimit(RLIMIT_AS, &old);
  const rlimit tight{std::size_t{300} << 20, old.rlim_max};
  setrlimit(RLIMIT_AS, &tight);
  for (int attempt = 0; attempt < 2; ++attempt) try {
      manager.LockTable(12);
      return false;
    } catch (const GenICam::BadAllocException& error) {
      if (std::string(error.GetDescription()) != "std::bad_alloc") return false;
    }
  setrlimit(RLIMIT_AS, &old);
  const auto again = manager.LockTable(8);
  return again != small && manager.LockTable(12)->Entries().size() == std::size_t{8} << 24;
}

// A limit of address space is nothing that sanitizers can live with.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
TEST(StokesVectorTable, DISABLED_LeavesTheManagerEmptyWithoutMemory) {
#else
TEST(StokesVectorTable, LeavesTheManagerEmptyWithoutMemory) {
#endif
  EXPECT_EXIT(_exit(FailsAndRecovers() ? 0 : 1), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace QvApi
