// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Most samples after which the channels of a line repeat.
inline constexpr size_t kMaxHistogramPeriod = 4;

/// The histogram of each channel of a line: sample i is of channel i % period. A channel that
/// nobody wants must have a place to be counted as well.
using Histograms = std::array<uint32_t*, kMaxHistogramPeriod>;

/// Counts the samples of a line: each adds 1 to its entry in the histogram of its channel.
/// @param period  1 to 4
/// @param bits    a histogram has 2^bits entries; samples above this depth are masked to it
void AddToHistograms(const uint8_t* samples, size_t count, size_t period, unsigned bits,
                     const Histograms& histograms);
void AddToHistograms(const uint16_t* samples, size_t count, size_t period, unsigned bits,
                     const Histograms& histograms);

/// Counters of one table of pairs: 2^16, and some that keep the same pair of two tables from
/// meeting in one place of the cache.
inline constexpr size_t kPairCounters = (size_t{1} << 16) + 272;

/// Counts bytes of two lines by the pairs that stand above each other, which takes half as long.
/// AddPairs() adds all pairs counted to the histograms in the end, at the cost of some ten thousand
/// samples.
/// @param histograms  of 256 entries; where that is faster, samples are counted here right away
/// @param pairs       `period` tables of kPairCounters, 0 before the first lines
void AddToPairs(const uint8_t* upper, const uint8_t* lower, size_t count, size_t period,
                const Histograms& histograms, uint32_t* pairs);
void AddPairs(const uint32_t* pairs, size_t period, const Histograms& histograms);

}  // namespace QvApi::Kernels
