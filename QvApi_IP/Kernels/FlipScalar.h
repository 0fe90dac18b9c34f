// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>

#include "QvApi_IP/Kernels/Flip.h"

namespace QvApi::Kernels::Scalar {

inline void MirrorPixels(const PixelBytes& bytes, const uint8_t* source, uint8_t* destination,
                         size_t count) {
  for (size_t i = 0; i < count; ++i) {
    std::memcpy(destination + i * bytes.step, source + (count - 1 - i) * bytes.step, bytes.moved);
  }
}

}  // namespace QvApi::Kernels::Scalar
