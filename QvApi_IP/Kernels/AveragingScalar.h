// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "QvApi_IP/Kernels/Averaging.h"

namespace QvApi::Kernels::Scalar {

template <class T>
void AddToSums(const T* samples, uint32_t* sums, size_t count) {
  for (size_t i = 0; i < count; ++i) sums[i] += samples[i];
}

template <class T>
void ScaleSums(const uint32_t* sums, uint32_t fullSum, T maximum, T* means, size_t count) {
  const double divisor = static_cast<double>(fullSum) / maximum;
  for (size_t i = 0; i < count; ++i)
    means[i] = static_cast<T>(std::min(sums[i], fullSum) / divisor + 0.5);
}

}  // namespace QvApi::Kernels::Scalar
