// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Averaging.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"

namespace QvApi::Kernels {
namespace {

template <class T>
void ExpectSums(size_t count) {
  GuardedLine<T> samples(count, count % 64);
  GuardedLine<uint32_t> sums(count, count / 3 % 16);
  samples.FillRandom(static_cast<uint32_t>(count));
  for (size_t i = 0; i < count; ++i) sums.data()[i] = static_cast<uint32_t>(-1 - i * 300);
  AddToSums(samples.data(), sums.data(), count);
  for (size_t i = 0; i < count; ++i)
    ASSERT_EQ(sums.samples()[i], samples.samples()[i] - static_cast<uint32_t>(1 + i * 300));
  ASSERT_TRUE(sums.SurroundingsIntact());
}

TEST(Averaging, AddsEveryCountAtEveryAlignment) {
  ForEachTarget([](const std::string&) {
    for (size_t count = 0; count <= 200; ++count) {
      ExpectSums<uint8_t>(count);
      ExpectSums<uint16_t>(count);
    }
  });
}

/// Sums where means change from k to k + 1, and those beside.
std::vector<uint32_t> SumsOfInterest(uint32_t fullSum, double maximum) {
  std::vector<uint32_t> sums{0, 1, fullSum, fullSum - 1, fullSum + 1, 0x7FFFFFFF, 0xFFFFFFFF};
  for (double k = 0; k < maximum; k += std::max(1.0, std::floor(maximum / 5001)))
    for (double beside : {-1, 0, 1})
      sums.push_back(static_cast<uint32_t>(std::max((k + 0.5) * fullSum / maximum + beside, 0.0)));
  return sums;
}

/// Against the mean as it is asked for, step by step.
template <class T>
void ExpectMeans(uint64_t fullScale, uint64_t frames, T maximum) {
  const auto fullSum = static_cast<uint32_t>(fullScale * frames);
  const std::vector<uint32_t> sums = SumsOfInterest(fullSum, maximum);
  GuardedLine<uint32_t> line(sums.size(), frames % 16);
  GuardedLine<T> means(sums.size(), frames % 64);
  std::ranges::copy(sums, line.data());
  ScaleSums(line.data(), fullSum, maximum, means.data(), sums.size());
  const double divisor = static_cast<double>(fullSum) / maximum;
  for (size_t i = 0; i < sums.size(); ++i)
    ASSERT_EQ(means.samples()[i], static_cast<T>(std::min(sums[i], fullSum) / divisor + 0.5))
        << sums[i] << " of " << fullScale << " x " << frames << " to " << maximum;
  EXPECT_TRUE(means.SurroundingsIntact());
}

TEST(Averaging, MeansAreRoundedAsTheQuotientIs) {
  ForEachTarget([](const std::string&) {
    for (uint64_t bits : {8, 10, 12, 14, 16}) {
      const uint64_t fullScale = (1U << bits) - 1, most = uint64_t{1} << (32 - bits);
      std::vector<uint64_t> counts{most / 3, most - 2, most - 1, most};
      for (unsigned frames : {1, 2, 3, 6, 7, 10, 34, 546, 8190}) counts.push_back(frames);
      for (uint64_t frames : counts) {
        ExpectMeans<uint8_t>(fullScale, frames, 255);
        for (unsigned depth : {10, 12, 14, 16})
          ExpectMeans<uint16_t>(fullScale, frames, static_cast<uint16_t>((1U << depth) - 1));
        ExpectMeans<uint32_t>(fullScale, frames, 0xFFFFFFFF);
      }
    }
  });
}

TEST(Averaging, EveryCountOfMeans) {
  ForEachTarget([](const std::string&) {
    for (size_t count = 0; count <= 130; ++count) {
      GuardedLine<uint32_t> sums(count, count % 16);
      GuardedLine<uint8_t> means(count, count % 64);
      for (size_t i = 0; i < count; ++i) sums.data()[i] = static_cast<uint32_t>(i * 20 + 10);
      ScaleSums(sums.data(), 20 * 255, uint8_t{255}, means.data(), count);
      for (size_t i = 0; i < count; ++i) ASSERT_EQ(means.samples()[i], i + 1) << count;
      ASSERT_TRUE(means.SurroundingsIntact());
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
