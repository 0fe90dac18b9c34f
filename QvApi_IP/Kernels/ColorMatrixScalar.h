// SPDX-License-Identifier: MIT
#pragma once

#include <algorithm>

#include "QvApi_IP/Kernels/ColorMatrix.h"

namespace QvApi::Kernels::Scalar {

/// What TransformColors gives.
template <class T>
void TransformColors(const ColorMatrix& matrix, T* line, size_t step, size_t pixels) {
  const uint32_t fullScale = (1u << matrix.bits) - 1;
  for (const T* end = line + pixels * step; line != end; line += step) {
    std::array<uint32_t, 3> sums{};
    for (size_t c = 0; c < 3; ++c) {
      const int32_t* parts = matrix.Parts(c, line[c] & fullScale);
      for (size_t r = 0; r < 3; ++r) sums[r] += static_cast<uint32_t>(parts[r]);
    }
    for (size_t r = 0; r < 3; ++r) {
      const bool isNegative = sums[r] >= ColorMatrix::kNegative;
      line[r] = isNegative ? T{0} : static_cast<T>(std::min(sums[r], fullScale));
    }
  }
}

}  // namespace QvApi::Kernels::Scalar
