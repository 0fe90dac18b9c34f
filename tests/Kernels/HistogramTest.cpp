// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"
#include "QvApi_IP/Kernels/HistogramScalar.h"

namespace QvApi::Kernels {
namespace {

/// Histograms of all channels behind each other, with counts of before.
using Counts = std::vector<uint32_t>;
Counts Make(unsigned bits) { return Counts(kMaxHistogramPeriod << bits, 3); }
Histograms Of(Counts& counts) {
  const size_t size = counts.size() / kMaxHistogramPeriod;
  return {&counts[0], &counts[size], &counts[2 * size], &counts[3 * size]};
}

/// Random samples, or long stretches of one value with few others in between.
template <class T>
void Fill(GuardedLine<T>& line, size_t count, bool inStretches) {
  line.FillRandom(static_cast<uint32_t>(count));
  if (!inStretches) return;
  std::fill_n(line.data(), count, static_cast<T>(0x1234));
  if (count > 5) line.data()[count - 5] = 7;
  if (count > 1000) line.data()[count / 2] = 8;
}

/// Lines of all ends and alignments, around the lengths of blocks and vectors.
template <class Check>
void ForEachLine(Check check) {
  for (size_t period = 1; period <= kMaxHistogramPeriod; ++period)
    for (bool inStretches : {false, true}) {
      for (size_t count = 0; count < 460; ++count) check(count, 0, period, inStretches);
      for (size_t slack = 1; slack < 64; ++slack) check(1500, slack, period, inStretches);
    }
}

template <class T>
class HistogramTest : public ::testing::Test {};
using SampleTypes = ::testing::Types<uint8_t, uint16_t>;
TYPED_TEST_SUITE(HistogramTest, SampleTypes);

TYPED_TEST(HistogramTest, AgreesWithScalar) {
  ForEachTarget([](const std::string&) {
    ForEachLine([](size_t count, size_t slack, size_t period, bool inStretches) {
      GuardedLine<TypeParam> line(count, slack);
      Fill(line, count, inStretches);
      const unsigned bits = sizeof(TypeParam) == 1 ? 8 : count % 2 == 0 ? 10 : 12;
      Counts counts = Make(bits), expected = counts;
      AddToHistograms(line.data(), count, period, bits, Of(counts));
      Scalar::AddToHistograms(line.data(), count, period, bits, Of(expected));
      ASSERT_TRUE(counts == expected) << count << " samples, period " << period;
    });
  });
}

TEST(HistogramOfPairs, AgreesWithScalar) {
  std::vector<uint32_t> pairs(kMaxHistogramPeriod * kPairCounters);
  ForEachTarget([&](const std::string&) {
    for (size_t period = 1; period <= kMaxHistogramPeriod; ++period) {
      Counts counts = Make(8), expected = counts;
      std::ranges::fill(pairs, 0U);
      ForEachLine([&](size_t count, size_t slack, size_t linePeriod, bool inStretches) {
        if (linePeriod != period) return;
        GuardedLine<uint8_t> upper(count, slack), lower(count, 64 - slack);
        Fill(upper, count, inStretches);
        Fill(lower, count, inStretches && count % 2 == 0);
        AddToPairs(upper.data(), lower.data(), count, period, Of(counts), pairs.data());
        for (auto* line : {&upper, &lower})
          Scalar::AddToHistograms(line->data(), count, period, 8, Of(expected));
      });
      AddPairs(pairs.data(), period, Of(counts));
      ASSERT_TRUE(counts == expected) << "period " << period;
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
