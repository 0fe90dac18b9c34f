// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/ChromaSuppression.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/ChromaSuppressionScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

/// Thresholds and strengths, in the order of the structure.
const ChromaSuppression kSettings[] = {{90, 3, 170, 2},
                                       {255, 255, 0, 255},
                                       {128, 1, 128, 1},
                                       {200, 7, 40, 5},
                                       {1, 1, 254, 1},
                                       {0, 0, 255, 0},
                                       {255, 255, 255, 0},
                                       {0, 0, 0, 255},
                                       {255, 1, 255, 1},
                                       {100, 0, 100, 0},
                                       {60000, 2, 255, 0},
                                       {~0U, 3, 7, ~0U},
                                       {3, 1U << 31, 9, 1U << 24},
                                       {300, 218, 255, 0},
                                       {255, 256, 250, 256}};

template <class T>
void CompareWithScalar(ChromaSuppression settings, size_t pixels, size_t slack) {
  for (size_t components : {3, 4})
    for (bool blueFirst : {false, true}) {
      settings.components = components;
      settings.blueFirst = blueFirst;
      GuardedLine<T> line(pixels * components, slack);
      line.FillRandom(static_cast<uint32_t>(pixels + slack));
      std::vector<T> expected(line.samples().begin(), line.samples().end());
      Scalar::SuppressChroma(settings, expected.data(), pixels);

      SuppressChroma(settings, line.data(), pixels);

      ASSERT_THAT(line.samples(), ElementsAreArray(expected))
          << pixels << " pixels of " << components << ", depth " << settings.depth
          << ", thresholds " << settings.lowThreshold << ", " << settings.highThreshold;
      ASSERT_TRUE(line.SurroundingsIntact());
    }
}

/// Random samples of all bits: with depths of 10 to 14 most of them lie above it.
template <class T>
void CompareAll(size_t pixels, size_t slack) {
  for (ChromaSuppression settings : kSettings)
    for (unsigned depth : {8U, 10U, 12U, 14U, 16U}) {
      if ((sizeof(T) == 1) != (depth == 8)) continue;
      settings.depth = depth;
      CompareWithScalar<T>(settings, pixels, slack);
      if (::testing::Test::HasFatalFailure()) return;
    }
}

template <class T>
class ChromaSuppressionTest : public ::testing::Test {};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(ChromaSuppressionTest, SampleTypes);

TYPED_TEST(ChromaSuppressionTest, EveryWidthAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t pixels = 0; pixels <= 140; ++pixels) {
      CompareAll<TypeParam>(pixels, 0);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(ChromaSuppressionTest, EveryAlignmentAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) {
      CompareAll<TypeParam>(70 + slack % 2, slack);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TEST(ChromaSuppressionTest, EveryLuminanceAndDistanceAgreesWithScalar) {
  // All pairs of green and another value, and with them every luminance.
  std::vector<uint8_t> all;
  for (unsigned green = 0; green < 256; ++green)
    for (unsigned color = 0; color < 256; ++color)
      for (unsigned sample : {color, green, color}) all.push_back(static_cast<uint8_t>(sample));
  ForEachTarget([&](const std::string&) {
    for (ChromaSuppression settings : kSettings) {
      std::vector<uint8_t> expected = all, made = all;
      Scalar::SuppressChroma(settings, expected.data(), all.size() / 3);
      SuppressChroma(settings, made.data(), all.size() / 3);
      ASSERT_EQ(made, expected) << settings.lowThreshold << ", " << settings.highThreshold;
    }
  });
}

TEST(ChromaSuppressionTest, ByHand) {
  const auto suppress = [](auto samples, ChromaSuppression settings) {
    SuppressChroma(settings, samples.data(), samples.size() / settings.components);
    return samples;
  };
  using Bytes = std::vector<uint8_t>;
  using Words = std::vector<uint16_t>;
  ForEachTarget([&](const std::string&) {
    // Y = (2 * 60 + 5 * 20 + 4) / 8 = 28, factor (40 + 1 - 28) * 4 = 52: blue + 16 * 52 / 256,
    // red - 40 * 52 / 256.
    EXPECT_THAT(suppress(Bytes{4, 20, 60}, {40, 4}), ElementsAre(7, 20, 52));
    // The same in the other order: Y = (8 + 100 + 60) / 8 = 21, factor 80.
    EXPECT_THAT(suppress(Bytes{4, 20, 60, 99}, {40, 4, 255, 0, 8, 4, false}),
                ElementsAre(9, 20, 48, 99));
    // Y = (400 + 1150 + 250) / 8 = 225, factor (225 - 220 + 1) * 10 = 60.
    EXPECT_THAT(suppress(Bytes{250, 230, 200}, {0, 0, 220, 10}), ElementsAre(246, 230, 207));
    // At both thresholds a pixel stays; below, the larger of (30 + 1 - 28) and (28 - 10 + 1)
    // counts.
    EXPECT_THAT(suppress(Bytes{4, 20, 60}, {28, 255, 28, 255}), ElementsAre(4, 20, 60));
    EXPECT_THAT(suppress(Bytes{4, 20, 60}, {30, 1, 10, 1}), ElementsAre(5, 20, 58));
    EXPECT_THAT(suppress(Bytes{0, 3, 9}, {255, 255}), ElementsAre(3, 3, 3));
    // 16 bits: Y = 2056 * 28 / 2056 >> 0 in 8 bits 28, factor 52 again.
    EXPECT_THAT(suppress(Words{1024, 5120, 15360}, {40, 4, 255, 0, 16}),
                ElementsAre(1856, 5120, 13280));
    // Above the depth: Y = (131070 + 5 * 65535) / 8 >> 2 = 14335 is above the end of luminance, and
    // with factor 0 what is below green becomes green.
    EXPECT_THAT(suppress(Words{0, 65535, 65535}, {0, 0, 255, 0, 10}),
                ElementsAre(65535, 65535, 65535));
    // (2^32 - 1 + 1 - 0) wraps to 0.
    EXPECT_THAT(suppress(Bytes{0, 1, 0, 1, 0, 0}, {~0U, 1}), ElementsAre(1, 1, 1, 1, 0, 0));
  });
}

}  // namespace
}  // namespace QvApi::Kernels
