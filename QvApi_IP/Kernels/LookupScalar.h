// SPDX-License-Identifier: MIT
#pragma once

#include "QvApi_IP/Kernels/Lookup.h"

namespace QvApi::Kernels::Scalar {

/// What LookupLine gives with the lookup prepared from `pattern` and `bits`.
template <class T>
void LookupLine(const LookupPattern& pattern, unsigned bits, const T* source, T* destination,
                size_t count) {
  const size_t sampleMask = (size_t{1} << bits) - 1;
  for (size_t i = 0; i < count; ++i) {
    const uint16_t* table = pattern.tables[i % pattern.period];
    destination[i] = table ? static_cast<T>(table[source[i] & sampleMask]) : source[i];
  }
}

}  // namespace QvApi::Kernels::Scalar
