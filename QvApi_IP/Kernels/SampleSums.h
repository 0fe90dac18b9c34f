// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// Samples of interleaved formats and mosaics repeat their channels every 1, 2, 3, 4 or 6 samples,
/// all of which divide this number: sums by the place in a cycle of 12 serve them all.
inline constexpr size_t kSumCycle = 12;

/// Place k holds the sum of the samples k, k + 12, k + 24, ...
using CycleSums = std::array<uint64_t, kSumCycle>;

/// Adds each of the `count` samples of a line to its place in `sums`; sample 0 is at place 0.
/// Samples count with their whole value, also above their depth. Exact, as long as the sums fit 64
/// bits.
void AddToCycle(const uint8_t* samples, size_t count, CycleSums& sums);
void AddToCycle(const uint16_t* samples, size_t count, CycleSums& sums);

/// The sum of all bytes of a line. Exact.
uint64_t SumBytes(const uint8_t* samples, size_t count);

}  // namespace QvApi::Kernels
