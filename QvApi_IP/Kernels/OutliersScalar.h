// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "QvApi_IP/Kernels/Outliers.h"

namespace QvApi::Kernels::Scalar {

/// What AdvanceWindows gives. Neighbours of a sequence share all columns but two.
template <class T, class Sum>
void AdvanceWindows(const T* entering, const T* leaving, const Windows<Sum>& windows) {
  const auto [columns, sums, spare, counts, limits, width, reach, period] = windows;
  for (size_t x = 0; x < width; ++x)
    columns[x] = static_cast<Sum>(columns[x] + entering[x] - leaving[x]);
  const Sum *last = columns + reach, *before = columns - reach - period, *previous = sums - period;
  for (size_t x = 0; x < width && x < period; ++x) {
    sums[x] = 0;
    for (size_t i = 0; i <= 2 * reach; i += period)
      sums[x] = static_cast<Sum>(sums[x] + (columns - reach)[x + i]);
  }
  for (size_t x = period; x < width; ++x)
    sums[x] = static_cast<Sum>(previous[x] + last[x] - before[x]);
}

/// What FindOutliers gives from column `x` on, behind `count` columns that have been found before.
template <class T, class Sum>
size_t FindOutliers(const T* samples, const Windows<Sum>& windows, size_t* found, size_t count = 0,
                    size_t x = 0) {
  for (; x < windows.width; ++x) {
    const auto sum = windows.sums[x], scaled = static_cast<Sum>(windows.counts[x] * samples[x]);
    const auto distance = static_cast<Sum>(std::max(sum, scaled) - std::min(sum, scaled));
    if (distance >= windows.limits[x]) found[count++] = x;
  }
  return count;
}

/// What FindOutside gives, likewise.
template <class T>
size_t FindOutside(const T* samples, const SampleRanges<T>& ranges, size_t width, size_t* found,
                   size_t count = 0, size_t x = 0) {
  for (; x < width; ++x)
    if (samples[x] < ranges.least[x % 4] || samples[x] > ranges.most[x % 4]) found[count++] = x;
  return count;
}

}  // namespace QvApi::Kernels::Scalar
