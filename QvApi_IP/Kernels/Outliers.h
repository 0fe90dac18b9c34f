// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

// Samples that stand out from a range, or from the mean of a window of samples around them.

/// A row of windows, one around each sample. In a mosaic only each `period`-th column belongs to a
/// window, where the period is 1, 2 or 4. So many samples of full scale as a window has must fit
/// into a Sum. Nothing may overlap.
template <class Sum>
struct Windows {
  Sum* columns;       ///< Sums of the columns of the windows, with `reach` of 0 on both sides.
  Sum* sums;          ///< Sums of the windows.
  Sum* spare;         ///< Room for width + 2 * reach + period.
  const Sum* counts;  ///< Samples of each window.
  const Sum* limits;  ///< For FindOutliers().
  size_t width;
  size_t reach;  ///< Columns from a sample to the last one of a whole window.
  size_t period;
};

/// Moves windows down by one row: adds the row that enters to the sums of columns, takes the one
/// off that leaves, and adds the columns of each window up. Numbers wrap.
template <class T, class Sum>
void AdvanceWindows(const T* entering, const T* leaving, const Windows<Sum>& windows);

/// Writes the columns with |sample * count - sum of the window| >= limit to `found`, which has room
/// for all. Returns how many there are.
template <class T, class Sum>
size_t FindOutliers(const T* samples, const Windows<Sum>& windows, size_t* found);

// There are these for samples of 8 bits with sums of 16, 32 and 64 bits, and for samples of 16 bits
// with sums of 32 and 64.

/// Samples outside of it stand out. Column x has the range at x % 4.
template <class T>
struct SampleRanges {
  std::array<T, 4> least, most;
};

/// Writes the columns with a sample that is below the least or above the most to `found`, which
/// has room for all. Returns how many there are.
size_t FindOutside(const uint8_t* samples, const SampleRanges<uint8_t>& ranges, size_t width,
                   size_t* found);
size_t FindOutside(const uint16_t* samples, const SampleRanges<uint16_t>& ranges, size_t width,
                   size_t* found);

}  // namespace QvApi::Kernels
