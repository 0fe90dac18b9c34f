// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Median.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

/// Rows from -2 to 2 around the one that is filtered, of which `above` and `below` exist.
template <class T>
struct Rows {
  Rows(size_t width, size_t slack, int above, int below) : m_width(width) {
    for (int y = -2; y <= 2; ++y) {
      const auto at = static_cast<size_t>(y + 2);
      if (y < -above || y > below) continue;
      lines[at] = std::make_unique<GuardedLine<T>>(width, slack);
      lines[at]->FillRandom(static_cast<uint32_t>(width * 5 + at));
      window[at] = lines[at]->data();
    }
  }

  bool Has(int x, int y) const {
    return y >= -2 && y <= 2 && lines[static_cast<size_t>(y + 2)] && x >= 0 &&
           x < static_cast<int>(m_width);
  }
  T At(int x, int y) const {
    return lines[static_cast<size_t>(y + 2)]->samples()[static_cast<size_t>(x)];
  }

  const size_t m_width;
  std::array<std::unique_ptr<GuardedLine<T>>, 5> lines;
  MedianWindow<T> window{};
};

/// By sorting what is there.
template <class T>
T Expected(const Rows<T>& rows, int x, MedianSites sites) {
  const bool isEdge =
      !rows.Has(x - 1, 0) || !rows.Has(x + 1, 0) || !rows.Has(x, -1) || !rows.Has(x, 1);
  const bool isGreen =
      sites != MedianSites::Mono && (x % 2 == 0) == (sites == MedianSites::GreenAtEven);
  const bool isDiagonal = sites == MedianSites::Mono ? !isEdge : isGreen;
  const int step = sites == MedianSites::Mono ? 1 : 2;
  std::vector<T> samples{rows.At(x, 0)};
  for (int sign : {-1, 1})
    for (int other : {-1, 1}) {
      const int across = other == 1 ? sign * step : 0, along = other == 1 ? 0 : sign * step;
      const int dx = isDiagonal ? sign : across, dy = isDiagonal ? other : along;
      if (rows.Has(x + dx, dy)) samples.push_back(rows.At(x + dx, dy));
    }
  std::ranges::sort(samples);
  const size_t half = samples.size() / 2;
  if (samples.size() % 2 == 1) return samples[half];
  return static_cast<T>((samples[half - 1] + samples[half]) / 2);
}

template <class T>
void CompareWithReference(size_t width, size_t slack, int above, int below) {
  const Rows<T> rows(width, slack, above, below);
  for (MedianSites sites : {MedianSites::Mono, MedianSites::GreenAtEven, MedianSites::GreenAtOdd}) {
    SCOPED_TRACE("width " + std::to_string(width) + ", sites " +
                 std::to_string(static_cast<int>(sites)) + ", above " + std::to_string(above) +
                 ", below " + std::to_string(below));
    GuardedLine<T> destination(width, 63 - slack);
    std::vector<T> expected;
    for (size_t x = 0; x < width; ++x)
      expected.push_back(Expected(rows, static_cast<int>(x), sites));
    MedianRow(rows.window, destination.data(), width, sites);
    ASSERT_THAT(destination.samples(), ElementsAreArray(expected));
    ASSERT_TRUE(destination.SurroundingsIntact());
  }
}

template <class T>
class MedianTest : public ::testing::Test {};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(MedianTest, SampleTypes);

TYPED_TEST(MedianTest, EveryWidthAgreesWithReference) {
  ForEachTarget([](const std::string&) {
    for (size_t width = 1; width <= 150; ++width) {
      CompareWithReference<TypeParam>(width, 0, 2, 2);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(MedianTest, EveryAlignmentAgreesWithReference) {
  ForEachTarget([](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) {
      CompareWithReference<TypeParam>(140 + slack % 2, slack, 2, 2);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(MedianTest, RowsThatAreMissingAreLeftOut) {
  ForEachTarget([](const std::string&) {
    for (size_t width : {1, 2, 3, 4, 5, 70})
      for (int above = 0; above <= 2; ++above)
        for (int below = 0; below <= 2; ++below) {
          CompareWithReference<TypeParam>(width, 0, above, below);
          if (::testing::Test::HasFatalFailure()) return;
        }
  });
}

TEST(MedianByHand, EdgesTakeDirectNeighboursAndMeansRoundDown) {
  const uint8_t image[3][3] = {{10, 200, 31}, {41, 255, 60}, {70, 0, 90}};
  const auto filtered = [&](size_t y, MedianSites sites) {
    std::vector<uint8_t> line(3);
    const MedianWindow<uint8_t> window{
        y >= 2 ? image[y - 2] : nullptr, y >= 1 ? image[y - 1] : nullptr, image[y],
        y <= 1 ? image[y + 1] : nullptr, y == 0 ? image[y + 2] : nullptr};
    MedianRow(window, line.data(), 3, sites);
    return line;
  };
  ForEachTarget([&](const std::string&) {
    // 10 41 200; (31 + 200) / 2; 31 60 200
    EXPECT_THAT(filtered(0, MedianSites::Mono), ElementsAre(41, 115, 60));
    // (41 + 70) / 2; 10 31 70 90 255; (60 + 90) / 2
    EXPECT_THAT(filtered(1, MedianSites::Mono), ElementsAre(55, 70, 75));
    // (10 + 255) / 2; (0 + 200) / 2; (31 + 255) / 2
    EXPECT_THAT(filtered(0, MedianSites::GreenAtEven), ElementsAre(132, 100, 143));
    // 10 31 70; 41 60 200; 10 31 90
    EXPECT_THAT(filtered(0, MedianSites::GreenAtOdd), ElementsAre(31, 60, 31));
  });
}

}  // namespace
}  // namespace QvApi::Kernels
