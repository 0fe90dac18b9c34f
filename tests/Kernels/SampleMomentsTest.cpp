// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/SampleMoments.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/SampleMomentsScalar.h"

namespace QvApi::Kernels {
namespace {

template <class T>
class SampleMomentsTest : public ::testing::Test {};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(SampleMomentsTest, SampleTypes);

/// From none to five lines of every count, one of them of full scale.
TYPED_TEST(SampleMomentsTest, AgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    for (size_t count = 0; count <= 100; ++count) {
      const size_t slack = count % 32, lineCount = count % 6;
      GuardedLine<uint64_t> sums(count, slack), squares(count, slack);
      std::vector<uint64_t> expectedSums(count, 7), expectedSquares(count, uint64_t{1} << 40);
      std::ranges::copy(expectedSums, sums.data());
      std::ranges::copy(expectedSquares, squares.data());
      std::vector<CycleMoments> cycles(lineCount, {{1, 2}, {3, 4}}), expected = cycles;
      std::vector<std::unique_ptr<GuardedLine<TypeParam>>> lines;
      std::vector<const TypeParam*> pointers;
      for (uint32_t l = 0; l < lineCount; ++l) {
        lines.push_back(std::make_unique<GuardedLine<TypeParam>>(count, slack));
        lines[l]->FillRandom(l);
        if (l == 3) std::ranges::fill(lines[l]->samples(), static_cast<TypeParam>(-1));
        pointers.push_back(lines[l]->data());
        Scalar::AddMoments(pointers[l], count, expectedSums.data(), expectedSquares.data(),
                           expected[l]);
      }
      AddMoments(pointers.data(), lineCount, count, sums.data(), squares.data(), cycles.data());
      ASSERT_TRUE(std::ranges::equal(sums.samples(), expectedSums)) << count;
      ASSERT_TRUE(std::ranges::equal(squares.samples(), expectedSquares)) << count;
      for (size_t l = 0; l < lineCount; ++l) {
        ASSERT_EQ(cycles[l].sums, expected[l].sums) << count;
        ASSERT_EQ(cycles[l].squares, expected[l].squares) << count;
      }
      ASSERT_TRUE(sums.SurroundingsIntact() && squares.SurroundingsIntact()) << count;

      GuardedLine<double> means(count, slack), deviations(count, slack);
      std::vector<double> expectedMeans(count), expectedDeviations(count);
      MeansAndDeviations(sums.data(), squares.data(), count, 3, means.data(), deviations.data());
      Scalar::MeansAndDeviations(sums.data(), squares.data(), count, 3, expectedMeans.data(),
                                 expectedDeviations.data());
      ASSERT_TRUE(std::ranges::equal(means.samples(), expectedMeans)) << count;
      ASSERT_TRUE(std::ranges::equal(deviations.samples(), expectedDeviations)) << count;
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
