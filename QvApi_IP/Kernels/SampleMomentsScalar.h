// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>
#include <cmath>

#include "QvApi_IP/Kernels/SampleMoments.h"

namespace QvApi::Kernels::Scalar {

/// One line.
template <class T>
void AddMoments(const T* line, size_t count, uint64_t* sums, uint64_t* squares,
                CycleMoments& cycle) {
  for (size_t i = 0; i < count; ++i) {
    const uint64_t sample = line[i], square = sample * sample;
    sums[i] += sample;
    squares[i] += square;
    cycle.sums[i % kSumCycle] += sample;
    cycle.squares[i % kSumCycle] += square;
  }
}

inline void MeansAndDeviations(const uint64_t* sums, const uint64_t* squares, size_t count,
                               size_t number, double* means, double* deviations) {
  const auto divisor = static_cast<double>(number);
  for (size_t i = 0; i < count; ++i) {
    means[i] = static_cast<double>(sums[i]) / divisor;
    const double variance = static_cast<double>(squares[i]) / divisor - means[i] * means[i];
    deviations[i] = std::sqrt(std::max(0.0, variance));
  }
}

}  // namespace QvApi::Kernels::Scalar
