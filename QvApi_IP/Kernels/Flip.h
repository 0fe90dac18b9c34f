// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

namespace QvApi::Kernels {

/// How pixels are moved: `step` bytes from pixel to pixel, of which the first `moved` go along; the
/// others of a destination, such as alpha, keep what they held.
struct PixelBytes {
  size_t step = 1;   ///< 1, 2, 3, 4, 6 or 8.
  size_t moved = 1;  ///< `step`, or three quarters of 4 or 8.
};

/// Writes `count` pixels in reverse order. The lines must not overlap and need no alignment.
/// @param next  the line to be read next, which is fetched into the cache meanwhile; any address
///              will do, nothing is read there
void MirrorPixels(const PixelBytes& bytes, const uint8_t* source, uint8_t* destination,
                  size_t count, const uint8_t* next);

}  // namespace QvApi::Kernels
