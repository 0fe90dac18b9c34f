// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>

#include "QvApi_IP/Kernels/SplitColumns.h"

namespace QvApi::Kernels::Scalar {

/// What SplitColumns gives.
inline void SplitColumns(const uint8_t* line, size_t itemBytes, uint8_t* even, uint8_t* odd,
                         size_t pairs) {
  for (size_t i = 0; i < pairs; ++i) {
    std::memcpy(even + i * itemBytes, line + 2 * i * itemBytes, itemBytes);
    std::memcpy(odd + i * itemBytes, line + (2 * i + 1) * itemBytes, itemBytes);
  }
}

}  // namespace QvApi::Kernels::Scalar
