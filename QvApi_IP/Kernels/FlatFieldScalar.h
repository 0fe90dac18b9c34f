// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "QvApi_IP/Kernels/FlatField.h"

namespace QvApi::Kernels::Scalar {

/// What MultiplyGainRow gives.
template <class T>
void MultiplyGainRow(T* row, const uint16_t* gains, size_t width, T fullScale) {
  for (size_t x = 0; x < width; ++x) {
    const uint32_t product = uint32_t{row[x]} * gains[x] >> kGainFractionBits;
    row[x] = static_cast<T>(std::min<uint32_t>(product, fullScale));
  }
}

/// What AddDifferenceRow gives.
template <class T>
void AddDifferenceRow(T* row, const T* flat, size_t width, FlatFieldTargets targets, T fullScale) {
  for (size_t x = 0; x < width; ++x) {
    const int64_t target = x % 2 == 0 ? targets.even : targets.odd;
    row[x] = static_cast<T>(std::clamp<int64_t>(row[x] + target - flat[x], 0, fullScale));
  }
}

}  // namespace QvApi::Kernels::Scalar
