// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/SampleSums.h"

namespace QvApi::Kernels {

/// Sums over the samples of a line and over their squares, by the place in a cycle of 12.
struct CycleMoments {
  CycleSums sums{};
  CycleSums squares{};
};

/// Takes one line of `count` samples from each of several images. Adds sample i of each line to
/// `sums[i]` and its square to `squares[i]`; and all samples and squares of line l to their places
/// in `cycles[l]`, sample 0 to place 0. Samples count with their whole value, also above their
/// depth. Exact, as long as the sums fit 64 bits. Nothing may overlap.
void AddMoments(const uint8_t* const* lines, size_t lineCount, size_t count, uint64_t* sums,
                uint64_t* squares, CycleMoments* cycles);
void AddMoments(const uint16_t* const* lines, size_t lineCount, size_t count, uint64_t* sums,
                uint64_t* squares, CycleMoments* cycles);

/// Mean and deviation of each of `count` positions from its sums over `number` samples: the mean m
/// is sum / number, the deviation the root of squares / number - m * m, or 0 if that is below 0.
/// Each operation is rounded as a double by itself. Nothing may overlap.
void MeansAndDeviations(const uint64_t* sums, const uint64_t* squares, size_t count, size_t number,
                        double* means, double* deviations);

}  // namespace QvApi::Kernels
