// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/BayerPhase.h"

namespace QvApi::Kernels {

/// The colour pixels that a mosaic is sampled from.
struct ColorLayout {
  /// Samples of a pixel, 3 or 4. The fourth is alpha and not used.
  unsigned components = 3;
  /// Blue is component 0 and red component 2; else the other way about.
  bool isBGR = true;
};

/// Samples one row of a mosaic of the phase `phase` (see BayerPhase.h) from one row of colour
/// pixels: each site takes the component of its own colour, whole, whatever its depth. Reads
/// `width` pixels of source and writes `width` samples of destination, which must not overlap it.
/// Does nothing for other phases and other numbers of components.
void ColorRowToBayer(const uint8_t* source, uint8_t* destination, size_t width,
                     const ColorLayout& layout, int phase);
void ColorRowToBayer(const uint16_t* source, uint16_t* destination, size_t width,
                     const ColorLayout& layout, int phase);

}  // namespace QvApi::Kernels
