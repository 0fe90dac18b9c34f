// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/DepthChange.h"

namespace QvApi::Kernels::Scalar {

inline uint16_t ChangedSample(const DepthChange& change, uint32_t sample) {
  const uint32_t x = sample & change.sampleMask;
  if (change.table != nullptr) return change.table[x];
  const uint32_t dividend = (x * change.numerator + change.half) & 0xFFFF;
  return static_cast<uint16_t>(x * change.multiplier + change.addend +
                               (dividend * change.factor >> 16 >> change.shift));
}

/// What ChangeDepth gives.
template <class S, class D>
void ChangeDepth(const DepthChange& change, const S* source, D* destination, size_t count) {
  for (size_t i = 0; i < count; ++i)
    destination[i] = static_cast<D>(ChangedSample(change, source[i]));
}

}  // namespace QvApi::Kernels::Scalar
