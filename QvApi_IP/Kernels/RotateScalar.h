// SPDX-License-Identifier: MIT
#pragma once

#include <cstring>

#include "QvApi_IP/Kernels/Rotate.h"

namespace QvApi::Kernels::Scalar {

inline void TransposePixels(const PixelBytes& bytes, const uint8_t* source, ptrdiff_t sourcePitch,
                            uint8_t* destination, ptrdiff_t destinationPitch, size_t width,
                            size_t height) {
  for (size_t x = 0; x < width; ++x) {
    uint8_t* row = destination + static_cast<ptrdiff_t>(x) * destinationPitch;
    for (size_t y = 0; y < height; ++y) {
      std::memcpy(row + y * bytes.step,
                  source + static_cast<ptrdiff_t>(y) * sourcePitch + x * bytes.step, bytes.moved);
    }
  }
}

}  // namespace QvApi::Kernels::Scalar
