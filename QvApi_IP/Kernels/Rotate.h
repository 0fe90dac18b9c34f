// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/Flip.h"

namespace QvApi::Kernels {

/// Makes rows of columns: pixel (x, y) of the source becomes pixel (y, x) of the destination. With
/// a negative pitch rows run upward from where the pointer shows, so that this is all quarter turns
/// and both transpositions. `width` and `height` are the source's. The images must not overlap and
/// need no alignment.
void TransposePixels(const PixelBytes& bytes, const uint8_t* source, ptrdiff_t sourcePitch,
                     uint8_t* destination, ptrdiff_t destinationPitch, size_t width, size_t height);

}  // namespace QvApi::Kernels
