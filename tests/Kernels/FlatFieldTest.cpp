// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/FlatField.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;
using ::testing::ElementsAreArray;

template <class T>
class FlatFieldTest : public ::testing::Test {
 protected:
  static std::vector<T> FullScales() {
    if constexpr (sizeof(T) == 1)
      return {255};
    else
      return {1023, 4095, 16383, 65535};
  }

  static T Limited(std::int64_t value, T fullScale) {
    return static_cast<T>(std::clamp<std::int64_t>(value, 0, fullScale));
  }

  static void CompareWithReference(size_t width, size_t slack) {
    for (T fullScale : FullScales()) {
      SCOPED_TRACE("width " + std::to_string(width) + ", slack " + std::to_string(slack) +
                   ", full scale " + std::to_string(fullScale));
      CompareGains(width, slack, fullScale);
      for (FlatFieldTargets targets :
           {FlatFieldTargets{100, 200}, FlatFieldTargets{1, fullScale},
            FlatFieldTargets{300, 65535}, FlatFieldTargets{70000, 131000},
            FlatFieldTargets{0xFFFFFFFF, 0}})
        CompareDifferences(width, slack, targets, fullScale);
    }
  }

  static void CompareGains(size_t width, size_t slack, T fullScale) {
    GuardedLine<T> row(width, slack);
    GuardedLine<uint16_t> gains(width, 63 - slack);
    row.FillRandom(static_cast<uint32_t>(width + fullScale));
    gains.FillRandom(static_cast<uint32_t>(width));
    for (size_t x = 0; x < width; ++x) {
      // All gains, few of them, and those around 1.
      uint16_t& gain = gains.samples()[x];
      gain = static_cast<uint16_t>(x % 3 == 0   ? gain % (kMaximumGain + 1)
                                   : x % 3 == 1 ? kMaximumGain
                                                : 120 + gain % 16);
      if (x % 5 == 0) row.samples()[x] = static_cast<T>(row.samples()[x] % 512);
      if (x % 7 == 0) row.samples()[x] = static_cast<T>(~T{0});
    }
    std::vector<T> expected;
    for (size_t x = 0; x < width; ++x)
      expected.push_back(
          Limited(std::int64_t{row.samples()[x]} * gains.samples()[x] / 128, fullScale));
    MultiplyGainRow(row.data(), gains.data(), width, fullScale);
    ASSERT_THAT(row.samples(), ElementsAreArray(expected));
    ASSERT_TRUE(row.SurroundingsIntact() && gains.SurroundingsIntact());
  }

  static void CompareDifferences(size_t width, size_t slack, FlatFieldTargets targets,
                                 T fullScale) {
    SCOPED_TRACE("targets " + std::to_string(targets.even) + " " + std::to_string(targets.odd));
    GuardedLine<T> row(width, slack), flat(width, 63 - slack);
    row.FillRandom(static_cast<uint32_t>(width + fullScale));
    flat.FillRandom(static_cast<uint32_t>(width));
    std::vector<T> expected;
    for (size_t x = 0; x < width; ++x) {
      const std::int64_t target = x % 2 == 0 ? targets.even : targets.odd;
      expected.push_back(Limited(row.samples()[x] + target - flat.samples()[x], fullScale));
    }
    AddDifferenceRow(row.data(), flat.data(), width, targets, fullScale);
    ASSERT_THAT(row.samples(), ElementsAreArray(expected));
    ASSERT_TRUE(row.SurroundingsIntact() && flat.SurroundingsIntact());
  }
};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(FlatFieldTest, SampleTypes);

TYPED_TEST(FlatFieldTest, EveryWidthAgreesWithReference) {
  ForEachTarget([this](const std::string&) {
    for (size_t width = 0; width <= 200; ++width) {
      this->CompareWithReference(width, 0);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TYPED_TEST(FlatFieldTest, EveryAlignmentAgreesWithReference) {
  ForEachTarget([this](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) {
      this->CompareWithReference(140 + slack % 2, slack);
      if (::testing::Test::HasFatalFailure()) return;
    }
  });
}

TEST(FlatFieldEveryPair, OfByteAndGainIsExact) {
  std::vector<uint8_t> row(kMaximumGain + 1);
  std::vector<uint16_t> gains(row.size());
  for (size_t gain = 0; gain < gains.size(); ++gain) gains[gain] = static_cast<uint16_t>(gain);
  ForEachTarget([&](const std::string&) {
    for (unsigned sample = 0; sample < 256; ++sample) {
      std::ranges::fill(row, static_cast<uint8_t>(sample));
      MultiplyGainRow(row.data(), gains.data(), row.size(), uint8_t{255});
      for (unsigned gain = 0; gain <= kMaximumGain; ++gain)
        ASSERT_EQ(row[gain], std::min(sample * gain / 128, 255U)) << sample << " by " << gain;
    }
  });
}

TEST(FlatFieldByHand, GainsHaveSevenBitsBehindThePoint) {
  uint8_t row[] = {100, 100, 100, 255, 3};
  const uint16_t gains[] = {128, 64, 192, 2048, 129};
  MultiplyGainRow(row, gains, 5, uint8_t{255});
  EXPECT_THAT(row, ElementsAre(100, 50, 150, 255, 3));
  uint16_t wide[] = {4095, 10, 0};
  const uint16_t flat[] = {4000, 20, 20};
  AddDifferenceRow(wide, flat, 3, {4095, 15}, uint16_t{4095});
  EXPECT_THAT(wide, ElementsAre(4095, 5, 4075));
}

}  // namespace
}  // namespace QvApi::Kernels
