// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>

#include "QvApi_IP/Kernels/BayerPhase.h"

namespace QvApi::Kernels {

/// Makes one row of grey pixels from two rows of a mosaic. A pixel looks at the 2 x 2 window that
/// starts at it, with one R, one B and two greens g1, g2, and becomes
/// (5 ((g1 + g2) >> 1) + 2 R + B) >> 3, exactly for all values that T can hold, so samples above
/// their depth give a result above it.
///
/// `row` is the row at hand and has the phase `phase` (see BayerPhase.h); `nextRow` is the one
/// below it. For the last row of an image the caller gives the row above as `nextRow`, or the row
/// itself if it is the only one. Likewise the column behind the last one is column width - 2, or
/// the last one itself at width 1. At even widths a green pixel in the last column uses its own
/// sample for both greens.
///
/// Reads `width` samples of both rows and writes `width` of destination, which must not overlap
/// them.
void BayerRowToMono(const uint8_t* row, const uint8_t* nextRow, uint8_t* destination, size_t width,
                    int phase);
void BayerRowToMono(const uint16_t* row, const uint16_t* nextRow, uint16_t* destination,
                    size_t width, int phase);

}  // namespace QvApi::Kernels
