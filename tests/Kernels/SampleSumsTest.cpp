// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/SampleSums.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <string>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/SampleSumsScalar.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAre;

template <class T>
class SampleSumsTest : public ::testing::Test {
 protected:
  static void CompareWithScalar(size_t count, size_t slack) {
    GuardedLine<T> line(count, slack);
    line.FillRandom(static_cast<uint32_t>(count));
    CycleSums sums{1, 2, 3}, expected{1, 2, 3};
    AddToCycle(line.data(), count, sums);
    Scalar::AddToCycle(line.data(), count, expected);
    ASSERT_EQ(sums, expected) << count << " samples, slack " << slack;
  }
};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(SampleSumsTest, SampleTypes);

TYPED_TEST(SampleSumsTest, EveryCountAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t count = 0; count <= 500; ++count) TestFixture::CompareWithScalar(count, 0);
  });
}

TYPED_TEST(SampleSumsTest, EveryAlignmentAgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t slack = 0; slack < 64; ++slack) TestFixture::CompareWithScalar(400 + slack, slack);
  });
}

/// So many samples of full scale that sums of twice the width would overflow.
TYPED_TEST(SampleSumsTest, LongLinesAreExact) {
  constexpr uint64_t kFullScale = static_cast<TypeParam>(-1);
  const size_t count = kSumCycle * (sizeof(TypeParam) == 1 ? 10'000 : 1'100'000) + 5;
  const std::vector<TypeParam> line(count, static_cast<TypeParam>(kFullScale));
  ForEachTarget([&](const std::string&) {
    CycleSums sums{};
    AddToCycle(line.data(), count, sums);
    for (size_t k = 0; k < kSumCycle; ++k)
      EXPECT_EQ(sums[k], (count / kSumCycle + (k < 5)) * kFullScale) << k;
  });
}

TEST(SampleSumsByHand, PlacesComeBackAfterTwelve) {
  std::vector<uint8_t> line(14);
  std::iota(line.begin(), line.end(), uint8_t{1});
  ForEachTarget([&](const std::string&) {
    CycleSums sums{};
    for (int twice = 0; twice < 2; ++twice) AddToCycle(line.data(), line.size(), sums);
    EXPECT_THAT(sums,
                ElementsAre(2 * (1 + 13), 2 * (2 + 14), 6, 8, 10, 12, 14, 16, 18, 20, 22, 24));
  });
}

}  // namespace
}  // namespace QvApi::Kernels
