// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/SampleSums.h"

namespace QvApi::Kernels::Scalar {

template <class T>
void AddToCycle(const T* samples, size_t count, CycleSums& sums) {
  for (size_t i = 0; i < count; ++i) sums[i % kSumCycle] += samples[i];
}

inline uint64_t SumBytes(const uint8_t* samples, size_t count) {
  uint64_t sum = 0;
  for (size_t i = 0; i < count; ++i) sum += samples[i];
  return sum;
}

}  // namespace QvApi::Kernels::Scalar
