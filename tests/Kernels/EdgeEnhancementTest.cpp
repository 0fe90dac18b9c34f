// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/EdgeEnhancement.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"

namespace QvApi::Kernels {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

template <class T>
void CompareDifferences(size_t width, size_t slack, unsigned bits) {
  SCOPED_TRACE("width " + std::to_string(width) + ", bits " + std::to_string(bits));
  GuardedLine<T> lines[] = {{width + 2, slack}, {width + 2, slack}, {width + 2, 63 - slack}};
  GuardedLine<T> means(width, 63 - slack), distances(width, slack);
  for (GuardedLine<T>& line : lines) {
    line.FillRandom(static_cast<uint32_t>(width + (&line - lines)));
    for (T& sample : line.samples())  // full scale often enough for the greatest sums
      sample = sample % 3 == 0 ? static_cast<T>((1u << bits) - 1)
                               : static_cast<T>(sample & ((1u << bits) - 1));
  }
  std::vector<T> expectedMeans, expectedDistances;
  for (size_t x = 1; x <= width; ++x) {
    const T own = lines[1].samples()[x];
    unsigned long sum = 0;
    for (GuardedLine<T>& line : lines)
      for (size_t i = x - 1; i <= x + 1; ++i) sum += line.samples()[i];
    const auto mean = static_cast<T>((sum - own + 4) / 8);
    expectedMeans.push_back(mean);
    expectedDistances.push_back(static_cast<T>(std::max(own, mean) - std::min(own, mean)));
  }

  DifferFromMeans({lines[0].data() + 1, lines[1].data() + 1, lines[2].data() + 1,
                   slack % 2 == 0 ? nullptr : lines[2].data(), 3},
                  bits, means.data(), distances.data(), width);

  ASSERT_THAT(means.samples(), ElementsAreArray(expectedMeans));
  ASSERT_THAT(distances.samples(), ElementsAreArray(expectedDistances));
  ASSERT_TRUE(means.SurroundingsIntact() && distances.SurroundingsIntact());
}

const CorrectedSamples kLayouts[] = {{1, 0, 1}, {2, 0, 1}, {2, 1, 1}, {3, 0, 1},
                                     {3, 1, 1}, {3, 0, 3}, {4, 0, 3}};

template <class T>
void CompareCorrections(size_t width, size_t slack, unsigned bits) {
  for (const CorrectedSamples& layout : kLayouts) {
    SCOPED_TRACE("width " + std::to_string(width) + ", bits " + std::to_string(bits) + ", step " +
                 std::to_string(layout.step) + ", first " + std::to_string(layout.first));
    GuardedLine<T> levels(width, slack), means(width, 63 - slack), amounts(width, slack);
    GuardedLine<T> pixels(width * layout.step, slack);
    levels.FillRandom(static_cast<uint32_t>(width));
    means.FillRandom(static_cast<uint32_t>(width + 1));
    amounts.FillRandom(static_cast<uint32_t>(width + 2));
    pixels.FillRandom(static_cast<uint32_t>(width + 3));
    for (size_t x = 0; x < width; ++x) {
      T& amount = amounts.samples()[x];
      if (x % 4 == 0) amount = 0;
      if (x % 4 == 1) amount = static_cast<T>(amount & ((1u << bits) - 1) / 4);
      if (x % 5 == 0) means.samples()[x] = levels.samples()[x];
    }
    std::vector<T> expected(pixels.samples().begin(), pixels.samples().end());
    const long long top = (1ll << bits) - 1;
    for (size_t x = 0; x < width; ++x)
      for (size_t c = layout.first; c < layout.first + layout.count; ++c) {
        T& sample = expected[x * layout.step + c];
        const long long amount = amounts.samples()[x], masked = sample & top;
        if (amount == 0) continue;
        const bool up = levels.samples()[x] > means.samples()[x];
        if (up) sample = static_cast<T>(amount < top - masked ? masked + amount : top);
        if (!up) sample = static_cast<T>(masked > amount ? masked - amount : 0);
      }

    CorrectPixels(layout, bits, {levels.data(), means.data(), amounts.data()}, pixels.data(),
                  width);

    ASSERT_THAT(pixels.samples(), ElementsAreArray(expected));
    ASSERT_TRUE(pixels.SurroundingsIntact());
  }
}

template <class T>
void CompareAll(size_t width, size_t slack) {
  for (unsigned bits : sizeof(T) == 1 ? std::vector{8u} : std::vector{10u, 13u, 14u, 16u}) {
    CompareDifferences<T>(width, slack, bits);
    CompareCorrections<T>(width, slack, bits);
  }
}

template <class T>
class EdgeEnhancementTest : public ::testing::Test {};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(EdgeEnhancementTest, SampleTypes);

TYPED_TEST(EdgeEnhancementTest, EveryWidthAgreesWithReference) {
  ForEachTarget([](const std::string&) {
    for (size_t width = 0; width <= 140; ++width) {
      CompareAll<TypeParam>(width, 0);  // lines end at the page
      CompareAll<TypeParam>(width, 63);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(EdgeEnhancementTest, EveryAlignmentAgreesWithReference) {
  ForEachTarget([](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) {
      CompareAll<TypeParam>(140 + slack % 2, slack);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TEST(EdgeEnhancementLookUp, SmallAndGreatDistancesAtEveryWidth) {
  GuardedLine<uint16_t> table(4096, 0);
  table.FillRandom(1);
  ForEachTarget([&](const std::string&) {
    for (unsigned limit : {64u, 128u, 192u, 256u, 257u, 1000u, 4096u})
      for (size_t width = 0; width <= 140; ++width) {
        GuardedLine<uint16_t> distances(width, width % 2 == 0 ? 0 : width % 64);
        distances.FillRandom(static_cast<uint32_t>(width));
        std::vector<uint16_t> expected;
        for (uint16_t& distance : distances.samples()) {
          distance = static_cast<uint16_t>(distance % limit);
          expected.push_back(table.samples()[distance]);
        }
        LookUpDistances(table.data(), distances.data(), width);
        ASSERT_THAT(distances.samples(), ElementsAreArray(expected)) << limit << " " << width;
        ASSERT_TRUE(distances.SurroundingsIntact());
      }
  });
}

TEST(EdgeEnhancementByHand, MeansAreRoundedAndOfNeighboursAlone) {
  const uint8_t above[] = {1, 1, 1, 0}, line[] = {1, 9, 0, 0}, below[] = {0, 0, 0, 255};
  uint8_t means[2], distances[2];
  ForEachTarget([&](const std::string&) {
    DifferFromMeans({above + 1, line + 1, below + 1}, 8, means, distances, 2);
    EXPECT_THAT(means, ElementsAre(1, 33));  // (4 + 4) / 8, (266 + 4) / 8
    EXPECT_THAT(distances, ElementsAre(8, 33));
  });
}

TEST(EdgeEnhancementByHand, UnknownLayoutsWriteNothing) {
  const uint8_t levels[2] = {9, 9}, means[2] = {1, 1}, amounts[2] = {7, 7};
  uint8_t pixels[12] = {};
  for (const CorrectedSamples& layout :
       {CorrectedSamples{0, 0, 1}, CorrectedSamples{5, 0, 1}, CorrectedSamples{3, 1, 3},
        CorrectedSamples{2, 3, 1}, CorrectedSamples{3, 1, ~size_t{0}}})
    CorrectPixels(layout, 8, {levels, means, amounts}, pixels, 2);
  EXPECT_THAT(pixels, Each(0));
}

}  // namespace
}  // namespace QvApi::Kernels
