// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/SampleSums.h"

namespace QvApi::Kernels::Scalar {

template <class T>
void AddToCycle(const T* samples, size_t count, CycleSums& sums) {
  for (size_t i = 0; i < count; ++i) sums[i % kSumCycle] += samples[i];
}

}  // namespace QvApi::Kernels::Scalar
