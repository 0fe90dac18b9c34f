// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

namespace QvApi {

/// Where the three planes of planar 4:2:0 lie: luminance, then Cb and Cr of half the width, height
/// and pitch, each a quarter of the luminance plane behind the one before.
struct Planar420 {
  struct Plane {
    std::size_t offset;  ///< From the first byte of the image.
    std::size_t width;   ///< Bytes of a line.
    std::size_t height;
    std::size_t pitch;
  };
  Plane planes[3];  ///< Luminance, Cb, Cr.

  /// The planes of an image of this size. Chrominance of an odd last column or row is not stored.
  /// Twice `linePitch` times `height` must fit in size_t, as it does for an image in memory.
  constexpr Planar420(std::size_t width, std::size_t height, std::size_t linePitch)
      : planes{
            {0, width, height, linePitch},
            {linePitch * height, width / 2, height / 2, linePitch / 2},
            {linePitch * height + linePitch * height / 4, width / 2, height / 2, linePitch / 2}} {}
};

}  // namespace QvApi
