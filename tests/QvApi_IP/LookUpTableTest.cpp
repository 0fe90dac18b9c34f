// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "QvApi_IP/QvLookUpTable.h"

namespace QvApi {
namespace {

constexpr auto kGammaMode = QvBitExpansionMode_Gamma;

TEST(LookUpTable, WorkedByHand) {
  const struct {
    std::size_t source, destination;
    double gamma;
    unsigned mode, index, entry;
  } kCases[] = {
      {12, 8, 1.0, 0, 4095, 255},  {12, 8, 1.0, 0, 15, 0},     {12, 8, 1.0, 3, 16, 1},
      {12, 8, 2.0, 0, 0, 0},       {12, 8, 2.0, 0, 4095, 255}, {8, 12, 1.0, 1, 255, 255},
      {8, 12, 1.0, 2, 255, 4080},  {8, 12, 1.0, 3, 255, 4095}, {8, 12, 1.0, 3, 0, 15},
      {8, 12, 1.0, 0, 255, 4095},  {8, 12, 1.0, 0, 1, 16},     {8, 12, 1.0, 99, 1, 16},
      {8, 12, 1.0, 99, 255, 4080}, {8, 16, 1.0, 0, 1, 257},    {8, 8, 1.0, 0, 200, 200},
      {8, 8, 2.0, 3, 128, 64},  // (128 / 255)^2 * 255 = 64.25
      {1, 8, 1.0, 0, 1, 255},      {4, 16, 1.0, 1, 15, 15},    {16, 1, 1.0, 0, 0x8000, 1},
      {16, 16, 0.0, 0, 0, 0xFFFF}, {8, 10, 4.0, 2, 255, 1020}, {8, 10, 0.0, 0, 7, 1023},
  };
  for (const auto& c : kCases) {
    CQvLookUpTableManager manager;
    const auto table = manager.LockTable(c.source, c.destination, c.gamma,
                                         static_cast<_EQvBitExpansionMode_t>(c.mode));
    ASSERT_EQ(table->size(), std::size_t{1} << c.source);
    EXPECT_EQ((*table)[c.index], c.entry)
        << c.source << " to " << c.destination << " gamma " << c.gamma << " mode " << c.mode;
  }
}

/// In extended precision; where that is too near to a rounding border to tell, both are taken.
void ExpectCurve(unsigned entry, unsigned index, std::size_t source, std::size_t destination,
                 double gamma) {
  const auto full = static_cast<long double>((1U << source) - 1);
  const auto maximum = static_cast<long double>((1U << destination) - 1);
  const long double exact =
      std::min(std::pow(index / full, static_cast<long double>(gamma)) * maximum, maximum);
  EXPECT_LE(std::fabs(static_cast<long double>(entry) - exact), 0.5L + 1e-9L)
      << index << ": " << source << " to " << destination << " gamma " << gamma;
}

TEST(LookUpTable, FollowsTheCurveFromFullScaleToFullScale) {
  for (std::size_t source : {1, 4, 8, 10, 12, 16})
    for (std::size_t destination : {8, 10, 14, 16})
      for (double gamma : {0.0, 0.45, 1.0, 2.2, 3.9999, 4.0}) {
        CQvLookUpTableManager manager;
        const auto table = manager.LockTable(source, destination, gamma, kGammaMode);
        if (gamma == 1.0 && source >= destination) {
          for (unsigned i = 0; i < table->size(); ++i)
            ASSERT_EQ((*table)[i], i >> (source - destination));
          continue;
        }
        for (unsigned i = 0; i < table->size(); ++i) {
          ExpectCurve((*table)[i], i, source, destination, gamma);
          ASSERT_FALSE(testing::Test::HasFailure());
        }
      }
}

TEST(LookUpTable, StaysInRangeForAnyGammaThatARegisterCanHold) {
  const double infinity = std::numeric_limits<double>::infinity();
  CQvLookUpTableManager manager;
  for (double gamma : {-1.0, -1e300, -infinity, infinity, 1e300, std::nan("")})
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

  const auto equal = manager.LockTable(8, 8, 2.0, QvBitExpansionMode_Fixed);
  EXPECT_EQ(manager.LockTable(8, 8, 2.0, kGammaMode), equal);

  const auto wide = manager.LockTable(8, 12, 1.0, QvBitExpansionMode_Fixed);
  EXPECT_EQ(manager.LockTable(8, 12, 1.0, QvBitExpansionMode_Fixed), wide);
  EXPECT_NE(*manager.LockTable(8, 12, 1.0, QvBitExpansionMode_LeftShiftBy0), *wide);
}

}  // namespace
}  // namespace QvApi
