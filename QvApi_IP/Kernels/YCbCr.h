// SPDX-License-Identifier: MIT
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/YCbCrTables.h"

namespace QvApi::Kernels {

// Arithmetic on lines of one component each; YCbCrLayout.h brings these into interleaved lines.
// Lines that are read and lines that are written must not overlap.

/// Where components of a line go, one line each.
struct YCbCrComponents {
  uint8_t* luma;
  uint8_t* cb;
  uint8_t* cr;
};

/// Pixels of red, green and blue.
struct YCbCrSource {
  size_t step = 3;  ///< Bytes from pixel to pixel, 3 or 4. The fourth is not used.
  bool isBGR = false;
};

/// Luminance of `count` pixels, and chrominance of each `group` (1, 2 or 4) of them, from the means
/// of their colours, cut off; a shorter last group takes the means of the pixels that are there.
/// With group 0 there is luminance only. A component is the sum of the table's entries, limited and
/// cut off to 8 bits.
void PixelsToYCbCr(YCbCrMatrix matrix, const YCbCrSource& source, const uint8_t* pixels,
                   size_t group, const YCbCrComponents& components, size_t count);

/// The same, with full range, for `tiles` 2 x 2 tiles of two rows of a mosaic: luminance of the two
/// pixels of `row` in each tile, and chrominance of each tile unless `components.cb` is null. `row`
/// has the phase `phase` (BayerPhase.h). With GE and GO the greens of even and of odd columns,
/// those of the pixels are g0 = (GO[k] + GE[k]) >> 1 and g1 = (GO[k] + GO[k + 1]) >> 1, and that of
/// the tile (g0 + g1) >> 1. Behind the last tile, GO is read if `following` is 1; with 0 it is
/// taken as the last one. Does nothing for other phases.
void BayerTilesToYCbCr(const uint8_t* row, const uint8_t* nextRow, int phase,
                       const YCbCrComponents& components, size_t tiles, size_t following);

/// A line of luminance and lines of chrominance, each of whose values serves `group` (1 or 2)
/// pixels: (count + group - 1) / group values.
struct YCbCrPlanes {
  const uint8_t* luma;
  const uint8_t* cb;
  const uint8_t* cr;
  size_t group;
};

/// Pixels of `step` (3 or 4) bytes, blue first if `isBGR`; a fourth byte keeps what it held. All
/// values of luminance and chrominance are allowed: those outside the limits act as the limit.
void PlanesToColor(YCbCrMatrix matrix, const YCbCrPlanes& planes, uint8_t* pixels, size_t step,
                   bool isBGR, size_t count);

}  // namespace QvApi::Kernels
