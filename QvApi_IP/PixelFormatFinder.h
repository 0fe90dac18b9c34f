// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>

#include "QvApi_TL/PixelFormatTable.h"

namespace QvApi {

/// The mono format (phase Mono) or the Bayer format of a phase, depth and storage;
/// PixelFormat::None if there is none.
PixelFormat FindRawFormat(BayerPhase phase, std::size_t depth, Storage storage);

/// The format of a polarizer sensor, mono or colour, with the arrangement of that number (1 to 8);
/// PixelFormat::None if there is none.
PixelFormat FindPolarizedFormat(PixelKind kind, std::size_t depth, Storage storage,
                                unsigned pattern);

/// The colour format with alpha and blue first, of a depth from 8 to 16; PixelFormat::None for
/// other depths.
PixelFormat FindBGRa(std::size_t depth);

/// The format of the same kind, phase, depth and arrangement with each sample in a word of its own;
/// a depth below 8 becomes 8.
PixelFormat UnpackedFormat(PixelFormat format);

/// The format that a destination gets instead of `destination` when an image of `source` is flipped
/// upside down: a mosaic begins with another of its rows then, unless it is a Bayer mosaic of odd
/// height.
PixelFormat FlippedFormat(PixelFormat source, PixelFormat destination, std::size_t height);

}  // namespace QvApi
