// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/Histogram.h"

namespace QvApi::Kernels::Scalar {

template <class T>
void AddToHistograms(const T* samples, size_t count, size_t period, unsigned bits,
                     const Histograms& histograms) {
  const unsigned mask = (1U << bits) - 1;
  for (size_t i = 0; i < count; ++i) ++histograms[i % period][samples[i] & mask];
}

}  // namespace QvApi::Kernels::Scalar
