// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/SampleSums.h"

#include <gtest/gtest.h>

#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/SampleSumsScalar.h"

namespace QvApi::Kernels {
namespace {

template <class T>
void CompareWithScalar(size_t count, size_t slack) {
  GuardedLine<T> line(count, slack);
  line.FillRandom(static_cast<uint32_t>(count));
  CycleSums sums{1, 2, 3}, expected{1, 2, 3};
  AddToCycle(line.data(), count, sums);
  Scalar::AddToCycle(line.data(), count, expected);
  ASSERT_EQ(sums, expected);
  if constexpr (sizeof(T) == 1) {
    ASSERT_EQ(SumBytes(line.data(), count), Scalar::SumBytes(line.data(), count));
  }
}

TEST(SampleSumsTest, EveryLineAgreesWithScalar) {
  ForEachLine([](size_t count, size_t slack) {
    CompareWithScalar<uint8_t>(3 * count, slack);
    CompareWithScalar<uint8_t>(count, slack);
    CompareWithScalar<uint16_t>(count, slack);
  });
}

/// So many samples of full scale that sums of twice the width would overflow.
template <class T>
void ExpectLongLinesAreExact(size_t cycles) {
  constexpr uint64_t kFullScale = static_cast<T>(-1);
  const std::vector<T> line(kSumCycle * cycles + 5, static_cast<T>(kFullScale));
  ForEachTarget([&](const std::string&) {
    CycleSums sums{};
    AddToCycle(line.data(), line.size(), sums);
    for (size_t k = 0; k < kSumCycle; ++k) EXPECT_EQ(sums[k], (cycles + (k < 5)) * kFullScale) << k;
  });
}

TEST(SampleSumsTest, LongLinesAreExact) {
  ExpectLongLinesAreExact<uint8_t>(10'000);
  ExpectLongLinesAreExact<uint16_t>(1'100'000);
}

}  // namespace
}  // namespace QvApi::Kernels
