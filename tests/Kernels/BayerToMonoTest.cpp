// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/BayerToMono.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"

namespace QvApi::Kernels {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

constexpr int kPhases[] = {kPhaseRG, kPhaseGR, kPhaseGB, kPhaseBG};

/// The colours of a phase's two rows, read off its name.
std::string MosaicColours(int phase, bool nextRow) {
  switch (phase) {
    case kPhaseRG:
      return nextRow ? "GB" : "RG";
    case kPhaseGR:
      return nextRow ? "BG" : "GR";
    case kPhaseGB:
      return nextRow ? "RG" : "GB";
    default:
      return nextRow ? "GR" : "BG";
  }
}

/// Sums up the window of pixel x sample by sample, by colour.
template <class T>
T ExpectedPixel(std::span<T> row, std::span<T> nextRow, size_t x, int phase) {
  const size_t width = row.size();
  uint64_t sum[128] = {};
  for (bool next : {false, true}) {
    for (size_t column : {x, x + 1}) {
      const size_t from = column < width ? column : width == 1 ? 0 : width - 2;
      // A mirrored column stands for the one that is missing, so it has that one's colour.
      const char colour = MosaicColours(phase, next)[column % 2];
      sum[static_cast<size_t>(colour)] += next ? nextRow[from] : row[from];
    }
  }
  uint64_t green = sum['G'] / 2;
  const bool isGreen = MosaicColours(phase, false)[x % 2] == 'G';
  if (x == width - 1 && width % 2 == 0 && isGreen) green = row[x];
  return static_cast<T>((5 * green + 2 * sum['R'] + sum['B']) / 8);
}

template <class T>
void CompareWithReference(size_t width, size_t slack, int phase) {
  SCOPED_TRACE("width " + std::to_string(width) + ", phase " + std::to_string(phase));
  GuardedLine<T> row(width, slack), nextRow(width, slack / 2), destination(width, 63 - slack);
  row.FillRandom(static_cast<uint32_t>(width));
  nextRow.FillRandom(static_cast<uint32_t>(width) + 1000);
  std::vector<T> expected(width);
  for (size_t x = 0; x < width; ++x) {
    expected[x] = ExpectedPixel(row.samples(), nextRow.samples(), x, phase);
  }

  BayerRowToMono(row.data(), nextRow.data(), destination.data(), width, phase);

  ASSERT_THAT(destination.samples(), ElementsAreArray(expected));
  ASSERT_TRUE(destination.SurroundingsIntact());
}

template <class T>
class BayerToMonoTest : public ::testing::Test {};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(BayerToMonoTest, SampleTypes);

TYPED_TEST(BayerToMonoTest, EveryWidthAgreesWithReference) {
  ForEachTarget([](const std::string&) {
    for (size_t width = 1; width <= 200; ++width) {
      for (int phase : kPhases) {
        CompareWithReference<TypeParam>(width, 0, phase);
        CompareWithReference<TypeParam>(width, 63, phase);  // the destination ends at the page
        if (::testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

TYPED_TEST(BayerToMonoTest, EveryAlignmentAgreesWithReference) {
  ForEachTarget([](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) {
      for (int phase : kPhases) {
        CompareWithReference<TypeParam>(140 + slack % 2, slack, phase);
        if (::testing::Test::HasFatalFailure()) return;
      }
    }
  });
}

TYPED_TEST(BayerToMonoTest, FlatMosaicStaysFlatUpToTheLastValue) {
  using T = TypeParam;
  ForEachTarget([](const std::string&) {
    for (T value : {T{0}, T{1}, T{127}, static_cast<T>(~T{0})}) {
      const std::vector<T> row(70, value);
      std::vector<T> mono(70);
      for (int phase : kPhases) {
        BayerRowToMono(row.data(), row.data(), mono.data(), mono.size(), phase);
        ASSERT_THAT(mono, Each(value));
      }
    }
  });
}

TYPED_TEST(BayerToMonoTest, ByHand) {
  using T = TypeParam;
  const auto mono = [](std::vector<T> row, const std::vector<T>& next, int phase) {
    std::vector<T> result(row.size());
    BayerRowToMono(row.data(), next.data(), result.data(), row.size(), phase);
    return result;
  };
  ForEachTarget([&](const std::string&) {
    // RG over GB. First: R 8, G (21 + 40) / 2 = 30, B 80: (150 + 16 + 80) / 8 = 30.
    // Last: G is its own 21 at even width, R 8, B 80: (105 + 16 + 80) / 8 = 25.
    EXPECT_THAT(mono({8, 21}, {40, 80}, kPhaseRG), ElementsAre(30, 25));
    // GR over BG. Last, no green: R 21, G (8 + 80) / 2, B 40: (220 + 42 + 40) / 8 = 37.
    EXPECT_THAT(mono({8, 21}, {40, 80}, kPhaseGR), ElementsAre(37, 37));
    // GB over RG at odd width. The last pixel is green and takes the mean with column 1's 12:
    // G (100 + 12) / 2 = 56, B 21, R 16: (280 + 32 + 21) / 8 = 41.
    EXPECT_EQ(mono({8, 21, 100}, {40, 12, 16}, kPhaseGB)[2], 41);
    // One pixel is all its window: R 8, G (8 + 40) / 2 = 24, B 40: (120 + 16 + 40) / 8 = 22.
    EXPECT_THAT(mono({8}, {40}, kPhaseRG), ElementsAre(22));
  });
}

TEST(BayerToMonoPhase, UnknownPhaseWritesNothing) {
  const uint8_t row[4] = {9, 9, 9, 9};
  uint8_t mono[4] = {};
  for (int phase : {0, 1, 6, -1}) BayerRowToMono(row, row, mono, 4, phase);
  EXPECT_THAT(mono, Each(0));
}

}  // namespace
}  // namespace QvApi::Kernels
