// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/ColumnSums.h"

namespace QvApi::Kernels::Scalar {

template <class T>
const T* LineOf(const T* samples, ptrdiff_t pitch, size_t line) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(samples);
  return reinterpret_cast<const T*>(bytes + static_cast<ptrdiff_t>(line) * pitch);
}

template <class T>
void AddToColumns(const T* samples, ptrdiff_t pitch, size_t lines, size_t count, uint32_t* sums) {
  for (size_t y = 0; y < lines; ++y)
    for (size_t x = 0; x < count; ++x) sums[x] += LineOf(samples, pitch, y)[x];
}

}  // namespace QvApi::Kernels::Scalar
