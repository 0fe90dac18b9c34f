// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/DarkFrame.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAreArray;

template <class T>
class DarkFrameTest : public ::testing::Test {
 protected:
  static constexpr T kTop = static_cast<T>(~T{0});
  static constexpr T kLimit = static_cast<T>(kTop - (kTop >> 7) - 1);

  static bool IsMarked(std::span<const uint8_t> marks, size_t x) {
    return (marks[x / 8] >> x % 8 & 1) != 0;
  }

  static void CompareSubtraction(size_t width, size_t slack, T limit) {
    SCOPED_TRACE("width " + std::to_string(width) + ", slack " + std::to_string(slack));
    GuardedLine<T> row(width, slack), dark(width, (slack * 7) % 64);
    GuardedLine<uint8_t> marks(DarkMarkBytes(width), slack);
    row.FillRandom(static_cast<uint32_t>(width));
    dark.FillRandom(static_cast<uint32_t>(width + 1000));
    for (size_t x = 0; x < width; x += 3) row.samples()[x] = static_cast<T>(kTop - x % 7);
    for (size_t x = 0; x < width; x += 2) dark.samples()[x] = static_cast<T>(x % 5);
    std::vector<T> expected;
    std::vector<size_t> marked, found;
    for (size_t x = 0; x < width; ++x) {
      const int before = row.samples()[x], after = std::max(0, before - dark.samples()[x]);
      expected.push_back(static_cast<T>(after));
      if (before >= limit && after < limit) marked.push_back(x);
    }
    EXPECT_EQ(SubtractDarkRow(row.data(), dark.data(), width, limit, marks.data()),
              !marked.empty());
    for (size_t x = 0; x < width; ++x)
      if (IsMarked(marks.samples(), x)) found.push_back(x);
    ASSERT_THAT(row.samples(), ElementsAreArray(expected));
    ASSERT_EQ(found, marked);
    ASSERT_TRUE(row.SurroundingsIntact() && dark.SurroundingsIntact() &&
                marks.SurroundingsIntact());
  }

  /// Repairs one pixel after the other, from rows that are copied to signed numbers.
  static std::vector<T> Repaired(const std::array<std::vector<T>, 5>& rows, MedianSites sites,
                                 const std::vector<uint8_t>& marks) {
    std::array<std::vector<T>, 5> r = rows;
    const size_t width = r[2].size();
    std::vector<size_t> columns;
    if (sites == MedianSites::Mono && width >= 3)
      for (size_t x = 1; x <= width - 2; ++x) columns.push_back(x);
    if (sites != MedianSites::Mono && width >= 6)
      for (size_t x = 2; x < width - 3; x += 2) columns.push_back(x), columns.push_back(x + 1);
    for (size_t x : columns) {
      if (!IsMarked(marks, x)) continue;
      const bool isGreen = (x % 2 == 0) == (sites == MedianSites::GreenAtEven);
      std::vector<T> samples;
      if (sites == MedianSites::Mono || isGreen)
        samples = {r[1][x - 1], r[1][x + 1], r[2][x], r[3][x - 1], r[3][x + 1]};
      else
        samples = {r[0][x], r[2][x - 2], r[2][x], r[2][x + 2], r[4][x]};
      std::ranges::sort(samples);
      r[2][x] = std::max(r[2][x], samples[2]);
    }
    return r[2];
  }

  static void CompareRepair(size_t width, MedianSites sites, unsigned oneIn) {
    SCOPED_TRACE("width " + std::to_string(width) + ", sites " +
                 std::to_string(static_cast<int>(sites)));
    std::vector<std::unique_ptr<GuardedLine<T>>> owners;
    std::array<std::vector<T>, 5> rows;
    MedianWindow<T> window{};
    for (size_t i = 0; i < 5; ++i) {
      owners.push_back(std::make_unique<GuardedLine<T>>(width, 0));
      owners[i]->FillRandom(static_cast<uint32_t>(width * 9 + i));
      rows[i].assign(owners[i]->samples().begin(), owners[i]->samples().end());
      window[i] = owners[i]->data();
    }
    std::minstd_rand random(static_cast<unsigned>(width));
    std::vector<uint8_t> marks(DarkMarkBytes(width));
    for (size_t x = 0; x < width; ++x)
      if (random() / 64 % oneIn == 0)
        marks[x / 8] = static_cast<uint8_t>(marks[x / 8] | 1U << x % 8);
    const auto expected = Repaired(rows, sites, marks);
    RepairDarkRow(window, owners[2]->data(), width, sites, marks.data());
    ASSERT_THAT(owners[2]->samples(), ElementsAreArray(expected));
    for (const auto& line : owners) ASSERT_TRUE(line->SurroundingsIntact());
  }
};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(DarkFrameTest, SampleTypes);

TYPED_TEST(DarkFrameTest, EveryWidthIsSubtractedAndMarked) {
  ForEachTarget([this](const std::string&) {
    for (size_t width = 0; width <= 200; ++width)
      for (int limit : {0, 3, int{this->kLimit}, int{this->kTop}}) {
        this->CompareSubtraction(width, 0, static_cast<TypeParam>(limit));
        if (::testing::Test::HasFatalFailure()) return;
      }
  });
}

TYPED_TEST(DarkFrameTest, EveryAlignmentIsSubtractedAndMarked) {
  ForEachTarget([this](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) {
      this->CompareSubtraction(141, slack, this->kLimit);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(DarkFrameTest, RepairsSeeEarlierRepairsOfTheRow) {
  ForEachTarget([this](const std::string&) {
    for (size_t width = 1; width <= 150; ++width)
      for (unsigned oneIn : {1U, 2U, 40U})
        for (MedianSites sites :
             {MedianSites::Mono, MedianSites::GreenAtEven, MedianSites::GreenAtOdd}) {
          this->CompareRepair(width, sites, oneIn);
          if (::testing::Test::HasFatalFailure()) return;
        }
  });
}

TEST(DarkRepairsTest, EndBeforeTheEdgeInPairsForMosaics) {
  const struct {
    MedianSites sites;
    size_t size, begin, end;
  } kCases[] = {
      {MedianSites::Mono, 0, 0, 0},        {MedianSites::Mono, 2, 0, 0},
      {MedianSites::Mono, 3, 1, 2},        {MedianSites::Mono, 10, 1, 9},
      {MedianSites::GreenAtEven, 5, 0, 0}, {MedianSites::GreenAtEven, 6, 2, 4},
      {MedianSites::GreenAtOdd, 7, 2, 4},  {MedianSites::GreenAtOdd, 8, 2, 6},
      {MedianSites::GreenAtOdd, 9, 2, 6},
  };
  for (const auto& c : kCases) {
    EXPECT_EQ(DarkRepairs(c.sites, c.size).begin, c.begin) << c.size;
    EXPECT_EQ(DarkRepairs(c.sites, c.size).end, c.end) << c.size;
  }
}

}  // namespace
}  // namespace QvApi::Kernels
