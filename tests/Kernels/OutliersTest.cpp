// SPDX-License-Identifier: MIT
#include "QvApi_IP/Kernels/Outliers.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "ForEachTarget.h"
#include "GuardedLine.h"

namespace QvApi::Kernels {
namespace {

using ::testing::ElementsAreArray;

template <class T, class Sum>
void ExpectOutliers(size_t width, size_t steps, size_t period, size_t slack) {
  const size_t reach = steps * period, whole = width + 2 * reach;
  GuardedLine<T> first(width, slack), second(width, slack), none(width, 0);
  GuardedLine<Sum> columns(whole, slack), sums(width, slack), spare(whole + period, slack);
  GuardedLine<Sum> counts(width, slack), limits(width, slack);
  const Windows<Sum> windows{columns.data() + reach, sums.data(), spare.data(), counts.data(),
                             limits.data(),          width,       reach,        period};
  std::ranges::fill(none.samples(), T{0});
  std::ranges::fill(columns.samples(), Sum{0});
  first.FillRandom(99);
  second.FillRandom(static_cast<uint32_t>(width));
  AdvanceWindows(first.data(), none.data(), windows);
  AdvanceWindows(second.data(), first.data(), windows);

  std::vector<size_t> found(width), expected;
  for (size_t x = 0; x < width; ++x) {
    uint64_t sum = 0, count = 0;
    for (size_t i = x % period; i < width; i += period) {
      if (std::max(i, x) - std::min(i, x) > reach) continue;
      sum += second.samples()[i];
      ++count;
    }
    ASSERT_EQ(sums.samples()[x], sum) << x << " of " << width << ", " << steps << "/" << period;
    const uint64_t scaled = second.samples()[x] * count;
    const uint64_t distance = std::max(sum, scaled) - std::min(sum, scaled);
    counts.data()[x] = static_cast<Sum>(count);
    limits.data()[x] = static_cast<Sum>(distance + 1 - x % 3);  // above, at, below
    if (distance >= limits.data()[x]) expected.push_back(x);
  }
  found.resize(FindOutliers(second.data(), windows, found.data()));
  ASSERT_THAT(found, ElementsAreArray(expected)) << width;
  ASSERT_TRUE(columns.SurroundingsIntact() && sums.SurroundingsIntact());
  ASSERT_TRUE(spare.SurroundingsIntact());
}

TEST(OutliersTest, EveryWidthReachAndPeriod) {
  ForEachTarget([](const std::string&) {
    for (size_t period : {1, 2, 4})
      for (size_t steps : {0, 1, 2, 4, 5, 6, 15, 40})
        for (size_t width : {1, 2, 3, 7, 16, 33, 47, 64, 70, 131}) {
          const size_t most = std::min(steps, (width - 1) / period), slack = width % 64;
          ExpectOutliers<uint8_t, uint16_t>(width, most, period, slack);
          ExpectOutliers<uint8_t, uint32_t>(width, most, period, slack);
          ExpectOutliers<uint8_t, uint64_t>(width, most, period, slack);
          ExpectOutliers<uint16_t, uint32_t>(width, most, period, slack);
          ExpectOutliers<uint16_t, uint64_t>(width, most, period, slack);
        }
  });
}

template <class T>
void ExpectOutside(size_t width) {
  constexpr T kMost = static_cast<T>(-1);
  const SampleRanges<T> ranges{{10, 0, kMost, 50}, {20, kMost, 0, 49}};
  GuardedLine<T> samples(width, width % 64);
  std::vector<size_t> found(width), expected;
  for (size_t x = 0; x < width; ++x) {
    samples.data()[x] = x % 9 == 8 ? kMost : static_cast<T>(8 + x * 3 % 14);
    const bool isOutside[] = {samples.data()[x] < 10 || samples.data()[x] > 20, false, true, true};
    if (isOutside[x % 4]) expected.push_back(x);
  }
  found.resize(FindOutside(samples.data(), ranges, width, found.data()));
  ASSERT_THAT(found, ElementsAreArray(expected)) << width;
}

TEST(SampleRangesTest, FindsWhatIsOutside) {
  ForEachTarget([](const std::string&) {
    for (size_t width = 0; width <= 200; ++width) {
      ExpectOutside<uint8_t>(width);
      ExpectOutside<uint16_t>(width);
    }
  });
}

}  // namespace
}  // namespace QvApi::Kernels
